#pragma once

// Walking every transaction of a ledger as fast as memory allows. The records
// lie scattered on the heap and each is read once, so a walk is bound by
// memory latency: take the addresses first (the table alone), then read a few
// records ahead while working on the current one.

#include <cstddef>
#include <vector>

#include "core/model/ledger.h"

namespace copperwick::TransactionWalk {

inline constexpr std::size_t kReadAhead = 12;

[[nodiscard]] inline std::vector<const LedgerTransaction*> addresses(const Ledger& ledger) {
    std::vector<const LedgerTransaction*> all;
    all.reserve(ledger.transactions.size());
    for (const auto& transaction : ledger.transactions)
        all.push_back(&transaction);
    return all;
}

// Asks for the fields every walk tests first of the record a few places on.
inline void readAhead(const std::vector<const LedgerTransaction*>& all, std::size_t at) {
    if (at + kReadAhead >= all.size())
        return;
    const LedgerTransaction* next = all[at + kReadAhead];
    __builtin_prefetch(&next->accountID);
    __builtin_prefetch(&next->status);
    __builtin_prefetch(&next->kind);
    __builtin_prefetch(&next->supersededBy);
    __builtin_prefetch(&next->voided);
}

}  // namespace copperwick::TransactionWalk
