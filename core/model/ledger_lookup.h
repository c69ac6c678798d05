#pragma once

// Finding the records a person names: by id, or else by name ignoring case.
// What the person typed is trimmed first. Absent when nothing answers; the
// caller words the refusal in its own terms ("There's no account called …").
// Pure functions of the ledger value, on the thread that owns it; a pointer
// lives as long as the ledger it came from is left unchanged.

#include <optional>
#include <string_view>

#include "core/model/ledger.h"
#include "core/model/spending_assignment.h"

namespace copperwick {

[[nodiscard]] const Account* findAccount(const Ledger& ledger, std::string_view nameOrID);
[[nodiscard]] const Person* findPerson(const Ledger& ledger, std::string_view nameOrID);
// The first category in the ledger's order with the name.
[[nodiscard]] const LedgerCategory* findCategory(const Ledger& ledger, std::string_view nameOrID);
// Of merchants sharing a name, the one with the smallest id text.
[[nodiscard]] const Merchant* findMerchant(const Ledger& ledger, std::string_view nameOrID);
[[nodiscard]] const Rule* findRule(const Ledger& ledger, std::string_view nameOrID);
// Whose spending something is, as typed: "shared" or "unassigned" in any
// case, or else a person's name or id.
[[nodiscard]] std::optional<SpendingAssignment> findOwner(const Ledger& ledger,
                                                          std::string_view who);

}  // namespace copperwick
