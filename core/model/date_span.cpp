#include "core/model/date_span.h"

#include <ostream>
#include <utility>

#include "core/model/checked.h"
#include "core/model/date_text.h"

namespace copperwick {

namespace {

constexpr std::string_view kRangeDash = " \xE2\x80\x93 ";  // U+2013 between spaces

bool isWholeMonths(const DateSpan& span) {
    return span.start.day == 1 &&
           span.end.day == LocalDate::daysInMonth(span.end.year, span.end.month);
}

int64_t monthIndex(LocalDate date) {
    return checked::add(checked::mul(date.year, 12), date.month);
}

std::string yearText(int year) {
    return std::to_string(year);
}

}  // namespace

DateSpan::DateSpan(LocalDate a, LocalDate b) : start(a), end(b) {
    if (end < start)
        std::swap(start, end);
}

DateSpan DateSpan::unsorted(LocalDate start, LocalDate end) {
    DateSpan span;
    span.start = start;
    span.end = end;
    return span;
}

DateSpan DateSpan::month(LocalDate containing) {
    return DateSpan(containing.firstOfMonth(), containing.lastOfMonth());
}

int64_t DateSpan::dayCount() const {
    return checked::add(start.daysUntil(end), 1);
}

bool DateSpan::contains(LocalDate date) const {
    return start <= date && date <= end;
}

DateSpan DateSpan::previous() const {
    const LocalDate dayBefore = start.addingDays(-1);
    if (isWholeMonths(*this)) {
        // Stepping back by days would misplace month edges: the month before
        // March is February whatever their lengths.
        const int64_t months = checked::add(checked::sub(monthIndex(end), monthIndex(start)), 1);
        return DateSpan(start.addingMonths(checked::neg(months)), dayBefore);
    }
    return DateSpan(start.addingDays(checked::neg(dayCount())), dayBefore);
}

std::vector<std::string> DateSpan::monthKeys() const {
    std::vector<std::string> keys;
    // The cursor stays on day 1: stepping from a 31st would slide to the 28th
    // after February and could skip the month that holds `end`.
    for (LocalDate cursor = start.firstOfMonth(); cursor <= end; cursor = cursor.addingMonths(1)) {
        keys.push_back(cursor.monthKey());
    }
    return keys;
}

std::string DateSpan::label() const {
    if (isWholeMonths(*this)) {
        if (start.year == end.year && start.month == end.month) {
            return std::string(MonthNames::longName(start.month)) + " " + yearText(start.year);
        }
        if (start.year == end.year && start.month == 1 && end.month == 12) {
            return yearText(start.year);
        }
        return std::string(MonthNames::shortName(start.month)) + " " + yearText(start.year) +
               std::string(kRangeDash) + std::string(MonthNames::shortName(end.month)) + " " +
               yearText(end.year);
    }
    return DateText::medium(start) + std::string(kRangeDash) + DateText::medium(end);
}

std::ostream& operator<<(std::ostream& stream, const DateSpan& span) {
    return stream << span.start.iso() << "..." << span.end.iso();
}

}  // namespace copperwick
