#pragma once

// A calendar day with no time and no zone: the date of a transaction, the day a
// budget month starts, the end of a report period. A plain copyable value that
// compares as three integers (year, then month, then day), so no date in the
// ledger needs a calendar service to be sorted or grouped. Made through `make`
// or `fromISO` it lies between 1900-01-01 and 2200-12-31 and names a real day;
// the fields themselves are unchecked. Safe on any thread.

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include <unicode/uversion.h>

#include "core/model/instant.h"

U_NAMESPACE_BEGIN
class TimeZone;
U_NAMESPACE_END

namespace copperwick {

struct LocalDate {
    int year = 1970;
    int month = 1;
    int day = 1;

    // The checked constructor: year 1900 to 2200, month 1 to 12, a day the month
    // has. Every date read from a file passes through here.
    [[nodiscard]] static std::optional<LocalDate> make(int year, int month, int day);

    // Reads "YYYY-MM-DD" (month and day may have one digit) and then checks it
    // like `make`. This is the persisted form.
    [[nodiscard]] static std::optional<LocalDate> fromISO(std::string_view text);

    // The inverse of dayNumber, with no range check.
    [[nodiscard]] static LocalDate fromDayNumber(int64_t dayNumber);

    // The calendar day of `now` in `zone` (Gregorian). Falls back to 2026-01-01
    // when the calendar can't say or the day lies outside the checked range. The
    // only place in the model that looks at a clock.
    [[nodiscard]] static LocalDate today(const icu::TimeZone& zone, Instant now);

    // 28 to 31 by the Gregorian rule; 0 for a month outside 1 to 12.
    [[nodiscard]] static int daysInMonth(int year, int month);

    // "2026-03-09", zero-padded; also how a date is written into logs and tests.
    [[nodiscard]] std::string iso() const;

    // "2026-03": the key for grouping by month. Sorts as text in date order.
    [[nodiscard]] std::string monthKey() const;

    // Days since 1970-01-01 (which is 0) in the proleptic Gregorian calendar.
    [[nodiscard]] int64_t dayNumber() const;

    [[nodiscard]] LocalDate addingDays(int64_t days) const;

    // Keeps the day unless the target month is shorter, then takes its last day:
    // January 31 plus one month is February 28 or 29. Nothing carries over, so
    // adding one month twice can differ from adding two.
    [[nodiscard]] LocalDate addingMonths(int64_t months) const;

    // `other` minus this date, in days; negative when `other` is earlier.
    [[nodiscard]] int64_t daysUntil(LocalDate other) const;

    [[nodiscard]] LocalDate firstOfMonth() const;
    [[nodiscard]] LocalDate lastOfMonth() const;

    friend auto operator<=>(const LocalDate&, const LocalDate&) = default;
    friend bool operator==(const LocalDate&, const LocalDate&) = default;
};

// Writes the iso form, so that test failures and diagnostics read as dates.
std::ostream& operator<<(std::ostream& stream, const LocalDate& date);

namespace detail {
// The integer reader the date parsers share: an optional "+" or "-", then one
// or more ASCII digits. Absent for anything else or beyond 64 bits.
[[nodiscard]] std::optional<int64_t> readInteger(std::string_view text);
}  // namespace detail

}  // namespace copperwick

template <>
struct std::hash<copperwick::LocalDate> {
    std::size_t operator()(const copperwick::LocalDate& date) const noexcept {
        const int64_t packed = (int64_t{date.year} * 16 + date.month) * 32 + date.day;
        return std::hash<int64_t>{}(packed);
    }
};
