// Filing a household's history: rematching every line, pairing transfers,
// and one remembered decision that spreads to a thousand lines, saved.

#include <chrono>
#include <filesystem>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "bench/bench_size.h"
#include "bench/ledger_generator.h"
#include "core/matching/matcher.h"
#include "core/matching/merchant_key_index.h"
#include "core/matching/merchant_keys.h"
#include "core/matching/transfer_pairing.h"
#include "core/operations/classification.h"
#include "core/store/ledger_store.h"

namespace copperwick::bench {
namespace {

const std::size_t kTransactions = scaled(100'000);
const std::size_t kSpread = scaled(1'000);

const Ledger& household() {
    static const Ledger ledger = generateLedger({.transactions = kTransactions});
    return ledger;
}

// Every line matched by a fresh matcher, merchants created, pairs made.
// Argument 0: the generated lines as they come, so nearly every one is
// rewritten; 1: a ledger already matched once, as after a rule change that
// files little differently.
void RematchEverything(benchmark::State& state) {
    Ledger start = household();
    if (state.range(0) == 1)
        (void)rematch(start);
    std::size_t written = 0;
    for (auto _ : state) {
        state.PauseTiming();
        Ledger ledger = start;
        state.ResumeTiming();
        auto delta = rematch(ledger);
        benchmark::DoNotOptimize(delta);
        state.PauseTiming();  // freeing the old records is the caller's, later
        written = delta.changed.contains(RecordKind::transaction)
                      ? delta.changed.at(RecordKind::transaction).size()
                      : 0;
        ledger = Ledger();
        // The pairing's per-chunk lists hold the old chunks until the next
        // pairing; let them go here too.
        warmTransferPairing(ledger);
        state.ResumeTiming();
    }
    state.counters["written"] = static_cast<double>(written);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kTransactions));
}
BENCHMARK(RematchEverything)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->MinTime(minTime(3.0));

// The same matching with the memo already holding every text.
void MatchEverythingWarm(benchmark::State& state) {
    const Matcher matcher(household());
    for (const auto& transaction : household().transactions)
        benchmark::DoNotOptimize(matcher.match(transaction));
    for (auto _ : state) {
        for (const auto& transaction : household().transactions)
            benchmark::DoNotOptimize(matcher.match(transaction));
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kTransactions));
}
BENCHMARK(MatchEverythingWarm)->Unit(benchmark::kMillisecond)->MinTime(minTime(3.0));

// Pairing from nothing, then the run that finds everything already paired.
void PairTransfers(benchmark::State& state) {
    const bool settled = state.range(0) == 1;
    Ledger paired = household();
    if (settled)
        (void)pairTransfers(paired);
    for (auto _ : state) {
        state.PauseTiming();
        Ledger ledger = paired;
        state.ResumeTiming();
        auto delta = pairTransfers(ledger);
        benchmark::DoNotOptimize(delta);
        state.PauseTiming();
        ledger = Ledger();
        state.ResumeTiming();
    }
}
BENCHMARK(PairTransfers)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

// One decision with "remember" that reaches a thousand lines of the same
// shop, including the save of everything it changed, in a running program
// (whose runtime has read every line's merchant key once after loading).
void RememberedDecision(benchmark::State& state) {
    Ledger ledger = household();
    (void)rematch(ledger);
    const Uuid account = ledger.accounts[0].id;
    std::vector<Uuid> bakery;
    for (std::size_t i = 0; i < kSpread; ++i) {
        const LedgerTransaction t{
            .id = Uuid::random(),
            .accountID = account,
            .date =
                *LocalDate::make(2025, 1 + static_cast<int>(i % 12), 1 + static_cast<int>(i % 28)),
            .amount = -static_cast<int64_t>(300 + i),
            .rawDescription = fmt::format("SQ *HAPPY CRUMB BAKERY {:04} PORTLAND", i)};
        ledger.transactions.set(t.id, t);
        bakery.push_back(t.id);
    }
    const auto folder = std::filesystem::temp_directory_path() / "copperwick-bench-classify";
    std::filesystem::remove_all(folder);
    LedgerStore store(folder / "Copperwick.sqlite");
    store.saveAll(ledger);
    const Classification decision{.ids = {bakery.front()},
                                  .merchantName = "Happy Crumb",
                                  .kind = TransactionKind::expense,
                                  .categoryID = ledger.categoryNamed("Dining")->id,
                                  .remember = true,
                                  .label = "Review Happy Crumb"};
    // As the runtime does after a load.
    for (const auto& transaction : ledger.transactions)
        (void)MerchantKeys::of(transaction.rawDescription);
    MerchantKeyIndex::warm(ledger.transactions);
    warmTransferPairing(ledger);
    std::size_t touched = 0;
    double classifySeconds = 0;
    double saveSeconds = 0;
    for (auto _ : state) {
        Ledger copy = ledger;
        const auto start = std::chrono::steady_clock::now();
        const auto delta = classify(copy, decision, Instant::now());
        const auto classified = std::chrono::steady_clock::now();
        store.save(delta, copy);
        const auto saved = std::chrono::steady_clock::now();
        classifySeconds += std::chrono::duration<double>(classified - start).count();
        saveSeconds += std::chrono::duration<double>(saved - classified).count();
        touched = delta.changed.at(RecordKind::transaction).size();
        state.PauseTiming();  // the old copy's records are freed later, off this path
        copy = Ledger();
        state.ResumeTiming();
    }
    state.counters["transactions"] = static_cast<double>(touched);
    const auto rounds = static_cast<double>(state.iterations());
    state.counters["classifyMs"] = classifySeconds * 1000 / rounds;
    state.counters["saveMs"] = saveSeconds * 1000 / rounds;
    std::filesystem::remove_all(folder);
}
BENCHMARK(RememberedDecision)->Unit(benchmark::kMillisecond)->MinTime(minTime(2.0));

}  // namespace
}  // namespace copperwick::bench
