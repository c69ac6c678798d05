#pragma once

// The CSV layouts Copperwick knows out of the box, and the list every
// recognition works on.
//
// Built-in layouts live here in code and are never stored; the ones a person
// teaches are ledger records. Recognition keeps the earlier of two layouts
// that match equally well, so taught layouts come first: a person's own
// layout beats a built-in one asking for as many headers. Safe on any thread.

#include <vector>

#include "core/model/import_profile.h"
#include "core/model/ledger.h"

namespace copperwick {

// The sixteen built-in layouts in their fixed order, all with isBuiltIn set.
// Built on first use and shared for the life of the program.
[[nodiscard]] const std::vector<ImportProfile>& builtInProfiles();

// The ledger's taught layouts in stored order, then the built-in ones.
[[nodiscard]] std::vector<ImportProfile> allProfiles(const Ledger& ledger);

}  // namespace copperwick
