#pragma once

// The records around the transactions: people, and the removal of people,
// accounts and categories. None is undoable. A removal goes the long way
// round so that no transaction is left pointing at nothing: every reference
// is rewritten first, then the record goes, then everything is matched again.
// Ids are taken by value, since a caller's may live in the record removed.

#include <cstdint>
#include <optional>
#include <string_view>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// A person's monthly allowance as a person types it: nothing (or only spaces
// and tabs) means none; zero or more is kept, zero too, although the words ask
// for a positive amount. Throws EntryError (allowance) for anything else.
[[nodiscard]] std::optional<int64_t> allowanceEntered(std::string_view text);

// The person as the form leaves them: the name trimmed, the bank names
// trimmed with blank ones dropped. Throws EntryError for a blank name (name)
// or an allowance below zero (allowance).
[[nodiscard]] Person personEntered(Person person);

// Replaces the person with the same id, or appends it, then matches every
// transaction again: new bank names can change what a description means.
[[nodiscard]] LedgerDelta upsertPerson(Ledger& ledger, Person person);

// The person leaves every account, card and assignment; lines set to them
// become unassigned rather than nobody's at all.
[[nodiscard]] LedgerDelta deletePerson(Ledger& ledger, Uuid id);

// Absent, changing nothing, while any transaction (voided ones too) names the
// account: its imports must be undone first, or the account archived.
[[nodiscard]] std::optional<LedgerDelta> deleteAccount(Ledger& ledger, Uuid id);

// Lines, rules and merchants move to the replacement, or without one go back
// to Review; the category's budgets go with it.
[[nodiscard]] LedgerDelta deleteCategory(Ledger& ledger, Uuid id,
                                         const std::optional<Uuid>& replacement);

}  // namespace copperwick
