#include "core/model/text.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include <unicode/brkiter.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

namespace copperwick::text {

namespace {

bool isWhitespaceOrNewline(UChar32 c) {
    if (c == 0x09 || c == 0x0A || c == 0x0B || c == 0x0C || c == 0x0D || c == 0x85)
        return true;
    const auto type = u_charType(c);
    return type == U_SPACE_SEPARATOR || type == U_LINE_SEPARATOR || type == U_PARAGRAPH_SEPARATOR;
}

// Unicode's White_Space without the line breaks.
bool isWhitespace(UChar32 c) {
    return c == 0x09 || u_charType(c) == U_SPACE_SEPARATOR;
}

bool isAscii(std::string_view text) {
    for (unsigned char c : text) {
        if (c >= 0x80)
            return false;
    }
    return true;
}

// `text[start, end)` without the characters `strip` accepts at either end.
// Invalid UTF-8 at an end stops the trimming there.
template <typename Strip>
std::string_view trimmedWhere(std::string_view text, std::size_t start, std::size_t end,
                              Strip strip) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    auto first = static_cast<int32_t>(start);
    auto last = static_cast<int32_t>(end);
    while (first < last) {
        int32_t next = first;
        UChar32 c;
        U8_NEXT(bytes, next, last, c);
        if (c < 0 || !strip(c))
            break;
        first = next;
    }
    while (last > first) {
        int32_t previous = last;
        UChar32 c;
        U8_PREV(bytes, first, previous, c);
        if (c < 0 || !strip(c))
            break;
        last = previous;
    }
    return text.substr(static_cast<std::size_t>(first), static_cast<std::size_t>(last - first));
}

}  // namespace

icu::UnicodeString toUnicode(std::string_view text) {
    return icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
}

std::string toUTF8(const icu::UnicodeString& text) {
    std::string out;
    text.toUTF8String(out);
    return out;
}

std::string_view trimmed(std::string_view text) {
    return trimmedWhere(text, 0, text.size(), isWhitespaceOrNewline);
}

std::string_view trimmedSpaces(std::string_view text) {
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    const auto last = text.find_last_not_of(" \t");
    return text.substr(first, last - first + 1);
}

std::string_view trimmedWhitespace(std::string_view text) {
    // Nearly every header and date is ASCII: look at bytes until a byte that
    // isn't ASCII stands at an end.
    std::size_t start = 0;
    std::size_t end = text.size();
    while (start < end && (text[start] == ' ' || text[start] == '\t'))
        ++start;
    while (end > start && (text[end - 1] == ' ' || text[end - 1] == '\t'))
        --end;
    const bool plainEnds = start == end || (static_cast<unsigned char>(text[start]) < 0x80 &&
                                            static_cast<unsigned char>(text[end - 1]) < 0x80);
    if (plainEnds)
        return text.substr(start, end - start);
    return trimmedWhere(text, start, end, isWhitespace);
}

std::size_t characterCount(std::string_view text) {
    // A carriage return and a line feed together make one character.
    if (isAscii(text) && text.find('\r') == std::string_view::npos)
        return text.size();
    const icu::UnicodeString unicode = toUnicode(text);
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> characters(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_FAILURE(status) || !characters)
        return static_cast<std::size_t>(unicode.countChar32());
    characters->setText(unicode);
    std::size_t count = 0;
    for (int32_t at = characters->next(); at != icu::BreakIterator::DONE; at = characters->next())
        ++count;
    return count;
}

