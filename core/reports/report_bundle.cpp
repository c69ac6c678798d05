#include "core/reports/report_bundle.h"

namespace copperwick {

ReportBundle ReportBundle::build(const Ledger& ledger, const ReportFilter& filter,
                                 LocalDate today) {
    // Both lists of charges come from the same candidates.
    const auto candidates = Insights::detail::candidates(ledger, filter);
    ReportBundle bundle{.filter = filter,
                        .comparison = ReportComparison::build(ledger, filter, today),
                        .budgets = {},
                        .savingsGoal = std::nullopt,
                        .allowance = std::nullopt,
                        .recurring = Insights::detail::recurring(candidates, ledger, today),
                        .unusual = Insights::detail::unusual(candidates, ledger, filter),
                        .zelle = ZelleActivity::build(ledger, filter),
                        .payments = PaymentActivity::build(ledger, filter)};
    bundle.budgets = BudgetReport::lines(ledger, bundle.report());
    bundle.savingsGoal = BudgetReport::savingsGoal(ledger, bundle.report());
    bundle.allowance = BudgetReport::allowance(ledger, bundle.report());
    return bundle;
}

}  // namespace copperwick
