#include "core/import/statement_amount.h"

#include <string>

#include "core/model/money.h"

namespace copperwick::StatementAmount {

Reading read(std::string_view text, char decimalMark) {
    std::string plain;
    plain.reserve(text.size());
    for (char c : text) {
        if (decimalMark == ',' && c == '.')
            continue;
        plain.push_back(decimalMark == ',' && c == ',' ? '.' : c);
    }
    const auto dot = plain.find('.');
    if (dot != std::string::npos) {
        std::size_t end = dot + 1;
        while (end < plain.size() && plain[end] >= '0' && plain[end] <= '9')
            ++end;
        // Digits past the cents are padding only when every one is a zero;
        // otherwise the amount is finer than cents, if it is an amount at all.
        if (end > dot + 3) {
            bool padding = true;
            for (std::size_t i = dot + 3; i < end; ++i)
                padding = padding && plain[i] == '0';
            plain.erase(dot + 3, end - (dot + 3));
            if (!padding)
                return {.cents = std::nullopt,
                        .finerThanCents = Money::parseCents(plain).has_value()};
        }
    }
    return {.cents = Money::parseCents(plain), .finerThanCents = false};
}

}  // namespace copperwick::StatementAmount
