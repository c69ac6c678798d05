#include "core/matching/builtin_rule_set.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <vector>

#include <unicode/regex.h>
#include <unicode/unistr.h>

namespace copperwick::BuiltInRuleSet {

namespace {

struct Compiled {
    const BuiltInRule* rule = nullptr;
    std::unique_ptr<icu::RegexPattern> regex;
    // One of these is in every text the regex matches; unset: no shortcut.
    std::optional<std::vector<std::string>> mustHold;
};

// Most descriptions reach most rules, and the rules' long alternations give
// the regex engine no cheap place to start: it tries every alternative at
// every position. Looking for a required word first costs a small fraction
// of that, and only a text that holds one runs the pattern. Valid for ASCII
// text only, since case-insensitive matching lets a few other characters
// stand for ASCII letters (the Kelvin sign for "K").

bool isSyntax(char c) {
    return std::string_view("\\^$.|?*+()[]{}").find(c) != std::string_view::npos;
}

bool makesOptional(char c) {
    return c == '?' || c == '*';
}

char upperAscii(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

bool balanced(std::string_view text) {
    int depth = 0;
    for (const char c : text) {
        depth += c == '(' ? 1 : c == ')' ? -1 : 0;
        if (depth < 0)
            return false;
    }
    return depth == 0;
}

// Parts of `text` between '|' outside parentheses.
std::vector<std::string_view> splitAlternatives(std::string_view text) {
    std::vector<std::string_view> parts;
    int depth = 0;
    std::size_t start = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '(')
            ++depth;
        else if (text[i] == ')')
            --depth;
        else if (text[i] == '|' && depth == 0) {
            parts.push_back(text.substr(start, i - start));
            start = i + 1;
        }
    }
    parts.push_back(text.substr(start));
    return parts;
}

// The sets of literals one alternative requires: each run of plain
// characters that must occur as it stands, and each group of plain
// alternatives that isn't optional. `i` never stops inside a group.
std::vector<std::vector<std::string>> requirements(std::string_view alternative) {
    std::vector<std::vector<std::string>> found;
    std::string run;
    const auto endRun = [&] {
        if (!run.empty())
            found.push_back({run});
        run.clear();
    };
    for (std::size_t i = 0; i < alternative.size();) {
        const char c = alternative[i];
        const bool quantified = i + 1 < alternative.size() && makesOptional(alternative[i + 1]);
        if (c == '(') {
            std::size_t close = i + 1;
            for (int depth = 1; depth > 0; ++close)
                depth += alternative[close] == '(' ? 1 : alternative[close] == ')' ? -1 : 0;
            const std::string_view group = alternative.substr(i + 1, close - i - 2);
            endRun();
            const bool optional = close < alternative.size() && makesOptional(alternative[close]);
            const bool plain =
                std::ranges::none_of(group, [](char g) { return g != '|' && isSyntax(g); });
            if (!optional && plain) {
                std::vector<std::string> words;
                for (const auto word : splitAlternatives(group)) {
                    words.emplace_back();
                    std::ranges::transform(word, std::back_inserter(words.back()), upperAscii);
                }
                if (std::ranges::none_of(words, &std::string::empty))
                    found.push_back(std::move(words));
            }
            i = close;
        } else if (isSyntax(c)) {
            endRun();
            ++i;
        } else if (quantified) {
            // "S?": the run so far is required, the "S" is not.
            endRun();
            i += 2;
        } else {
            run += upperAscii(c);
            ++i;
        }
    }
    endRun();
    return found;
}

}  // namespace

namespace detail {

std::optional<std::vector<std::string>> requiredLiterals(std::string_view pattern) {
    // Escapes, classes, counted repeats and inline options ("(?x)" changes
    // what a blank means) are past what `requirements` reads.
    const bool simple = std::ranges::all_of(pattern,
                                            [](char c) {
                                                const auto byte = static_cast<unsigned char>(c);
                                                return byte >= 0x20 && byte < 0x80 && c != '\\' &&
                                                       c != '[' && c != '{';
                                            }) &&
                        pattern.find("(?") == std::string_view::npos && balanced(pattern);
    if (!simple)
        return std::nullopt;

    std::vector<std::string> literals;
    for (const auto alternative : splitAlternatives(pattern)) {
        auto found = requirements(alternative);
        if (found.empty())
            return std::nullopt;
        // The fewest words to look for, then the longest shortest word: the
        // cheapest test that still rejects most text.
        const auto shortest = [](const std::vector<std::string>& words) {
            return std::ranges::min(words, {}, &std::string::size).size();
        };
        const auto cheapest = std::ranges::min_element(found, [&](const auto& a, const auto& b) {
            return a.size() != b.size() ? a.size() < b.size() : shortest(a) > shortest(b);
        });
        for (auto& word : *cheapest) {
            if (std::ranges::find(literals, word) == literals.end())
                literals.push_back(std::move(word));
        }
    }
    return literals;
}

}  // namespace detail

