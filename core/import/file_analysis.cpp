#include "core/import/file_analysis.h"

#include <algorithm>

namespace copperwick {

std::optional<LocalDate> FileAnalysis::firstDate() const {
    if (rows.empty())
        return std::nullopt;
    return std::min_element(rows.begin(), rows.end(),
                            [](const auto& a, const auto& b) { return a.date < b.date; })
        ->date;
}

std::optional<LocalDate> FileAnalysis::lastDate() const {
    if (rows.empty())
        return std::nullopt;
    return std::max_element(rows.begin(), rows.end(),
                            [](const auto& a, const auto& b) { return a.date < b.date; })
        ->date;
}

int64_t FileAnalysis::accountedLines() const {
    const int64_t header = profile && profile->hasHeader ? 1 : 0;
    return skippedLines + header + static_cast<int64_t>(rows.size()) +
           static_cast<int64_t>(issues.size()) + blankLines;
}

}  // namespace copperwick
