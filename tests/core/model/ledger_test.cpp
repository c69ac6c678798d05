#include "core/model/ledger.h"

#include <unicode/timezone.h>
#include <unicode/unistr.h>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

LedgerTransaction transaction(int64_t amount, ReviewState review = ReviewState::unresolved) {
    return LedgerTransaction{.id = Uuid::random(),
                             .accountID = Uuid::random(),
                             .date = *LocalDate::make(2026, 3, 9),
                             .amount = amount,
                             .rawDescription = "COFFEE",
                             .fingerprint = "f",
                             .review = review};
}

void add(Ledger& ledger, const LedgerTransaction& t) {
    ledger.transactions.set(t.id, t);
}

TEST(Ledger, StarterHasTheTwentyThreeCategoriesInOrder) {
    const Ledger ledger = Ledger::starter();
    ASSERT_EQ(ledger.categories.size(), 23u);
    std::string names;
    for (const auto& c : ledger.categories) {
        names += std::string(rawValue(c.group)) + ":" + std::to_string(c.colorIndex) + ":" +
                 c.name + "\n";
    }
    EXPECT_EQ(
        names,
        "expense:0:Housing\nexpense:1:Utilities\nexpense:2:Groceries\nexpense:3:Dining\n"
        "expense:4:Transportation\nexpense:5:Shopping\nexpense:6:Subscriptions\nexpense:7:Health\n"
        "expense:8:Personal "
        "Care\nexpense:9:Entertainment\nexpense:10:Travel\nexpense:11:Education\n"
        "expense:12:Insurance\nexpense:13:Pets\nexpense:14:Gifts & Donations\nexpense:15:Cash & "
        "ATM\n"
        "expense:16:Fees & Interest\nexpense:17:Taxes\nexpense:18:Other Spending\n"
        "income:0:Salary\nincome:1:Interest & Rewards\nincome:2:Refunds & "
        "Settlements\nincome:3:Other Income\n");
    EXPECT_TRUE(ledger.transactions.empty() && ledger.people.empty() && ledger.changes.empty());
    EXPECT_TRUE(Ledger().categories.empty());

    // Ids are fresh on every call, so nothing can refer to a starter category by id.
    EXPECT_NE(Ledger::starter().categories[0].id, ledger.categories[0].id);
}

TEST(Ledger, NameLookupsIgnoreCaseAndBreakTiesStably) {
    Ledger ledger = Ledger::starter();
    ASSERT_NE(ledger.categoryNamed("dining"), nullptr);
    EXPECT_EQ(ledger.categoryNamed("dining")->name, "Dining");
    EXPECT_EQ(ledger.categoryNamed("GIFTS & DONATIONS")->name, "Gifts & Donations");
    EXPECT_EQ(ledger.categoryNamed("Dinner"), nullptr);

    const Merchant low{*Uuid::parse("00000000-0000-4000-8000-000000000001"), "Acme"};
    const Merchant high{*Uuid::parse("FFFFFFFF-0000-4000-8000-000000000001"), "ACME"};
    for (int round = 0; round < 2; ++round) {
        Ledger l;
        // Insertion order must not matter.
        if (round == 0) {
            l.merchants.set(high.id, high);
            l.merchants.set(low.id, low);
        } else {
            l.merchants.set(low.id, low);
            l.merchants.set(high.id, high);
        }
        ASSERT_NE(l.merchantNamed("acme"), nullptr);
        EXPECT_EQ(l.merchantNamed("acme")->id, low.id);
    }
    EXPECT_EQ(ledger.merchantNamed("acme"), nullptr);
    EXPECT_EQ(ledger.category(std::nullopt), nullptr);
    EXPECT_EQ(ledger.category(Uuid::random()), nullptr);
}

TEST(Ledger, SupersededAndVoidedTransactionsCountNowhere) {
    Ledger ledger;
    auto open = transaction(-500);
    auto superseded = transaction(-500);
    superseded.supersededBy = open.id;
    auto voided = transaction(-500);
    voided.voided = true;
    auto confirmed = transaction(-500, ReviewState::confirmed);
    auto suggested = transaction(-500, ReviewState::suggested);
    for (const auto& t : {open, superseded, voided, confirmed, suggested})
        add(ledger, t);

    EXPECT_FALSE(superseded.isActive());
    EXPECT_FALSE(superseded.needsReview());
    EXPECT_EQ(ledger.activeTransactions().size(), 3u);
    EXPECT_EQ(ledger.reviewCount(), 2u);  // open and suggested
}

TEST(Ledger, ModelFilingsWaitForAPersonUntilConfirmed) {
    Ledger ledger;
    auto unchecked = transaction(-900, ReviewState::automatic);
    unchecked.method = MatchMethod::ai;
    auto checked = unchecked;
    checked.id = Uuid::random();
    checked.review = ReviewState::confirmed;
    auto rule = transaction(-900, ReviewState::automatic);
    rule.method = MatchMethod::userRule;
    for (const auto& t : {unchecked, checked, rule})
        add(ledger, t);
    ASSERT_EQ(ledger.aiFiledUnchecked().size(), 1u);
    EXPECT_EQ(ledger.aiFiledUnchecked()[0]->id, unchecked.id);

    ledger.aiFilings.set("A", AIFiling{.key = "A", .rejected = true});
    ledger.aiFilings.set("B", AIFiling{.key = "B", .rejected = false});
    EXPECT_EQ(ledger.rejectedAIKeys(), std::set<std::string>{"A"});
}