namespace {

// The rules are data of this program, so a pattern that doesn't compile is
// a fault here, caught by the first test that matches anything.
std::unique_ptr<icu::RegexPattern> compile(const BuiltInRule& rule) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError where{};
    std::unique_ptr<icu::RegexPattern> pattern(icu::RegexPattern::compile(
        icu::UnicodeString::fromUTF8(rule.pattern), UREGEX_CASE_INSENSITIVE, where, status));
    if (U_FAILURE(status) || !pattern) {
        std::fprintf(stderr, "copperwick: built-in rule %s doesn't compile at offset %d: %s\n",
                     rule.id.c_str(), where.offset, u_errorName(status));
        std::abort();
    }
    return pattern;
}

std::vector<Compiled> compileAll() {
    std::vector<Compiled> compiled;
    for (const auto& rule : BuiltInKnowledge::rules())
        compiled.push_back({&rule, compile(rule), detail::requiredLiterals(rule.pattern)});
    return compiled;
}

// Never destroyed: a worker thread may still be matching while the process exits.
const std::vector<Compiled>& compiledRules() {
    static const auto& instance = *new std::vector<Compiled>(compileAll());
    return instance;
}

// A matcher holds the state of one search, so it can't be shared between
// threads; one per rule per thread saves building one per description.
std::vector<std::unique_ptr<icu::RegexMatcher>> makeMatchers() {
    std::vector<std::unique_ptr<icu::RegexMatcher>> matchers;
    for (const auto& compiled : compiledRules()) {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::RegexMatcher> matcher(compiled.regex->matcher(status));
        if (U_FAILURE(status) || !matcher) {
            std::fprintf(stderr, "copperwick: no regular expression matcher: %s\n",
                         u_errorName(status));
            std::abort();
        }
        matchers.push_back(std::move(matcher));
    }
    return matchers;
}

bool containsIgnoringCase(std::string_view text, std::string_view upperWord) {
    if (upperWord.size() > text.size())
        return false;
    for (std::size_t at = 0; at + upperWord.size() <= text.size(); ++at) {
        std::size_t k = 0;
        while (k < upperWord.size() && upperAscii(text[at + k]) == upperWord[k])
            ++k;
        if (k == upperWord.size())
            return true;
    }
    return false;
}

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool accountAllowed(const BuiltInRule& rule, std::optional<AccountType> accountType) {
    if (rule.accountTypes.empty())
        return true;
    return accountType &&
           std::ranges::find(rule.accountTypes, *accountType) != rule.accountTypes.end();
}

}  // namespace

const BuiltInRule* match(std::string_view normalized, int64_t amount,
                         std::optional<AccountType> accountType,
                         const std::set<std::string>& disabled) {
    const auto& compiled = compiledRules();
    thread_local const auto matchers = makeMatchers();

    const bool ascii = isAscii(normalized);
    // Converted only once a rule gets as far as its pattern.
    std::optional<icu::UnicodeString> text;
    for (std::size_t i = 0; i < compiled.size(); ++i) {
        const BuiltInRule& rule = *compiled[i].rule;
        if (!allows(rule.direction, amount) || !accountAllowed(rule, accountType))
            continue;
        if (!disabled.empty() && disabled.contains(rule.id))
            continue;
        if (const auto& words = compiled[i].mustHold;
            ascii && words && std::ranges::none_of(*words, [&](const std::string& word) {
                return containsIgnoringCase(normalized, word);
            }))
            continue;
        if (!text)
            text = icu::UnicodeString::fromUTF8(normalized);
        icu::RegexMatcher& matcher = *matchers[i];
        matcher.reset(*text);
        UErrorCode status = U_ZERO_ERROR;
        const bool found = matcher.find(0, status);
        if (U_SUCCESS(status) && found)
            return &rule;
    }
    return nullptr;
}

}  // namespace copperwick::BuiltInRuleSet
