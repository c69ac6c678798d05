#include "core/model/date_text.h"

#include <array>
#include <cstdint>
#include <vector>

#include "core/model/text.h"

namespace copperwick {

namespace {

constexpr std::array<std::string_view, 12> kMonthNames{
    "January", "February", "March",     "April",   "May",      "June",
    "July",    "August",   "September", "October", "November", "December",
};

constexpr std::string_view kUnknownMonth = "?";

}  // namespace

namespace MonthNames {

std::string_view longName(int month) {
    if (month < 1 || month > 12)
        return kUnknownMonth;
    return kMonthNames[static_cast<std::size_t>(month - 1)];
}

std::string_view shortName(int month) {
    if (month < 1 || month > 12)
        return kUnknownMonth;
    return longName(month).substr(0, 3);
}

}  // namespace MonthNames

namespace DateText {

std::string medium(LocalDate date) {
    return shortText(date) + ", " + std::to_string(date.year);
}

std::string shortText(LocalDate date) {
    return std::string(MonthNames::shortName(date.month)) + " " + std::to_string(date.day);
}

std::string range(LocalDate first, LocalDate last) {
    if (first == last)
        return medium(first);
    if (first.year == last.year)
        return shortText(first) + " \u2013 " + medium(last);
    return medium(first) + " \u2013 " + medium(last);
}

std::string monthLabel(std::string_view monthKey) {
    const auto pieces = text::splitDroppingEmpty(monthKey, "-");
    if (pieces.size() != 2)
        return std::string(monthKey);
    const auto year = detail::readInteger(pieces[0]);
    const auto month = detail::readInteger(pieces[1]);
    if (!year || !month)
        return std::string(monthKey);
    // A month beyond int is as unknown as month 13.
    const int monthNumber = (*month >= 1 && *month <= 12) ? static_cast<int>(*month) : 0;
    return std::string(MonthNames::shortName(monthNumber)) + " " + std::to_string(*year);
}

}  // namespace DateText

}  // namespace copperwick
