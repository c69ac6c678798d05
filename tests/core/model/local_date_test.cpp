#include "core/model/local_date.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <unordered_set>

#include <gtest/gtest.h>
#include <unicode/timezone.h>
#include <unicode/unistr.h>

namespace copperwick {
namespace {

constexpr LocalDate date(int year, int month, int day) {
    return LocalDate{year, month, day};
}

TEST(LocalDate, CheckedConstructorRefusesDaysThatDoNotExist) {
    struct Case {
        int year, month, day;
        bool valid;
    };
    const Case cases[] = {
        {2000, 2, 29, true},   {2024, 2, 29, true},   {2026, 2, 29, false}, {2100, 2, 29, false},
        {1900, 2, 29, false},  {2026, 2, 30, false},  {2026, 4, 31, false}, {2026, 4, 30, true},
        {2026, 12, 31, true},  {2026, 12, 32, false}, {2026, 1, 0, false},  {2026, 0, 1, false},
        {2026, 13, 1, false},  {2026, -1, 1, false},  {1900, 1, 1, true},   {2200, 12, 31, true},
        {1899, 12, 31, false}, {2201, 1, 1, false},   {26, 3, 9, false},    {3026, 3, 9, false},
    };
    for (const Case& c : cases) {
        const auto made = LocalDate::make(c.year, c.month, c.day);
        EXPECT_EQ(made.has_value(), c.valid) << c.year << "-" << c.month << "-" << c.day;
        if (made) {
            EXPECT_EQ(*made, date(c.year, c.month, c.day));
        }
    }
}

TEST(LocalDate, DaysInMonthFollowsTheGregorianLeapRule) {
    EXPECT_EQ(LocalDate::daysInMonth(2024, 2), 29);
    EXPECT_EQ(LocalDate::daysInMonth(2026, 2), 28);
    EXPECT_EQ(LocalDate::daysInMonth(2000, 2), 29);  // divisible by 400
    EXPECT_EQ(LocalDate::daysInMonth(1900, 2), 28);  // divisible by 100 only
    EXPECT_EQ(LocalDate::daysInMonth(2100, 2), 28);
    const int lengths[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    for (int month = 1; month <= 12; ++month) {
        EXPECT_EQ(LocalDate::daysInMonth(2026, month), lengths[month - 1]) << month;
    }
    EXPECT_EQ(LocalDate::daysInMonth(2026, 0), 0);
    EXPECT_EQ(LocalDate::daysInMonth(2026, 13), 0);
}

TEST(LocalDate, IsoReaderAcceptsOnlyTheIsoShape) {
    EXPECT_EQ(LocalDate::fromISO("2026-03-09"), date(2026, 3, 9));
    EXPECT_EQ(LocalDate::fromISO("2026-3-9"), date(2026, 3, 9));
    EXPECT_EQ(LocalDate::fromISO("2000-02-29"), date(2000, 2, 29));
    for (const std::string_view text : {
             "",
             "26-03-09",
             "02026-03-09",
             "2026-03",
             "2026-03-09-01",
             "2026--09",
             "2026-03-",
             "-2026-03-09",
             "2026/03/09",
             "2026-03-09 ",
             " 2026-03-09",
             "2026-03-09T00:00",
             "2026-0x-09",
             "2026-03-99999999999999999999",
             "2026-02-29",
             "0026-03-09",
             "3026-03-09",
         }) {
        EXPECT_EQ(LocalDate::fromISO(text), std::nullopt) << "text: \"" << text << "\"";
    }
}

TEST(LocalDate, IsoZeroPadsEveryField) {
    EXPECT_EQ(date(2026, 3, 9).iso(), "2026-03-09");
    EXPECT_EQ(date(2026, 3, 9).monthKey(), "2026-03");
    EXPECT_EQ(date(2026, 12, 31).iso(), "2026-12-31");
    EXPECT_EQ(date(26, 3, 9).iso(), "0026-03-09");
    // Zero-padded keys sort as text in date order.
    EXPECT_LT(date(2026, 9, 1).monthKey(), date(2026, 10, 1).monthKey());
}

TEST(LocalDate, EveryCheckedDayRoundTripsThroughIsoAndDayNumber) {
    const LocalDate first = date(1900, 1, 1);
    const LocalDate last = date(2200, 12, 31);
    EXPECT_EQ(first.dayNumber(), -25567);
    EXPECT_EQ(last.dayNumber(), 84370);

    LocalDate expected = first;
    for (int64_t number = first.dayNumber(); number <= last.dayNumber(); ++number) {
        const LocalDate made = LocalDate::fromDayNumber(number);
        ASSERT_EQ(made, expected) << "day number " << number;
        ASSERT_EQ(made.dayNumber(), number);
        ASSERT_EQ(LocalDate::fromISO(made.iso()), made);
        // Step the calendar by hand, independently of the arithmetic under test.
        if (expected.day < LocalDate::daysInMonth(expected.year, expected.month)) {
            ++expected.day;
        } else if (expected.month < 12) {
            expected = date(expected.year, expected.month + 1, 1);
        } else {
            expected = date(expected.year + 1, 1, 1);
        }
    }
}

TEST(LocalDate, DayNumberCountsFromTheUnixEpochOnBothSides) {
    EXPECT_EQ(date(1970, 1, 1).dayNumber(), 0);
    EXPECT_EQ(date(1969, 12, 31).dayNumber(), -1);
    EXPECT_EQ(date(1970, 1, 2).dayNumber(), 1);
    EXPECT_EQ(date(2000, 3, 1).dayNumber(), 11017);
    EXPECT_EQ(date(2024, 2, 29).dayNumber(), 19782);
    EXPECT_EQ(date(2026, 3, 9).dayNumber(), 20521);
    // Far outside the checked range the arithmetic still floors correctly.
    EXPECT_EQ(date(0, 3, 1).dayNumber(), -719468);
    EXPECT_EQ(date(0, 2, 29).dayNumber(), -719469);
    for (const int64_t number : {int64_t{-719469}, int64_t{-719468}, int64_t{-1000000},
                                 int64_t{-146097 * 3 - 1}, int64_t{5000000}}) {
        EXPECT_EQ(LocalDate::fromDayNumber(number).dayNumber(), number) << number;
    }
    EXPECT_EQ(LocalDate::fromDayNumber(-719469), date(0, 2, 29));
}

TEST(LocalDate, AddingDaysCrossesMonthAndYearEnds) {
    EXPECT_EQ(date(2024, 2, 28).addingDays(1), date(2024, 2, 29));
    EXPECT_EQ(date(2026, 2, 28).addingDays(1), date(2026, 3, 1));
    EXPECT_EQ(date(2024, 3, 1).addingDays(-1), date(2024, 2, 29));
    EXPECT_EQ(date(2025, 12, 31).addingDays(1), date(2026, 1, 1));
    EXPECT_EQ(date(2026, 1, 1).addingDays(-1), date(2025, 12, 31));
    EXPECT_EQ(date(2026, 3, 9).addingDays(0), date(2026, 3, 9));
    EXPECT_EQ(date(2024, 1, 1).addingDays(366), date(2025, 1, 1));
}

TEST(LocalDate, DaysUntilIsOtherMinusSelf) {
    EXPECT_EQ(date(2026, 1, 1).daysUntil(date(2026, 12, 31)), 364);
    EXPECT_EQ(date(2026, 12, 31).daysUntil(date(2026, 1, 1)), -364);
    EXPECT_EQ(date(2024, 1, 1).daysUntil(date(2025, 1, 1)), 366);
    EXPECT_EQ(date(2026, 2, 28).daysUntil(date(2026, 3, 1)), 1);
    EXPECT_EQ(date(2026, 3, 9).daysUntil(date(2026, 3, 9)), 0);
}

TEST(LocalDate, AddingMonthsClampsToTheTargetMonthWithoutCarrying) {
    EXPECT_EQ(date(2026, 1, 31).addingMonths(1), date(2026, 2, 28));
    EXPECT_EQ(date(2024, 1, 31).addingMonths(1), date(2024, 2, 29));
    EXPECT_EQ(date(2026, 3, 31).addingMonths(-1), date(2026, 2, 28));
    EXPECT_EQ(date(2026, 5, 31).addingMonths(1), date(2026, 6, 30));
    EXPECT_EQ(date(2024, 2, 29).addingMonths(12), date(2025, 2, 28));
    EXPECT_EQ(date(2024, 2, 29).addingMonths(48), date(2028, 2, 29));
    // The clamp does not carry: two single steps lose the 31st, one double step keeps it.
    EXPECT_EQ(date(2026, 1, 31).addingMonths(1).addingMonths(1), date(2026, 3, 28));
    EXPECT_EQ(date(2026, 1, 31).addingMonths(2), date(2026, 3, 31));
    EXPECT_EQ(date(2026, 3, 9).addingMonths(0), date(2026, 3, 9));
}

TEST(LocalDate, AddingMonthsMovesAcrossYearEndsBothWays) {
    EXPECT_EQ(date(2026, 12, 15).addingMonths(1), date(2027, 1, 15));
    EXPECT_EQ(date(2026, 1, 15).addingMonths(-1), date(2025, 12, 15));
    EXPECT_EQ(date(2026, 1, 15).addingMonths(-12), date(2025, 1, 15));
    EXPECT_EQ(date(2026, 1, 15).addingMonths(-13), date(2024, 12, 15));
    EXPECT_EQ(date(2026, 12, 15).addingMonths(-12), date(2025, 12, 15));
    EXPECT_EQ(date(2026, 11, 30).addingMonths(14), date(2028, 1, 30));
    EXPECT_EQ(date(2026, 3, 1).addingMonths(-27), date(2023, 12, 1));
}

TEST(LocalDate, FirstAndLastOfMonthFollowTheMonthLength) {
    EXPECT_EQ(date(2024, 2, 10).firstOfMonth(), date(2024, 2, 1));
    EXPECT_EQ(date(2024, 2, 10).lastOfMonth(), date(2024, 2, 29));
    EXPECT_EQ(date(2026, 2, 10).lastOfMonth(), date(2026, 2, 28));
    EXPECT_EQ(date(2026, 4, 30).lastOfMonth(), date(2026, 4, 30));
    EXPECT_EQ(date(2026, 12, 1).lastOfMonth(), date(2026, 12, 31));
}

TEST(LocalDate, OrdersByYearThenMonthThenDay) {
    EXPECT_LT(date(2025, 12, 31), date(2026, 1, 1));
    EXPECT_LT(date(2026, 2, 28), date(2026, 3, 1));
    EXPECT_LT(date(2026, 3, 9), date(2026, 3, 10));
    EXPECT_GT(date(2026, 10, 1), date(2026, 9, 30));

    std::unordered_set<LocalDate> days;
    for (LocalDate day = date(2024, 1, 1); day.year == 2024; day = day.addingDays(1)) {
        days.insert(day);
    }
    EXPECT_EQ(days.size(), 366u);
    EXPECT_TRUE(days.contains(date(2024, 2, 29)));
}

// Unix seconds of a moment given in UTC.
Instant utc(LocalDate day, int hour, int minute = 0) {
    const int64_t seconds = day.dayNumber() * 86400 + hour * 3600 + minute * 60;
    return Instant::fromUnixSeconds(static_cast<double>(seconds));
}

std::unique_ptr<icu::TimeZone> zone(const char* name) {
    return std::unique_ptr<icu::TimeZone>(icu::TimeZone::createTimeZone(icu::UnicodeString(name)));
}

TEST(LocalDate, TodayIsTheCalendarDayInTheGivenZone) {
    const Instant earlyMorningUtc = utc(date(2026, 3, 9), 3);
    EXPECT_EQ(LocalDate::today(*zone("UTC"), earlyMorningUtc), date(2026, 3, 9));
    EXPECT_EQ(LocalDate::today(*zone("America/New_York"), earlyMorningUtc), date(2026, 3, 8));
    EXPECT_EQ(LocalDate::today(*zone("Asia/Tokyo"), earlyMorningUtc), date(2026, 3, 9));
    EXPECT_EQ(LocalDate::today(*zone("Pacific/Kiritimati"), utc(date(2026, 3, 9), 12)),
              date(2026, 3, 10));

    const Instant newYearsEveUtc = utc(date(2025, 12, 31), 23, 30);
    EXPECT_EQ(LocalDate::today(*zone("Asia/Tokyo"), newYearsEveUtc), date(2026, 1, 1));
    EXPECT_EQ(LocalDate::today(*zone("America/Los_Angeles"), newYearsEveUtc), date(2025, 12, 31));
    EXPECT_EQ(LocalDate::today(*zone("UTC"), utc(date(2024, 2, 29), 23, 59)), date(2024, 2, 29));
}

TEST(LocalDate, TodayFallsBackWhenTheDayIsOutOfRange) {
    const auto utcZone = zone("UTC");
    EXPECT_EQ(LocalDate::today(*utcZone, utc(date(1850, 6, 1), 12)), date(2026, 1, 1));
    EXPECT_EQ(LocalDate::today(*utcZone, utc(date(2300, 6, 1), 12)), date(2026, 1, 1));
    EXPECT_EQ(LocalDate::today(*utcZone, utc(date(2200, 12, 31), 12)), date(2200, 12, 31));
    // Around 2050 BC: the year within its era reads 2050, which must not pass for AD 2050.
    EXPECT_EQ(LocalDate::today(*utcZone, utc(date(-2049, 6, 15), 12)), date(2026, 1, 1));
}

}  // namespace
}  // namespace copperwick
