#pragma once

// Keeping a layout the person taught or imported. Not undoable; layouts carry
// no change set. Runs on a copy of the ledger like every other operation.

#include "core/model/import_profile.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// Replaces the stored layout with the same id, or appends it. The stored copy
// is never marked built in: whatever is kept in the ledger was taught.
[[nodiscard]] LedgerDelta upsertProfile(Ledger& ledger, ImportProfile profile);

}  // namespace copperwick
