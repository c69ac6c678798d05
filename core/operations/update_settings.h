#pragma once

// Changing the settings record: the time zone, the report currency, the
// savings goal, whether raw bank lines are kept. Not undoable; settings carry
// no change set.

#include <functional>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

[[nodiscard]] LedgerDelta updateSettings(Ledger& ledger,
                                         const std::function<void(LedgerSettings&)>& change);

}  // namespace copperwick
