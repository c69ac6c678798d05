#pragma once

// What the system knows before a person has taught it anything: the rules
// that read a transaction's kind and category off the shape of bank text, and
// the directory of merchants with the phrases banks print for them. Fixed
// data, the same on every installation; nothing here changes at run time. The
// tables are built once on first use and then read from any thread.
//
// Table order is meaningful in both: it is the rules' precedence, and it
// breaks ties between directory phrases of equal length.

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/model/ledger_enums.h"

namespace copperwick {

// One built-in rule. A value: copyable, equatable, and hashable by `id`,
// which is what a ledger stores to switch the rule off.
struct BuiltInRule {
    std::string id;       // stable slug, never shown
    std::string name;     // the label a person sees
    std::string pattern;  // ICU regular expression over normalized text, case-insensitive
    AmountDirection direction = AmountDirection::any;
    std::vector<AccountType> accountTypes;  // empty: every account, and an unknown one
    TransactionKind kind = TransactionKind::unknown;
    std::optional<std::string> categoryName;  // resolved by name; unset for transfers

    friend bool operator==(const BuiltInRule&, const BuiltInRule&) = default;
};

// The rule's reach and outcome, as the list of built-in rules reads:
// "Money out only, Checking account, Credit card → Spending, Fees & Interest".
// A rule for every kind of account says "Any account".
[[nodiscard]] std::string describeBuiltInRule(const BuiltInRule& rule);

// One merchant of the directory. `category` is a category's name, resolved
// against the ledger when used. A phrase may end in "~": it may then run on
// into a longer word, and the "~" itself is not part of the text searched.
// A value: copyable, equatable and hashable.
struct DirectoryEntry {
    std::string name;
    std::string category;
    std::vector<std::string> phrases;

    friend bool operator==(const DirectoryEntry&, const DirectoryEntry&) = default;
};

namespace BuiltInKnowledge {

// The 12 built-in rules, in order of precedence.
[[nodiscard]] const std::vector<BuiltInRule>& rules();

// The 275 merchants of the directory, 392 phrases in all, in table order.
[[nodiscard]] const std::vector<DirectoryEntry>& merchants();

// What stands under the built-in rules: "Plus 275 well-known merchants
// (Starbucks, Amazon, Safeway, Netflix…) with a default category. Your own
// choices always win."
[[nodiscard]] std::string directoryText();

}  // namespace BuiltInKnowledge

}  // namespace copperwick

template <>
struct std::hash<copperwick::BuiltInRule> {
    [[nodiscard]] std::size_t operator()(const copperwick::BuiltInRule& rule) const noexcept {
        return std::hash<std::string>{}(rule.id);
    }
};

template <>
struct std::hash<copperwick::DirectoryEntry> {
    [[nodiscard]] std::size_t operator()(const copperwick::DirectoryEntry& entry) const noexcept;
};
