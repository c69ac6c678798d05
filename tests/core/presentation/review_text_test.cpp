#include "core/presentation/review_text.h"

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

ReviewGroup groupOf(std::size_t lines) {
    ReviewGroup group;
    group.transactionIDs.resize(lines);
    return group;
}

TEST(ReviewText, WaitingCountAgreesWithItsNumbers) {
    EXPECT_EQ(ReviewText::waitingCount({groupOf(1)}), "1 transaction in 1 group needs you.");
    EXPECT_EQ(ReviewText::waitingCount({groupOf(2)}), "2 transactions in 1 group need you.");
    EXPECT_EQ(ReviewText::waitingCount({groupOf(3), groupOf(1)}),
              "4 transactions in 2 groups need you.");
}

TEST(ReviewText, FilingLeavesOutWhatIsNotThere) {
    testing::LedgerBuilder builder;
    const Uuid dining = builder.category("Dining");
    const Ledger& ledger = builder.ledger();
    EXPECT_EQ(ReviewText::filing(ledger, "Demo Coffee", dining, TransactionKind::expense),
              "Demo Coffee, Dining, Spending");
    EXPECT_EQ(ReviewText::filing(ledger, std::nullopt, Uuid::random(), TransactionKind::transfer),
              "Transfer");
}

TEST(ReviewText, SuggestedRuleSaysItsConflictsOnlyWhenThereAreSome) {
    testing::LedgerBuilder builder;
    RuleSuggestion suggestion{.pattern = "ACME HARDWARE",
                              .kind = TransactionKind::expense,
                              .categoryID = builder.category("Shopping"),
                              .exampleIDs = {Uuid::random(), Uuid::random()},
                              .matchCount = 5};
    EXPECT_EQ(ReviewText::suggestedRule(builder.ledger(), suggestion),
              "Text contains \u201CACME HARDWARE\u201D \u2192 Shopping, Spending");
    EXPECT_EQ(ReviewText::suggestedRuleBasis(suggestion),
              "Based on 2 corrections \u00B7 would match 5 transactions");
    EXPECT_EQ(ReviewText::suggestedRuleConflicts(suggestion), std::nullopt);
    suggestion.conflictIDs = {Uuid::random()};
    EXPECT_EQ(ReviewText::suggestedRuleConflicts(suggestion),
              "1 you filed differently (they won't change)");
}

}  // namespace
}  // namespace copperwick
