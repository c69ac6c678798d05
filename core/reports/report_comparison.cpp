#include "core/reports/report_comparison.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "core/model/checked.h"
#include "core/model/money.h"
#include "core/reports/report_engine.h"

namespace copperwick {

int64_t CategoryChange::change() const {
    return checked::sub(current, previous);
}

std::optional<int64_t> CategoryChange::changeTenths() const {
    return Money::changeTenthsOfPercent(previous, current);
}

int64_t ReportComparison::spendingChange() const {
    return checked::sub(current.spending, previous.spending);
}

std::optional<int64_t> ReportComparison::spendingChangeTenths() const {
    return Money::changeTenthsOfPercent(previous.spending, current.spending);
}

int64_t ReportComparison::incomeChange() const {
    return checked::sub(current.income, previous.income);
}

ReportComparison ReportComparison::build(const Ledger& ledger, const ReportFilter& filter,
                                         LocalDate today) {
    return of(ReportEngine::build(ledger, filter, today),
              ReportEngine::build(ledger, filter.withSpan(filter.span.previous()), today));
}

ReportComparison ReportComparison::of(Report current, Report previous) {
    ReportComparison comparison{
        .current = std::move(current), .previous = std::move(previous), .categoryChanges = {}};
    auto& changes = comparison.categoryChanges;
    std::unordered_map<std::string, std::size_t> index;
    for (const auto& line : comparison.current.categories) {
        index.emplace(line.id, changes.size());
        changes.push_back({.id = line.id, .name = line.name, .current = line.amount});
    }
    for (const auto& line : comparison.previous.categories) {
        if (auto it = index.find(line.id); it != index.end())
            changes[it->second].previous = line.amount;
        else
            changes.push_back({.id = line.id, .name = line.name, .previous = line.amount});
    }
    const auto size = [](const CategoryChange& c) {
        const int64_t change = c.change();
        return change < 0 ? checked::neg(change) : change;
    };
    std::sort(changes.begin(), changes.end(),
              [&](const CategoryChange& a, const CategoryChange& b) {
                  if (size(a) != size(b))
                      return size(a) > size(b);
                  if (a.name != b.name)
                      return a.name < b.name;
                  return a.id < b.id;
              });
    return comparison;
}

}  // namespace copperwick
