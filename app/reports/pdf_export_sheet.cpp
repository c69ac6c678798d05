#include "app/reports/pdf_export_sheet.h"

#include <QVBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"

namespace copperwick::app {

PDFExportSheet::PDFExportSheet(PDFReportStyle chosen, QWidget* parent)
    : SheetDialog(QStringLiteral("Choose a report style"), {}, parent),
      m_styles(new QButtonGroup(this)) {
    keepAtLeastWide(460);
    for (const PDFReportStyle style : allCases<PDFReportStyle>()) {
        auto* option = new QWidget(this);
        auto* column = new QVBoxLayout(option);
        column->setContentsMargins(0, 0, 0, 0);
        column->setSpacing(2);
        const QString words = toQString(name(style));
        auto* button = new QRadioButton(words, option);
        button->setAccessibleName(words);
        button->setAccessibleDescription(toQString(styleDetail(style)));
        button->setChecked(style == chosen);
        m_styles->addButton(button, static_cast<int>(style));
        m_choices[static_cast<std::size_t>(style)] = button;
        column->addWidget(button);
        // The caption lines up with the button's words, not its circle.
        QLabel* caption = secondaryLabel(toQString(styleDetail(style)), option);
        caption->setContentsMargins(26, 0, 0, 0);
        column->addWidget(caption);
        body()->addWidget(option);
    }
    body()->addSpacing(4);
    body()->addWidget(noteLabel(QStringLiteral("All three styles include the same figures, "
                                               "selected people or cards, and report notes."),
                                this, true));
    body()->addWidget(
        noteLabel(QStringLiteral("Letter size \u00B7 Multiple pages as needed"), this, true));

    m_cancel = addCancelButton(QStringLiteral("Cancel"));
    m_save = addDefaultButton(QStringLiteral("Save PDF"));
    connect(m_save, &QPushButton::clicked, this, &QDialog::accept);
    m_choices[static_cast<std::size_t>(chosen)]->setFocus();
}

PDFReportStyle PDFExportSheet::style() const {
    const int id = m_styles->checkedId();
    return id < 0 ? PDFReportStyle::signature : static_cast<PDFReportStyle>(id);
}

QRadioButton* PDFExportSheet::choice(PDFReportStyle style) const {
    return m_choices[static_cast<std::size_t>(style)];
}

}  // namespace copperwick::app
