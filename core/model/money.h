#pragma once

// Money is a signed 64-bit count of cents; above zero is money coming in. These
// functions are the only reader of amounts (parseCents) and the writers of them
// for the screen, the PDF and data files. They are pure, hold no state and may
// be called from any thread. Nothing here looks at a locale and nothing passes
// through floating point: percents are integers of tenths.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/model/enum_text.h"

namespace copperwick {

// Which marks a file writes amounts with. `decimalPoint` is "1,234.56", as US
// and UK banks write them; `decimalComma` is "1.234,56" or "1 234,56", as most
// of continental Europe does. A taught layout remembers its file's style.
enum class NumberStyle {
    decimalPoint,
    decimalComma,
};

template <>
struct EnumTraits<NumberStyle> {
    static constexpr std::array<std::pair<NumberStyle, std::string_view>, 2> cases{{
        {NumberStyle::decimalPoint, "decimalPoint"},
        {NumberStyle::decimalComma, "decimalComma"},
    }};
};

namespace Money {

// The largest amount the system accepts, in cents. parseCents refuses anything
// whose size is larger, cents included, which is what keeps the sums of the
// rest of the program far from the 64-bit range.
inline constexpr int64_t kLargestAmount = 90'000'000'000'000;

// Reads an amount as banks export it and people type it: "$1,234.56",
// "USD 1,234.56", "(5.00)", "5.00-", "−12.30". Absent for anything that can't be
// read exactly, including European decimal commas and more than two decimals.
[[nodiscard]] std::optional<int64_t> parseCents(std::string_view text);

// The same reading in a file's number style. Under `decimalComma` the roles of
// the two marks swap: "1.234,56", "-12,50", "12,50-" and "1 234,56" are read,
// "1.234" is one thousand two hundred thirty-four, and "12,345" (three
// decimals) is absent. "EUR", "€" and narrow no-break spaces go as well.
// Under `decimalPoint` it is exactly parseCents(text).
[[nodiscard]] std::optional<int64_t> parseCents(std::string_view text, NumberStyle style);

// "−$1,234.56", "+$0.05", "−EUR 1,234.56". Negative amounts take U+2212 unless
// `plain` asks for an ASCII "-"; `showPlus` marks positive amounts; zero is never
// signed. Only USD has a symbol; other codes are written with a space after them.
[[nodiscard]] std::string format(int64_t cents, std::string_view currency = "USD",
                                 bool plain = false, bool showPlus = false);

// Whole currency units, halves rounded away from zero: "$2" for 150 cents. The
// sign comes from the unrounded amount, so −49 cents reads "−$0".
[[nodiscard]] std::string formatWhole(int64_t cents, std::string_view currency = "USD");

// The form data files carry: "-1234.56", "0.05". No grouping and no mark.
[[nodiscard]] std::string decimalString(int64_t cents);

// Tenths of a percent as text: 125 is "12.5%", −5 is "−0.5%", 0 is "0.0%".
[[nodiscard]] std::string percentText(int64_t tenths, bool showPlus = false);

// part / total in tenths of a percent, rounded half away from zero. Absent when
// the total is below 1.
[[nodiscard]] std::optional<int64_t> shareTenths(int64_t part, int64_t total);

// The change from `from` to `to` in tenths of a percent of the magnitude of
// `from`, rounded half away from zero. Absent when `from` is 0.
[[nodiscard]] std::optional<int64_t> changeTenthsOfPercent(int64_t from, int64_t to);

// Decimal digits with "," between groups of three: "1,234,567".
[[nodiscard]] std::string grouped(uint64_t value);

}  // namespace Money
}  // namespace copperwick
