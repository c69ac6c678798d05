#include "core/intelligence/finance_queries.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/model/text.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

const LocalDate kToday = day(2026, 4, 15);

// Owned copies: the answers asked for inline are gone by the time a line is read.
std::vector<std::string> linesOf(const std::string& text) {
    const auto views = text::splitKeepingEmpty(text, '\n');
    return {views.begin(), views.end()};
}

// Ann and Ben each with a card of their own; March has groceries, dining,
// a salary and a line nobody has filed yet.
class FinanceQueriesTest : public ::testing::Test {
  protected:
    FinanceQueriesTest() {
        ann = Person{.id = Uuid::random(), .name = "Ann Lee"};
        ben = Person{.id = Uuid::random(), .name = "Ben Park"};
        ledger().people.push_back(ann);
        ledger().people.push_back(ben);
        annCard = Account(Uuid::random(), "Ann's card", AccountType::creditCard, ann.id);
        benCard = Account(Uuid::random(), "Ben's card", AccountType::creditCard, ben.id);
        ledger().accounts.push_back(annCard);
        ledger().accounts.push_back(benCard);
    }

    Uuid filed(const Account& account, std::string text, int64_t amount, std::string_view category,
               LocalDate date = day(2026, 3, 10)) {
        const Uuid id = builder.transaction(account.id, std::move(text), amount, date);
        const LedgerCategory* found = ledger().categoryNamed(category);
        builder.change(id, [&](LedgerTransaction& t) {
            t.kind = found->group == CategoryGroup::income ? TransactionKind::income
                                                           : TransactionKind::expense;
            t.categoryID = found->id;
            t.review = ReviewState::automatic;
        });
        return id;
    }

    void marchOfBoth() {
        filed(annCard, "WHOLE FOODS MARKET", -12000, "Groceries", day(2026, 3, 3));
        filed(benCard, "TRADER JOES", -8050, "Groceries", day(2026, 3, 8));
        filed(annCard, "BLUE BOTTLE COFFEE", -1575, "Dining", day(2026, 3, 9));
        filed(annCard, "BLUE BOTTLE COFFEE", 500, "Dining", day(2026, 3, 12));
        filed(annCard, "ACME PAYROLL", 400000, "Salary", day(2026, 3, 15));
        builder.transaction(benCard.id, "MYSTERY SHOP", -2500, day(2026, 3, 20));
    }

    Ledger& ledger() { return builder.ledger(); }

    testing::LedgerBuilder builder;
    Person ann;
    Person ben;
    Account annCard;
    Account benCard;
};

TEST(FinanceQueriesPeriod, MonthsDaysAndTheLongestSpan) {
    EXPECT_EQ(FinanceQueries::period("2026-02", "2026-02"),
              DateSpan(day(2026, 2, 1), day(2026, 2, 28)));
    EXPECT_EQ(FinanceQueries::period(" 2024-02 ", "2024-02-29\n"),
              DateSpan(day(2024, 2, 1), day(2024, 2, 29)))
        << "trimmed, and a leap day is a day";
    EXPECT_EQ(FinanceQueries::period("2026-3-9", "2026-03-09"),
              DateSpan(day(2026, 3, 9), day(2026, 3, 9)));

    const LocalDate start = day(2021, 1, 1);
    const auto longest = FinanceQueries::period(start.iso(), start.addingDays(1829).iso());
    ASSERT_TRUE(longest);
    EXPECT_EQ(longest->dayCount(), 1830);
    EXPECT_FALSE(FinanceQueries::period(start.iso(), start.addingDays(1830).iso()));

    for (const auto& [first, last] :
         std::vector<std::pair<std::string, std::string>>{{"2026-03-10", "2026-03-09"},
                                                          {"2026-13", "2026-13"},
                                                          {"26-03", "2026-03"},
                                                          {"2026-02-30", "2026-03-01"},
                                                          {"March 2026", "2026-03"},
                                                          {"2026-03-01", ""},
                                                          {"2026", "2026"}})
        EXPECT_FALSE(FinanceQueries::period(first, last)) << first << " to " << last;
}

