#pragma once

// Keeping a category record, new or edited. Not undoable, and nothing is
// matched again: a category's name and group change nothing already filed.

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// Replaces the category with the same id, or appends it.
[[nodiscard]] LedgerDelta upsertCategory(Ledger& ledger, LedgerCategory category);

}  // namespace copperwick
