#pragma once

// Runs the built-in rules against a transaction. The patterns are compiled
// once, on first use, and shared read-only; each thread keeps its own
// matchers over them, so `match` is safe on any thread.

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/matching/builtin_knowledge.h"
#include "core/model/ledger_enums.h"

namespace copperwick::BuiltInRuleSet {

// The first rule in table order that isn't in `disabled`, whose direction
// allows `amount` (signed cents; zero is neither in nor out), whose account
// list is empty or holds `accountType`, and whose pattern finds a match in
// `normalized` (the normalized view of a description). Null when none does.
// The result points into BuiltInKnowledge::rules() and lives as long as the
// process. Ids in `disabled` that no rule has are ignored.
[[nodiscard]] const BuiltInRule* match(std::string_view normalized, int64_t amount,
                                       std::optional<AccountType> accountType,
                                       const std::set<std::string>& disabled);

namespace detail {

// Upper-case ASCII texts one of which every match of `pattern` holds,
// whatever the case; nothing when the pattern is beyond this simple reading
// (classes, escapes, inline options, counted repeats, non-ASCII text). Lets a
// rule be passed over without running its regular expression.
[[nodiscard]] std::optional<std::vector<std::string>> requiredLiterals(std::string_view pattern);

}  // namespace detail

}  // namespace copperwick::BuiltInRuleSet
