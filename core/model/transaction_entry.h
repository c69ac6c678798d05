#pragma once

// The parts of a transaction that people add by hand: where a hand-made entry
// came from, corrections that keep what the bank said, and category splits.

#include <cstdint>
#include <string>

#include "core/model/enum_text.h"
#include "core/model/instant.h"
#include "core/model/local_date.h"
#include "core/model/uuid.h"

namespace copperwick {

// Present only on entries made by hand.
enum class TransactionEntrySource {
    manual,
    openingBalance,
};

template <>
struct EnumTraits<TransactionEntrySource> {
    static constexpr std::array<std::pair<TransactionEntrySource, std::string_view>, 2> cases{{
        {TransactionEntrySource::manual, "manual"},
        {TransactionEntrySource::openingBalance, "openingBalance"},
    }};
};

// The fields a correction may change.
struct TransactionDetails {
    LocalDate date;
    int64_t amount = 0;
    std::string description;

    friend bool operator==(const TransactionDetails&, const TransactionDetails&) = default;
};

// One correction, with the person's reason for it.
struct TransactionRevision {
    Uuid id;
    Instant changedAt;
    TransactionDetails before;
    TransactionDetails after;
    std::string reason;

    friend bool operator==(const TransactionRevision&, const TransactionRevision&) = default;
};

// One category's share of a split transaction.
struct TransactionSplit {
    Uuid id;
    Uuid categoryID;
    int64_t amount = 0;
    std::string note;

    friend bool operator==(const TransactionSplit&, const TransactionSplit&) = default;
};

}  // namespace copperwick
