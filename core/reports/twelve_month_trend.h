#pragma once

// The Trends tab: the twelve months up to the period's last month, whatever
// the period's length, month by month and on average. A plain copyable value;
// `build` is a pure function of the ledger, safe on any thread for a ledger
// nobody writes meanwhile.

#include <cstdint>
#include <vector>

#include "core/model/ledger.h"
#include "core/reports/report.h"
#include "core/reports/report_filter.h"

namespace copperwick {

struct TwelveMonthTrend {
    LocalDate lastMonth;            // the first day of the period's last month
    std::vector<MonthLine> months;  // twelve, the oldest first; empty months too
    // Spending over the twelve months divided by twelve, rounded; months
    // before the first import count as zero.
    int64_t averageSpending = 0;

    // The filter's people, accounts and currency over the twelve months.
    [[nodiscard]] static TwelveMonthTrend build(const Ledger& ledger, const ReportFilter& filter,
                                                LocalDate today);

    friend bool operator==(const TwelveMonthTrend&, const TwelveMonthTrend&) = default;
};

}  // namespace copperwick
