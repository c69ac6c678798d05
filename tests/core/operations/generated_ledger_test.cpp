// Properties that must hold on a whole household's history, not only on the
// handful of lines the other tests build.

#include <gtest/gtest.h>

#include "bench/ledger_generator.h"
#include "core/matching/transfer_pairing.h"
#include "core/operations/change_history.h"
#include "core/operations/classification.h"

namespace copperwick {
namespace {

TEST(GeneratedLedger, MatchingSettlesAfterOneRun) {
    Ledger ledger = bench::generateLedger({.transactions = 20'000});
    (void)rematch(ledger);
    EXPECT_TRUE(rematch(ledger).isEmpty()) << "an unchanged ledger rematches to nothing";
    EXPECT_TRUE(pairTransfers(ledger).isEmpty()) << "pairing twice changes nothing";

    std::size_t pairs = 0;
    for (const auto& transaction : ledger.transactions) {
        if (!transaction.transferPairID)
            continue;
        ++pairs;
        const LedgerTransaction* partner = ledger.transaction(transaction.transferPairID);
        ASSERT_NE(partner, nullptr);
        EXPECT_EQ(partner->transferPairID, transaction.id);
        EXPECT_EQ(partner->amount, -transaction.amount);
    }
    EXPECT_GT(pairs, 0u);
}

TEST(GeneratedLedger, RememberedDecisionUndoesExactly) {
    Ledger ledger = bench::generateLedger({.transactions = 5'000});
    (void)rematch(ledger);
    const LedgerTransaction& sample = *ledger.transactions.begin();
    const Ledger before = ledger;

    (void)classify(ledger,
                   Classification{.ids = {sample.id},
                                  .merchantName = "Chosen Name",
                                  .kind = TransactionKind::expense,
                                  .categoryID = ledger.categoryNamed("Pets")->id,
                                  .remember = true,
                                  .label = "Classify"},
                   Instant{});
    ASSERT_TRUE(undoLastChange(ledger));
    EXPECT_TRUE(ledger.transactions == before.transactions);
    EXPECT_TRUE(ledger.merchants == before.merchants);
    EXPECT_TRUE(ledger.changes == before.changes);
}

}  // namespace
}  // namespace copperwick
