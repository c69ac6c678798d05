#include "core/operations/upsert_account.h"

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::LedgerBuilder;

bool changed(const LedgerDelta& delta, RecordKind kind, const Uuid& id) {
    const auto it = delta.changed.find(kind);
    return it != delta.changed.end() && it->second.contains(id.text());
}

TEST(UpsertAccountTest, NewAccountIsAppended) {
    LedgerBuilder builder;
    const Account account(Uuid::random(), "Savings", AccountType::savings);
    const auto delta = upsertAccount(builder.ledger(), account);
    ASSERT_NE(builder.ledger().account(account.id), nullptr);
    EXPECT_EQ(builder.ledger().account(account.id)->name, "Savings");
    EXPECT_TRUE(changed(delta, RecordKind::account, account.id));
}

TEST(UpsertAccountTest, NewOwnerReachesInheritedButNeverChosenAssignments) {
    LedgerBuilder builder;
    const auto accountID = builder.account("Card", AccountType::creditCard);
    const auto plain = builder.transaction(accountID, "CORNER SHOP", -500);
    const auto chosen = builder.transaction(accountID, "BOOKSHOP", -900);
    const auto otherCard = builder.transaction(accountID, "CINEMA", -1200);
    builder.change(
        chosen, [](LedgerTransaction& t) { t.spendingAssignment = SpendingAssignment::shared(); });
    builder.change(otherCard, [](LedgerTransaction& t) { t.cardIdentifier = "Card ending 9999"; });
    const Person sam{.id = Uuid::random(), .name = "Sam"};
    const Person alex{.id = Uuid::random(), .name = "Alex"};
    builder.ledger().people.push_back(sam);
    builder.ledger().people.push_back(alex);

    Account account = *builder.ledger().account(accountID);
    account.setUserIDs({sam.id});
    account.cardAssignments["Card ending 9999"] = SpendingAssignment::person(alex.id);
    auto delta = upsertAccount(builder.ledger(), account);
    const Ledger& ledger = builder.ledger();
    EXPECT_EQ(ledger.transaction(plain)->inheritedAssignment, SpendingAssignment::person(sam.id));
    EXPECT_EQ(ledger.transaction(otherCard)->inheritedAssignment,
              SpendingAssignment::person(alex.id));
    EXPECT_EQ(ledger.transaction(chosen)->spendingAssignment, SpendingAssignment::shared());
    EXPECT_TRUE(changed(delta, RecordKind::transaction, plain));
    EXPECT_TRUE(changed(delta, RecordKind::transaction, otherCard));

    // A rename alone leaves the transactions alone.
    account.name = "Sam's card";
    delta = upsertAccount(builder.ledger(), account);
    EXPECT_EQ(builder.ledger().account(accountID)->name, "Sam's card");
    EXPECT_FALSE(delta.changed.contains(RecordKind::transaction));
    EXPECT_EQ(builder.ledger().accounts.size(), 1u);
}

}  // namespace
}  // namespace copperwick
