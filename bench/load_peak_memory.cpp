// Loads a data file once and prints the process's peak resident memory, so
// that the figure holds the load alone and not the making of the file.
//
//   load_peak_memory [FILE]     (default: a fresh 100,000-transaction file)

#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "bench/bench_size.h"
#include "bench/ledger_generator.h"
#include "core/store/ledger_store.h"

int main(int argc, char** argv) {
    using namespace copperwick;
    if (argc > 2 && std::string(argv[1]) == "--make") {
        LedgerStore store(argv[2]);
        store.saveAll(bench::generateLedger({.transactions = bench::scaled(100'000)}));
        return 0;
    }
    std::filesystem::path file;
    if (argc > 1) {
        file = argv[1];
    } else {
        const auto folder = std::filesystem::temp_directory_path() / "copperwick-bench-memory";
        std::filesystem::remove_all(folder);
        file = folder / "Copperwick.sqlite";
        // Made in a child so the parent's peak is the load's alone.
        if (std::system((std::string(argv[0]) + " --make " + file.string()).c_str()) != 0)
            return 1;
    }
    const auto start = std::chrono::steady_clock::now();
    LedgerStore store(file);
    const Ledger ledger = store.load();
    const auto elapsed =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    std::printf("transactions: %zu\nload seconds: %.3f\npeak resident MB: %.1f\n",
                ledger.transactions.size(), elapsed, static_cast<double>(usage.ru_maxrss) / 1024.0);
    return 0;
}
