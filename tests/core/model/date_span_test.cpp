#include "core/model/date_span.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

constexpr LocalDate date(int year, int month, int day) {
    return LocalDate{year, month, day};
}

const std::string kDash = " \xE2\x80\x93 ";  // U+2013 between spaces

TEST(DateSpan, ConstructorSortsButDecodingKeepsTheOrder) {
    const DateSpan sorted(date(2026, 3, 31), date(2026, 3, 1));
    EXPECT_EQ(sorted.start, date(2026, 3, 1));
    EXPECT_EQ(sorted.end, date(2026, 3, 31));

    const DateSpan stored = DateSpan::unsorted(date(2026, 3, 31), date(2026, 3, 1));
    EXPECT_EQ(stored.start, date(2026, 3, 31));
    EXPECT_EQ(stored.end, date(2026, 3, 1));
    EXPECT_NE(stored, sorted);
}

TEST(DateSpan, DayCountAndContainsIncludeBothEnds) {
    const DateSpan oneDay(date(2026, 3, 9), date(2026, 3, 9));
    EXPECT_EQ(oneDay.dayCount(), 1);
    EXPECT_TRUE(oneDay.contains(date(2026, 3, 9)));
    EXPECT_FALSE(oneDay.contains(date(2026, 3, 8)));
    EXPECT_FALSE(oneDay.contains(date(2026, 3, 10)));

    const DateSpan leapFebruary = DateSpan::month(date(2024, 2, 10));
    EXPECT_EQ(leapFebruary.dayCount(), 29);
    EXPECT_TRUE(leapFebruary.contains(date(2024, 2, 1)));
    EXPECT_TRUE(leapFebruary.contains(date(2024, 2, 29)));
    EXPECT_FALSE(leapFebruary.contains(date(2024, 1, 31)));
    EXPECT_FALSE(leapFebruary.contains(date(2024, 3, 1)));

    EXPECT_EQ(DateSpan(date(2025, 12, 1), date(2026, 1, 31)).dayCount(), 62);
}

TEST(DateSpan, MonthRunsFromTheFirstToTheLastDay) {
    EXPECT_EQ(DateSpan::month(date(2024, 2, 10)), DateSpan(date(2024, 2, 1), date(2024, 2, 29)));
    EXPECT_EQ(DateSpan::month(date(2026, 2, 28)), DateSpan(date(2026, 2, 1), date(2026, 2, 28)));
    EXPECT_EQ(DateSpan::month(date(2026, 12, 31)), DateSpan(date(2026, 12, 1), date(2026, 12, 31)));
}

TEST(DateSpan, PreviousOfWholeMonthsStepsBackByCalendarMonths) {
    const auto previous = [](LocalDate start, LocalDate end) {
        return DateSpan(start, end).previous();
    };
    EXPECT_EQ(previous(date(2026, 3, 1), date(2026, 3, 31)),
              DateSpan(date(2026, 2, 1), date(2026, 2, 28)));
    EXPECT_EQ(previous(date(2024, 3, 1), date(2024, 3, 31)),
              DateSpan(date(2024, 2, 1), date(2024, 2, 29)));
    // A month shorter than the one before: stepping back by 29 days would land on Jan 3.
    EXPECT_EQ(previous(date(2024, 2, 1), date(2024, 2, 29)),
              DateSpan(date(2024, 1, 1), date(2024, 1, 31)));
    EXPECT_EQ(previous(date(2026, 1, 1), date(2026, 3, 31)),
              DateSpan(date(2025, 10, 1), date(2025, 12, 31)));
    EXPECT_EQ(previous(date(2026, 1, 1), date(2026, 12, 31)),
              DateSpan(date(2025, 1, 1), date(2025, 12, 31)));
    EXPECT_EQ(previous(date(2025, 11, 1), date(2026, 2, 28)),
              DateSpan(date(2025, 7, 1), date(2025, 10, 31)));
}

