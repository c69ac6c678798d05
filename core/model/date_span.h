#pragma once

// An inclusive run of calendar days: a report period, a budget's months, the
// range of an import. Both ends count. A copyable value, safe on any thread.
// The two-date constructor sorts its ends; `unsorted` keeps them as they stand,
// which is how a stored span is read back.

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "core/model/local_date.h"

namespace copperwick {

struct DateSpan {
    LocalDate start;
    LocalDate end;

    DateSpan() = default;
    // Swaps the ends when `b` comes before `a`, so start <= end always holds.
    DateSpan(LocalDate a, LocalDate b);

    // The ends exactly as given, for decoding persisted spans.
    [[nodiscard]] static DateSpan unsorted(LocalDate start, LocalDate end);

    // Day 1 to the last day of the month holding `containing`.
    [[nodiscard]] static DateSpan month(LocalDate containing);

    // Days in the span, both ends counted: a one-day span is 1.
    [[nodiscard]] int64_t dayCount() const;

    [[nodiscard]] bool contains(LocalDate date) const;

    // The span just before this one. A span of whole months steps back by as
    // many calendar months; any other span by its own number of days.
    [[nodiscard]] DateSpan previous() const;

    // The month key of every month the span touches, first to last, including
    // partial months at either end.
    [[nodiscard]] std::vector<std::string> monthKeys() const;

    // A heading: "March 2026", "2026", "Jan 2026 – Mar 2026", or
    // "Mar 10, 2026 – Mar 19, 2026" for a span that isn't whole months.
    [[nodiscard]] std::string label() const;

    friend bool operator==(const DateSpan&, const DateSpan&) = default;
};

// Writes "start...end" in iso form, for test failures and diagnostics.
std::ostream& operator<<(std::ostream& stream, const DateSpan& span);

}  // namespace copperwick
