#pragma once

// Everything the Reports section shows for one filter, computed in one go:
// the report and the one before it, the budget lines, the savings goal and
// allowance, recurring and unusual charges, and the payment-service activity
// with the household's own money moves. A plain copyable value.

#include <optional>
#include <vector>

#include "core/model/ledger.h"
#include "core/reports/budget_report.h"
#include "core/reports/insights.h"
#include "core/reports/payment_activity.h"
#include "core/reports/report_comparison.h"
#include "core/reports/zelle_activity.h"

namespace copperwick {

struct ReportBundle {
    ReportFilter filter;
    ReportComparison comparison;  // comparison.current is the report itself
    std::vector<BudgetLine> budgets;
    std::optional<SavingsGoal> savingsGoal;
    std::optional<Allowance> allowance;
    std::vector<RecurringCharge> recurring;
    std::vector<UnusualCharge> unusual;
    ZelleSummary zelle;
    PaymentActivity payments;

    [[nodiscard]] static ReportBundle build(const Ledger& ledger, const ReportFilter& filter,
                                            LocalDate today);

    [[nodiscard]] const Report& report() const { return comparison.current; }

    // The Overview's "Money moved within the household": for a scope short
    // of the whole household that has such moves, so that its figures line
    // up with the accounts.
    [[nodiscard]] bool showsHouseholdMoney() const {
        return !filter.wholeHousehold && !zelle.household.isEmpty();
    }

    friend bool operator==(const ReportBundle&, const ReportBundle&) = default;
};

}  // namespace copperwick