TEST_F(FinanceQueriesTest, PeopleByFullNameFirstNameOrAListOfFullNames) {
    using Set = std::set<Uuid>;
    EXPECT_EQ(FinanceQueries::peopleFilter("Ann", ledger()), Set{ann.id});
    EXPECT_EQ(FinanceQueries::peopleFilter(" ben park ", ledger()), Set{ben.id});
    EXPECT_FALSE(FinanceQueries::peopleFilter("an", ledger())) << "a first name is a whole word";
    EXPECT_EQ(FinanceQueries::peopleFilter("ann lee, ben park", ledger()), (Set{ann.id, ben.id}));
    EXPECT_FALSE(FinanceQueries::peopleFilter("ann, ben", ledger()))
        << "a list names people in full";
    EXPECT_FALSE(FinanceQueries::peopleFilter("ann lee, nobody", ledger()));
    EXPECT_FALSE(FinanceQueries::peopleFilter("ann lee,", ledger())) << "one name is no list";
    for (const std::string word : {"", "  ", "Everyone", "household", "both", "us", "shared",
                                   "shared household", "unassigned", "whole household"})
        EXPECT_EQ(FinanceQueries::peopleFilter(word, ledger()), Set{}) << word;
    EXPECT_EQ(FinanceQueries::peopleFilter(std::nullopt, ledger()), Set{});
}

TEST_F(FinanceQueriesTest, AnswersInTheOrderDatesThenPersonThenName) {
    const std::string dates(FinanceQueries::kDateError);
    EXPECT_EQ(FinanceQueries::summary(ledger(), "2026-03", "2026-02", "nobody", kToday), dates);
    EXPECT_EQ(FinanceQueries::category(ledger(), "nothing", "soon", "2026-02", "Ann", kToday),
              dates);
    EXPECT_EQ(
        FinanceQueries::compare(ledger(), "2026-03", "2026-03", "2026-04", "x", "nobody", kToday),
        dates)
        << "the second period is checked too";
    EXPECT_EQ(FinanceQueries::summary(ledger(), "2026-03", "2026-03", "Zed", kToday),
              "Error: no person named Zed. People: Ann Lee, Ben Park, or everyone.");
    EXPECT_EQ(FinanceQueries::merchant(ledger(), "a", "2026-03", "2026-03", " zed ", kToday),
              "Error: no person named  zed . People: Ann Lee, Ben Park, or everyone.")
        << "the name as it was given";
    EXPECT_EQ(FinanceQueries::merchant(ledger(), " a ", "2026-03", "2026-03", "Ann", kToday),
              "Error: give at least two letters of the merchant's name.");
    EXPECT_EQ(FinanceQueries::recurring(ledger(), "ann, zed", kToday),
              "Error: no person named ann, zed. People: Ann Lee, Ben Park, or everyone.");

    testing::LedgerBuilder empty;
    EXPECT_EQ(FinanceQueries::unknownPerson("Ann", empty.ledger()),
              "Error: no person named Ann. People: none set up, or everyone.");
}

TEST_F(FinanceQueriesTest, SummaryOfAMonth) {
    marchOfBoth();
    const Uuid pending = builder.transaction(annCard.id, "HOTEL HOLD", -30000, day(2026, 3, 28));
    builder.change(pending, [](LedgerTransaction& t) { t.status = TransactionStatus::pending; });
    EXPECT_EQ(FinanceQueries::summary(ledger(), "2026-03", "2026-03", "everyone", kToday),
              "Period: Mar 1, 2026 to Mar 31, 2026 (Whole household)\n"
              "Income: $4,000.00\n"
              "Spending: $211.25 (after $5.00 in refunds)\n"
              "Savings: $3,788.75 (94.7% of income)\n"
              "Top categories: Groceries $200.50; Dining $10.75\n"
              "Not included yet: 1 transactions need review ($25.00 out, $0.00 in).\n"
              "Pending (not counted): 1 charges, \u2212$300.00.");

    EXPECT_EQ(FinanceQueries::summary(ledger(), "2026-03-01", "2026-03-05", "Ann", kToday),
              "Period: Mar 1, 2026 to Mar 5, 2026 (Ann Lee)\n"
              "Income: $0.00\n"
              "Spending: $120.00 (after $0.00 in refunds)\n"
              "Savings: \u2212$120.00\n"
              "Top categories: Groceries $120.00")
        << "no income, no percentage";
}

