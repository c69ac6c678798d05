#pragma once

// Keeping an account record, new or edited. Not undoable; accounts carry no
// change set. A changed owner reaches the account's transactions through
// their inherited assignment, never through one a person chose.
//
// The account form checks each field by its one rule below as the person
// types, and accountEntered checks the whole record before it is kept; each
// refuses with EntryError. upsertAccount itself keeps what it is given, as
// the program's own callers (import, the demo) make accounts that are whole.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/account.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// The name as typed, trimmed. Throws EntryError (name) when that is blank.
[[nodiscard]] std::string accountNameEntered(std::string_view text);

// The last four digits as typed, trimmed; blank is none. Throws EntryError
// (lastFour) for anything but four digits: "12a4" is refused.
[[nodiscard]] std::optional<std::string> lastFourEntered(std::string_view text);

// Who uses the account. Naming people makes it theirs; naming nobody makes it
// the household's, or nobody's at all with `nobody`, whose spending is then
// unassigned.
void setUsers(Account& account, std::vector<Uuid> userIDs, bool nobody);

// The account as the form leaves it, with its name trimmed. Throws
// EntryError, in the order of the form: a blank name (name), a currency that
// isn't three letters (currency), last four that aren't four digits
// (lastFour), a user who isn't one of the household's people (users).
[[nodiscard]] Account accountEntered(const Ledger& ledger, Account account);

// Replaces the account with the same id, or appends it.
[[nodiscard]] LedgerDelta upsertAccount(Ledger& ledger, Account account);

}  // namespace copperwick
