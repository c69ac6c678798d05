#include "core/operations/set_budget.h"

#include <gtest/gtest.h>

#include "tests/support/refusal.h"

namespace copperwick {
namespace {

TEST(BudgetEntered, BlankAndZeroAreNoneAndEverythingElseAnAmountOfZeroOrMore) {
    EXPECT_EQ(budgetEntered(" "), std::nullopt);
    EXPECT_EQ(budgetEntered("0"), 0);
    EXPECT_EQ(budgetEntered("1,500.00"), 150000);
    for (const std::string_view text : {"-5", "abc", "12.345"})
        EXPECT_EQ(testing::refusal([&] { return budgetEntered(text); }),
                  "\u201C" + std::string(text) +
                      "\u201D isn't an amount. Use a number like 250 or 250.00.")
            << text;
}

}  // namespace
}  // namespace copperwick
