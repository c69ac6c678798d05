// The built-in knowledge over many distinct descriptions: what the matcher
// pays once per description before its memo takes over.

#include <random>
#include <set>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "core/matching/builtin_rule_set.h"
#include "core/matching/merchant_directory.h"
#include "core/matching/merchant_text.h"

namespace copperwick::bench {
namespace {

// Lines no directory phrase reads: each walks the whole phrase list.
constexpr const char* kUnknown[] = {"BLUE BOTTLE COFFEE", "SQ *CORNER BAKERY", "LOCAL HARDWARE CO",
                                    "ZELLE TO DANA SMITH", "CITY OF OAKLAND PARKING"};
// Lines the built-in rules read.
constexpr const char* kRuleLines[] = {
    "ACME CORP PAYROLL PPD ID: {}", "ONLINE TRANSFER TO SAV XXXXX{}", "CHASE CREDIT CRD AUTOPAY {}",
    "ATM WITHDRAWAL {} MAIN ST",    "PAYMENT THANK YOU {}",           "MONTHLY SERVICE FEE {}"};
constexpr const char* kCities[] = {"PORTLAND OR", "OAKLAND CA", "DENVER CO", "AUSTIN TX"};

struct Line {
    std::string normalized;
    int64_t amount;
};

// A quarter each: a directory phrase, the same behind a bank's wrapper, an
// unknown merchant, a rule's line. Store numbers keep every line distinct.
std::vector<Line> distinctLines(std::size_t count) {
    std::mt19937 random(4);
    const auto& entries = MerchantDirectory::shared().entries();
    std::vector<Line> lines;
    for (std::size_t i = 0; i < count; ++i) {
        const auto& entry = entries[random() % entries.size()];
        const std::string& phrase = entry.phrases[random() % entry.phrases.size()];
        const char* city = kCities[random() % 4];
        std::string text;
        switch (i % 4) {
            case 0:
                text = fmt::format("{} #{:05} {}", phrase, i, city);
                break;
            case 1:
                text = fmt::format("POS DEBIT {} {:05} {} CARD 1234", phrase, i, city);
                break;
            case 2:
                text = fmt::format("{} {:05} {}", kUnknown[random() % 5], i, city);
                break;
            default:
                text = fmt::format(fmt::runtime(kRuleLines[random() % 6]), i);
                break;
        }
        const auto amount = static_cast<int64_t>(random() % 20'000) - 10'000;
        lines.push_back({MerchantText::normalize(text), amount});
    }
    return lines;
}

void DirectoryMatch(benchmark::State& state) {
    const auto lines = distinctLines(10'000);
    const MerchantDirectory& directory = MerchantDirectory::shared();
    for (auto _ : state) {
        for (const auto& line : lines)
            benchmark::DoNotOptimize(directory.match(line.normalized));
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * lines.size()));
}
BENCHMARK(DirectoryMatch)->Unit(benchmark::kMillisecond);

void BuiltInRules(benchmark::State& state) {
    const auto lines = distinctLines(10'000);
    const std::set<std::string> disabled;
    for (auto _ : state) {
        for (const auto& line : lines) {
            benchmark::DoNotOptimize(BuiltInRuleSet::match(line.normalized, line.amount,
                                                           AccountType::checking, disabled));
        }
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * lines.size()));
}
BENCHMARK(BuiltInRules)->Unit(benchmark::kMillisecond);

// Near-miss search runs only for what nothing else filed, on its key.
void DirectoryClosest(benchmark::State& state) {
    const auto lines = distinctLines(10'000);
    std::vector<std::string> keys;
    for (const auto& line : lines)
        keys.push_back(MerchantText(line.normalized).key);
    const MerchantDirectory& directory = MerchantDirectory::shared();
    for (auto _ : state) {
        for (const auto& key : keys)
            benchmark::DoNotOptimize(directory.closest(key, 88));
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * keys.size()));
}
BENCHMARK(DirectoryClosest)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace copperwick::bench