TEST_F(FinanceQueriesTest, SharedAndUnassignedAreScopesOfTheirOwn) {
    marchOfBoth();
    const auto shared = FinanceQueries::summary(ledger(), "2026-03", "2026-03", "Shared", kToday);
    EXPECT_EQ(linesOf(shared)[0], "Period: Mar 1, 2026 to Mar 31, 2026 (Shared household)");
    EXPECT_EQ(linesOf(shared)[2], "Spending: $0.00 (after $0.00 in refunds)")
        << "each card belongs to one person, so nothing is shared";
    const auto unassigned =
        FinanceQueries::summary(ledger(), "2026-03", "2026-03", "unassigned", kToday);
    EXPECT_EQ(linesOf(unassigned)[0], "Period: Mar 1, 2026 to Mar 31, 2026 (Unassigned)");
    const auto both =
        FinanceQueries::summary(ledger(), "2026-03", "2026-03", "Ann Lee, Ben Park", kToday);
    EXPECT_EQ(linesOf(both)[0], "Period: Mar 1, 2026 to Mar 31, 2026 (Ann Lee + Ben Park)");
    EXPECT_EQ(linesOf(both)[2], "Spending: $211.25 (after $5.00 in refunds)");
}

TEST_F(FinanceQueriesTest, CategoryByNameOrAFragmentOfThreeLettersOrMore) {
    marchOfBoth();
    ledger().categories.push_back(
        LedgerCategory{.id = Uuid::random(), .name = "TV", .group = CategoryGroup::expense});
    const auto ask = [&](std::string_view name) {
        return FinanceQueries::category(ledger(), name, "2026-03", "2026-03", "", kToday);
    };
    EXPECT_EQ(ask("din"),
              "Period: Mar 1, 2026 to Mar 31, 2026 (Whole household)\n"
              "Dining: $10.75 spent in 2 transactions (after $5.00 in refunds).\n"
              "Top merchants: Blue Bottle Coffee $10.75\n"
              "Not included yet: 1 transactions need review ($25.00 out, $0.00 in).");
    EXPECT_EQ(linesOf(ask(" GROCERIES "))[1], "Groceries: $200.50 spent in 2 transactions.");
    EXPECT_EQ(linesOf(ask("tv"))[1], "TV: $0.00 spent (no transactions).")
        << "a name of two letters still matches whole";
    EXPECT_EQ(linesOf(ask("Salary"))[1], "Salary: $4,000.00 received in 1 transactions.");

    const auto unknown = ask(" di ");
    EXPECT_TRUE(
        unknown.starts_with("Error: no category named di. Categories: Housing, Utilities, "))
        << unknown;
    EXPECT_TRUE(unknown.ends_with(", Other Income, TV")) << "no full stop behind the list";
}

TEST_F(FinanceQueriesTest, MerchantAcrossCategoriesCountsASplitLineOnce) {
    marchOfBoth();
    const Uuid split = builder.transaction(annCard.id, "AMAZON MKTP", -6000, day(2026, 3, 21));
    builder.change(split, [&](LedgerTransaction& t) {
        t.kind = TransactionKind::expense;
        t.categoryID = builder.category("Shopping");
        t.review = ReviewState::automatic;
        t.splits = std::vector<TransactionSplit>{
            {.id = Uuid::random(), .categoryID = builder.category("Shopping"), .amount = -4000},
            {.id = Uuid::random(), .categoryID = builder.category("Groceries"), .amount = -2000}};
    });
    const auto ask = [&](std::string_view name) {
        return linesOf(
            FinanceQueries::merchant(ledger(), name, "2026-03", "2026-03", "everyone", kToday))[1];
    };
    EXPECT_EQ(ask("AMAZON"), "Spending at Amazon Mktp: $60.00 in 1 transactions.");
    EXPECT_EQ(ask("ma"), "Spending at Amazon Mktp, Whole Foods Market: $180.00 in 2 transactions.")
        << "every name holding the letters, both pieces of the split";
    EXPECT_EQ(ask(" Nowhere "), "No spending found at a merchant matching \u201c Nowhere \u201d.");
}

