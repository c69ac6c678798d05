#pragma once

// How alike two merchant keys are, from 0 (nothing in common) to 100 (equal):
// the edit distance over the UTF-8 bytes as a percentage of the longer key,
// with a key that starts with a whole shorter key of 4 or more characters
// ("BLUE BOTTLE COFFEE" after "BLUE BOTTLE") lifted to at least 90. Pure;
// safe on any thread.

#include <string_view>

namespace copperwick::KeySimilarity {

// `floor` only permits stopping early: from 1 up, a pair whose lengths alone
// rule out reaching it scores 0 without the edit distance being computed. A
// score under the floor can still come back; callers compare for themselves.
[[nodiscard]] int score(std::string_view a, std::string_view b, int floor);

}  // namespace copperwick::KeySimilarity
