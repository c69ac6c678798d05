#include "core/reports/period_choice.h"

#include <sstream>
#include <string>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

constexpr LocalDate date(int year, int month, int day) {
    return LocalDate{year, month, day};
}

// "2024-03-01...2024-03-31", so that a failure shows both ends at once.
std::string on(PeriodChoice choice, LocalDate today,
               std::optional<LocalDate> earliest = std::nullopt) {
    std::ostringstream out;
    out << span(choice, today, earliest, date(2000, 1, 1), date(2000, 1, 2));
    return out.str();
}

TEST(PeriodChoice, RawValuesLabelsAndOrder) {
    std::string listed;
    for (const auto choice : allCases<PeriodChoice>()) {
        listed += std::string(rawValue(choice)) + "=" + std::string(label(choice)) + ";";
        EXPECT_EQ(enumFromRaw<PeriodChoice>(rawValue(choice)), choice);
    }
    EXPECT_EQ(listed,
              "thisMonth=This month;lastMonth=Last month;last3Months=Last 3 months;"
              "yearToDate=This year;lastYear=Last year;last12Months=Last 12 months;"
              "allTime=All time;custom=Custom\xE2\x80\xA6;");
    EXPECT_FALSE(enumFromRaw<PeriodChoice>("last6Months"));
    EXPECT_FALSE(enumFromRaw<PeriodChoice>("ThisMonth"));
}

TEST(PeriodChoice, MidMarchOfALeapYear) {
    const auto today = date(2024, 3, 15);
    EXPECT_EQ(on(PeriodChoice::thisMonth, today), "2024-03-01...2024-03-31");
    EXPECT_EQ(on(PeriodChoice::lastMonth, today), "2024-02-01...2024-02-29");
    EXPECT_EQ(on(PeriodChoice::last3Months, today), "2023-12-01...2024-02-29");
    EXPECT_EQ(on(PeriodChoice::yearToDate, today), "2024-01-01...2024-03-31")
        << "ends with the month, not today";
    EXPECT_EQ(on(PeriodChoice::lastYear, today), "2023-01-01...2023-12-31");
    EXPECT_EQ(on(PeriodChoice::last12Months, today), "2023-03-01...2024-02-29");
}

TEST(PeriodChoice, MidMarchOfACommonYear) {
    const auto today = date(2025, 3, 15);
    EXPECT_EQ(on(PeriodChoice::lastMonth, today), "2025-02-01...2025-02-28");
    EXPECT_EQ(on(PeriodChoice::last3Months, today), "2024-12-01...2025-02-28");
    EXPECT_EQ(on(PeriodChoice::last12Months, today), "2024-03-01...2025-02-28");
}

TEST(PeriodChoice, FirstOfJanuaryReachesIntoTheYearBefore) {
    const auto today = date(2026, 1, 1);
    EXPECT_EQ(on(PeriodChoice::thisMonth, today), "2026-01-01...2026-01-31");
    EXPECT_EQ(on(PeriodChoice::lastMonth, today), "2025-12-01...2025-12-31");
    EXPECT_EQ(on(PeriodChoice::lastYear, today), "2025-01-01...2025-12-31");
    EXPECT_EQ(on(PeriodChoice::yearToDate, today), "2026-01-01...2026-01-31");
    EXPECT_EQ(on(PeriodChoice::last3Months, today), "2025-10-01...2025-12-31");
    EXPECT_EQ(on(PeriodChoice::last12Months, today), "2025-01-01...2025-12-31");
}

TEST(PeriodChoice, LastDaysOfMonthsStepBackWholeMonths) {
    // Stepping a 31st back by months would land on the 28th or 30th.
    EXPECT_EQ(on(PeriodChoice::lastMonth, date(2023, 3, 31)), "2023-02-01...2023-02-28");
    EXPECT_EQ(on(PeriodChoice::last3Months, date(2024, 5, 31)), "2024-02-01...2024-04-30");
    EXPECT_EQ(on(PeriodChoice::thisMonth, date(2024, 2, 29)), "2024-02-01...2024-02-29");
    EXPECT_EQ(on(PeriodChoice::lastYear, date(2024, 2, 29)), "2023-01-01...2023-12-31");
    EXPECT_EQ(on(PeriodChoice::last12Months, date(2025, 2, 28)), "2024-02-01...2025-01-31");
    EXPECT_EQ(on(PeriodChoice::yearToDate, date(2025, 12, 31)), "2025-01-01...2025-12-31");
}

TEST(PeriodChoice, AllTimeStartsOnTheFirstOfTheEarliestMonth) {
    const auto today = date(2026, 3, 15);
    EXPECT_EQ(on(PeriodChoice::allTime, today), "2026-03-01...2026-03-31");
    EXPECT_EQ(on(PeriodChoice::allTime, today, date(2024, 2, 29)), "2024-02-01...2026-03-31");
    EXPECT_EQ(on(PeriodChoice::allTime, today, date(2026, 3, 20)), "2026-03-01...2026-03-31");
    EXPECT_EQ(on(PeriodChoice::allTime, today, date(2026, 4, 2)), "2026-03-01...2026-03-31")
        << "a date after today never moves the start forward";
    EXPECT_EQ(on(PeriodChoice::allTime, today, date(2025, 12, 31)), "2025-12-01...2026-03-31");
}

TEST(PeriodChoice, CustomTakesTheChosenDatesInEitherOrder) {
    const auto today = date(2026, 3, 15);
    const auto custom = [&](LocalDate a, LocalDate b) {
        return span(PeriodChoice::custom, today, date(2020, 1, 1), a, b);
    };
    EXPECT_EQ(custom(date(2025, 6, 10), date(2025, 7, 4)),
              DateSpan::unsorted(date(2025, 6, 10), date(2025, 7, 4)));
    EXPECT_EQ(custom(date(2025, 7, 4), date(2025, 6, 10)),
              DateSpan::unsorted(date(2025, 6, 10), date(2025, 7, 4)));
    // The custom dates play no part in the named periods.
    EXPECT_EQ(
        span(PeriodChoice::thisMonth, today, std::nullopt, date(2025, 6, 10), date(2025, 7, 4)),
        DateSpan::month(today));
}

TEST(PeriodChoice, YearsAtTheEdgesOfTheCalendar) {
    EXPECT_EQ(on(PeriodChoice::lastYear, date(2200, 6, 15)), "2199-01-01...2199-12-31");
    EXPECT_EQ(on(PeriodChoice::lastYear, date(2201, 6, 15)), "2200-01-01...2200-12-31");
    // No year 1899 to point at: the period shrinks to today.
    EXPECT_EQ(on(PeriodChoice::lastYear, date(1900, 6, 15)), "1900-06-15...1900-06-15");
    EXPECT_EQ(on(PeriodChoice::yearToDate, date(1900, 6, 15)), "1900-01-01...1900-06-30");
    // Outside the calendar, "This year" starts today and still ends with the month.
    EXPECT_EQ(on(PeriodChoice::yearToDate, date(2201, 2, 10)), "2201-02-10...2201-02-28");
    EXPECT_EQ(on(PeriodChoice::yearToDate, date(1899, 12, 5)), "1899-12-05...1899-12-31");
}

}  // namespace
}  // namespace copperwick
