// Reading bank files: a large CSV export end to end, an OFX statement, and
// the merchant-text views of many distinct descriptions.

#include <random>
#include <string>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "bench/bench_size.h"
#include "core/import/builtin_profiles.h"
#include "core/import/import_analyzer.h"
#include "core/matching/merchant_text.h"

namespace copperwick::bench {
namespace {

constexpr const char* kStems[] = {
    "TRADER JOE'S #552",    "SQ *BLUE BOTTLE", "POS DEBIT SAFEWAY",       "PAYPAL *SPOTIFY",
    "AMAZON MKTPLACE PMTS", "SHELL OIL 57444", "UBER TRIP HELP.UBER.COM", "ZELLE TO DANA SMITH"};
constexpr const char* kCities[] = {"PORTLAND OR", "OAKLAND CA", "DENVER CO", "AUSTIN TX"};

std::string description(std::mt19937& random, std::size_t i) {
    return fmt::format("{} {:04} {} {}", kStems[random() % 8], i % 9973, kCities[random() % 4], i);
}

// A Chase card export of `rows` lines.
std::string chaseCardFile(std::size_t rows) {
    std::mt19937 random(1);
    std::string file = "Transaction Date,Post Date,Description,Category,Type,Amount,Memo\n";
    for (std::size_t i = 0; i < rows; ++i) {
        file += fmt::format("{:02}/{:02}/2025,{:02}/{:02}/2025,\"{}\",Shopping,Sale,-{}.{:02},\n",
                            1 + i % 12, 1 + i % 28, 1 + i % 12, 1 + i % 28, description(random, i),
                            random() % 500, random() % 100);
    }
    return file;
}

std::string ofxFile(std::size_t transactions) {
    std::mt19937 random(2);
    std::string file =
        "OFXHEADER:100\nDATA:OFXSGML\n\n<OFX><BANKMSGSRSV1><STMTTRNRS><STMTRS><CURDEF>USD"
        "<BANKACCTFROM><ACCTID>000123456789<ACCTTYPE>CHECKING</BANKACCTFROM><BANKTRANLIST>\n";
    for (std::size_t i = 0; i < transactions; ++i) {
        file += fmt::format(
            "<STMTTRN>\n<TRNTYPE>DEBIT\n<DTPOSTED>2025{:02}{:02}120000\n<TRNAMT>-{}.{:02}\n<FITID>"
            "F{}\n<NAME>{}\n"
            "</STMTTRN>\n",
            1 + i % 12, 1 + i % 28, random() % 500, random() % 100, i, description(random, i));
    }
    return file + "</BANKTRANLIST></STMTRS></STMTTRNRS></BANKMSGSRSV1></OFX>\n";
}

void AnalyzeCSV(benchmark::State& state) {
    const auto rows = static_cast<std::size_t>(state.range(0));
    const std::string file = chaseCardFile(rows);
    for (auto _ : state) {
        auto analysis = ImportAnalyzer::analyze("export.csv", file, builtInProfiles(), false);
        if (analysis.rows.size() != rows)
            state.SkipWithError("rows went missing");
        benchmark::DoNotOptimize(analysis);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * rows));
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * file.size()));
}
BENCHMARK(AnalyzeCSV)->Arg(static_cast<int64_t>(scaled(100'000)))->Unit(benchmark::kMillisecond);

void AnalyzeOFX(benchmark::State& state) {
    const auto transactions = static_cast<std::size_t>(state.range(0));
    const std::string file = ofxFile(transactions);
    for (auto _ : state) {
        auto analysis = ImportAnalyzer::analyze("statement.ofx", file, builtInProfiles(), false);
        if (analysis.rows.size() != transactions)
            state.SkipWithError("transactions went missing");
        benchmark::DoNotOptimize(analysis);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * transactions));
}
BENCHMARK(AnalyzeOFX)->Arg(static_cast<int64_t>(scaled(10'000)))->Unit(benchmark::kMillisecond);

void MerchantTextOfDistinctDescriptions(benchmark::State& state) {
    std::mt19937 random(3);
    std::vector<std::string> descriptions;
    for (std::size_t i = 0; i < 10'000; ++i)
        descriptions.push_back(description(random, i));
    for (auto _ : state) {
        for (const auto& d : descriptions)
            benchmark::DoNotOptimize(MerchantText(d));
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * descriptions.size()));
}
BENCHMARK(MerchantTextOfDistinctDescriptions)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace copperwick::bench
