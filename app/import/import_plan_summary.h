#pragma once

// What importing one file into its account would do, as the card shows it
// under the account: an earlier import of the very same file, the figures
// of the plan, the first rows as they were read (so that a person sees the
// signs), the rows held back as possible duplicates, each with a toggle to
// import it all the same, and the rows that couldn't be read.
//
// It only shows the plan and says what the person toggled; the card hands
// that to the import model. The lists are built again only when their rows
// change, so a toggle keeps its place and focus. Main thread only.

#include <cstdint>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QToolButton>
#include <QTreeWidget>
#include <QWidget>

#include "core/model/ledger.h"
#include "runtime/import_model.h"

namespace copperwick::app {

class ImportPlanSummary : public QWidget {
    Q_OBJECT

  public:
    // How many of the file's first rows the preview shows.
    static constexpr int kPreviewRows = 8;

    explicit ImportPlanSummary(QWidget* parent = nullptr);

    // Shows the file's plan; money in `currency`. The file must have a plan.
    void setFile(const ImportFile& file, const Ledger& ledger, std::string_view currency);

    // The figure under `caption` ("New", "Money in"…), or empty when not shown.
    [[nodiscard]] QString figure(const QString& caption) const;
    [[nodiscard]] QToolButton* previewToggle() const { return m_previewToggle; }
    [[nodiscard]] QTreeWidget* previewList() const { return m_preview; }
    [[nodiscard]] QListWidget* heldList() const { return m_held; }
    [[nodiscard]] QListWidget* issueList() const { return m_issues; }
    [[nodiscard]] QCheckBox* skipProblemRowsBox() const { return m_skipProblemRows; }

  Q_SIGNALS:
    // The held lines the person now wants imported.
    void forcedLinesChanged(const std::set<int64_t>& lines);
    void skipProblemRowsChanged(bool skip);

  private:
    struct Figure {
        QLabel* caption;
        QLabel* value;
    };

    QWidget* makeFigures();
    void setFigure(std::size_t index, const QString& value);
    void fillPreview(const ImportPlan& plan, std::string_view currency);
    void fillHeld(const ImportFile& file, const Ledger& ledger, std::string_view currency);
    void fillIssues(const ImportPlan& plan);
    void heldItemChanged();

    QWidget* m_previous;
    QLabel* m_previousText;
    std::vector<Figure> m_figures;
    QToolButton* m_previewToggle;
    QTreeWidget* m_preview;
    QWidget* m_heldSection;
    QLabel* m_heldTitle;
    QListWidget* m_held;
    QWidget* m_issueSection;
    QLabel* m_issueTitle;
    QListWidget* m_issues;
    QCheckBox* m_skipProblemRows;
    // What the lists show now: (line, matched transaction) of each held row,
    // and the line of each unreadable one.
    std::vector<std::pair<int64_t, std::string>> m_heldShown;
    std::vector<int64_t> m_issuesShown;
};

}  // namespace copperwick::app
