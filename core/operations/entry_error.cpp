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
        case Case::name:
            return "Enter a name.";
        case Case::nameTaken:
            return "That name is already taken.";
        case Case::currency:
            return "A currency is three letters, such as USD.";
        case Case::lastFour:
            return "The last four are four digits.";
        case Case::users:
            return "Choose the account's users from the household.";
        case Case::timeZone:
            return "Choose a time zone the calendar knows, such as America/Los_Angeles.";
        case Case::paymentService:
            return "Choose from zelle, venmo, cashApp, paypal, appleCash.";
        case Case::pattern:
            return "Enter the bank text to look for.";
        case Case::invalidPattern:
            return "That pattern isn't valid.";
        case Case::choice:
            return "Choose what this payment was for.";
        case Case::budget:
            return "Enter a monthly budget of zero or more, such as 250 or 250.00.";
        case Case::entryForm:
            return "Choose an account and enter a valid date and positive amount.";
        case Case::note:
            return "This note can't be set aside; it goes when its cause does.";
        case Case::walletForm:
            return "Enter a wallet name, valid date, and nonnegative opening cash.";
    }
    return {};
}

bool isEnterableAmount(int64_t amount) {
    return amount != 0 && amount >= -Money::kLargestAmount && amount <= Money::kLargestAmount;
}

}  // namespace copperwick