std::string firstCharacters(std::string_view text, std::size_t count) {
    if (isAscii(text) && text.find('\r') == std::string_view::npos)
        return std::string(text.substr(0, std::min(count, text.size())));
    const icu::UnicodeString unicode = toUnicode(text);
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::BreakIterator> characters(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    int32_t end = 0;
    if (U_FAILURE(status) || !characters) {
        end = unicode.moveIndex32(0, static_cast<int32_t>(std::min<std::size_t>(count, INT32_MAX)));
    } else {
        characters->setText(unicode);
        for (std::size_t taken = 0; taken < count; ++taken) {
            const int32_t next = characters->next();
            if (next == icu::BreakIterator::DONE)
                break;
            end = next;
        }
    }
    return toUTF8(unicode.tempSubString(0, end));
}

std::vector<std::string_view> splitKeepingEmpty(std::string_view text, char separator) {
    std::vector<std::string_view> pieces;
    std::size_t start = 0;
    for (;;) {
        const std::size_t at = text.find(separator, start);
        if (at == std::string_view::npos) {
            pieces.push_back(text.substr(start));
            return pieces;
        }
        pieces.push_back(text.substr(start, at - start));
        start = at + 1;
    }
}

namespace {

// Calls `take` with each non-empty piece until it returns false.
template <typename Take>
void eachPieceDroppingEmpty(std::string_view text, std::string_view separators, Take&& take) {
    std::size_t start = 0;
    for (std::size_t i = 0; i <= text.size(); ++i) {
        if (i == text.size() || separators.find(text[i]) != std::string_view::npos) {
            if (i > start && !take(text.substr(start, i - start)))
                return;
            start = i + 1;
        }
    }
}

}  // namespace

std::vector<std::string_view> splitDroppingEmpty(std::string_view text,
                                                 std::string_view separators) {
    std::vector<std::string_view> pieces;
    eachPieceDroppingEmpty(text, separators, [&](std::string_view piece) {
        pieces.push_back(piece);
        return true;
    });
    return pieces;
}

std::size_t splitDroppingEmpty(std::string_view text, std::string_view separators,
                               std::span<std::string_view> pieces) {
    std::size_t count = 0;
    eachPieceDroppingEmpty(text, separators, [&](std::string_view piece) {
        if (count == pieces.size()) {
            ++count;
            return false;
        }
        pieces[count++] = piece;
        return true;
    });
    return count;
}

std::string uppercased(std::string_view text) {
    if (isAscii(text)) {
        std::string out(text);
        for (auto& c : out) {
            if (c >= 'a' && c <= 'z')
                c = static_cast<char>(c - 'a' + 'A');
        }
        return out;
    }
    auto u = toUnicode(text);
    u.toUpper(icu::Locale::getRoot());
    return toUTF8(u);
}

std::string lowercased(std::string_view text) {
    if (isAscii(text)) {
        std::string out(text);
        for (auto& c : out) {
            if (c >= 'A' && c <= 'Z')
                c = static_cast<char>(c - 'A' + 'a');
        }
        return out;
    }
    auto u = toUnicode(text);
    u.toLower(icu::Locale::getRoot());
    return toUTF8(u);
}

bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    if (isAscii(a) && isAscii(b)) {
        if (a.size() != b.size())
            return false;
        for (std::size_t i = 0; i < a.size(); ++i) {
            auto lower = [](char c) {
                return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
            };
            if (lower(a[i]) != lower(b[i]))
                return false;
        }
        return true;
    }
    return lowercased(a) == lowercased(b);
}

bool isValidUTF8(std::string_view text) {
    const auto* byte = reinterpret_cast<const unsigned char*>(text.data());
    const auto* const end = byte + text.size();
    while (byte < end) {
        // Runs of ASCII, the usual case, eight bytes at a time.
        while (end - byte >= 8) {
            uint64_t word;
            std::memcpy(&word, byte, sizeof word);
            if (word & 0x8080808080808080ull)
                break;
            byte += 8;
        }
        if (byte == end)
            break;
        const unsigned char lead = *byte;
        if (lead < 0x80) {
            ++byte;
            continue;
        }
        int length = 0;
        unsigned char low = 0x80;
        unsigned char high = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            if (lead == 0xE0)
                low = 0xA0;  // overlong
            if (lead == 0xED)
                high = 0x9F;  // surrogates
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            if (lead == 0xF0)
                low = 0x90;  // overlong
            if (lead == 0xF4)
                high = 0x8F;  // above U+10FFFF
        } else {
            return false;
        }
        if (end - byte < length)
            return false;
        if (byte[1] < low || byte[1] > high)
            return false;
        for (int i = 2; i < length; ++i) {
            if (byte[i] < 0x80 || byte[i] > 0xBF)
                return false;
        }
        byte += length;
    }
    return true;
}

void appendUTF8(std::string& out, char32_t code) {
    if (code < 0x80) {
        out.push_back(static_cast<char>(code));
    } else if (code < 0x800) {
        out.push_back(static_cast<char>(0xC0 | (code >> 6)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else if (code < 0x10000) {
        out.push_back(static_cast<char>(0xE0 | (code >> 12)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    } else {
        out.push_back(static_cast<char>(0xF0 | (code >> 18)));
        out.push_back(static_cast<char>(0x80 | ((code >> 12) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | ((code >> 6) & 0x3F)));
        out.push_back(static_cast<char>(0x80 | (code & 0x3F)));
    }
}

}  // namespace copperwick::text
