#include "core/review/rule_preview.h"

#include <gtest/gtest.h>

#include "core/operations/rules.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;
using testing::LedgerBuilder;

class RulePreviewTest : public ::testing::Test {
  protected:
    Ledger& ledger() { return builder.ledger(); }
    Rule rule(std::string name, std::string pattern, std::string category = "Shopping") {
        return Rule{.id = Uuid::random(),
                    .name = std::move(name),
                    .pattern = std::move(pattern),
                    .kind = TransactionKind::expense,
                    .categoryID = builder.category(category),
                    .createdAt = Instant{static_cast<double>(++clock)}};
    }
    void save(const Rule& r) { (void)addRule(ledger(), r, false, true); }
    void confirm(const Uuid& id) {
        builder.change(id, [&](LedgerTransaction& t) {
            t.review = ReviewState::confirmed;
            t.method = MatchMethod::manual;
        });
    }

    LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
    int clock = 0;
};

TEST_F(RulePreviewTest, OnlyConfirmedMatchesChangeNothing) {
    const auto a = builder.transaction(checking, "ACME HARDWARE 1", -100, day(2026, 3, 1));
    const auto b = builder.transaction(checking, "ACME HARDWARE 2", -100, day(2026, 3, 2));
    builder.transaction(checking, "CORNER DELI", -100);
    confirm(a);
    confirm(b);
    const auto preview = RulePreview::compute(rule("Acme", "ACME"), ledger());
    EXPECT_EQ(preview.matchingIDs, (std::vector<Uuid>{a, b})) << "oldest first";
    EXPECT_EQ(preview.confirmedIDs, preview.matchingIDs);
    EXPECT_TRUE(preview.changingIDs.empty());
}

TEST_F(RulePreviewTest, DisabledDraftsPreviewAndVoidedLinesDont) {
    const auto line = builder.transaction(checking, "ACME HARDWARE", -100);
    const auto voided = builder.transaction(checking, "ACME HARDWARE", -100);
    builder.change(voided, [](LedgerTransaction& t) { t.voided = true; });
    Rule draft = rule("Acme", "ACME");
    draft.isEnabled = false;
    const auto preview = RulePreview::compute(draft, ledger());
    EXPECT_EQ(preview.matchingIDs, std::vector<Uuid>{line});
    EXPECT_EQ(preview.changingIDs, std::vector<Uuid>{line});

    draft.match = TextMatch::regex;
    draft.pattern = "(ACME";
    EXPECT_TRUE(RulePreview::compute(draft, ledger()).matchingIDs.empty()) << "invalid regex";
}

TEST_F(RulePreviewTest, RulesAheadShadowByNameAndPositionIsClamped) {
    const auto line = builder.transaction(checking, "ACME HARDWARE", -100);
    builder.transaction(checking, "ACME TOOLS", -100);
    save(rule("Hardware", "HARDWARE", "Housing"));
    save(rule("Tools", "TOOLS", "Housing"));
    Rule twin = rule("Tools", "ACME TOOLS", "Housing");
    save(twin);
    const Rule draft = rule("Acme", "ACME");

    EXPECT_TRUE(RulePreview::compute(draft, ledger()).shadowedBy.empty()) << "top: none ahead";
    auto preview = RulePreview::compute(draft, ledger(), 1);
    EXPECT_EQ(preview.shadowedBy, (std::vector<std::pair<std::string, int>>{{"Hardware", 1}}));
    EXPECT_EQ(preview.changingIDs.size(), 1u);

    preview = RulePreview::compute(draft, ledger(), 99);
    EXPECT_EQ(preview.shadowedBy,
              (std::vector<std::pair<std::string, int>>{{"Hardware", 1}, {"Tools", 1}}))
        << "beyond the end every other rule runs ahead; one name counts once per line";
    EXPECT_TRUE(preview.changingIDs.empty());

    // A saved rule previewed at its own place isn't counted against itself.
    preview = RulePreview::compute(*ledger().rules.begin(), ledger(), 99);
    EXPECT_EQ(preview.matchingIDs, std::vector<Uuid>{line});
    EXPECT_TRUE(preview.changingIDs.empty()) << "already filed by it";
}

// The rule editor and `rules preview` say the counts in the same words; one
// transaction isn't "transactions".
TEST_F(RulePreviewTest, CountsReadAsSentences) {
    RulePreview preview{.matchingIDs = {Uuid::random()},
                        .changingIDs = {},
                        .confirmedIDs = {Uuid::random()},
                        .shadowedBy = {{"Payroll", 2}, {"Rent", 1}}};
    EXPECT_EQ(preview.countsText(),
              "Matches 1 transaction; 0 would change; 1 you set by hand stay as they are.");
    EXPECT_EQ(preview.shadowTexts(),
              (std::vector<std::string>{"Taken first by \u201CPayroll\u201D: 2",
                                        "Taken first by \u201CRent\u201D: 1"}));
    preview.matchingIDs.push_back(Uuid::random());
    EXPECT_EQ(preview.countsText(),
              "Matches 2 transactions; 0 would change; 1 you set by hand stay as they are.");
}

}  // namespace
}  // namespace copperwick
