#pragma once

// The enumerations of the ledger's records. Each is persisted as its raw text
// (the case name, see enum_text.h); `label` is what screens show.

#include <cstdint>
#include <string_view>

#include "core/model/enum_text.h"

namespace copperwick {

// What a transaction is, for every figure: spending, income, a move between
// the household's own accounts, or not yet known.
enum class TransactionKind {
    expense,
    income,
    transfer,
    unknown,
};

enum class TransactionStatus {
    posted,
    pending,
};

// How a transaction's present filing was reached; the order is the order of
// trust the screens show.
enum class MatchMethod {
    manual,
    userRule,
    learned,
    builtInRule,
    directory,
    bankMerchant,
    transferPair,
    similar,
    ai,
    none,
};

// Whether a person still has to look. `confirmed` means set by hand, which
// protects the transaction from all automatic matching.
enum class ReviewState {
    confirmed,
    automatic,
    suggested,
    unresolved,
};

enum class AccountType {
    checking,
    savings,
    creditCard,
    other,
    cash,
};

enum class CategoryGroup {
    expense,
    income,
};

// How a rule's pattern is applied to bank text.
enum class TextMatch {
    contains,
    startsWith,
    exact,
    regex,
};

// Which signs of amount a rule applies to.
enum class AmountDirection {
    any,
    moneyIn,
    moneyOut,
};

[[nodiscard]] std::string_view label(TransactionKind kind);
[[nodiscard]] std::string_view label(MatchMethod method);
[[nodiscard]] std::string_view label(AccountType type);
[[nodiscard]] std::string_view label(TextMatch match);
[[nodiscard]] std::string_view label(AmountDirection direction);

// The name of the symbol image that stands for the account type.
[[nodiscard]] std::string_view symbol(AccountType type);

// Whether a rule limited to `direction` applies to `amount`. Zero is neither
// money in nor money out, so only `any` lets it through.
[[nodiscard]] bool allows(AmountDirection direction, int64_t amount);

// Suggested and unresolved transactions are the ones waiting for a person.
[[nodiscard]] constexpr bool isWaiting(ReviewState state) {
    return state == ReviewState::suggested || state == ReviewState::unresolved;
}

template <>
struct EnumTraits<TransactionKind> {
    static constexpr std::array<std::pair<TransactionKind, std::string_view>, 4> cases{{
        {TransactionKind::expense, "expense"},
        {TransactionKind::income, "income"},
        {TransactionKind::transfer, "transfer"},
        {TransactionKind::unknown, "unknown"},
    }};
};

template <>
struct EnumTraits<TransactionStatus> {
    static constexpr std::array<std::pair<TransactionStatus, std::string_view>, 2> cases{{
        {TransactionStatus::posted, "posted"},
        {TransactionStatus::pending, "pending"},
    }};
};

template <>
struct EnumTraits<MatchMethod> {
    static constexpr std::array<std::pair<MatchMethod, std::string_view>, 10> cases{{
        {MatchMethod::manual, "manual"},
        {MatchMethod::userRule, "userRule"},
        {MatchMethod::learned, "learned"},
        {MatchMethod::builtInRule, "builtInRule"},
        {MatchMethod::directory, "directory"},
        {MatchMethod::bankMerchant, "bankMerchant"},
        {MatchMethod::transferPair, "transferPair"},
        {MatchMethod::similar, "similar"},
        {MatchMethod::ai, "ai"},
        {MatchMethod::none, "none"},
    }};
};

template <>
struct EnumTraits<ReviewState> {
    static constexpr std::array<std::pair<ReviewState, std::string_view>, 4> cases{{
        {ReviewState::confirmed, "confirmed"},
        {ReviewState::automatic, "automatic"},
        {ReviewState::suggested, "suggested"},
        {ReviewState::unresolved, "unresolved"},
    }};
};

template <>
struct EnumTraits<AccountType> {
    static constexpr std::array<std::pair<AccountType, std::string_view>, 5> cases{{
        {AccountType::checking, "checking"},
        {AccountType::savings, "savings"},
        {AccountType::creditCard, "creditCard"},
        {AccountType::other, "other"},
        {AccountType::cash, "cash"},
    }};
};

template <>
struct EnumTraits<CategoryGroup> {
    static constexpr std::array<std::pair<CategoryGroup, std::string_view>, 2> cases{{
        {CategoryGroup::expense, "expense"},
        {CategoryGroup::income, "income"},
    }};
};

template <>
struct EnumTraits<TextMatch> {
    static constexpr std::array<std::pair<TextMatch, std::string_view>, 4> cases{{
        {TextMatch::contains, "contains"},
        {TextMatch::startsWith, "startsWith"},
        {TextMatch::exact, "exact"},
        {TextMatch::regex, "regex"},
    }};
};

template <>
struct EnumTraits<AmountDirection> {
    static constexpr std::array<std::pair<AmountDirection, std::string_view>, 3> cases{{
        {AmountDirection::any, "any"},
        {AmountDirection::moneyIn, "moneyIn"},
        {AmountDirection::moneyOut, "moneyOut"},
    }};
};

}  // namespace copperwick
