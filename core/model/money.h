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

namespace copperwick {
namespace Money {

// The largest amount the system accepts, in cents. parseCents refuses anything
// whose size is larger, cents included, which is what keeps the sums of the
// rest of the program far from the 64-bit range.
inline constexpr int64_t kLargestAmount = 90'000'000'000'000;

// Reads an amount as banks export it and people type it: "$1,234.56",
// "USD 1,234.56", "(5.00)", "5.00-", "−12.30". Absent for anything that can't be
// read exactly, including European decimal commas and more than two decimals.
[[nodiscard]] std::optional<int64_t> parseCents(std::string_view text);

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
