#pragma once

// The few lines the payment-service builds read. A report bundle asks for
// them over the whole ledger each time, while nearly every line names no
// service and isn't a transfer; the lists are remembered per chunk of the
// transaction table, so a build reads a short list rather than every record.

#include <vector>

#include "core/model/ledger.h"

namespace copperwick::PaymentLines {

// Transactions whose bank text may name a payment service, and with
// `withTransfers` every transfer as well, each once, in no set order.
[[nodiscard]] std::vector<const LedgerTransaction*> candidates(const Ledger& ledger,
                                                               bool withTransfers);

}  // namespace copperwick::PaymentLines
