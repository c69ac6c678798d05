#pragma once

// Keeping an account record, new or edited. Not undoable; accounts carry no
// change set. A changed owner reaches the account's transactions through
// their inherited assignment, never through one a person chose.

#include "core/model/account.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// Replaces the account with the same id, or appends it.
[[nodiscard]] LedgerDelta upsertAccount(Ledger& ledger, Account account);

}  // namespace copperwick
