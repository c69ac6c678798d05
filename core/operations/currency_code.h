#pragma once

// The one rule for a currency a person types, shared by the account form and
// the report currency setting.

#include <string>
#include <string_view>

namespace copperwick {

// Three letters, such as "USD".
[[nodiscard]] bool isCurrencyCode(std::string_view code);

// The code as typed, trimmed and upper-cased: "eur" is "EUR". Throws
// EntryError (currency) for anything but three letters.
[[nodiscard]] std::string currencyEntered(std::string_view text);

}  // namespace copperwick
