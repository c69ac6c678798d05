#include "core/operations/zelle_choice.h"

#include <algorithm>

#include "core/model/text.h"
#include "core/operations/classification.h"
#include "core/operations/entry_error.h"
#include "core/operations/upsert_category.h"

namespace copperwick {

namespace {

using Kind = TransactionKind;
using Group = CategoryGroup;

// In the order of the enumeration.
constexpr std::array<ZelleChoiceTraits, 8> kTraits{{
    {"Bought something or paid someone back", Kind::expense, std::nullopt, true, Group::expense},
    {"A gift I sent", Kind::expense, "Gifts & Donations", false, Group::expense},
    {"Paying each other back and forth", Kind::expense, "Paying each other", false, Group::expense},
    {"Income (paid for work)", Kind::income, std::nullopt, true, Group::income},
    {"I sold something", Kind::income, "Other Income", false, Group::income},
    {"A gift I received", Kind::income, "Gifts received", false, Group::income},
    {"Paying me back", Kind::expense, std::nullopt, true, Group::expense},
    {"Don't count it", Kind::transfer, std::nullopt, false, Group::expense},
}};

}  // namespace

const ZelleChoiceTraits& traits(ZelleChoice choice) {
    return kTraits[static_cast<std::size_t>(choice)];
}

std::vector<ZelleChoice> zelleChoices(bool moneyIn) {
    using enum ZelleChoice;
    if (moneyIn)
        return {income, sold, giftReceived, payingMeBack, payingEachOther, dontCount};
    return {spending, giftSent, payingEachOther, dontCount};
}

bool asksAboutMoneyIn(const Ledger& ledger, const ZelleDecision& decision) {
    const LedgerTransaction* example =
        decision.ids.empty() ? nullptr : ledger.transaction(decision.ids.front());
    return example && example->amount > 0;
}

void checkZelleDecision(const Ledger& ledger, const ZelleDecision& decision) {
    const auto offered = zelleChoices(asksAboutMoneyIn(ledger, decision));
    if (std::find(offered.begin(), offered.end(), decision.choice) == offered.end())
        throw EntryError(EntryError::Case::choice);
    const ZelleChoiceTraits& choice = traits(decision.choice);
    const LedgerCategory* category = ledger.category(decision.categoryID);
    if (choice.needsCategory && (!category || category->group != choice.categoryGroup))
        throw EntryError(EntryError::Case::category);
}

LedgerDelta classifyZelle(Ledger& ledger, const ZelleDecision& decision, Instant now) {
    LedgerDelta delta;
    const ZelleChoiceTraits& choice = traits(decision.choice);
    std::optional<Uuid> categoryID = decision.categoryID;
    if (choice.fixedCategoryName) {
        const auto& categories = ledger.categories;
        const auto found = std::find_if(categories.begin(), categories.end(), [&](const auto& c) {
            return c.group == choice.categoryGroup &&
                   text::equalsIgnoringCase(c.name, *choice.fixedCategoryName);
        });
        if (found != categories.end()) {
            categoryID = found->id;
        } else {
            LedgerCategory made =
                newCategory(ledger, std::string(*choice.fixedCategoryName), choice.categoryGroup);
            categoryID = made.id;
            delta.merge(upsertCategory(ledger, std::move(made)));
        }
    }

    Classification classification;
    classification.ids = decision.ids;
    classification.merchantName = decision.merchantName;
    classification.kind = choice.kind;
    classification.categoryID = categoryID;
    classification.remember = decision.remember;
    classification.label = decision.label;
    delta.merge(classify(ledger, classification, now));
    return delta;
}

}  // namespace copperwick
