#pragma once

// The history Undo walks back: every undoable operation records one
// ChangeSet of whole-record snapshots, and undoing the last puts them back.
// The history is a record in the data file like any other, so Undo survives a
// restart; it holds the last 50 operations and drops older ones silently.

#include <optional>
#include <string>

#include "core/model/change_set.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// The undo record of an operation that turned `original` into a ledger whose
// changes `delta` lists: every touched record as it was in `original`, and
// the ids of what the operation created. A record appears once, as it was
// before the whole operation, however many of its steps touched it.
[[nodiscard]] ChangeSet changeSetFor(const Ledger& original, const LedgerDelta& delta,
                                     std::string label, Instant now);

// Appends to the history; the delta also deletes what fell off its far end.
[[nodiscard]] LedgerDelta record(Ledger& ledger, ChangeSet changeSet);

// Takes back the last recorded operation; absent when there is none. Created
// records go first, then snapshots are put back, then transfers re-paired. A
// merchant the operation created stays when a later change put it to use, so
// no transaction is left pointing at nothing.
[[nodiscard]] std::optional<LedgerDelta> undoLastChange(Ledger& ledger);

}  // namespace copperwick
