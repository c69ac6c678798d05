// A small household worked through by hand: two people, a shared card, a
// refund, a pending charge that replaced nothing yet, one that was replaced,
// a transfer pair, lines still waiting for review, a gift, a split, a voided
// line, an account in another currency, and budgets for two categories.
// Every figure below was worked out on paper from the lines in SetUp, for
// March 2026 and for the first quarter, so that one wrong sign, one missed
// refund or one double-counted transfer fails the comparison.

#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "core/operations/set_budget.h"
#include "core/operations/update_settings.h"
#include "core/reports/budget_report.h"
#include "core/reports/report_bundle.h"
#include "core/reports/report_engine.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

class ReportScenario : public ::testing::Test {
  protected:
    void SetUp() override {
        Ledger& ledger = builder.ledger();
        ledger.people.push_back(Person{ana, "Ana", {}, std::nullopt});
        ledger.people.push_back(Person{ben, "Ben", {}, std::nullopt});
        checking = builder.account("Checking");
        visa = builder.account("Visa", AccountType::creditCard);
        savings = builder.account("Savings", AccountType::savings);
        euro = builder.account("Euro Account");
        ledger.accounts.update(0, [&](Account& a) { a.setUserIDs({ana, ben}); });
        // Two users make the card the household's.
        ledger.accounts.update(1, [&](Account& a) { a.setUserIDs({ana, ben}); });
        ledger.accounts.update(3, [](Account& a) { a.currency = "EUR"; });
        ledger.categories.push_back(
            LedgerCategory{giftsID, "Gifts received", CategoryGroup::income, 9});
        acme = builder.merchant("Acme Corp", "Salary");
        wholeFoods = builder.merchant("Whole Foods", "Groceries");

        const auto expense = [&](const Uuid& account, std::string text, int64_t amount,
                                 LocalDate date, std::string_view category,
                                 std::optional<Uuid> merchant = std::nullopt) {
            const Uuid id = builder.transaction(account, std::move(text), amount, date);
            builder.change(id, [&](LedgerTransaction& t) {
                t.kind = TransactionKind::expense;
                t.categoryID = builder.category(category);
                t.merchantID = merchant;
                t.review = ReviewState::confirmed;
                t.method = MatchMethod::manual;
            });
            return id;
        };
        const auto income = [&](std::string text, int64_t amount, LocalDate date, Uuid category,
                                std::optional<Uuid> merchant = std::nullopt) {
            const Uuid id = builder.transaction(checking, std::move(text), amount, date);
            builder.change(id, [&](LedgerTransaction& t) {
                t.kind = TransactionKind::income;
                t.categoryID = category;
                t.merchantID = merchant;
            });
            return id;
        };
        const Uuid salary = builder.category("Salary");

        name(income("ACME PAYROLL", 300000, day(2026, 1, 15), salary, acme), "J1");
        name(expense(visa, "WHOLE FOODS", -12000, day(2026, 1, 20), "Groceries", wholeFoods), "J2");
        name(income("ACME PAYROLL", 300000, day(2026, 2, 15), salary, acme), "F1");
        name(expense(visa, "BLUE BOTTLE COFFEE", -2500, day(2026, 2, 10), "Dining"), "F2");

        name(income("ACME PAYROLL", 300000, day(2026, 3, 1), salary, acme), "M1");
        const Uuid m2 =
            expense(visa, "WHOLE FOODS", -20000, day(2026, 3, 5), "Groceries", wholeFoods);
        name(m2, "M2");
        // The pending charge that M2 replaced counts nowhere, not even as pending.
        const Uuid replaced =
            expense(visa, "WHOLE FOODS", -20000, day(2026, 3, 4), "Groceries", wholeFoods);
        builder.change(replaced, [&](LedgerTransaction& t) {
            t.status = TransactionStatus::pending;
            t.supersededBy = m2;
        });
        name(expense(visa, "WHOLE FOODS", 3000, day(2026, 3, 8), "Groceries", wholeFoods),
             "M3 refund");
        const Uuid m4 = expense(visa, "BLUE BOTTLE COFFEE", -1500, day(2026, 3, 12), "Dining");
        builder.change(m4, [](LedgerTransaction& t) {
            t.method = MatchMethod::ai;
            t.review = ReviewState::automatic;
        });
        name(m4, "M4 ai");
        const Uuid pending = expense(visa, "BLUE BOTTLE COFFEE", -1000, day(2026, 3, 14), "Dining");
        builder.change(pending,
                       [](LedgerTransaction& t) { t.status = TransactionStatus::pending; });
        name(pending, "M5 pending");
        for (const auto& [account, amount, text] :
             {std::tuple{checking, int64_t{-50000}, "TRANSFER TO SAVINGS"},
              std::tuple{savings, int64_t{50000}, "TRANSFER FROM CHECKING"}}) {
            const Uuid id = builder.transaction(account, text, amount, day(2026, 3, 20));
            builder.change(id, [](LedgerTransaction& t) { t.kind = TransactionKind::transfer; });
        }
        name(income("BIRTHDAY GIFT", 10000, day(2026, 3, 22), giftsID), "M7 gift");
        name(builder.transaction(checking, "MYSTERY DEBIT", -4200, day(2026, 3, 25)), "M8 unknown");
        name(builder.transaction(checking, "CHECK DEPOSIT", 700, day(2026, 3, 26)), "M9 unknown");
        const Uuid split = expense(visa, "TARGET", -10000, day(2026, 3, 28), "Shopping");
        builder.change(split, [&](LedgerTransaction& t) {
            t.splits = std::vector<TransactionSplit>{
                {Uuid::random(), builder.category("Groceries"), -6000, ""},
                {Uuid::random(), builder.category("Shopping"), -4000, ""}};
        });
        name(split, "M10 split");
        const Uuid voided = expense(visa, "BIG TV", -99900, day(2026, 3, 29), "Shopping");
        builder.change(voided, [](LedgerTransaction& t) { t.voided = true; });
        (void)expense(euro, "CAFE DE FLORE", -5000, day(2026, 3, 15), "Dining");

        (void)setBudget(ledger, builder.category("Groceries"), 25000);
        (void)setBudget(ledger, builder.category("Dining"), 5000);
    }

