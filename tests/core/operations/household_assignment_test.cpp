#include "core/operations/household_assignment.h"

#include <map>
#include <string>

#include <gtest/gtest.h>

#include "core/operations/change_history.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::LedgerBuilder;

constexpr Instant kNow{800'000'000};

class HouseholdAssignmentTest : public ::testing::Test {
  protected:
    Ledger& ledger() { return builder.ledger(); }
    const LedgerTransaction& get(const Uuid& id) { return *ledger().transaction(id); }

    Uuid person(std::string name) {
        const Person added{.id = Uuid::random(), .name = std::move(name)};
        ledger().people.push_back(added);
        return added.id;
    }

    Uuid account(std::vector<Uuid> users, bool isUnassigned = false,
                 std::map<std::string, SpendingAssignment> cards = {}) {
        Account added(Uuid::random(), "Card", AccountType::creditCard, std::nullopt,
                      std::move(users));
        added.isUnassigned = isUnassigned;
        added.cardAssignments = std::move(cards);
        ledger().accounts.push_back(added);
        return added.id;
    }

    Uuid line(const Uuid& accountID, std::optional<std::string> card = std::nullopt) {
        const auto id = builder.transaction(accountID, "HARDWARE STORE", -2500);
        builder.change(id, [&](LedgerTransaction& t) { t.cardIdentifier = std::move(card); });
        return id;
    }

    // The answer as a short word, so that a failure names the person.
    std::string describe(const SpendingAssignment& value) {
        if (!value.isPerson())
            return assignmentName(ledger(), value);
        return "person " + assignmentName(ledger(), value);
    }
    std::string answer(const Uuid& transactionID) {
        return describe(assignment(ledger(), get(transactionID)));
    }

    LedgerBuilder builder;
    Uuid ana = person("Ana");
    Uuid ben = person("Ben");
};

TEST_F(HouseholdAssignmentTest, AccountDefaultFollowsTheNumberOfUsers) {
    const auto of = [](std::vector<Uuid> users, bool isUnassigned) {
        Account account(Uuid::random(), "Checking", AccountType::checking, std::nullopt,
                        std::move(users));
        account.isUnassigned = isUnassigned;
        return defaultAssignment(account);
    };
    EXPECT_EQ(of({ana}, false), SpendingAssignment::person(ana));
    EXPECT_EQ(of({ana, ben}, false), SpendingAssignment::shared());
    EXPECT_EQ(of({}, false), SpendingAssignment::shared());
    EXPECT_EQ(of({}, true), SpendingAssignment::unassigned());
    // The flag speaks only for an account with no users.
    EXPECT_EQ(of({ana}, true), SpendingAssignment::person(ana));
    EXPECT_EQ(of({ana, ben}, true), SpendingAssignment::shared());
}

TEST_F(HouseholdAssignmentTest, CardOverrideIgnoresCaseButPrefersTheExactKey) {
    const auto family = account({ana, ben}, false,
                                {{"ab12", SpendingAssignment::person(ana)},
                                 {"AB12", SpendingAssignment::person(ben)},
                                 {"Cd34", SpendingAssignment::unassigned()}});
    const auto of = [&](std::optional<std::string> card) {
        return describe(defaultAssignment(ledger(), family, card));
    };
    EXPECT_EQ(of("ab12"), "person Ana");
    EXPECT_EQ(of("AB12"), "person Ben");
    // Two keys differ from it only in case: the smaller key, whatever the
    // order they were set in.
    EXPECT_EQ(of("Ab12"), "person Ben");
    EXPECT_EQ(of("CD34"), "Unassigned");
    EXPECT_EQ(of("9999"), "Shared household");
    EXPECT_EQ(of(std::nullopt), "Shared household");
    EXPECT_EQ(describe(defaultAssignment(ledger(), Uuid::random(), "ab12")), "Unassigned");
}

TEST_F(HouseholdAssignmentTest, HandSetBeatsInheritedBeatsDefault) {
    const auto mine = account({ana});
    const auto t = line(mine);
    EXPECT_EQ(answer(t), "person Ana");

    builder.change(
        t, [](LedgerTransaction& x) { x.inheritedAssignment = SpendingAssignment::shared(); });
    EXPECT_EQ(answer(t), "Shared household");

    builder.change(
        t, [&](LedgerTransaction& x) { x.spendingAssignment = SpendingAssignment::person(ben); });
    EXPECT_EQ(answer(t), "person Ben");
}

