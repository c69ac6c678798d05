// The two sheets of the Import screen: teaching the columns of a file
// Copperwick doesn't know, and the list of bank file layouts with layout
// files going out and coming in.

#include "core/import/layout_file.h"
#include "tests/app/import/import_screen_fixture.h"

namespace copperwick::testing {
namespace {

using Column = app::ColumnMappingSheet::Column;

class ImportSheets : public ImportScreenTest {
  protected:
    app::ImportFileCard* dropUnknownFile() {
        drop({write("credit-union.csv",
                    "Posted On,Narrative,Sum,Ref\n"
                    "2026-01-03,CORNER COFFEE,-4.50,1\n"
                    "2026-01-04,PAYCHECK,1200.00,2\n"
                    "2026-01-05,BOOK NOOK,-18.25,3\n")});
        return card("credit-union.csv");
    }
};

TEST_F(ImportSheets, SaveLayoutWaitsForDateDescriptionAndAmountThenTeachesTheLayout) {
    auto* shown = dropUnknownFile();
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->layoutLabel()->text(), "Layout not recognized");
    ASSERT_TRUE(shown->chooseColumnsButton()->isVisible());
    QTest::mouseClick(shown->chooseColumnsButton(), Qt::LeftButton);
    app::ColumnMappingSheet* sheet = page->mappingSheet();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->windowTitle(), "Choose columns");
    EXPECT_EQ(sheet->nameField()->text(), "credit-union");

    EXPECT_FALSE(sheet->saveButton()->isEnabled());
    pick(sheet->columnPicker(Column::date), "Posted On");
    EXPECT_FALSE(sheet->saveButton()->isEnabled());
    pick(sheet->columnPicker(Column::description), "Narrative");
    EXPECT_FALSE(sheet->saveButton()->isEnabled());
    pick(sheet->columnPicker(Column::amount), "Sum");
    EXPECT_TRUE(sheet->saveButton()->isEnabled());
    EXPECT_TRUE(waitUntil([&] {
        return sheet->previewLabel()->text() ==
               "3 rows read, 0 couldn't be read. Purchases should show as money out.";
    })) << sheet->previewLabel()->text().toStdString();

    QTest::mouseClick(sheet->saveButton(), Qt::LeftButton);
    EXPECT_TRUE(waitUntil([&] { return page->mappingSheet() == nullptr; }));
    EXPECT_FALSE(importer.mappingFileID());
    ASSERT_EQ(runtime->ledger().profiles.size(), 1u);
    EXPECT_EQ(runtime->ledger().profiles[0].name, "credit-union");
    EXPECT_EQ(shown->layoutLabel()->text(), "Layout: credit-union");
    EXPECT_FALSE(shown->chooseColumnsButton()->isVisibleTo(shown));
    EXPECT_EQ(fileOf(shown).analysis.rows.size(), 3u);
}

TEST_F(ImportSheets, ALayoutWorkedOutFromTheFileIsToldOnItsCard) {
    drop({write("payee.csv",
                "Date,Payee,Amount\n"
                "02/03/2026,CORNER SHOP,-12.50\n"
                "15/03/2026,PAYROLL,1500.00\n")});
    auto* shown = card("payee.csv");
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->layoutLabel()->text(), "Layout: payee");
    EXPECT_TRUE(shown->workedOutLabel()->isVisibleTo(shown));
    EXPECT_EQ(shown->workedOutLabel()->text(),
              "Layout worked out from the file: date in “Date”, description in “Payee”, amount "
              "in “Amount”.");
    EXPECT_FALSE(shown->chooseColumnsButton()->isVisibleTo(shown));
}

TEST_F(ImportSheets, SplitColumnsTakeThePlaceOfTheAmount) {
    QTest::mouseClick(dropUnknownFile()->chooseColumnsButton(), Qt::LeftButton);
    app::ColumnMappingSheet* sheet = page->mappingSheet();
    ASSERT_NE(sheet, nullptr);
    pick(sheet->columnPicker(Column::date), "Posted On");
    pick(sheet->columnPicker(Column::description), "Narrative");
    QTest::mouseClick(sheet->splitBox(), Qt::LeftButton);
    EXPECT_FALSE(sheet->columnPicker(Column::amount)->isVisibleTo(sheet));
    EXPECT_TRUE(sheet->columnPicker(Column::moneyOut)->isVisibleTo(sheet));
    pick(sheet->columnPicker(Column::moneyOut), "Sum");
    EXPECT_FALSE(sheet->saveButton()->isEnabled());
    pick(sheet->columnPicker(Column::moneyIn), "Ref");
    EXPECT_TRUE(sheet->saveButton()->isEnabled());
}

