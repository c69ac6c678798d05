#include "core/review/review_decision.h"

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;
using testing::LedgerBuilder;

class ReviewDecisionTest : public ::testing::Test {
  protected:
    ReviewGroup onlyGroup() {
        const auto groups = ReviewQueue::groups(builder.ledger());
        EXPECT_EQ(groups.size(), 1u);
        return groups.front();
    }
    void suggest(const Uuid& id, Suggestion suggestion) {
        builder.change(id, [&](LedgerTransaction& t) {
            t.suggestion = suggestion;
            t.review = ReviewState::suggested;
        });
    }
    std::optional<ReviewField> refusedField(const ReviewGroup& group,
                                            const ReviewDecision& decision) {
        const auto refusal = ReviewDecisions::refusal(builder.ledger(), group, decision);
        return refusal ? std::optional(refusal->field) : std::nullopt;
    }

    LedgerBuilder builder;
    Uuid checking = builder.account("Joint Checking");
};

TEST_F(ReviewDecisionTest, StartsFromTheSuggestionThenTheMerchantThenTheDirection) {
    {
        SCOPED_TRACE("money in with nothing known is income without a category");
        LedgerBuilder fresh;
        const Uuid account = fresh.account("Checking");
        fresh.transaction(account, "MOBILE DEPOSIT REF 0021", 15000);
        const auto group = ReviewQueue::groups(fresh.ledger()).front();
        const ReviewDecision decision = ReviewDecisions::initial(fresh.ledger(), group);
        EXPECT_EQ(decision.kind, TransactionKind::income);
        EXPECT_FALSE(decision.categoryID);
        EXPECT_EQ(decision.merchantName, group.displayName) << "starts from the group's own name";
        EXPECT_TRUE(decision.remember);
    }
    {
        SCOPED_TRACE("the merchant the lines share gives its filing");
        const Uuid merchant = builder.merchant("Corner Hardware", "Shopping");
        const Uuid id = builder.transaction(checking, "CORNER HARDWARE 0412", -2599);
        builder.change(id, [&](LedgerTransaction& t) { t.merchantID = merchant; });
        const ReviewDecision decision = ReviewDecisions::initial(builder.ledger(), onlyGroup());
        EXPECT_EQ(decision.kind, TransactionKind::expense);
        EXPECT_EQ(decision.categoryID, builder.category("Shopping"));
        EXPECT_EQ(decision.merchantName, "Corner Hardware");

        SCOPED_TRACE("a suggestion wins over the merchant");
        suggest(id, {.merchantName = "Hardware Co",
                     .categoryID = builder.category("Housing"),
                     .kind = TransactionKind::expense,
                     .source = MatchMethod::similar});
        const ReviewDecision suggested = ReviewDecisions::initial(builder.ledger(), onlyGroup());
        EXPECT_EQ(suggested.categoryID, builder.category("Housing"));
        EXPECT_EQ(suggested.merchantName, "Hardware Co");
    }
}

// A suggestion whose income category was offered for spending put a category
// of the wrong group in the editor, and Save filed spending under "Salary".
TEST_F(ReviewDecisionTest, ACategoryThatDoesNotFitTheKindIsLeftOut) {
    const Uuid id = builder.transaction(checking, "CORNER HARDWARE 0412", -2599);
    suggest(id, {.categoryID = builder.category("Salary"),
                 .kind = TransactionKind::expense,
                 .source = MatchMethod::similar});
    const ReviewGroup group = onlyGroup();
    const ReviewDecision decision = ReviewDecisions::initial(builder.ledger(), group);
    EXPECT_FALSE(decision.categoryID);
    EXPECT_EQ(refusedField(group, decision), ReviewField::category);
}

TEST_F(ReviewDecisionTest, SaveNeedsWhatTheKindNeeds) {
    builder.transaction(checking, "CORNER HARDWARE 0412", -2599);
    const ReviewGroup group = onlyGroup();
    ReviewDecision decision{.merchantName = "Corner Hardware", .kind = TransactionKind::expense};
    EXPECT_EQ(refusedField(group, decision), ReviewField::category);
    decision.categoryID = builder.category("Salary");
    EXPECT_EQ(refusedField(group, decision), ReviewField::category) << "an income category";
    decision.categoryID = builder.category("Shopping");
    EXPECT_EQ(refusedField(group, decision), std::nullopt);
    decision.merchantName = " \t";
    EXPECT_EQ(refusedField(group, decision), ReviewField::merchant);

    decision.kind = TransactionKind::transfer;
    decision.categoryID.reset();
    EXPECT_EQ(refusedField(group, decision), std::nullopt) << "a transfer needs neither";
}

TEST_F(ReviewDecisionTest, APaymentToAPersonNeedsAPurposeAndItsCategory) {
    builder.transaction(checking, "Zelle payment to Jamie Doe", -2000);
    const ReviewGroup group = onlyGroup();
    ASSERT_TRUE(ReviewDecisions::asksPurpose(group));
    ReviewDecision decision = ReviewDecisions::initial(builder.ledger(), group);
    EXPECT_EQ(refusedField(group, decision), ReviewField::purpose);
    decision.purpose = ZelleChoice::spending;
    EXPECT_EQ(refusedField(group, decision), ReviewField::category);
    decision.categoryID = builder.category("Dining");
    EXPECT_EQ(refusedField(group, decision), std::nullopt);
    decision.purpose = ZelleChoice::giftSent;
    decision.categoryID.reset();
    EXPECT_EQ(refusedField(group, decision), std::nullopt) << "a gift has its own category";
    decision.purpose = ZelleChoice::dontCount;
    EXPECT_EQ(refusedField(group, decision), std::nullopt);
}

TEST_F(ReviewDecisionTest, PayPalIsFiledLikeAnyMerchant) {
    builder.transaction(checking, "PAYPAL *DEMO NEIGHBORHOOD CLUB", -6000);
    EXPECT_FALSE(ReviewDecisions::asksPurpose(onlyGroup()));
}

TEST_F(ReviewDecisionTest, DecideFilesEveryLineAsOneStepNamedForTheGroup) {
    const Uuid first =
        builder.transaction(checking, "Zelle payment to Jamie Doe", -2000, day(2026, 3, 1));
    const Uuid second =
        builder.transaction(checking, "Zelle payment to Jamie Doe", -3000, day(2026, 3, 9));
    const ReviewGroup group = onlyGroup();
    ReviewDecision decision = ReviewDecisions::initial(builder.ledger(), group);
    decision.purpose = ZelleChoice::payingEachOther;
    decision.categoryID = builder.category("Dining");  // not asked for, so not used
    Ledger& ledger = builder.ledger();
    const auto changes = ledger.changes.size();
    (void)ReviewDecisions::decide(ledger, group, decision, Instant{});
    EXPECT_EQ(ledger.changes.size(), changes + 1);
    EXPECT_EQ(ledger.undoLabel(), "Review " + group.displayName);
    for (const Uuid& id : {first, second}) {
        const LedgerTransaction& line = *ledger.transaction(id);
        EXPECT_EQ(line.review, ReviewState::confirmed);
        EXPECT_EQ(ledger.category(line.categoryID)->name, "Paying each other");
    }
}

}  // namespace
}  // namespace copperwick
