#pragma once

// Text helpers shared by the whole logic: trimming by Unicode's idea of white
// space, and locale-free case mapping. Bank text is compared upper-cased;
// names and categories are looked up lower-cased.

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <unicode/unistr.h>

namespace copperwick::text {

// Without white space and line breaks (Unicode separators, tab, CR, LF, VT,
// FF, NEL) at either end. Invalid UTF-8 at an end is kept as it is.
[[nodiscard]] std::string_view trimmed(std::string_view text);

// Without spaces and tabs at either end; line breaks stay.
[[nodiscard]] std::string_view trimmedSpaces(std::string_view text);

// Without white space at either end: space, tab and the rest of Unicode's
// space separators (U+00A0, U+2007, U+3000…). Line breaks stay, and so does
// invalid UTF-8 at an end.
[[nodiscard]] std::string_view trimmedWhitespace(std::string_view text);

// The characters a person sees: "Zoë" counts 3 whether its "ë" is one code
// point or an "e" and a combining mark. Invalid UTF-8 counts as replacement
// characters.
[[nodiscard]] std::size_t characterCount(std::string_view text);

// The first `count` characters in the same sense, whole: a letter and its
// combining marks stay together. Invalid UTF-8 comes back as replacement
// characters.
[[nodiscard]] std::string firstCharacters(std::string_view text, std::size_t count);

// The pieces between separators, empty ones included: "1,,2" is three pieces.
[[nodiscard]] std::vector<std::string_view> splitKeepingEmpty(std::string_view text,
                                                              char separator);

// The non-empty pieces between any of the `separators`: "3//14" is two pieces.
[[nodiscard]] std::vector<std::string_view> splitDroppingEmpty(std::string_view text,
                                                               std::string_view separators);
// The same pieces, into `pieces` without allocating; how many there are, or
// pieces.size() + 1 as soon as there are more than fit.
[[nodiscard]] std::size_t splitDroppingEmpty(std::string_view text, std::string_view separators,
                                             std::span<std::string_view> pieces);

// Full Unicode case mapping with no locale's special rules.
[[nodiscard]] std::string uppercased(std::string_view text);
// Appends one code point, which the caller has checked is a scalar value,
// as UTF-8.
void appendUTF8(std::string& out, char32_t code);
[[nodiscard]] std::string lowercased(std::string_view text);

// UTF-8 to ICU's UTF-16 and back, for regular expressions and case mapping.
// Invalid UTF-8 becomes U+FFFD on the way in.
[[nodiscard]] icu::UnicodeString toUnicode(std::string_view text);
[[nodiscard]] std::string toUTF8(const icu::UnicodeString& text);

// Equal after lower-casing both sides.
[[nodiscard]] bool equalsIgnoringCase(std::string_view a, std::string_view b);

// Whether `text` is well-formed UTF-8: shortest forms only, no surrogates,
// nothing above U+10FFFF.
[[nodiscard]] bool isValidUTF8(std::string_view text);

}  // namespace copperwick::text
