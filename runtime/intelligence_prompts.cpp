#include "runtime/intelligence_prompts.h"

#include <algorithm>
#include <optional>

#include "core/intelligence/finance_queries.h"
#include "core/intelligence/style_examples.h"
#include "core/intelligence/suggestion_check.h"
#include "core/matching/merchant_keys.h"
#include "core/model/date_text.h"
#include "core/model/enum_text.h"
#include "runtime/on_device_model.h"

namespace copperwick::IntelligencePrompts {

namespace {

// How many of a person's own filings the model sees as examples.
constexpr std::size_t kStyleExamples = 6;

std::string joined(const std::vector<std::string>& items, std::string_view separator) {
    std::string text;
    for (const auto& item : items) {
        if (!text.empty())
            text += separator;
        text += item;
    }
    return text;
}

std::string categoryNames(const Ledger& ledger, CategoryGroup group) {
    std::vector<std::string> names;
    for (const auto& category : ledger.categories) {
        if (category.group == group)
            names.push_back(category.name);
    }
    return joined(names, ", ");
}

// The category's name, or the kind's word when there is no category.
std::string categoryOrKind(const Ledger& ledger, const std::optional<Uuid>& categoryID,
                           TransactionKind kind) {
    if (const LedgerCategory* category = ledger.category(categoryID))
        return category->name;
    return std::string(label(kind));
}

std::string plural(std::size_t count, std::string_view word) {
    return std::to_string(count) + " " + std::string(word) + (count == 1 ? "" : "s");
}

}  // namespace

std::string merchantPrompt(const LedgerTransaction& transaction, const ReviewGroup& group,
                           const Ledger& ledger) {
    std::vector<std::string> lines{"Identify this transaction.",
                                   SuggestionCheck::describe(transaction, ledger),
                                   "Times seen: " + std::to_string(group.transactionIDs.size())};
    if (transaction.suggestion && transaction.suggestion->source != MatchMethod::ai) {
        const Suggestion& own = *transaction.suggestion;
        lines.push_back("Copperwick's own guess (may be wrong): " +
                        own.merchantName.value_or("unknown merchant") + ", " +
                        categoryOrKind(ledger, own.categoryID, own.kind) + ". " + own.reason);
    }
    const auto examples = StyleExamples::examples(transaction, ledger, kStyleExamples);
    if (!examples.empty()) {
        lines.emplace_back("How this person filed similar transactions:");
        for (const auto& example : examples)
            lines.push_back("- " + example);
    }
    lines.push_back("Allowed expense categories: " + categoryNames(ledger, CategoryGroup::expense));
    lines.push_back("Allowed income categories: " + categoryNames(ledger, CategoryGroup::income));
    lines.emplace_back(
        "For a transfer between the person's own accounts, use kind transfer and category none.");
    return joined(lines, "\n");
}

std::string suggestionEvidence(const Suggestion& suggestion, const Ledger& ledger) {
    return "Local AI suggests " + suggestion.merchantName.value_or("an unknown merchant") + " (" +
           categoryOrKind(ledger, suggestion.categoryID, suggestion.kind) +
           "). Check before approving.";
}

std::string lookStatus(std::size_t filed, std::size_t suggested) {
    std::vector<std::string> parts;
    if (filed >= 1)
        parts.push_back("Local AI filed " + plural(filed, "transaction") +
                        ". They're marked so you can check them in Review, and Undo reverses "
                        "the whole run.");
    if (suggested >= 1)
        parts.push_back("It suggested merchants for " + plural(suggested, "group") +
                        "; approve them in Review.");
    return joined(parts, " ");
}

std::string lookProgress(std::size_t number, std::size_t total) {
    return "Local AI is looking at " + std::to_string(number) + " of " + std::to_string(total) +
           "\u2026";
}

std::string tidyPrompt(const Merchant& merchant) {
    const std::string bankText = merchant.keys.empty() ? merchant.name : merchant.keys.front();
    return "Current name: " + merchant.name +
           "\nBank text: " + SuggestionCheck::redactDigits(bankText) +
           "\nGive the merchant's tidy name.";
}

std::string explanationFacts(const LedgerTransaction& transaction, const Ledger& ledger) {
    std::vector<std::string> lines{SuggestionCheck::describe(transaction, ledger),
                                   "Date: " + DateText::medium(transaction.date)};
    const std::string key = MerchantKeys::of(transaction.rawDescription);
    if (!key.empty()) {
        std::size_t count = 0;
        std::optional<LocalDate> first;
        for (const auto& other : ledger.transactions) {
            if (!other.isActive() || MerchantKeys::of(other.rawDescription) != key)
                continue;
            ++count;
            if (!first || other.date < *first)
                first = other.date;
        }
        if (count >= 2)
            lines.push_back("The same bank text appears " + std::to_string(count) +
                            " times, first on " + DateText::medium(*first) + ".");
    }
    if (const Merchant* merchant = ledger.merchant(transaction.merchantID))
        lines.push_back("Filed under merchant: " + merchant->name);
    if (const LedgerCategory* category = ledger.category(transaction.categoryID))
        lines.push_back("Filed in category: " + category->name);
    return joined(lines, "\n");
}

std::string explainPrompt(const std::string& facts) {
    return "Explain this charge.\n" + facts;
}

std::string explainFailure(std::string_view error) {
    return "Local AI couldn't explain this charge (" + std::string(error) + ").";
}

std::string narrativeKey(const ReportFilter& filter, int64_t revision) {
    const auto sortedTexts = [](const std::set<Uuid>& ids) {
        std::vector<std::string> texts;
        for (const auto& id : ids)
            texts.push_back(id.text());
        std::sort(texts.begin(), texts.end());
        return joined(texts, ",");
    };
    const auto flag = [](bool value) { return std::string(value ? "true" : "false"); };
    return joined({flag(filter.wholeHousehold), std::string(rawValue(filter.peopleMode)),
                   flag(filter.includeShared), flag(filter.includeUnassigned), filter.currency,
                   std::to_string(revision), filter.span.start.iso(), filter.span.end.iso(),
                   sortedTexts(filter.personIDs), sortedTexts(filter.accountIDs)},
                  "|");
}

std::string narrativePrompt(const std::vector<ReportFact>& facts) {
    std::vector<std::string> lines;
    for (const auto& fact : facts)
        lines.push_back(fact.id + ": " + fact.text);
    return "Facts:\n" + joined(lines, "\n") +
           "\n\nWrite three to five bullets about what stands out. Use only these facts.";
}

std::string narrativeFailure(std::string_view error) {
    return "Local AI couldn't write a summary (" + std::string(error) + ").";
}

std::string askInstructions(const Ledger& ledger, LocalDate today) {
    return std::string(OnDeviceModelText::kAnswerBase) + FinanceQueries::context(ledger, today);
}

std::string askFailure(std::string_view error) {
    return "Local AI couldn't answer that (" + std::string(error) + ").";
}

std::string lookupsHeading(std::size_t count) {
    return "How Copperwick worked this out (" + plural(count, "lookup") + ")";
}

std::string layoutFailure(std::string_view error) {
    return "Local AI couldn't read this file (" + std::string(error) + ").";
}

}  // namespace copperwick::IntelligencePrompts
