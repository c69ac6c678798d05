#include "app/transactions/correction_sheet.h"
#include "app/transactions/manual_entry_sheet.h"
#include "app/transactions/split_sheet.h"

#include <algorithm>

#include "core/operations/classification.h"

#include "tests/app/transactions/transactions_fixture.h"

namespace copperwick::testing {
namespace {

using app::CorrectionSheet;
using app::ManualEntrySheet;
using app::SplitSheet;

class TransactionSheetsTest : public TransactionsScreenTest {
  protected:
    void SetUp() override { openWorkspace(); }

    // Tab until `target` has the keyboard, as a person would; false when
    // a whole round of the sheet never reached it.
    static bool tabTo(QWidget* sheet, QWidget* target) {
        for (int step = 0; step < 40; ++step) {
            if (QApplication::focusWidget() == target ||
                target->isAncestorOf(QApplication::focusWidget()))
                return true;
            QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : sheet,
                            Qt::Key_Tab);
        }
        ADD_FAILURE() << "focus: "
                      << (QApplication::focusWidget()
                              ? QApplication::focusWidget()->metaObject()->className()
                              : "none")
                      << " active: "
                      << (QApplication::activeWindow()
                              ? QApplication::activeWindow()->metaObject()->className()
                              : "none");
        return false;
    }

    static void typeInto(QWidget* sheet, QLineEdit* field, const QString& text) {
        ASSERT_TRUE(tabTo(sheet, field));
        field->selectAll();
        QTest::keyClicks(field, text);
    }
};

// A correction typed by keyboard alone: Tab to each field, type, Enter. The
// bank's version is kept, and the sheet opened again lists the correction.
TEST_F(TransactionSheetsTest, CorrectsALineByKeyboard) {
    const Uuid id = addLine("CORNER BAKERY", -800);
    shownIds();
    page().selectLines({id});
    QTest::mouseClick(page().inspector()->correctButton(), Qt::LeftButton);
    CorrectionSheet* sheet = openedSheet<CorrectionSheet>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(runtime().entryEditorCount(), 1);
    typeInto(sheet, sheet->amountField(), "-18.00");
    typeInto(sheet, sheet->descriptionField(), "CORNER BAKERY CAKE");
    // No reason yet: refused under its field, nothing saved.
    QTest::keyClick(sheet->descriptionField(), Qt::Key_Return);
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->refusalText(), "Add a brief reason for this correction.");
    EXPECT_EQ(line(id).amount, -800);
    typeInto(sheet, sheet->reasonField(), "Receipt says 18");
    QTest::keyClick(sheet->reasonField(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return openedSheetGone<CorrectionSheet>(); }));
    EXPECT_EQ(runtime().entryEditorCount(), 0);

    EXPECT_EQ(line(id).amount, -1800);
    EXPECT_EQ(line(id).rawDescription, "CORNER BAKERY CAKE");
    ASSERT_TRUE(line(id).originalDetails.has_value());
    EXPECT_EQ(line(id).originalDetails->amount, -800);
    EXPECT_EQ(ledger().undoLabel(), "Correct transaction");

    QTest::mouseClick(page().inspector()->correctButton(), Qt::LeftButton);
    sheet = openedSheet<CorrectionSheet>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(sheet->history()->isVisible());
    QStringList shown;
    for (QLabel* label : sheet->history()->findChildren<QLabel*>())
        shown.append(label->text());
    EXPECT_TRUE(shown.contains("Correction history"));
    EXPECT_TRUE(shown.contains(
        QStringLiteral("Before: Mar 2, 2026 \u00B7 \u2212$8.00 \u00B7 CORNER BAKERY")))
        << shown.join('|').toStdString();
    QTest::keyClick(sheet, Qt::Key_Escape);
}

// A split typed by keyboard: two parts that add up to the line are saved;
// parts that don't are refused under the parts with the sheet left open.
TEST_F(TransactionSheetsTest, SplitsALineByKeyboard) {
    const Uuid id = addLine("TARGET STORE 9", -5000);
    change([&](Ledger& copy, LedgerDelta& delta) {
        delta.merge(classify(copy,
                             {.ids = {id},
                              .merchantName = std::nullopt,
                              .kind = TransactionKind::expense,
                              .categoryID = categoryNamed("Shopping"),
                              .remember = false,
                              .label = "Set category"},
                             runtime().now()));
    });
    shownIds();
    page().selectLines({id});
    ASSERT_EQ(page().inspector()->splitButton()->text(), "Split Between Categories\u2026");
    QTest::mouseClick(page().inspector()->splitButton(), Qt::LeftButton);
    SplitSheet* sheet = openedSheet<SplitSheet>();
    ASSERT_NE(sheet, nullptr);
    ASSERT_EQ(sheet->parts().size(), 2u);

    const auto choose = [&](QComboBox* box, const QString& words) {
        ASSERT_TRUE(tabTo(sheet, box));
        while (box->currentText() != words && box->currentIndex() < box->count() - 1)
            QTest::keyClick(box, Qt::Key_Down);
        EXPECT_EQ(box->currentText(), words);
    };
    choose(sheet->parts()[0].category, "Groceries");
    typeInto(sheet, sheet->parts()[0].amount, "30.00");
    choose(sheet->parts()[1].category, "Shopping");
    typeInto(sheet, sheet->parts()[1].amount, "20.01");
    EXPECT_EQ(sheet->remainingLabel()->text(), QStringLiteral("Left to divide: $0.01"));
    QTest::keyClick(sheet->parts()[1].amount, Qt::Key_Return);
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->refusalText(),
              "Use at least two spending parts, with the same direction, that add up exactly to "
              "the transaction.");
    EXPECT_FALSE(line(id).splits.has_value());

    typeInto(sheet, sheet->parts()[1].amount, "20.00");
    QTest::keyClick(sheet->parts()[1].amount, Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return openedSheetGone<SplitSheet>(); }));
    ASSERT_TRUE(line(id).splits.has_value());
    ASSERT_EQ(line(id).splits->size(), 2u);
    EXPECT_EQ(line(id).splits->at(0).categoryID, categoryNamed("Groceries"));
    EXPECT_EQ(line(id).splits->at(0).amount, -3000);
    EXPECT_EQ(line(id).splits->at(1).amount, -2000);
    EXPECT_EQ(ledger().undoLabel(), "Split transaction");
    EXPECT_EQ(page().inspector()->splitButton()->text(), "Edit Split\u2026");
}

