#pragma once

// A merchant the person knows by name, with the filing its transactions get
// and the normalised bank texts (`keys`) that mean it.

#include <optional>
#include <string>
#include <vector>

#include "core/model/ledger_enums.h"
#include "core/model/uuid.h"

namespace copperwick {

struct Merchant {
    Uuid id;
    std::string name;
    std::optional<Uuid> categoryID;
    std::optional<TransactionKind> kind;
    std::vector<std::string> keys;
    bool nameLocked = false;  // a person set the name; automatic tidying leaves it alone

    friend bool operator==(const Merchant&, const Merchant&) = default;
};

}  // namespace copperwick
