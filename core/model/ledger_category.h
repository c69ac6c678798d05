#pragma once

// A spending or income category. `colorIndex` is the category's place within
// its group when it was made; charts pick its colour by it.

#include <string>
#include <vector>

#include "core/model/ledger_enums.h"
#include "core/model/uuid.h"

namespace copperwick {

struct LedgerCategory {
    Uuid id;
    std::string name;
    CategoryGroup group = CategoryGroup::expense;
    int colorIndex = 0;

    // The 23 categories of a new ledger, each with a fresh random id. Nothing
    // may refer to them by id; built-in knowledge finds them by name.
    [[nodiscard]] static std::vector<LedgerCategory> defaults();

    friend bool operator==(const LedgerCategory&, const LedgerCategory&) = default;
};

// The kind a line filed under the category takes when nothing else says:
// income under an income category, spending under any other.
[[nodiscard]] inline TransactionKind filingKind(const LedgerCategory& category) {
    return category.group == CategoryGroup::income ? TransactionKind::income
                                                   : TransactionKind::expense;
}

}  // namespace copperwick
