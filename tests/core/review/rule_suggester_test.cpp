#include "core/review/rule_suggester.h"

#include <gtest/gtest.h>

#include "core/matching/merchant_keys.h"
#include "core/operations/classification.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::LedgerBuilder;

class RuleSuggesterTest : public ::testing::Test {
  protected:
    Ledger& ledger() { return builder.ledger(); }
    // A decision by hand that teaches nothing, as "Remember" off leaves it.
    void decide(const std::vector<Uuid>& ids, TransactionKind kind,
                std::optional<std::string> category,
                std::optional<std::string> merchant = std::nullopt) {
        (void)classify(
            ledger(),
            Classification{
                .ids = ids,
                .merchantName = merchant,
                .kind = kind,
                .categoryID = category ? std::optional(builder.category(*category)) : std::nullopt,
                .remember = false,
                .label = "Classify"},
            Instant{1});
    }

    LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
};

TEST_F(RuleSuggesterTest, RepeatedCorrectionsGiveTheirCommonWords) {
    const auto a = builder.transaction(checking, "ACME HARDWARE 1234", -100);
    const auto b = builder.transaction(checking, "ACME HARDWARE 5678", -200);
    const auto other = builder.transaction(checking, "ACME HARDWARE 9999", -300);
    builder.transaction(checking, "ACME HARDWARE 4444", -300);
    decide({a, b}, TransactionKind::expense, "Shopping", "Acme");
    decide({other}, TransactionKind::expense, "Housing");

    const auto suggestions = RuleSuggester::suggestions(ledger());
    ASSERT_EQ(suggestions.size(), 1u) << "one decided line never suggests";
    const auto& suggestion = suggestions[0];
    EXPECT_EQ(suggestion.pattern, "ACME HARDWARE");
    EXPECT_EQ(suggestion.merchantName, "Acme");
    EXPECT_EQ(suggestion.exampleIDs, (std::vector<Uuid>{std::min(a, b), std::max(a, b)}));
    EXPECT_EQ(suggestion.matchCount, 4);
    EXPECT_EQ(suggestion.conflictIDs, std::vector<Uuid>{other});
    EXPECT_EQ(suggestion.id.substr(0, 14), "ACME HARDWARE|");

    const Rule rule = suggestion.makeRule("Shopping");
    EXPECT_EQ(rule.name, "Acme Hardware \u2192 Shopping");
    EXPECT_EQ(rule.match, TextMatch::contains);
    EXPECT_EQ(rule.merchantName, "Acme");
    EXPECT_EQ(rule.categoryID, builder.category("Shopping"));

    // A rule with that pattern already exists: nothing left to suggest.
    ledger().rules.push_back(rule);
    EXPECT_TRUE(RuleSuggester::suggestions(ledger()).empty());
}

TEST_F(RuleSuggesterTest, ShortOrDifferingTextsGiveNothing) {
    const auto a = builder.transaction(checking, "AB 12", -100);
    const auto b = builder.transaction(checking, "AB 13", -100);
    decide({a, b}, TransactionKind::expense, "Dining");
    EXPECT_TRUE(RuleSuggester::suggestions(ledger()).empty());
}

TEST_F(RuleSuggesterTest, LinesTheMatcherAlreadyExplainsNeedNoRule) {
    std::vector<Uuid> ids;
    for (int i = 0; i < 5; ++i)
        ids.push_back(builder.transaction(checking, "HILLTOP YOGA STUDIO 1234", -500));
    decide(ids, TransactionKind::expense, "Health", "Hilltop Yoga");
    ASSERT_EQ(RuleSuggester::suggestions(ledger()).size(), 1u);
    ledger().merchants.update(ledger().merchantNamed("Hilltop Yoga")->id, [&](Merchant& m) {
        m.keys = {MerchantKeys::of("HILLTOP YOGA STUDIO 1234")};
        m.categoryID = builder.category("Health");
    });
    EXPECT_TRUE(RuleSuggester::suggestions(ledger()).empty());
}

TEST(RuleSuggestionNames, UnknownKindWithoutCategoryNeedsReview) {
    const RuleSuggestion suggestion{.pattern = "MYSTERY SHOP", .kind = TransactionKind::unknown};
    EXPECT_EQ(suggestion.makeRule(std::nullopt).name, "Mystery Shop \u2192 Needs review");
    const RuleSuggestion income{.pattern = "PAYROLL ACME", .kind = TransactionKind::income};
    EXPECT_EQ(income.makeRule(std::nullopt).name, "Payroll Acme \u2192 Income");
}

}  // namespace
}  // namespace copperwick
