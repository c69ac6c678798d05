#include <gtest/gtest.h>

#include "core/operations/report_notes.h"
#include "core/reports/account_freshness.h"
#include "core/reports/report_engine.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

const DateSpan kMarch{day(2026, 3, 1), day(2026, 3, 31)};

class DataNotesTest : public ::testing::Test {
  protected:
    void on(LocalDate date, const Uuid& account) {
        const Uuid id = builder.transaction(account, "SHOP", -100, date);
        builder.change(id, [](LedgerTransaction& t) { t.kind = TransactionKind::expense; });
    }
    // A card used every day, so that a week without it is unusual.
    void daily(LocalDate first, LocalDate last) {
        for (LocalDate date = first; date <= last; date = date.addingDays(1))
            on(date, card);
    }
    // The ids of the report's notes, account ids replaced by the account's name.
    std::string notes(const ReportFilter& filter, LocalDate today = day(2026, 4, 20)) {
        std::string text;
        for (const auto& note : ReportEngine::build(builder.ledger(), filter, today).notes) {
            std::string id = note.id;
            for (const auto& account : builder.ledger().accounts) {
                if (const auto at = id.find(account.id.text()); at != std::string::npos)
                    id.replace(at, account.id.text().size(), account.name);
            }
            text += id + (note.severity == DataNote::Severity::warning ? "! " : " ");
        }
        return text;
    }
    ReportFilter household(DateSpan span = kMarch) const {
        return ReportFilter(span, {}, {}, "USD", std::nullopt, false, false, PeopleMode::assigned);
    }

    testing::LedgerBuilder builder;
    Uuid card = builder.account("Card", AccountType::creditCard);
};

TEST_F(DataNotesTest, LateByASixthDayIsFineAndASeventhIsNot) {
    daily(day(2026, 3, 1), day(2026, 3, 25));
    EXPECT_EQ(notes(household()), "");
    builder.ledger().transactions.clear();
    daily(day(2026, 3, 1), day(2026, 3, 24));
    EXPECT_EQ(notes(household()), "late-Card! ");
    const auto report = ReportEngine::build(builder.ledger(), household(), day(2026, 4, 20));
    EXPECT_EQ(report.notes[0].text,
              "Card has nothing after Mar 24, 2026. Import a newer file if this report should "
              "run to Mar 31, 2026.");
}

TEST_F(DataNotesTest, Today_InsideThePeriodIsTheEndAndAddsPartial) {
    daily(day(2026, 3, 1), day(2026, 3, 10));
    // On the 16th the account is 6 days behind: fine, but the period isn't over.
    EXPECT_EQ(notes(household(), day(2026, 3, 16)), "partial ");
    EXPECT_EQ(notes(household(), day(2026, 3, 17)), "late-Card! partial ");
    // Dismissing it for March leaves it for a period that ends elsewhere.
    (void)acknowledge(builder.ledger(), {DataNote::Dismiss{"partial|2026-03-31"}});
    EXPECT_EQ(notes(household(), day(2026, 3, 16)), "");
    EXPECT_EQ(notes(household({day(2026, 3, 1), day(2026, 4, 30)}), day(2026, 3, 16)), "partial ");
}

TEST_F(DataNotesTest, AnAccountThatIsUsuallyQuietGetsAGentleNote) {
    for (int month = 1; month <= 3; ++month)
        on(day(2026, month, 1), card);  // roughly every 30 days, 30 days behind
    EXPECT_EQ(notes(household()), "late-Card ");
    EXPECT_TRUE(ReportEngine::usuallyQuiet({day(2026, 1, 1), day(2026, 1, 31)}, 60));
    EXPECT_FALSE(ReportEngine::usuallyQuiet({day(2026, 1, 1), day(2026, 1, 31)}, 61));
    EXPECT_FALSE(ReportEngine::usuallyQuiet({day(2026, 1, 1)}, 1)) << "one date says nothing";
}

TEST_F(DataNotesTest, AnswersStoredOnTheAccountSilenceTheirNotes) {
    daily(day(2026, 3, 8), day(2026, 3, 20));
    EXPECT_EQ(notes(household()), "late-Card! early-Card ");
    (void)acknowledge(builder.ledger(), {DataNote::UpToDate{card, day(2026, 3, 31)},
                                         DataNote::HistoryStart{card, day(2026, 3, 8)}});
    EXPECT_EQ(notes(household()), "");
    // April is not covered by the answer given for March.
    on(day(2026, 4, 2), card);
    EXPECT_EQ(notes(household({day(2026, 4, 1), day(2026, 4, 30)}), day(2026, 5, 20)),
              "late-Card! ");
}

TEST_F(DataNotesTest, StartingOnTheSeventhIsNotEarlyButTheEighthIs) {
    on(day(2026, 3, 7), card);
    on(day(2026, 3, 31), card);
    EXPECT_EQ(notes(household()), "");
    builder.ledger().transactions.clear();
    on(day(2026, 3, 8), card);
    on(day(2026, 3, 31), card);
    EXPECT_EQ(notes(household()), "early-Card ");
}

