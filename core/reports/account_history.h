#pragma once

// The dates of each account's active transactions, which the data notes
// judge an account's files by. ReportEngine::build gathers them in its own
// pass over the ledger, so that a report reads every transaction once.
// Internal to the report engine.

#include <unordered_map>
#include <vector>

#include "core/model/data_note.h"
#include "core/model/ledger.h"
#include "core/reports/report_filter.h"

namespace copperwick::ReportEngine::detail {

struct AccountHistory {
    std::vector<LocalDate> dates;  // unsorted, repeats kept
    LocalDate first;
    LocalDate last;

    void add(LocalDate date) {
        if (dates.empty() || date < first)
            first = date;
        if (dates.empty() || last < date)
            last = date;
        dates.push_back(date);
    }
};

using AccountHistories = std::unordered_map<Uuid, AccountHistory>;

// Whether the data notes look at the account's history at all.
[[nodiscard]] inline bool isJudgedByItsFiles(const Account& account) {
    return !account.rarelyUsed && account.type != AccountType::cash;
}

// dataNotes with the histories already gathered for every judged account.
[[nodiscard]] std::vector<DataNote> dataNotes(const Ledger& ledger, const ReportFilter& filter,
                                              const std::vector<const Account*>& accounts,
                                              const AccountHistories& histories, LocalDate today,
                                              int64_t unknownCount, int64_t unknownIn,
                                              int64_t unknownOut, int64_t pendingCount,
                                              int64_t pendingTotal);

}  // namespace copperwick::ReportEngine::detail
