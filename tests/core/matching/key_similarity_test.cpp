#include "core/matching/key_similarity.h"

#include <random>
#include <string>
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

TEST(KeySimilarity, FloorStopsEarlyWhenLengthsOrEditsRuleItOut) {
    expectScores({
        {"AB", "AB CD", 0, 40},
        {"AB", "AB CD", 80, 0},
        // Lengths 10 and 8 can reach 80 and no more.
        {"ABCDEFGHIJ", "ABCDEFGH", 80, 80},
        {"ABCDEFGHIJ", "ABCDEFGH", 81, 0},
        // Two edits in ten reach 80 exactly, and not 81; 85 rounds from 84.5.
        {"ABCDEFGHIJ", "ABCDEFGHXY", 80, 80},
        {"ABCDEFGHIJ", "ABCDEFGHXY", 81, 0},
        {"ABCDEFGHIJKLMNOPQRST", "ABCDEFGHIJKLMNOPQXYZ", 85, 85},
        {"ABCDEFGHIJKLMNOPQRST", "ABCDEFGHIJKLMNOPQXYZ", 86, 0},
        // A word prefix keeps its 90 when the edits are cut short, but only
        // from four characters on.
        {"ABCD", "ABCD EFGHIJKLMNOP", 83, 90},
        {"ABC", "ABC DEFGHIJ", 83, 0},
        {"\xC3\x80\xC3\x89\xC3\x8E", "\xC3\x80\xC3\x89\xC3\x8E XYZ", 83, 0},
    });
}

// The floor may only change scores under it: over random keys of a few
// letters, so that near and far pairs both come up, a score at or over the
// floor is the one worked out without a floor, and no score under the floor
// rises to it.
TEST(KeySimilarity, AFloorNeverChangesAScoreThatReachesIt) {
    std::mt19937 random(20261125);
    const std::string letters = "ABCDE ";
    const auto key = [&] {
        std::string text(1 + random() % 24, 'A');
        for (char& c : text)
            c = letters[random() % letters.size()];
        return text;
    };
    for (int i = 0; i < 20000; ++i) {
        const std::string a = key();
        const std::string b = random() % 4 == 0 ? a + key() : key();
        const int full = KeySimilarity::score(a, b, 0);
        for (const int floor : {1, 50, 83, 88, 90, 95, 100}) {
            const int cut = KeySimilarity::score(a, b, floor);
            if (full >= floor)
                ASSERT_EQ(cut, full) << '"' << a << "\" / \"" << b << "\" floor " << floor;
            else
                ASSERT_LT(cut, floor) << '"' << a << "\" / \"" << b << "\" floor " << floor;
        }
    }
}

}  // namespace
}  // namespace copperwick
