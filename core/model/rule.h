#pragma once

// A rule the person wrote: which bank texts it matches, and what it files
// them as.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/model/instant.h"
#include "core/model/ledger_enums.h"
#include "core/model/uuid.h"

namespace copperwick {

struct Rule {
    Uuid id;
    std::string name;
    bool isEnabled = true;
    TextMatch match = TextMatch::contains;
    std::string pattern;
    std::vector<Uuid> accountIDs;  // empty means every account
    AmountDirection direction = AmountDirection::any;
    std::optional<int64_t> minimumAmount;  // magnitude, cents
    std::optional<int64_t> maximumAmount;  // magnitude, cents
    std::optional<std::string> merchantName;
    std::optional<TransactionKind> kind;
    std::optional<Uuid> categoryID;
    Instant createdAt;

    // Whether the rule would file anything at all; a blank merchant name doesn't count.
    [[nodiscard]] bool hasOutcome() const;

    friend bool operator==(const Rule&, const Rule&) = default;
};

}  // namespace copperwick
