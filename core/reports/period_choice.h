#pragma once

// The named periods a report can cover ("Last 3 months"), and the days each
// one means relative to a given today. Screens key a choice by its raw value;
// an unknown raw value gives no choice (enumFromRaw), and allCases lists them
// in the order they are offered.
//
// `today` is never read from a clock here: the caller computes it with
// LocalDate::today in the ledger's time zone. All arithmetic is on calendar
// days, so the functions are pure and safe on any thread.

#include <optional>
#include <string_view>

#include "core/model/date_span.h"
#include "core/model/enum_text.h"
#include "core/model/ledger.h"
#include "core/model/local_date.h"

namespace copperwick {

enum class PeriodChoice {
    thisMonth,
    lastMonth,
    last3Months,
    yearToDate,
    lastYear,
    last12Months,
    allTime,
    custom,
};

template <>
struct EnumTraits<PeriodChoice> {
    static constexpr std::array<std::pair<PeriodChoice, std::string_view>, 8> cases{{
        {PeriodChoice::thisMonth, "thisMonth"},
        {PeriodChoice::lastMonth, "lastMonth"},
        {PeriodChoice::last3Months, "last3Months"},
        {PeriodChoice::yearToDate, "yearToDate"},
        {PeriodChoice::lastYear, "lastYear"},
        {PeriodChoice::last12Months, "last12Months"},
        {PeriodChoice::allTime, "allTime"},
        {PeriodChoice::custom, "custom"},
    }};
};

// "This month", "Last 3 months", "Custom…".
[[nodiscard]] std::string_view label(PeriodChoice choice);

// The days the choice covers on `today`. Periods that run up to now end on
// the last day of this month rather than today, so a month's figures stay
// comparable while it runs; the "last N months" periods leave this month
// out. `earliest` is the date of the ledger's first transaction, if any;
// the custom dates are used only by `custom`, in either order.
[[nodiscard]] DateSpan span(PeriodChoice choice, LocalDate today,
                            const std::optional<LocalDate>& earliest, LocalDate customStart,
                            LocalDate customEnd);

// The date of the ledger's first active transaction, where "All time"
// begins; absent for a ledger with none.
[[nodiscard]] std::optional<LocalDate> earliestDate(const Ledger& ledger);

// The days the choice covers on `today` for this ledger: `span` with the
// ledger's earliest date.
[[nodiscard]] DateSpan span(PeriodChoice choice, const Ledger& ledger, LocalDate today,
                            LocalDate customStart, LocalDate customEnd);

}  // namespace copperwick
