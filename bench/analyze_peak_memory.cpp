// Analyses one large bank export and prints how much resident memory the
// analysis needed on top of what the process held just before the call, so
// the figure is the analysis's alone and not the making or reading of the
// file.
//
//   analyze_peak_memory [FILE]     (default: a fresh ~50 MB card export)

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include <fmt/format.h>

#include "core/import/builtin_profiles.h"
#include "core/import/import_analyzer.h"

namespace {

constexpr std::size_t kTargetBytes = 50u * 1024u * 1024u;

// Kilobytes from a "Name:   1234 kB" line of /proc/self/status, or -1.
long statusKilobytes(const char* name) {
    std::ifstream status("/proc/self/status");
    std::string line;
    const std::string prefix = std::string(name) + ":";
    while (std::getline(status, line)) {
        if (line.rfind(prefix, 0) == 0)
            return std::strtol(line.c_str() + prefix.size(), nullptr, 10);
    }
    return -1;
}

// Starts the peak over from the current resident size, where the kernel lets
// us; otherwise the peak still holds whatever the process reached before.
bool resetPeak() {
    std::ofstream clear("/proc/self/clear_refs");
    clear << "5";
    clear.flush();
    return static_cast<bool>(clear);
}

// A Capital One card export as people download it: a few thousand store
// descriptions that come back month after month, two cards, debits and
// credits in separate columns, and the odd quoted description with a comma.
void makeFile(const std::filesystem::path& path) {
    constexpr const char* kMerchants[] = {"TRADER JOE'S #552 PORTLAND OR",
                                          "SQ *BLUE BOTTLE COFFEE",
                                          "SAFEWAY #1234",
                                          "PAYPAL *SPOTIFY",
                                          "AMAZON MKTPLACE PMTS",
                                          "SHELL OIL 57444",
                                          "UBER   *TRIP HELP.UBER.COM",
                                          "NETFLIX.COM LOS GATOS CA",
                                          "COSTCO WHSE #0012",
                                          "TST* LITTLE BIG BURGER",
                                          "CHEVRON 0093883",
                                          "WALGREENS #4412"};
    constexpr const char* kCategories[] = {"Merchandise", "Dining",        "Gas/Automotive",
                                           "Groceries",   "Entertainment", "Other Services"};
    std::mt19937 random(7);
    std::string file = "Transaction Date,Posted Date,Card No.,Description,Category,Debit,Credit\n";
    file.reserve(kTargetBytes + 256);
    for (std::size_t i = 0; file.size() < kTargetBytes; ++i) {
        const unsigned month = 1 + static_cast<unsigned>(i / 40'000 % 12);
        const unsigned day = 1 + static_cast<unsigned>(random() % 28);
        const char* merchant = kMerchants[random() % 12];
        std::string description = fmt::format("{} {:03}", merchant, random() % 300);
        if (random() % 20 == 0)
            description = fmt::format("\"{}, REF {}\"", description, random() % 100'000);
        const unsigned cents = static_cast<unsigned>(random() % 30'000);
        const bool credit = random() % 15 == 0;
        const std::string amount = fmt::format("{}.{:02}", cents / 100, cents % 100);
        file += fmt::format("2025-{:02}-{:02},2025-{:02}-{:02},{},{},{},{},{}\n", month, day, month,
                            std::min(day + 1, 28u), random() % 2 ? "4421" : "8810", description,
                            kCategories[random() % 6], credit ? "" : amount, credit ? amount : "");
    }
    std::ofstream(path, std::ios::binary) << file;
}

}  // namespace

int main(int argc, char** argv) {
    using namespace copperwick;
    if (argc > 2 && std::string(argv[1]) == "--make") {
        makeFile(argv[2]);
        return 0;
    }
    std::filesystem::path path;
    std::filesystem::path folder;  // made here, so removed once read
    if (argc > 1) {
        path = argv[1];
    } else {
        folder = std::filesystem::temp_directory_path() / "copperwick-analyze-memory";
        std::filesystem::create_directories(folder);
        path = folder / "export.csv";
        // Made in a child so none of the making shows in this process's peak.
        if (std::system((std::string(argv[0]) + " --make " + path.string()).c_str()) != 0)
            return 1;
    }

    std::string data(std::filesystem::file_size(path), '\0');
    {
        std::FILE* in = std::fopen(path.c_str(), "rb");
        if (!in || std::fread(data.data(), 1, data.size(), in) != data.size())
            return 1;
        std::fclose(in);
    }
    if (!folder.empty())
        std::filesystem::remove_all(folder);
    const auto profiles = builtInProfiles();

    const bool reset = resetPeak();
    const long before = statusKilobytes("VmRSS");
    const long peakBefore = statusKilobytes("VmHWM");
    const auto start = std::chrono::steady_clock::now();
    const FileAnalysis analysis =
        ImportAnalyzer::analyze(path.filename().string(), data, profiles, false);
    const auto elapsed =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    const long peakAfter = statusKilobytes("VmHWM");
    const long after = statusKilobytes("VmRSS");

    const double fileMB = static_cast<double>(data.size()) / (1024.0 * 1024.0);
    const double aboveMB = static_cast<double>(peakAfter - std::max(before, 0L)) / 1024.0;
    std::printf("file MB: %.1f\nrows: %zu  issues: %zu  problem: %s\nanalyze seconds: %.3f\n",
                fileMB, analysis.rows.size(), analysis.issues.size(),
                analysis.problem ? analysis.problem->c_str() : "none", elapsed);
    std::printf("resident MB before: %.1f  (peak so far %.1f%s)\n", before / 1024.0,
                peakBefore / 1024.0, reset ? ", reset" : ", not reset");
    std::printf("peak resident MB during analyze: %.1f\nresident MB after: %.1f\n",
                peakAfter / 1024.0, after / 1024.0);
    std::printf("peak above baseline MB: %.1f  (%.2fx the file)\n", aboveMB, aboveMB / fileMB);
    return 0;
}
