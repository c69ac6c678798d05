// Feeds arbitrary bytes to the QIF reader as if they were a decoded register.
// It must never crash; every record of the account must be accounted for
// once (row, unreadable line or blank line), in order; flipping signs must negate
// every amount and change nothing else.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "core/import/qif_import.h"

namespace {

void check(bool holds) {
    if (!holds)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const auto analysis = copperwick::QifImport::analyze("fuzz.qif", text, text, false);
    check(analysis.fileHash.size() == 64);
    check(analysis.blankLines >= 0);
    const std::size_t total = analysis.rows.size() + analysis.issues.size() +
                              static_cast<std::size_t>(analysis.blankLines);
    std::vector<bool> seen(total, false);
    int64_t previous = 0;
    for (const auto& row : analysis.rows) {
        check(row.line > previous && static_cast<std::size_t>(row.line) <= total);
        check(!row.description().empty());
        check(row.amount != 0);
        previous = row.line;
        seen[static_cast<std::size_t>(row.line - 1)] = true;
    }
    previous = 0;
    for (const auto& issue : analysis.issues) {
        check(issue.line > previous && static_cast<std::size_t>(issue.line) <= total);
        check(!seen[static_cast<std::size_t>(issue.line - 1)]);
        previous = issue.line;
    }
    if (analysis.problem && !analysis.profile)
        check(total == 0);

    const auto flipped = copperwick::QifImport::analyze("fuzz.qif", text, text, true);
    check(flipped.rows.size() == analysis.rows.size());
    check(flipped.issues.size() == analysis.issues.size());
    for (std::size_t i = 0; i < flipped.rows.size(); ++i) {
        check(flipped.rows[i].amount == -analysis.rows[i].amount);
        check(flipped.rows[i].date == analysis.rows[i].date);
    }
    return 0;
}
