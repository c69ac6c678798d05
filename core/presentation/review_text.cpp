#include "core/presentation/review_text.h"

#include "core/operations/classification.h"
#include "core/review/review_queue.h"

#include <fmt/format.h>

namespace copperwick::ReviewText {

std::string waitingCount(const std::vector<ReviewGroup>& groups) {
    return ReviewQueue::waitingText(groups);
}

std::string waitingCount(ReviewQueue::Waiting waiting) {
    return ReviewQueue::waitingText(waiting);
}

std::string transactionCount(std::size_t count) {
    return fmt::format("{} transaction{}", count, count == 1 ? "" : "s");
}

std::string filing(const Ledger& ledger, const std::optional<std::string>& merchantName,
                   const std::optional<Uuid>& categoryID, TransactionKind kind) {
    return filingText(ledger, merchantName, categoryID, kind);
}

std::string_view suggestionTitle(MatchMethod source) {
    return suggestionHeading(Suggestion{.source = source});
}

std::string_view suggestionSymbol(MatchMethod source) {
    return source == MatchMethod::ai ? "sparkles" : "lightbulb";
}

std::string suggestedRule(const Ledger& ledger, const RuleSuggestion& suggestion) {
    return fmt::format(
        "Text contains \u201C{}\u201D \u2192 {}", suggestion.pattern,
        filing(ledger, suggestion.merchantName, suggestion.categoryID, suggestion.kind));
}

std::string suggestedRuleBasis(const RuleSuggestion& suggestion) {
    return fmt::format("Based on {} corrections \u00B7 would match {} transactions",
                       suggestion.exampleIDs.size(), suggestion.matchCount);
}

std::optional<std::string> suggestedRuleConflicts(const RuleSuggestion& suggestion) {
    if (suggestion.conflictIDs.empty())
        return std::nullopt;
    return fmt::format("{} you filed differently (they won't change)",
                       suggestion.conflictIDs.size());
}

}  // namespace copperwick::ReviewText
