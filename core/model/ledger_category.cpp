#include "core/model/ledger_category.h"

#include <array>
#include <string_view>

namespace copperwick {

namespace {

constexpr std::array<std::string_view, 19> kExpenseNames{
    "Housing",    "Utilities",       "Groceries", "Dining",         "Transportation",
    "Shopping",   "Subscriptions",   "Health",    "Personal Care",  "Entertainment",
    "Travel",     "Education",       "Insurance", "Pets",           "Gifts & Donations",
    "Cash & ATM", "Fees & Interest", "Taxes",     "Other Spending",
};

constexpr std::array<std::string_view, 4> kIncomeNames{
    "Salary",
    "Interest & Rewards",
    "Refunds & Settlements",
    "Other Income",
};

template <std::size_t N>
void appendGroup(std::vector<LedgerCategory>& out, const std::array<std::string_view, N>& names,
                 CategoryGroup group) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        out.push_back({Uuid::random(), std::string(names[i]), group, static_cast<int>(i)});
    }
}

}  // namespace

std::vector<LedgerCategory> LedgerCategory::defaults() {
    std::vector<LedgerCategory> categories;
    categories.reserve(kExpenseNames.size() + kIncomeNames.size());
    appendGroup(categories, kExpenseNames, CategoryGroup::expense);
    appendGroup(categories, kIncomeNames, CategoryGroup::income);
    return categories;
}

}  // namespace copperwick
