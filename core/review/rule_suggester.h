#pragma once
// Rules the person could have written: what they decided by hand more than
// once, in the same way, on lines whose bank text begins alike, and which
// nothing taught yet explains.
//
// Pure functions of a Ledger value; they change nothing.
#include <optional>
#include <string>
#include <vector>

#include "core/model/ledger.h"

namespace copperwick {

struct RuleSuggestion {
    std::string id;       // the pattern, "|", and the group it came from
    std::string pattern;  // the words the decided lines begin with
    std::optional<std::string> merchantName;
    TransactionKind kind = TransactionKind::unknown;
    std::optional<Uuid> categoryID;
    std::vector<Uuid> exampleIDs;   // the decided lines it would have explained
    int matchCount = 0;             // live lines whose text contains the pattern
    std::vector<Uuid> conflictIDs;  // lines set by hand otherwise that contain it

    // A rule ready to save, named after the pattern and its outcome.
    [[nodiscard]] Rule makeRule(const std::optional<std::string>& categoryName) const;

    friend bool operator==(const RuleSuggestion&, const RuleSuggestion&) = default;
};

namespace RuleSuggester {

// Most examples first, then by pattern.
[[nodiscard]] std::vector<RuleSuggestion> suggestions(const Ledger& ledger);

}  // namespace RuleSuggester

}  // namespace copperwick
