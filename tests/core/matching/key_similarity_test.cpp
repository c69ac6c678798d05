#include "core/matching/key_similarity.h"

#include <string_view>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

struct Case {
    std::string_view a;
    std::string_view b;
    int floor;
    int score;
};

// The score doesn't depend on which key comes first.
void expectScores(std::initializer_list<Case> cases) {
    for (const auto& [a, b, floor, score] : cases) {
        EXPECT_EQ(KeySimilarity::score(a, b, floor), score)
            << '"' << a << "\" / \"" << b << "\" floor " << floor;
        EXPECT_EQ(KeySimilarity::score(b, a, floor), score)
            << '"' << b << "\" / \"" << a << "\" floor " << floor;
    }
}

TEST(KeySimilarity, EmptyIsNothingAndEqualIsEverything) {
    expectScores({
        {"", "", 0, 0},
        {"", "ACME", 0, 0},
        {"ACME", "ACME", 0, 100},
        {"ACME", "ACME", 100, 100},
        {"ACME", "ACNE", 0, 75},
        {"ABCD", "WXYZ", 0, 0},
    });
}

TEST(KeySimilarity, PercentageRoundsHalvesUp) {
    expectScores({
        {"ABC", "ABX", 0, 67},            // 66.7
        {"ABCDEFGH", "ABCDEFGX", 0, 88},  // 87.5
        {"ABCDEF", "ABCXYZ", 0, 50},
        {"ABC", "ABC DEF", 0, 43},  // 42.9; too short to be a word prefix
    });
}

TEST(KeySimilarity, WholeWordPrefixOfFourCharactersIsLiftedTo90) {
    expectScores({
        {"BLUE BOTTLE", "BLUE BOTTLE COFFEE", 0, 90},
        {"BLUE BOTTLE", "BLUE BOTTLE COFFEE", 83, 90},
        // The same distance without a word break: the edit distance alone.
        {"BLUE BOTTLE", "BLUE BOTTLEHCOFFEE", 0, 61},
        {"ABCD", "ABCD EFGHIJKLMNOP", 0, 90},
        {"ABCD", "ABCDEFGHIJKLMNOP", 0, 25},
        // A higher score stays.
        {"ABCDEFGHIJKLMNOPQRSTUVWXY", "ABCDEFGHIJKLMNOPQRSTUVWXY Z", 0, 93},
        // Four characters, not four bytes.
        {"\xC3\x80\xC3\x89\xC3\x8E", "\xC3\x80\xC3\x89\xC3\x8E X", 0, 75},
        {"\xC3\x80\xC3\x89\xC3\x8E\xC3\x94", "\xC3\x80\xC3\x89\xC3\x8E\xC3\x94 X", 0, 90},
    });
}

TEST(KeySimilarity, FloorStopsEarlyOnlyWhenLengthsRuleItOut) {
    expectScores({
        {"AB", "AB CD", 0, 40},
        {"AB", "AB CD", 80, 0},
        // Lengths 10 and 8 can reach 80 and no more.
        {"ABCDEFGHIJ", "ABCDEFGH", 80, 80},
        {"ABCDEFGHIJ", "ABCDEFGH", 81, 0},
        // A result under the floor still comes back when the lengths allow it.
        {"ABCDEFGHIJ", "ABCDEFGHXY", 90, 80},
        // A word prefix is never cut short, but only from four bytes on.
        {"ABCD", "ABCD EFGHIJKLMNOP", 83, 90},
        {"ABC", "ABC DEFGHIJ", 83, 0},
        {"\xC3\x80\xC3\x89\xC3\x8E", "\xC3\x80\xC3\x89\xC3\x8E XYZ", 83, 60},
    });
}

}  // namespace
}  // namespace copperwick
