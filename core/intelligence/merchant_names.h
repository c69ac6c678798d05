#pragma once

// Which merchant names look like raw bank text, and whether a tidier name the
// model offers is still the same business. The model may restore capitals,
// apostrophes and spacing or drop a store code; it may not put one business
// in place of another. Pure; safe on any thread.

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "core/model/merchant.h"

namespace copperwick::MerchantNames {

// The built-in directory's merchant names, lower-cased: names nobody needs
// to tidy.
[[nodiscard]] const std::set<std::string>& directoryNames();

// A name nobody chose: all capitals, with "*" or "#", with a store number,
// or exactly what one of its keys reads as. Never a name a person set or
// one of `directoryNames` (lower-cased).
[[nodiscard]] bool needsTidying(const Merchant& merchant,
                                const std::set<std::string>& directoryNames);

// The trimmed new name when it is a plausible name (2 to 40 characters, two
// letters, one line, no web address) for the same business: the letters of
// one hold the other's, or they share a word of four characters or more.
[[nodiscard]] std::optional<std::string> acceptRename(std::string_view from, std::string_view to);

}  // namespace copperwick::MerchantNames
