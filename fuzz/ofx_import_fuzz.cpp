// Feeds arbitrary bytes to the OFX reader as if they were a decoded statement.
// The reader must never crash, and whatever it returns must still account for
// each transaction block once, in order.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "core/import/ofx_import.h"

namespace {

void check(bool holds) {
    if (!holds)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto analysis = copperwick::OFXImport::analyze("fuzz.ofx", text, text, false);

    check(analysis.fileHash.size() == 64);
    check(analysis.profile.has_value() || analysis.rows.empty());

    std::vector<int64_t> lines;
    for (const auto& row : analysis.rows) {
        check(row.line >= 1);
        check(row.occurrence >= 1);
        check(!row.description.empty());
        check(!row.fingerprint.empty());
        lines.push_back(row.line);
    }
    check(std::is_sorted(lines.begin(), lines.end()));
    const std::size_t rowCount = lines.size();
    for (const auto& issue : analysis.issues) {
        check(issue.line >= 1);
        lines.push_back(issue.line);
    }
    check(std::is_sorted(lines.begin() + static_cast<std::ptrdiff_t>(rowCount), lines.end()));

    // Rows and issues together: every block number at most once.
    std::sort(lines.begin(), lines.end());
    check(std::adjacent_find(lines.begin(), lines.end()) == lines.end());
    return 0;
}
