#include "core/matching/matcher.h"

#include <chrono>
#include <string>

#include <gtest/gtest.h>

#include "core/matching/rule_pattern.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::LedgerBuilder;

Rule makeRule(std::string name, std::string pattern, double createdAt = 0) {
    return Rule{.id = Uuid::random(),
                .name = std::move(name),
                .pattern = std::move(pattern),
                .createdAt = Instant{createdAt}};
}

class MatcherTest : public ::testing::Test {
  protected:
    MatchResult match(const std::string& description, int64_t amount = -1000) {
        const auto id = builder.transaction(checking, description, amount);
        return Matcher(builder.ledger()).match(*builder.ledger().transaction(id));
    }
    MatchResult matchTransaction(const Uuid& id) {
        return Matcher(builder.ledger()).match(*builder.ledger().transaction(id));
    }

    LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
};

TEST_F(MatcherTest, DirectoryFilesAKnownShop) {
    const auto result = match("STARBUCKS STORE 01234 SAN JOSE CA");
    EXPECT_EQ(result.kind, TransactionKind::expense);
    EXPECT_EQ(result.categoryID, builder.category("Dining"));
    EXPECT_EQ(result.newMerchantName, "Starbucks");
    EXPECT_FALSE(result.merchantID);
    EXPECT_EQ(result.method, MatchMethod::directory);
    EXPECT_EQ(result.review, ReviewState::automatic);
    EXPECT_EQ(result.evidence, "Built-in merchant list: Starbucks.");
}

TEST_F(MatcherTest, MoneyInAtAShopIsARefund) {
    const auto result = match("STARBUCKS STORE 01234", 450);
    EXPECT_EQ(result.kind, TransactionKind::expense);
    EXPECT_EQ(result.evidence,
              "Built-in merchant list: Starbucks. Money in, so it counts as a refund.");
}

TEST_F(MatcherTest, NothingKnownIsUnresolved) {
    EXPECT_EQ(match("QZXW VVRT"), MatchResult::unresolved());
}

TEST_F(MatcherTest, RuleClassWithLearnedMerchant) {
    auto rule = makeRule("R", "BLUE BOTTLE");
    rule.categoryID = builder.category("Groceries");
    builder.ledger().rules.push_back(rule);
    const auto merchant = builder.merchant("M", std::nullopt, {"BLUE BOTTLE"});

    const auto result = match("BLUE BOTTLE");
    EXPECT_EQ(result.merchantID, merchant);
    EXPECT_EQ(result.categoryID, builder.category("Groceries"));
    EXPECT_EQ(result.kind, TransactionKind::expense);
    EXPECT_EQ(result.method, MatchMethod::userRule);
    EXPECT_EQ(result.evidence, "Your rule \u201CR\u201D. Merchant M from learned from you.");
}

TEST_F(MatcherTest, RuleNamingAKnownMerchantTakesItsFiling) {
    auto rule = makeRule("Rent", "ACH DEBIT PROPMGMT");
    rule.merchantName = "  Landlord\t";
    builder.ledger().rules.push_back(rule);
    const auto landlord = builder.merchant("Landlord", "Housing");

    const auto result = match("ACH DEBIT PROPMGMT 0042");
    EXPECT_EQ(result.merchantID, landlord);
    EXPECT_EQ(result.categoryID, builder.category("Housing"));
    EXPECT_EQ(result.method, MatchMethod::learned);
    // The note already names the merchant, so it isn't named twice.
    EXPECT_EQ(result.evidence, "Learned: you filed Landlord this way before.");
}

TEST_F(MatcherTest, RuleNamingAnUnknownMerchantLeavesTheClassToLaterStages) {
    auto rule = makeRule("Coffee", "STARBUCKS");
    rule.merchantName = "Corner Coffee";
    builder.ledger().rules.push_back(rule);

    const auto result = match("STARBUCKS 123");
    EXPECT_FALSE(result.merchantID);
    EXPECT_EQ(result.newMerchantName, "Corner Coffee");
    EXPECT_EQ(result.method, MatchMethod::directory);
    EXPECT_EQ(result.categoryID, builder.category("Dining"));
}

