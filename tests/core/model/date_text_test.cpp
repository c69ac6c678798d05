#include "core/model/date_text.h"

#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

constexpr LocalDate date(int year, int month, int day) {
    return LocalDate{year, month, day};
}

TEST(MonthNames, ShortNameIsTheFirstThreeLettersOfTheLongName) {
    EXPECT_EQ(MonthNames::longName(1), "January");
    EXPECT_EQ(MonthNames::longName(9), "September");
    EXPECT_EQ(MonthNames::longName(12), "December");
    EXPECT_EQ(MonthNames::shortName(5), "May");
    EXPECT_EQ(MonthNames::shortName(9), "Sep");
    for (int month = 1; month <= 12; ++month) {
        EXPECT_EQ(MonthNames::shortName(month), MonthNames::longName(month).substr(0, 3));
    }
}

TEST(MonthNames, OutOfRangeMonthsAreAQuestionMark) {
    for (const int month : {0, 13, -1, 100}) {
        EXPECT_EQ(MonthNames::longName(month), "?") << month;
        EXPECT_EQ(MonthNames::shortName(month), "?") << month;
    }
}

TEST(DateText, DaysAreNotPadded) {
    EXPECT_EQ(DateText::medium(date(2026, 3, 9)), "Mar 9, 2026");
    EXPECT_EQ(DateText::medium(date(2026, 12, 25)), "Dec 25, 2026");
    EXPECT_EQ(DateText::shortText(date(2026, 3, 9)), "Mar 9");
    EXPECT_EQ(DateText::shortText(date(2024, 2, 29)), "Feb 29");
}

TEST(DateText, RangeNamesTheYearOnceWhenBothEndsShareIt) {
    EXPECT_EQ(DateText::range(date(2026, 3, 9), date(2026, 3, 9)), "Mar 9, 2026");
    EXPECT_EQ(DateText::range(date(2026, 1, 14), date(2026, 3, 9)), "Jan 14 \u2013 Mar 9, 2026");
    EXPECT_EQ(DateText::range(date(2025, 12, 3), date(2026, 1, 14)),
              "Dec 3, 2025 \u2013 Jan 14, 2026");
}

TEST(DateText, MonthLabelReadsAMonthKey) {
    EXPECT_EQ(DateText::monthLabel("2026-03"), "Mar 2026");
    EXPECT_EQ(DateText::monthLabel("2026-12"), "Dec 2026");
    EXPECT_EQ(DateText::monthLabel("2026-3"), "Mar 2026");
    EXPECT_EQ(DateText::monthLabel("2026-13"), "? 2026");
    EXPECT_EQ(DateText::monthLabel("2026-00"), "? 2026");
}

TEST(DateText, MonthLabelShowsADamagedKeyAsItself) {
    for (const std::string_view key :
         {"garbage", "", "2026", "2026-", "2026-03-09", "2026-xx", "20x6-03", "2026-03 "}) {
        EXPECT_EQ(DateText::monthLabel(key), std::string(key)) << key;
    }
}

}  // namespace
}  // namespace copperwick
