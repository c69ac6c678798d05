#include "core/review/rule_preview.h"

#include <algorithm>
#include <map>

#include "core/matching/matcher.h"
#include "core/matching/merchant_text.h"

namespace copperwick {

namespace {

// A matcher that knows one rule and nothing else: all that is asked of it is
// whether the rule matches.
Matcher ruleAlone(const Rule& rule, const std::vector<Account>& accounts) {
    return Matcher({rule}, {}, {}, accounts, {}, {}, {});
}

}  // namespace

RulePreview RulePreview::compute(const Rule& draft, const Ledger& ledger,
                                 std::optional<std::size_t> position) {
    Rule rule = draft;
    rule.isEnabled = true;
    const auto accounts = ledger.accounts.toVector();
    const Matcher alone = ruleAlone(rule, accounts);

    std::vector<Rule> others;
    for (auto& other : orderedRules(ledger)) {
        if (other.id != rule.id)
            others.push_back(std::move(other));
    }
    const std::size_t place = std::min(position.value_or(0), others.size());
    std::vector<std::pair<std::string, Matcher>> ahead;
    for (std::size_t i = 0; i < place; ++i)
        ahead.emplace_back(others[i].name, ruleAlone(others[i], accounts));

    Ledger withRule = ledger;
    withRule.rules.eraseIf([&](const Rule& r) { return r.id == rule.id; });
    withRule.rules.push_back(rule);
    std::vector<Uuid> order;
    for (const auto& other : others)
        order.push_back(other.id);
    order.insert(order.begin() + static_cast<std::ptrdiff_t>(place), rule.id);
    withRule.settings.update([&](LedgerSettings& settings) { settings.ruleOrder = order; });
    const Matcher full(withRule);

    // Only the lines the rule matches need an order, and they are few.
    std::vector<std::pair<const LedgerTransaction*, std::string>> matched;
    for (const auto& line : ledger.transactions) {
        if (!line.isActive())
            continue;
        std::string normalized = MerchantText::normalize(line.rawDescription);
        if (alone.firstMatchingRule(line, normalized))
            matched.emplace_back(&line, std::move(normalized));
    }
    std::sort(matched.begin(), matched.end(), [](const auto& a, const auto& b) {
        return a.first->date != b.first->date ? a.first->date < b.first->date
                                              : a.first->id < b.first->id;
    });

    RulePreview preview;
    std::map<std::string, int> shadows;
    std::vector<const LedgerTransaction*> open;
    for (const auto& entry : matched) {
        // Named apart, not bound: lambdas can't capture structured bindings everywhere.
        const LedgerTransaction* line = entry.first;
        const std::string& text = entry.second;
        preview.matchingIDs.push_back(line->id);
        if (line->review == ReviewState::confirmed) {
            preview.confirmedIDs.push_back(line->id);
            continue;
        }
        const auto taker = std::find_if(ahead.begin(), ahead.end(), [&](const auto& earlier) {
            return earlier.second.firstMatchingRule(*line, text) != nullptr;
        });
        if (taker != ahead.end())
            ++shadows[taker->first];
        else
            open.push_back(line);
    }

    // The full match is the expensive part; its reading of the texts runs on
    // every core first.
    std::vector<const std::string*> raws;
    raws.reserve(open.size());
    for (const LedgerTransaction* line : open)
        raws.push_back(&line->rawDescription);
    const auto texts = full.prepareTexts(raws);
    for (std::size_t i = 0; i < open.size(); ++i) {
        const LedgerTransaction& line = *open[i];
        const MatchResult result = full.match(line, *texts[i]);
        if (result.kind != line.kind || result.categoryID != line.categoryID ||
            result.merchantID != line.merchantID || result.newMerchantName)
            preview.changingIDs.push_back(line.id);
    }
    preview.shadowedBy.assign(shadows.begin(), shadows.end());
    return preview;
}

std::string RulePreview::countsText() const {
    return "Matches " + std::to_string(matchingIDs.size()) + " transaction" +
           (matchingIDs.size() == 1 ? "" : "s") + "; " + std::to_string(changingIDs.size()) +
           " would change; " + std::to_string(confirmedIDs.size()) +
           " you set by hand stay as they are.";
}

std::vector<std::string> RulePreview::shadowTexts() const {
    std::vector<std::string> texts;
    for (const auto& [name, count] : shadowedBy)
        texts.push_back("Taken first by \u201C" + name + "\u201D: " + std::to_string(count));
    return texts;
}

}  // namespace copperwick