TEST_F(HouseholdAssignmentTest, DeletedPersonAnswersUnassignedAtEveryLayer) {
    const auto gone = person("Cleo");
    const auto handSet = line(account({}));
    builder.change(handSet, [&](LedgerTransaction& x) {
        x.spendingAssignment = SpendingAssignment::person(gone);
    });
    const auto inherited = line(account({}));
    builder.change(inherited, [&](LedgerTransaction& x) {
        x.inheritedAssignment = SpendingAssignment::person(gone);
    });
    const auto byDefault = line(account({gone}));
    ledger().people.eraseIf([&](const Person& p) { return p.id == gone; });

    EXPECT_EQ(answer(handSet), "Unassigned");
    EXPECT_EQ(get(handSet).spendingAssignment, SpendingAssignment::person(gone))
        << "the field keeps the id";
    EXPECT_EQ(answer(inherited), "Unassigned");
    EXPECT_EQ(answer(byDefault), "Unassigned");
    // A line whose account is gone has no default to fall back on.
    EXPECT_EQ(answer(line(Uuid::random())), "Unassigned");
}

TEST_F(HouseholdAssignmentTest, NamesAndUsersLabels) {
    EXPECT_EQ(assignmentName(ledger(), SpendingAssignment::person(ana)), "Ana");
    EXPECT_EQ(assignmentName(ledger(), SpendingAssignment::person(Uuid::random())), "Unassigned");
    EXPECT_EQ(assignmentName(ledger(), SpendingAssignment::shared()), "Shared household");
    EXPECT_EQ(assignmentName(ledger(), SpendingAssignment::unassigned()), "Unassigned");

    const auto label = [&](std::vector<Uuid> users, bool isUnassigned) {
        return usersLabel(ledger(), *ledger().account(account(std::move(users), isUnassigned)));
    };
    EXPECT_EQ(label({ben, Uuid::random(), ana}, false), "Ben, Ana");
    EXPECT_EQ(label({}, false), "Household");
    EXPECT_EQ(label({}, true), "Unassigned");
    // Users who all left read like no users at all.
    EXPECT_EQ(label({Uuid::random()}, true), "Unassigned");
}

TEST_F(HouseholdAssignmentTest, CardUsersAndUndecidedCards) {
    const auto gone = Uuid::random();
    const auto family = account({ben, gone, ana}, false,
                                {{"1111", SpendingAssignment::person(ana)},
                                 {"2222", SpendingAssignment::shared()},
                                 {"3333", SpendingAssignment::unassigned()},
                                 {"4444", SpendingAssignment::person(gone)}});
    const auto names = [&](const Uuid& t) {
        std::string joined;
        for (const auto& name : cardUserNames(ledger(), get(t)))
            joined += (joined.empty() ? "" : ",") + name;
        return joined;
    };
    const auto plain = line(family);
    const auto anas = line(family, "1111");
    const auto sharedCard = line(family, "2222");
    const auto undecided = line(family, "3333");
    const auto leftCard = line(family, "4444");

    EXPECT_EQ(names(plain), "Ben,Ana");
    EXPECT_EQ(names(anas), "Ana");
    EXPECT_EQ(names(sharedCard), "");
    EXPECT_EQ(names(undecided), "");
    EXPECT_EQ(names(leftCard), "") << "a card's person who left is nobody, not the account's users";

    EXPECT_FALSE(cardIsUndecided(ledger(), get(plain)));
    EXPECT_FALSE(cardIsUndecided(ledger(), get(sharedCard)));
    EXPECT_TRUE(cardIsUndecided(ledger(), get(undecided)));
    EXPECT_FALSE(cardIsUndecided(ledger(), get(anas)));

    // Without an override the account's flag speaks; with one, the override.
    const auto nobodys = account({}, true, {{"5555", SpendingAssignment::shared()}});
    EXPECT_TRUE(cardIsUndecided(ledger(), get(line(nobodys))));
    EXPECT_FALSE(cardIsUndecided(ledger(), get(line(nobodys, "5555"))));

    const auto orphan = line(Uuid::random());
    EXPECT_TRUE(cardUsers(ledger(), get(orphan)).empty());
    EXPECT_FALSE(cardIsUndecided(ledger(), get(orphan)));
}

TEST_F(HouseholdAssignmentTest, AssignSpendingIsOneUndoableStep) {
    const auto shared = account({ana, ben});
    const auto a = line(shared);
    const auto b = line(shared);
    builder.change(
        b, [&](LedgerTransaction& x) { x.spendingAssignment = SpendingAssignment::person(ana); });
    const Ledger before = ledger();

    const auto delta =
        assignSpending(ledger(), SpendingAssignment::person(ana), {a, b, Uuid::random()}, kNow);
    EXPECT_EQ(delta.changed.at(RecordKind::transaction).texts(), std::vector{a.text()})
        << "b already had the value";
    EXPECT_TRUE(delta.changes(RecordKind::change));
    EXPECT_EQ(ledger().undoLabel(), "Assign household spending");
    EXPECT_EQ(ledger().changes.back().date, kNow);
    EXPECT_EQ(answer(a), "person Ana");

    ASSERT_TRUE(undoLastChange(ledger()));
    EXPECT_EQ(ledger(), before);
}

