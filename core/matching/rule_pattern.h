#pragma once

// The regular expression of a person's rule, held to a time limit.
//
// A pattern such as "^(([A-Z]+)*)*$" takes longer than a lifetime to fail on a
// long line of bank text. Every match of a person's pattern therefore runs
// under ICU's time limit, which counts the matcher's steps rather than the
// clock, so the outcome for a given pattern and text is the same on every
// machine. A match that runs out of time counts as no match.
//
// `check` tells ahead of time whether a pattern is usable: it tries the
// pattern on long worst-case texts within the same limit. The rule editor
// refuses a pattern that fails it, and a saved rule whose pattern fails it
// matches nothing. Verdicts are kept for the life of the process, so a pattern
// is tried once; a pattern that ran out of time on real text is kept as too
// slow from then on. `check` is safe on any thread.
//
// A PatternMatcher is used by one thread at a time, like the Matcher that
// holds it; it is neither copyable nor movable.

#include <memory>
#include <string>
#include <string_view>

#include <unicode/uversion.h>

U_NAMESPACE_BEGIN
class RegexMatcher;
U_NAMESPACE_END

namespace copperwick {

namespace RulePattern {

enum class Verdict {
    usable,
    invalid,  // doesn't compile
    tooSlow,  // runs out of time on a long text
};

// The refusals of the rule editor, in the words the person reads.
inline constexpr std::string_view kInvalidText = "That pattern isn't valid.";
inline constexpr std::string_view kTooSlowText =
    "This pattern takes too long to match. Simplify it.";

[[nodiscard]] Verdict check(std::string_view pattern);

}  // namespace RulePattern

class PatternMatcher {
  public:
    // Absent when the pattern doesn't compile. Case-insensitive, as rules are.
    [[nodiscard]] static std::unique_ptr<PatternMatcher> make(std::string_view pattern);

    ~PatternMatcher();
    PatternMatcher(const PatternMatcher&) = delete;
    PatternMatcher& operator=(const PatternMatcher&) = delete;

    // Whether the pattern matches anywhere in `text`. Once a match has run
    // out of time this matcher gives up on the pattern and finds nothing
    // more, so a slow pattern costs one time limit, not one per line.
    [[nodiscard]] bool find(std::string_view text);

  private:
    PatternMatcher(std::string pattern, std::unique_ptr<icu::RegexMatcher> matcher);

    std::string m_pattern;
    std::unique_ptr<icu::RegexMatcher> m_matcher;
    bool m_gaveUp = false;
};

}  // namespace copperwick