    void name(const Uuid& id, std::string label) { labels[id] = std::move(label); }

    std::string ids(const std::vector<Uuid>& list) {
        std::string text;
        for (const auto& id : list)
            text += (text.empty() ? "" : " ") + labels.at(id);
        return "[" + text + "]";
    }

    // The whole report as text, ids by their labels: one comparison per report.
    std::string describe(const Report& report) {
        std::ostringstream out;
        out << report.scopeLabel << ": income " << report.income << " spending " << report.spending
            << " refunds " << report.refunds << " gifts " << report.giftsReceived << " savings "
            << report.savings() << " rate " << report.savingsRateTenths().value_or(-9999) << '\n';
        for (const auto& c : report.categories) {
            out << "category " << c.name << " " << c.amount << " refunds " << c.refunds << " count "
                << c.count << " " << ids(c.transactionIDs) << '\n';
            for (const auto& m : c.merchants)
                out << "  " << m.name << " " << m.amount << " x" << m.count << '\n';
        }
        for (const auto& m : report.incomeSources)
            out << "income " << m.name << " " << m.amount << " x" << m.count << '\n';
        for (const auto& m : report.topMerchants)
            out << "merchant " << m.name << " " << m.amount << " x" << m.count << " "
                << ids(m.transactionIDs) << '\n';
        for (const auto& m : report.months)
            out << "month " << m.monthKey << " " << m.income << " " << m.spending << '\n';
        out << "transfers " << report.transferCount << " " << report.transferVolume << '\n';
        out << "unknown " << report.unknownCount << " in " << report.unknownIn << " out "
            << report.unknownOut << " " << ids(report.unknownIDs) << '\n';
        out << "pending " << report.pendingCount << " " << report.pendingTotal << '\n';
        out << "included " << ids(report.includedIDs) << '\n';
        out << "ai " << ids(report.aiFiledIDs) << '\n';
        out << "accounts";
        for (const auto& a : report.accountNames)
            out << " " << a;
        out << '\n';
        for (const auto& note : report.notes) {
            // Account notes end in the account's random id; the kind is enough.
            const auto dash = note.id.find('-');
            out << "note " << (dash == std::string::npos ? note.id : note.id.substr(0, dash + 1))
                << " " << note.text << '\n';
        }
        return out.str();
    }

    ReportFilter household(DateSpan span) const {
        return ReportFilter(span, {}, {}, "USD", std::nullopt, false, false, PeopleMode::assigned);
    }

    testing::LedgerBuilder builder;
    Uuid ana = Uuid::random(), ben = Uuid::random(), giftsID = Uuid::random();
    Uuid checking, visa, savings, euro, acme, wholeFoods;
    std::map<Uuid, std::string> labels;
    const LocalDate today = day(2026, 5, 10);
    const DateSpan march{day(2026, 3, 1), day(2026, 3, 31)};
    const DateSpan quarter{day(2026, 1, 1), day(2026, 3, 31)};
};

