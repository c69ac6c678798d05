#pragma once

// Word-bounded search of a merchant phrase or a rule's text in a description.
// Works on UTF-8 bytes as given: the caller encodes each text once, and a
// search allocates nothing. Pure; safe on any thread.

#include <string_view>

namespace copperwick::PhraseSearch {

// True when `phrase` occurs in `haystack` byte for byte (case-sensitive) with
// no ASCII letter or digit glued to either end. An end of the phrase that is
// not itself a letter or digit ("LUCKY #") doesn't bind on that side, and
// `allowSuffix` lets the phrase be the start of a longer word ("COINBASE" in
// "COINBASERWRD"). An empty phrase is never found.
[[nodiscard]] bool contains(std::string_view haystack, std::string_view phrase, bool allowSuffix);

}  // namespace copperwick::PhraseSearch
