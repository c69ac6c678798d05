#include "core/import/statement_amount.h"

#include <algorithm>
#include <string>

namespace copperwick::StatementAmount {

Reading read(std::string_view text, NumberStyle style) {
    const char mark = style == NumberStyle::decimalComma ? ',' : '.';
    std::string plain(text);
    if (const auto at = plain.find(mark); at != std::string::npos) {
        std::size_t end = at + 1;
        while (end < plain.size() && plain[end] >= '0' && plain[end] <= '9')
            ++end;
        // Digits past the cents are padding only when every one is a zero;
        // otherwise the amount is finer than cents, if it is an amount at all.
        if (end > at + 3) {
            const bool padding = std::all_of(plain.begin() + static_cast<std::ptrdiff_t>(at + 3),
                                             plain.begin() + static_cast<std::ptrdiff_t>(end),
                                             [](char c) { return c == '0'; });
            plain.erase(at + 3, end - (at + 3));
            if (!padding)
                return {.cents = std::nullopt,
                        .finerThanCents = Money::parseCents(plain, style).has_value()};
        }
    }
    return {.cents = Money::parseCents(plain, style), .finerThanCents = false};
}

}  // namespace copperwick::StatementAmount