// A refused manual entry leaves the sheet open with everything typed and
// the refusal's words under the field; nothing reaches the ledger.
TEST_F(TransactionSheetsTest, ManualEntryRefusalKeepsTheSheetOpenWithTheInput) {
    const std::size_t before = ledger().transactions.size();
    QTest::mouseClick(page().addButton(), Qt::LeftButton);
    ManualEntrySheet* sheet = openedSheet<ManualEntrySheet>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(runtime().entryEditorCount(), 1);
    typeInto(sheet, sheet->amountField(), "12.50");
    typeInto(sheet, sheet->descriptionField(), "Farmers market");
    QTest::keyClick(sheet->descriptionField(), Qt::Key_Return);
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->refusalText(), "Choose a category that matches spending or income.");
    EXPECT_EQ(sheet->descriptionField()->text(), "Farmers market");
    EXPECT_EQ(sheet->amountField()->text(), "12.50");
    EXPECT_EQ(ledger().transactions.size(), before);

    typeInto(sheet, sheet->amountField(), "0");
    QTest::keyClick(sheet->amountField(), Qt::Key_Return);
    EXPECT_EQ(sheet->refusalText(),
              "Choose an account and enter a valid date and positive amount.");

    typeInto(sheet, sheet->amountField(), "12.50");
    sheet->categoryBox()->setCurrentIndex(sheet->categoryBox()->findText("Groceries"));
    QTest::keyClick(sheet->amountField(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return openedSheetGone<ManualEntrySheet>(); }));
    EXPECT_EQ(runtime().entryEditorCount(), 0);
    ASSERT_EQ(ledger().transactions.size(), before + 1);
    EXPECT_EQ(ledger().undoLabel(), "Add manual transaction");
    const auto added = std::find_if(ledger().transactions.begin(), ledger().transactions.end(),
                                    [](const auto& t) { return t.isManualEntry(); });
    ASSERT_NE(added, ledger().transactions.end());
    EXPECT_EQ(added->amount, -1250);
    EXPECT_EQ(added->rawDescription, "Farmers market");
    chooseFilter(QStringLiteral("Manual entries"));
    EXPECT_EQ(shownIds(), std::vector<Uuid>{added->id});
}

// On a long history the entry is checked, backed up and saved beside the
// window: the sheet waits closed to the keyboard, a refusal still comes back
// under the field with what was typed, and an accepted entry closes it.
TEST_F(TransactionSheetsTest, OnALongHistoryTheEntrySheetWaitsForItsSave) {
    const std::size_t before = ledger().transactions.size();
    QTest::mouseClick(page().addButton(), Qt::LeftButton);
    ManualEntrySheet* sheet = openedSheet<ManualEntrySheet>();
    ASSERT_NE(sheet, nullptr);
    sheet->setSaveInBackgroundFrom(0);
    typeInto(sheet, sheet->amountField(), "12.50");
    typeInto(sheet, sheet->descriptionField(), "Farmers market");
    QTest::keyClick(sheet->descriptionField(), Qt::Key_Return);
    EXPECT_FALSE(sheet->isEnabled());
    runtime().mainQueue()->runUntil([&] { return !runtime().isChangingInBackground(); });
    EXPECT_TRUE(sheet->isEnabled());
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->refusalText(), "Choose a category that matches spending or income.");
    EXPECT_EQ(sheet->descriptionField()->text(), "Farmers market");
    EXPECT_FALSE(runtime().errorMessage()) << "the refusal stands under the field alone";

    sheet->categoryBox()->setCurrentIndex(sheet->categoryBox()->findText("Groceries"));
    QTest::keyClick(sheet->amountField(), Qt::Key_Return);
    EXPECT_FALSE(sheet->isEnabled());
    EXPECT_EQ(ledger().transactions.size(), before) << "nothing is live until it is saved";
    runtime().mainQueue()->runUntil([&] { return !runtime().isChangingInBackground(); });
    ASSERT_TRUE(waitUntil([&] { return openedSheetGone<ManualEntrySheet>(); }));
    EXPECT_EQ(ledger().transactions.size(), before + 1);
    EXPECT_EQ(runtime().entryEditorCount(), 0);
}

}  // namespace
}  // namespace copperwick::testing
