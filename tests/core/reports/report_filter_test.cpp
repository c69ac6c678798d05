#include "core/reports/report_filter.h"

#include <map>
#include <string>
#include <unordered_set>

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;
using testing::LedgerBuilder;

const DateSpan kMarch = DateSpan::month(day(2026, 3, 1));

struct Scope {
    std::set<Uuid> people;
    std::optional<bool> wholeHousehold;
    bool shared = false;
    bool unassigned = false;
    PeopleMode mode = PeopleMode::assigned;
    std::set<Uuid> accounts;
    std::string currency = "USD";
};

ReportFilter filterFor(const Scope& scope) {
    return ReportFilter(kMarch, scope.people, scope.accounts, scope.currency, scope.wholeHousehold,
                        scope.shared, scope.unassigned, scope.mode);
}

class ReportFilterTest : public ::testing::Test {
  protected:
    Ledger& ledger() { return builder.ledger(); }

    Uuid person(std::string name) {
        const Person added{.id = Uuid::random(), .name = std::move(name)};
        ledger().people.push_back(added);
        return added.id;
    }

    Uuid account(std::vector<Uuid> users, std::string currency = "USD", bool isUnassigned = false,
                 std::map<std::string, SpendingAssignment> cards = {}) {
        Account added(Uuid::random(), "Card", AccountType::creditCard, std::nullopt,
                      std::move(users));
        added.currency = std::move(currency);
        added.isUnassigned = isUnassigned;
        added.cardAssignments = std::move(cards);
        ledger().accounts.push_back(added);
        return added.id;
    }

    Uuid line(const Uuid& accountID, std::optional<std::string> card = std::nullopt) {
        const auto id = builder.transaction(accountID, "GROCER", -4200);
        builder.change(id, [&](LedgerTransaction& t) { t.cardIdentifier = std::move(card); });
        return id;
    }

    bool in(const Scope& scope, const Uuid& transactionID) {
        return filterFor(scope).includes(*ledger().transaction(transactionID), ledger());
    }

    LedgerBuilder builder;
    Uuid ana = person("Ana");
    Uuid ben = person("Ben");
    Uuid cleo = person("Cleo");
};

TEST_F(ReportFilterTest, NobodyChosenCoversEverythingInTheCurrency) {
    const auto anas = line(account({ana}));
    const auto nobodys = line(account({}, "USD", true));
    const auto euros = line(account({ana}, "EUR"));
    EXPECT_TRUE(in({}, anas));
    EXPECT_TRUE(in({}, nobodys));
    EXPECT_FALSE(in({}, euros));
    EXPECT_EQ(filterFor({}).scopeLabel(ledger()), "Whole household");
}

TEST_F(ReportFilterTest, LineOfADeletedAccountIsInNoReport) {
    const auto orphan = line(Uuid::random());
    EXPECT_FALSE(in({.wholeHousehold = true}, orphan));
    EXPECT_FALSE(in({.people = {ana}, .shared = true, .unassigned = true}, orphan));
}

TEST_F(ReportFilterTest, TheAccountsCurrencyCountsNotTheLines) {
    const auto euroAccount = account({}, "EUR");
    const auto euroLine = line(euroAccount);
    const auto dollarAccountEuroLine = line(account({}));
    builder.change(dollarAccountEuroLine, [](LedgerTransaction& t) { t.currency = "EUR"; });

    EXPECT_FALSE(in({.accounts = {euroAccount}}, euroLine))
        << "choosing the account doesn't override the currency";
    EXPECT_TRUE(in({.accounts = {euroAccount}, .currency = "EUR"}, euroLine));
    EXPECT_TRUE(in({}, dollarAccountEuroLine));
    EXPECT_FALSE(in({.currency = "EUR"}, dollarAccountEuroLine));
}

