#include "core/reports/twelve_month_trend.h"

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

TEST(TwelveMonthTrend, EndsWithThePeriodsLastMonthWhateverItsLength) {
    testing::LedgerBuilder builder;
    const Uuid joint = builder.account("Joint");
    const auto spend = [&](int64_t amount, LocalDate date) {
        const Uuid id = builder.transaction(joint, "SHOP", amount, date);
        builder.change(id, [&](LedgerTransaction& t) {
            t.kind = TransactionKind::expense;
            t.categoryID = builder.category("Dining");
        });
    };
    spend(-1000, day(2025, 3, 31));  // the month before the twelve
    spend(-1200, day(2025, 4, 1));
    spend(-1002, day(2026, 3, 10));
    const ReportFilter tenDays(DateSpan(day(2026, 3, 1), day(2026, 3, 10)), {}, {}, "USD",
                               std::nullopt, false, false, PeopleMode::assigned);
    const TwelveMonthTrend trend =
        TwelveMonthTrend::build(builder.ledger(), tenDays, day(2026, 5, 15));
    EXPECT_EQ(trend.lastMonth, day(2026, 3, 1));
    ASSERT_EQ(trend.months.size(), 12u);
    EXPECT_EQ(trend.months.front().monthKey, "2025-04");
    EXPECT_EQ(trend.months.front().spending, 1200);
    EXPECT_EQ(trend.months.back().monthKey, "2026-03");
    EXPECT_EQ(trend.averageSpending, 184) << "2,202 cents over twelve months, half rounds up";
}

}  // namespace
}  // namespace copperwick
