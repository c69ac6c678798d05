// The data file: loading a household's whole ledger, saving deltas, and
// backing up, beside the raw floor of reading the same rows undecoded.

#include <sqlite3.h>

#include <filesystem>

#include <benchmark/benchmark.h>

#include "bench/bench_size.h"
#include "bench/ledger_generator.h"
#include "core/store/ledger_store.h"

namespace copperwick::bench {
namespace {

const std::size_t kTransactions = scaled(100'000);

// One generated file shared by the benchmarks of a run.
const std::filesystem::path& sampleFile() {
    static const std::filesystem::path file = [] {
        const auto folder = std::filesystem::temp_directory_path() / "copperwick-bench";
        std::filesystem::remove_all(folder);
        const auto path = folder / "Copperwick.sqlite";
        LedgerStore store(path);
        store.saveAll(generateLedger({.transactions = kTransactions}));
        return path;
    }();
    return file;
}

void LoadLedger(benchmark::State& state) {
    LedgerStore store(sampleFile());
    for (auto _ : state) {
        Ledger ledger = store.load();
        benchmark::DoNotOptimize(ledger);
        state.PauseTiming();  // freeing the value isn't part of a load
        ledger = Ledger();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kTransactions));
}
// A load decodes on more than one thread: the time is the wall clock's, and
// the CPU column counts every thread, so that the two side by side show how
// much of the work ran in parallel.
BENCHMARK(LoadLedger)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(minTime(3.0))
    ->UseRealTime()
    ->MeasureProcessCPUTime();

// The floor under LoadLedger: the same rows, read and not decoded.
void ReadRowsUndecoded(benchmark::State& state) {
    sqlite3* db = nullptr;
    sqlite3_open_v2(sampleFile().c_str(), &db, SQLITE_OPEN_READONLY, nullptr);
    for (auto _ : state) {
        std::size_t bytes = 0;
        for (const char* kind : {"person", "account", "category", "rule", "merchant", "transaction",
                                 "batch", "budget", "profile", "change", "aiFiling", "settings"}) {
            sqlite3_stmt* statement = nullptr;
            sqlite3_prepare_v2(db, "SELECT data FROM records WHERE kind = ? ORDER BY id", -1,
                               &statement, nullptr);
            sqlite3_bind_text(statement, 1, kind, -1, SQLITE_STATIC);
            while (sqlite3_step(statement) == SQLITE_ROW)
                bytes += static_cast<std::size_t>(sqlite3_column_bytes(statement, 0));
            sqlite3_finalize(statement);
        }
        benchmark::DoNotOptimize(bytes);
    }
    sqlite3_close(db);
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kTransactions));
}
BENCHMARK(ReadRowsUndecoded)->Unit(benchmark::kMillisecond)->MinTime(minTime(3.0));

void SaveDelta(benchmark::State& state) {
    LedgerStore store(sampleFile());
    Ledger ledger = store.load();
    std::vector<Uuid> ids;
    for (const auto& t : ledger.transactions) {
        if (ids.size() == static_cast<std::size_t>(state.range(0)))
            break;
        ids.push_back(t.id);
    }
    int round = 0;
    for (auto _ : state) {
        ++round;
        LedgerDelta delta;
        for (const auto& id : ids) {
            ledger.transactions.update(
                id, [&](LedgerTransaction& t) { t.note = std::to_string(round); });
            delta.change(RecordKind::transaction, id);
        }
        store.save(delta, ledger);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * ids.size()));
}
BENCHMARK(SaveDelta)
    ->Arg(1)
    ->Arg(static_cast<int64_t>(scaled(10'000)))
    ->Unit(benchmark::kMillisecond);

void BackupWholeFile(benchmark::State& state) {
    LedgerStore store(sampleFile());
    const auto copy = sampleFile().parent_path() / "copy.sqlite";
    for (auto _ : state) {
        std::filesystem::remove(copy);
        store.backup(copy);
    }
    state.counters["fileMB"] = static_cast<double>(std::filesystem::file_size(copy)) / 1e6;
}
BENCHMARK(BackupWholeFile)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace copperwick::bench
