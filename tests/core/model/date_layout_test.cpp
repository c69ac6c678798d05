#include "core/model/date_layout.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

constexpr LocalDate date(int year, int month, int day) {
    return LocalDate{year, month, day};
}

TEST(DateLayout, RawValuesAndLabelsAreTheStoredOnes) {
    const auto cases = allCases<DateLayout>();
    ASSERT_EQ(cases.size(), 3u);
    EXPECT_EQ(cases[0], DateLayout::monthDayYear);
    EXPECT_EQ(cases[1], DateLayout::yearMonthDay);
    EXPECT_EQ(cases[2], DateLayout::dayMonthYear);
    EXPECT_EQ(rawValue(DateLayout::monthDayYear), "monthDayYear");
    EXPECT_EQ(rawValue(DateLayout::yearMonthDay), "yearMonthDay");
    EXPECT_EQ(rawValue(DateLayout::dayMonthYear), "dayMonthYear");
    EXPECT_EQ(enumFromRaw<DateLayout>("dayMonthYear"), DateLayout::dayMonthYear);
    EXPECT_EQ(enumFromRaw<DateLayout>("DayMonthYear"), std::nullopt);
    EXPECT_EQ(label(DateLayout::monthDayYear), "Month/Day/Year");
    EXPECT_EQ(label(DateLayout::yearMonthDay), "Year-Month-Day");
    EXPECT_EQ(label(DateLayout::dayMonthYear), "Day/Month/Year");
}

TEST(DateLayout, ParseIgnoresATimeBehindTheDate) {
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "3/14/26 12:00"), date(2026, 3, 14));
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "2026-03-14T08:00:00Z"), date(2026, 3, 14));
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "2026-03-14 08:00:00"), date(2026, 3, 14));
    EXPECT_EQ(parseDate(DateLayout::dayMonthYear, "14.03.2026 8.00"), date(2026, 3, 14));
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "  3/14/2026\t"), date(2026, 3, 14));
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "\t3/14/2026 PM"), date(2026, 3, 14));
    // Only an upper-case T starts a time.
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "2026-03-14t08"), std::nullopt);
    // Newlines are not trimmed.
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "\n3/14/2026"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, ""), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, " 3/14/2026"), date(2026, 3, 14));
}

TEST(DateLayout, ParsePutsEachPieceInItsField) {
    EXPECT_EQ(parseDate(DateLayout::dayMonthYear, "14.03.2026"), date(2026, 3, 14));
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "03/04/2026"), date(2026, 3, 4));
    EXPECT_EQ(parseDate(DateLayout::dayMonthYear, "03/04/2026"), date(2026, 4, 3));
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "2026/4/3"), date(2026, 4, 3));
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "13/14/2026"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::dayMonthYear, "14/13/2026"), std::nullopt);
    // Any of the three separators, mixed, and runs of them.
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "3-14.2026"), date(2026, 3, 14));
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "3//14//2026"), date(2026, 3, 14));
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "/3/14/2026/"), date(2026, 3, 14));
    // Two pieces or four are no date, whatever the separators.
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "3/14/2026/1"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "2026-03"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "--"), std::nullopt);
    // The standard integer reader tolerates a leading plus.
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "+3/14/2026"), date(2026, 3, 14));
}

TEST(DateLayout, TwoDigitYearsAreAlwaysThisCenturyAndNeverYearFirst) {
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "3/14/99"), date(2099, 3, 14));
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "3/14/00"), date(2000, 3, 14));
    EXPECT_EQ(parseDate(DateLayout::dayMonthYear, "31/01/26"), date(2026, 1, 31));
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "2/29/24"), date(2024, 2, 29));
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "2/29/25"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "26-03-14"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "26-3-14"), std::nullopt);
}

TEST(DateLayout, ParseRefusesPiecesOfTheWrongLength) {
    for (const std::string_view text :
         {"3/14", "3/14/2026/1", "3/14/026", "3/14/20266", "3/14/6", "003/14/2026", "3/014/2026"}) {
        EXPECT_EQ(parseDate(DateLayout::monthDayYear, text), std::nullopt) << text;
    }
    for (const std::string_view text : {"2026-003-14", "2026-03-014", "02026-03-14", "202-03-14"}) {
        EXPECT_EQ(parseDate(DateLayout::yearMonthDay, text), std::nullopt) << text;
    }
}

TEST(DateLayout, ParseRefusesWhatIsNotAPlainNumber) {
    for (const std::string_view text : {"Mar/14/2026", "3/14/2O26", "3a/14/2026", "3/+/2026",
                                        "\xEF\xBC\x93/14/2026", "3/14/ 2026"}) {
        EXPECT_EQ(parseDate(DateLayout::monthDayYear, text), std::nullopt) << text;
    }
}

