// Encoding and decoding transaction records: the work of every save and of
// loading a data file.

#include <benchmark/benchmark.h>

#include "bench/bench_size.h"
#include "bench/ledger_generator.h"
#include "core/model/record_json.h"

namespace copperwick::bench {
namespace {

std::vector<LedgerTransaction> sampleTransactions() {
    const Ledger ledger = generateLedger({.transactions = scaled(10'000)});
    return std::vector<LedgerTransaction>(ledger.transactions.begin(), ledger.transactions.end());
}

void EncodeTransactions(benchmark::State& state) {
    const auto transactions = sampleTransactions();
    std::size_t bytes = 0;
    for (auto _ : state) {
        for (const auto& t : transactions)
            bytes += record_json::encode(t).size();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * transactions.size()));
    state.SetBytesProcessed(static_cast<int64_t>(bytes));
}
BENCHMARK(EncodeTransactions)->Unit(benchmark::kMillisecond);

void DecodeTransactions(benchmark::State& state) {
    std::vector<std::string> texts;
    for (const auto& t : sampleTransactions())
        texts.push_back(record_json::encode(t));
    std::size_t bytes = 0;
    for (auto _ : state) {
        for (const auto& text : texts) {
            auto decoded = record_json::decode<LedgerTransaction>(text);
            if (!decoded)
                state.SkipWithError("a generated record did not decode");
            bytes += text.size();
            benchmark::DoNotOptimize(decoded);
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * texts.size()));
    state.SetBytesProcessed(static_cast<int64_t>(bytes));
}
BENCHMARK(DecodeTransactions)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace copperwick::bench
