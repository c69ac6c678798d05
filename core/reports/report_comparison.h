#pragma once

// A period against the one just before it, category by category, with every
// other choice of the filter kept, so a person's scope compares with that
// person's own last period. Two report builds; pure.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/model/ledger.h"
#include "core/reports/report.h"

namespace copperwick {

struct CategoryChange {
    std::string id;  // the CategoryLine id
    std::string name;
    int64_t current = 0;
    int64_t previous = 0;

    [[nodiscard]] int64_t change() const;
    // Absent when there was nothing before to compare with.
    [[nodiscard]] std::optional<int64_t> changeTenths() const;

    friend bool operator==(const CategoryChange&, const CategoryChange&) = default;
};

struct ReportComparison {
    Report current;
    Report previous;
    std::vector<CategoryChange> categoryChanges;  // largest move first

    [[nodiscard]] static ReportComparison build(const Ledger& ledger, const ReportFilter& filter,
                                                LocalDate today);
    // Any two reports of one scope, `previous` standing for the earlier one.
    [[nodiscard]] static ReportComparison of(Report current, Report previous);

    [[nodiscard]] int64_t spendingChange() const;
    [[nodiscard]] int64_t incomeChange() const;
    // The spending's change against the period before, in tenths of a percent;
    // absent when nothing was spent before.
    [[nodiscard]] std::optional<int64_t> spendingChangeTenths() const;

    friend bool operator==(const ReportComparison&, const ReportComparison&) = default;
};

}  // namespace copperwick
