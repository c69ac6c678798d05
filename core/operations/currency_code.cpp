#include "core/operations/currency_code.h"

#include <algorithm>

#include "core/model/text.h"
#include "core/operations/entry_error.h"

namespace copperwick {

bool isCurrencyCode(std::string_view code) {
    return code.size() == 3 &&
           std::all_of(code.begin(), code.end(), [](char c) { return c >= 'A' && c <= 'Z'; });
}

std::string currencyEntered(std::string_view text) {
    std::string code = text::uppercased(text::trimmed(text));
    if (!isCurrencyCode(code))
        throw EntryError(EntryError::Case::currency);
    return code;
}

}  // namespace copperwick
