#pragma once

// How a scope short of the whole household compares with everyone's spending
// over the same days, as the Reports overview shows it beside a person's
// figures. A plain copyable value; `build` is a pure function of the ledger,
// safe on any thread for a ledger nobody writes meanwhile.

#include <cstdint>
#include <optional>
#include <string>

#include "core/model/ledger.h"
#include "core/reports/report.h"

namespace copperwick {

struct HouseholdContext {
    std::string scopeLabel;
    int64_t scopeSpending = 0;
    int64_t householdSpending = 0;
    // The scope's share of the household's spending, in tenths of a percent;
    // absent when the household spent nothing.
    std::optional<int64_t> shareTenths;
    // What the family's category budgets allow over the days, shown only for
    // whole months and when there is any budget at all.
    std::optional<int64_t> familyBudgets;

    // Absent for a report of the whole household. The household's report has
    // the same days and currency, no person and no account.
    [[nodiscard]] static std::optional<HouseholdContext> build(const Ledger& ledger,
                                                               const Report& report,
                                                               LocalDate today);

    friend bool operator==(const HouseholdContext&, const HouseholdContext&) = default;
};

}  // namespace copperwick
