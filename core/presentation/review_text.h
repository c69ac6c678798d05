#pragma once

// The words of the review queue, as the Review screen and `copperwick
// review` both say them: how much waits, how a filing reads, and the lines
// of a suggested rule. Pure functions of values, safe on any thread.

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/ledger.h"
#include "core/review/review_queue.h"
#include "core/review/rule_suggester.h"

namespace copperwick::ReviewText {

inline constexpr std::string_view kAllCaughtUp = "All caught up";
inline constexpr std::string_view kAllCaughtUpDetail =
    "Your transactions are ready to explore. New imports that need you will appear here.";
inline constexpr std::string_view kStalePendingTitle = "Pending charges that may never have posted";
inline constexpr std::string_view kStalePendingDetail =
    "These are still pending, but newer files for the same account don't include them (or "
    "they're over two weeks old). Pending charges never count in totals. Remove the ones that "
    "disappeared.";
inline constexpr std::string_view kSuggestedRulesDetail =
    "You've corrected these the same way more than once. A rule would do it for you, including "
    "in future imports.";

// "3 transactions in 2 groups need you."
[[nodiscard]] std::string waitingCount(const std::vector<ReviewGroup>& groups);
[[nodiscard]] std::string waitingCount(ReviewQueue::Waiting waiting);

// "1 transaction", "3 transactions".
[[nodiscard]] std::string transactionCount(std::size_t count);

// "Merchant, Category, Spending": a filing in words, leaving out what isn't
// there (a category that has gone, no merchant).
[[nodiscard]] std::string filing(const Ledger& ledger,
                                 const std::optional<std::string>& merchantName,
                                 const std::optional<Uuid>& categoryID, TransactionKind kind);

// "Suggested", or "Local AI suggests" for the model's own suggestion.
[[nodiscard]] std::string_view suggestionTitle(MatchMethod source);
// The symbol beside that title.
[[nodiscard]] std::string_view suggestionSymbol(MatchMethod source);

// "Text contains “ACME HARDWARE” → Acme Hardware, Shopping, Spending".
[[nodiscard]] std::string suggestedRule(const Ledger& ledger, const RuleSuggestion& suggestion);
// "Based on 3 corrections · would match 7 transactions".
[[nodiscard]] std::string suggestedRuleBasis(const RuleSuggestion& suggestion);
// "2 you filed differently (they won't change)"; absent without conflicts.
[[nodiscard]] std::optional<std::string> suggestedRuleConflicts(const RuleSuggestion& suggestion);

}  // namespace copperwick::ReviewText
