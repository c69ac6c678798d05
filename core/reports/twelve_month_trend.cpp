#include "core/reports/twelve_month_trend.h"

#include "core/model/checked.h"
#include "core/reports/report_engine.h"

namespace copperwick {

TwelveMonthTrend TwelveMonthTrend::build(const Ledger& ledger, const ReportFilter& filter,
                                         LocalDate today) {
    const LocalDate lastMonth = filter.span.end.firstOfMonth();
    const DateSpan twelve(lastMonth.addingMonths(-11), filter.span.end.lastOfMonth());
    Report trend = ReportEngine::build(ledger, filter.withSpan(twelve), today);
    int64_t total = 0;
    for (const auto& month : trend.months)
        total = checked::add(total, month.spending);
    const auto count = static_cast<int64_t>(trend.months.size());
    return {.lastMonth = lastMonth,
            .months = std::move(trend.months),
            .averageSpending = detail::roundedQuotient(total, count)};
}

}  // namespace copperwick
