// A bank file of 10,000 lines imported into a household's 100,000
// transactions, as the Import screen does it: analysis, planning, the safety
// backup, commit, rematch, pairing and the save. Then the same file again,
// when every line is already saved.

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <thread>

#include <benchmark/benchmark.h>
#include <fmt/format.h>

#include "bench/bench_size.h"
#include "bench/ledger_generator.h"
#include "core/store/ledger_store.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::bench {
namespace {

namespace fs = std::filesystem;

const std::size_t kRows = scaled(10'000);
const std::size_t kLedgerSize = scaled(100'000);

constexpr const char* kShops[] = {"TRADER JOE'S #552",  "SQ *BLUE BOTTLE",    "SAFEWAY #1482",
                                  "PAYPAL *SPOTIFY",    "AMAZON MKTPL*2K4L9", "SHELL OIL 57444",
                                  "LARDO SE HAWTHORNE", "HAPPY CRUMB BAKERY", "DELTA AIR LINES"};

// A Chase card export: a year of purchases at a few dozen shops, and refunds.
std::string cardExport() {
    std::mt19937 random(7);
    std::string file = "Transaction Date,Post Date,Description,Category,Type,Amount,Memo\n";
    for (std::size_t i = 0; i < kRows; ++i) {
        const int month = 1 + static_cast<int>(i % 12);
        const int day = 1 + static_cast<int>((i / 12) % 28);
        const bool refund = i % 40 == 0;
        file += fmt::format("{:02}/{:02}/2026,{:02}/{:02}/2026,{} {},Shopping,{},{}{}.{:02},\n",
                            month, day, month, day, kShops[random() % 9], 100 + random() % 40,
                            refund ? "Return" : "Sale", refund ? "" : "-", 1 + random() % 300,
                            random() % 100);
    }
    return file;
}

struct Workspace {
    fs::path root = fs::temp_directory_path() / "copperwick-bench-import";
    fs::path pristine = root / "pristine";
    fs::path exportFile = root / "Chase card activity.csv";

    Workspace() {
        fs::remove_all(root);
        fs::create_directories(pristine);
        Ledger ledger = generateLedger({.transactions = kLedgerSize});
        LedgerStore(pristine / "Copperwick.sqlite").saveAll(ledger);
        std::ofstream(exportFile, std::ios::binary) << cardExport();
    }
    ~Workspace() { fs::remove_all(root); }

    // A data folder of its own with the household's ledger in it.
    fs::path freshDataFolder(const std::string& name) const {
        const fs::path folder = root / name;
        fs::remove_all(folder);
        fs::create_directories(folder);
        fs::copy_file(pristine / "Copperwick.sqlite", folder / "Copperwick.sqlite");
        return folder;
    }
};

const Workspace& workspace() {
    static const Workspace shared;
    return shared;
}

std::unique_ptr<LedgerRuntime> openRuntime(const fs::path& folder) {
    auto runtime = std::make_unique<LedgerRuntime>(RuntimeOptions{
        .dataFolder = folder, .preferencesFolder = workspace().root / "preferences"});
    // What the runtime works out in the background after a load is done
    // before anyone could have chosen a file.
    std::this_thread::sleep_for(std::chrono::seconds(2));
    return runtime;
}

std::optional<Uuid> cardAccount(const Ledger& ledger) {
    for (const auto& account : ledger.accounts) {
        if (account.type == AccountType::creditCard)
            return account.id;
    }
    return std::nullopt;
}

// What the person does on the Import screen: add the file, keep the card, Import.
std::string importOnce(LedgerRuntime& runtime, const Uuid& account) {
    ImportModel model;
    model.add({workspace().exportFile}, runtime);
    model.waitForAnalyses(runtime);
    // The person changes the account only when the session suggested another.
    if (model.files().front().targetAccountID() != account)
        model.setChoice(ImportFile::AccountChoice::existing(account), model.files().front().id,
                        runtime);
    model.commit(runtime, {});
    return model.lastResult().value_or(runtime.errorMessage().value_or("nothing happened"));
}

void ImportIntoLargeLedger(benchmark::State& state) {
    const bool again = state.range(0) == 1;
    std::string result;
    for (auto _ : state) {
        state.PauseTiming();
        const auto folder = workspace().freshDataFolder("data");
        auto runtime = openRuntime(folder);
        const auto account = cardAccount(runtime->ledger());
        if (!account) {
            state.SkipWithError("the generated ledger has no card");
            return;
        }
        if (again)
            (void)importOnce(*runtime, *account);
        state.ResumeTiming();
        result = importOnce(*runtime, *account);
        state.PauseTiming();
        runtime.reset();
        state.ResumeTiming();
    }
    state.SetLabel(result);
}
BENCHMARK(ImportIntoLargeLedger)
    ->Arg(0)
    ->Arg(1)
    ->Iterations(3)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace copperwick::bench
