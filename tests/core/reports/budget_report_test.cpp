#include "core/reports/budget_report.h"

#include <gtest/gtest.h>

#include "core/operations/set_budget.h"
#include "core/reports/report_comparison.h"
#include "core/reports/report_engine.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

ReportFilter householdFilter(DateSpan span) {
    return ReportFilter(span, {}, {}, "USD", std::nullopt, false, false, PeopleMode::assigned);
}

class BudgetReportTest : public ::testing::Test {
  protected:
    void spend(std::string_view category, int64_t amount, LocalDate date) {
        const Uuid id = builder.transaction(account, "SHOP", amount, date);
        builder.change(id, [&](LedgerTransaction& t) {
            t.kind = TransactionKind::expense;
            t.categoryID = builder.category(category);
        });
    }
    std::vector<BudgetLine> lines(DateSpan span) {
        const Report report =
            ReportEngine::build(builder.ledger(), householdFilter(span), day(2026, 12, 1));
        return BudgetReport::lines(builder.ledger(), report);
    }

    testing::LedgerBuilder builder;
    Uuid account = builder.account("Checking");
};

TEST_F(BudgetReportTest, EveryMonthThePeriodTouchesCountsInFull) {
    (void)setBudget(builder.ledger(), builder.category("Dining"), 20000);
    const DateSpan partial{day(2026, 1, 20), day(2026, 3, 10)};
    ASSERT_EQ(lines(partial).size(), 1u);
    EXPECT_EQ(lines(partial)[0].budgeted, 60000);
    EXPECT_EQ(lines(partial)[0].spent, 0) << "a budget with no spending still has a line";
    EXPECT_EQ(BudgetReport::periodNote(partial),
              "This period doesn't cover whole months, so budgets count each month it touches "
              "in full.");
    EXPECT_EQ(lines({day(2026, 3, 1), day(2026, 3, 10)})[0].budgeted, 20000);
}

TEST_F(BudgetReportTest, OverExactAndUnbudgetedLines) {
    const BudgetLine over{Uuid::random(), "Dining", 0, 1000, 1500};
    EXPECT_TRUE(over.isOver());
    EXPECT_EQ(over.remaining(), -500);
    EXPECT_EQ(over.usedTenths(), 1500);
    EXPECT_EQ(over.summary(), "$15.00 of $10.00 \u00B7 $5.00 over");
    const BudgetLine exact{Uuid::random(), "Dining", 0, 1000, 1000};
    EXPECT_FALSE(exact.isOver());
    EXPECT_EQ(exact.summary(), "$10.00 of $10.00 \u00B7 $0.00 left");
    EXPECT_EQ((BudgetLine{Uuid::random(), "x", 0, 3, 1}.usedTenths()), 333);
    EXPECT_EQ((BudgetLine{Uuid::random(), "x", 0, 3, 2}.usedTenths()), 667);
    EXPECT_EQ((BudgetLine{Uuid::random(), "x", 0, 0, 2}.usedTenths()), std::nullopt);
    EXPECT_EQ((BudgetLine{Uuid::random(), "x", 0, 3, -2}.usedTenths()), -667);
}

TEST_F(BudgetReportTest, DeletedCategoriesDropAndNamesSortInPlainTextOrder) {
    const Uuid lower = Uuid::random();
    builder.ledger().categories.push_back(
        LedgerCategory{lower, "dining", CategoryGroup::expense, 3});
    (void)setBudget(builder.ledger(), lower, 100);
    (void)setBudget(builder.ledger(), builder.category("Dining"), 100);
    (void)setBudget(builder.ledger(), Uuid::random(), 100);  // its category is gone
    spend("Dining", -2500, day(2026, 3, 3));
    spend("Dining", 3000, day(2026, 3, 4));  // refunds outweigh the purchase
    const auto result = lines({day(2026, 3, 1), day(2026, 3, 31)});
    ASSERT_EQ(result.size(), 2u);
    EXPECT_EQ(result[0].name, "Dining");
    EXPECT_EQ(result[0].spent, -500);
    EXPECT_EQ(result[0].remaining(), 600);
    EXPECT_EQ(result[1].name, "dining");
}

TEST_F(BudgetReportTest, WholeMonthsAreJudgedByTheEndsAlone) {
    EXPECT_TRUE(BudgetReport::coversWholeMonths({day(2026, 3, 1), day(2026, 5, 31)}));
    EXPECT_FALSE(BudgetReport::coversWholeMonths({day(2026, 3, 1), day(2026, 5, 30)}));
    EXPECT_TRUE(BudgetReport::coversWholeMonths({day(2024, 2, 1), day(2024, 2, 29)}));
    EXPECT_TRUE(BudgetReport::coversWholeMonths({day(2100, 2, 1), day(2100, 2, 28)}))
        << "2100 is no leap year";
}

