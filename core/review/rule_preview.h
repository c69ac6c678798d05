#pragma once
// What a rule would do to the ledger before it is saved: which live lines it
// matches, which of those would be filed differently, which stay because a
// person set them, and which earlier rules take lines first.
//
// A pure function of its inputs; it builds several matchers, so a screen
// runs it on a snapshot away from the main thread and drops a stale result.
#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/model/ledger.h"

namespace copperwick {

struct RulePreview {
    std::vector<Uuid> matchingIDs;
    std::vector<Uuid> changingIDs;
    std::vector<Uuid> confirmedIDs;
    std::vector<std::pair<std::string, int>> shadowedBy;  // by name, ascending

    // `position` is the rule's place among the other rules; absent means the
    // top. A disabled rule previews as if it were on.
    [[nodiscard]] static RulePreview compute(const Rule& rule, const Ledger& ledger,
                                             std::optional<std::size_t> position = std::nullopt);

    // The counts in words, as the rule editor and `rules preview` give them:
    // "Matches 3 transactions; 2 would change; 1 you set by hand stay as they are."
    [[nodiscard]] std::string countsText() const;
    // One line for each earlier rule that takes lines first, by name:
    // "Taken first by “Payroll”: 2".
    [[nodiscard]] std::vector<std::string> shadowTexts() const;

    friend bool operator==(const RulePreview&, const RulePreview&) = default;
};

}  // namespace copperwick
