#pragma once
// Keeping the merchant records: names, merges, their own filing, and
// clearing away the ones nothing refers to.
//
// Not undoable steps, like the rule operations. Missing ids change nothing.
// Functions on the thread that owns the ledger value; the lookup by name is
// Ledger::merchantNamed.
#include <optional>
#include <string>
#include <string_view>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// A merchant's name as typed, trimmed of spaces and tabs. Throws EntryError
// (name) when nothing is left.
[[nodiscard]] std::string merchantNameEntered(std::string_view text);

// The merchant editor's "Always file as".
struct MerchantFiling {
    enum class Kind {
        none,      // no default
        transfer,  // always a transfer
        category,  // always the category; spending or income by its group
    };
    Kind kind = Kind::none;
    std::optional<Uuid> categoryID;
};

// The merchant with that filing as its own. Throws EntryError (category) for
// a category filing without a category of the ledger.
[[nodiscard]] Merchant withFiling(const Ledger& ledger, Merchant merchant,
                                  const MerchantFiling& filing);

// Ids are taken by value: a caller's id often lives in the very record these
// replace.

// A name another merchant already has, in any case, merges this one into it.
// Otherwise the name is locked against automatic tidying.
[[nodiscard]] LedgerDelta renameMerchant(Ledger& ledger, Uuid id, std::string_view to);

// The target learns the source's keys, takes its filing when it has none,
// and takes over its transactions as they stand; the source goes.
[[nodiscard]] LedgerDelta mergeMerchants(Ledger& ledger, Uuid id, Uuid into);

// Stores the merchant under its id, new or not.
[[nodiscard]] LedgerDelta updateMerchant(Ledger& ledger, const Merchant& merchant, bool applyNow);

// Keeps every merchant a transaction uses or the person taught something.
[[nodiscard]] LedgerDelta pruneUnusedMerchants(Ledger& ledger);

}  // namespace copperwick
