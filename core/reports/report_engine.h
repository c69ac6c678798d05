#pragma once

// How a transaction counts: the one pass from a Ledger and a ReportFilter to a
// Report. Pure functions of their arguments (the runtime keys its caches on
// the ledger's revision), safe on any thread for a ledger nobody writes
// meanwhile. The one thing kept between calls is a compact copy of each
// unchanged chunk of transactions, which can't go stale (ChunkSummaries).
//
// Pending lines count only in the pending figures; transfers count in no
// income, spending, category or merchant figure; refunds filed as expenses
// are netted into spending. Every sort ends on a name or an id, so a report of
// the same ledger reads the same every time.

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "core/model/data_note.h"
#include "core/model/ledger.h"
#include "core/reports/report.h"
#include "core/reports/report_filter.h"

namespace copperwick::ReportEngine {

struct MerchantIdentity {
    std::string id;
    std::string name;

    friend bool operator==(const MerchantIdentity&, const MerchantIdentity&) = default;
};

[[nodiscard]] Report build(const Ledger& ledger, const ReportFilter& filter, LocalDate today);

// Who a transaction was paid to, for all grouping by merchant: its filed
// merchant, or else the key of its bank text, so that two unfiled lines of
// one text fall together although no merchant record exists.
[[nodiscard]] MerchantIdentity merchantIdentity(const LedgerTransaction& transaction,
                                                const Ledger& ledger);

// The id half of merchantIdentity alone, for grouping many lines cheaply.
[[nodiscard]] std::string merchantIdentityID(const LedgerTransaction& transaction,
                                             const Ledger& ledger);

// The notes that say what a report's totals leave out; `accounts` are the
// report's accounts. Money reads in dollars whatever the report's currency.
[[nodiscard]] std::vector<DataNote> dataNotes(const Ledger& ledger, const ReportFilter& filter,
                                              const std::vector<const Account*>& accounts,
                                              LocalDate today, int64_t unknownCount,
                                              int64_t unknownIn, int64_t unknownOut,
                                              int64_t pendingCount, int64_t pendingTotal);

// Whether `missingDays` without a transaction is within the account's habit:
// twice its average gap between distinct dates reaches that far.
[[nodiscard]] bool usuallyQuiet(const std::set<LocalDate>& dates, int64_t missingDays);

}  // namespace copperwick::ReportEngine
