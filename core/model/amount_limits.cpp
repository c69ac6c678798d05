#include "core/model/amount_limits.h"

#include <limits>

namespace copperwick::amount_limits {

namespace {

// Wide enough that no sum of 64-bit magnitudes can overflow it.
__extension__ typedef __int128 Wide;

constexpr Wide kCeiling = std::numeric_limits<int64_t>::max();

Wide magnitudeOf(const LedgerTransaction* transaction) {
    if (!transaction)
        return 0;
    // -INT64_MIN isn't an int64_t, but it is a Wide.
    const Wide amount = transaction->amount;
    return amount < 0 ? -amount : amount;
}

int64_t narrowed(Wide sum) {
    if (sum < 0)
        return 0;
    return static_cast<int64_t>(sum > kCeiling ? kCeiling : sum);
}

}  // namespace

int64_t magnitude(const Ledger& ledger) {
    Wide sum = 0;
    for (const auto& transaction : ledger.transactions) {
        sum += magnitudeOf(&transaction);
        if (sum > kCeiling)
            return narrowed(sum);
    }
    return narrowed(sum);
}

int64_t magnitudeAfter(int64_t before, const Ledger& old, const Ledger& updated,
                       const LedgerDelta& delta) {
    // A sum that already stopped counting can't be corrected by differences.
    if (before == std::numeric_limits<int64_t>::max())
        return magnitude(updated);
    // Two lookups per changed line cost more than one pass over every line
    // once a change touches a good part of the ledger, as an import does.
    std::size_t touched = 0;
    for (const auto* ids : {&delta.changed, &delta.deleted}) {
        if (const auto it = ids->find(RecordKind::transaction); it != ids->end())
            touched += it->second.size();
    }
    if (touched * 4 >= updated.transactions.size())
        return magnitude(updated);
    Wide sum = before;
    const auto account = [&](const std::map<RecordKind, RecordIDs>& ids) {
        const auto it = ids.find(RecordKind::transaction);
        if (it == ids.end())
            return;
        for (const auto& recordID : it->second) {
            const auto id = recordID.uuid();
            if (!id)
                continue;
            sum -= magnitudeOf(old.transactions.find(*id));
            sum += magnitudeOf(updated.transactions.find(*id));
        }
    };
    account(delta.changed);
    account(delta.deleted);
    return narrowed(sum);
}

}  // namespace copperwick::amount_limits