TEST_F(HouseholdAssignmentTest, AssignSpendingWithNothingToChangeRecordsNothing) {
    const auto a = line(account({ana}));
    EXPECT_TRUE(assignSpending(ledger(), std::nullopt, {a}, kNow).isEmpty());
    EXPECT_TRUE(
        assignSpending(ledger(), SpendingAssignment::shared(), {Uuid::random()}, kNow).isEmpty());
    EXPECT_TRUE(assignSpending(ledger(), SpendingAssignment::shared(), {}, kNow).isEmpty());
    EXPECT_TRUE(ledger().changes.empty());
}

TEST_F(HouseholdAssignmentTest, ClearingFollowsTheInheritedValueAgain) {
    const auto a = line(account({ana}));
    builder.change(
        a, [&](LedgerTransaction& x) { x.inheritedAssignment = SpendingAssignment::person(ben); });
    (void)assignSpending(ledger(), SpendingAssignment::shared(), {a}, kNow);
    EXPECT_EQ(answer(a), "Shared household");

    const auto delta = assignSpending(ledger(), std::nullopt, {a}, kNow);
    EXPECT_FALSE(delta.isEmpty());
    EXPECT_FALSE(get(a).spendingAssignment);
    EXPECT_EQ(answer(a), "person Ben");
}

TEST_F(HouseholdAssignmentTest, ApplyingOneCardLeavesEverythingElseAlone) {
    const auto family = account(
        {ana, ben}, false,
        {{"ab12", SpendingAssignment::person(ana)}, {"cd34", SpendingAssignment::person(ben)}});
    const auto other = account({ben});
    const auto card = line(family, "ab12");
    // The card is chosen by its exact text, although its default ignores case.
    const auto otherCase = line(family, "AB12");
    const auto otherCard = line(family, "cd34");
    const auto noCard = line(family);
    const auto handSet = line(family, "ab12");
    builder.change(
        handSet, [](LedgerTransaction& x) { x.spendingAssignment = SpendingAssignment::shared(); });
    const auto elsewhere = line(other, "ab12");

    const auto delta = applySpendingDefault(ledger(), family, "ab12", kNow);
    EXPECT_EQ(delta.changed.at(RecordKind::transaction).texts(), std::vector{card.text()});
    EXPECT_EQ(get(card).inheritedAssignment, SpendingAssignment::person(ana));
    for (const auto& untouched : {otherCase, otherCard, noCard, handSet, elsewhere})
        EXPECT_FALSE(get(untouched).inheritedAssignment);
    EXPECT_EQ(get(handSet).spendingAssignment, SpendingAssignment::shared());
    EXPECT_EQ(ledger().undoLabel(), "Apply account assignment");
}

TEST_F(HouseholdAssignmentTest, ApplyingTheWholeAccountUsesEachLinesCard) {
    const auto family = account({ana, ben}, false, {{"ab12", SpendingAssignment::person(ben)}});
    const auto upper = line(family, "AB12");
    const auto plain = line(family);
    builder.change(plain, [&](LedgerTransaction& x) {
        x.inheritedAssignment = SpendingAssignment::person(ana);
    });

    (void)applySpendingDefault(ledger(), family, std::nullopt, kNow);
    EXPECT_EQ(get(upper).inheritedAssignment, SpendingAssignment::person(ben));
    EXPECT_EQ(get(plain).inheritedAssignment, SpendingAssignment::shared());

    // The person takes Ben off the card: the line follows the account again.
    ledger().accounts.update(ledger().accounts.size() - 1,
                             [](Account& a) { a.cardAssignments.clear(); });
    (void)applySpendingDefault(ledger(), family, std::nullopt, kNow);
    EXPECT_EQ(get(upper).inheritedAssignment, SpendingAssignment::shared());
}

TEST_F(HouseholdAssignmentTest, ApplyingTwiceRecordsOneStep) {
    const auto mine = account({ana});
    const auto a = line(mine);
    const auto b = line(mine, "7777");
    EXPECT_FALSE(applySpendingDefault(ledger(), mine, std::nullopt, kNow).isEmpty());
    EXPECT_EQ(ledger().changes.size(), 1u);
    const Ledger afterFirst = ledger();

    EXPECT_TRUE(applySpendingDefault(ledger(), mine, std::nullopt, kNow).isEmpty());
    EXPECT_EQ(ledger(), afterFirst);
    EXPECT_EQ(get(a).inheritedAssignment, SpendingAssignment::person(ana));
    EXPECT_EQ(get(b).inheritedAssignment, SpendingAssignment::person(ana));
}

}  // namespace
}  // namespace copperwick