TEST_F(MatcherTest, RulesRunInThePersonsOrder) {
    auto older = makeRule("Older", "SHOP", 10);
    older.categoryID = builder.category("Pets");
    auto newer = makeRule("Newer", "SHOP", 20);
    newer.categoryID = builder.category("Travel");
    builder.ledger().rules.push_back(newer);
    builder.ledger().rules.push_back(older);
    EXPECT_EQ(match("SHOP 1").categoryID, builder.category("Pets"));

    builder.ledger().settings.update([&](LedgerSettings& s) { s.ruleOrder = {newer.id}; });
    EXPECT_EQ(match("SHOP 2").categoryID, builder.category("Travel"));
}

TEST_F(MatcherTest, RuleFilters) {
    auto rule = makeRule("Big refunds", "^SHOP \\d+$");
    rule.match = TextMatch::regex;
    rule.direction = AmountDirection::moneyIn;
    rule.minimumAmount = -5000;  // the sign typed doesn't matter
    rule.maximumAmount = 10000;
    rule.kind = TransactionKind::income;
    builder.ledger().rules.push_back(rule);
    auto broken = makeRule("Broken", "([");
    broken.match = TextMatch::regex;
    broken.kind = TransactionKind::transfer;
    builder.ledger().rules.insert(0, broken);

    EXPECT_EQ(match("shop 12", 5000).method, MatchMethod::userRule);
    EXPECT_EQ(match("shop 12", 10000).method, MatchMethod::userRule);
    EXPECT_NE(match("shop 12", 4999).method, MatchMethod::userRule);
    EXPECT_NE(match("shop 12", 10001).method, MatchMethod::userRule);
    EXPECT_NE(match("shop 12", -6000).method, MatchMethod::userRule);
    EXPECT_NE(match("shop 12 x", 6000).method, MatchMethod::userRule);
}

// A person's pattern such as "^(([A-Z]+)*)*$" hung the program on a long line
// of bank text, at every import and every rematch.
TEST_F(MatcherTest, APatternTooSlowToMatchMatchesNothingAndTheNextRuleRuns) {
    EXPECT_EQ(RulePattern::check("^SHOP \\d+$"), RulePattern::Verdict::usable);
    EXPECT_EQ(RulePattern::check(".*AMAZON.*PRIME.*"), RulePattern::Verdict::usable);
    EXPECT_EQ(RulePattern::check("(["), RulePattern::Verdict::invalid);
    EXPECT_EQ(RulePattern::check("^(([A-Z]+)*)*$"), RulePattern::Verdict::tooSlow);
    EXPECT_EQ(RulePattern::check("(\\d+)+/"), RulePattern::Verdict::tooSlow);
    EXPECT_EQ(RulePattern::check("^(q+)+X$"), RulePattern::Verdict::tooSlow)
        << "tried on runs of its own letters";
    // Slow only on its letters taken in turn, which no worst-case text has.
    const std::string nearMiss = "^(QZ|Q|Z)+$";
    EXPECT_EQ(RulePattern::check(nearMiss), RulePattern::Verdict::usable);

    auto slow = makeRule("Slow", "^(([A-Z]+)*)*$", 1);
    slow.match = TextMatch::regex;
    slow.categoryID = builder.category("Pets");
    auto alsoSlow = makeRule("Also slow", nearMiss, 2);
    alsoSlow.match = TextMatch::regex;
    alsoSlow.categoryID = builder.category("Travel");
    auto plain = makeRule("Plain", "LONG LINE", 3);
    plain.categoryID = builder.category("Groceries");
    for (const auto& rule : {slow, alsoSlow, plain})
        builder.ledger().rules.push_back(rule);

    std::string line;
    for (int i = 0; i < 40; ++i)
        line += "QZ";
    line += "LONG LINE";
    const auto started = std::chrono::steady_clock::now();
    const auto result = match(line);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(5));
    EXPECT_EQ(result.evidence, "Your rule \u201CPlain\u201D.");
    EXPECT_EQ(RulePattern::check(nearMiss), RulePattern::Verdict::tooSlow)
        << "running out of time on real text marks the pattern";
    EXPECT_NE(match("QZ").categoryID, builder.category("Travel"))
        << "a pattern known to be too slow matches nothing, even where it would be quick";
}

