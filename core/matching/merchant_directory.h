#pragma once

// The merchant directory, compiled for search: every phrase encoded once and
// ordered so that the first hit is the most specific one, and every
// merchant's keys ready for near-miss search. An immutable value, copyable,
// and safe to read from any thread; `shared()` is built once on first use.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/matching/builtin_knowledge.h"

namespace copperwick {

class MerchantDirectory {
  public:
    // One phrase ready for search. `bytes` and `text` are the phrase less
    // its "~" marker; `allowSuffix` says the marker was there.
    struct CompiledPhrase {
        std::string bytes;
        bool allowSuffix = false;
        std::size_t entryIndex = 0;
        std::string text;
    };

    // Hits point into the directory, which outlives them: the shared one
    // lives as long as the process.
    struct Hit {
        const DirectoryEntry* entry = nullptr;
        std::string_view phrase;  // the phrase that matched, less its marker
    };

    struct Closest {
        const DirectoryEntry* entry = nullptr;
        int score = 0;
    };

    explicit MerchantDirectory(std::vector<DirectoryEntry> entries);

    // The built-in directory. Never destroyed.
    [[nodiscard]] static const MerchantDirectory& shared();

    [[nodiscard]] const std::vector<DirectoryEntry>& entries() const { return m_entries; }
    // Longest first; among equal lengths, in table order.
    [[nodiscard]] const std::vector<CompiledPhrase>& phrases() const { return m_phrases; }
    // (merchant key, entry index), in entry order: each phrase's key, then
    // the key of the entry's name; keys under 3 characters are left out.
    [[nodiscard]] const std::vector<std::pair<std::string, std::size_t>>& phraseKeys() const {
        return m_phraseKeys;
    }

    // The first phrase in `phrases()` order that stands as a word in
    // `normalizedText` (case-sensitive: the text is expected normalized).
    [[nodiscard]] std::optional<Hit> match(std::string_view normalizedText) const;

    // The entry whose keys come nearest `key`, when it scores at least
    // `minimumScore` and beats every other entry by 5 or more. A tie for
    // first gives nothing.
    [[nodiscard]] std::optional<Closest> closest(std::string_view key, int minimumScore) const;

  private:
    std::vector<DirectoryEntry> m_entries;
    std::vector<CompiledPhrase> m_phrases;
    std::vector<std::pair<std::string, std::size_t>> m_phraseKeys;
};

}  // namespace copperwick