TEST_F(FinanceQueriesTest, CompareTwoPeriods) {
    marchOfBoth();
    filed(annCard, "WHOLE FOODS MARKET", -5000, "Groceries", day(2026, 2, 3));
    filed(annCard, "CINEMA", -3000, "Entertainment", day(2026, 2, 4));
    builder.transaction(benCard.id, "WHO KNOWS", -700, day(2026, 2, 20));
    EXPECT_EQ(
        FinanceQueries::compare(ledger(), "2026-02", "2026-02", "2026-03", "2026-03", "", kToday),
        "First: Feb 1, 2026 to Feb 28, 2026. Second: Mar 1, 2026 to Mar 31, 2026.\n"
        "Spending: $80.00 then $211.25 (change +$131.25)\n"
        "Income: $0.00 then $4,000.00 (change +$4,000.00)\n"
        "Biggest category changes: Groceries $50.00 \u2192 $200.50 (+$150.50); "
        "Entertainment $30.00 \u2192 $0.00 (\u2212$30.00); "
        "Dining $0.00 \u2192 $10.75 (+$10.75)\n"
        "First period \u2014 Not included yet: 1 transactions need review ($7.00 out, "
        "$0.00 in).\n"
        "Second period \u2014 Not included yet: 1 transactions need review ($25.00 out, "
        "$0.00 in).");
}

