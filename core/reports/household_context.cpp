#include "core/reports/household_context.h"

#include "core/model/checked.h"
#include "core/model/money.h"
#include "core/reports/budget_report.h"
#include "core/reports/report_engine.h"

namespace copperwick {

std::optional<HouseholdContext> HouseholdContext::build(const Ledger& ledger, const Report& report,
                                                        LocalDate today) {
    if (report.filter.wholeHousehold)
        return std::nullopt;
    const ReportFilter everyone(report.filter.span, {}, {}, report.filter.currency, std::nullopt,
                                false, false, PeopleMode::assigned);
    const Report household = ReportEngine::build(ledger, everyone, today);
    HouseholdContext context{
        .scopeLabel = report.scopeLabel,
        .scopeSpending = report.spending,
        .householdSpending = household.spending,
        .shareTenths = Money::shareTenths(report.spending, household.spending)};
    int64_t budgeted = 0;
    for (const auto& line : BudgetReport::lines(ledger, household))
        budgeted = checked::add(budgeted, line.budgeted);
    if (budgeted >= 1 && BudgetReport::coversWholeMonths(report.filter.span))
        context.familyBudgets = budgeted;
    return context;
}

}  // namespace copperwick
