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

// The edit distance if it is at most `limit`, otherwise limit + 1. Only the
// cells within `limit` of the diagonal can lie on a path that cheap, so each
// row is worked out over that band alone, and the work stops at the first row
// whose every cell is already over the limit: most keys a directory holds
// differ from a given one within a few characters.
std::size_t editDistanceWithin(std::string_view a, std::string_view b, std::size_t limit) {
    // One row over the shorter text; the cell to the upper left is carried
    // along in `diagonal`.
    if (a.size() < b.size())
        std::swap(a, b);
    if (a.size() - b.size() > limit)
        return limit + 1;
    const std::size_t over = limit + 1;
    std::array<std::size_t, kStackRow> stackRow;
    std::vector<std::size_t> heapRow;
    std::size_t* row = stackRow.data();
    if (b.size() + 1 > kStackRow) {
        heapRow.resize(b.size() + 1);
        row = heapRow.data();
    }
    // Cells right of the band keep `over` until the band reaches them.
    for (std::size_t j = 0; j <= b.size(); ++j)
        row[j] = std::min(j, over);
    for (std::size_t i = 1; i <= a.size(); ++i) {
        const std::size_t first = i > limit ? i - limit : 1;
        const std::size_t last = std::min(b.size(), i + limit);
        std::size_t diagonal = row[first - 1];
        row[first - 1] = first == 1 ? std::min(i, over) : over;
        std::size_t rowBest = row[first - 1];
        for (std::size_t j = first; j <= last; ++j) {
            const std::size_t above = row[j];
            const std::size_t substitution = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({above + 1, row[j - 1] + 1, substitution, over});
            diagonal = above;
            rowBest = std::min(rowBest, row[j]);
        }
        if (rowBest >= over)
            return over;
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
    // The most edits that still score `floor`: the rounded score below is at
    // least the floor exactly when 100 * distance <= 100 * longer + longer / 2
    // - floor * longer. The lengths alone take longer - shorter edits.
    auto limit = longer;
    if (floor >= 1) {
        limit = std::clamp<std::int64_t>(
            (100 * longer + longer / 2 - std::int64_t{floor} * longer) / 100, 0, longer);
        // A word prefix is lifted to 90 below, whatever the lengths say.
        const bool wordPrefix = shorter >= static_cast<std::int64_t>(kWordPrefixMinimum) &&
                                (beginsWithWord(a, b) || beginsWithWord(b, a));
        if (!wordPrefix && longer - shorter > limit)
            return 0;
    }

    const auto distance =
        static_cast<std::int64_t>(editDistanceWithin(a, b, static_cast<std::size_t>(limit)));
    int result =
        distance > limit ? 0 : static_cast<int>(((longer - distance) * 100 + longer / 2) / longer);

    const bool bShorter = characterCount(b) < characterCount(a);
    const std::string_view shortKey = bShorter ? b : a;
    const std::string_view longKey = bShorter ? a : b;
    if (characterCount(shortKey) >= kWordPrefixMinimum && beginsWithWord(longKey, shortKey))
        result = std::max(result, kWordPrefixScore);
    return result;
}

}  // namespace copperwick::KeySimilarity
