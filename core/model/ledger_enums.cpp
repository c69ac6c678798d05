#include "core/model/ledger_enums.h"

namespace copperwick {

std::string_view label(TransactionKind kind) {
    switch (kind) {
        case TransactionKind::expense:
            return "Spending";
        case TransactionKind::income:
            return "Income";
        case TransactionKind::transfer:
            return "Transfer";
        case TransactionKind::unknown:
            return "Needs review";
    }
    return {};
}

std::string_view label(MatchMethod method) {
    switch (method) {
        case MatchMethod::manual:
            return "Set by you";
        case MatchMethod::userRule:
            return "Your rule";
        case MatchMethod::learned:
            return "Learned from you";
        case MatchMethod::builtInRule:
            return "Built-in rule";
        case MatchMethod::directory:
            return "Built-in merchant list";
        case MatchMethod::bankMerchant:
            return "Bank's merchant name";
        case MatchMethod::transferPair:
            return "Matching transfer";
        case MatchMethod::similar:
            return "Similar merchant";
        case MatchMethod::ai:
            return "Filed by Local AI";
        case MatchMethod::none:
            return "Not matched";
    }
    return {};
}

std::string_view label(AccountType type) {
    switch (type) {
        case AccountType::checking:
            return "Checking";
        case AccountType::savings:
            return "Savings";
        case AccountType::creditCard:
            return "Credit card";
        case AccountType::other:
            return "Other";
        case AccountType::cash:
            return "Cash wallet";
    }
    return {};
}

std::string_view label(TextMatch match) {
    switch (match) {
        case TextMatch::contains:
            return "contains";
        case TextMatch::startsWith:
            return "starts with";
        case TextMatch::exact:
            return "is exactly";
        case TextMatch::regex:
            return "matches pattern";
    }
    return {};
}

std::string_view label(AmountDirection direction) {
    switch (direction) {
        case AmountDirection::any:
            return "Money in or out";
        case AmountDirection::moneyIn:
            return "Money in only";
        case AmountDirection::moneyOut:
            return "Money out only";
    }
    return {};
}

std::string_view symbol(AccountType type) {
    switch (type) {
        case AccountType::checking:
            return "building.columns";
        case AccountType::savings:
            return "banknote";
        case AccountType::creditCard:
            return "creditcard";
        case AccountType::other:
            return "wallet.bifold";
        case AccountType::cash:
            return "banknote";
    }
    return {};
}

bool allows(AmountDirection direction, int64_t amount) {
    switch (direction) {
        case AmountDirection::any:
            return true;
        case AmountDirection::moneyIn:
            return amount > 0;
        case AmountDirection::moneyOut:
            return amount < 0;
    }
    return false;
}

}  // namespace copperwick
