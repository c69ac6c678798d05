#pragma once

// What the Transactions screen's sheets share: whether an entry would be
// refused, asked of the core on a copy of the ledger before anything is
// saved, so that the refusal's words stand under the field they concern
// while the sheet stays open with what was typed.

#include <optional>

#include "core/model/ledger.h"
#include "core/operations/entry_error.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

// The refusal `change` throws on a copy of `ledger`, if it throws one.
[[nodiscard]] inline std::optional<EntryError> refusalOf(const Ledger& ledger,
                                                         const LedgerRuntime::Change& change) {
    Ledger copy = ledger;
    try {
        (void)change(copy);
    } catch (const EntryError& error) {
        return error;
    }
    return std::nullopt;
}

}  // namespace copperwick::app
