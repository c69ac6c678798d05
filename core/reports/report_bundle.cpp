#include "core/reports/report_bundle.h"

namespace copperwick {

ReportBundle ReportBundle::build(const Ledger& ledger, const ReportFilter& filter,
                                 LocalDate today) {
    ReportBundle bundle{.filter = filter,
                        .comparison = ReportComparison::build(ledger, filter, today),
                        .budgets = {},
                        .savingsGoal = std::nullopt,
                        .allowance = std::nullopt,
                        .recurring = Insights::recurring(ledger, filter, today),
                        .unusual = Insights::unusual(ledger, filter)};
    bundle.budgets = BudgetReport::lines(ledger, bundle.report());
    bundle.savingsGoal = BudgetReport::savingsGoal(ledger, bundle.report());
    bundle.allowance = BudgetReport::allowance(ledger, bundle.report());
    return bundle;
}

}  // namespace copperwick
