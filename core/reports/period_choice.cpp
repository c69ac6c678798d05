#include "core/reports/period_choice.h"

#include <algorithm>

namespace copperwick {

std::string_view label(PeriodChoice choice) {
    switch (choice) {
        case PeriodChoice::thisMonth:
            return "This month";
        case PeriodChoice::lastMonth:
            return "Last month";
        case PeriodChoice::last3Months:
            return "Last 3 months";
        case PeriodChoice::yearToDate:
            return "This year";
        case PeriodChoice::lastYear:
            return "Last year";
        case PeriodChoice::last12Months:
            return "Last 12 months";
        case PeriodChoice::allTime:
            return "All time";
        case PeriodChoice::custom:
            return "Custom\xE2\x80\xA6";  // U+2026 HORIZONTAL ELLIPSIS
    }
    return {};
}

DateSpan span(PeriodChoice choice, LocalDate today, const std::optional<LocalDate>& earliest,
              LocalDate customStart, LocalDate customEnd) {
    const DateSpan month = DateSpan::month(today);
    // Through the day number, so that 1 January steps back into December of
    // the year before.
    const LocalDate lastDay = month.start.addingDays(-1);
    switch (choice) {
        case PeriodChoice::thisMonth:
            return month;
        case PeriodChoice::lastMonth:
            return DateSpan::month(lastDay);
        case PeriodChoice::last3Months:
            return DateSpan(month.start.addingMonths(-3), lastDay);
        case PeriodChoice::last12Months:
            return DateSpan(month.start.addingMonths(-12), lastDay);
        case PeriodChoice::yearToDate: {
            // Outside the years a date may hold there is no 1 January to
            // start from, so the period starts today.
            const LocalDate start = LocalDate::make(today.year, 1, 1).value_or(today);
            return DateSpan(start, month.end);
        }
        case PeriodChoice::lastYear: {
            const auto first = LocalDate::make(today.year - 1, 1, 1);
            const auto last = LocalDate::make(today.year - 1, 12, 31);
            if (!first || !last)
                return DateSpan(today, today);
            return DateSpan(*first, *last);
        }
        case PeriodChoice::allTime: {
            if (!earliest)
                return month;
            // The earliest transaction's own day doesn't matter: the period
            // starts on the first of its month.
            const LocalDate earliestMonth = earliest->firstOfMonth();
            return DateSpan(std::min(month.start, earliestMonth), month.end);
        }
        case PeriodChoice::custom:
            return DateSpan(customStart, customEnd);
    }
    return month;
}

std::optional<LocalDate> earliestDate(const Ledger& ledger) {
    std::optional<LocalDate> earliest;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.isActive() && (!earliest || transaction.date < *earliest))
            earliest = transaction.date;
    }
    return earliest;
}

DateSpan span(PeriodChoice choice, const Ledger& ledger, LocalDate today, LocalDate customStart,
              LocalDate customEnd) {
    // Only "All time" looks at the ledger's dates; the others needn't walk it.
    const auto earliest = choice == PeriodChoice::allTime ? earliestDate(ledger) : std::nullopt;
    return span(choice, today, earliest, customStart, customEnd);
}

}  // namespace copperwick
