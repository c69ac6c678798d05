#pragma once

// An import's worth of lines for store and runtime tests: new transactions
// with time-ordered ids, each with its raw line, as an import saves them.

#include <cstddef>
#include <cstdint>
#include <string>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick::testing {

// Adds `count` lines of one new batch to `ledger`, each with `note`, and
// returns the delta that saves them with their raw lines, whose text is `raw`.
inline LedgerDelta importLines(Ledger& ledger, std::size_t count, const std::string& note = "",
                               const std::string& raw = "CORNER SHOP") {
    LedgerDelta delta;
    const Uuid batch = Uuid::timeOrdered();
    for (std::size_t line = 1; line <= count; ++line) {
        LedgerTransaction t{.id = Uuid::timeOrdered(),
                            .accountID = batch,
                            .date = *LocalDate::make(2026, 1, 1 + static_cast<int>(line % 28)),
                            .amount = -static_cast<int64_t>(100 + line),
                            .rawDescription = "CORNER SHOP",
                            .fingerprint = "f" + std::to_string(line)};
        t.note = note;
        t.batchID = batch;
        delta.change(RecordKind::transaction, t.id);
        ledger.transactions.set(t.id, std::move(t));
        delta.sourceLines.push_back({batch, static_cast<int64_t>(line), raw});
    }
    return delta;
}

}  // namespace copperwick::testing
