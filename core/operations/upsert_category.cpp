#include "core/operations/upsert_category.h"

#include <algorithm>
#include <utility>

#include "core/model/text.h"
#include "core/operations/entry_error.h"

namespace copperwick {

LedgerCategory newCategory(const Ledger& ledger, std::string name, CategoryGroup group) {
    const auto inGroup =
        std::count_if(ledger.categories.begin(), ledger.categories.end(),
                      [&](const LedgerCategory& each) { return each.group == group; });
    return LedgerCategory{.id = Uuid::random(),
                          .name = std::move(name),
                          .group = group,
                          .colorIndex = static_cast<int>(inGroup)};
}

LedgerCategory categoryEntered(const Ledger& ledger, LedgerCategory category) {
    category.name = std::string(text::trimmed(category.name));
    if (category.name.empty())
        throw EntryError(EntryError::Case::name, "Enter the category's name.");
    const LedgerCategory* clash = ledger.categoryNamed(category.name);
    if (clash && clash->id != category.id)
        throw EntryError(EntryError::Case::nameTaken,
                         "There is already a category called " + clash->name + ".");
    return category;
}

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
