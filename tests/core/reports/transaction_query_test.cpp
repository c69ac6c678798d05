#include "core/reports/transaction_query.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

class TransactionQueryTest : public ::testing::Test {
  protected:
    // A line filed by hand in the category, on the given day of March.
    Uuid line(std::string description, int64_t amount, int dayOfMonth,
              TransactionKind kind = TransactionKind::expense,
              std::optional<std::string> category = std::nullopt, Uuid account = {}) {
        const Uuid id =
            builder.transaction(account == Uuid() ? checking : account, std::move(description),
                                amount, day(2026, 3, dayOfMonth));
        const auto categoryID =
            category ? std::optional(builder.category(*category)) : std::nullopt;
        builder.change(id, [&](LedgerTransaction& t) {
            t.kind = kind;
            t.categoryID = categoryID;
            t.review = ReviewState::confirmed;
            t.currency = ledger().account(t.accountID)->currency;
        });
        return id;
    }
    template <typename F>
    void edit(const Uuid& id, F&& change) {
        builder.change(id, std::forward<F>(change));
    }
    Ledger& ledger() { return builder.ledger(); }

    // The kept lines' bank text, in order of description, so one comparison
    // tells the whole answer.
    std::string kept(const TransactionQuery& query) {
        std::vector<std::string> texts;
        for (const LedgerTransaction* transaction : query.select(ledger()))
            texts.push_back(transaction->rawDescription);
        std::sort(texts.begin(), texts.end());
        std::string joined;
        for (const auto& text : texts)
            joined += (joined.empty() ? "" : ", ") + text;
        return joined;
    }

    testing::LedgerBuilder builder;
    Uuid checking = builder.account("Joint Checking");
    Uuid euros = [this] {
        const Uuid id = builder.account("euro account");
        ledger().accounts.update(ledger().accounts.size() - 1,
                                 [](Account& account) { account.currency = "EUR"; });
        return id;
    }();
    Uuid coffee = line("SQ *BB COFFEE 114", -450, 2, TransactionKind::expense, "Dining");
    Uuid pay = line("ACME PAYROLL", 200000, 1, TransactionKind::income, "Salary");
    Uuid sweep = line("ONLINE TRANSFER TO SAVINGS", -10000, 3, TransactionKind::transfer);
    Uuid deli = line("CORNER DELI", -1200, 4, TransactionKind::expense, "Dining");
    Uuid gym = line("OLD GYM", -3000, 5, TransactionKind::expense, "Health");
    Uuid hold = line("HOTEL HOLD", -5000, 6, TransactionKind::expense, "Travel");
    Uuid market = line("Farmers market", -2000, 7, TransactionKind::expense, "Groceries");
    Uuid netflix = line("NETFLIX.COM", -1599, 8, TransactionKind::expense, "Subscriptions");
    Uuid mystery = line("MYSTERY CHARGE", -999, 9, TransactionKind::unknown);
    Uuid zelle =
        line("ZELLE TO JANE DOE", -5000, 10, TransactionKind::expense, "Gifts & Donations");
    Uuid venmo = line("VENMO PAYMENT 1234", -2500, 11, TransactionKind::expense, "Dining");
    Uuid costco = line("COSTCO", -8000, 12, TransactionKind::expense, "Groceries");
    Uuid paris = line("PARIS CAFE", -800, 13, TransactionKind::expense, "Dining", euros);

    void SetUp() override {
        const Uuid blueBottle = builder.merchant("Blue Bottle", "Dining");
        edit(coffee, [&](LedgerTransaction& t) { t.merchantID = blueBottle; });
        edit(deli, [](LedgerTransaction& t) { t.status = TransactionStatus::pending; });
        edit(gym, [](LedgerTransaction& t) { t.voided = true; });
        edit(hold, [&](LedgerTransaction& t) { t.supersededBy = deli; });
        edit(market, [](LedgerTransaction& t) { t.entrySource = TransactionEntrySource::manual; });
        edit(netflix, [](LedgerTransaction& t) {
            t.method = MatchMethod::ai;
            t.review = ReviewState::automatic;
        });
        edit(mystery, [](LedgerTransaction& t) { t.review = ReviewState::unresolved; });
        edit(sweep, [](LedgerTransaction& t) { t.note = "Birthday savings for Sam"; });
        const Uuid groceries = builder.category("Groceries");
        const Uuid dining = builder.category("Dining");
        edit(costco, [&](LedgerTransaction& t) {
            t.splits = std::vector<TransactionSplit>{{Uuid::random(), groceries, -5000, ""},
                                                     {Uuid::random(), dining, -3000, ""}};
        });
    }
};

