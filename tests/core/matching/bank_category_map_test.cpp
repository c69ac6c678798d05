#include "core/matching/bank_category_map.h"

#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "core/matching/merchant_text.h"

namespace copperwick {
namespace {

std::string categoryOf(const std::optional<std::string>& label) {
    return BankCategoryMap::categoryName(label).value_or("-");
}

TEST(BankCategoryMap, NormalizesTheBankLabel) {
    EXPECT_EQ(categoryOf("food & drink"), "Dining");
    EXPECT_EQ(categoryOf("  Food   &\tDrink "), "Dining");
    EXPECT_EQ(categoryOf("Gas/Automotive"), "Transportation");
    EXPECT_EQ(categoryOf("Fee/Interest Charge"), "Fees & Interest");
    EXPECT_EQ(categoryOf("Professional Services"), "Other Spending");
}

TEST(BankCategoryMap, UnsetOrUnknownGivesNothing) {
    EXPECT_EQ(categoryOf(std::nullopt), "-");
    EXPECT_EQ(categoryOf(""), "-");
    EXPECT_EQ(categoryOf("Food"), "-");
    EXPECT_EQ(categoryOf("FOOD & DRINKS"), "-");
}

// A label stored in any other form than normalize's could never be found.
TEST(BankCategoryMap, EveryLabelIsStoredNormalized) {
    ASSERT_EQ(BankCategoryMap::labels().size(), 33u);
    for (const auto& label : BankCategoryMap::labels()) {
        EXPECT_EQ(MerchantText::normalize(label.bankLabel), label.bankLabel);
        EXPECT_EQ(categoryOf(std::string(label.bankLabel)), label.categoryName);
    }
}

}  // namespace
}  // namespace copperwick
