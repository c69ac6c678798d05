#include "core/matching/rule_pattern.h"

#include <algorithm>
#include <mutex>
#include <unordered_map>
#include <utility>
#include <vector>

#include <unicode/regex.h>
#include <unicode/uchar.h>

#include "core/model/text.h"

namespace copperwick {

namespace {

// In ICU's units of about ten thousand steps. Ordinary patterns need one
// unit or none on a long line; "ACME.*" on 256 letters needs a handful. A
// pattern that needs more on the texts below is one a person can simplify.
constexpr int32_t kTimeLimit = 50;

// Longer than nearly every line a bank writes, so a pattern that passes on
// these passes on real text too; catastrophic backtracking shows long before.
constexpr int32_t kProbeLength = 256;
// Each letter of the pattern gets its own run, up to this many.
constexpr std::size_t kMostPatternProbes = 16;

bool ranOutOfTime(UErrorCode status) {
    return status == U_REGEX_TIME_OUT || status == U_REGEX_STACK_OVERFLOW;
}

std::unique_ptr<icu::RegexMatcher> compile(std::string_view pattern) {
    UErrorCode status = U_ZERO_ERROR;
    auto matcher = std::make_unique<icu::RegexMatcher>(text::toUnicode(pattern),
                                                       UREGEX_CASE_INSENSITIVE, status);
    if (U_FAILURE(status))
        return nullptr;
    matcher->setTimeLimit(kTimeLimit, status);
    return U_SUCCESS(status) ? std::move(matcher) : nullptr;
}

icu::UnicodeString runOf(const icu::UnicodeString& unit) {
    icu::UnicodeString run;
    while (run.length() < kProbeLength)
        run += unit;
    // A character that ends the run unlike the rest: patterns blow up on a
    // near miss, when every way of splitting the run has to be tried.
    run += u'!';
    return run;
}

// The near misses a pattern is tried on: runs of letters, digits and words,
// and a run of each character the pattern names, since "(ACME+)+$" only
// blows up on the letters it is made of.
std::vector<icu::UnicodeString> probes(std::string_view pattern) {
    std::vector<icu::UnicodeString> texts{runOf(u"A"), runOf(u"1"), runOf(u"A ")};
    const icu::UnicodeString source = text::toUnicode(pattern);
    std::vector<UChar32> seen;
    bool escaped = false;
    for (int32_t i = 0; i < source.length() && seen.size() < kMostPatternProbes;) {
        const UChar32 c = source.char32At(i);
        i += U16_LENGTH(c);
        // "\d", "\w", "\s" and friends are classes, not letters.
        if (escaped || c == u'\\') {
            escaped = !escaped && c == u'\\';
            continue;
        }
        if (!u_isalnum(c))
            continue;
        const UChar32 upper = u_toupper(c);
        if (std::find(seen.begin(), seen.end(), upper) != seen.end())
            continue;
        seen.push_back(upper);
        texts.push_back(runOf(icu::UnicodeString(upper)));
    }
    return texts;
}

RulePattern::Verdict tryPattern(std::string_view pattern) {
    const auto matcher = compile(pattern);
    if (!matcher)
        return RulePattern::Verdict::invalid;
    for (const auto& probe : probes(pattern)) {
        matcher->reset(probe);
        UErrorCode status = U_ZERO_ERROR;
        (void)matcher->find(0, status);
        if (ranOutOfTime(status))
            return RulePattern::Verdict::tooSlow;
    }
    return RulePattern::Verdict::usable;
}

// Verdicts by pattern text, for the life of the process.
struct Verdicts {
    std::mutex mutex;
    std::unordered_map<std::string, RulePattern::Verdict> byPattern;
};

Verdicts& verdicts() {
    // Never destroyed: a matcher on another thread may still ask at exit.
    static auto* shared = new Verdicts;
    return *shared;
}

void recordTooSlow(const std::string& pattern) {
    Verdicts& all = verdicts();
    const std::lock_guard lock(all.mutex);
    all.byPattern.insert_or_assign(pattern, RulePattern::Verdict::tooSlow);
}

}  // namespace

RulePattern::Verdict RulePattern::check(std::string_view pattern) {
    Verdicts& all = verdicts();
    const std::string key(pattern);
    {
        const std::lock_guard lock(all.mutex);
        if (const auto found = all.byPattern.find(key); found != all.byPattern.end())
            return found->second;
    }
    // Tried outside the lock: two threads may try one pattern at once, and
    // both come to the same verdict.
    const Verdict verdict = tryPattern(pattern);
    const std::lock_guard lock(all.mutex);
    return all.byPattern.try_emplace(key, verdict).first->second;
}

std::unique_ptr<PatternMatcher> PatternMatcher::make(std::string_view pattern) {
    auto matcher = compile(pattern);
    if (!matcher)
        return nullptr;
    return std::unique_ptr<PatternMatcher>(
        new PatternMatcher(std::string(pattern), std::move(matcher)));
}

PatternMatcher::PatternMatcher(std::string pattern, std::unique_ptr<icu::RegexMatcher> matcher)
    : m_pattern(std::move(pattern)), m_matcher(std::move(matcher)) {}

PatternMatcher::~PatternMatcher() = default;

bool PatternMatcher::find(std::string_view text) {
    if (m_gaveUp)
        return false;
    const icu::UnicodeString subject = text::toUnicode(text);
    m_matcher->reset(subject);
    UErrorCode status = U_ZERO_ERROR;
    const bool found = m_matcher->find(0, status);
    // Drop the matcher's reference to a string about to go away.
    m_matcher->reset(icu::UnicodeString());
    if (ranOutOfTime(status)) {
        m_gaveUp = true;
        recordTooSlow(m_pattern);
        return false;
    }
    return U_SUCCESS(status) && found;
}

}  // namespace copperwick
