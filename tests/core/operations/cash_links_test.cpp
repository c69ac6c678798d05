#include "core/operations/cash_links.h"

#include <gtest/gtest.h>

#include "core/operations/manual_entry.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;
using testing::LedgerBuilder;

// The bank side a cash move may take is exactly the line moveCash accepts:
// offering one it refuses would leave the person with a refusal for a choice
// the sheet gave them.
TEST(LinkableBankLines, OffersOnlyTheLinesMoveCashTakes) {
    LedgerBuilder builder;
    const Uuid checking = builder.account("Everyday Checking");
    const Uuid savings = builder.account("Savings", AccountType::savings);
    const Uuid wallet = builder.account("Wallet", AccountType::cash);
    const Uuid older = builder.transaction(checking, "ATM WITHDRAWAL 1", -6000, day(2026, 3, 1));
    const Uuid newer = builder.transaction(checking, "ATM WITHDRAWAL 2", -6000, day(2026, 3, 9));
    const Uuid pending = builder.transaction(checking, "ATM WITHDRAWAL 3", -6000);
    builder.change(pending,
                   [](LedgerTransaction& line) { line.status = TransactionStatus::pending; });
    const Uuid voided = builder.transaction(checking, "ATM WITHDRAWAL 4", -6000);
    builder.change(voided, [](LedgerTransaction& line) { line.voided = true; });
    const Uuid paired = builder.transaction(checking, "ATM WITHDRAWAL 5", -6000);
    builder.change(paired, [](LedgerTransaction& line) { line.transferPairID = Uuid::random(); });
    builder.transaction(checking, "ATM WITHDRAWAL 6", -5999);
    builder.transaction(savings, "ATM WITHDRAWAL 7", -6000);
    const Ledger& ledger = builder.ledger();

    const auto lines = linkableBankLines(ledger, checking, 6000);
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0]->id, newer) << "newest first";
    EXPECT_EQ(lines[1]->id, older);
    EXPECT_TRUE(linkableBankLines(ledger, checking, -6000).empty()) << "a deposit's sign";
    EXPECT_TRUE(linkableBankLines(ledger, checking, 0).empty());

    for (const LedgerTransaction* line : lines) {
        Ledger copy = ledger;
        EXPECT_NO_THROW(
            (void)moveCash(copy, wallet, checking, day(2026, 3, 9), 6000, line->id, Instant{0}));
    }
    for (const Uuid& refused : {pending, voided, paired}) {
        Ledger copy = ledger;
        EXPECT_THROW(
            (void)moveCash(copy, wallet, checking, day(2026, 3, 9), 6000, refused, Instant{0}),
            EntryError);
    }
}

}  // namespace
}  // namespace copperwick

namespace copperwick {
namespace {

// The page's balances in one pass must be the very sums cashBalance gives.
TEST(WalletBalances, AreEachWalletsCashBalance) {
    testing::LedgerBuilder builder;
    const Uuid checking = builder.account("Everyday Checking");
    const Uuid jar = builder.account("Jar", AccountType::cash);
    const Uuid purse = builder.account("Purse", AccountType::cash);
    builder.transaction(jar, "Opening cash", 5000);
    builder.transaction(jar, "Lunch", -1250);
    const Uuid voided = builder.transaction(jar, "Mistake", -999);
    builder.change(voided, [](LedgerTransaction& line) { line.voided = true; });
    builder.transaction(checking, "Salary", 300000);
    const Ledger& ledger = builder.ledger();

    const auto balances = walletBalances(ledger);
    ASSERT_EQ(balances.size(), 2u) << "wallets only";
    EXPECT_EQ(balances.at(jar), 3750);
    EXPECT_EQ(balances.at(jar), cashBalance(ledger, jar));
    EXPECT_EQ(balances.at(purse), 0);
}

}  // namespace
}  // namespace copperwick
