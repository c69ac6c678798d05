#include "core/matching/phrase_search.h"

#include <string_view>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

struct Case {
    std::string_view haystack;
    std::string_view phrase;
    bool allowSuffix;
    bool found;
};

void expectSearches(std::initializer_list<Case> cases) {
    for (const auto& [haystack, phrase, allowSuffix, found] : cases) {
        EXPECT_EQ(PhraseSearch::contains(haystack, phrase, allowSuffix), found)
            << '"' << phrase << "\" in \"" << haystack << "\" allowSuffix " << allowSuffix;
    }
}

TEST(PhraseSearch, WordBoundsHoldOnBothSides) {
    expectSearches({
        {"TARGET", "TARGET", false, true},
        {"TARGETS", "TARGET", false, false},
        {"STARGET", "TARGET", false, false},
        {"TARGET.COM", "TARGET", false, true},
        {"TARGET-123", "TARGET", false, true},
        {"POS TARGET", "TARGET", false, true},
        {"TARGET2", "TARGET", false, false},
        {"2TARGET", "TARGET", false, false},
        // Lower-case letters are letters too; other bytes are not.
        {"TARGETs", "TARGET", false, false},
        {"aTARGET", "TARGET", false, false},
        {"\xC3\x89TARGET\xC3\x89", "TARGET", false, true},
    });
}

TEST(PhraseSearch, AFailedBoundaryDoesNotEndTheSearch) {
    expectSearches({
        {"TARGETS TARGET", "TARGET", false, true},
        {"STARGET TARGET", "TARGET", false, true},
        {"STARGET TARGETS", "TARGET", false, false},
        {"AAA", "AA", false, false},
        {"AA AAA", "AA", false, true},
    });
}

TEST(PhraseSearch, SuffixIsAllowedOnlyOnTheRight) {
    expectSearches({
        {"COINBASERWRD", "COINBASE", true, true},
        {"COINBASERWRD", "COINBASE", false, false},
        {"XCOINBASE", "COINBASE", true, false},
        {"XCOINBASERWRD COINBASERWRD", "COINBASE", true, true},
    });
}

TEST(PhraseSearch, PunctuationAtAnEndDoesNotBind) {
    expectSearches({
        {"LUCKY #123", "LUCKY #", false, true},
        {"XLUCKY #123", "LUCKY #", false, false},
        {"AMC THEATRES", "AMC ", false, true},
        {"STORE#12", "#12", false, true},
        {"STORE#123", "#12", false, false},
        {"AB*CD", "*", false, true},
    });
}

TEST(PhraseSearch, EmptyOrOversizedPhraseIsNeverFound) {
    expectSearches({
        {"TARGET", "", false, false},
        {"TARGET", "", true, false},
        {"", "", false, false},
        {"", "T", true, false},
        {"TARGE", "TARGET", true, false},
        // Case-sensitive.
        {"TARGET", "target", true, false},
    });
}

}  // namespace
}  // namespace copperwick
