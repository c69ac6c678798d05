#pragma once

// "Bank file layouts": every layout a file is recognised by, taught ones
// first, with what each looks for, and a filter by name. Taught layouts can
// be saved to a layout file for another computer, and a saved layout file
// can be imported as a new taught layout; both go through core's layout
// file reader and writer, and a refusal is said in core's words, in the
// sheet and in the message bar.
//
// Escape or "Done" closes it. It follows saved changes to the layouts while
// open. Main thread only.

#include <vector>

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/import/file_panels.h"
#include "app/shell/runtime_bridge.h"
#include "app/widgets/sheet_dialog.h"
#include "core/model/import_profile.h"

namespace copperwick::app {

class ImportLayoutsSheet : public SheetDialog {
    Q_OBJECT

  public:
    ImportLayoutsSheet(RuntimeBridge& bridge, FilePanels panels, QWidget* parent = nullptr);

    [[nodiscard]] QLineEdit* searchField() const { return m_search; }
    [[nodiscard]] QPushButton* importButton() const { return m_import; }
    [[nodiscard]] QPushButton* doneButton() const { return m_done; }
    // Why the last saved layout file was refused; hidden when it wasn't.
    [[nodiscard]] QLabel* refusalLabel() const { return m_refusal; }
    // The names of the layouts the filter lets through, in order.
    [[nodiscard]] QStringList shownLayouts() const;
    // The "Export Layout…" button of the taught layout named `name`, if any.
    [[nodiscard]] QPushButton* exportButton(const QString& name) const;

  private:
    struct Row {
        QWidget* widget;
        QString name;
        QPushButton* exportButton;
    };

    void fill();
    void applyFilter();
    QWidget* makeRow(const ImportProfile& profile, QPushButton*& exportButton);
    void exportLayout(const ImportProfile& profile);
    void importLayout();
    void showRefusal(const std::string& message);

    RuntimeBridge& m_bridge;
    FilePanels m_panels;
    QLineEdit* m_search;
    QWidget* m_list;
    QVBoxLayout* m_rows;
    QLabel* m_refusal;
    QPushButton* m_import;
    QPushButton* m_done;
    std::vector<Row> m_shown;
};

}  // namespace copperwick::app