TEST_F(TransactionQueryTest, EachFilterKeepsItsLinesAndOnlyRemovedShowsVoidedOnes) {
    using Kind = TransactionFilter::Kind;
    const Uuid dining = builder.category("Dining");
    const struct {
        TransactionFilter filter;
        std::string lines;
    } cases[] = {
        {{},
         "ACME PAYROLL, CORNER DELI, COSTCO, Farmers market, MYSTERY CHARGE, NETFLIX.COM, "
         "ONLINE TRANSFER TO SAVINGS, PARIS CAFE, SQ *BB COFFEE 114, VENMO PAYMENT 1234, "
         "ZELLE TO JANE DOE"},
        {{.kind = Kind::needsReview}, "MYSTERY CHARGE"},
        {{.kind = Kind::aiFiled}, "NETFLIX.COM"},
        {{.kind = Kind::spending},
         "CORNER DELI, COSTCO, Farmers market, NETFLIX.COM, PARIS CAFE, SQ *BB COFFEE 114, "
         "VENMO PAYMENT 1234, ZELLE TO JANE DOE"},
        {{.kind = Kind::income}, "ACME PAYROLL"},
        {{.kind = Kind::transfers}, "ONLINE TRANSFER TO SAVINGS"},
        {{.kind = Kind::zelle}, "ZELLE TO JANE DOE"},
        {{.kind = Kind::pending}, "CORNER DELI"},
        {{.kind = Kind::removed}, "OLD GYM"},
        {{.kind = Kind::manual}, "Farmers market"},
        // A split line is in every category it has a part in.
        {TransactionFilter::inCategory(dining),
         "CORNER DELI, COSTCO, PARIS CAFE, SQ *BB COFFEE 114, VENMO PAYMENT 1234"},
        {TransactionFilter::byService(PaymentService::venmo), "VENMO PAYMENT 1234"},
    };
    for (const auto& [filter, lines] : cases)
        EXPECT_EQ(kept({.filter = filter}), lines) << static_cast<int>(filter.kind);
}

TEST_F(TransactionQueryTest, DaysCurrencyAccountAndFocusNarrowTheList) {
    EXPECT_EQ(kept({.from = day(2026, 3, 3), .to = day(2026, 3, 4)}),
              "CORNER DELI, ONLINE TRANSFER TO SAVINGS");
    EXPECT_EQ(kept({.from = day(2026, 3, 12)}), "COSTCO, PARIS CAFE");
    EXPECT_EQ(kept({.currency = "EUR"}), "PARIS CAFE");
    EXPECT_EQ(kept({.accountID = euros}), "PARIS CAFE");
    // A list opened from a figure elsewhere keeps its lines whatever the days.
    EXPECT_EQ(kept({.focus = std::set<Uuid>{coffee, gym}, .from = day(2026, 4, 1)}),
              "SQ *BB COFFEE 114");
    EXPECT_EQ(kept({.focus = std::set<Uuid>{}}), "") << "an empty focus keeps nothing";
}

TEST_F(TransactionQueryTest, PeopleAreAskedWithTheLinesOwnCurrency) {
    const Person ana{Uuid::random(), "Ana", {}};
    ledger().people.push_back(ana);
    ledger().accounts.update(0, [&](Account& account) { account.setUserIDs({ana.id}); });
    TransactionQuery query{.filter = {.kind = TransactionFilter::Kind::spending}};
    query.people = PeopleScope{.personIDs = {ana.id}};
    EXPECT_EQ(kept(query),
              "CORNER DELI, COSTCO, Farmers market, NETFLIX.COM, SQ *BB COFFEE 114, VENMO "
              "PAYMENT 1234, ZELLE TO JANE DOE");
    query.people->includeShared = true;
    query.accountID = euros;
    EXPECT_EQ(kept(query), "PARIS CAFE") << "the household's euro account, in euros";
}