TEST_F(ReportFilterTest, AccountsChosenNarrowTheScope) {
    const auto first = account({});
    const auto second = account({});
    const auto a = line(first);
    const auto b = line(second);
    EXPECT_TRUE(in({.accounts = {first}}, a));
    EXPECT_FALSE(in({.accounts = {first}}, b));
    EXPECT_TRUE(in({.accounts = {first, second}}, b));

    const ReportFilter onlyFirst = filterFor({.people = {ana}, .accounts = {first}});
    EXPECT_TRUE(onlyFirst.includes(*ledger().account(first)));
    EXPECT_FALSE(onlyFirst.includes(*ledger().account(second)));
    EXPECT_FALSE(filterFor({.currency = "EUR"}).includes(*ledger().account(first)));
}

TEST_F(ReportFilterTest, AssignedModeFollowsTheHouseholdAssignment) {
    const auto anas = line(account({ana}));
    const auto shared = line(account({ana, ben}));
    const auto nobodys = line(account({}, "USD", true));
    const auto handSetToBen = line(account({ana}));
    builder.change(handSetToBen, [&](LedgerTransaction& t) {
        t.spendingAssignment = SpendingAssignment::person(ben);
    });

    const Scope justAna{.people = {ana}};
    EXPECT_TRUE(in(justAna, anas));
    EXPECT_FALSE(in(justAna, handSetToBen));
    EXPECT_FALSE(in(justAna, shared));
    EXPECT_FALSE(in(justAna, nobodys));
    EXPECT_TRUE(in({.people = {ben}}, handSetToBen));

    EXPECT_TRUE(in({.people = {ana}, .shared = true}, shared));
    EXPECT_FALSE(in({.people = {ana}, .shared = true}, nobodys));
    EXPECT_TRUE(in({.people = {ana}, .unassigned = true}, nobodys));

    // Ben leaves the household: his line now belongs to nobody.
    ledger().people.eraseIf([&](const Person& p) { return p.id == ben; });
    EXPECT_FALSE(in({.people = {ben}}, handSetToBen));
    EXPECT_TRUE(in({.wholeHousehold = false, .unassigned = true}, handSetToBen));
}

TEST_F(ReportFilterTest, NobodyAndNoFlagsCoversNothing) {
    const auto anas = line(account({ana}));
    const auto shared = line(account({ana, ben}));
    const auto nobodys = line(account({}, "USD", true));
    for (const auto mode : {PeopleMode::assigned, PeopleMode::cards}) {
        const Scope nothing{.wholeHousehold = false, .mode = mode};
        for (const auto& id : {anas, shared, nobodys})
            EXPECT_FALSE(in(nothing, id)) << rawValue(mode);
        EXPECT_EQ(filterFor(nothing).scopeLabel(ledger()), "No people selected") << rawValue(mode);
    }
    // Only the flags, with nobody chosen.
    EXPECT_TRUE(in({.wholeHousehold = false, .shared = true}, shared));
    EXPECT_FALSE(in({.wholeHousehold = false, .shared = true}, anas));
}

