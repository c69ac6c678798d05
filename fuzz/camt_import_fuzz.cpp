// Feeds arbitrary bytes to the CAMT.053 reader as if they were a decoded
// statement. Its XML reader must never crash, loop or run out of stack; every
// entry must be accounted for once (row, unreadable line or blank line), in order; and
// cutting the text into its statements must give texts that read alike.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "core/import/camt_import.h"

namespace {

void check(bool holds) {
    if (!holds)
        std::abort();
}

void checkLines(const copperwick::FileAnalysis& analysis) {
    check(analysis.fileHash.size() == 64);
    check(analysis.blankLines >= 0);
    const std::size_t total = analysis.rows.size() + analysis.issues.size() +
                              static_cast<std::size_t>(analysis.blankLines);
    std::vector<bool> seen(total, false);
    const auto take = [&](int64_t line) {
        check(line >= 1 && static_cast<std::size_t>(line) <= total);
        check(!seen[static_cast<std::size_t>(line - 1)]);
        seen[static_cast<std::size_t>(line - 1)] = true;
    };
    int64_t previous = 0;
    for (const auto& row : analysis.rows) {
        check(row.line > previous);
        check(row.occurrence >= 1);
        check(!row.description().empty());
        check(row.amount != 0);
        previous = row.line;
        take(row.line);
    }
    previous = 0;
    for (const auto& issue : analysis.issues) {
        check(issue.line > previous);
        previous = issue.line;
        take(issue.line);
    }
    if (!analysis.profile)
        check(total == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    checkLines(copperwick::CamtImport::analyze("fuzz.xml", text, text, false));
    const auto parts = copperwick::CamtImport::statements(text);
    check(parts.size() != 1);
    for (const auto& part : parts) {
        check(!part.label.empty());
        const auto one = copperwick::CamtImport::analyze("part.xml", part.data, part.data, false);
        checkLines(one);
        check(one.profile.has_value() || one.problem.has_value());
    }
    return 0;
}
