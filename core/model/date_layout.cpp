#include "core/model/date_layout.h"

#include <cstdint>
#include <limits>

#include "core/model/text.h"

namespace copperwick {

namespace {

struct Piece {
    std::string_view text;
    int value;
};

std::optional<Piece> readPiece(std::string_view text) {
    const auto value = detail::readInteger(text);
    if (!value || *value < std::numeric_limits<int>::min() ||
        *value > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return Piece{text, static_cast<int>(*value)};
}

// The year of a day-first or month-first date: four digits, or two meaning 20xx.
std::optional<int> shortOrLongYear(const Piece& piece) {
    if (piece.text.size() == 4)
        return piece.value;
    if (piece.text.size() == 2)
        return piece.value + 2000;
    return std::nullopt;
}

}  // namespace

std::string_view label(DateLayout layout) {
    switch (layout) {
        case DateLayout::monthDayYear:
            return "Month/Day/Year";
        case DateLayout::yearMonthDay:
            return "Year-Month-Day";
        case DateLayout::dayMonthYear:
            return "Day/Month/Year";
    }
    return {};
}

std::optional<LocalDate> parseDate(DateLayout layout, std::string_view text) {
    // White space only: a line break inside a cell is damage, not padding.
    std::string_view date = text::trimmedWhitespace(text);
    // A time after the date ("2026-03-14T08:00:00Z", "3/14/26 12:00") is dropped.
    date = date.substr(0, date.find_first_of("T "));

    const auto texts = text::splitDroppingEmpty(date, "/-.");
    if (texts.size() != 3)
        return std::nullopt;
    std::optional<Piece> pieces[3];
    for (std::size_t i = 0; i < 3; ++i) {
        pieces[i] = readPiece(texts[i]);
        if (!pieces[i])
            return std::nullopt;
    }
    const Piece& first = *pieces[0];
    const Piece& second = *pieces[1];
    const Piece& third = *pieces[2];

    switch (layout) {
        case DateLayout::monthDayYear:
        case DateLayout::dayMonthYear: {
            if (first.text.size() > 2 || second.text.size() > 2)
                return std::nullopt;
            const auto year = shortOrLongYear(third);
            if (!year)
                return std::nullopt;
            if (layout == DateLayout::monthDayYear) {
                return LocalDate::make(*year, first.value, second.value);
            }
            return LocalDate::make(*year, second.value, first.value);
        }
        case DateLayout::yearMonthDay:
            if (first.text.size() != 4 || second.text.size() > 2 || third.text.size() > 2) {
                return std::nullopt;
            }
            return LocalDate::make(first.value, second.value, third.value);
    }
    return std::nullopt;
}

std::optional<DateLayout> detectDateLayout(const std::vector<std::string>& samples) {
    std::optional<DateLayout> best;
    std::size_t bestCount = 0;
    for (const DateLayout layout : allCases<DateLayout>()) {
        std::size_t count = 0;
        for (const std::string& sample : samples) {
            const std::string_view trimmed = text::trimmedWhitespace(sample);
            if (!trimmed.empty() && parseDate(layout, trimmed))
                ++count;
        }
        // Strictly greater: on a tie the earlier layout keeps its place.
        if (count > bestCount) {
            best = layout;
            bestCount = count;
        }
    }
    return best;
}

}  // namespace copperwick