TEST_F(ReportFilterTest, CardModeBelongsToTheCardsUsers) {
    const auto family = account({ana, ben}, "USD", false,
                                {{"1111", SpendingAssignment::person(cleo)},
                                 {"2222", SpendingAssignment::shared()},
                                 {"3333", SpendingAssignment::unassigned()}});
    const auto both = line(family);
    const auto cleos = line(family, "1111");
    const auto sharedCard = line(family, "2222");
    const auto undecided = line(family, "3333");

    const auto cards = [](std::set<Uuid> people, bool shared = false, bool unassigned = false) {
        return Scope{.people = std::move(people),
                     .wholeHousehold = false,
                     .shared = shared,
                     .unassigned = unassigned,
                     .mode = PeopleMode::cards};
    };
    EXPECT_TRUE(in(cards({ben}), both));
    EXPECT_FALSE(in(cards({cleo}, true, true), both))
        << "a card with users never falls through to the flags";
    EXPECT_TRUE(in(cards({cleo}), cleos));
    EXPECT_FALSE(in(cards({ana, ben}), cleos)) << "the card's person, not the account's users";

    EXPECT_FALSE(in(cards({ana}), sharedCard));
    EXPECT_TRUE(in(cards({}, true, false), sharedCard));
    EXPECT_FALSE(in(cards({}, false, true), sharedCard));
    EXPECT_TRUE(in(cards({}, false, true), undecided));
    EXPECT_FALSE(in(cards({}, true, false), undecided));

    // An account nobody has been given, with no card entry, asks the
    // unassigned switch.
    const auto nobodys = line(account({}, "USD", true));
    EXPECT_TRUE(in(cards({}, false, true), nobodys));
    EXPECT_FALSE(in(cards({}, true, false), nobodys));

    // The assignment on the line plays no part in card mode.
    builder.change(both, [&](LedgerTransaction& t) {
        t.spendingAssignment = SpendingAssignment::person(cleo);
    });
    EXPECT_FALSE(in(cards({cleo}), both));
    EXPECT_TRUE(in({.people = {cleo}}, both));
}

TEST_F(ReportFilterTest, DatesAndVoidingAreTheCallersPart) {
    const auto old = builder.transaction(account({}), "GROCER", -100, day(2019, 1, 5));
    builder.change(old, [](LedgerTransaction& t) {
        t.voided = true;
        t.status = TransactionStatus::pending;
    });
    EXPECT_TRUE(in({}, old));
}

TEST_F(ReportFilterTest, ScopeLabelWords) {
    const auto label = [&](const Scope& scope) { return filterFor(scope).scopeLabel(ledger()); };
    // The household's order of people, whatever the ids' order.
    EXPECT_EQ(label({.people = {cleo, ana}}), "Ana + Cleo");
    EXPECT_EQ(label({.people = {ben}, .shared = true, .unassigned = true}),
              "Ben + Shared household + Unassigned");
    EXPECT_EQ(label({.wholeHousehold = false, .unassigned = true}), "Unassigned");
    EXPECT_EQ(label({.people = {ana, ben}, .shared = true, .mode = PeopleMode::cards}),
              "Ana + Ben + Shared household (their cards)");
    // A chosen person who has since left is simply not named.
    EXPECT_EQ(label({.people = {Uuid::random()}}), "No people selected");
    EXPECT_EQ(label({.people = {ana}, .wholeHousehold = true, .mode = PeopleMode::cards}),
              "Whole household");
}

TEST_F(ReportFilterTest, WithSpanChangesOnlyTheSpanAndFiltersKeyByValue) {
    const ReportFilter filter =
        filterFor({.people = {ana}, .shared = true, .mode = PeopleMode::cards, .currency = "EUR"});
    const DateSpan february = DateSpan::month(day(2026, 2, 1));
    const ReportFilter earlier = filter.withSpan(february);
    EXPECT_EQ(earlier.span, february);
    EXPECT_EQ(earlier.withSpan(kMarch), filter);
    EXPECT_NE(earlier, filter);

    // Equal filters built apart are one cache key; any field tells them apart.
    std::unordered_set<ReportFilter> keys{filter, earlier};
    keys.insert(
        filterFor({.people = {ana}, .shared = true, .mode = PeopleMode::cards, .currency = "EUR"}));
    EXPECT_EQ(keys.size(), 2u);
    EXPECT_EQ(std::hash<ReportFilter>{}(filter),
              std::hash<ReportFilter>{}(earlier.withSpan(kMarch)));
    keys.insert(filterFor({.people = {ana}, .shared = true, .currency = "EUR"}));
    keys.insert(filterFor({.people = {ana},
                           .shared = true,
                           .unassigned = true,
                           .mode = PeopleMode::cards,
                           .currency = "EUR"}));
    EXPECT_EQ(keys.size(), 4u);
}

}  // namespace
}  // namespace copperwick
