#pragma once

// Keeping a category record, new or edited. Not undoable, and nothing is
// matched again: a category's name and group change nothing already filed.
//
// categoryEntered is the one check of a category a person names; the program's
// own categories ("Gifts received") are made by newCategory and kept as they
// are.

#include <string>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// A category new to the ledger, with a new id. Its colour is its place in its
// group: the charts give the next colour of the group to each new category.
[[nodiscard]] LedgerCategory newCategory(const Ledger& ledger, std::string name,
                                         CategoryGroup group);

// The category as the form leaves it, with its name trimmed. Throws
// EntryError for a blank name (name), or a name another category has in any
// case (nameTaken), since categories are looked up by name.
[[nodiscard]] LedgerCategory categoryEntered(const Ledger& ledger, LedgerCategory category);

// Replaces the category with the same id, or appends it.
[[nodiscard]] LedgerDelta upsertCategory(Ledger& ledger, LedgerCategory category);

}  // namespace copperwick
