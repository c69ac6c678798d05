#pragma once

// How large a ledger's amounts may grow in all.
//
// Each amount is bounded by Money::kLargestAmount, but a ledger holds as many
// of them as a file can bring, and a report adds them up. The sum of every
// transaction's magnitude bounds every figure built from them, whatever a
// filter selects: a total, the difference of two totals, and a share in
// tenths of a percent, which multiplies by a thousand. Keeping that sum at or
// under kLargestLedgerMagnitude keeps all of those inside 64 bits, so the
// checked arithmetic of the reports never meets a person's data; a change
// that would pass it is refused before it is saved.
//
// Pure functions of values; any thread.

#include <cstdint>
#include <string_view>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick::amount_limits {

// 40 trillion dollars' worth of cents: beyond any household, and a thousand
// times it is still inside 64 bits with room to spare.
inline constexpr int64_t kLargestLedgerMagnitude = 4'000'000'000'000'000;

// The sum of |amount| over every transaction the ledger keeps, removed ones
// included; it stops counting at INT64_MAX.
[[nodiscard]] int64_t magnitude(const Ledger& ledger);

// The same sum after a change, worked out from the sum before it and the
// transactions `delta` names, without reading the rest of the ledger.
[[nodiscard]] int64_t magnitudeAfter(int64_t before, const Ledger& old, const Ledger& updated,
                                     const LedgerDelta& delta);

// Whether the magnitudes of `amounts` add up to more than a ledger may hold:
// a file like that can never be imported, and its own totals can't be summed.
template <typename Range, typename AmountOf>
[[nodiscard]] bool exceedsLedger(const Range& items, AmountOf amountOf) {
    // Wide enough that no sum of 64-bit magnitudes can overflow it.
    __extension__ typedef __int128 Wide;
    Wide sum = 0;
    for (const auto& item : items) {
        const Wide amount = amountOf(item);
        sum += amount < 0 ? -amount : amount;
        if (sum > kLargestLedgerMagnitude)
            return true;
    }
    return false;
}

// The words when a change is refused for it.
inline constexpr std::string_view kTooLargeMessage =
    "That would make the ledger's amounts too large for Copperwick to add up, so nothing was "
    "saved.";
inline constexpr std::string_view kFileTooLargeMessage =
    "The amounts in this file add up to more than Copperwick can count, so it can't be "
    "imported. Check that it's a bank export.";

}  // namespace copperwick::amount_limits
