#pragma once

// The Transactions section: every line of the ledger in a table that can be
// searched, narrowed by a filter, an account, a period and whose spending it
// is, and sorted by any column, with an inspector beside it that tells
// where the chosen line came from and why it is filed as it is. A list
// opened from elsewhere (Review's "Show Transactions", an account's "Show in
// Transactions") shows just those lines under a banner until "Show All".
//
// The lines are the core query's; every change goes through the runtime as
// one undoable step. In a narrow window the inspector floats over the table's
// right side while it is asked for, instead of taking a column of its own.
// Main thread only. The bridge's runtime must outlive it.

#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSplitter>
#include <QTableView>

#include "app/shell/runtime_bridge.h"
#include "app/transactions/transaction_actions.h"
#include "app/transactions/transaction_inspector.h"
#include "app/transactions/transaction_table_model.h"
#include "app/widgets/section_page.h"
#include "core/reports/period_choice.h"

namespace copperwick::app {

class TransactionsPage : public SectionPage {
    Q_OBJECT

  public:
    // Where the person chooses to save the export, offering `suggestedName`;
    // absent when they cancelled. Tests answer in the file dialog's place.
    using SaveFilePanel =
        std::function<std::optional<std::filesystem::path>(QWidget* parent, const QString&)>;

    static constexpr std::string_view kExportName = "Copperwick transactions.csv";

    explicit TransactionsPage(RuntimeBridge& bridge, QWidget* parent = nullptr);

    [[nodiscard]] std::vector<SelfCheck> selfChecks() override;

    void setSaveFilePanel(SaveFilePanel panel) { m_savePanel = std::move(panel); }

    // The person's actions.
    void openManualEntry();
    void exportCsv();
    void showAll();
    void setDetailsShown(bool shown);
    [[nodiscard]] bool detailsShown() const;
    // Whether the inspector floats over the table, as in a narrow window.
    [[nodiscard]] bool detailsFloat() const { return m_floating; }
    // Chooses these lines in the table, as a click and Ctrl-clicks would.
    void selectLines(const std::vector<Uuid>& ids);

    [[nodiscard]] QTableView* table() const { return m_table; }
    [[nodiscard]] TransactionTableModel* model() const { return m_model; }
    [[nodiscard]] TransactionInspector* inspector() const { return m_inspector; }
    [[nodiscard]] TransactionActions* actions() const { return m_actions; }
    [[nodiscard]] QComboBox* filterBox() const { return m_filter; }
    [[nodiscard]] QComboBox* accountBox() const { return m_account; }
    [[nodiscard]] QComboBox* periodBox() const { return m_period; }
    [[nodiscard]] QLineEdit* customStartField() const { return m_customStart; }
    [[nodiscard]] QLineEdit* customEndField() const { return m_customEnd; }
    [[nodiscard]] QPushButton* peopleButton() const { return m_people; }
    [[nodiscard]] QLineEdit* searchField() const { return m_search; }
    [[nodiscard]] QWidget* focusBanner() const { return m_banner; }
    [[nodiscard]] QLabel* focusLabel() const { return m_bannerText; }
    [[nodiscard]] QPushButton* showAllButton() const { return m_showAll; }
    [[nodiscard]] QLabel* footerLabel() const { return m_footer; }
    [[nodiscard]] QPushButton* addButton() const { return m_add; }
    [[nodiscard]] QPushButton* exportButton() const { return m_export; }
    [[nodiscard]] QPushButton* detailsButton() const { return m_details; }
    // The query the table runs for what is chosen now.
    [[nodiscard]] TransactionQuery currentQuery() const;

    // Narrower than this, the inspector floats over the table.
    static constexpr int kFloatBelow = 700;

  protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    // Puts the inspector beside the table or over it, as the width asks,
    // and shows it as the person last asked for in that place.
    void placeInspector();
    // A narrow table keeps room for the merchant's name and the amount: the
    // account column goes first, then the category narrows.
    void fitColumns();
    QWidget* buildToolbar();
    QWidget* buildFilters();
    QWidget* buildBanner();
    void fillFilterMenu();
    void fillAccountMenu();
    void fillPeopleMenu();
    void peopleChanged();
    void runQuery();
    void rowsRead();
    void selectionChanged();
    void showContextMenu(const QPoint& at);
    void focusChanged();
    void changeSaved(const SavedChange& change);
    [[nodiscard]] std::vector<Uuid> selectedIds() const;

    RuntimeBridge& m_bridge;
    TransactionActions* m_actions = nullptr;
    TransactionTableModel* m_model = nullptr;
    QTableView* m_table = nullptr;
    TransactionInspector* m_inspector = nullptr;
    QSplitter* m_splitter = nullptr;
    QWidget* m_inspectorCard = nullptr;
    bool m_floating = false;
    // Shown beside the table; shown over it in a narrow window.
    bool m_detailsShown = true;
    bool m_floatingShown = false;
    QComboBox* m_filter = nullptr;
    QComboBox* m_account = nullptr;
    QComboBox* m_period = nullptr;
    QLineEdit* m_customStart = nullptr;
    QLineEdit* m_customEnd = nullptr;
    QPushButton* m_people = nullptr;
    QLineEdit* m_search = nullptr;
    QAction* m_clearSearch = nullptr;
    QWidget* m_banner = nullptr;
    QLabel* m_bannerText = nullptr;
    QPushButton* m_showAll = nullptr;
    QLabel* m_footer = nullptr;
    QPushButton* m_add = nullptr;
    QPushButton* m_export = nullptr;
    QPushButton* m_details = nullptr;
    PeopleScope m_scope;
    // What is chosen, kept across readings of the rows.
    std::vector<Uuid> m_selected;
    bool m_restoringSelection = false;
    SaveFilePanel m_savePanel;
    // How narrow the table was when its columns were last fitted: 0 wide, 1
    // without the account, 2 also with a narrow category.
    int m_columnFit = 0;
    // Saved while the page was hidden: it reads everything again when it shows.
    bool m_outdated = false;
};

}  // namespace copperwick::app
