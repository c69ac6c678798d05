#include "core/operations/upsert_category.h"

namespace copperwick {

LedgerDelta upsertCategory(Ledger& ledger, LedgerCategory category) {
    LedgerDelta delta;
    delta.change(RecordKind::category, category.id);
    for (std::size_t i = 0; i < ledger.categories.size(); ++i) {
        if (ledger.categories[i].id == category.id) {
            ledger.categories.set(i, std::move(category));
            return delta;
        }
    }
    ledger.categories.push_back(std::move(category));
    return delta;
}

}  // namespace copperwick
