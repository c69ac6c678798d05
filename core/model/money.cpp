#include "core/model/money.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "core/model/checked.h"
#include "core/model/text.h"

namespace copperwick::Money {

namespace {

constexpr std::string_view kMinusSign = "\xE2\x88\x92";           // U+2212
constexpr std::string_view kNoBreakSpace = "\xC2\xA0";            // U+00A0
constexpr std::string_view kNarrowNoBreakSpace = "\xE2\x80\xAF";  // U+202F
constexpr std::string_view kThinSpace = "\xE2\x80\x89";           // U+2009
constexpr std::string_view kEuroSign = "\xE2\x82\xAC";            // U+20AC

// The marks of one number style: what ends the whole units and what groups
// their thousands.
struct Marks {
    char decimal;
    char group;
};

// Without commas, 13 digits already reach well past the largest amount, so
// longer text is refused as it stands rather than read.
constexpr std::size_t kMaxUngroupedDigits = 13;

// The minus sign becomes "-"; currency marks and spaces go. One pass, since
// nothing that is dropped can join its neighbours into something readable.
// European files add their own: "EUR", "€" and the narrow spaces French
// exports group thousands with. These go only under a decimal comma, so
// that a decimal-point file is read exactly as before.
std::string withoutNoise(std::string_view text, bool european) {
    std::string cleaned;
    cleaned.reserve(text.size());
    while (!text.empty()) {
        if (european) {
            bool dropped = false;
            for (const std::string_view noise :
                 {std::string_view("EUR"), kEuroSign, kNarrowNoBreakSpace, kThinSpace}) {
                if (text.starts_with(noise)) {
                    text.remove_prefix(noise.size());
                    dropped = true;
                    break;
                }
            }
            if (dropped)
                continue;
        }
        if (text.starts_with(kMinusSign)) {
            cleaned += '-';
            text.remove_prefix(kMinusSign.size());
        } else if (text.starts_with("USD")) {
            text.remove_prefix(3);
        } else if (text.starts_with(kNoBreakSpace)) {
            text.remove_prefix(kNoBreakSpace.size());
        } else {
            if (text.front() != '$' && text.front() != ' ')
                cleaned += text.front();
            text.remove_prefix(1);
        }
    }
    return cleaned;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool allDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), isDigit);
}

// Reads a run of ASCII digits. A value beyond 64 bits is bad input, not a fault,
// so it is caught before the arithmetic rather than left to the checked helpers.
std::optional<int64_t> readDigits(std::string_view digits) {
    int64_t value = 0;
    for (const char c : digits) {
        const int64_t digit = c - '0';
        if (value > (std::numeric_limits<int64_t>::max() - digit) / 10)
            return std::nullopt;
        value = checked::add(checked::mul(value, 10), digit);
    }
    return value;
}

// The part before the decimal mark. With group marks it must be grouped in
// threes; that is what refuses "1.234,56" under a decimal point (and
// "1,234.56" under a decimal comma) instead of misreading it.
std::optional<int64_t> readWholeUnits(std::string_view text, char group) {
    if (text.empty())
        return 0;
    if (text.find(group) != std::string_view::npos) {
        const auto groups = text::splitKeepingEmpty(text, group);
        std::string joined;
        for (std::size_t i = 0; i < groups.size(); ++i) {
            const std::size_t size = groups[i].size();
            const bool fits = i == 0 ? (size >= 1 && size <= 3) : size == 3;
            if (!fits)
                return std::nullopt;
            joined += groups[i];
        }
        if (joined.empty() || !allDigits(joined))
            return std::nullopt;
        return readDigits(joined);
    }
    if (!allDigits(text) || text.size() > kMaxUngroupedDigits)
        return std::nullopt;
    return readDigits(text);
}

int64_t magnitude(int64_t value) {
    return value < 0 ? checked::neg(value) : value;
}

// numerator / divisor for a positive divisor, halves away from zero.
int64_t roundedQuotient(int64_t numerator, int64_t divisor) {
    const int64_t half = divisor / 2;
    if (numerator >= 0)
        return checked::add(numerator, half) / divisor;
    return checked::neg(checked::add(checked::neg(numerator), half) / divisor);
}

std::string currencyMark(std::string_view currency) {
    if (currency == "USD")
        return "$";
    std::string mark(currency);
    mark += ' ';
    return mark;
}

std::string twoDigits(int64_t value) {
    return {static_cast<char>('0' + value / 10), static_cast<char>('0' + value % 10)};
}

