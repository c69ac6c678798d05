#pragma once

// Counting letters and digits the way a reader would, for the checks on
// names the model writes: Unicode letters in any script, not just A to Z.
// Pure; safe on any thread.

#include <cstddef>
#include <string>
#include <string_view>

namespace copperwick::letters {

[[nodiscard]] std::size_t count(std::string_view text);

// The letters alone, lower-cased: "SQ *Joe's" is "sqjoes".
[[nodiscard]] std::string lowercasedOnly(std::string_view text);

// Whether any letter is a lower-case one.
[[nodiscard]] bool anyLowercase(std::string_view text);

// The longest run of numeric characters, of any script.
[[nodiscard]] std::size_t longestNumberRun(std::string_view text);

}  // namespace copperwick::letters
