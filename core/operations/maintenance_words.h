#pragma once

// Refusals of record maintenance that aren't an EntryError: the operation
// answers with an absent value, and whoever asked words it with these.

#include <string_view>

namespace copperwick {

// deleteAccount gave no delta: the account still has transactions.
inline constexpr std::string_view kAccountHasTransactions =
    "This account has transactions. Undo its imports first, or archive it.";

}  // namespace copperwick
