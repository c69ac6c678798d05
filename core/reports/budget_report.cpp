#include "core/reports/budget_report.h"

#include <algorithm>

#include "core/model/checked.h"
#include "core/model/money.h"

namespace copperwick {

int64_t BudgetLine::remaining() const {
    return checked::sub(budgeted, spent);
}

std::optional<int64_t> BudgetLine::usedTenths() const {
    if (budgeted < 1)
        return std::nullopt;
    return detail::roundedQuotient(checked::mul(spent, 1000), budgeted);
}

std::string BudgetLine::summary() const {
    // Budgets read in dollars whatever the report's currency: settled behaviour.
    std::string text = Money::format(spent) + " of " + Money::format(budgeted) + " \u00B7 ";
    if (budgeted >= spent)
        return text + Money::format(remaining()) + " left";
    return text + Money::format(checked::neg(remaining())) + " over";
}

std::string SavingsGoal::title() const {
    return isReached() ? "Savings goal reached" : "Savings goal";
}

int64_t SavingsGoal::barValue() const {
    return std::clamp<int64_t>(saved, 0, target);
}

namespace BudgetReport {

namespace {

int64_t monthCount(const DateSpan& span) {
    return static_cast<int64_t>(span.monthKeys().size());
}

}  // namespace

std::vector<BudgetLine> lines(const Ledger& ledger, const Report& report) {
    const int64_t months = std::max<int64_t>(1, monthCount(report.filter.span));
    std::vector<BudgetLine> result;
    for (const auto& budget : ledger.budgets) {
        const LedgerCategory* category = ledger.category(budget.categoryID);
        if (!category)
            continue;
        int64_t spent = 0;
        for (const auto& line : report.categories) {
            if (line.categoryID == budget.categoryID) {
                spent = line.amount;
                break;
            }
        }
        result.push_back({.categoryID = category->id,
                          .name = category->name,
                          .colorIndex = category->colorIndex,
                          .budgeted = checked::mul(budget.monthlyAmount, months),
                          .spent = spent});
    }
    std::stable_sort(result.begin(), result.end(),
                     [](const BudgetLine& a, const BudgetLine& b) { return a.name < b.name; });
    return result;
}

bool coversWholeMonths(const DateSpan& span) {
    return span.start.day == 1 &&
           span.end.day == LocalDate::daysInMonth(span.end.year, span.end.month);
}

std::optional<std::string> periodNote(const DateSpan& span) {
    if (!coversWholeMonths(span))
        return "This period doesn't cover whole months, so budgets count each month it touches "
               "in full.";
    const int64_t months = monthCount(span);
    if (months < 2)
        return std::nullopt;
    const std::string n = std::to_string(months);
    return "Budgets are monthly; this period covers " + n +
           " months, so each budget is "
           "multiplied by " +
           n + ".";
}

std::optional<SavingsGoal> savingsGoal(const Ledger& ledger, const Report& report) {
    const LedgerSettings& settings = *ledger.settings;
    if (!settings.monthlySavingsGoal || *settings.monthlySavingsGoal < 1)
        return std::nullopt;
    if (settings.monthlySavingsGoalCurrency != report.filter.currency)
        return std::nullopt;
    if (!report.filter.wholeHousehold || !coversWholeMonths(report.filter.span))
        return std::nullopt;
    const int64_t months = monthCount(report.filter.span);
    return SavingsGoal{.months = months,
                       .saved = report.savings(),
                       .target = checked::mul(*settings.monthlySavingsGoal, months),
                       .currency = report.filter.currency};
}

std::optional<Allowance> allowance(const Ledger& ledger, const Report& report) {
    const ReportFilter& filter = report.filter;
    if (filter.personIDs.size() != 1 || filter.wholeHousehold || filter.includeShared ||
        filter.includeUnassigned || filter.peopleMode != PeopleMode::assigned)
        return std::nullopt;
    const Person* person = ledger.person(*filter.personIDs.begin());
    if (!person || !person->monthlyAllowance)
        return std::nullopt;
    int64_t total = 0;
    if (__builtin_mul_overflow(*person->monthlyAllowance, monthCount(filter.span), &total))
        return std::nullopt;  // an absurd allowance hides the tile rather than stop
    if (!coversWholeMonths(filter.span))
        return std::nullopt;
    return Allowance{.personName = person->name,
                     .allowance = total,
                     .left = checked::sub(total, report.spending)};
}

}  // namespace BudgetReport

}  // namespace copperwick
