#pragma once

// The order of the fields in a bank file's date column. A taught import profile
// stores it by raw value; the import analysis picks one with detectDateLayout
// and reads every date of the column with parseDate. Pure functions, safe on
// any thread.

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/model/enum_text.h"
#include "core/model/local_date.h"

namespace copperwick {

enum class DateLayout {
    monthDayYear,
    yearMonthDay,
    dayMonthYear,
};

template <>
struct EnumTraits<DateLayout> {
    static constexpr std::array<std::pair<DateLayout, std::string_view>, 3> cases{{
        {DateLayout::monthDayYear, "monthDayYear"},
        {DateLayout::yearMonthDay, "yearMonthDay"},
        {DateLayout::dayMonthYear, "dayMonthYear"},
    }};
};

// "Month/Day/Year", "Year-Month-Day", "Day/Month/Year".
[[nodiscard]] std::string_view label(DateLayout layout);

// Reads a date as a bank writes it in `layout`: fields split by "/", "-" or
// ".", a time after a "T" or a space ignored, a two-digit year taken as 20xx
// (except in yearMonthDay, which needs four, and also reads the eight digits
// of "20201104"). A month written as a name is read whatever the layout (see
// parseNamedMonthDate). The result is checked like LocalDate::make.
[[nodiscard]] std::optional<LocalDate> parseDate(DateLayout layout, std::string_view text);

// A date whose month is written as a name, in English or the short forms of
// German, French, Dutch, Spanish and Italian exports: "04 Nov 2020",
// "4. Nov. 2020", "04-Nov-2020", "Nov 4, 2020", "2020-Nov-04", "3 déc. 2020",
// "12 Mrz 2021". The name settles which number is the day, so the reading is
// the same under every layout, and parseDate falls back on it. A two-digit
// year is 20xx; a time after the date is ignored.
[[nodiscard]] std::optional<LocalDate> parseNamedMonthDate(std::string_view text);

// The layout under which most samples parse; a tie goes to the layout declared
// first. Absent when no sample parses under any layout. There is no threshold:
// judging how much agreement is enough is the caller's business.
[[nodiscard]] std::optional<DateLayout> detectDateLayout(const std::vector<std::string>& samples);

}  // namespace copperwick