TEST_F(ReportScenario, MarchFiguresMatchTheHandWorkedReport) {
    const Report report = ReportEngine::build(builder.ledger(), household(march), today);
    // income 3000.00 salary + 100.00 gift; spending 200.00 - 30.00 refund + 15.00 + 100.00 split
    EXPECT_EQ(describe(report),
              "Whole household: income 310000 spending 28500 refunds 3000 gifts 10000 "
              "savings 281500 rate 908\n"
              "category Groceries 23000 refunds 3000 count 3 [M2 M3 refund M10 split]\n"
              "  Whole Foods 17000 x2\n"
              "  Target 6000 x1\n"
              "category Shopping 4000 refunds 0 count 1 [M10 split]\n"
              "  Target 4000 x1\n"
              "category Dining 1500 refunds 0 count 1 [M4 ai]\n"
              "  Blue Bottle Coffee 1500 x1\n"
              "income Acme Corp 300000 x1\n"
              "income Birthday Gift 10000 x1\n"
              "merchant Whole Foods 17000 x2 [M2 M3 refund]\n"
              "merchant Target 10000 x1 [M10 split]\n"
              "merchant Blue Bottle Coffee 1500 x1 [M4 ai]\n"
              "month 2026-03 310000 28500\n"
              "transfers 2 50000\n"
              "unknown 2 in 700 out -4200 [M8 unknown M9 unknown]\n"
              "pending 1 -1000\n"
              "included [M1 M2 M3 refund M4 ai M7 gift M10 split]\n"
              "ai [M4 ai]\n"
              "accounts Checking Savings Visa\n"
              "note unknown 2 transactions still need review ($42.00 out, $7.00 in). They "
              "aren't in the income or spending totals yet.\n"
              "note ai- 1 transaction was filed by Local AI ($15.00 in all) and you haven't "
              "checked them yet. They're counted; check them in Review.\n"
              "note pending 1 pending charge (\u2212$10.00) will count once they post.\n"
              "note late- Savings has nothing after Mar 20, 2026. Import a newer file if this "
              "report should run to Mar 31, 2026.\n"
              "note early- Savings starts on Mar 20, 2026, after this period begins.\n"
              "note currency Accounts in other currencies aren't added in: Euro Account.\n");
    EXPECT_FALSE(report.isComplete());
}

TEST_F(ReportScenario, QuarterFiguresMatchTheHandWorkedReport) {
    const Report report = ReportEngine::build(builder.ledger(), household(quarter), today);
    EXPECT_EQ(describe(report),
              "Whole household: income 910000 spending 43000 refunds 3000 gifts 10000 "
              "savings 867000 rate 953\n"
              "category Groceries 35000 refunds 3000 count 4 [J2 M2 M3 refund M10 split]\n"
              "  Whole Foods 29000 x3\n"
              "  Target 6000 x1\n"
              "category Dining 4000 refunds 0 count 2 [F2 M4 ai]\n"
              "  Blue Bottle Coffee 4000 x2\n"
              "category Shopping 4000 refunds 0 count 1 [M10 split]\n"
              "  Target 4000 x1\n"
              "income Acme Corp 900000 x3\n"
              "income Birthday Gift 10000 x1\n"
              "merchant Whole Foods 29000 x3 [J2 M2 M3 refund]\n"
              "merchant Target 10000 x1 [M10 split]\n"
              "merchant Blue Bottle Coffee 4000 x2 [F2 M4 ai]\n"
              "month 2026-01 300000 12000\n"
              "month 2026-02 300000 2500\n"
              "month 2026-03 310000 28500\n"
              "transfers 2 50000\n"
              "unknown 2 in 700 out -4200 [M8 unknown M9 unknown]\n"
              "pending 1 -1000\n"
              "included [J1 J2 F2 F1 M1 M2 M3 refund M4 ai M7 gift M10 split]\n"
              "ai [M4 ai]\n"
              "accounts Checking Savings Visa\n"
              "note unknown 2 transactions still need review ($42.00 out, $7.00 in). They "
              "aren't in the income or spending totals yet.\n"
              "note ai- 1 transaction was filed by Local AI ($15.00 in all) and you haven't "
              "checked them yet. They're counted; check them in Review.\n"
              "note pending 1 pending charge (\u2212$10.00) will count once they post.\n"
              "note early- Checking starts on Jan 15, 2026, after this period begins.\n"
              "note late- Savings has nothing after Mar 20, 2026. Import a newer file if this "
              "report should run to Mar 31, 2026.\n"
              "note early- Savings starts on Mar 20, 2026, after this period begins.\n"
              "note early- Visa starts on Jan 20, 2026, after this period begins.\n"
              "note currency Accounts in other currencies aren't added in: Euro Account.\n");
}

