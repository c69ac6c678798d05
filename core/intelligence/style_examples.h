#pragma once

// How this person files transactions like the one the model is asked about:
// a few of their own decisions on similar bank texts, so that the model
// follows their habits ("COSTCO GAS" as Transportation rather than Groceries).
// Pure; safe on any thread for a ledger nobody writes meanwhile.

#include <cstddef>
#include <string>
#include <vector>

#include "core/model/ledger.h"

namespace copperwick::StyleExamples {

// Up to `limit` lines "“BANK TEXT” → Merchant, Category", most similar
// first. Only what a person decided counts: confirmed lines and lines filed
// by their rules or learned merchants, the newest of each merchant key, when
// its key is alike enough (a shared bank category helps). Digit runs are
// masked as everywhere the model reads.
[[nodiscard]] std::vector<std::string> examples(const LedgerTransaction& transaction,
                                                const Ledger& ledger, std::size_t limit);

}  // namespace copperwick::StyleExamples