TEST_F(MatcherTest, LearnedPrefixNeedsTwoWordsOrSixCharacters) {
    const auto amc = builder.merchant("AMC", "Entertainment", {"AMC"});
    Matcher short_(builder.ledger());
    ASSERT_NE(short_.learnedMerchant("AMC"), nullptr);
    EXPECT_EQ(short_.learnedMerchant("AMC")->id, amc);
    EXPECT_EQ(short_.learnedMerchant("AMC THEATRES"), nullptr);

    const auto amcT = builder.merchant("AMC T", "Entertainment", {"AMC T"});
    const auto bottle = builder.merchant("Blue Bottle", "Dining", {"BLUE BOTTLE"});
    const auto coffee = builder.merchant("BB Coffee", "Dining", {"BLUE BOTTLE COFFEE"});
    Matcher matcher(builder.ledger());
    EXPECT_EQ(matcher.learnedMerchant("AMC T OAKLAND")->id, amcT);
    EXPECT_EQ(matcher.learnedMerchant("BLUE BOTTLE COFFEE OAKLAND")->id, coffee);
    EXPECT_EQ(matcher.learnedMerchant("BLUE BOTTLE OAKLAND")->id, bottle);
    EXPECT_EQ(matcher.learnedMerchant("BLUE BOTTLES"), nullptr);
}

TEST_F(MatcherTest, HouseholdMembersAreTransfers) {
    builder.ledger().people.push_back(
        Person{.id = Uuid::random(), .name = "Sam", .bankNames = {"Sam Rivera", "SR"}});
    const auto result = match("ZELLE TO SAM RIVERA 12345");
    EXPECT_EQ(result.kind, TransactionKind::transfer);
    EXPECT_EQ(result.newMerchantName, "Sam");
    EXPECT_EQ(result.evidence, "Money to or from Sam (your household).");
    EXPECT_EQ(result.method, MatchMethod::builtInRule);
    // Names of three letters or fewer would match far too much.
    EXPECT_NE(match("SR GROCERY").kind, TransactionKind::transfer);
}

TEST_F(MatcherTest, TransferDropsTheBanksMerchantButNotARulesMerchant) {
    const auto id = builder.transaction(checking, "ONLINE TRANSFER TO SAV 1234", -5000);
    builder.change(id, [](LedgerTransaction& t) { t.bankMerchant = "Wells Fargo"; });
    const auto plain = matchTransaction(id);
    EXPECT_EQ(plain.kind, TransactionKind::transfer);
    EXPECT_FALSE(plain.merchantID);
    EXPECT_FALSE(plain.newMerchantName);
    EXPECT_FALSE(plain.categoryID);
    EXPECT_EQ(plain.evidence, "Built-in rule: transfer between your accounts.");

    auto rule = makeRule("Savings", "ONLINE TRANSFER");
    rule.merchantName = "My Savings";
    builder.ledger().rules.push_back(rule);
    EXPECT_EQ(matchTransaction(id).newMerchantName, "My Savings");
}

TEST_F(MatcherTest, BankMerchantColumnFindsTheDirectory) {
    const auto id = builder.transaction(checking, "POS 8812 CA", -1200);
    builder.change(id, [](LedgerTransaction& t) { t.bankMerchant = "Safeway #1234"; });
    const auto result = matchTransaction(id);
    EXPECT_EQ(result.newMerchantName, "Safeway");
    EXPECT_EQ(result.categoryID, builder.category("Groceries"));
}

TEST_F(MatcherTest, ModelFilings) {
    const auto gone = Uuid::random();
    builder.ledger().aiFilings.set("CORNER DELI", AIFiling{.key = "CORNER DELI",
                                                           .merchantName = "Corner Deli",
                                                           .categoryID = gone,
                                                           .kind = TransactionKind::expense,
                                                           .reason = "A sandwich shop"});
    builder.ledger().aiFilings.set(
        "ODD THING",
        AIFiling{.key = "ODD THING", .kind = TransactionKind::unknown, .reason = "Can't tell"});
    builder.ledger().aiFilings.set("NOPE SHOP", AIFiling{.key = "NOPE SHOP",
                                                         .categoryID = builder.category("Pets"),
                                                         .kind = TransactionKind::expense,
                                                         .rejected = true});

    const auto deli = match("CORNER DELI");
    EXPECT_EQ(deli.kind, TransactionKind::expense);
    EXPECT_FALSE(deli.categoryID);  // its category was deleted; the kind still files
    EXPECT_EQ(deli.method, MatchMethod::ai);
    EXPECT_EQ(deli.newMerchantName, "Corner Deli");
    EXPECT_EQ(deli.evidence,
              "Filed by Local AI: A sandwich shop. Merchant Corner Deli from Local AI.");
    EXPECT_EQ(match("CORNER DELI SAN MATEO").method, MatchMethod::ai);

    const auto odd = match("ODD THING");
    EXPECT_EQ(odd.kind, TransactionKind::unknown);
    EXPECT_EQ(odd.review, ReviewState::automatic);

    EXPECT_NE(match("NOPE SHOP").method, MatchMethod::ai);
}

