#include <QApplication>
#include <QMenu>
#include <QTest>

#include "app/reports/pdf_export_sheet.h"
#include "app/widgets/qt_text.h"
#include "runtime/preferences.h"
#include "tests/app/reports/reports_fixture.h"
#include "tests/support/temp_folder.h"

namespace copperwick::app::testing {
namespace {

using copperwick::testing::readFile;
using copperwick::testing::waitUntil;

QStringList labelTexts(QWidget* sheet) {
    QStringList texts;
    for (const QLabel* label : sheet->findChildren<QLabel*>())
        texts << label->text();
    return texts;
}

// The sheet offers the three styles by their names and words, opens on the
// style saved last, and every control is named and reached by the keyboard.
TEST_F(ReportsScreenTest, PDFSheetOffersTheThreeStylesByKeyboard) {
    fillHousehold();
    choosePeriod(PeriodChoice::last3Months);
    const QMenu* menu = page().exportButton()->menu();
    ASSERT_TRUE(menu);
    EXPECT_EQ(menu->actions().front()->text(), QStringLiteral("Report as PDF\u2026"));

    runtime().defaults().set(preference_keys::pdfReportStyle, "everyday");
    PDFExportSheet* sheet = page().exportPDF();
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->windowTitle(), QStringLiteral("Choose a report style"));
    EXPECT_EQ(sheet->style(), PDFReportStyle::everyday);
    const QStringList texts = labelTexts(sheet);
    for (const PDFReportStyle style :
         {PDFReportStyle::signature, PDFReportStyle::everyday, PDFReportStyle::precision}) {
        QRadioButton* choice = sheet->choice(style);
        EXPECT_EQ(choice->text(), toQString(name(style)));
        EXPECT_EQ(choice->accessibleName(), choice->text());
        EXPECT_TRUE(texts.contains(toQString(styleDetail(style))));
    }
    EXPECT_TRUE(
        texts.contains(QStringLiteral("All three styles include the same figures, "
                                      "selected people or cards, and report notes.")));
    EXPECT_TRUE(texts.contains(QStringLiteral("Letter size \u00B7 Multiple pages as needed")));
    EXPECT_EQ(sheet->saveButton()->accessibleName(), QStringLiteral("Save PDF"));
    EXPECT_EQ(sheet->cancelButton()->accessibleName(), QStringLiteral("Cancel"));
    for (const QLabel* label : sheet->findChildren<QLabel*>())
        EXPECT_EQ(label->accessibleName(), label->text());

    sheet->activateWindow();
    ASSERT_TRUE(waitUntil([&] { return QApplication::activeWindow() == sheet; }));
    EXPECT_EQ(QApplication::focusWidget(), sheet->choice(PDFReportStyle::everyday))
        << "the keyboard starts on the chosen style";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down);
    EXPECT_EQ(sheet->style(), PDFReportStyle::precision) << "arrows move between the styles";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), sheet->cancelButton());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    EXPECT_EQ(QApplication::focusWidget(), sheet->saveButton());

    // Escape leaves everything as it was: no file asked for, nothing saved.
    bool asked = false;
    page().setFileChooser([&](const QString&, const QString&) {
        asked = true;
        return QString();
    });
    QTest::keyClick(sheet, Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return !page().pdfSheet(); }));
    EXPECT_FALSE(asked);
    EXPECT_EQ(runtime().defaults().stringValue(preference_keys::pdfReportStyle), "everyday");
}

// Save PDF remembers the style, offers a name, makes the PDF beside the
// window while it counts as a PDF build, and says where it went; a place
// that can't be written is said in the sheet's words.
TEST_F(ReportsScreenTest, PDFIsSavedBesideTheWindowOrSaysWhyNot) {
    fillHousehold();
    choosePeriod(PeriodChoice::last3Months);
    QString offered;
    const auto target = m_workspace.temp / "report.pdf";
    page().setFileChooser([&](const QString& title, const QString& name) {
        EXPECT_EQ(title, QStringLiteral("Report as PDF"));
        offered = name;
        return QString::fromStdString(target.string());
    });
    PDFExportSheet* sheet = page().exportPDF();
    ASSERT_TRUE(sheet);
    EXPECT_EQ(sheet->style(), PDFReportStyle::signature) << "nothing saved yet";
    sheet->choice(PDFReportStyle::precision)->click();
    QTest::keyClick(sheet, Qt::Key_Return);
    EXPECT_TRUE(offered.endsWith(QStringLiteral(" report.pdf"))) << offered.toStdString();
    EXPECT_EQ(runtime().defaults().stringValue(preference_keys::pdfReportStyle), "precision");
    EXPECT_TRUE(page().isSavingPDF());
    EXPECT_EQ(runtime().activePDFBuilds(), 1) << "an update waits for the PDF";
    ASSERT_TRUE(waitUntil([&] { return !page().isSavingPDF(); }));
    EXPECT_EQ(runtime().activePDFBuilds(), 0);
    EXPECT_EQ(runtime().statusMessage(), std::optional<std::string>("Saved report.pdf"));
    EXPECT_EQ(readFile(target).substr(0, 5), "%PDF-");

    const auto nowhere = m_workspace.temp / "missing" / "report.pdf";
    page().setFileChooser(
        [&](const QString&, const QString&) { return QString::fromStdString(nowhere.string()); });
    sheet = page().exportPDF();
    EXPECT_EQ(sheet->style(), PDFReportStyle::precision) << "the style saved last";
    sheet->saveButton()->click();
    ASSERT_TRUE(waitUntil([&] { return !page().isSavingPDF(); }));
    EXPECT_EQ(runtime().errorMessage(),
              std::optional<std::string>(
                  "Couldn't save the PDF: The PDF file couldn't be created at that location."));
    EXPECT_EQ(runtime().activePDFBuilds(), 0);
    EXPECT_FALSE(std::filesystem::exists(nowhere.parent_path()));
}

}  // namespace
}  // namespace copperwick::app::testing
