#pragma once

// The Reports section: one report for a chosen period, people and currency,
// in seven tabs, with what the numbers leave out beneath and the exports.
//
// A change of period, people or currency, or a saved change (a new
// revision), builds the report anew: at once on a short ledger, on a copy
// beside the window on a long one, where the newest request wins and the
// figures shown stay until it is back. The same inputs are never built
// twice. Every figure comes from the report; the screen only words it, and
// every figure opens the transactions behind it, whose ids the report gave.
// While Local AI is on, it writes a few checked lines about the report
// shown, once for each set of figures, when the page is in view.
//
// Main thread only. The bridge and its runtime must outlive the page.

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QPointer>
#include <QTabBar>
#include <QToolButton>
#include <QVBoxLayout>

#include "app/reports/drill_down_sheet.h"
#include "app/reports/narrative_card.h"
#include "app/reports/pdf_export_sheet.h"
#include "app/reports/people_scope_picker.h"
#include "app/reports/report_screen_data.h"
#include "app/reports/report_widgets.h"
#include "app/shell/runtime_bridge.h"
#include "app/widgets/section_card.h"
#include "app/widgets/section_page.h"
#include "core/reports/period_choice.h"
#include "runtime/main_queue.h"

namespace copperwick::app {

enum class ReportTab { overview, categories, merchants, trends, income, budgets, recurring };

inline constexpr std::array<ReportTab, 7> kReportTabs{
    ReportTab::overview, ReportTab::categories, ReportTab::merchants, ReportTab::trends,
    ReportTab::income,   ReportTab::budgets,    ReportTab::recurring};

// "Overview", "Categories", …
[[nodiscard]] QString tabLabel(ReportTab tab);

class ReportsPage : public SectionPage {
    Q_OBJECT

  public:
    // About where building a report with its comparison, trend and
    // insights starts to cost a frame.
    static constexpr std::size_t kBuildInBackgroundFrom = 5'000;

    // Asks where to save an export: the dialog's title and the name offered
    // (its extension says the kind of file); an empty answer means the
    // person cancelled.
    using FileChooser = std::function<QString(const QString& title, const QString& name)>;

    explicit ReportsPage(RuntimeBridge& bridge, QWidget* parent = nullptr);
    ~ReportsPage() override;

    [[nodiscard]] std::vector<SelfCheck> selfChecks() override;

    // The filter the choices on screen describe now.
    [[nodiscard]] ReportFilter filter() const;
    // What is shown; absent before the first build is back.
    [[nodiscard]] const std::optional<ReportScreenData>& shown() const { return m_shown; }
    // How many builds were started, and whether one is still out.
    [[nodiscard]] int buildCount() const { return m_buildCount; }
    [[nodiscard]] bool isBuilding() const { return m_building; }
    // Tests lower it to build a short ledger in the background.
    void setBuildInBackgroundFrom(std::size_t transactions) { m_inBackgroundFrom = transactions; }

    [[nodiscard]] QComboBox* periodBox() const { return m_period; }
    [[nodiscard]] QDateEdit* fromDate() const { return m_from; }
    [[nodiscard]] QDateEdit* toDate() const { return m_to; }
    [[nodiscard]] PeopleScopePicker* peoplePicker() const { return m_people; }
    [[nodiscard]] QComboBox* currencyBox() const { return m_currency; }
    [[nodiscard]] QToolButton* exportButton() const { return m_export; }
    [[nodiscard]] QTabBar* tabBar() const { return m_tabs; }
    [[nodiscard]] QWidget* tabContent() const { return m_content; }
    [[nodiscard]] SectionCard* notesCard() const { return m_notes; }
    // Local AI's summary of the report shown, while Local AI is on.
    [[nodiscard]] NarrativeCard* narrativeCard() const { return m_narrative; }

    [[nodiscard]] ReportTab tab() const;
    void setTab(ReportTab tab);
    void setPeople(const PeopleScope& scope);

    // The tiles and rows of the tab shown, in the order they read.
    [[nodiscard]] std::vector<FigureTile*> tiles() const;
    [[nodiscard]] FigureTile* tile(const QString& title) const;
    [[nodiscard]] std::vector<FigureRow*> rows() const;
    // Every text of the tab shown, for tests that look for words.
    [[nodiscard]] QStringList tabTexts() const;