TEST_F(TransactionQueryTest, SearchFindsMerchantBankTextAndNoteInAnyCase) {
    const auto found = [&](std::string search, bool categories = false) {
        return kept({.search = std::move(search), .searchesCategories = categories});
    };
    EXPECT_EQ(found("bottle"), "SQ *BB COFFEE 114") << "the merchant's name";
    EXPECT_EQ(found("  Corner deli "), "CORNER DELI") << "the bank text, trimmed";
    EXPECT_EQ(found("BIRTHDAY"), "ONLINE TRANSFER TO SAVINGS") << "the note";
    EXPECT_EQ(found("subscriptions"), "");
    EXPECT_EQ(found("subscriptions", true), "NETFLIX.COM") << "the command line's category";
    EXPECT_EQ(found("gym"), "") << "voided lines only under Removed";
}

// Words lowered once for the ledger must find what the query finds alone; a
// line added since they were lowered is searched all the same.
TEST_F(TransactionQueryTest, SearchInWordsLoweredBeforehandFindsTheSameLines) {
    const TransactionSearchTexts texts(ledger());
    const auto foundWith = [&](std::string search, bool categories = false) {
        const TransactionQuery query{.search = std::move(search), .searchesCategories = categories};
        std::vector<std::string> found;
        for (const LedgerTransaction* transaction : query.select(ledger(), texts))
            found.push_back(transaction->rawDescription);
        std::sort(found.begin(), found.end());
        std::string joined;
        for (const auto& text : found)
            joined += (joined.empty() ? "" : ", ") + text;
        EXPECT_EQ(joined, kept(query)) << query.search;
        return joined;
    };
    EXPECT_EQ(foundWith("bottle"), "SQ *BB COFFEE 114");
    EXPECT_EQ(foundWith(" BIRTHDAY "), "ONLINE TRANSFER TO SAVINGS");
    EXPECT_EQ(foundWith("subscriptions", true), "NETFLIX.COM");
    foundWith("a");
    foundWith("");

    line("LATE BAKERY", -700, 14, TransactionKind::expense, "Dining");
    EXPECT_EQ(foundWith("bakery"), "LATE BAKERY");
}

TEST_F(TransactionQueryTest, SortsByRawValuesAndBreaksTiesByID) {
    auto lines = TransactionQuery{}.select(ledger());
    const auto order = [&](TransactionSort sort) {
        sortTransactions(lines, ledger(), sort);
        std::string texts;
        for (const LedgerTransaction* line : lines)
            texts += (texts.empty() ? "" : ", ") + line->rawDescription;
        return texts;
    };
    EXPECT_EQ(order({}).substr(0, 30), "PARIS CAFE, COSTCO, VENMO PAYM") << "newest first";
    EXPECT_EQ(order({.column = TransactionColumn::amount, .ascending = false}).substr(0, 31),
              "ACME PAYROLL, SQ *BB COFFEE 114");

    // Equal amounts keep one order whichever way the column runs.
    const auto [first, second] = std::minmax(zelle, costco);
    edit(costco, [](LedgerTransaction& t) { t.amount = -5000; });
    lines =
        TransactionQuery{.filter = {.kind = TransactionFilter::Kind::spending}}.select(ledger());
    std::vector<Uuid> tied;
    for (const bool ascending : {true, false}) {
        sortTransactions(lines, ledger(), {TransactionColumn::amount, ascending});
        for (const LedgerTransaction* line : lines) {
            if (line->amount == -5000)
                tied.push_back(line->id);
        }
    }
    EXPECT_EQ(tied, (std::vector<Uuid>{first, second, first, second}));

    // Names sort ignoring case: "euro account" before "Joint Checking".
    lines = TransactionQuery{}.select(ledger());
    EXPECT_EQ(order({.column = TransactionColumn::account, .ascending = true}).substr(0, 10),
              "PARIS CAFE");
}

TEST_F(TransactionQueryTest, CategoryColumnSaysHowTheLineIsFiled) {
    const auto text = [&](const Uuid& id) {
        return categoryText(ledger(), *ledger().transaction(id));
    };
    EXPECT_EQ(text(sweep), "Transfer");
    EXPECT_EQ(text(mystery), "Needs review");
    edit(mystery,
         [](LedgerTransaction& t) { t.suggestion = Suggestion{.source = MatchMethod::ai}; });
    EXPECT_EQ(text(mystery), "Local AI suggests");
    EXPECT_EQ(text(costco), "Split (2 categories)");
    EXPECT_EQ(text(deli), "Dining");
    edit(deli, [](LedgerTransaction& t) { t.categoryID.reset(); });
    EXPECT_EQ(text(deli), "Uncategorized");
}

}  // namespace
}  // namespace copperwick
