#include "core/operations/manual_entry.h"

#include <gtest/gtest.h>

#include "core/model/money.h"
#include "core/operations/change_history.h"
#include "core/operations/classification.h"
#include "core/operations/transaction_correction.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/refusal.h"

namespace copperwick {
namespace {

using testing::day;
using Case = EntryError::Case;

class ManualEntryTest : public ::testing::Test {
  protected:
    ManualEntryTest() {
        Account cash(Uuid::random(), "Wallet", AccountType::cash);
        wallet = cash.id;
        ledger().accounts.push_back(cash);
    }

    Ledger& ledger() { return builder.ledger(); }

    template <typename F>
    void expectRefused(Case expected, F&& operation) {
        const Ledger before = ledger();
        try {
            operation();
            ADD_FAILURE() << "accepted, expected " << EntryError::text(expected);
        } catch (const EntryError& error) {
            EXPECT_EQ(error.kind(), expected) << error.what();
        }
        EXPECT_EQ(ledger(), before) << "a refused entry changed the ledger";
    }

    ManualTransaction spending(int64_t amount) {
        return {.accountID = checking,
                .date = day(2026, 3, 2),
                .amount = amount,
                .description = "  Farmers market \n",
                .kind = TransactionKind::expense,
                .categoryID = builder.category("Groceries")};
    }

    LedgerTransaction only(const Uuid& account) {
        for (const auto& transaction : ledger().transactions) {
            if (transaction.accountID == account)
                return transaction;
        }
        ADD_FAILURE() << "no transaction in the account";
        return {};
    }

