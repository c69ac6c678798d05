#include "core/model/ledger_lookup.h"

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

// Each command found records its own way: one trimmed what was typed and
// another didn't, so " Dining" named a category in one command only.
TEST(LedgerLookup, FindsByIDOrByTrimmedNameInAnyCase) {
    testing::LedgerBuilder builder;
    Ledger& ledger = builder.ledger();
    const Uuid checking = builder.account("Joint Checking");
    const Person ana{Uuid::random(), "Ana", {}};
    ledger.people.push_back(ana);
    const Rule rule{.id = Uuid::random(), .name = "Car payment"};
    ledger.rules.push_back(rule);
    const Uuid acme = builder.merchant("Acme");

    EXPECT_EQ(findAccount(ledger, " joint checking ")->id, checking);
    EXPECT_EQ(findAccount(ledger, checking.text())->id, checking);
    EXPECT_EQ(findPerson(ledger, "ANA")->id, ana.id);
    EXPECT_EQ(findCategory(ledger, " dining")->name, "Dining");
    EXPECT_EQ(findRule(ledger, "car PAYMENT")->id, rule.id);
    EXPECT_EQ(findMerchant(ledger, "acme ")->id, acme);
    EXPECT_EQ(findAccount(ledger, "Savings"), nullptr);
}

// The two owner words win over a person of that name: a card set to
// "Shared" must never file one person's spending.
TEST(LedgerLookup, AnOwnerIsSharedUnassignedOrAPerson) {
    testing::LedgerBuilder builder;
    Ledger& ledger = builder.ledger();
    const Person ana{Uuid::random(), "Ana", {}};
    ledger.people.push_back(ana);
    ledger.people.push_back(Person{Uuid::random(), "Shared", {}});

    EXPECT_EQ(findOwner(ledger, " SHARED"), SpendingAssignment::shared());
    EXPECT_EQ(findOwner(ledger, "Unassigned"), SpendingAssignment::unassigned());
    EXPECT_EQ(findOwner(ledger, "ana"), SpendingAssignment::person(ana.id));
    EXPECT_EQ(findOwner(ledger, ana.id.text()), SpendingAssignment::person(ana.id));
    EXPECT_EQ(findOwner(ledger, "Bo"), std::nullopt);
    EXPECT_EQ(findOwner(ledger, ""), std::nullopt);
}

TEST(LedgerLookup, AnIDFindsOnlyByID) {
    testing::LedgerBuilder builder;
    const Uuid other = Uuid::random();
    builder.account(other.text());
    EXPECT_EQ(findAccount(builder.ledger(), other.text()), nullptr);
    EXPECT_EQ(findAccount(builder.ledger(), Uuid::random().text()), nullptr);
}

}  // namespace
}  // namespace copperwick
