#pragma once

// Putting right what the bank got wrong, and dividing one charge between
// categories. What the bank said is never lost: the first correction keeps
// the bank's version in `originalDetails`, and every correction leaves a
// revision with its reason. Refusals are EntryErrors thrown before any change.

#include <string>
#include <vector>

#include "core/model/instant.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"
#include "core/operations/entry_error.h"

namespace copperwick {

// An empty delta, and no undo step, when nothing but the reason differs.
[[nodiscard]] LedgerDelta correctTransaction(Ledger& ledger, const Uuid& id, LocalDate date,
                                             int64_t amount, const std::string& description,
                                             const std::string& reason, Instant now);

// The parts of a split as a person types them, CATEGORY=AMOUNT each: the
// category by name or id (the last "=" ends it, so a name may hold one), the
// amount signed like the transaction or written as a positive figure. Only
// reads them; whether they make a split is splitTransaction's to judge.
// Throws EntryError (splits) naming the first text that isn't a part, or
// (unavailable) when there is no such transaction.
[[nodiscard]] std::vector<TransactionSplit> splitPartsEntered(
    const Ledger& ledger, const Uuid& id, const std::vector<std::string>& typed);

// No parts removes the split.
[[nodiscard]] LedgerDelta splitTransaction(Ledger& ledger, const Uuid& id,
                                           const std::vector<TransactionSplit>& parts, Instant now);

}  // namespace copperwick
