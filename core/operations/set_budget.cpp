#include "core/operations/set_budget.h"

namespace copperwick {

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

}  // namespace copperwick
