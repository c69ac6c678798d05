#pragma once

// The narrowing the Transactions screen offers (an account, days, lines that
// wait for review, a search), shared by the commands that list or export
// transactions.

#include <optional>
#include <string>
#include <vector>

#include "core/model/ledger.h"
#include "core/reports/report_filter.h"

namespace copperwick::cli {

struct TransactionQuery {
    std::optional<Uuid> accountID;
    std::optional<LocalDate> from;
    std::optional<LocalDate> to;
    bool review = false;
    std::string search;  // as typed; found in any case
    // A report's days and scope, when the lines are a report's.
    std::optional<ReportFilter> report;

    // The active transactions that pass, in no set order.
    [[nodiscard]] std::vector<const LedgerTransaction*> select(const Ledger& ledger) const;
};

}  // namespace copperwick::cli
