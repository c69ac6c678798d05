#include "core/model/text.h"

#include <gtest/gtest.h>

namespace copperwick {
namespace {

TEST(Text, FirstCharactersKeepsCharactersWhole) {
    EXPECT_EQ(text::firstCharacters("Blue Bottle", 4), "Blue");
    EXPECT_EQ(text::firstCharacters("Blue", 40), "Blue");
    EXPECT_EQ(text::firstCharacters("", 3), "");
    EXPECT_EQ(text::firstCharacters("abc", 0), "");
    EXPECT_EQ(text::firstCharacters("Zoe\u0308 Caf\u00e9", 3), "Zoe\u0308")
        << "a letter and its combining mark are one character";
    EXPECT_EQ(text::firstCharacters("a\r\nb", 2), "a\r\n");
    EXPECT_EQ(text::firstCharacters("\U0001F600\U0001F600x", 1), "\U0001F600");
    EXPECT_EQ(text::firstCharacters("ok\xff", 3), "ok\uFFFD") << "bad bytes become replacements";
    for (const std::string_view sample : {"Zoe\u0308 Caf\u00e9", "a\r\nb c", "plain text"})
        EXPECT_EQ(text::characterCount(text::firstCharacters(sample, 3)), 3u) << sample;
}

}  // namespace
}  // namespace copperwick
