#pragma once

// The category labels banks put in their exports, mapped to the names of the
// starter ledger's categories. Fixed data; safe on any thread.

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace copperwick::BankCategoryMap {

struct Label {
    std::string_view bankLabel;  // as it reads after MerchantText::normalize
    std::string_view categoryName;
};

// Every label the map knows, in table order.
[[nodiscard]] std::span<const Label> labels();

// The category name for a bank's label, compared after normalizing it
// ("Food & Drink" and "FOOD  &  DRINK" both give "Dining"). Nothing for an
// unset or unknown label.
[[nodiscard]] std::optional<std::string> categoryName(
    const std::optional<std::string>& bankCategory);

}  // namespace copperwick::BankCategoryMap
