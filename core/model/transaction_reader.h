#pragma once

// The quick way to read a stored transaction, for loading a whole file.
//
// Transactions are nearly every row of a data file, and most are flat
// objects. This reader fills the record straight from the parser's events,
// without building a JSON tree first. It declines anything it isn't sure of
// (a nested value, a wrong type, a missing key, damaged text) by returning
// absent, and the caller then reads the row the ordinary way, which decides
// whether it is readable and why not. So the two ways can never disagree on
// what a readable row holds.

#include <optional>
#include <string_view>

#include "core/model/ledger_transaction.h"

namespace copperwick::detail {

[[nodiscard]] std::optional<LedgerTransaction> readFlatTransaction(std::string_view json);

}  // namespace copperwick::detail