TEST_F(BudgetReportTest, SavingsGoalOnlyForTheHouseholdInItsCurrencyOverWholeMonths) {
    const auto income = builder.transaction(account, "PAY", 400000, day(2026, 1, 5));
    builder.change(income, [](LedgerTransaction& t) { t.kind = TransactionKind::income; });
    spend("Dining", -249999, day(2026, 2, 5));
    builder.ledger().settings.update([](LedgerSettings& s) {
        s.monthlySavingsGoal = 50000;
        s.monthlySavingsGoalCurrency = "USD";
    });
    const auto goal = [&](ReportFilter filter) {
        return BudgetReport::savingsGoal(
            builder.ledger(), ReportEngine::build(builder.ledger(), filter, day(2026, 5, 1)));
    };
    const DateSpan quarter{day(2026, 1, 1), day(2026, 3, 31)};
    const auto reached = goal(householdFilter(quarter));
    ASSERT_TRUE(reached);
    EXPECT_EQ(reached->target, 150000);
    EXPECT_EQ(reached->saved, 150001);
    EXPECT_EQ(reached->title(), "Savings goal reached");
    EXPECT_FALSE(goal(householdFilter({day(2026, 1, 1), day(2026, 3, 30)})));
    ReportFilter euros = householdFilter(quarter);
    euros.currency = "EUR";
    EXPECT_FALSE(goal(euros));
    const auto loss = goal(householdFilter({day(2026, 2, 1), day(2026, 2, 28)}));
    ASSERT_TRUE(loss);
    EXPECT_EQ(loss->saved, -249999);
    EXPECT_EQ(loss->barValue(), 0);
}

TEST_F(BudgetReportTest, AllowanceNeedsExactlyOnePersonByAssignment) {
    const Uuid ana = Uuid::random(), ben = Uuid::random();
    builder.ledger().people.push_back(Person{ana, "Ana", {}, 30000});
    builder.ledger().people.push_back(Person{ben, "Ben", {}, 30000});
    builder.ledger().accounts.update(0, [&](Account& a) { a.setUserIDs({ana}); });
    spend("Dining", -70000, day(2026, 3, 5));
    const DateSpan twoMonths{day(2026, 2, 1), day(2026, 3, 31)};
    const auto allowance = [&](std::set<Uuid> people, bool shared, DateSpan span) {
        const ReportFilter filter(span, std::move(people), {}, "USD", std::nullopt, shared, false,
                                  PeopleMode::assigned);
        return BudgetReport::allowance(
            builder.ledger(), ReportEngine::build(builder.ledger(), filter, day(2026, 5, 1)));
    };
    const auto ana2 = allowance({ana}, false, twoMonths);
    ASSERT_TRUE(ana2);
    EXPECT_EQ(ana2->allowance, 60000);
    EXPECT_EQ(ana2->left, -10000) << "overspending isn't clamped";
    EXPECT_EQ(ana2->personName, "Ana");
    EXPECT_FALSE(allowance({ana, ben}, false, twoMonths));
    EXPECT_FALSE(allowance({ana}, true, twoMonths));
    EXPECT_FALSE(allowance({ana}, false, {day(2026, 2, 1), day(2026, 3, 30)}));
    builder.ledger().people.update(0, [](Person& p) { p.monthlyAllowance = INT64_MAX / 2 + 1; });
    EXPECT_FALSE(allowance({ana}, false, twoMonths)) << "an overflowing product hides the tile";
}

TEST_F(BudgetReportTest, ComparisonMergesCategoriesAndSortsByTheSizeOfTheChange) {
    spend("Dining", -5000, day(2026, 3, 5));
    spend("Travel", -5000, day(2026, 2, 5));
    spend("Groceries", -1000, day(2026, 3, 5));
    spend("Groceries", -900, day(2026, 2, 5));
    const auto comparison = ReportComparison::build(
        builder.ledger(), householdFilter({day(2026, 3, 1), day(2026, 3, 31)}), day(2026, 5, 1));
    std::string text;
    for (const auto& c : comparison.categoryChanges)
        text += c.name + " " + std::to_string(c.change()) + "; ";
    EXPECT_EQ(text, "Dining 5000; Travel -5000; Groceries 100; ");
    EXPECT_EQ(comparison.categoryChanges[1].changeTenths(), -1000);
    EXPECT_EQ(comparison.categoryChanges[0].changeTenths(), std::nullopt);

    // A ten-day span compares with the ten days before it.
    const auto tenDays = ReportComparison::build(
        builder.ledger(), householdFilter({day(2026, 3, 10), day(2026, 3, 19)}), day(2026, 5, 1));
    EXPECT_EQ(tenDays.previous.filter.span, DateSpan(day(2026, 2, 28), day(2026, 3, 9)));
}

}  // namespace
}  // namespace copperwick
