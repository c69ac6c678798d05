#pragma once

// Keeping a category's monthly budget. Not undoable; budgets carry no change
// set. There is no budget of zero: setting one removes it.

#include <cstdint>
#include <optional>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// Sets the category's monthly amount, keeping the budget's id when it has one;
// an absent amount or one below a cent removes the budget.
[[nodiscard]] LedgerDelta setBudget(Ledger& ledger, const Uuid& categoryID,
                                    std::optional<int64_t> monthlyAmount);

}  // namespace copperwick
