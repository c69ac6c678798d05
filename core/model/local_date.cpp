#include "core/model/local_date.h"

#include <algorithm>
#include <limits>
#include <ostream>
#include <vector>

#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

#include "core/model/checked.h"
#include "core/model/text.h"

namespace copperwick {

namespace {

constexpr int kFirstYear = 1900;
constexpr int kLastYear = 2200;

// Days from 0000-03-01 to 1970-01-01. Counting years from March puts the leap
// day at the end of the year, which keeps the month arithmetic free of cases.
constexpr int64_t kEpochShift = 719'468;
constexpr int64_t kDaysPerEra = 146'097;  // 400 Gregorian years

// Rounds toward negative infinity, so that days before 0000-03-01 still fall
// into the right era and year.
int64_t floorDiv(int64_t value, int64_t divisor) {
    const int64_t quotient = value / divisor;
    return (value % divisor != 0 && value < 0) ? quotient - 1 : quotient;
}

std::string zeroPadded(int value, std::size_t width) {
    const bool negative = value < 0;
    std::string digits = std::to_string(negative ? -int64_t{value} : int64_t{value});
    const std::size_t room = negative ? width - 1 : width;
    if (digits.size() < room)
        digits.insert(0, room - digits.size(), '0');
    return negative ? "-" + digits : digits;
}

std::optional<int> readIntField(std::string_view text) {
    const auto value = detail::readInteger(text);
    if (!value || *value < std::numeric_limits<int>::min() ||
        *value > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return static_cast<int>(*value);
}

}  // namespace

namespace detail {

std::optional<int64_t> readInteger(std::string_view text) {
    bool negative = false;
    if (!text.empty() && (text.front() == '+' || text.front() == '-')) {
        negative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (text.empty())
        return std::nullopt;
    int64_t value = 0;
    for (const char c : text) {
        if (c < '0' || c > '9')
            return std::nullopt;
        const int64_t digit = c - '0';
        if (value > (std::numeric_limits<int64_t>::max() - digit) / 10)
            return std::nullopt;
        value = checked::add(checked::mul(value, 10), digit);
    }
    return negative ? checked::neg(value) : value;
}

}  // namespace detail

std::optional<LocalDate> LocalDate::make(int year, int month, int day) {
    if (year < kFirstYear || year > kLastYear)
        return std::nullopt;
    if (month < 1 || month > 12)
        return std::nullopt;
    if (day < 1 || day > daysInMonth(year, month))
        return std::nullopt;
    return LocalDate{year, month, day};
}

std::optional<LocalDate> LocalDate::fromISO(std::string_view text) {
    const auto pieces = text::splitKeepingEmpty(text, '-');
    if (pieces.size() != 3 || pieces[0].size() != 4)
        return std::nullopt;
    const auto year = readIntField(pieces[0]);
    const auto month = readIntField(pieces[1]);
    const auto day = readIntField(pieces[2]);
    if (!year || !month || !day)
        return std::nullopt;
    return make(*year, *month, *day);
}

LocalDate LocalDate::fromDayNumber(int64_t dayNumber) {
    const int64_t shifted = checked::add(dayNumber, kEpochShift);
    const int64_t era = floorDiv(shifted, kDaysPerEra);
    const int64_t dayOfEra = shifted - era * kDaysPerEra;  // 0 to 146096
    const int64_t yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const int64_t dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const int64_t monthFromMarch = (5 * dayOfYear + 2) / 153;  // 0 is March
    const int64_t day = dayOfYear - (153 * monthFromMarch + 2) / 5 + 1;
    const int64_t month = monthFromMarch < 10 ? monthFromMarch + 3 : monthFromMarch - 9;
    const int64_t year = yearOfEra + era * 400 + (month <= 2 ? 1 : 0);
    return LocalDate{static_cast<int>(year), static_cast<int>(month), static_cast<int>(day)};
}

LocalDate LocalDate::today(const icu::TimeZone& zone, Instant now) {
    constexpr LocalDate kFallback{2026, 1, 1};
    UErrorCode status = U_ZERO_ERROR;
    // The root locale: the calendar day must not depend on regional settings.
    icu::GregorianCalendar calendar(zone, icu::Locale::getRoot(), status);
    if (U_FAILURE(status))
        return kFallback;
    calendar.setTime(now.unixSeconds() * 1000.0, status);
    if (U_FAILURE(status))
        return kFallback;

    const auto field = [&calendar](UCalendarDateFields which) -> std::optional<int> {
        UErrorCode fieldStatus = U_ZERO_ERROR;
        const int value = calendar.get(which, fieldStatus);
        if (U_FAILURE(fieldStatus))
            return std::nullopt;
        return value;
    };
    int year = field(UCAL_YEAR).value_or(kFallback.year);
    // UCAL_YEAR counts within the era; a year before Christ must not pass for
    // one of ours.
    if (field(UCAL_ERA) == icu::GregorianCalendar::BC)
        year = 1 - year;
    const auto month = field(UCAL_MONTH);  // 0 is January
    const int day = field(UCAL_DATE).value_or(kFallback.day);
    return make(year, month ? *month + 1 : kFallback.month, day).value_or(kFallback);
}

int LocalDate::daysInMonth(int year, int month) {
    switch (month) {
        case 1:
        case 3:
        case 5:
        case 7:
        case 8:
        case 10:
        case 12:
            return 31;
        case 4:
        case 6:
        case 9:
        case 11:
            return 30;
        case 2: {
            const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
            return leap ? 29 : 28;
        }
        default:
            return 0;
    }
}

std::string LocalDate::iso() const {
    // Written on every stored date and on every row shown: the common
    // four-digit year without building pieces.
    if (year < 1000 || year > 9999)
        return monthKey() + "-" + zeroPadded(day, 2);
    std::string text(10, '-');
    const auto put = [&](std::size_t at, int value, int digits) {
        for (int i = digits - 1; i >= 0; --i, value /= 10)
            text[at + static_cast<std::size_t>(i)] = static_cast<char>('0' + value % 10);
    };
    put(0, year, 4);
    put(5, month, 2);
    put(8, day, 2);
    return text;
}

std::string LocalDate::monthKey() const {
    return zeroPadded(year, 4) + "-" + zeroPadded(month, 2);
}

int64_t LocalDate::dayNumber() const {
    const int64_t marchYear = int64_t{year} - (month <= 2 ? 1 : 0);
    const int64_t era = floorDiv(marchYear, 400);
    const int64_t yearOfEra = marchYear - era * 400;  // 0 to 399
    const int64_t monthFromMarch = month > 2 ? month - 3 : month + 9;
    const int64_t dayOfYear = (153 * monthFromMarch + 2) / 5 + day - 1;
    const int64_t dayOfEra = yearOfEra * 365 + yearOfEra / 4 - yearOfEra / 100 + dayOfYear;
    return era * kDaysPerEra + dayOfEra - kEpochShift;
}

LocalDate LocalDate::addingDays(int64_t days) const {
    return fromDayNumber(checked::add(dayNumber(), days));
}

LocalDate LocalDate::addingMonths(int64_t months) const {
    const int64_t total = checked::add(checked::add(checked::mul(year, 12), month - 1), months);
    const int64_t newYear = floorDiv(total, 12);
    const int newMonth = static_cast<int>(total - newYear * 12) + 1;
    const int newDay = std::min(day, daysInMonth(static_cast<int>(newYear), newMonth));
    return LocalDate{static_cast<int>(newYear), newMonth, newDay};
}

int64_t LocalDate::daysUntil(LocalDate other) const {
    return checked::sub(other.dayNumber(), dayNumber());
}

LocalDate LocalDate::firstOfMonth() const {
    return LocalDate{year, month, 1};
}

LocalDate LocalDate::lastOfMonth() const {
    return LocalDate{year, month, daysInMonth(year, month)};
}

std::ostream& operator<<(std::ostream& stream, const LocalDate& date) {
    return stream << date.iso();
}

}  // namespace copperwick
