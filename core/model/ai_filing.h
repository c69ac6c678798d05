#pragma once

// A filing made by the local model for one merchant key, kept apart from the
// transactions so that a person can confirm or reject it. Identified by `key`.

#include <optional>
#include <string>

#include "core/model/instant.h"
#include "core/model/ledger_enums.h"
#include "core/model/uuid.h"

namespace copperwick {

struct AIFiling {
    std::string key;
    std::optional<std::string> merchantName;
    std::optional<Uuid> categoryID;
    TransactionKind kind = TransactionKind::unknown;
    std::string reason;
    Instant date;
    bool rejected = false;

    [[nodiscard]] const std::string& id() const { return key; }

    friend bool operator==(const AIFiling&, const AIFiling&) = default;
};

}  // namespace copperwick
