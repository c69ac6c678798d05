#include "core/review/rule_suggester.h"

#include <algorithm>
#include <functional>
#include <map>
#include <set>
#include <sstream>

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "core/matching/matcher.h"
#include "core/matching/merchant_text.h"

namespace copperwick {

namespace {

std::vector<std::string> words(const std::string& text) {
    std::vector<std::string> result;
    std::istringstream stream(text);
    for (std::string word; stream >> word;)
        result.push_back(std::move(word));
    return result;
}

bool isAllDigits(const std::string& word) {
    return !word.empty() &&
           std::all_of(word.begin(), word.end(), [](char c) { return c >= '0' && c <= '9'; });
}

int letterCount(const std::string& text) {
    const auto unicode = icu::UnicodeString::fromUTF8(text);
    int letters = 0;
    for (int32_t i = 0; i < unicode.length(); i = unicode.moveIndex32(i, 1))
        letters += u_isalpha(unicode.char32At(i)) ? 1 : 0;
    return letters;
}

// The longest run of words every line's text begins with, less trailing
// words that differ from purchase to purchase anyway.
std::string commonPattern(const std::vector<const std::string*>& cores) {
    std::vector<std::string> common = words(*cores.front());
    for (std::size_t i = 1; i < cores.size() && !common.empty(); ++i) {
        const auto other = words(*cores[i]);
        std::size_t shared = 0;
        while (shared < common.size() && shared < other.size() && common[shared] == other[shared])
            ++shared;
        common.resize(shared);
    }
    while (!common.empty() &&
           (MerchantText::isReferenceToken(common.back()) || isAllDigits(common.back())))
        common.pop_back();
    std::string pattern;
    for (const auto& word : common)
        pattern += (pattern.empty() ? "" : " ") + word;
    return pattern;
}

std::string groupText(const LedgerTransaction& line) {
    return (line.merchantID ? line.merchantID->text() : "-") + "|" +
           std::string(rawValue(line.kind)) + "|" +
           (line.categoryID ? line.categoryID->text() : "-");
}

}  // namespace

Rule RuleSuggestion::makeRule(const std::optional<std::string>& categoryName) const {
    auto title = icu::UnicodeString::fromUTF8(pattern);
    title.toTitle(nullptr);
    std::string name;
    title.toUTF8String(name);
    name += " \u2192 " + (categoryName ? *categoryName : std::string(label(kind)));
    return Rule{.id = Uuid::random(),
                .name = std::move(name),
                .isEnabled = true,
                .match = TextMatch::contains,
                .pattern = pattern,
                .direction = AmountDirection::any,
                .merchantName = merchantName,
                .kind = kind,
                .categoryID = categoryID,
                .createdAt = Instant::now()};
}

namespace RuleSuggester {

std::vector<RuleSuggestion> suggestions(const Ledger& ledger) {
    std::map<std::string, std::vector<const LedgerTransaction*>> groups;
    for (const auto& line : ledger.transactions) {
        if (line.isActive() && line.method == MatchMethod::manual &&
            line.review == ReviewState::confirmed)
            groups[groupText(line)].push_back(&line);
    }
    if (std::none_of(groups.begin(), groups.end(),
                     [](const auto& group) { return group.second.size() >= 2; }))
        return {};

    const Matcher matcher(ledger);
    std::set<std::string> existing;
    for (const auto& rule : ledger.rules)
        existing.insert(MerchantText::normalize(rule.pattern));

    // Reading the decided lines' texts is most of the matching; it runs on
    // every core at once, and the texts stay in the matcher's memo.
    std::vector<const std::string*> raws;
    for (const auto& [text, lines] : groups) {
        if (lines.size() >= 2) {
            for (const LedgerTransaction* line : lines)
                raws.push_back(&line->rawDescription);
        }
    }
    const auto texts = matcher.prepareTexts(raws);

    // Every live line's text, worked out once and only if some group needs
    // it, end to end in one buffer: a pattern is then looked for in one
    // sweep rather than line by line. Normalised text holds no line break,
    // so no match runs across two lines.
    std::string allTexts;
    std::vector<std::size_t> starts;
    std::vector<const LedgerTransaction*> liveLines;
    const auto readLiveLines = [&] {
        if (!starts.empty())
            return;
        starts.reserve(ledger.transactions.size());
        for (const auto& line : ledger.transactions) {
            if (!line.isActive())
                continue;
            starts.push_back(allTexts.size());
            liveLines.push_back(&line);
            allTexts += MerchantText::normalize(line.rawDescription);
            allTexts += '\n';
        }
    };
    const auto containing = [&](const std::string& pattern) {
        std::vector<const LedgerTransaction*> found;
        const std::boyer_moore_horspool_searcher searcher(pattern.begin(), pattern.end());
        auto from = allTexts.cbegin();
        while (true) {
            const auto hit = std::search(from, allTexts.cend(), searcher);
            if (hit == allTexts.cend())
                break;
            const auto offset = static_cast<std::size_t>(hit - allTexts.cbegin());
            const auto index = static_cast<std::size_t>(
                std::upper_bound(starts.begin(), starts.end(), offset) - starts.begin() - 1);
            found.push_back(liveLines[index]);
            from = allTexts.cbegin() + static_cast<std::ptrdiff_t>(index + 1 < starts.size()
                                                                       ? starts[index + 1]
                                                                       : allTexts.size());
        }
        return found;
    };

    std::vector<RuleSuggestion> result;
    std::size_t nextText = 0;
    for (const auto& [text, lines] : groups) {
        if (lines.size() < 2)
            continue;
        const LedgerTransaction& first = *lines.front();
        std::vector<const LedgerTransaction*> unexplained;
        std::vector<const std::string*> cores;
        for (const LedgerTransaction* line : lines) {
            const MerchantText& read = *texts[nextText++];
            const MatchResult match = matcher.match(*line, read);
            if (match.kind != line->kind || match.categoryID != line->categoryID ||
                match.merchantID != line->merchantID) {
                unexplained.push_back(line);
                cores.push_back(&read.core);
            }
        }
        if (unexplained.size() < 2)
            continue;
        const std::string pattern = commonPattern(cores);
        if (letterCount(pattern) < 5 || existing.contains(pattern))
            continue;

        RuleSuggestion suggestion{.id = pattern + "|" + text,
                                  .pattern = pattern,
                                  .kind = first.kind,
                                  .categoryID = first.categoryID};
        readLiveLines();
        for (const LedgerTransaction* line : containing(pattern)) {
            ++suggestion.matchCount;
            if (line->review == ReviewState::confirmed &&
                (line->kind != first.kind || line->categoryID != first.categoryID))
                suggestion.conflictIDs.push_back(line->id);
        }
        std::sort(suggestion.conflictIDs.begin(), suggestion.conflictIDs.end());
        if (const Merchant* merchant = ledger.merchant(first.merchantID))
            suggestion.merchantName = merchant->name;
        for (const LedgerTransaction* line : unexplained)
            suggestion.exampleIDs.push_back(line->id);
        std::sort(suggestion.exampleIDs.begin(), suggestion.exampleIDs.end());
        result.push_back(std::move(suggestion));
    }
    std::sort(result.begin(), result.end(), [](const RuleSuggestion& a, const RuleSuggestion& b) {
        if (a.exampleIDs.size() != b.exampleIDs.size())
            return a.exampleIDs.size() > b.exampleIDs.size();
        return a.pattern < b.pattern;
    });
    return result;
}

}  // namespace RuleSuggester

}  // namespace copperwick
