#pragma once

// Keeping a category's monthly budget. Not undoable; budgets carry no change
// set. There is no budget of zero: setting one removes it.

#include <cstdint>
#include <optional>
#include <string_view>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// A budget as typed in its row: blank is none, and so is zero; anything else
// must be an amount of zero or more. Throws EntryError (budget), in words
// that quote the text: "“abc” isn't an amount. Use a number like 250 or
// 250.00."
[[nodiscard]] std::optional<int64_t> budgetEntered(std::string_view text);

// Sets the category's monthly amount, keeping the budget's id when it has one;
// an absent amount or one below a cent removes the budget.
[[nodiscard]] LedgerDelta setBudget(Ledger& ledger, const Uuid& categoryID,
                                    std::optional<int64_t> monthlyAmount);

// The category's monthly amount as kept; absent when it has no budget.
[[nodiscard]] std::optional<int64_t> monthlyBudget(const Ledger& ledger, const Uuid& categoryID);

}  // namespace copperwick
