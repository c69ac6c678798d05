#include "core/operations/rules.h"

#include <gtest/gtest.h>

#include "core/matching/matcher.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/refusal.h"

namespace copperwick {
namespace {

using testing::LedgerBuilder;

class RulesTest : public ::testing::Test {
  protected:
    Ledger& ledger() { return builder.ledger(); }
    Rule rule(std::string name, std::string pattern, double createdAt = 1000) {
        return Rule{.id = Uuid::random(),
                    .name = std::move(name),
                    .pattern = std::move(pattern),
                    .kind = TransactionKind::expense,
                    .categoryID = builder.category("Dining"),
                    .createdAt = Instant{createdAt}};
    }
    std::vector<std::string> order() {
        std::vector<std::string> names;
        for (const auto& r : orderedRules(ledger()))
            names.push_back(r.name);
        return names;
    }

    LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
};

TEST_F(RulesTest, UnorderedRulesRunBehindTheListedOnesOldestFirst) {
    const Rule late = rule("late", "X", 3000);
    const Rule early = rule("early", "X", 2000);
    const Rule listed = rule("listed", "X", 9000);
    ledger().rules.push_back(late);
    ledger().rules.push_back(early);
    ledger().rules.push_back(listed);
    EXPECT_EQ(order(), (std::vector<std::string>{"early", "late", "listed"}));

    const auto delta = setRuleOrder(ledger(), {listed.id}, false);
    EXPECT_EQ(order(), (std::vector<std::string>{"listed", "early", "late"}));
    EXPECT_TRUE(delta.changes(RecordKind::settings));
    EXPECT_FALSE(delta.changes(RecordKind::transaction));
}

TEST_F(RulesTest, AddingMendsAStaleOrder) {
    const Rule a = rule("a", "A", 1000);
    const Rule b = rule("b", "B", 2000);
    ledger().rules.push_back(a);
    ledger().rules.push_back(b);
    const Uuid gone = Uuid::random();
    ledger().settings.update([&](LedgerSettings& s) { s.ruleOrder = {gone, b.id, b.id}; });

    const Rule c = rule("c", "C", 500);
    const auto delta = addRule(ledger(), c, false, false);
    EXPECT_EQ(ledger().settings->ruleOrder, (std::vector<Uuid>{b.id, a.id, c.id}));
    EXPECT_EQ(delta.changed.at(RecordKind::rule).texts(), std::vector<std::string>{c.id.text()});
    EXPECT_TRUE(delta.changes(RecordKind::settings));

    const Rule top = rule("top", "T");
    (void)addRule(ledger(), top, true, false);
    EXPECT_EQ(order(), (std::vector<std::string>{"top", "b", "a", "c"}));
}

TEST_F(RulesTest, ApplyNowFilesAndDeletingUnfiles) {
    const auto line = builder.transaction(checking, "ACME HARDWARE 1234", -2500);
    const Rule acme = rule("Acme", "ACME");
    auto delta = addRule(ledger(), acme, true, true);
    EXPECT_EQ(ledger().transaction(line)->method, MatchMethod::userRule);
    EXPECT_TRUE(delta.changed.at(RecordKind::transaction).contains(line.text()));

    Rule renamed = acme;
    renamed.pattern = "NOTHING LIKE IT";
    delta = updateRule(ledger(), renamed, false);
    EXPECT_EQ(ledger().transaction(line)->method, MatchMethod::userRule) << "not applied yet";
    EXPECT_FALSE(delta.changes(RecordKind::transaction));

    delta = deleteRule(ledger(), acme.id, true);
    EXPECT_TRUE(ledger().rules.empty());
    EXPECT_TRUE(ledger().settings->ruleOrder.empty());
    EXPECT_TRUE(delta.deleted.at(RecordKind::rule).contains(acme.id.text()));
    EXPECT_NE(ledger().transaction(line)->method, MatchMethod::userRule);
}

TEST_F(RulesTest, UpdatingAnUnknownRuleChangesNothing) {
    builder.transaction(checking, "ACME HARDWARE", -2500);
    const Ledger before = ledger();
    EXPECT_TRUE(updateRule(ledger(), rule("ghost", "ACME"), true).isEmpty());
    EXPECT_EQ(ledger(), before) << "no rematch either";
}

TEST_F(RulesTest, BuiltInSwitchKeepsOneEntryAndAlwaysRematches) {
    const auto line = builder.transaction(checking, "SOMETHING", -100);
    ledger().transactions.update(line, [](LedgerTransaction& t) { t.evidence = "stale"; });
    auto delta = setBuiltInRule(ledger(), "interest", true);
    EXPECT_TRUE(ledger().settings->disabledBuiltInRules.empty());
    EXPECT_TRUE(delta.changes(RecordKind::transaction)) << "a switch always rematches";

    (void)setBuiltInRule(ledger(), "interest", false);
    (void)setBuiltInRule(ledger(), "interest", false);
    EXPECT_EQ(ledger().settings->disabledBuiltInRules, std::vector<std::string>{"interest"});
    (void)setBuiltInRule(ledger(), "interest", true);
    EXPECT_TRUE(ledger().settings->disabledBuiltInRules.empty());
}

TEST_F(RulesTest, RuleEnteredRefusesWhatTheEditorWouldntSave) {
    const auto edited = [&](auto edit) {
        Rule draft = rule("Car payment", "AUTOLOAN");
        edit(draft);
        return draft;
    };
    const struct {
        Rule draft;
        std::string words;
    } cases[] = {
        {edited([](Rule&) {}), "accepted"},
        {edited([](Rule& r) { r.name = "  "; }), "Give the rule a name."},
        {edited([](Rule& r) { r.pattern = " \t"; }), "Enter the bank text to look for."},
        {edited([](Rule& r) {
             r.match = TextMatch::regex;
             r.pattern = "AUTO(LOAN";
         }),
         "That pattern isn't valid."},
        {edited([](Rule& r) { r.categoryID.reset(); }),
         "Choose a category that matches spending or income."},
        {edited([](Rule& r) { r.categoryID = Uuid::random(); }),
         "Choose a category that matches spending or income."},
        // A merchant alone is an outcome; the merchant's own filing does the rest.
        {edited([](Rule& r) {
             r.kind.reset();
             r.categoryID.reset();
             r.merchantName = "Acme";
         }),
         "accepted"},
        {edited([](Rule& r) {
             r.kind.reset();
             r.categoryID.reset();
             r.merchantName = " ";
         }),
         "Choose a category that matches spending or income."},
    };
    for (const auto& [draft, words] : cases)
        EXPECT_EQ(testing::refusal([&] { return ruleEntered(ledger(), draft, nullptr); }), words)
            << draft.name << " / " << draft.pattern;
}

TEST_F(RulesTest, RuleEnteredFilesATransferUnderNoCategory) {
    Rule draft = rule(" Savings sweep ", " TRANSFER TO SAVINGS ");
    draft.kind = TransactionKind::transfer;
    draft.merchantName = "  ";
    const Rule entered = ruleEntered(ledger(), draft, nullptr);
    EXPECT_EQ(entered.categoryID, std::nullopt);
    EXPECT_EQ(entered.name, "Savings sweep");
    EXPECT_EQ(entered.pattern, "TRANSFER TO SAVINGS");
    EXPECT_EQ(entered.merchantName, std::nullopt) << "a blank merchant is none";
}

TEST_F(RulesTest, DescribeRuleNamesDirectionAccountsAmountsAndOutcome) {
    Rule described = rule("Coffee", "BLUE BOTTLE");
    described.direction = AmountDirection::moneyOut;
    described.accountIDs = {checking, Uuid::random()};  // an account gone is left out
    described.minimumAmount = 500;
    described.merchantName = "Blue Bottle";
    EXPECT_EQ(describeRule(ledger(), described),
              "Text contains \u201CBLUE BOTTLE\u201D, Money out only, Checking, at least $5.00 "
              "\u2192 Blue Bottle, Dining, Spending");
    described.kind.reset();
    described.categoryID.reset();
    described.merchantName.reset();
    described.direction = AmountDirection::moneyIn;
    described.minimumAmount.reset();
    described.accountIDs.clear();
    EXPECT_EQ(describeRule(ledger(), described),
              "Text contains \u201CBLUE BOTTLE\u201D, Money in only \u2192 nothing");
}

// A limit typed as a bank prints it keeps its size; a blank one is no limit,
// and what isn't an amount is refused in words that quote it.
TEST(RuleAmountEntered, KeepsTheSizeOfWhatIsTyped) {
    using Limit = std::optional<std::optional<int64_t>>;
    EXPECT_EQ(ruleAmountEntered(""), Limit(std::optional<int64_t>()));
    EXPECT_EQ(ruleAmountEntered("  "), Limit(std::optional<int64_t>()));
    EXPECT_EQ(ruleAmountEntered("$1,250.00"), Limit(125000));
    EXPECT_EQ(ruleAmountEntered("(12.50)"), Limit(1250));
    EXPECT_EQ(ruleAmountEntered("12.3.4"), std::nullopt);
    EXPECT_EQ(ruleAmountEntered("1.005"), std::nullopt);
    EXPECT_EQ(notAnAmountText("12.3.4"), "\u201C12.3.4\u201D isn't an amount.");
}

}  // namespace
}  // namespace copperwick
