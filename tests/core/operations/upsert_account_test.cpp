#include "core/operations/upsert_account.h"

#include <string>

#include <gtest/gtest.h>

#include "core/operations/currency_code.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/refusal.h"

namespace copperwick {
namespace {

using testing::LedgerBuilder;
using testing::refusal;

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

TEST(AccountEntered, HoldsEachFieldToItsOneRule) {
    LedgerBuilder builder;
    const Person sam{.id = Uuid::random(), .name = "Sam"};
    builder.ledger().people.push_back(sam);
    const auto edited = [](auto edit) {
        Account account(Uuid::random(), "Joint card", AccountType::creditCard);
        edit(account);
        return account;
    };
    const struct {
        Account account;
        std::string words;
    } cases[] = {
        {edited([](Account&) {}), "accepted"},
        {edited([](Account& a) { a.name = " \t"; }), "Enter the account's name."},
        {edited([](Account& a) { a.currency = "US"; }),
         "A currency is three letters, such as USD."},
        {edited([](Account& a) { a.currency = "U$D"; }),
         "A currency is three letters, such as USD."},
        {edited([](Account& a) { a.last4 = "12a4"; }), "The last four are four digits."},
        {edited([](Account& a) { a.last4 = "12345"; }), "The last four are four digits."},
        {edited([&](Account& a) { a.setUserIDs({sam.id}); }), "accepted"},
        {edited([](Account& a) { a.setUserIDs({Uuid::random()}); }),
         "Choose the account's users from the household."},
    };
    for (const auto& [account, words] : cases)
        EXPECT_EQ(refusal([&] { return accountEntered(builder.ledger(), account); }), words)
            << account.name << " " << account.currency << " " << account.last4.value_or("-");

    EXPECT_EQ(accountEntered(builder.ledger(), edited([](Account& a) { a.name = " Visa "; })).name,
              "Visa");
}

TEST(AccountEntered, ReadsTypedFieldsByTheSameRules) {
    EXPECT_EQ(currencyEntered(" eur "), "EUR");
    EXPECT_EQ(refusal([] { return currencyEntered("EURO"); }),
              "A currency is three letters, such as USD.");
    EXPECT_EQ(lastFourEntered(" 0042 "), "0042");
    EXPECT_EQ(lastFourEntered(" "), std::nullopt) << "blank is none";
    for (const char* typed : {"12a4", "123", "12345", "abcd", "12 4", "\u0661\u0662"})
        EXPECT_EQ(refusal([&] { return lastFourEntered(typed); }), "The last four are four digits.")
            << typed;
    EXPECT_EQ(refusal([] { return accountNameEntered(""); }), "Enter the account's name.");
}

TEST(AccountEntered, UsersMakeItTheirsOrTheHouseholdsOrNobodys) {
    const Uuid sam = Uuid::random();
    Account account(Uuid::random(), "Card", AccountType::creditCard);
    setUsers(account, {}, true);
    EXPECT_TRUE(account.isUnassigned);
    setUsers(account, {sam}, true);
    EXPECT_FALSE(account.isUnassigned) << "naming a user makes it theirs";
    EXPECT_EQ(account.personID(), sam);
    setUsers(account, {}, false);
    EXPECT_FALSE(account.isUnassigned);
    EXPECT_TRUE(account.userIDs().empty()) << "the household's";
}

}  // namespace
}  // namespace copperwick
