#include "core/matching/merchant_directory.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "core/matching/key_similarity.h"
#include "core/matching/merchant_text.h"
#include "core/matching/phrase_search.h"

namespace copperwick {

namespace {

// The table's one piece of markup: the phrase may run on into a longer word,
// as banks print some names glued to what follows ("COINBASERWRD").
constexpr char kSuffixMarker = '~';

// Shorter keys are initials and fragments ("DD" from "DD *") that come near
// far too many unrelated merchants.
constexpr std::size_t kMinimumKeyLength = 3;

// How far the winner must lead every other entry for the answer to count.
constexpr int kMargin = 5;

}  // namespace

MerchantDirectory::MerchantDirectory(std::vector<DirectoryEntry> entries)
    : m_entries(std::move(entries)) {
    for (std::size_t e = 0; e < m_entries.size(); ++e) {
        const DirectoryEntry& entry = m_entries[e];
        for (const auto& phrase : entry.phrases) {
            CompiledPhrase compiled;
            compiled.allowSuffix = !phrase.empty() && phrase.back() == kSuffixMarker;
            compiled.text = compiled.allowSuffix ? phrase.substr(0, phrase.size() - 1) : phrase;
            compiled.bytes = compiled.text;
            compiled.entryIndex = e;
            std::string key = MerchantText::makeKey(compiled.text);
            if (key.size() >= kMinimumKeyLength)
                m_phraseKeys.emplace_back(std::move(key), e);
            m_phrases.push_back(std::move(compiled));
        }
        std::string key = MerchantText::makeKey(MerchantText::normalize(entry.name));
        if (key.size() >= kMinimumKeyLength)
            m_phraseKeys.emplace_back(std::move(key), e);
    }
    // The longest phrase is the most specific ("AMAZON PRIME" before
    // "AMAZON"); a stable sort keeps table order among equal lengths.
    std::ranges::stable_sort(m_phrases, std::ranges::greater{},
                             [](const CompiledPhrase& phrase) { return phrase.bytes.size(); });
}

const MerchantDirectory& MerchantDirectory::shared() {
    static const auto& instance = *new MerchantDirectory(BuiltInKnowledge::merchants());
    return instance;
}

namespace {

std::size_t bytePair(char first, char second) {
    return (std::size_t{static_cast<unsigned char>(first)} << 8) |
           static_cast<unsigned char>(second);
}

}  // namespace

std::optional<MerchantDirectory::Hit> MerchantDirectory::match(
    std::string_view normalizedText) const {
    // Most phrases can be ruled out by their first two bytes alone: note
    // every pair of adjacent bytes of the text once, and search only for
    // phrases whose opening pair is among them.
    std::array<uint64_t, 1024> pairs{};
    for (std::size_t i = 0; i + 1 < normalizedText.size(); ++i) {
        const auto pair = bytePair(normalizedText[i], normalizedText[i + 1]);
        pairs[pair >> 6] |= uint64_t{1} << (pair & 63);
    }
    for (std::size_t p = 0; p < m_phrases.size(); ++p) {
        const auto& phrase = m_phrases[p];
        if (phrase.bytes.size() >= 2) {
            const auto pair = bytePair(phrase.bytes[0], phrase.bytes[1]);
            if ((pairs[pair >> 6] & (uint64_t{1} << (pair & 63))) == 0)
                continue;
        }
        if (PhraseSearch::contains(normalizedText, phrase.bytes, phrase.allowSuffix))
            return Hit{&m_entries[phrase.entryIndex], phrase.text};
    }
    return std::nullopt;
}

std::optional<MerchantDirectory::Closest> MerchantDirectory::closest(std::string_view key,
                                                                     int minimumScore) const {
    // A candidate below the floor can't come within the margin of a winner,
    // so the similarity may give up on it early.
    const int floor = minimumScore - kMargin;

    // The keys come grouped by entry, in entry order, so each entry's best
    // score is complete when the next entry starts.
    int best = -1;
    int secondBest = 0;
    std::size_t bestEntry = 0;
    const auto settle = [&](std::size_t entry, int score) {
        if (score > best) {
            secondBest = std::max(secondBest, best);
            best = score;
            bestEntry = entry;
        } else {
            // A tie with the best counts as second best: no clear winner.
            secondBest = std::max(secondBest, score);
        }
    };

    std::size_t entry = 0;
    int entryBest = -1;
    for (const auto& [candidate, index] : m_phraseKeys) {
        if (entryBest >= 0 && index != entry) {
            settle(entry, entryBest);
            entryBest = -1;
        }
        entry = index;
        entryBest = std::max(entryBest, KeySimilarity::score(key, candidate, floor));
    }
    if (entryBest >= 0)
        settle(entry, entryBest);

    if (best < 0 || best < minimumScore || best - secondBest < kMargin)
        return std::nullopt;
    return Closest{&m_entries[bestEntry], best};
}

}  // namespace copperwick
