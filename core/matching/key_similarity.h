#pragma once

// How alike two merchant keys are, from 0 (nothing in common) to 100 (equal):
// the edit distance over the UTF-8 bytes as a percentage of the longer key,
// with a key that starts with a whole shorter key of 4 or more characters
// ("BLUE BOTTLE COFFEE" after "BLUE BOTTLE") lifted to at least 90. Pure;
// safe on any thread.

#include <string_view>

namespace copperwick::KeySimilarity {

// `floor` only permits stopping early: from 1 up, a pair whose lengths or
// edit distance rule out reaching it scores 0 (or 90, for a whole word
// prefix) without the distance being worked out in full. A score at or over
// the floor is always exact; one under it can still come back, and callers
// compare for themselves.
[[nodiscard]] int score(std::string_view a, std::string_view b, int floor);

}  // namespace copperwick::KeySimilarity
