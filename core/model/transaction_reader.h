#pragma once

// The quick way to read a stored transaction, for loading a whole file.
//
// Transactions are nearly every row of a data file, and most are flat objects
// of strings, integers and booleans. This reader scans such a row once and
// fills the record in place: no JSON tree, no parser events, and no copy of any
// text that can be taken straight from the row. It declines anything it isn't
// sure of (a nested value, a wrong type, a missing or repeated key, a number
// that isn't a plain integer, damaged text) by returning false, and the caller
// then reads the row the ordinary way, which decides whether it is readable and
// why not. So the two ways can never disagree on what a readable row holds.
//
// Pure functions, safe on any thread.

#include <optional>
#include <string_view>

#include "core/model/ledger_transaction.h"

namespace copperwick::detail {

// Reads `json` into `out`, which must be a default-constructed record. After a
// false return `out` holds part of the row and is only fit to be thrown away.
[[nodiscard]] bool readFlatTransaction(std::string_view json, LedgerTransaction& out);

// The same, as a value.
[[nodiscard]] std::optional<LedgerTransaction> readFlatTransaction(std::string_view json);

}  // namespace copperwick::detail
