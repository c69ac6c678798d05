#include "core/operations/set_budget.h"

#include <string>

#include "core/model/money.h"
#include "core/model/text.h"
#include "core/operations/entry_error.h"

namespace copperwick {

std::optional<int64_t> budgetEntered(std::string_view text) {
    if (text::trimmedSpaces(text).empty())
        return std::nullopt;
    const auto amount = Money::parseCents(text);
    if (!amount || *amount < 0)
        throw EntryError(EntryError::Case::budget,
                         "\u201C" + std::string(text) +
                             "\u201D isn't an amount. Use a number like 250 or 250.00.");
    return amount;
}

LedgerDelta setBudget(Ledger& ledger, const Uuid& categoryID,
                      std::optional<int64_t> monthlyAmount) {
    LedgerDelta delta;
    std::optional<std::size_t> found;
    for (std::size_t i = 0; i < ledger.budgets.size(); ++i) {
        if (ledger.budgets[i].categoryID == categoryID) {
            found = i;
            break;
        }
    }
    if (!monthlyAmount || *monthlyAmount < 1) {
        if (found) {
            delta.remove(RecordKind::budget, ledger.budgets[*found].id);
            ledger.budgets.erase(*found);
        }
        return delta;
    }
    if (found) {
        ledger.budgets.update(*found,
                              [&](Budget& budget) { budget.monthlyAmount = *monthlyAmount; });
        delta.change(RecordKind::budget, ledger.budgets[*found].id);
    } else {
        const Budget budget{
            .id = Uuid::random(), .categoryID = categoryID, .monthlyAmount = *monthlyAmount};
        ledger.budgets.push_back(budget);
        delta.change(RecordKind::budget, budget.id);
    }
    return delta;
}

std::optional<int64_t> monthlyBudget(const Ledger& ledger, const Uuid& categoryID) {
    for (const auto& budget : ledger.budgets) {
        if (budget.categoryID == categoryID)
            return budget.monthlyAmount;
    }
    return std::nullopt;
}

}  // namespace copperwick