TEST(Ledger, UndoLabelIsTheLastChange) {
    Ledger ledger;
    EXPECT_FALSE(ledger.undoLabel());
    ledger.changes.push_back(ChangeSet{.id = Uuid::random(), .label = "Undo Import"});
    ledger.changes.push_back(ChangeSet{.id = Uuid::random(), .label = "Undo Filing"});
    EXPECT_EQ(ledger.undoLabel(), "Undo Filing");
}

TEST(Records, SmallRulesOfTheRecords) {
    Rule blank{.id = Uuid::random(), .name = "x", .pattern = "X"};
    blank.merchantName = "   ";
    EXPECT_FALSE(blank.hasOutcome());
    blank.merchantName = " Acme ";
    EXPECT_TRUE(blank.hasOutcome());
    Rule kindOnly{.id = Uuid::random(), .name = "x", .pattern = "X"};
    kindOnly.kind = TransactionKind::transfer;
    EXPECT_TRUE(kindOnly.hasOutcome());

    EXPECT_FALSE(allows(AmountDirection::moneyIn, 0));
    EXPECT_FALSE(allows(AmountDirection::moneyOut, 0));
    EXPECT_TRUE(allows(AmountDirection::any, 0));
    EXPECT_TRUE(allows(AmountDirection::moneyIn, 1));
    EXPECT_TRUE(allows(AmountDirection::moneyOut, -1));

    EXPECT_EQ(label(MatchMethod::ai), "Filed by Local AI");
    EXPECT_EQ(label(TransactionKind::unknown), "Needs review");
    EXPECT_EQ(symbol(AccountType::cash), "banknote");
}

TEST(Records, AccountKeepsPersonAndUsersInStep) {
    const auto dana = Uuid::random();
    const auto sam = Uuid::random();
    Account account(Uuid::random(), "Joint", AccountType::checking, dana);
    EXPECT_EQ(account.userIDs(), std::vector<Uuid>{dana});
    account.setUserIDs({dana, sam});
    EXPECT_FALSE(account.personID());
    account.setUserIDs({sam});
    EXPECT_EQ(account.personID(), sam);
    account.setUserIDs({});
    EXPECT_FALSE(account.personID());

    // Explicit users win over the single person.
    Account shared(Uuid::random(), "Card", AccountType::creditCard, dana,
                   std::vector<Uuid>{dana, sam});
    EXPECT_FALSE(shared.personID());
}

TEST(Records, UnknownTimeZoneFallsBackToLosAngeles) {
    const auto zoneID = [](const LedgerSettings& s) {
        icu::UnicodeString id;
        s.timeZone()->getID(id);
        std::string out;
        return id.toUTF8String(out);
    };
    LedgerSettings settings;
    settings.timeZoneID = "Mars/Base";
    EXPECT_EQ(zoneID(settings), "America/Los_Angeles");
    settings.timeZoneID = "Europe/Berlin";
    EXPECT_EQ(zoneID(settings), "Europe/Berlin");
}

TEST(Ledger, CopyChangesNeverShowInTheOriginal) {
    Ledger original = Ledger::starter();
    std::vector<Uuid> ids;
    for (int i = 0; i < 2000; ++i) {
        const auto t = transaction(-100 - i);
        ids.push_back(t.id);
        add(original, t);
    }
    original.people.push_back(Person{Uuid::random(), "Dana"});

    Ledger copy = original;
    EXPECT_EQ(copy, original);
    copy.transactions.update(ids[42], [](LedgerTransaction& t) { t.note = "changed"; });
    copy.people.update(0, [](Person& p) { p.name = "Sam"; });
    copy.settings.update([](LedgerSettings& s) { s.keepSourceText = false; });

    EXPECT_EQ(original.transaction(ids[42])->note, "");
    EXPECT_EQ(copy.transaction(ids[42])->note, "changed");
    EXPECT_EQ(original.people[0].name, "Dana");
    EXPECT_TRUE(original.settings->keepSourceText);
    EXPECT_NE(copy, original);

    // Untouched records are the very same objects, not copies.
    for (std::size_t i = 0; i < ids.size(); ++i) {
        if (i == 42)
            continue;
        ASSERT_EQ(copy.transaction(ids[i]), original.transaction(ids[i])) << i;
    }
    EXPECT_NE(copy.transaction(ids[42]), original.transaction(ids[42]));
    EXPECT_EQ(copy.categories.address(5), original.categories.address(5));

    // And the other way round: the original can change without the copy seeing it.
    original.transactions.erase(ids[0]);
    EXPECT_NE(copy.transaction(ids[0]), nullptr);
    EXPECT_EQ(original.transactions.size(), 1999u);
    EXPECT_EQ(copy.transactions.size(), 2000u);
}

}  // namespace
}  // namespace copperwick
