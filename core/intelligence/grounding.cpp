#include "core/intelligence/grounding.h"

#include <algorithm>
#include <unordered_map>

#include "core/model/text.h"

namespace copperwick::Grounding {

namespace {

// A figure's whole part stops growing at 10^15: far past any amount the ledger
// holds, so it can match nothing real, and well inside the range.
constexpr int64_t kLargestWhole = 1'000'000'000'000'000;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool digitAt(std::string_view text, std::size_t at) {
    return at < text.size() && isDigit(text[at]);
}

void appendDigit(int64_t& whole, char digit) {
    if (whole < kLargestWhole)
        whole = whole * 10 + (digit - '0');
}

bool matches(const Number& claimed, const Number& source) {
    if (claimed.kind != source.kind)
        return false;
    const int64_t difference =
        claimed.value > source.value ? claimed.value - source.value : source.value - claimed.value;
    if (claimed.precise)
        return difference == 0;
    // Rounded to whole dollars or whole percents.
    return difference < (claimed.kind == Number::Kind::money ? 51 : 6);
}

}  // namespace

// Bytes stand in for Unicode scalars: every character the scan looks at is
// ASCII, and no byte of a longer UTF-8 sequence is.
std::vector<Number> numbers(std::string_view text) {
    std::vector<Number> found;
    std::size_t at = 0;
    while (at < text.size()) {
        const char c = text[at];
        if (c == '$') {
            std::size_t next = at + 1;
            int64_t whole = 0;
            bool hasWhole = false;
            bool hasPoint = false;
            int fractionDigits = 0;
            int64_t fraction = 0;
            while (next < text.size()) {
                const char d = text[next];
                if (isDigit(d)) {
                    if (hasPoint) {
                        if (fractionDigits < 2)
                            fraction = fraction * 10 + (d - '0');
                        ++fractionDigits;
                    } else {
                        appendDigit(whole, d);
                        hasWhole = true;
                    }
                } else if (d == ',' && hasWhole && !hasPoint && digitAt(text, next + 1)) {
                    // A thousands separator.
                } else if (d == '.' && !hasPoint && digitAt(text, next + 1)) {
                    hasPoint = true;
                } else {
                    break;
                }
                ++next;
            }
            if (!hasWhole) {
                ++at;
                continue;
            }
            const int64_t cents = whole * 100 + (fractionDigits == 1   ? fraction * 10
                                                 : fractionDigits >= 2 ? fraction
                                                                       : 0);
            found.push_back(Number::money(cents, fractionDigits > 0));
            at = next;
            continue;
        }
        if (!isDigit(c)) {
            ++at;
            continue;
        }
        const char before = at > 0 ? text[at - 1] : ' ';
        if (isDigit(before) || before == '$' || before == ',' || before == '.') {
            ++at;
            continue;
        }
        std::size_t next = at;
        int64_t whole = 0;
        while (digitAt(text, next))
            appendDigit(whole, text[next++]);
        int64_t tenth = 0;
        bool hasDecimal = false;
        if (next < text.size() && text[next] == '.' && digitAt(text, next + 1)) {
            hasDecimal = true;
            tenth = text[next + 1] - '0';
            next += 1;
            while (digitAt(text, next))
                ++next;
        }
        // Only a "%" right behind the digits makes a figure.
        if (next < text.size() && text[next] == '%')
            found.push_back(Number::percent(whole * 10 + tenth, hasDecimal));
        at = next;
    }
    return found;
}

bool isGrounded(std::string_view text, const std::vector<std::string>& sources) {
    const std::vector<Number> claimed = numbers(text);
    if (claimed.empty())
        return true;
    std::vector<Number> known;
    for (const auto& source : sources) {
        const auto more = numbers(source);
        known.insert(known.end(), more.begin(), more.end());
    }
    return std::all_of(claimed.begin(), claimed.end(), [&](const Number& number) {
        return std::any_of(known.begin(), known.end(),
                           [&](const Number& source) { return matches(number, source); });
    });
}

std::vector<GroundedBullet> checkBullets(const std::vector<Bullet>& bullets,
                                         const std::vector<ReportFact>& facts) {
    std::unordered_map<std::string, const ReportFact*> byID;
    for (const auto& fact : facts)
        byID.try_emplace(text::uppercased(fact.id), &fact);

    std::vector<GroundedBullet> accepted;
    for (const auto& bullet : bullets) {
        const std::string_view sentence = text::trimmed(bullet.text);
        if (sentence.empty() || text::characterCount(sentence) > 400)
            continue;
        std::vector<ReportFact> cited;
        std::vector<std::string> sources;
        for (const auto& id : bullet.factIDs) {
            const auto it = byID.find(text::uppercased(text::trimmed(id)));
            if (it == byID.end())
                continue;
            cited.push_back(*it->second);
            sources.push_back(it->second->text);
        }
        // A true figure cited to the wrong fact is refused as well.
        if (cited.empty() || !isGrounded(sentence, sources))
            continue;
        accepted.push_back({.id = static_cast<int>(accepted.size()),
                            .text = std::string(sentence),
                            .facts = std::move(cited)});
    }
    return accepted;
}

}  // namespace copperwick::Grounding