TEST_F(MatcherTest, SimilarMerchantNeedsAClearWinner) {
    const std::string query = "ABCDEFGHIJKLMNOPQRSTUV";
    builder.merchant("Alpha", "Pets", {"ABCDEFGHIJKLMNOPQRSTXX"});  // 91
    auto result = match(query);
    EXPECT_EQ(result.review, ReviewState::suggested);
    EXPECT_EQ(result.method, MatchMethod::similar);
    EXPECT_EQ(result.evidence, "Looks like Alpha; waiting for your OK.");
    ASSERT_TRUE(result.suggestion);
    EXPECT_EQ(result.suggestion->reason, "Looks like Alpha (91% similar).");
    EXPECT_EQ(result.suggestion->kind, TransactionKind::expense);
    EXPECT_EQ(result.suggestion->categoryID, builder.category("Pets"));

    builder.merchant("Beta", "Pets", {"ABCDEFGHIJKLMNOPQRSTUVXYZ"});  // 88
    result = match(query);
    EXPECT_EQ(result.review, ReviewState::unresolved);
    EXPECT_FALSE(result.suggestion);
}

TEST_F(MatcherTest, ClosestDirectoryEntryIsSuggested) {
    const auto result = match("STARBUCKZ");
    EXPECT_EQ(result.review, ReviewState::suggested);
    ASSERT_TRUE(result.suggestion);
    EXPECT_EQ(result.suggestion->merchantName, "Starbucks");
    EXPECT_EQ(result.suggestion->categoryID, builder.category("Dining"));
}

TEST_F(MatcherTest, BankCategorySuggestionEvenForShortKeys) {
    const auto id = builder.transaction(checking, "QX", -700);
    builder.change(id, [](LedgerTransaction& t) { t.bankCategory = "Food & Drink"; });
    const auto result = matchTransaction(id);
    EXPECT_EQ(result.review, ReviewState::suggested);
    EXPECT_EQ(result.evidence, "Your bank's category suggests Dining; waiting for your OK.");
    ASSERT_TRUE(result.suggestion);
    EXPECT_EQ(result.suggestion->reason, "Your bank labeled this \u201CFood & Drink\u201D.");
    EXPECT_EQ(result.suggestion->kind, TransactionKind::expense);
}

TEST_F(MatcherTest, KnownMerchantWithoutFilingWaitsWithItsName) {
    const auto plain = builder.merchant("Plain Shop", std::nullopt, {"PLAIN SHOP"});
    const auto result = match("PLAIN SHOP 12");
    EXPECT_EQ(result.merchantID, plain);
    EXPECT_EQ(result.review, ReviewState::unresolved);
    EXPECT_EQ(result.evidence, "Merchant Plain Shop from learned from you; no category yet.");
}

TEST_F(MatcherTest, BuiltInRulesFollowAccountTypeAndSwitches) {
    const auto card = builder.account("Card", AccountType::creditCard);
    const auto onCard = builder.transaction(card, "ACME PAYROLL", 100000);
    EXPECT_NE(matchTransaction(onCard).method, MatchMethod::builtInRule);
    EXPECT_EQ(match("ACME PAYROLL", 100000).categoryID, builder.category("Salary"));

    builder.ledger().settings.update([](LedgerSettings& s) {
        s.disabledBuiltInRules = {"payroll", "no-such-rule"};
    });
    EXPECT_NE(match("ACME PAYROLL", 100000).method, MatchMethod::builtInRule);
}

TEST_F(MatcherTest, DeletedRuleCategoryLeavesTheKindToSettle) {
    builder.ledger().categories.eraseIf([](const LedgerCategory& c) { return c.name == "Taxes"; });
    const auto result = match("IRS TREAS 310 TAX PAY", -50000);
    EXPECT_EQ(result.kind, TransactionKind::expense);
    EXPECT_FALSE(result.categoryID);
}

}  // namespace
}  // namespace copperwick