TEST_F(ImportSheets, EscapeClosesEachSheetWithoutAChange) {
    QTest::mouseClick(dropUnknownFile()->chooseColumnsButton(), Qt::LeftButton);
    ASSERT_NE(page->mappingSheet(), nullptr);
    pick(page->mappingSheet()->columnPicker(Column::date), "Posted On");
    QTest::keyClick(page->mappingSheet(), Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return page->mappingSheet() == nullptr; }));
    EXPECT_FALSE(importer.mappingFileID());
    EXPECT_EQ(runtime->ledger().profiles.size(), 0u);

    QTest::mouseClick(page->dropArea()->layoutsButton(), Qt::LeftButton);
    ASSERT_NE(page->layoutsSheet(), nullptr);
    QTest::keyClick(page->layoutsSheet(), Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return page->layoutsSheet() == nullptr; }));
}

TEST_F(ImportSheets, LayoutsListFiltersByNameIgnoringCase) {
    QTest::mouseClick(page->dropArea()->layoutsButton(), Qt::LeftButton);
    app::ImportLayoutsSheet* sheet = page->layoutsSheet();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->shownLayouts().size(), 16);
    QTest::keyClicks(sheet->searchField(), "CHASE");
    EXPECT_EQ(sheet->shownLayouts(),
              (QStringList{"Chase checking or savings", "Chase credit card"}));
    // Built-in layouts travel with every copy; only taught ones are exported.
    EXPECT_EQ(sheet->exportButton("Chase credit card"), nullptr);
}

TEST_F(ImportSheets, TaughtLayoutGoesOutToAFileAndComesBackAsANewOne) {
    QTest::mouseClick(dropUnknownFile()->chooseColumnsButton(), Qt::LeftButton);
    app::ColumnMappingSheet* mapping = page->mappingSheet();
    pick(mapping->columnPicker(Column::date), "Posted On");
    pick(mapping->columnPicker(Column::description), "Narrative");
    pick(mapping->columnPicker(Column::amount), "Sum");
    QTest::mouseClick(mapping->saveButton(), Qt::LeftButton);
    EXPECT_TRUE(waitUntil([&] { return page->mappingSheet() == nullptr; }));

    QTest::mouseClick(page->dropArea()->layoutsButton(), Qt::LeftButton);
    app::ImportLayoutsSheet* sheet = page->layoutsSheet();
    ASSERT_NE(sheet, nullptr);
    QPushButton* exportButton = sheet->exportButton("credit-union");
    ASSERT_NE(exportButton, nullptr);
    saveTo = temp / "shared layout.json";
    QTest::mouseClick(exportButton, Qt::LeftButton);
    EXPECT_EQ(suggestedName, "credit-union.json");
    EXPECT_EQ(runtime->statusMessage(), "Saved shared layout.json.");
    EXPECT_EQ(readFile(*saveTo), exportLayout(runtime->ledger().profiles[0]));

    openFrom = saveTo;
    QTest::mouseClick(sheet->importButton(), Qt::LeftButton);
    ASSERT_EQ(runtime->ledger().profiles.size(), 2u);
    EXPECT_NE(runtime->ledger().profiles[1].id, runtime->ledger().profiles[0].id);
    EXPECT_EQ(runtime->statusMessage(), "Imported the layout “credit-union”.");
    EXPECT_EQ(sheet->shownLayouts().count("credit-union"), 2);
}

TEST_F(ImportSheets, RefusedLayoutFileIsToldInCoresWords) {
    QTest::mouseClick(page->dropArea()->layoutsButton(), Qt::LeftButton);
    app::ImportLayoutsSheet* sheet = page->layoutsSheet();
    ASSERT_NE(sheet, nullptr);
    openFrom =
        write("nothing.json",
              R"({"id":"x","name":"","hasHeader":true,"requiredHeaders":["A"],)"
              R"("forbiddenHeaders":[],"headerlessColumns":[],"headerlessShape":"none",)"
              R"("dateColumn":"A","descriptionColumn":"B","amountColumn":"C",)"
              R"("signConvention":"positiveIsMoneyIn","pendingValues":[],"isBuiltIn":false})");
    QTest::mouseClick(sheet->importButton(), Qt::LeftButton);
    const QString refusal =
        "Could not import that saved layout: This transaction can no longer be changed.";
    EXPECT_TRUE(sheet->refusalLabel()->isVisibleTo(sheet));
    EXPECT_EQ(sheet->refusalLabel()->text(), refusal);
    EXPECT_EQ(runtime->errorMessage(), refusal.toStdString());
    EXPECT_EQ(runtime->ledger().profiles.size(), 0u);
}

}  // namespace
}  // namespace copperwick::testing
