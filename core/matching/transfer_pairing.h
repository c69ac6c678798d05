#pragma once

// Links money that left one of the household's accounts with the same money
// arriving in another, so that neither side counts as spending or income.
//
// pairTransfers runs after every change that can make or break a pair. It
// first drops links that no longer hold, then gives each unpaired debit the
// one credit that mirrors it. A debit with two equally near credits stays
// unpaired: guessing would hide a real expense. Running it twice in a row
// changes nothing the second time.

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

[[nodiscard]] LedgerDelta pairTransfers(Ledger& ledger);

// Detaches the one transaction named, not its partner. A side that only the
// pairing had filed goes back to the review queue; a filing the person made
// stays as it is.
void unpair(Ledger& ledger, const Uuid& id, LedgerDelta& delta);

// Sorts out, ahead of the first pairing, which lines of each part of the
// table pairing must look at, as after a load.
void warmTransferPairing(const Ledger& ledger);

}  // namespace copperwick
