// A printed report of a household with 100,000 transactions: the content of
// a twelve-month report worked out from the ledger, and the whole PDF made
// from it (composed, measured and drawn) in each of the three styles. The
// target is well under a second for the PDF.

#include <benchmark/benchmark.h>

#include "bench/bench_size.h"
#include "bench/ledger_generator.h"
#include "core/operations/classification.h"
#include "core/presentation/pdf_report_content.h"
#include "core/reports/period_choice.h"
#include "core/reports/report_bundle.h"
#include "core/reports/report_facts.h"
#include "pdf/report_pdf.h"

namespace copperwick::bench {
namespace {

const std::size_t kTransactions = scaled(100'000);

struct Household {
    Ledger ledger;
    LocalDate today;
    ReportBundle bundle;
};

// Filed once, as a ledger is after import; the report is the one the Reports
// section shows for the last twelve months.
const Household& household() {
    static const Household shared = [] {
        Ledger ledger = generateLedger({.transactions = kTransactions});
        (void)rematch(ledger);
        std::optional<LocalDate> earliest;
        LocalDate today;
        for (const auto* transaction : ledger.activeTransactions()) {
            if (!earliest || transaction->date < *earliest)
                earliest = transaction->date;
            if (today < transaction->date)
                today = transaction->date;
        }
        const ReportFilter filter(span(PeriodChoice::last12Months, today, earliest, today, today),
                                  {}, {}, "USD", std::nullopt, false, false, PeopleMode::assigned);
        ReportBundle bundle = ReportBundle::build(ledger, filter, today);
        return Household{std::move(ledger), today, std::move(bundle)};
    }();
    return shared;
}

PDFReportContent contentOf(const Household& h) {
    return PDFReportContent(h.bundle.report(), h.ledger,
                            ReportFacts::texts(ReportFacts::build(
                                h.bundle.comparison, h.bundle.recurring, h.bundle.unusual)),
                            false, h.bundle.recurring, Instant::now());
}

void ContentTwelveMonths(benchmark::State& state) {
    const Household& h = household();
    for (auto _ : state)
        benchmark::DoNotOptimize(contentOf(h));
}
BENCHMARK(ContentTwelveMonths)->Unit(benchmark::kMillisecond);

void PDFTwelveMonths(benchmark::State& state) {
    const Household& h = household();
    const PDFReportContent content = contentOf(h);
    const auto style = static_cast<PDFReportStyle>(state.range(0));
    std::size_t bytes = 0;
    for (auto _ : state) {
        const std::string pdf = ReportPDF::data(content, style, Skin::forest);
        bytes = pdf.size();
        benchmark::DoNotOptimize(pdf.data());
    }
    state.counters["kB"] = static_cast<double>(bytes) / 1000;
    state.SetLabel(std::string(rawValue(style)));
}
BENCHMARK(PDFTwelveMonths)
    ->Arg(static_cast<int>(PDFReportStyle::signature))
    ->Arg(static_cast<int>(PDFReportStyle::everyday))
    ->Arg(static_cast<int>(PDFReportStyle::precision))
    ->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace copperwick::bench
