// The whole reading of a bank file from any bytes under any name: CSV and
// OFX paths alike. It never throws, and every line it reports is accounted
// for once.

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/import/builtin_profiles.h"
#include "core/import/import_analyzer.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace copperwick;
    if (size == 0)
        return 0;
    // The first byte picks a file name, so the name-dependent paths are reached too.
    static const char* const kNames[] = {"export.csv", "statement.ofx", "card.qfx", "boi-2026.csv",
                                         "1234.txt"};
    const std::string name = kNames[data[0] % 5];
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
    const bool flip = (data[0] & 0x80) != 0;
    const FileAnalysis analysis = ImportAnalyzer::analyze(name, bytes, builtInProfiles(), flip);
    int64_t previous = 0;
    for (const auto& row : analysis.rows) {
        if (row.line <= previous || row.occurrence < 1)
            std::abort();
        previous = row.line;
    }
    if (analysis.fileHash.size() != 64)
        std::abort();
    return 0;
}