std::optional<int64_t> readCents(std::string_view text, Marks marks, bool european) {
    const std::string_view bare = text::trimmed(text);
    if (bare.empty())
        return std::nullopt;

    const std::string cleaned = withoutNoise(bare, european);
    if (cleaned.empty())
        return std::nullopt;

    std::string_view rest = cleaned;
    bool negative = false;
    if (rest.size() >= 2 && rest.front() == '(' && rest.back() == ')') {
        negative = true;
        rest = rest.substr(1, rest.size() - 2);
    }
    // Each sign flips rather than sets: accountants' "(-5.00)" is a reversed
    // debit, i.e. positive. A trailing minus only counts with nothing in front.
    if (rest.starts_with('-')) {
        negative = !negative;
        rest.remove_prefix(1);
    } else if (rest.starts_with('+')) {
        rest.remove_prefix(1);
    } else if (rest.ends_with('-')) {
        negative = !negative;
        rest.remove_suffix(1);
    }
    if (rest.empty())
        return std::nullopt;

    const auto pieces = text::splitKeepingEmpty(rest, marks.decimal);
    if (pieces.size() > 2)
        return std::nullopt;
    const std::string_view whole = pieces[0];
    const std::string_view fraction = pieces.size() == 2 ? pieces[1] : std::string_view();
    if (fraction.size() > 2 || !allDigits(fraction))
        return std::nullopt;
    if (pieces.size() == 2 && whole.empty() && fraction.empty())
        return std::nullopt;

    const auto units = readWholeUnits(whole, marks.group);
    if (!units)
        return std::nullopt;
    int64_t fractionCents = 0;
    if (fraction.size() == 1)
        fractionCents = (fraction[0] - '0') * 10;
    if (fraction.size() == 2)
        fractionCents = (fraction[0] - '0') * 10 + (fraction[1] - '0');
    // The units are bounded first so that the cents can't leave 64 bits; the
    // limit itself is on the whole amount: 900,000,000,000.01 is past it.
    if (*units > kLargestAmount / 100)
        return std::nullopt;
    const int64_t cents = checked::add(checked::mul(*units, 100), fractionCents);
    if (cents > kLargestAmount)
        return std::nullopt;
    return negative ? checked::neg(cents) : cents;
}

}  // namespace

std::optional<int64_t> parseCents(std::string_view text) {
    return readCents(text, Marks{'.', ','}, false);
}

std::optional<int64_t> parseCents(std::string_view text, NumberStyle style) {
    if (style == NumberStyle::decimalComma)
        return readCents(text, Marks{',', '.'}, true);
    return parseCents(text);
}

std::string grouped(uint64_t value) {
    const std::string digits = std::to_string(value);
    std::string result;
    result.reserve(digits.size() + digits.size() / 3);
    for (std::size_t i = 0; i < digits.size(); ++i) {
        if (i > 0 && (digits.size() - i) % 3 == 0)
            result += ',';
        result += digits[i];
    }
    return result;
}

std::string format(int64_t cents, std::string_view currency, bool plain, bool showPlus) {
    std::string text;
    if (cents < 0)
        text += plain ? std::string_view("-") : kMinusSign;
    if (cents > 0 && showPlus)
        text += '+';
    const int64_t size = magnitude(cents);
    text += currencyMark(currency);
    text += grouped(static_cast<uint64_t>(size / 100));
    text += '.';
    text += twoDigits(size % 100);
    return text;
}

std::string formatWhole(int64_t cents, std::string_view currency) {
    std::string text;
    if (cents < 0)
        text += kMinusSign;
    text += currencyMark(currency);
    text += grouped(static_cast<uint64_t>(checked::add(magnitude(cents), 50) / 100));
    return text;
}

std::string decimalString(int64_t cents) {
    std::string text;
    if (cents < 0)
        text += '-';
    const int64_t size = magnitude(cents);
    text += std::to_string(size / 100);
    text += '.';
    text += twoDigits(size % 100);
    return text;
}

std::string percentText(int64_t tenths, bool showPlus) {
    std::string text;
    if (tenths < 0)
        text += kMinusSign;
    if (tenths > 0 && showPlus)
        text += '+';
    const int64_t size = magnitude(tenths);
    text += std::to_string(size / 10);
    text += '.';
    text += static_cast<char>('0' + size % 10);
    text += '%';
    return text;
}

std::optional<int64_t> shareTenths(int64_t part, int64_t total) {
    if (total < 1)
        return std::nullopt;
    return roundedQuotient(checked::mul(part, 1000), total);
}

std::optional<int64_t> changeTenthsOfPercent(int64_t from, int64_t to) {
    if (from == 0)
        return std::nullopt;
    return roundedQuotient(checked::mul(checked::sub(to, from), 1000), magnitude(from));
}

}  // namespace copperwick::Money
