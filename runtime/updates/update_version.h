#pragma once

// Versions as the update feed and the build write them: dotted whole
// numbers, "0.2.0" or "1.10". Compared part by part as numbers, so "1.10"
// is newer than "1.9", and a missing part counts as 0 ("1.2" is "1.2.0").
// Plain functions, safe on any thread.

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace copperwick::update_version {

// Absent for anything but one to eight parts of at most nine digits each,
// separated by single dots: no signs, blanks, letters or suffixes.
[[nodiscard]] std::optional<std::vector<uint32_t>> parse(std::string_view text);

// Whether `candidate` is strictly newer than `current`. A version that
// doesn't parse is never newer, and nothing is newer than a current
// version that doesn't parse.
[[nodiscard]] bool isNewer(std::string_view candidate, std::string_view current);

}  // namespace copperwick::update_version
