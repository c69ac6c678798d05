#include "app/cash/cash_page.h"

#include <QApplication>
#include <QPointer>

#include <gtest/gtest.h>

#include "app/cash/cash_entry_sheet.h"
#include "app/cash/new_wallet_sheet.h"
#include "core/operations/manual_entry.h"
#include "tests/app/app_fixture.h"
#include "tests/app/screen_audit.h"
#include "tests/support/ledger_builder.h"

namespace copperwick::testing {
namespace {

class CashScreenTest : public ::testing::Test, protected AppWorkspace {
  protected:
    void open() {
        openRuntime({.ledger = builder.ledger()});
        page = &showPage<app::CashPage>();
    }

    [[nodiscard]] const Ledger& ledger() const { return runtime->ledger(); }

    // The lines of an account, voided and superseded ones too.
    [[nodiscard]] std::vector<LedgerTransaction> linesOf(const Uuid& accountID) const {
        std::vector<LedgerTransaction> lines;
        for (const LedgerTransaction& line : ledger().transactions) {
            if (line.accountID == accountID)
                lines.push_back(line);
        }
        return lines;
    }

    void chooseKind(app::CashEntrySheet* sheet, ManualEntryKind kind) {
        sheet->kindField()->setCurrentIndex(sheet->kindField()->findData(static_cast<int>(kind)));
    }

    LedgerBuilder builder;
    Uuid checking = builder.account("Everyday Checking");
    Uuid wallet = builder.account("Kitchen jar", AccountType::cash);
    app::CashPage* page = nullptr;
};

// A withdrawal whose bank side was the bank's own "ATM WITHDRAWAL" added a
// second bank line, and the money was counted out of the bank twice.
TEST_F(CashScreenTest, AWithdrawalTakesTheImportedAtmLineAsItsBankSide) {
    const Uuid atm = builder.transaction(checking, "ATM WITHDRAWAL 1234 MAIN ST", -6000);
    // A line of the right amount that is already paired can't be the bank side.
    const Uuid paired = builder.transaction(checking, "ATM WITHDRAWAL 99 ELM ST", -6000);
    builder.change(paired, [&](LedgerTransaction& line) { line.transferPairID = Uuid::random(); });
    open();

    app::CashEntrySheet* sheet = page->openCashEntry();
    chooseKind(sheet, ManualEntryKind::withdrawal);
    EXPECT_FALSE(sheet->descriptionField()->isVisible());
    EXPECT_TRUE(sheet->bankLineField()->isVisible());
    QTest::keyClicks(sheet->amountField(), "60");
    ASSERT_EQ(sheet->bankLineField()->count(), 2) << "a new line, and the one unpaired ATM line";
    EXPECT_TRUE(sheet->bankLineField()->itemText(1).contains("ATM WITHDRAWAL 1234 MAIN ST"));
    sheet->bankLineField()->setCurrentIndex(1);
    sheet->saveButton()->click();
    ASSERT_TRUE(waitUntil([&] { return !sheet->isVisible(); }))
        << sheet->refusalLine()->label()->text().toStdString();

    const auto bankLines = linesOf(checking);
    EXPECT_EQ(bankLines.size(), 2u) << "no bank line was added";
    const auto walletLines = linesOf(wallet);
    ASSERT_EQ(walletLines.size(), 1u);
    EXPECT_EQ(walletLines[0].amount, 6000);
    EXPECT_EQ(walletLines[0].transferPairID, atm);
    EXPECT_EQ(ledger().transaction(atm)->transferPairID, walletLines[0].id);
    EXPECT_EQ(cashBalance(ledger(), wallet), 6000);
    EXPECT_EQ(page->balanceLabel(wallet)->text(), "$60.00");
    EXPECT_EQ(page->linesModel()->rowCount(), 1);
}

// A refused entry closed its sheet, and the person had to type it all again.
TEST_F(CashScreenTest, ARefusedEntryKeepsTheSheetOpenWithWhatWasTyped) {
    open();
    const std::size_t before = ledger().transactions.size();
    app::CashEntrySheet* sheet = page->openCashEntry();

    QTest::keyClicks(sheet->amountField(), "abc");
    EXPECT_EQ(sheet->refusalLine()->label()->text(),
              "Choose an account and enter a valid date and positive amount.");
    sheet->amountField()->clear();
    QTest::keyClicks(sheet->amountField(), "-5");
    EXPECT_EQ(sheet->refusalLine()->label()->text(),
              "Choose an account and enter a valid date and positive amount.");

    sheet->amountField()->clear();
    QTest::keyClicks(sheet->amountField(), "12.50");
    EXPECT_TRUE(sheet->refusalLine()->isHidden());
    // No description: core refuses the entry itself.
    sheet->saveButton()->click();
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->amountField()->text(), "12.50");
    EXPECT_EQ(sheet->refusalLine()->label()->text(), "Enter a person, business, or description.");
    EXPECT_EQ(ledger().transactions.size(), before);
    EXPECT_EQ(runtime->entryEditorCount(), 1) << "an open sheet holds an update back";

