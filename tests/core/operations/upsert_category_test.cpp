#include "core/operations/upsert_category.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"
#include "tests/support/refusal.h"

namespace copperwick {
namespace {

using testing::refusal;

// Categories are looked up by name, so no two may share one in any case.
TEST(CategoryEntered, RefusesABlankNameAndANameTakenInAnyCase) {
    testing::LedgerBuilder builder;
    const Ledger& ledger = builder.ledger();
    const LedgerCategory dining = *ledger.categoryNamed("Dining");
    const auto named = [&](LedgerCategory category, std::string name) {
        category.name = std::move(name);
        return category;
    };
    const LedgerCategory fresh = newCategory(ledger, "", CategoryGroup::expense);
    const struct {
        LedgerCategory category;
        std::string words;
    } cases[] = {
        {named(fresh, "Kids"), "accepted"},
        {named(fresh, "  "), "Enter the category's name."},
        {named(fresh, "dining"), "There is already a category called Dining."},
        {named(fresh, " DINING "), "There is already a category called Dining."},
        {named(dining, "DINING"), "accepted"},  // its own name in another case
        {named(dining, "Groceries"), "There is already a category called Groceries."},
    };
    for (const auto& [category, words] : cases)
        EXPECT_EQ(refusal([&] { return categoryEntered(ledger, category); }), words)
            << category.name;
    EXPECT_EQ(categoryEntered(ledger, named(fresh, " Kids ")).name, "Kids");
}

TEST(NewCategory, TakesTheNextColourOfItsGroup) {
    testing::LedgerBuilder builder;
    // The starter ledger has nineteen spending and four income categories.
    EXPECT_EQ(newCategory(builder.ledger(), "Kids", CategoryGroup::expense).colorIndex, 19);
    EXPECT_EQ(newCategory(builder.ledger(), "Side gigs", CategoryGroup::income).colorIndex, 4);
}

}  // namespace
}  // namespace copperwick
