#pragma once

// "Report as PDF…": the choice of one of the three styles of a printed
// report, each with the words that say what it looks like, over the notes
// that every style holds the same figures. "Save PDF" accepts the sheet with
// the chosen style; what is saved and where is the Reports screen's part.
// Arrow keys move between the styles, Enter saves, Escape cancels. Main
// thread only.

#include <array>

#include <QButtonGroup>
#include <QPushButton>
#include <QRadioButton>

#include "app/widgets/sheet_dialog.h"
#include "core/presentation/pdf_report_content.h"

namespace copperwick::app {

class PDFExportSheet : public SheetDialog {
    Q_OBJECT

  public:
    // Opens with `chosen` selected: the style saved last time.
    explicit PDFExportSheet(PDFReportStyle chosen, QWidget* parent = nullptr);

    [[nodiscard]] PDFReportStyle style() const;
    [[nodiscard]] QRadioButton* choice(PDFReportStyle style) const;
    [[nodiscard]] QPushButton* saveButton() const { return m_save; }
    [[nodiscard]] QPushButton* cancelButton() const { return m_cancel; }

  private:
    QButtonGroup* m_styles;
    std::array<QRadioButton*, 3> m_choices{};
    QPushButton* m_cancel = nullptr;
    QPushButton* m_save = nullptr;
};

}  // namespace copperwick::app
