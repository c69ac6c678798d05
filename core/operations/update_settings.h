#pragma once

// Changing the settings record: the time zone, the report currency, the
// savings goal, whether raw bank lines are kept. Not undoable; settings carry
// no change set.

#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

[[nodiscard]] LedgerDelta updateSettings(Ledger& ledger,
                                         const std::function<void(LedgerSettings&)>& change);

// The largest monthly savings goal, in cents: 900,000,000.00.
inline constexpr int64_t kLargestSavingsGoal = 90'000'000'000;

// The monthly savings goal as a person types it: nothing (or only spaces and
// tabs) means no goal, anything else must be an amount from 0.01 to
// 900,000,000.00. Throws EntryError (savingsGoal) otherwise.
[[nodiscard]] std::optional<int64_t> savingsGoalEntered(std::string_view text);

// Sets the goal, or clears it when absent, and gives it the report currency
// either way: a goal keeps the currency it was set in, so a report in another
// currency leaves it out instead of converting it. Throws EntryError
// (savingsGoal), changing nothing, for a goal out of range.
[[nodiscard]] LedgerDelta setSavingsGoal(Ledger& ledger, std::optional<int64_t> goal);

}  // namespace copperwick
