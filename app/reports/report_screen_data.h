#pragma once

// Everything the Reports screen shows for one filter, worked out in one go
// from one ledger value: the runtime's report bundle, the household context
// of a scope short of the whole household, the twelve months of the
// Trends tab with the report behind them (whose ids the month rows open),
// and the key facts a Local AI summary is written from and checked against.
// A plain copyable value, built on any thread from a copy of the ledger.

#include <optional>
#include <vector>

#include "core/model/ledger.h"
#include "core/reports/household_context.h"
#include "core/reports/report_bundle.h"
#include "core/reports/report_facts.h"
#include "core/reports/twelve_month_trend.h"

namespace copperwick::app {

struct ReportScreenData {
    ReportBundle bundle;
    std::optional<HouseholdContext> household;
    TwelveMonthTrend trend;
    // The report over the trend's twelve months.
    Report trendReport;
    std::vector<ReportFact> facts;

    [[nodiscard]] static ReportScreenData build(const Ledger& ledger, const ReportFilter& filter,
                                                LocalDate today);
    [[nodiscard]] const Report& report() const { return bundle.report(); }
};

}  // namespace copperwick::app
