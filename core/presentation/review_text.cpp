#include "core/presentation/review_text.h"

#include <fmt/format.h>

namespace copperwick::ReviewText {

std::string waitingCount(const std::vector<ReviewGroup>& groups) {
    std::size_t lines = 0;
    for (const auto& group : groups)
        lines += group.transactionIDs.size();
    return fmt::format("{} transaction{} in {} group{} need{} you.", lines, lines == 1 ? "" : "s",
                       groups.size(), groups.size() == 1 ? "" : "s", lines == 1 ? "s" : "");
}

std::string transactionCount(std::size_t count) {
    return fmt::format("{} transaction{}", count, count == 1 ? "" : "s");
}

std::string filing(const Ledger& ledger, const std::optional<std::string>& merchantName,
                   const std::optional<Uuid>& categoryID, TransactionKind kind) {
    std::string text;
    const auto add = [&](std::string_view part) {
        if (!part.empty())
            text += (text.empty() ? "" : ", ") + std::string(part);
    };
    if (merchantName)
        add(*merchantName);
    if (const LedgerCategory* category = ledger.category(categoryID))
        add(category->name);
    add(label(kind));
    return text;
}

std::string_view suggestionTitle(MatchMethod source) {
    return source == MatchMethod::ai ? "Local AI suggests" : "Suggested";
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