TEST(DateSpan, PreviousOfOtherSpansStepsBackByTheirDayCount) {
    const auto previous = [](LocalDate start, LocalDate end) {
        return DateSpan(start, end).previous();
    };
    EXPECT_EQ(previous(date(2026, 3, 10), date(2026, 3, 19)),
              DateSpan(date(2026, 2, 28), date(2026, 3, 9)));
    EXPECT_EQ(previous(date(2026, 3, 9), date(2026, 3, 9)),
              DateSpan(date(2026, 3, 8), date(2026, 3, 8)));
    // Starting on day 1 alone doesn't make whole months, nor does ending on a last day.
    EXPECT_EQ(previous(date(2026, 3, 1), date(2026, 3, 15)),
              DateSpan(date(2026, 2, 14), date(2026, 2, 28)));
    EXPECT_EQ(previous(date(2026, 3, 2), date(2026, 3, 31)),
              DateSpan(date(2026, 1, 31), date(2026, 3, 1)));
    EXPECT_EQ(previous(date(2024, 2, 1), date(2024, 2, 28)),
              DateSpan(date(2024, 1, 4), date(2024, 1, 31)));
    EXPECT_EQ(previous(date(2026, 1, 1), date(2026, 1, 7)),
              DateSpan(date(2025, 12, 25), date(2025, 12, 31)));
}

TEST(DateSpan, MonthKeysCountPartialMonthsAtBothEnds) {
    using Keys = std::vector<std::string>;
    EXPECT_EQ(DateSpan(date(2026, 3, 9), date(2026, 3, 9)).monthKeys(), Keys{"2026-03"});
    // Stepping a cursor from Jan 31 would reach Mar 28 and miss March.
    EXPECT_EQ(DateSpan(date(2026, 1, 31), date(2026, 3, 1)).monthKeys(),
              (Keys{"2026-01", "2026-02", "2026-03"}));
    EXPECT_EQ(DateSpan(date(2025, 11, 15), date(2026, 2, 2)).monthKeys(),
              (Keys{"2025-11", "2025-12", "2026-01", "2026-02"}));
    EXPECT_EQ(DateSpan::month(date(2026, 2, 1)).monthKeys(), Keys{"2026-02"});
    EXPECT_EQ(DateSpan(date(2026, 1, 1), date(2026, 12, 31)).monthKeys().size(), 12u);
}

TEST(DateSpan, LabelNamesWholeMonthsQuartersAndYears) {
    EXPECT_EQ(DateSpan::month(date(2026, 3, 9)).label(), "March 2026");
    EXPECT_EQ(DateSpan::month(date(2024, 2, 9)).label(), "February 2024");
    EXPECT_EQ(DateSpan(date(2026, 1, 1), date(2026, 12, 31)).label(), "2026");
    EXPECT_EQ(DateSpan(date(2026, 1, 1), date(2026, 3, 31)).label(),
              "Jan 2026" + kDash + "Mar 2026");
    EXPECT_EQ(DateSpan(date(2025, 11, 1), date(2026, 2, 28)).label(),
              "Nov 2025" + kDash + "Feb 2026");
    // Two full years are a range of months, not a year.
    EXPECT_EQ(DateSpan(date(2025, 1, 1), date(2026, 12, 31)).label(),
              "Jan 2025" + kDash + "Dec 2026");
    EXPECT_EQ(DateSpan(date(2026, 2, 1), date(2026, 12, 31)).label(),
              "Feb 2026" + kDash + "Dec 2026");
}

TEST(DateSpan, LabelOfPartialMonthsNamesBothDays) {
    EXPECT_EQ(DateSpan(date(2026, 3, 10), date(2026, 3, 19)).label(),
              "Mar 10, 2026" + kDash + "Mar 19, 2026");
    // February 28 is not the end of a leap February.
    EXPECT_EQ(DateSpan(date(2024, 2, 1), date(2024, 2, 28)).label(),
              "Feb 1, 2024" + kDash + "Feb 28, 2024");
    EXPECT_EQ(DateSpan(date(2026, 3, 9), date(2026, 3, 9)).label(),
              "Mar 9, 2026" + kDash + "Mar 9, 2026");
    EXPECT_EQ(DateSpan(date(2025, 12, 2), date(2026, 12, 31)).label(),
              "Dec 2, 2025" + kDash + "Dec 31, 2026");
}

}  // namespace
}  // namespace copperwick
