#pragma once

// Changing whose spending a transaction is. How the answer is read (hand-set,
// inherited, else the account's and card's default) is in
// model/household_resolution.h, which this header brings along for callers
// that need both.
//
// Plain functions of a Ledger value, on the thread that owns it.

#include <optional>
#include <string>
#include <vector>

#include "core/model/household_resolution.h"
#include "core/model/instant.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// Sets the hand-chosen assignment of the given transactions; absent clears it
// so they follow their default again. One undoable step, "Assign household
// spending"; nothing is recorded when no transaction changes.
[[nodiscard]] LedgerDelta assignSpending(Ledger& ledger,
                                         const std::optional<SpendingAssignment>& assignment,
                                         const std::vector<Uuid>& ids, Instant now);

// Brings `inheritedAssignment` in line with the current default after the
// users of an account (or of one card, matched exactly, when given) changed.
// Hand-set assignments are never overwritten. One undoable step, "Apply
// account assignment", unless nothing changed.
[[nodiscard]] LedgerDelta applySpendingDefault(Ledger& ledger, const Uuid& accountID,
                                               const std::optional<std::string>& cardIdentifier,
                                               Instant now);

}  // namespace copperwick