    sheet->reject();
    EXPECT_TRUE(waitUntil([&] { return runtime->entryEditorCount() == 0; }));
}

TEST_F(CashScreenTest, ANewWalletWithOpeningCashShowsItsBalance) {
    open();
    app::NewWalletSheet* sheet = page->openNewWallet();
    QTest::keyClicks(sheet->openingCashField(), "-1");
    EXPECT_EQ(sheet->refusalLine()->label()->text(),
              "Enter a wallet name, valid date, and nonnegative opening cash.");
    sheet->openingCashField()->clear();
    QTest::keyClicks(sheet->openingCashField(), "250");
    // A blank name is refused on Save, and the sheet stays.
    sheet->saveButton()->click();
    ASSERT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->refusalLine()->label()->text(),
              "Enter a wallet name, valid date, and nonnegative opening cash.");

    QTest::keyClicks(sheet->nameField(), "Travel money");
    QTest::keyClick(sheet->nameField(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] {
        return page->chosenWallet().has_value() &&
               ledger().account(page->chosenWallet())->name == "Travel money";
    }));
    const Uuid added = *page->chosenWallet();
    EXPECT_EQ(ledger().account(added)->type, AccountType::cash);
    EXPECT_EQ(cashBalance(ledger(), added), 25000);
    EXPECT_EQ(page->balanceLabel(added)->text(), "$250.00");
    EXPECT_EQ(ledger().undoLabel(), "Add opening cash");

    // Archiving takes it off the page, and out of the entry sheet's wallets.
    page->archiveButton(added)->click();
    ASSERT_TRUE(waitUntil([&] { return ledger().account(added)->isArchived; }));
    EXPECT_EQ(page->balanceLabel(added), nullptr);
}

// The cash sheet by keyboard alone: Enter on the page's button opens it,
// the amount has the keyboard, Tab reaches the description, Enter saves.
TEST_F(CashScreenTest, KeyboardRoadOfTheCashSheet) {
    open();
    page->addEntryButton()->setFocus();
    QTest::keyClick(page->addEntryButton(), Qt::Key_Return);
    auto* sheet = page->findChild<app::CashEntrySheet*>();
    ASSERT_NE(sheet, nullptr);
    ASSERT_TRUE(waitUntil([&] { return QApplication::focusWidget() == sheet->amountField(); }));
    QTest::keyClicks(QApplication::focusWidget(), "7.25");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), sheet->descriptionField());
    QTest::keyClicks(QApplication::focusWidget(), "Coffee");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return linesOf(wallet).size() == 1; }))
        << runtime->errorMessage().value_or("");
    EXPECT_EQ(linesOf(wallet)[0].amount, -725);
    EXPECT_EQ(linesOf(wallet)[0].kind, TransactionKind::expense);
    EXPECT_EQ(linesOf(wallet)[0].rawDescription, "Coffee");

    // Escape closes a second sheet with nothing done.
    QPointer<app::CashEntrySheet> second = page->openCashEntry();
    ASSERT_TRUE(waitUntil([&] { return second->isVisible(); }));
    QTest::keyClicks(second->amountField(), "3");
    QTest::keyClick(second->amountField(), Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return second.isNull(); }));
    EXPECT_EQ(linesOf(wallet).size(), 1u);

    EXPECT_EQ(misnamedControls(page), QStringList());
}

}  // namespace
}  // namespace copperwick::testing
