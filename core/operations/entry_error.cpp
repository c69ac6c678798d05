#include "core/operations/entry_error.h"

#include "core/model/money.h"

namespace copperwick {

std::string_view EntryError::text(Case c) {
    switch (c) {
        case Case::account:
            return "Choose an active account in the same currency.";
        case Case::amount:
            return "Enter a nonzero amount with no more than two decimal places.";
        case Case::description:
            return "Enter a person, business, or description.";
        case Case::category:
            return "Choose a category that matches spending or income.";
        case Case::unavailable:
            return "This transaction can no longer be changed.";
        case Case::transfer:
            return "Choose an unpaired, posted transaction with the opposite amount in the other "
                   "account.";
        case Case::splits:
            return "Use at least two spending parts, with the same direction, that add up exactly "
                   "to the "
                   "transaction.";
        case Case::reason:
            return "Add a brief reason for this correction.";
        case Case::savingsGoal:
            return "Enter a positive monthly goal, or leave it empty.";
        case Case::allowance:
            return "Enter a positive monthly allowance, or leave it empty.";
    }
    return {};
}

bool isEnterableAmount(int64_t amount) {
    return amount != 0 && amount >= -Money::kLargestAmount && amount <= Money::kLargestAmount;
}

}  // namespace copperwick
