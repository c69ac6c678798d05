#pragma once

// Changing the settings record: the time zone, the report currency, the
// savings goal, the payment services tracked, whether raw bank lines are
// kept. Not undoable; settings carry no change set.
//
// Each setting a person types has one rule, here, wherever it is set: the
// "…Entered" functions read what was typed by it, and updateSettings holds
// every setting the change touches to it.

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"
#include "core/model/payment_service.h"

namespace copperwick {

// Throws EntryError, changing nothing, when the change leaves a time zone the
// calendar doesn't know (timeZone), a report currency that isn't three
// letters (currency) or a savings goal out of range (savingsGoal). A setting
// the change doesn't touch isn't held to its rule, so a file written by an
// older build can still be changed.
[[nodiscard]] LedgerDelta updateSettings(Ledger& ledger,
                                         const std::function<void(LedgerSettings&)>& change);

// The zone's identifier as typed, trimmed: "Europe/Dublin". Throws EntryError
// (timeZone) for a zone the calendar doesn't know.
[[nodiscard]] std::string timeZoneEntered(std::string_view text);

// The services as typed, their raw names separated by commas ("venmo,zelle");
// blank or "none" is none. Kept once each, in the services' own order. Throws
// EntryError (paymentService) for a name that isn't one of them.
[[nodiscard]] std::vector<PaymentService> paymentServicesEntered(std::string_view text);

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