TEST_F(FinanceQueriesTest, TransactionsLargestFirstWithinALimit) {
    for (int i = 1; i <= 30; ++i)
        filed(i % 2 ? annCard : benCard, "CORNER SHOP", -100 * i, "Groceries",
              day(2026, 3, 1 + i % 28));
    const auto found =
        FinanceQueries::transactions(ledger(), "2026-03", "2026-03", "", "", -5, "", 15, kToday);
    const auto lines = linesOf(found);
    ASSERT_EQ(lines.size(), 17u) << found;
    EXPECT_EQ(lines[1], "30 matching transactions, net \u2212$465.00. Largest first:")
        << "a negative minimum is no minimum";
    EXPECT_EQ(lines[2], "Mar 3, 2026 \u00b7 Corner Shop \u00b7 Groceries \u00b7 \u2212$30.00");
    EXPECT_EQ(lines[16], "Mar 17, 2026 \u00b7 Corner Shop \u00b7 Groceries \u00b7 \u2212$16.00");

    EXPECT_EQ(linesOf(FinanceQueries::transactions(ledger(), "2026-03", "2026-03", "", "", 0, "",
                                                   99, kToday))
                  .size(),
              27u)
        << "25 at most";
    EXPECT_EQ(linesOf(FinanceQueries::transactions(ledger(), "2026-03", "2026-03", "", "", 29,
                                                   "Ben Park", 0, kToday)),
              (std::vector<std::string>{
                  "Period: Mar 1, 2026 to Mar 31, 2026 (Ben Park)",
                  "1 matching transactions, net \u2212$30.00. Largest first:",
                  "Mar 3, 2026 \u00b7 Corner Shop \u00b7 Groceries \u00b7 \u2212$30.00"}))
        << "whole dollars, at least one line";
    EXPECT_EQ(FinanceQueries::transactions(ledger(), "2026-03", "2026-03", "", "",
                                           9'000'000'000'000'000, "", 15, kToday),
              "Period: Mar 1, 2026 to Mar 31, 2026 (Whole household)\nNo matching transactions.")
        << "a minimum beyond any amount finds nothing and doesn't overflow";
}

TEST_F(FinanceQueriesTest, TransactionsByTextAndCategoryFindUnfiledLinesAndSplitParts) {
    marchOfBoth();
    const Uuid transfer =
        builder.transaction(annCard.id, "PAYMENT THANK YOU", 50000, day(2026, 3, 25));
    builder.change(transfer, [](LedgerTransaction& t) { t.kind = TransactionKind::transfer; });
    const Uuid split = builder.transaction(annCard.id, "COSTCO WHSE #123", -9000, day(2026, 3, 26));
    builder.change(split, [&](LedgerTransaction& t) {
        t.kind = TransactionKind::expense;
        t.splits = std::vector<TransactionSplit>{
            {.id = Uuid::random(), .categoryID = builder.category("Groceries"), .amount = -6000},
            {.id = Uuid::random(), .categoryID = Uuid::random(), .amount = -3000}};
    });
    const auto find = [&](std::string_view text, std::string_view category) {
        return FinanceQueries::transactions(ledger(), "2026-03", "2026-03", text, category, 0, "",
                                            15, kToday);
    };
    EXPECT_EQ(linesOf(find("thank", "")).back(),
              "Mar 25, 2026 \u00b7 Payment Thank You \u00b7 Transfer \u00b7 $500.00");
    EXPECT_EQ(linesOf(find(" MYSTERY ", "")).back(),
              "Mar 20, 2026 \u00b7 Mystery Shop \u00b7 Needs review \u00b7 \u2212$25.00");
    EXPECT_EQ(linesOf(find("#123", "")).back(),
              "Mar 26, 2026 \u00b7 Costco Whse \u00b7 Groceries \u2212$60.00; Uncategorized "
              "\u2212$30.00 \u00b7 \u2212$90.00")
        << "the bank's own text is searched too";
    const auto groceries = linesOf(find("", "grocer"));
    EXPECT_EQ(groceries[1], "3 matching transactions, net \u2212$290.50. Largest first:");
    EXPECT_EQ(linesOf(find("", "travel"))[1], "No matching transactions.");
}

TEST_F(FinanceQueriesTest, RecurringListsTwentyOfTheActiveOnes) {
    for (int i = 0; i < 25; ++i) {
        const std::string name = "MEMBERSHIP K" + std::string(3, static_cast<char>('A' + i));
        for (int month = 1; month <= 4; ++month)
            filed(annCard, name, -(1000 + 100 * i), "Subscriptions", day(2026, month, 2));
    }
    filed(annCard, "GYM CLUB", -3000, "Health", day(2026, 1, 5));
    filed(annCard, "GYM CLUB", -3000, "Health", day(2026, 2, 5));
    filed(annCard, "GYM CLUB", -3500, "Health", day(2026, 3, 5));
    filed(annCard, "GYM CLUB", -3500, "Health", day(2026, 4, 5));

    const auto answer = FinanceQueries::recurring(ledger(), "everyone", kToday);
    const auto lines = linesOf(answer);
    ASSERT_EQ(lines.size(), 21u) << answer;
    EXPECT_EQ(lines[0], "Active recurring charges (26):");
    EXPECT_EQ(lines[1], "Gym Club: monthly, about $35.00, last Apr 5, 2026");
    EXPECT_EQ(lines[2], "Membership Kyyy: monthly, about $34.00, last Apr 2, 2026");

    EXPECT_EQ(FinanceQueries::recurring(ledger(), "Ben", kToday),
              "No active recurring charges found.");
}

TEST_F(FinanceQueriesTest, RecurringTellsAPriceThatChanged) {
    filed(annCard, "GYM CLUB", -3000, "Health", day(2026, 1, 5));
    filed(annCard, "GYM CLUB", -3000, "Health", day(2026, 2, 5));
    filed(annCard, "GYM CLUB", -3000, "Health", day(2026, 3, 5));
    filed(annCard, "GYM CLUB", -3500, "Health", day(2026, 4, 5));
    EXPECT_EQ(FinanceQueries::recurring(ledger(), "", kToday),
              "Active recurring charges (1):\n"
              "Gym Club: monthly, about $30.00, last Apr 5, 2026 (changed from $30.00 to $35.00)");
}

TEST_F(FinanceQueriesTest, ContextNamesTheDataPeopleAndCategories) {
    testing::LedgerBuilder empty;
    const std::string fresh = FinanceQueries::context(empty.ledger(), kToday);
    EXPECT_TRUE(
        fresh.starts_with("Today is 2026-04-15. There are no transactions yet. People: "
                          "none set up (use everyone). Categories: Housing, Utilities, "))
        << fresh;
    EXPECT_TRUE(fresh.ends_with(", Other Income."));

    marchOfBoth();
    const Uuid voided = builder.transaction(annCard.id, "OLD", -100, day(2020, 1, 1));
    builder.change(voided, [](LedgerTransaction& t) { t.voided = true; });
    EXPECT_TRUE(FinanceQueries::context(ledger(), kToday)
                    .starts_with("Today is 2026-04-15. Data runs from 2026-03-03 to 2026-03-20. "
                                 "People: Ann Lee, Ben Park. Categories: Housing, "));
}

}  // namespace
}  // namespace copperwick
