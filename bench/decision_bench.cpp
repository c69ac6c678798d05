// A review decision in the running application, on a household of 100,000
// transactions: the person files the queue's largest group, remembered, and
// the time runs from the decision to the ledger saved and live again. Each
// round is undone before the next, so every round makes the same decision.
// Prints the median and the 99th percentile of the rounds.

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/bench_size.h"
#include "bench/ledger_generator.h"
#include "core/operations/classification.h"
#include "core/review/review_decision.h"
#include "core/review/review_queue.h"
#include "core/store/ledger_store.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::bench {
namespace {

namespace fs = std::filesystem;

const std::size_t kTransactions = scaled(100'000);

double percentile(std::vector<double> samples, double share) {
    std::sort(samples.begin(), samples.end());
    const auto at = static_cast<std::size_t>(share * static_cast<double>(samples.size() - 1) + 0.5);
    return samples[std::min(at, samples.size() - 1)];
}

void DecisionToSaved(benchmark::State& state) {
    const fs::path root = fs::temp_directory_path() / "copperwick-bench-decision";
    fs::remove_all(root);
    fs::create_directories(root / "data");
    {
        // Filed as a first import files it, then a twentieth of the lines,
        // every line of their texts, left for the person.
        Ledger ledger = generateLedger({.transactions = kTransactions});
        (void)rematch(ledger);
        std::vector<std::string> texts;
        for (const auto& transaction : ledger.transactions)
            texts.push_back(transaction.rawDescription);
        std::sort(texts.begin(), texts.end());
        texts.erase(std::unique(texts.begin(), texts.end()), texts.end());
        texts.resize(std::max<std::size_t>(1, texts.size() / 20));
        std::vector<Uuid> waiting;
        for (const auto& transaction : ledger.transactions) {
            if (std::binary_search(texts.begin(), texts.end(), transaction.rawDescription))
                waiting.push_back(transaction.id);
        }
        for (const auto& id : waiting) {
            ledger.transactions.update(id, [](LedgerTransaction& t) {
                t.review = ReviewState::unresolved;
                t.method = MatchMethod::none;
                t.kind = TransactionKind::unknown;
                t.categoryID.reset();
                t.merchantID.reset();
            });
        }
        LedgerStore(root / "data" / "Copperwick.sqlite").saveAll(ledger);
    }
    LedgerRuntime runtime(
        RuntimeOptions{.dataFolder = root / "data", .preferencesFolder = root / "preferences"});
    // What the runtime works out in the background after a load is done long
    // before a person has read the queue and chosen.
    std::this_thread::sleep_for(std::chrono::seconds(smokeRun() ? 0 : 2));

    const auto groups = ReviewQueue::groups(runtime.ledger());
    if (groups.empty()) {
        state.SkipWithError("nothing waits for review");
        return;
    }
    const ReviewGroup& group = groups.front();
    const Classification decision{.ids = group.transactionIDs,
                                  .merchantName = group.displayName,
                                  .kind = TransactionKind::expense,
                                  .categoryID = runtime.ledger().categoryNamed("Shopping")->id,
                                  .remember = true,
                                  .label = ReviewDecisions::label(group)};

    std::vector<double> milliseconds;
    std::size_t written = 0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const ApplyResult result = runtime.apply(
            [&](Ledger& ledger) { return classify(ledger, decision, runtime.now()); });
        const auto saved = std::chrono::steady_clock::now();
        if (!result.saved) {
            state.SkipWithError("the decision wasn't saved");
            break;
        }
        milliseconds.push_back(std::chrono::duration<double, std::milli>(saved - start).count());
        written = result.delta.changed.contains(RecordKind::transaction)
                      ? result.delta.changed.at(RecordKind::transaction).size()
                      : 0;
        state.PauseTiming();
        if (!runtime.undoLastChange())
            state.SkipWithError("the decision couldn't be undone");
        // A person reads the queue again before the next decision, and what
        // the runtime works out after a change is done by then too.
        std::this_thread::sleep_for(std::chrono::milliseconds(smokeRun() ? 0 : 150));
        state.ResumeTiming();
    }
    if (!milliseconds.empty()) {
        state.counters["p50Ms"] = percentile(milliseconds, 0.5);
        state.counters["p99Ms"] = percentile(milliseconds, 0.99);
    }
    state.counters["groupLines"] = static_cast<double>(group.transactionIDs.size());
    state.counters["written"] = static_cast<double>(written);
    runtime.close();
    fs::remove_all(root);
}
BENCHMARK(DecisionToSaved)->Iterations(smokeRun() ? 3 : 200)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace copperwick::bench
