#include "core/matching/bank_category_map.h"

#include <algorithm>
#include <array>

#include "core/matching/merchant_text.h"

namespace copperwick::BankCategoryMap {

namespace {

// Labels as they read after MerchantText::normalize. Few enough that a walk
// costs less than the normalizing that comes before it.
constexpr std::array<Label, 33> kLabels = {{
    {"FOOD & DRINK", "Dining"},
    {"RESTAURANTS", "Dining"},
    {"DINING", "Dining"},
    {"RESTAURANT", "Dining"},
    {"GROCERIES", "Groceries"},
    {"GROCERY", "Groceries"},
    {"SUPERMARKETS", "Groceries"},
    {"GAS", "Transportation"},
    {"GAS/AUTOMOTIVE", "Transportation"},
    {"AUTOMOTIVE", "Transportation"},
    {"TRANSPORTATION", "Transportation"},
    {"TRAVEL", "Travel"},
    {"OTHER TRAVEL", "Travel"},
    {"AIRFARE", "Travel"},
    {"LODGING", "Travel"},
    {"SHOPPING", "Shopping"},
    {"MERCHANDISE", "Shopping"},
    {"HOME", "Shopping"},
    {"BILLS & UTILITIES", "Utilities"},
    {"UTILITIES", "Utilities"},
    {"PHONE/CABLE", "Utilities"},
    {"ENTERTAINMENT", "Entertainment"},
    {"HEALTH & WELLNESS", "Health"},
    {"MEDICAL", "Health"},
    {"HEALTH CARE", "Health"},
    {"HEALTHCARE", "Health"},
    {"PERSONAL", "Personal Care"},
    {"EDUCATION", "Education"},
    {"GIFTS & DONATIONS", "Gifts & Donations"},
    {"FEES & ADJUSTMENTS", "Fees & Interest"},
    {"FEE/INTEREST CHARGE", "Fees & Interest"},
    {"INSURANCE", "Insurance"},
    {"PROFESSIONAL SERVICES", "Other Spending"},
}};

}  // namespace

std::span<const Label> labels() {
    return kLabels;
}

std::optional<std::string> categoryName(const std::optional<std::string>& bankCategory) {
    if (!bankCategory)
        return std::nullopt;
    const std::string label = MerchantText::normalize(*bankCategory);
    const auto found = std::ranges::find(kLabels, std::string_view(label), &Label::bankLabel);
    if (found == kLabels.end())
        return std::nullopt;
    return std::string(found->categoryName);
}

}  // namespace copperwick::BankCategoryMap
