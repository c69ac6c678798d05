#pragma once

// Family budgets against what a report says was spent, for periods of any
// length, and the two figures that are only told for whole months: the
// household's savings goal and one person's allowance. Pure functions of the
// ledger and a finished Report; they read no transaction.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/model/date_span.h"
#include "core/model/ledger.h"
#include "core/reports/report.h"

namespace copperwick {

struct BudgetLine {
    Uuid categoryID;  // also the line's id
    std::string name;
    int colorIndex = 0;
    int64_t budgeted = 0;  // the monthly amount times the months the period touches
    int64_t spent = 0;     // the category's amount in the report, after refunds

    [[nodiscard]] int64_t remaining() const;
    // Spending exactly the budget isn't over.
    [[nodiscard]] bool isOver() const { return budgeted < spent; }
    // Spent as tenths of a percent of budgeted; absent with nothing budgeted.
    [[nodiscard]] std::optional<int64_t> usedTenths() const;
    // "25.00 of 100.00 · 75.00 left" or "5.00 over", always in dollars.
    [[nodiscard]] std::string summary() const;

    friend bool operator==(const BudgetLine&, const BudgetLine&) = default;
};

// The household's monthly savings goal over a whole-month period.
struct SavingsGoal {
    int64_t months = 0;
    int64_t saved = 0;   // income minus spending; may be negative
    int64_t target = 0;  // the goal times the months
    std::string currency;

    [[nodiscard]] bool isReached() const { return saved >= target; }
    // "Savings goal reached" or "Savings goal".
    [[nodiscard]] std::string title() const;
    // How far the bar is filled: saved, kept between 0 and target.
    [[nodiscard]] int64_t barValue() const;

    static constexpr std::string_view kCaption =
        "Filed, posted income minus spending for complete months. Pending and review items are "
        "excluded. This is not a bank balance. Set your monthly goal in Budgets.";

    friend bool operator==(const SavingsGoal&, const SavingsGoal&) = default;
};

// One selected person's spending allowance over a whole-month period.
struct Allowance {
    std::string personName;
    int64_t allowance = 0;  // monthly allowance times the months
    int64_t left = 0;       // allowance minus spending; negative when overspent

    friend bool operator==(const Allowance&, const Allowance&) = default;
};

namespace BudgetReport {

// One line per budget whose category still exists, sorted by name in plain
// text order (so "Dining" before "dining").
[[nodiscard]] std::vector<BudgetLine> lines(const Ledger& ledger, const Report& report);

// Starts on a 1st and ends on the last day of a month.
[[nodiscard]] bool coversWholeMonths(const DateSpan& span);

// The words above the budget lines for a period: none for one whole month.
[[nodiscard]] std::optional<std::string> periodNote(const DateSpan& span);

// Absent unless a goal of at least one cent was set in the report's currency,
// the report covers the whole household, and the period is whole months.
[[nodiscard]] std::optional<SavingsGoal> savingsGoal(const Ledger& ledger, const Report& report);

// Absent unless the scope is exactly one person by assignment, that person
// has an allowance, the period is whole months and the product fits.
[[nodiscard]] std::optional<Allowance> allowance(const Ledger& ledger, const Report& report);

}  // namespace BudgetReport

}  // namespace copperwick
