#include "core/intelligence/letters.h"

#include <algorithm>

#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "core/model/text.h"

namespace copperwick::letters {

namespace {

// Calls `visit` with each code point; invalid UTF-8 arrives as U+FFFD.
template <typename Visit>
void eachCodePoint(std::string_view text, Visit&& visit) {
    const icu::UnicodeString unicode = text::toUnicode(text);
    for (int32_t at = 0; at < unicode.length(); at = unicode.moveIndex32(at, 1))
        visit(unicode.char32At(at));
}

bool isNumber(UChar32 c) {
    const auto type = static_cast<UCharCategory>(u_charType(c));
    return type == U_DECIMAL_DIGIT_NUMBER || type == U_LETTER_NUMBER || type == U_OTHER_NUMBER;
}

}  // namespace

std::size_t count(std::string_view text) {
    std::size_t letters = 0;
    eachCodePoint(text, [&](UChar32 c) { letters += u_isalpha(c) ? 1 : 0; });
    return letters;
}

std::string lowercasedOnly(std::string_view text) {
    icu::UnicodeString kept;
    eachCodePoint(text, [&](UChar32 c) {
        if (u_isalpha(c))
            kept.append(c);
    });
    return text::lowercased(text::toUTF8(kept));
}

bool anyLowercase(std::string_view text) {
    bool found = false;
    eachCodePoint(text, [&](UChar32 c) { found = found || (u_isalpha(c) && u_islower(c)); });
    return found;
}

std::size_t longestNumberRun(std::string_view text) {
    std::size_t run = 0;
    std::size_t longest = 0;
    eachCodePoint(text, [&](UChar32 c) {
        run = isNumber(c) ? run + 1 : 0;
        longest = std::max(longest, run);
    });
    return longest;
}

}  // namespace copperwick::letters
