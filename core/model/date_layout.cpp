#include "core/model/date_layout.h"

#include <algorithm>
#include <array>
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

struct MonthName {
    std::string_view name;
    int month;
};

// Lowercased, without the dot of an abbreviation. English in full and short,
// then what German, French, Dutch, Spanish and Italian banks write.
constexpr MonthName kMonthNames[] = {
    {"jan", 1},        {"january", 1},    {"januar", 1},     {"jänner", 1},    {"janv", 1},
    {"janvier", 1},    {"januari", 1},    {"ene", 1},        {"enero", 1},     {"gen", 1},
    {"gennaio", 1},    {"feb", 2},        {"february", 2},   {"februar", 2},   {"febr", 2},
    {"fév", 2},        {"févr", 2},       {"février", 2},    {"fev", 2},       {"fevr", 2},
    {"februari", 2},   {"febrero", 2},    {"febbraio", 2},   {"mar", 3},       {"march", 3},
    {"märz", 3},       {"mär", 3},        {"mrz", 3},        {"maerz", 3},     {"mars", 3},
    {"maart", 3},      {"mrt", 3},        {"marzo", 3},      {"apr", 4},       {"april", 4},
    {"avr", 4},        {"avril", 4},      {"abr", 4},        {"abril", 4},     {"aprile", 4},
    {"may", 5},        {"mai", 5},        {"mei", 5},        {"mayo", 5},      {"mag", 5},
    {"maggio", 5},     {"jun", 6},        {"june", 6},       {"juni", 6},      {"juin", 6},
    {"junio", 6},      {"giu", 6},        {"giugno", 6},     {"jul", 7},       {"july", 7},
    {"juli", 7},       {"juil", 7},       {"juillet", 7},    {"julio", 7},     {"lug", 7},
    {"luglio", 7},     {"aug", 8},        {"august", 8},     {"augustus", 8},  {"août", 8},
    {"aout", 8},       {"ago", 8},        {"agosto", 8},     {"sep", 9},       {"sept", 9},
    {"september", 9},  {"septembre", 9},  {"septiembre", 9}, {"set", 9},       {"settembre", 9},
    {"oct", 10},       {"october", 10},   {"okt", 10},       {"oktober", 10},  {"octobre", 10},
    {"octubre", 10},   {"ott", 10},       {"ottobre", 10},   {"nov", 11},      {"november", 11},
    {"novembre", 11},  {"noviembre", 11}, {"dec", 12},       {"december", 12}, {"dez", 12},
    {"dezember", 12},  {"déc", 12},       {"décembre", 12},  {"decembre", 12}, {"dic", 12},
    {"diciembre", 12}, {"dicembre", 12},
};

bool isDigits(std::string_view text) {
    return !text.empty() &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

std::optional<int> monthNamed(std::string_view token) {
    // Only letters can name a month; digits and punctuation never reach ICU.
    const bool hasLetter = std::any_of(token.begin(), token.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
    });
    if (!hasLetter || token.size() > 12)
        return std::nullopt;
    const std::string lower = text::lowercased(token);
    for (const auto& entry : kMonthNames) {
        if (entry.name == lower)
            return entry.month;
    }
    return std::nullopt;
}

// "20201104": a year-first date written without separators.
std::optional<LocalDate> compactYearMonthDay(std::string_view text) {
    if (text.size() != 8 || !isDigits(text))
        return std::nullopt;
    const auto number = [&](std::size_t at, std::size_t size) {
        int value = 0;
        for (const char c : text.substr(at, size))
            value = value * 10 + (c - '0');
        return value;
    };
    return LocalDate::make(number(0, 4), number(4, 2), number(6, 2));
}

}  // namespace

std::optional<LocalDate> parseNamedMonthDate(std::string_view text) {
    // No slash: "Mar/14/2026" is a damaged numeric date, not a named one.
    auto tokens = text::splitDroppingEmpty(text::trimmedWhitespace(text), " .-,");
    // A time after the date ("04 Nov 2020 12:30") plays no part.
    if (tokens.size() == 4 && tokens[3].find(':') != std::string_view::npos)
        tokens.pop_back();
    if (tokens.size() != 3)
        return std::nullopt;
    std::string_view day, year;
    std::optional<int> month;
    if ((month = monthNamed(tokens[1]))) {
        // "04 Nov 2020", or year first: "2020-Nov-04".
        const bool yearFirst = tokens[0].size() == 4;
        day = yearFirst ? tokens[2] : tokens[0];
        year = yearFirst ? tokens[0] : tokens[2];
    } else if ((month = monthNamed(tokens[0]))) {
        // "Nov 4, 2020".
        day = tokens[1];
        year = tokens[2];
    } else {
        return std::nullopt;
    }
    if (!isDigits(day) || day.size() > 2 || !isDigits(year) ||
        (year.size() != 4 && year.size() != 2))
        return std::nullopt;
    const auto dayPiece = readPiece(day);
    const auto yearPiece = readPiece(year);
    if (!dayPiece || !yearPiece)
        return std::nullopt;
    const auto fullYear = shortOrLongYear(*yearPiece);
    if (!fullYear)
        return std::nullopt;
    return LocalDate::make(*fullYear, *month, dayPiece->value);
}

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
    const std::string_view whole = date;
    date = date.substr(0, date.find_first_of("T "));
    if (layout == DateLayout::yearMonthDay && date.size() == 8) {
        if (const auto compact = compactYearMonthDay(date))
            return compact;
    }

    // Every row of a file passes here, so the pieces aren't allocated.
    std::array<std::string_view, 3> texts;
    std::optional<Piece> pieces[3];
    bool numeric = text::splitDroppingEmpty(date, "/-.", texts) == texts.size();
    for (std::size_t i = 0; i < 3 && numeric; ++i) {
        pieces[i] = readPiece(texts[i]);
        numeric = pieces[i].has_value();
    }
    if (!numeric)
        return parseNamedMonthDate(whole);
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
