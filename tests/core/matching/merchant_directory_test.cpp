#include "core/matching/merchant_directory.h"

#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

// "entry name / phrase" of the hit, or "-".
std::string hitOf(const MerchantDirectory& directory, std::string_view text) {
    const auto hit = directory.match(text);
    return hit ? hit->entry->name + " / " + std::string(hit->phrase) : "-";
}

struct Case {
    std::string_view text;
    std::string_view expected;
};

void expectHits(const MerchantDirectory& directory, std::initializer_list<Case> cases) {
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(hitOf(directory, text), expected) << text;
}

std::string closestOf(const MerchantDirectory& directory, std::string_view key, int minimum) {
    const auto closest = directory.closest(key, minimum);
    return closest ? closest->entry->name + " " + std::to_string(closest->score) : "-";
}

TEST(MerchantDirectory, CompilesEveryPhraseLongestFirst) {
    const auto& phrases = MerchantDirectory::shared().phrases();
    ASSERT_EQ(phrases.size(), 392u);
    for (std::size_t i = 1; i < phrases.size(); ++i) {
        const auto& before = phrases[i - 1];
        const auto& after = phrases[i];
        ASSERT_GE(before.bytes.size(), after.bytes.size()) << after.text;
        if (before.bytes.size() == after.bytes.size()) {
            ASSERT_LE(before.entryIndex, after.entryIndex) << after.text;
        }
    }

    std::vector<std::string> suffixed;
    for (const auto& phrase : phrases) {
        EXPECT_EQ(phrase.bytes, phrase.text);
        if (phrase.allowSuffix)
            suffixed.push_back(phrase.text);
    }
    EXPECT_EQ(suffixed, std::vector<std::string>{"COINBASE"});
}

TEST(MerchantDirectory, LongerPhraseBeatsEarlierEntry) {
    expectHits(MerchantDirectory::shared(),
               {
                   {"AMAZON PRIME*2K4L19", "Amazon Prime / AMAZON PRIME"},
                   {"AMAZON MKTPL*2K4L19", "Amazon / AMAZON MKTPL"},
                   {"NORDSTROM RACK #0221", "Nordstrom Rack / NORDSTROM RACK"},
                   {"NORDSTROM #0221", "Nordstrom / NORDSTROM"},
                   {"COSTCO GAS #1234", "Costco Gas / COSTCO GAS"},
                   {"COSTCO WHSE #1234", "Costco / COSTCO WHSE"},
                   {"UBER EATS", "Uber Eats / UBER EATS"},
                   {"UBER *TRIP HELP.UBER.COM", "Uber / UBER *TRIP"},
                   // A facilitator's short prefix loses to the merchant behind it.
                   {"DD *MCDONALDS 1234", "McDonald's / MCDONALDS"},
                   {"DD *LOCAL PIZZA", "DoorDash / DD *"},
               });
}

TEST(MerchantDirectory, EqualLengthsGoToTheEarlierEntry) {
    expectHits(MerchantDirectory::shared(), {
                                                {"ALDI 123 VONS", "Aldi / ALDI"},
                                                {"VONS 123 ALDI", "Aldi / ALDI"},
                                            });
}

TEST(MerchantDirectory, PhrasesStandAsWords) {
    expectHits(MerchantDirectory::shared(),
               {
                   {"TARGET T-1234", "Target / TARGET"},
                   {"TARGETED ADS INC", "-"},
                   // A trailing blank wants a word after it.
                   {"AMC 1234 ONLINE", "AMC Theatres / AMC "},
                   {"AMC", "-"},
                   {"REGAL", "-"},
                   {"REGAL UA STONESTOWN", "Regal / REGAL "},
                   // The one phrase allowed to run on into a longer word.
                   {"COINBASERWRD", "Coinbase / COINBASE"},
                   {"XCOINBASE", "-"},
                   // The text is expected normalized: the search is case-sensitive.
                   {"starbucks", "-"},
                   {"", "-"},
               });
}

TEST(MerchantDirectory, ShortKeysTakeNoPartInNearMissSearch) {
    const MerchantDirectory& directory = MerchantDirectory::shared();
    const auto& entries = directory.entries();
    const auto indexOf = [&](std::string_view name) {
        for (std::size_t i = 0; i < entries.size(); ++i)
            if (entries[i].name == name)
                return i;
        return entries.size();
    };
    const auto hasKey = [&](std::string_view key, std::size_t entry) {
        for (const auto& [k, e] : directory.phraseKeys())
            if (k == key && e == entry)
                return true;
        return false;
    };
    EXPECT_TRUE(hasKey("BWW", indexOf("Buffalo Wild Wings")));
    EXPECT_FALSE(hasKey("DD", indexOf("DoorDash")));
    // The entry's name counts as one more key.
    EXPECT_TRUE(hasKey("DOORDASH", indexOf("DoorDash")));

    EXPECT_EQ(closestOf(directory, "BWW", 88), "Buffalo Wild Wings 100");
    EXPECT_EQ(closestOf(directory, "DD", 88), "-");
    // A longer key that begins with a merchant's whole key.
    EXPECT_EQ(closestOf(directory, "CHIPOTLE MEXICAN GRILL", 88), "Chipotle 90");
}

// Names of two letters make keys too short to count, so only the phrases
// below compete.
TEST(MerchantDirectory, ClosestNeedsAClearWinner) {
    constexpr std::string_view twenty = "ABCDEFGHIJKLMNOPQRST";
    constexpr std::string_view twentyFive = "ABCDEFGHIJKLMNOPQRSTUVWXY";
    {
        const MerchantDirectory tie({{"Aa", "Dining", {"ABCDEFGHIJKLMNOPQRST"}},
                                     {"Bb", "Dining", {"ABCDEFGHIJKLMNOPQRST"}}});
        EXPECT_EQ(closestOf(tie, twenty, 88), "-");
    }
    {
        // One edit in twenty scores 95: exactly the margin behind 100.
        const MerchantDirectory margin({{"Aa", "Dining", {"ABCDEFGHIJKLMNOPQRSX"}},
                                        {"Bb", "Dining", {"ABCDEFGHIJKLMNOPQRST"}}});
        EXPECT_EQ(closestOf(margin, twenty, 88), "Bb 100");
    }
    {
        // One edit in twenty-five scores 96: within the margin.
        const MerchantDirectory close({{"Aa", "Dining", {"ABCDEFGHIJKLMNOPQRSTUVWXY"}},
                                       {"Bb", "Dining", {"ABCDEFGHIJKLMNOPQRSTUVWXZ"}}});
        EXPECT_EQ(closestOf(close, twentyFive, 88), "-");
    }
    {
        // Each entry competes with its best key, not with each of its keys.
        const MerchantDirectory best(
            {{"Aa", "Dining", {"ZZZZZZZZZZZZZZZZZZZZ", std::string(twenty)}},
             {"Bb", "Dining", {"ABCDEFGHIJKLMNOPQRSX"}}});
        EXPECT_EQ(closestOf(best, twenty, 88), "Aa 100");
    }
    {
        const MerchantDirectory single({{"Aa", "Dining", {"ABCDEFGHIJKLMNOPQRSX"}}});
        EXPECT_EQ(closestOf(single, twenty, 95), "Aa 95");
        EXPECT_EQ(closestOf(single, twenty, 96), "-");
    }
    EXPECT_EQ(closestOf(MerchantDirectory(std::vector<DirectoryEntry>{}), twenty, 0), "-");
}

}  // namespace
}  // namespace copperwick
