#include "core/operations/record_maintenance.h"

#include <gtest/gtest.h>

#include "core/operations/classification.h"
#include "core/operations/upsert_account.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/refusal.h"

namespace copperwick {
namespace {

using testing::day;

class RecordMaintenanceTest : public ::testing::Test {
  protected:
    Ledger& ledger() { return builder.ledger(); }
    const LedgerTransaction& line(const Uuid& id) { return *ledger().transaction(id); }

    testing::LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
};

TEST_F(RecordMaintenanceTest, ANewBankNameFilesWhatWaitedInReview) {
    const auto zelle = builder.transaction(checking, "ZELLE FROM ALEX RIVERA ON 03/02", 5000);
    (void)rematch(ledger());
    const Person alex{Uuid::random(), "Alex", {}};
    (void)upsertPerson(ledger(), alex);
    const auto before = line(zelle);

    Person renamed = alex;
    renamed.bankNames = {"ALEX RIVERA"};
    const auto delta = upsertPerson(ledger(), renamed);
    ASSERT_EQ(ledger().people.size(), 1u);
    EXPECT_EQ(ledger().people[0].bankNames, renamed.bankNames);
    EXPECT_TRUE(delta.changes(RecordKind::person));
    EXPECT_NE(line(zelle), before) << "the household phrase should file the line now";
}

TEST_F(RecordMaintenanceTest, DeletingAPersonLeavesNoReferenceBehind) {
    const Person dana{Uuid::random(), "Dana", {}};
    const Person sam{Uuid::random(), "Sam", {}};
    (void)upsertPerson(ledger(), dana);
    (void)upsertPerson(ledger(), sam);
    Account joint(Uuid::random(), "Joint", AccountType::creditCard);
    joint.setUserIDs({dana.id, sam.id});
    joint.cardAssignments["1234"] = SpendingAssignment::person(dana.id);
    (void)upsertAccount(ledger(), joint);
    const auto bySam = builder.transaction(joint.id, "HARDWARE STORE", -900);
    builder.change(bySam, [&](LedgerTransaction& t) {
        t.spendingAssignment = SpendingAssignment::person(dana.id);
        t.inheritedAssignment = SpendingAssignment::person(dana.id);
    });

    const auto delta = deletePerson(ledger(), dana.id);
    EXPECT_EQ(ledger().person(dana.id), nullptr);
    const Account& account = *ledger().account(joint.id);
    EXPECT_EQ(account.userIDs(), std::vector<Uuid>{sam.id});
    EXPECT_EQ(account.personID(), sam.id) << "the one left is the account's person";
    EXPECT_TRUE(account.cardAssignments.empty());
    EXPECT_EQ(line(bySam).spendingAssignment, SpendingAssignment::unassigned());
    EXPECT_EQ(line(bySam).inheritedAssignment, SpendingAssignment::unassigned());
    EXPECT_TRUE(delta.deleted.at(RecordKind::person).contains(dana.id.text()));
}

TEST_F(RecordMaintenanceTest, AnAccountWithAnyLineIsKept) {
    const auto voided = builder.transaction(checking, "OLD LINE", -100);
    builder.change(voided, [](LedgerTransaction& t) { t.voided = true; });
    const Ledger before = ledger();
    EXPECT_FALSE(deleteAccount(ledger(), checking));
    EXPECT_EQ(ledger(), before);

    const auto empty = builder.account("Empty");
    Rule rule{.id = Uuid::random(), .name = "Names it", .accountIDs = {empty}};
    ledger().rules.push_back(rule);
    const auto delta = deleteAccount(ledger(), empty);
    ASSERT_TRUE(delta);
    EXPECT_EQ(ledger().account(empty), nullptr);
    EXPECT_EQ(ledger().rules[0].accountIDs, std::vector<Uuid>{empty});
}

TEST_F(RecordMaintenanceTest, ACategoryGoneMovesItsLinesOrSendsThemToReview) {
    const auto gifts = builder.category("Gifts & Donations");
    const auto otherIncome = builder.category("Other Income");
    const auto dining = builder.category("Dining");
    const auto filed = builder.transaction(checking, "CHARITY RUN", -2500);
    const auto split = builder.transaction(checking, "STORE", -5000);
    builder.change(filed, [&](LedgerTransaction& t) {
        t.kind = TransactionKind::expense;
        t.categoryID = gifts;
        t.review = ReviewState::confirmed;
        t.method = MatchMethod::manual;
    });
    builder.change(split, [&](LedgerTransaction& t) {
        t.kind = TransactionKind::expense;
        t.categoryID = dining;
        t.review = ReviewState::confirmed;
        t.splits = std::vector<TransactionSplit>{{Uuid::random(), gifts, -3000, ""},
                                                 {Uuid::random(), dining, -2000, ""}};
    });
    ledger().budgets.push_back(Budget{Uuid::random(), gifts, 10'000});

    Ledger withoutReplacement = ledger();
    (void)deleteCategory(ledger(), gifts, otherIncome);
    EXPECT_EQ(line(filed).categoryID, otherIncome);
    EXPECT_EQ(line(filed).kind, TransactionKind::income) << "the kind follows the new group";
    EXPECT_FALSE(line(split).splits) << "an income category can't hold a spending part";
    EXPECT_TRUE(ledger().budgets.empty());
    EXPECT_EQ(ledger().category(gifts), nullptr);

    (void)deleteCategory(withoutReplacement, gifts, std::nullopt);
    const auto& waiting = *withoutReplacement.transaction(filed);
    EXPECT_FALSE(waiting.categoryID);
    EXPECT_EQ(waiting.kind, TransactionKind::unknown);
    EXPECT_TRUE(isWaiting(waiting.review));
    EXPECT_TRUE(withoutReplacement.budgets.empty());
}

TEST_F(RecordMaintenanceTest, ASpendingReplacementTakesOverSplitPartsRulesAndMerchants) {
    const auto gifts = builder.category("Gifts & Donations");
    const auto shopping = builder.category("Shopping");
    const auto dining = builder.category("Dining");
    const auto merchant = builder.merchant("Gift Shop", "Gifts & Donations");
    ledger().rules.push_back(Rule{.id = Uuid::random(), .name = "Gifts", .categoryID = gifts});
    const auto split = builder.transaction(checking, "STORE", -5000);
    builder.change(split, [&](LedgerTransaction& t) {
        t.kind = TransactionKind::expense;
        t.categoryID = dining;
        t.review = ReviewState::confirmed;
        t.splits = std::vector<TransactionSplit>{{Uuid::random(), gifts, -3000, ""},
                                                 {Uuid::random(), dining, -2000, ""}};
    });
    (void)deleteCategory(ledger(), gifts, shopping);
    ASSERT_TRUE(line(split).splits);
    EXPECT_EQ((*line(split).splits)[0].categoryID, shopping);
    EXPECT_EQ(ledger().rules[0].categoryID, shopping);
    EXPECT_EQ(ledger().merchant(merchant)->categoryID, shopping);
}

TEST(PersonEntered, NeedsANameAndKeepsOnlyTheBankNamesGiven) {
    const auto person = [](std::string name, std::optional<int64_t> allowance) {
        return Person{Uuid::random(), std::move(name), {" DANA SMITH ", " ", ""}, allowance};
    };
    EXPECT_EQ(testing::refusal([&] { return personEntered(person(" \t", std::nullopt)); }),
              "Enter the person's name.");
    EXPECT_EQ(testing::refusal([&] { return personEntered(person("Dana", -1)); }),
              "Enter a positive monthly allowance, or leave it empty.");
    const Person dana = personEntered(person(" Dana ", 0));
    EXPECT_EQ(dana.name, "Dana");
    EXPECT_EQ(dana.bankNames, std::vector<std::string>{"DANA SMITH"});
    EXPECT_EQ(dana.monthlyAllowance, 0) << "zero passes, as the allowance's own rule says";
}

}  // namespace
}  // namespace copperwick
