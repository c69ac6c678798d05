#include "app/reports/report_screen_data.h"

#include "core/reports/report_engine.h"

namespace copperwick::app {

namespace {

// The days the trend's months cover, read back from its own month lines.
DateSpan trendSpan(const TwelveMonthTrend& trend, const ReportFilter& filter) {
    if (trend.months.empty())
        return filter.span;
    const auto first = LocalDate::fromISO(trend.months.front().monthKey + "-01");
    const auto last = LocalDate::fromISO(trend.months.back().monthKey + "-01");
    if (!first || !last)
        return filter.span;
    return DateSpan(*first, last->lastOfMonth());
}

}  // namespace

ReportScreenData ReportScreenData::build(const Ledger& ledger, const ReportFilter& filter,
                                         LocalDate today) {
    ReportBundle bundle = ReportBundle::build(ledger, filter, today);
    auto household = HouseholdContext::build(ledger, bundle.report(), today);
    TwelveMonthTrend trend = TwelveMonthTrend::build(ledger, filter, today);
    Report trendReport =
        ReportEngine::build(ledger, filter.withSpan(trendSpan(trend, filter)), today);
    auto facts = ReportFacts::build(bundle.comparison, bundle.recurring, bundle.unusual);
    return {std::move(bundle), std::move(household), std::move(trend), std::move(trendReport),
            std::move(facts)};
}

}  // namespace copperwick::app
