#pragma once

// Dates and month keys as English text for headings, lists and the PDF. Written
// out by hand from a fixed table of English month names, so the result never
// depends on the machine's language or regional settings. Pure functions, safe
// on any thread.

#include <string>
#include <string_view>

#include "core/model/local_date.h"

namespace copperwick {

namespace DateText {

// "Mar 9, 2026": the day is not padded.
[[nodiscard]] std::string medium(LocalDate date);

// "Mar 9".
[[nodiscard]] std::string shortText(LocalDate date);

// The days from `first` to `last`: "Mar 9, 2026" for one day, "Jan 14 – Mar 9,
// 2026" within a year, "Dec 3, 2025 – Jan 14, 2026" across one.
[[nodiscard]] std::string range(LocalDate first, LocalDate last);

// "Mar 2026" for the month key "2026-03". A key that doesn't read as a year and
// a month comes back unchanged, so a damaged key shows as itself.
[[nodiscard]] std::string monthLabel(std::string_view monthKey);

}  // namespace DateText

namespace MonthNames {

// "January" to "December" for 1 to 12; "?" for anything else.
[[nodiscard]] std::string_view longName(int month);

// The first three letters of longName: "Jan", "May"; "?" out of range.
[[nodiscard]] std::string_view shortName(int month);

}  // namespace MonthNames

}  // namespace copperwick
