// The Review screen's computations on a household's history: the queue of
// 5,000 waiting lines among 100,000, the rule suggestions from what was
// decided by hand, and the preview the rule editor runs as the person types.

#include <algorithm>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/bench_size.h"
#include "bench/ledger_generator.h"
#include "core/matching/matcher.h"
#include "core/operations/classification.h"
#include "core/review/review_queue.h"
#include "core/review/rule_preview.h"
#include "core/review/rule_suggester.h"

namespace copperwick::bench {
namespace {

const std::size_t kTransactions = scaled(100'000);
const std::size_t kWaiting = scaled(5'000);
const std::size_t kDecided = scaled(2'000);

// Filed once, then 5,000 lines left waiting and 2,000 others decided by
// hand, so both the queue and the suggester have their usual work.
const Ledger& household() {
    static const Ledger ledger = [] {
        Ledger built = generateLedger({.transactions = kTransactions});
        (void)rematch(built);
        std::vector<Uuid> ids;
        for (const auto& transaction : built.transactions)
            ids.push_back(transaction.id);
        std::sort(ids.begin(), ids.end());
        const Uuid dining = built.categoryNamed("Dining")->id;
        for (std::size_t i = 0; i < ids.size(); ++i) {
            built.transactions.update(ids[i], [&](LedgerTransaction& t) {
                if (i < kWaiting) {
                    t.review = ReviewState::unresolved;
                } else if (i < kWaiting + kDecided) {
                    t.review = ReviewState::confirmed;
                    t.method = MatchMethod::manual;
                    t.kind = TransactionKind::expense;
                    t.categoryID = dining;
                } else if (isWaiting(t.review)) {
                    t.review = ReviewState::automatic;
                }
            });
        }
        return built;
    }();
    return ledger;
}

void ReviewQueueGroups(benchmark::State& state) {
    const Ledger& ledger = household();
    std::size_t groups = 0;
    for (auto _ : state) {
        auto result = ReviewQueue::groups(ledger);
        groups = result.size();
        benchmark::DoNotOptimize(result);
    }
    state.counters["groups"] = static_cast<double>(groups);
}
BENCHMARK(ReviewQueueGroups)->Unit(benchmark::kMillisecond)->MinTime(minTime(2.0));

void RuleSuggestions(benchmark::State& state) {
    const Ledger& ledger = household();
    std::size_t suggestions = 0;
    for (auto _ : state) {
        auto result = RuleSuggester::suggestions(ledger);
        suggestions = result.size();
        benchmark::DoNotOptimize(result);
    }
    state.counters["suggestions"] = static_cast<double>(suggestions);
}
BENCHMARK(RuleSuggestions)->Unit(benchmark::kMillisecond)->MinTime(minTime(2.0));

void RulePreviewRegex(benchmark::State& state) {
    const Ledger& ledger = household();
    const Rule rule{.id = Uuid::random(),
                    .name = "Coffee",
                    .match = TextMatch::regex,
                    .pattern = "^(STARBUCKS|BLUE BOTTLE) #[0-9]+ ",
                    .kind = TransactionKind::expense,
                    .categoryID = ledger.categoryNamed("Dining")->id};
    std::size_t matching = 0;
    for (auto _ : state) {
        auto preview = RulePreview::compute(rule, ledger, std::nullopt);
        matching = preview.matchingIDs.size();
        benchmark::DoNotOptimize(preview);
    }
    state.counters["matching"] = static_cast<double>(matching);
}
BENCHMARK(RulePreviewRegex)->Unit(benchmark::kMillisecond)->MinTime(minTime(2.0));

}  // namespace
}  // namespace copperwick::bench
