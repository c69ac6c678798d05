#include "core/model/text.h"

#include <array>
#include <string>
#include <string_view>

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

namespace copperwick {
namespace {

// The date parser splits every row's date into a fixed array; it must read
// the same pieces the allocating form gives, and tell when there are more.
TEST(Text, SplittingIntoAFixedArrayGivesTheSamePiecesAndCountsOverflow) {
    for (const std::string_view input : {"03/14/2026", "2026-03-14", "14..03..2026", "/3//14/", "",
                                         "///", "1-2", "1.2.3.4", "12/31/99/"}) {
        const auto all = text::splitDroppingEmpty(input, "/-.");
        std::array<std::string_view, 3> fixed;
        const std::size_t count = text::splitDroppingEmpty(input, "/-.", fixed);
        SCOPED_TRACE(std::string(input));
        if (all.size() > fixed.size()) {
            EXPECT_EQ(count, fixed.size() + 1);
            continue;
        }
        ASSERT_EQ(count, all.size());
        for (std::size_t i = 0; i < count; ++i)
            EXPECT_EQ(fixed[i], all[i]);
    }
}

}  // namespace
}  // namespace copperwick
