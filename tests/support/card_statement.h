#pragma once

// A card statement in Chase's layout, for tests that import a few lines.

#include <string>
#include <tuple>
#include <vector>

namespace copperwick::testing {

// One line per (date, text, amount), as "01/05/2026", "SHOP", "-80.00".
inline std::string cardStatement(
    const std::vector<std::tuple<std::string, std::string, std::string>>& lines) {
    std::string csv = "Transaction Date,Post Date,Description,Category,Type,Amount,Memo\n";
    for (const auto& [date, text, amount] : lines)
        csv += date + "," + date + "," + text + ",,Sale," + amount + ",\n";
    return csv;
}

}  // namespace copperwick::testing