TEST_F(DataNotesTest, NoDataWithinSixtyTwoDaysOfThePeriodIsNamed) {
    on(day(2025, 12, 29), card);  // 62 days before March 1
    EXPECT_EQ(notes(household()), "nodata-Card! ");
    builder.ledger().transactions.clear();
    on(day(2025, 12, 28), card);
    EXPECT_EQ(notes(household()), "");
    (void)acknowledge(builder.ledger(), {DataNote::RarelyUsed{card}});
    builder.ledger().transactions.clear();
    on(day(2025, 12, 29), card);
    EXPECT_EQ(notes(household()), "") << "rarely used accounts are left alone";
}

TEST_F(DataNotesTest, CashWalletsAreNeverLateAndOtherCurrenciesAreNamed) {
    const Uuid wallet = builder.account("Wallet", AccountType::cash);
    on(day(2026, 3, 1), wallet);
    const Uuid euro = builder.account("Euro");
    builder.ledger().accounts.update(2, [](Account& a) { a.currency = "EUR"; });
    const Uuid archived = builder.account("Old Pounds");
    builder.ledger().accounts.update(3, [](Account& a) {
        a.currency = "GBP";
        a.isArchived = true;
    });
    (void)euro;
    (void)archived;
    EXPECT_EQ(notes(household()), "currency ");
}

TEST_F(DataNotesTest, ThePeopleNoteFollowsTheScope) {
    const Uuid ana = Uuid::random();
    builder.ledger().people.push_back(Person{ana, "Ana", {}, std::nullopt});
    const auto text = [&](PeopleMode mode, bool shared) {
        const ReportFilter filter(kMarch, {ana}, {}, "USD", std::nullopt, shared, false, mode);
        return ReportEngine::build(builder.ledger(), filter, day(2026, 4, 20)).notes.back().text;
    };
    EXPECT_EQ(text(PeopleMode::cards, false),
              "Everything on the cards these people use is included. A card used by several of "
              "them is counted once.");
    EXPECT_EQ(text(PeopleMode::cards, true),
              "Everything on the cards these people use is included, plus household cards "
              "nobody in particular uses.");
    EXPECT_EQ(text(PeopleMode::assigned, false),
              "Shared household spending is excluded from this selection.");
    EXPECT_EQ(text(PeopleMode::assigned, true),
              "Shared household spending is included in this selection.");
}

TEST(AccountFreshness, StatesByAgeAndByTheAccountsOwnAnswers) {
    testing::LedgerBuilder builder;
    const LocalDate today = day(2026, 4, 15);
    const Uuid recent = builder.account("A recent");
    const Uuid old = builder.account("B old");
    builder.account("C never");
    builder.account("D cash", AccountType::cash);
    const Uuid quiet = builder.account("E quiet");
    builder.transaction(recent, "X", -1, today.addingDays(-31));
    builder.transaction(old, "X", -1, today.addingDays(-32));
    const Uuid pendingOnly = builder.account("F pending only");
    const Uuid pending = builder.transaction(pendingOnly, "X", -1, today);
    builder.change(pending, [](LedgerTransaction& t) { t.status = TransactionStatus::pending; });
    (void)acknowledge(builder.ledger(), {DataNote::RarelyUsed{quiet}});
    std::string states;
    for (const auto& line : AccountFreshness::build(builder.ledger(), today))
        states += line.account.name + "=" + std::string(rawValue(line.state)) + "; ";
    EXPECT_EQ(states,
              "A recent=recent; B old=mayNeedImport; C never=neverImported; D cash=manual; "
              "E quiet=rarelyUsed; F pending only=mayNeedImport; ");

    // The person's word that the old account is complete makes it recent.
    (void)acknowledge(builder.ledger(), {DataNote::UpToDate{old, today}});
    EXPECT_EQ(AccountFreshness::build(builder.ledger(), today)[1].state,
              AccountFreshness::State::recent);
}

TEST(MissingImports, OnlyAccountsThatStoppedLatelyAreMissing) {
    const auto missing = [](LocalDate lastSeen) {
        testing::LedgerBuilder builder;
        const Uuid card = builder.account("Visa");
        builder.transaction(card, "X", -1, lastSeen);
        return MissingImports::find(DateSpan(day(2026, 4, 1), day(2026, 4, 30)), builder.ledger(),
                                    day(2026, 4, 15));
    };
    const auto found = missing(day(2026, 3, 20));
    ASSERT_TRUE(found);
    EXPECT_EQ(found->message(),
              "April 2026 isn't imported yet for Visa, so its totals are missing that account.");
    EXPECT_FALSE(missing(day(2026, 1, 20))) << "the cutoff is February 1";
    EXPECT_TRUE(missing(day(2026, 2, 1)));
    EXPECT_FALSE(missing(day(2026, 4, 2)));

    MissingImports several{"April 2026", {"Visa", "Savings", "Checking"}};
    EXPECT_EQ(several.message(),
              "April 2026 isn't imported yet for Visa, Savings and Checking, so its totals are "
              "missing those accounts.");
    several.accountNames.pop_back();
    EXPECT_EQ(several.message(),
              "April 2026 isn't imported yet for Visa and Savings, so its totals are missing "
              "those accounts.");
}

}  // namespace
}  // namespace copperwick