TEST(DateLayout, ParseChecksTheYearRangeAndMonthLengths) {
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "12/31/1899"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "1/1/1900"), date(1900, 1, 1));
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "2200-12-31"), date(2200, 12, 31));
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "2201-01-01"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "0026-03-14"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::dayMonthYear, "31/04/2026"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::dayMonthYear, "00/04/2026"), std::nullopt);
}

TEST(DateLayout, DetectPrefersTheLayoutMostSamplesFit) {
    using Samples = std::vector<std::string>;
    EXPECT_EQ(detectDateLayout(Samples{"31/01/2026", "28/02/2026"}), DateLayout::dayMonthYear);
    EXPECT_EQ(detectDateLayout(Samples{"2026-01-31", "2026-02-28"}), DateLayout::yearMonthDay);
    EXPECT_EQ(detectDateLayout(Samples{"01/02/2026", "13/02/2026", "14/02/2026"}),
              DateLayout::dayMonthYear);
    // One readable sample among many unreadable ones is enough.
    EXPECT_EQ(detectDateLayout(Samples{"garbage", "n/a", "", "3/14/2026"}),
              DateLayout::monthDayYear);
}

TEST(DateLayout, DetectBreaksTiesByDeclarationOrder) {
    using Samples = std::vector<std::string>;
    EXPECT_EQ(detectDateLayout(Samples{"01/02/2026"}), DateLayout::monthDayYear);
    // One sample each for day-first and month-first: month-first is declared earlier.
    EXPECT_EQ(detectDateLayout(Samples{"13/02/2026", "02/13/2026"}), DateLayout::monthDayYear);
    // One each for year-first and day-first: year-first is declared earlier.
    EXPECT_EQ(detectDateLayout(Samples{"2026-01-31", "31/01/2026"}), DateLayout::yearMonthDay);
}

TEST(DateLayout, DetectNamesNoLayoutWhenNothingIsReadable) {
    using Samples = std::vector<std::string>;
    EXPECT_EQ(detectDateLayout(Samples{"hello", ""}), std::nullopt);
    EXPECT_EQ(detectDateLayout(Samples{}), std::nullopt);
    EXPECT_EQ(detectDateLayout(Samples{"  ", "\t", "3/14"}), std::nullopt);
}

// Month names settle the order whatever the layout, in the ways European and
// English exports write them.
TEST(DateLayout, AMonthNameIsReadUnderEveryLayout) {
    const struct {
        std::string_view text;
        LocalDate expected;
    } cases[] = {
        {"04 Nov 2020", date(2020, 11, 4)},       {"4. Nov. 2020", date(2020, 11, 4)},
        {"04-Nov-2020", date(2020, 11, 4)},       {"04-NOV-20", date(2020, 11, 4)},
        {"Nov 4, 2020", date(2020, 11, 4)},       {"2020-Nov-04", date(2020, 11, 4)},
        {"04 Nov 2020 12:30", date(2020, 11, 4)}, {"3. Okt. 2021", date(2021, 10, 3)},
        {"12 Mrz 2021", date(2021, 3, 12)},       {"12. März 2021", date(2021, 3, 12)},
        {"1 Mär 2021", date(2021, 3, 1)},         {"3 déc. 2020", date(2020, 12, 3)},
        {"3 DÉC 2020", date(2020, 12, 3)},        {"7 févr. 2021", date(2021, 2, 7)},
        {"15 mei 2021", date(2021, 5, 15)},       {"15-dic-2021", date(2021, 12, 15)},
        {"1 ene 2022", date(2022, 1, 1)},         {"29 Feb 2024", date(2024, 2, 29)},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.text));
        for (const DateLayout layout : allCases<DateLayout>())
            EXPECT_EQ(parseDate(layout, c.text), c.expected);
    }
    for (const std::string_view text :
         {"29 Feb 2025", "04 Nov", "Nov 2020", "04 Nox 2020", "004 Nov 2020", "04 Nov 202",
          "04 Nov 2020 extra", "Nov Nov 2020", "hello world 2020"}) {
        EXPECT_EQ(parseNamedMonthDate(text), std::nullopt) << text;
        EXPECT_EQ(parseDate(DateLayout::dayMonthYear, text), std::nullopt) << text;
    }
}

TEST(DateLayout, EightDigitsAreAYearFirstDateOnly) {
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "20201104"), date(2020, 11, 4));
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "20240229"), date(2024, 2, 29));
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "20250229"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::yearMonthDay, "2020110"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::dayMonthYear, "04112020"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "11042020"), std::nullopt);
    EXPECT_EQ(detectDateLayout({"20201104", "20201105"}), DateLayout::yearMonthDay);
}

}  // namespace
}  // namespace copperwick
