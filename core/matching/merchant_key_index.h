#pragma once

// Which transactions of a ledger carry a merchant key. A remembered decision
// and a withdrawn model filing both look for every transaction a key covers;
// reading each of a hundred thousand records for that costs more than the
// decision itself. The index keeps, for each chunk of the transaction table,
// the chunk's keys in sorted order, and reworks only the chunks written since
// the last search. Safe on any thread.

#include <string>
#include <vector>

#include "core/model/ledger.h"

namespace copperwick::MerchantKeyIndex {

// Every transaction whose merchant key is covered by one of `keys`
// (`MerchantKeys::isCoveredBy`), voided and superseded ones too, in no set
// order. The pointers stay valid until `transactions` is next written.
[[nodiscard]] std::vector<const LedgerTransaction*> covered(
    const SharedMap<Uuid, LedgerTransaction>& transactions, const std::vector<std::string>& keys);

// Works out every chunk's keys ahead of the first search, as after a load.
void warm(const SharedMap<Uuid, LedgerTransaction>& transactions);

}  // namespace copperwick::MerchantKeyIndex
