#include "core/intelligence/style_examples.h"

#include <algorithm>
#include <optional>
#include <unordered_set>

#include "core/intelligence/suggestion_check.h"
#include "core/matching/key_similarity.h"
#include "core/matching/merchant_keys.h"
#include "core/matching/merchant_text.h"

namespace copperwick::StyleExamples {

namespace {

// A key this alike and up is the same kind of merchant.
constexpr int kLeastScore = 40;
// A bank category both lines share counts for this much similarity.
constexpr int kSameBankCategory = 25;

bool decidedByPerson(const LedgerTransaction& transaction) {
    return transaction.review == ReviewState::confirmed ||
           transaction.method == MatchMethod::userRule ||
           transaction.method == MatchMethod::learned;
}

std::optional<std::string> bankCategoryOf(const LedgerTransaction& transaction) {
    if (!transaction.bankCategory)
        return std::nullopt;
    return MerchantText::normalize(*transaction.bankCategory);
}

struct Scored {
    int score = 0;
    std::string text;
};

}  // namespace

std::vector<std::string> examples(const LedgerTransaction& transaction, const Ledger& ledger,
                                  std::size_t limit) {
    const std::string targetKey = MerchantKeys::of(transaction.rawDescription);
    const auto targetCategory = bankCategoryOf(transaction);

    std::vector<const LedgerTransaction*> candidates;
    for (const auto& candidate : ledger.transactions) {
        if (candidate.id != transaction.id && candidate.isActive() && decidedByPerson(candidate))
            candidates.push_back(&candidate);
    }
    // Newest first, so that a person's latest way of filing a merchant is
    // the one shown.
    std::sort(candidates.begin(), candidates.end(),
              [](const LedgerTransaction* a, const LedgerTransaction* b) {
                  if (a->date != b->date)
                      return a->date > b->date;
                  return a->id > b->id;
              });

    std::vector<Scored> found;
    std::unordered_set<std::string> seen;
    for (const LedgerTransaction* candidate : candidates) {
        const std::string key = MerchantKeys::of(candidate->rawDescription);
        if (key.empty() || !seen.insert(key).second)
            continue;
        int score = KeySimilarity::score(targetKey, key, 0);
        const auto candidateCategory = bankCategoryOf(*candidate);
        if (targetCategory && candidateCategory && *targetCategory == *candidateCategory)
            score += kSameBankCategory;
        if (score < kLeastScore)
            continue;
        const Merchant* merchant = ledger.merchant(candidate->merchantID);
        const std::string name = merchant ? merchant->name : MerchantText::titleCase(key);
        const LedgerCategory* category = ledger.category(candidate->categoryID);
        const std::string filedAs = category ? category->name : std::string(label(candidate->kind));
        found.push_back({score, "\u201c" +
                                    SuggestionCheck::redactDigits(
                                        MerchantText::normalize(candidate->rawDescription)) +
                                    "\u201d \u2192 " + name + ", " + filedAs});
    }
    std::sort(found.begin(), found.end(), [](const Scored& a, const Scored& b) {
        if (a.score != b.score)
            return a.score > b.score;
        return a.text < b.text;
    });
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < found.size() && i < limit; ++i)
        texts.push_back(std::move(found[i].text));
    return texts;
}

}  // namespace copperwick::StyleExamples
