// Any bytes as a bank description: reading one must never crash, and the
// views it gives keep the shape every caller relies on.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/matching/key_similarity.h"
#include "core/matching/merchant_text.h"
#include "core/matching/phrase_search.h"

namespace {

using copperwick::MerchantText;

void require(bool holds, const char* what, std::string_view input) {
    if (holds)
        return;
    std::fprintf(stderr, "broken: %s\ninput: %.*s\n", what, static_cast<int>(input.size()),
                 input.data());
    std::abort();
}

// Words of `allowed` characters separated by single blanks, none at the ends.
bool isWordList(std::string_view text, std::string_view allowed) {
    if (text.empty())
        return true;
    if (text.front() == ' ' || text.back() == ' ' || text.find("  ") != std::string_view::npos)
        return false;
    return text.find_first_not_of(allowed) == std::string_view::npos;
}

bool isTrimmed(std::string_view text) {
    return !text.empty() && text.front() != ' ' && text.front() != '\t' && text.back() != ' ' &&
           text.back() != '\t';
}

bool hasCapital(std::string_view text) {
    return text.find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ") != std::string_view::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view raw(reinterpret_cast<const char*>(data), size);
    const MerchantText text(raw);

    const std::string_view normalized = text.normalized;
    require(normalized.empty() || (normalized.front() != ' ' && normalized.back() != ' '),
            "normalized text has a blank at an end", raw);
    require(normalized.find("  ") == std::string_view::npos, "normalized text has two blanks", raw);
    require(text.core.empty() == normalized.empty(), "core emptied a text", raw);
    require(text.core.size() <= normalized.size(), "core is longer than the text", raw);

    require(text.via.has_value() == text.counterpart.has_value(), "via without counterpart", raw);
    require(!text.counterpart || isTrimmed(*text.counterpart), "untrimmed counterpart", raw);

    require(isWordList(text.key, "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789& "), "malformed key", raw);
    require(!hasCapital(normalized) || !text.key.empty(), "no key for a text with letters", raw);
    require(MerchantText::makeKey(text.key) == text.key || text.key.find(' ') != std::string::npos,
            "a one-word key is not its own key", raw);
    require(isWordList(text.displayName(),
                       "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                       "0123456789& "),
            "malformed display name", raw);

    require(MerchantText::stripWrappers(text.normalized) == text.core,
            "stripWrappers differs from core", raw);

    require(
        copperwick::PhraseSearch::contains(normalized, normalized, false) == !normalized.empty(),
        "a text doesn't contain itself", raw);

    using copperwick::KeySimilarity::score;
    require(text.key.empty() || score(text.key, text.key, 90) == 100, "a key isn't like itself",
            raw);
    for (const int floor : {0, 83}) {
        const int forward = score(text.key, normalized, floor);
        require(forward >= 0 && forward <= 100, "score out of range", raw);
        require(forward == score(normalized, text.key, floor), "score depends on order", raw);
    }
    return 0;
}
