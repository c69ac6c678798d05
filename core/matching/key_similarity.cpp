#include "core/matching/key_similarity.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace copperwick::KeySimilarity {

namespace {

// Keys share their first words far more often than they share anything else,
// and such a pair is the same merchant however long the rest is.
constexpr int kWordPrefixScore = 90;
constexpr std::size_t kWordPrefixMinimum = 4;

// Keys are short; longer text takes the heap.
constexpr std::size_t kStackRow = 128;

// `text` is `prefix`, a blank and more.
bool beginsWithWord(std::string_view text, std::string_view prefix) {
    return text.size() > prefix.size() && text.starts_with(prefix) && text[prefix.size()] == ' ';
}

// Code points, counting a stray byte of broken UTF-8 as one.
std::size_t characterCount(std::string_view text) {
    return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
        return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    }));
}

std::size_t editDistance(std::string_view a, std::string_view b) {
    // One row over the shorter text; the cell to the upper left is carried
    // along in `diagonal`.
    if (a.size() < b.size())
        std::swap(a, b);
    std::array<std::size_t, kStackRow> stackRow;
    std::vector<std::size_t> heapRow;
    std::size_t* row = stackRow.data();
    if (b.size() + 1 > kStackRow) {
        heapRow.resize(b.size() + 1);
        row = heapRow.data();
    }
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            const std::size_t substitution = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({above + 1, row[j - 1] + 1, substitution});
            diagonal = above;
        }
    }
    return row[b.size()];
}

}  // namespace

int score(std::string_view a, std::string_view b, int floor) {
    if (a.empty() || b.empty())
        return 0;
    if (a == b)
        return 100;

    const auto longer = static_cast<std::int64_t>(std::max(a.size(), b.size()));
    const auto shorter = static_cast<std::int64_t>(std::min(a.size(), b.size()));
    if (floor >= 1) {
        // A word prefix is lifted to 90 below, whatever the lengths say.
        const bool wordPrefix = shorter >= static_cast<std::int64_t>(kWordPrefixMinimum) &&
                                (beginsWithWord(a, b) || beginsWithWord(b, a));
        if (!wordPrefix && (longer - shorter) * 100 > (100 - std::int64_t{floor}) * longer)
            return 0;
    }

    const auto distance = static_cast<std::int64_t>(editDistance(a, b));
    int result = static_cast<int>(((longer - distance) * 100 + longer / 2) / longer);

    const bool bShorter = characterCount(b) < characterCount(a);
    const std::string_view shortKey = bShorter ? b : a;
    const std::string_view longKey = bShorter ? a : b;
    if (characterCount(shortKey) >= kWordPrefixMinimum && beginsWithWord(longKey, shortKey))
        result = std::max(result, kWordPrefixScore);
    return result;
}

}  // namespace copperwick::KeySimilarity
