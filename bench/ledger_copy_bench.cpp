// What every change costs before it does anything: copying the live ledger
// and writing one transaction into the copy.

#include <benchmark/benchmark.h>

#include "bench/bench_size.h"
#include "bench/ledger_generator.h"

namespace copperwick::bench {
namespace {

void CopyLedgerAndChangeOneTransaction(benchmark::State& state) {
    const Ledger live = generateLedger({.transactions = static_cast<std::size_t>(state.range(0))});
    std::vector<Uuid> ids;
    for (const auto& t : live.transactions)
        ids.push_back(t.id);
    std::size_t next = 0;
    for (auto _ : state) {
        Ledger copy = live;
        copy.transactions.update(ids[next++ % ids.size()],
                                 [](LedgerTransaction& t) { t.note = "checked"; });
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(CopyLedgerAndChangeOneTransaction)
    ->Arg(static_cast<int64_t>(scaled(10'000)))
    ->Arg(static_cast<int64_t>(scaled(100'000)))
    ->Unit(benchmark::kMicrosecond);

void CopyLedgerOnly(benchmark::State& state) {
    const Ledger live = generateLedger({.transactions = static_cast<std::size_t>(state.range(0))});
    for (auto _ : state) {
        Ledger copy = live;
        benchmark::DoNotOptimize(copy);
    }
}
BENCHMARK(CopyLedgerOnly)->Arg(static_cast<int64_t>(scaled(100'000)))->Unit(benchmark::kNanosecond);

}  // namespace
}  // namespace copperwick::bench
