#include "core/reports/figure_drill_downs.h"

#include <gtest/gtest.h>

#include "core/reports/report_engine.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

class FigureDrillDownsTest : public ::testing::Test {
  protected:
    Uuid line(int64_t amount, LocalDate date, TransactionKind kind, std::string_view category) {
        const Uuid id = builder.transaction(checking, "SHOP", amount, date);
        builder.change(id, [&](LedgerTransaction& t) {
            t.kind = kind;
            t.categoryID = builder.category(category);
        });
        return id;
    }
    Report report() {
        return ReportEngine::build(
            builder.ledger(),
            ReportFilter(quarter, {}, {}, "USD", std::nullopt, false, false, PeopleMode::assigned),
            day(2026, 4, 15));
    }

    testing::LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
    DateSpan quarter{day(2026, 1, 1), day(2026, 3, 31)};
};

// A line split over two categories sat in both category lines; a drill-down
// built from them counted it twice and no longer came to the spending.
TEST_F(FigureDrillDownsTest, SpendingCountsASplitLineOnce) {
    const Uuid split = line(-10000, day(2026, 1, 5), TransactionKind::expense, "Groceries");
    builder.change(split, [&](LedgerTransaction& t) {
        t.splits = {{.id = Uuid::random(),
                     .categoryID = builder.category("Groceries"),
                     .amount = -6000,
                     .note = {}},
                    {.id = Uuid::random(),
                     .categoryID = builder.category("Dining"),
                     .amount = -4000,
                     .note = {}}};
    });
    line(2500, day(2026, 2, 3), TransactionKind::expense, "Dining");
    line(300000, day(2026, 2, 1), TransactionKind::income, "Salary");
    const Report figures = report();
    const auto ids = FigureDrillDowns::spending(figures);
    EXPECT_EQ(ids.size(), 2U);
    EXPECT_EQ(-FigureDrillDowns::net(ids, builder.ledger()), figures.spending);
    EXPECT_EQ(FigureDrillDowns::net(figures.includedIDs, builder.ledger()), figures.savings());
}

// The Income tile leaves gifts received out; its transactions must too, and
// the gifts' own tile has just them.
TEST_F(FigureDrillDownsTest, IncomeAndGiftsPartWays) {
    builder.ledger().categories.push_back(LedgerCategory{.id = Uuid::random(),
                                                         .name = "Gifts Received",
                                                         .group = CategoryGroup::income,
                                                         .colorIndex = 4});
    line(300000, day(2026, 1, 1), TransactionKind::income, "Salary");
    line(5000, day(2026, 3, 9), TransactionKind::income, "Gifts Received");
    const Report figures = report();
    const Ledger& ledger = builder.ledger();
    EXPECT_EQ(FigureDrillDowns::net(FigureDrillDowns::income(figures, ledger, false), ledger),
              figures.incomeWithoutGifts());
    EXPECT_EQ(FigureDrillDowns::net(FigureDrillDowns::income(figures, ledger, true), ledger),
              figures.giftsReceived);
    EXPECT_EQ(FigureDrillDowns::net(FigureDrillDowns::allIncome(figures), ledger), figures.income);
    EXPECT_EQ(FigureDrillDowns::net(FigureDrillDowns::month(figures, ledger, "2026-03"), ledger),
              figures.months[2].net());
    EXPECT_TRUE(FigureDrillDowns::month(figures, ledger, "2026-02").empty());
}

}  // namespace
}  // namespace copperwick
