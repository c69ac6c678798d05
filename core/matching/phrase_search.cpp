#include "core/matching/phrase_search.h"

namespace copperwick::PhraseSearch {

namespace {

// ASCII only and locale-free: lower case counts, since rules search any text.
bool isWordByte(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

}  // namespace

bool contains(std::string_view haystack, std::string_view phrase, bool allowSuffix) {
    if (phrase.empty() || phrase.size() > haystack.size())
        return false;
    const bool bindsLeft = isWordByte(phrase.front());
    const bool bindsRight = !allowSuffix && isWordByte(phrase.back());
    // A hit that fails a boundary doesn't end the search: "TARGET" may still
    // stand alone further on in "TARGETS TARGET".
    for (auto at = haystack.find(phrase); at != std::string_view::npos;
         at = haystack.find(phrase, at + 1)) {
        if (bindsLeft && at > 0 && isWordByte(haystack[at - 1]))
            continue;
        const auto end = at + phrase.size();
        if (bindsRight && end < haystack.size() && isWordByte(haystack[end]))
            continue;
        return true;
    }
    return false;
}

}  // namespace copperwick::PhraseSearch