    testing::LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
    Uuid wallet;
    Instant now{800000000};
};

TEST_F(ManualEntryTest, ManualEntryIsConfirmedAndUndoable) {
    const auto delta = addManualTransaction(ledger(), spending(-1250), now);
    const auto entry = only(checking);
    EXPECT_EQ(entry.rawDescription, "Farmers market");
    EXPECT_EQ(entry.review, ReviewState::confirmed);
    EXPECT_EQ(entry.method, MatchMethod::manual);
    EXPECT_EQ(entry.entrySource, TransactionEntrySource::manual);
    EXPECT_EQ(entry.evidence, "Manually entered by you.");
    EXPECT_TRUE(entry.fingerprint.starts_with("manual:"));
    EXPECT_TRUE(delta.changes(RecordKind::change));
    ASSERT_EQ(ledger().changes.size(), 1u);
    EXPECT_EQ(ledger().changes[0].label, "Add manual transaction");

    ASSERT_TRUE(undoLastChange(ledger()));
    EXPECT_TRUE(ledger().transactions.empty());
}

TEST_F(ManualEntryTest, ChecksComeInTheirOrderAndChangeNothing) {
    ledger().accounts.update(0, [](Account& account) { account.isArchived = true; });
    expectRefused(Case::account, [&] { (void)addManualTransaction(ledger(), spending(0), now); });
    ledger().accounts.update(0, [](Account& account) { account.isArchived = false; });

    expectRefused(Case::amount, [&] { (void)addManualTransaction(ledger(), spending(0), now); });
    expectRefused(Case::amount, [&] {
        (void)addManualTransaction(ledger(), spending(-Money::kLargestAmount - 1), now);
    });
    auto blank = spending(-100);
    blank.description = " \n\t";
    expectRefused(Case::description, [&] { (void)addManualTransaction(ledger(), blank, now); });

    auto income = spending(-100);
    income.kind = TransactionKind::income;
    income.categoryID = builder.category("Salary");
    expectRefused(Case::category, [&] { (void)addManualTransaction(ledger(), income, now); });
    auto mismatched = spending(-100);
    mismatched.categoryID = builder.category("Salary");
    expectRefused(Case::category, [&] { (void)addManualTransaction(ledger(), mismatched, now); });
    auto transfer = spending(-100);
    transfer.kind = TransactionKind::transfer;
    expectRefused(Case::category, [&] { (void)addManualTransaction(ledger(), transfer, now); });

    // Money back at a shop: spending with a positive amount is a refund.
    EXPECT_NO_THROW((void)addManualTransaction(ledger(), spending(500), now));
}

TEST_F(ManualEntryTest, OneOpeningBalancePerWalletCountingOnlyInItsBalance) {
    const ManualTransaction opening{.accountID = wallet,
                                    .date = day(2026, 3, 1),
                                    .amount = 50'000,
                                    .description = "Opening cash",
                                    .openingBalance = true};
    (void)addManualTransaction(ledger(), opening, now);
    const auto first = only(wallet);
    EXPECT_EQ(first.kind, TransactionKind::transfer);
    EXPECT_FALSE(first.categoryID);
    EXPECT_EQ(first.evidence, "Cash already on hand when tracking started; not income.");
    EXPECT_EQ(ledger().changes.back().label, "Add opening cash");
    EXPECT_EQ(cashBalance(ledger(), wallet), 50'000);
    EXPECT_EQ(cashBalance(ledger(), wallet, day(2026, 2, 28)), 0);

    expectRefused(Case::unavailable, [&] { (void)addManualTransaction(ledger(), opening, now); });
    auto onChecking = opening;
    onChecking.accountID = checking;
    expectRefused(Case::unavailable,
                  [&] { (void)addManualTransaction(ledger(), onChecking, now); });

    (void)setVoided(ledger(), {first.id}, true, "Void", now);
    EXPECT_NO_THROW((void)addManualTransaction(ledger(), opening, now));
}

TEST_F(ManualEntryTest, MovingCashMakesTwoLinkedLegsAndUndoRemovesBoth) {
    (void)moveCash(ledger(), wallet, checking, day(2026, 3, 4), 20'000, std::nullopt, now);
    const auto walletLeg = only(wallet);
    const auto bankLeg = only(checking);
    EXPECT_EQ(walletLeg.amount, 20'000);
    EXPECT_EQ(bankLeg.amount, -20'000);
    EXPECT_EQ(walletLeg.transferPairID, bankLeg.id);
    EXPECT_EQ(bankLeg.transferPairID, walletLeg.id);
    EXPECT_EQ(bankLeg.rawDescription, "Cash withdrawal");
    EXPECT_EQ(walletLeg.rawDescription, "Cash from Checking");
    EXPECT_EQ(bankLeg.evidence, "Linked to cash wallet Wallet; not income or spending.");
    EXPECT_EQ(walletLeg.evidence, "Linked to Checking; not income or spending.");
    EXPECT_EQ(ledger().changes.back().label, "Move cash");

    ASSERT_TRUE(undoLastChange(ledger()));
    EXPECT_TRUE(ledger().transactions.empty());
}

TEST_F(ManualEntryTest, AnImportedWithdrawalServesAsTheBankLegAndComesBackOnUndo) {
    const auto atm = builder.transaction(checking, "ATM WITHDRAWAL 0045", -20'000);
    const auto imported = *ledger().transaction(atm);
    builder.change(atm, [](LedgerTransaction& t) { t.amount = -19'999; });
    expectRefused(Case::transfer, [&] {
        (void)moveCash(ledger(), wallet, checking, day(2026, 3, 2), 20'000, atm, now);
    });
    builder.change(atm, [](LedgerTransaction& t) {
        t.amount = -20'000;
        t.status = TransactionStatus::pending;
    });
    expectRefused(Case::transfer, [&] {
        (void)moveCash(ledger(), wallet, checking, day(2026, 3, 2), 20'000, atm, now);
    });
    builder.change(atm, [&](LedgerTransaction& t) { t = imported; });

    (void)moveCash(ledger(), wallet, checking, day(2026, 3, 2), 20'000, atm, now);
    EXPECT_EQ(ledger().transactions.size(), 2u);
    EXPECT_EQ(ledger().transaction(atm)->transferPairID, only(wallet).id);
    expectRefused(Case::transfer, [&] {
        (void)moveCash(ledger(), wallet, checking, day(2026, 3, 2), 20'000, atm, now);
    });

    ASSERT_TRUE(undoLastChange(ledger()));
    EXPECT_EQ(*ledger().transaction(atm), imported);
    EXPECT_EQ(ledger().transactions.size(), 1u);
}

TEST_F(ManualEntryTest, CashMovesNeedAWalletAndABankAccountInOneCurrency) {
    const auto euros = builder.account("Euro account");
    ledger().accounts.update(2, [](Account& account) { account.currency = "EUR"; });
    expectRefused(Case::account, [&] {
        (void)moveCash(ledger(), wallet, euros, day(2026, 3, 2), 100, std::nullopt, now);
    });
    expectRefused(Case::account, [&] {
        (void)moveCash(ledger(), checking, wallet, day(2026, 3, 2), 100, std::nullopt, now);
    });
    expectRefused(Case::amount, [&] {
        (void)moveCash(ledger(), wallet, checking, day(2026, 3, 2), 0, std::nullopt, now);
    });
}

TEST_F(ManualEntryTest, CashSheetKindsAndGiftsCategoryMadeOnce) {
    const CashEntry spent{.kind = ManualEntryKind::spending,
                          .walletID = wallet,
                          .date = day(2026, 3, 2),
                          .amount = 1200,
                          .description = "Tacos",
                          .categoryID = builder.category("Dining")};
    (void)enterCash(ledger(), spent, now);
    EXPECT_EQ(only(wallet).amount, -1200);

    EXPECT_FALSE(ledger().categoryNamed("Gifts received"));
    CashEntry gift{.kind = ManualEntryKind::gift,
                   .walletID = wallet,
                   .date = day(2026, 3, 3),
                   .amount = 5000,
                   .description = "Birthday"};
    (void)enterCash(ledger(), gift, now);
    (void)enterCash(ledger(), gift, now);
    const auto* gifts = ledger().categoryNamed("Gifts received");
    ASSERT_TRUE(gifts);
    EXPECT_EQ(gifts->group, CategoryGroup::income);
    int giftCategories = 0;
    for (const auto& category : ledger().categories)
        giftCategories += category.name == "Gifts received" ? 1 : 0;
    EXPECT_EQ(giftCategories, 1);
    EXPECT_EQ(cashBalance(ledger(), wallet), -1200 + 10'000);

    // A refused gift leaves no new category behind either.
    Ledger fresh = testing::LedgerBuilder().ledger();
    gift.walletID = Uuid::random();
    EXPECT_THROW((void)enterCash(fresh, gift, now), EntryError);
    EXPECT_FALSE(fresh.categoryNamed("Gifts received"));

    EXPECT_EQ(label(ManualEntryKind::withdrawal), "Withdrawal into cash");
    const CashEntry deposit{.kind = ManualEntryKind::deposit,
                            .walletID = wallet,
                            .date = day(2026, 3, 5),
                            .amount = 3000,
                            .bankAccountID = checking};
    (void)enterCash(ledger(), deposit, now);
    EXPECT_EQ(only(checking).amount, 3000);
    EXPECT_EQ(only(checking).rawDescription, "Cash deposit");
}

class CorrectionTest : public ManualEntryTest {
  protected:
    Uuid bankLine = builder.transaction(checking, "SAFEWAY #1482", -5000, day(2026, 3, 2));
};

TEST_F(CorrectionTest, TheBanksVersionStaysThroughEveryCorrection) {
    (void)correctTransaction(ledger(), bankLine, day(2026, 3, 2), -4500, "SAFEWAY", "Overcharged",
                             now);
    (void)correctTransaction(ledger(), bankLine, day(2026, 3, 3), -4500, "SAFEWAY", "Wrong day",
                             now);
    const auto corrected = *ledger().transaction(bankLine);
    ASSERT_TRUE(corrected.originalDetails);
    EXPECT_EQ(*corrected.originalDetails,
              (TransactionDetails{day(2026, 3, 2), -5000, "SAFEWAY #1482"}));
    ASSERT_TRUE(corrected.revisions);
    ASSERT_EQ(corrected.revisions->size(), 2u);
    EXPECT_EQ((*corrected.revisions)[1].before, (*corrected.revisions)[0].after);
    EXPECT_EQ((*corrected.revisions)[1].reason, "Wrong day");
    EXPECT_EQ(corrected.evidence, "Corrected by you: Wrong day");
    EXPECT_EQ(corrected.review, ReviewState::confirmed);
    EXPECT_EQ(ledger().changes.back().label, "Correct transaction");

    // Only the reason differs: nothing happens, and no undo step.
    const auto steps = ledger().changes.size();
    EXPECT_TRUE(
        correctTransaction(ledger(), bankLine, day(2026, 3, 3), -4500, " SAFEWAY ", "Again", now)
            .isEmpty());
    EXPECT_EQ(ledger().changes.size(), steps);

    ASSERT_TRUE(undoLastChange(ledger()));
    EXPECT_EQ(ledger().transaction(bankLine)->revisions->size(), 1u);
}

TEST_F(CorrectionTest, RefusalsAndManualEntriesHaveNoBankVersion) {
    const auto partner = builder.transaction(checking, "TRANSFER IN", 5000);
    builder.change(bankLine, [&](LedgerTransaction& t) { t.transferPairID = partner; });
    expectRefused(Case::unavailable, [&] {
        (void)correctTransaction(ledger(), bankLine, day(2026, 3, 2), -4500, "X", "Why", now);
    });
    builder.change(bankLine, [](LedgerTransaction& t) { t.transferPairID.reset(); });
    expectRefused(Case::reason, [&] {
        (void)correctTransaction(ledger(), bankLine, day(2026, 3, 2), -4500, "SAFEWAY", " ", now);
    });
    expectRefused(Case::description, [&] {
        (void)correctTransaction(ledger(), bankLine, day(2026, 3, 2), -4500, "", "Why", now);
    });
    builder.change(bankLine, [](LedgerTransaction& t) { t.kind = TransactionKind::income; });
    expectRefused(Case::amount, [&] {
        (void)correctTransaction(ledger(), bankLine, day(2026, 3, 2), -4500, "X", "Why", now);
    });
    builder.change(bankLine, [](LedgerTransaction& t) { t.status = TransactionStatus::pending; });
    expectRefused(Case::unavailable, [&] {
        (void)correctTransaction(ledger(), bankLine, day(2026, 3, 2), 4500, "X", "Why", now);
    });
    expectRefused(Case::unavailable, [&] { (void)splitTransaction(ledger(), bankLine, {}, now); });

    (void)addManualTransaction(ledger(), spending(-700), now);
    Uuid manual;
    for (const auto& transaction : ledger().transactions) {
        if (transaction.isManualEntry())
            manual = transaction.id;
    }
    (void)correctTransaction(ledger(), manual, day(2026, 3, 2), -800, "Market", "Typo", now);
    EXPECT_FALSE(ledger().transaction(manual)->originalDetails);
    EXPECT_EQ(ledger().transaction(manual)->revisions->size(), 1u);
}

TEST_F(CorrectionTest, SplitPartsMustAddUpInOneDirection) {
    builder.change(bankLine, [](LedgerTransaction& t) { t.kind = TransactionKind::expense; });
    const auto part = [&](int64_t amount, const char* category = "Groceries") {
        return TransactionSplit{Uuid::random(), builder.category(category), amount, ""};
    };
    expectRefused(Case::splits, [&] {
        (void)splitTransaction(ledger(), bankLine, {part(-3000), part(-2001)}, now);
    });
    expectRefused(Case::splits, [&] {
        (void)splitTransaction(ledger(), bankLine, {part(-6000), part(1000)}, now);
    });
    expectRefused(Case::splits,
                  [&] { (void)splitTransaction(ledger(), bankLine, {part(-5000)}, now); });
    expectRefused(Case::splits, [&] {
        (void)splitTransaction(ledger(), bankLine, {part(-3000), part(-2000, "Salary")}, now);
    });
    std::vector<TransactionSplit> tooMany(51, part(-1));
    for (auto& each : tooMany)
        each.id = Uuid::random();
    expectRefused(Case::splits, [&] { (void)splitTransaction(ledger(), bankLine, tooMany, now); });

    (void)splitTransaction(ledger(), bankLine, {part(-3000), part(-2000, "Shopping")}, now);
    ASSERT_TRUE(ledger().transaction(bankLine)->splits);
    EXPECT_EQ(ledger().changes.back().label, "Split transaction");

    // A new date keeps the split; a new amount ends it.
    (void)correctTransaction(ledger(), bankLine, day(2026, 3, 4), -5000, "SAFEWAY", "Date", now);
    EXPECT_TRUE(ledger().transaction(bankLine)->splits);
    (void)correctTransaction(ledger(), bankLine, day(2026, 3, 4), -4000, "SAFEWAY", "Amount", now);
    EXPECT_FALSE(ledger().transaction(bankLine)->splits);

    (void)splitTransaction(ledger(), bankLine, {}, now);
    EXPECT_EQ(ledger().changes.back().label, "Remove split");
}

TEST_F(CorrectionTest, IncomeCantBeSplit) {
    builder.change(bankLine, [](LedgerTransaction& t) {
        t.kind = TransactionKind::income;
        t.amount = 5000;
    });
    expectRefused(Case::unavailable, [&] { (void)splitTransaction(ledger(), bankLine, {}, now); });
}

TEST(EntryForms, RefuseAnUnusableFormInTheSheetsOwnWords) {
    constexpr std::string_view kEntry =
        "Choose an account and enter a valid date and positive amount.";
    const auto entry = [](std::string_view date, std::string_view amount, bool positive) {
        return testing::refusal([&] { return entryFormEntered(date, amount, positive); });
    };
    EXPECT_EQ(entry("2026-03-02", "-12.50", false), "accepted");
    EXPECT_EQ(entry("2026-03-02", "-12.50", true), kEntry);
    EXPECT_EQ(entry("2026-03-02", "0", true), kEntry);
    EXPECT_EQ(entry("March 2", "12.50", false), kEntry);
    EXPECT_EQ(entry("2026-03-02", "12.5.0", false), kEntry);
    EXPECT_EQ(entryFormEntered("2026-03-02", "12.50", true).amount, 1250);

    constexpr std::string_view kWallet =
        "Enter a wallet name, valid date, and nonnegative opening cash.";
    const auto wallet = [](std::string_view name, std::string_view cash, std::string_view date) {
        return testing::refusal([&] { return walletFormEntered(name, cash, date); });
    };
    EXPECT_EQ(wallet(" ", "", ""), kWallet);
    EXPECT_EQ(wallet("Pocket", "-1", ""), kWallet);
    EXPECT_EQ(wallet("Pocket", "", "2026-02-30"), kWallet);
    const WalletForm form = walletFormEntered(" Pocket ", "", "");
    EXPECT_EQ(form.name, "Pocket");
    EXPECT_EQ(form.openingCash, 0) << "blank cash is none";
    EXPECT_EQ(form.date, std::nullopt) << "blank is today, for the caller to say";
}

TEST_F(ManualEntryTest, AWalletWhoseOpeningCashIsRefusedIsNotKept) {
    const Account pocket(Uuid::random(), "Pocket", AccountType::checking);
    expectRefused(Case::amount, [&] {
        return addWallet(ledger(), pocket, Money::kLargestAmount + 1, day(2026, 3, 1), now);
    });
    (void)addWallet(ledger(), pocket, 4000, day(2026, 3, 1), now);
    EXPECT_EQ(ledger().account(pocket.id)->type, AccountType::cash);
    EXPECT_EQ(cashBalance(ledger(), pocket.id), 4000);
}

}  // namespace
}  // namespace copperwick