TEST_F(ReportScenario, BudgetsComparisonAndGoalOverMonthAndQuarter) {
    (void)updateSettings(builder.ledger(), [](LedgerSettings& settings) {
        settings.monthlySavingsGoal = 500000;
        settings.monthlySavingsGoalCurrency = "USD";
    });
    const Ledger& ledger = builder.ledger();
    {
        const ReportBundle bundle = ReportBundle::build(ledger, household(march), today);
        // February spent 25.00 at Dining and nothing else.
        EXPECT_EQ(bundle.comparison.previous.filter.span,
                  DateSpan(day(2026, 2, 1), day(2026, 2, 28)));
        EXPECT_EQ(bundle.comparison.spendingChange(), 26000);
        EXPECT_EQ(bundle.comparison.incomeChange(), 10000);
        std::string changes;
        for (const auto& c : bundle.comparison.categoryChanges)
            changes += c.name + " " + std::to_string(c.current) + "/" + std::to_string(c.previous) +
                       " " + std::to_string(c.changeTenths().value_or(0)) + "; ";
        EXPECT_EQ(changes, "Groceries 23000/0 0; Shopping 4000/0 0; Dining 1500/2500 -400; ");

        ASSERT_EQ(bundle.budgets.size(), 2u);
        EXPECT_EQ(bundle.budgets[0].summary(), "$15.00 of $50.00 \u00B7 $35.00 left");
        EXPECT_EQ(bundle.budgets[0].usedTenths(), 300);
        EXPECT_EQ(bundle.budgets[1].summary(), "$230.00 of $250.00 \u00B7 $20.00 left");
        EXPECT_EQ(bundle.budgets[1].usedTenths(), 920);
        ASSERT_TRUE(bundle.savingsGoal);
        EXPECT_EQ(bundle.savingsGoal->saved, 281500);
        EXPECT_EQ(bundle.savingsGoal->target, 500000);
        EXPECT_EQ(bundle.savingsGoal->title(), "Savings goal");
        EXPECT_FALSE(BudgetReport::periodNote(march));
    }
    {
        const ReportBundle bundle = ReportBundle::build(ledger, household(quarter), today);
        EXPECT_EQ(bundle.comparison.previous.filter.span,
                  DateSpan(day(2025, 10, 1), day(2025, 12, 31)));
        EXPECT_EQ(bundle.comparison.previous.spending, 0);
        ASSERT_EQ(bundle.budgets.size(), 2u);
        EXPECT_EQ(bundle.budgets[0].budgeted, 15000);
        EXPECT_EQ(bundle.budgets[0].spent, 4000);
        EXPECT_EQ(bundle.budgets[1].budgeted, 75000);
        EXPECT_EQ(bundle.budgets[1].spent, 35000);
        EXPECT_EQ(bundle.savingsGoal->target, 1500000);
        EXPECT_EQ(bundle.savingsGoal->saved, 867000);
        EXPECT_EQ(BudgetReport::periodNote(quarter),
                  "Budgets are monthly; this period covers 3 months, so each budget is "
                  "multiplied by 3.");
    }
}

TEST_F(ReportScenario, OnePersonSeesTheirCardsAndNotesSayWhatIsLeftOut) {
    // On the cards Ana uses (checking and the shared card), everything counts;
    // the savings account isn't hers, so it is neither counted nor named.
    Ledger& ledger = builder.ledger();
    ledger.accounts.update(2, [&](Account& a) { a.setUserIDs({ben}); });
    const ReportFilter cards(march, {ana}, {}, "USD", std::nullopt, false, false,
                             PeopleMode::cards);
    const Report report = ReportEngine::build(ledger, cards, today);
    EXPECT_EQ(report.scopeLabel, "Ana (their cards)");
    EXPECT_EQ(report.spending, 28500);
    EXPECT_EQ(report.transferCount, 1);
    EXPECT_EQ(report.transferVolume, 50000);
    EXPECT_EQ(report.accountNames, (std::vector<std::string>{"Checking", "Visa"}));
    std::string notes;
    for (const auto& note : report.notes)
        notes += note.id + ";";
    EXPECT_EQ(notes, "unknown;ai-filed;pending;currency;shared;");
    EXPECT_EQ(report.notes.back().text,
              "Everything on the cards these people use is included. A card used by several of "
              "them is counted once.");
}

}  // namespace
}  // namespace copperwick
