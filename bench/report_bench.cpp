// The report figures of a household with 100,000 transactions: one report
// over twelve months and over all time, and the whole bundle the Reports
// section builds (the report, its comparison period, budgets, recurring and
// unusual charges, payment services) for twelve months.

#include <benchmark/benchmark.h>

#include "bench/bench_size.h"
#include "bench/ledger_generator.h"
#include "core/operations/classification.h"
#include "core/operations/set_budget.h"
#include "core/reports/period_choice.h"
#include "core/reports/report_bundle.h"
#include "core/reports/report_engine.h"

namespace copperwick::bench {
namespace {

const std::size_t kTransactions = scaled(100'000);

struct Household {
    Ledger ledger;
    LocalDate today;
    std::optional<LocalDate> earliest;
};

ReportFilter filterFor(PeriodChoice choice, const Household& h) {
    return ReportFilter(span(choice, h.today, h.earliest, h.today, h.today), {}, {}, "USD",
                        std::nullopt, false, false, PeopleMode::assigned);
}

// Filed once, as a ledger is after import, with a few budgets, so that the
// figures have categories and merchants to group.
const Household& household() {
    static const Household shared = [] {
        Household h{generateLedger({.transactions = kTransactions}), {}, {}};
        (void)rematch(h.ledger);
        for (const char* name : {"Groceries", "Dining", "Housing", "Shopping", "Travel"})
            (void)setBudget(h.ledger, h.ledger.categoryNamed(name)->id, 50000);
        for (const auto* transaction : h.ledger.activeTransactions()) {
            if (!h.earliest || transaction->date < *h.earliest)
                h.earliest = transaction->date;
            if (h.today < transaction->date)
                h.today = transaction->date;
        }
        // Merchant keys are cached for the process, as the runtime warms them after loading.
        (void)ReportEngine::build(h.ledger, filterFor(PeriodChoice::allTime, h), h.today);
        return h;
    }();
    return shared;
}

void ReportTwelveMonths(benchmark::State& state) {
    const Household& h = household();
    const ReportFilter filter = filterFor(PeriodChoice::last12Months, h);
    for (auto _ : state)
        benchmark::DoNotOptimize(ReportEngine::build(h.ledger, filter, h.today));
}
BENCHMARK(ReportTwelveMonths)->Unit(benchmark::kMillisecond);

void ReportAllTime(benchmark::State& state) {
    const Household& h = household();
    const ReportFilter filter = filterFor(PeriodChoice::allTime, h);
    for (auto _ : state)
        benchmark::DoNotOptimize(ReportEngine::build(h.ledger, filter, h.today));
}
BENCHMARK(ReportAllTime)->Unit(benchmark::kMillisecond);

void BundleTwelveMonths(benchmark::State& state) {
    const Household& h = household();
    const ReportFilter filter = filterFor(PeriodChoice::last12Months, h);
    for (auto _ : state)
        benchmark::DoNotOptimize(ReportBundle::build(h.ledger, filter, h.today));
}
BENCHMARK(BundleTwelveMonths)->Unit(benchmark::kMillisecond);

// The two payment-service builds of a bundle, each over the whole ledger.
void PaymentActivityTwelveMonths(benchmark::State& state) {
    const Household& h = household();
    const ReportFilter filter = filterFor(PeriodChoice::last12Months, h);
    for (auto _ : state)
        benchmark::DoNotOptimize(PaymentActivity::build(h.ledger, filter));
}
BENCHMARK(PaymentActivityTwelveMonths)->Unit(benchmark::kMillisecond);

void ZelleActivityTwelveMonths(benchmark::State& state) {
    const Household& h = household();
    const ReportFilter filter = filterFor(PeriodChoice::last12Months, h);
    for (auto _ : state)
        benchmark::DoNotOptimize(ZelleActivity::build(h.ledger, filter));
}
BENCHMARK(ZelleActivityTwelveMonths)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace copperwick::bench
