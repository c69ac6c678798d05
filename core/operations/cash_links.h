#pragma once

// The cash wallets' side of the ledger: their balances, and which of a bank
// account's own lines can stand as the bank side of a cash
// move: the "ATM WITHDRAWAL" the bank already sent, so that the move adds no
// second line that would count the money twice. The same test moveCash holds
// a named line to, asked before anything is typed. Pure functions of the
// ledger, on any thread.

#include <cstdint>
#include <map>
#include <vector>

#include "core/model/ledger.h"

namespace copperwick {

// The bank account's active, posted, unpaired lines of exactly -`walletAmount`
// (the move's amount as the wallet sees it), newest first, ties by id text.
// None for an amount of zero.
[[nodiscard]] std::vector<const LedgerTransaction*> linkableBankLines(const Ledger& ledger,
                                                                      const Uuid& bankAccountID,
                                                                      int64_t walletAmount);

// cashBalance of every cash wallet at once, archived ones too, in one pass
// over the ledger rather than one a wallet.
[[nodiscard]] std::map<Uuid, int64_t> walletBalances(const Ledger& ledger);

}  // namespace copperwick