    // Opens the sheet of the transactions behind a figure.
    DrillDownSheet* openDrillDown(DrillDown drillDown);
    [[nodiscard]] DrillDownSheet* drillDownSheet() const { return m_sheet; }

    void setFileChooser(FileChooser chooser) { m_chooseFile = std::move(chooser); }
    void exportSummary();
    void exportTransactions();
    // "Report as PDF…": the style sheet, opening with the style saved last.
    // Saving remembers the style, asks where, and makes the PDF beside the
    // window.
    PDFExportSheet* exportPDF();
    [[nodiscard]] PDFExportSheet* pdfSheet() const { return m_pdfSheet; }
    // The PDF of the report shown, in `style`, at a place the person chooses;
    // made beside the window, with the runtime counting it as a PDF build.
    void savePDF(PDFReportStyle style);
    [[nodiscard]] bool isSavingPDF() const { return m_savingPDFs > 0; }

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    struct Built {
        ReportScreenData data;
        Ledger ledger;  // the value the figures were read from
        int64_t revision = 0;
    };
    struct Inputs {
        ReportFilter filter;
        int64_t revision = 0;
        LocalDate today;
        friend bool operator==(const Inputs&, const Inputs&) = default;
    };

    QWidget* buildControls(QWidget* parent);
    void refreshChoices();
    void choicesChanged();
    void requestBuild();
    void show(Built built);
    void showTab();
    void showNotes();
    // Shows Local AI's summary of the report shown, and asks for one when
    // there is none yet for these figures and the page is in view.
    void showNarrative();
    void answerNotes(const std::optional<std::string>& noteID);
    void writeExport(const QString& title, const QString& name, const std::string& text);

    // The tabs' content.
    void addOverview(QVBoxLayout* column);
    void addCategories(QVBoxLayout* column);
    void addMerchants(QVBoxLayout* column);
    void addTrends(QVBoxLayout* column);
    void addIncome(QVBoxLayout* column);
    void addBudgets(QVBoxLayout* column);
    // The family's monthly amounts and the savings goal, as typed.
    void addBudgetEditors(QVBoxLayout* column);
    void addRecurring(QVBoxLayout* column);
    void addPaymentServices(QVBoxLayout* column);

    // A tile or row that opens the drill-down when pressed. On a long
    // ledger picking a figure's ids is a pass over its lines, so it waits
    // for the press.
    using DrillDownSource = std::function<DrillDown()>;
    FigureTile* figureTile(const QString& title, const QString& figure, const QString& caption,
                           DrillDownSource drillDown, QWidget* parent);
    FigureRow* figureRow(const std::vector<QString>& cells, const std::vector<int>& widths,
                         DrillDownSource drillDown, QWidget* parent);
    FigureRow* figureRow(const std::vector<QString>& cells, const std::vector<int>& widths,
                         DrillDown drillDown, QWidget* parent);
    [[nodiscard]] QString money(int64_t cents, bool showPlus = false) const;

    RuntimeBridge& m_bridge;
    LedgerRuntime& m_runtime;
    QComboBox* m_period = nullptr;
    QWidget* m_customDates = nullptr;
    QDateEdit* m_from = nullptr;
    QDateEdit* m_to = nullptr;
    PeopleScopePicker* m_people = nullptr;
    QComboBox* m_currency = nullptr;
    QLabel* m_currencyNote = nullptr;
    QToolButton* m_export = nullptr;
    QLabel* m_scopeLine = nullptr;
    QLabel* m_buildingLine = nullptr;
    NarrativeCard* m_narrative = nullptr;
    QTabBar* m_tabs = nullptr;
    QWidget* m_content = nullptr;
    SectionCard* m_notes = nullptr;
    QPointer<DrillDownSheet> m_sheet;
    QPointer<PDFExportSheet> m_pdfSheet;
    FileChooser m_chooseFile;
    int m_savingPDFs = 0;

    std::optional<ReportScreenData> m_shown;
    Ledger m_shownLedger;
    int64_t m_shownRevision = 0;
    std::optional<Inputs> m_requested;
    bool m_outdated = false;
    bool m_building = false;
    int m_buildCount = 0;
    uint64_t m_buildNumber = 0;
    std::size_t m_inBackgroundFrom = kBuildInBackgroundFrom;
    // Last, so that a build still out ends before the rest goes.
    std::unique_ptr<BackgroundWork> m_work;
};

}  // namespace copperwick::app
