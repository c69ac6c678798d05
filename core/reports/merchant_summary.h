#pragma once

// The merchants as the Rules & Merchants screen lists them: which ones a
// search finds, how many lines each files, and what each always files as,
// in the screen's words. Pure functions of the ledger, safe on any thread for
// a ledger nobody writes meanwhile.

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/model/ledger.h"

namespace copperwick {

// How many active transactions each merchant files; a merchant with none
// isn't in the map.
[[nodiscard]] std::unordered_map<Uuid, std::size_t> merchantTransactionCounts(const Ledger& ledger);

// The merchants whose name holds the search in any case (every one for an
// empty search), by name ignoring case and then by id.
[[nodiscard]] std::vector<const Merchant*> merchantsMatching(const Ledger& ledger,
                                                             std::string_view search);

// What the merchant's lines always file as: "always a transfer", "always
// Dining", or "no default".
[[nodiscard]] std::string defaultFilingText(const Ledger& ledger, const Merchant& merchant);

// "recognizes 1 bank text", "recognizes 3 bank texts", or "no bank text yet".
[[nodiscard]] std::string recognizedText(const Merchant& merchant);

}  // namespace copperwick
