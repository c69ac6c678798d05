// Money::parseCents on any text, in both number styles: it never crashes,
// never returns an amount beyond the largest one, and whatever it reads it
// reads back the same way from its own plain writing (with a comma for the
// decimal point under decimalComma).

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "core/model/money.h"

namespace {

void checkDecimalComma(std::string_view text) {
    using copperwick::NumberStyle;
    const auto cents = copperwick::Money::parseCents(text, NumberStyle::decimalComma);
    if (!cents)
        return;
    const int64_t magnitude = *cents < 0 ? -*cents : *cents;
    if (magnitude > copperwick::Money::kLargestAmount)
        std::abort();
    std::string written = copperwick::Money::decimalString(*cents);
    std::replace(written.begin(), written.end(), '.', ',');
    if (copperwick::Money::parseCents(written, NumberStyle::decimalComma) != cents)
        std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    checkDecimalComma(text);
    const auto cents = copperwick::Money::parseCents(text);
    if (!cents)
        return 0;
    const int64_t magnitude = *cents < 0 ? -*cents : *cents;
    if (magnitude > copperwick::Money::kLargestAmount)
        std::abort();
    if (copperwick::Money::parseCents(copperwick::Money::decimalString(*cents)) != cents)
        std::abort();
    if (copperwick::Money::parseCents(copperwick::Money::format(*cents, "USD", true, false)) !=
        cents)
        std::abort();
    return 0;
}
