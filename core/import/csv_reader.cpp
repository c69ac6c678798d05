#include "core/import/csv_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <memory>
#include <optional>

#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

namespace copperwick {

namespace {

constexpr std::string_view kByteOrderMarkUtf8 = "\xEF\xBB\xBF";

// Blank and tab plus the rest of Unicode's space separators; never a line
// break, so a quoted line break keeps a field from counting as blank.
bool isWhitespace(UChar32 c) {
    if (c < 0x80)
        return c == ' ' || c == '\t';
    return u_charType(c) == U_SPACE_SEPARATOR;
}

// The scalar starting at `at`, or a negative value for an ill-formed one.
UChar32 scalarAt(std::string_view text, std::size_t at, std::size_t& next) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const auto length = static_cast<int64_t>(text.size());
    auto i = static_cast<int64_t>(at);
    UChar32 c;
    U8_NEXT(bytes, i, length, c);
    next = static_cast<std::size_t>(i);
    return c;
}

// Ill-formed bytes count as text, so trimming stops at them and keeps them.
std::string_view trimmedWhitespace(std::string_view text) {
    std::size_t start = 0;
    while (start < text.size()) {
        std::size_t next;
        const UChar32 c = scalarAt(text, start, next);
        if (c < 0 || !isWhitespace(c))
            break;
        start = next;
    }
    std::size_t end = text.size();
    while (end > start) {
        // Back up over at most three continuation bytes to the lead byte.
        std::size_t lead = end - 1;
        while (lead > start && end - lead < 4 && U8_IS_TRAIL(text[lead]))
            --lead;
        std::size_t next;
        const UChar32 c = scalarAt(text, lead, next);
        if (c < 0 || next != end || !isWhitespace(c))
            break;
        end = lead;
    }
    return text.substr(start, end - start);
}

bool isBlankText(std::string_view text) {
    return trimmedWhitespace(text).empty();
}

// Refuses overlong forms, surrogates and anything past U+10FFFF, so that such
// a file falls through to code page 1252 instead of being read half right.
bool isStrictUtf8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const std::size_t length = text.size();
    std::size_t i = 0;
    while (i < length) {
        // Bank exports are nearly all ASCII; skip it eight bytes at a time.
        while (i + 8 <= length) {
            uint64_t word;
            std::memcpy(&word, bytes + i, sizeof word);
            if (word & 0x8080808080808080ULL)
                break;
            i += 8;
        }
        if (i == length)
            break;
        const uint8_t lead = bytes[i];
        if (lead < 0x80) {
            ++i;
            continue;
        }
        std::size_t trail;
        uint8_t secondLow = 0x80;
        uint8_t secondHigh = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            trail = 1;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            trail = 2;
            if (lead == 0xE0)
                secondLow = 0xA0;  // overlong
            else if (lead == 0xED)
                secondHigh = 0x9F;  // surrogates
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            trail = 3;
            if (lead == 0xF0)
                secondLow = 0x90;  // overlong
            else if (lead == 0xF4)
                secondHigh = 0x8F;  // past U+10FFFF
        } else {
            return false;
        }
        if (length - i <= trail)
            return false;
        if (bytes[i + 1] < secondLow || bytes[i + 1] > secondHigh)
            return false;
        for (std::size_t k = 2; k <= trail; ++k) {
            if ((bytes[i + k] & 0xC0) != 0x80)
                return false;
        }
        i += trail + 1;
    }
    return true;
}

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};

enum class Refuse {
    nothing,
    c1Controls,
};

// Streams through a small UTF-16 buffer, so a large file is never held whole
// as UTF-16 next to its UTF-8 result. The stop callback makes the converter give
// up at the first byte it cannot map instead of substituting U+FFFD.
std::optional<std::string> convertStrictly(const char* converterName, std::string_view bytes,
                                           std::size_t expectedSize, Refuse refuse) {
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<UConverter, ConverterCloser> converter(ucnv_open(converterName, &status));
    if (U_FAILURE(status))
        return std::nullopt;
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr,
                        &status);
    if (U_FAILURE(status))
        return std::nullopt;

    std::string out;
    out.reserve(expectedSize);
    std::array<UChar, 16384> buffer;
    const char* source = bytes.data();
    const char* const sourceLimit = bytes.data() + bytes.size();
    UChar pendingLead = 0;  // a surrogate pair may straddle two buffers
    for (;;) {
        UChar* target = buffer.data();
        status = U_ZERO_ERROR;
        ucnv_toUnicode(converter.get(), &target, buffer.data() + buffer.size(), &source,
                       sourceLimit, nullptr, true, &status);
        const bool more = status == U_BUFFER_OVERFLOW_ERROR;
        if (U_FAILURE(status) && !more)
            return std::nullopt;
        const auto produced = static_cast<int32_t>(target - buffer.data());
        int32_t i = 0;
        while (i < produced) {
            UChar32 c = buffer[static_cast<std::size_t>(i++)];
            if (pendingLead != 0) {
                if (!U16_IS_TRAIL(c))
                    return std::nullopt;
                c = U16_GET_SUPPLEMENTARY(pendingLead, c);
                pendingLead = 0;
            } else if (U16_IS_LEAD(c)) {
                pendingLead = static_cast<UChar>(c);
                continue;
            } else if (U16_IS_TRAIL(c)) {
                return std::nullopt;
            }
            if (refuse == Refuse::c1Controls && c >= 0x80 && c <= 0x9F)
                return std::nullopt;
            uint8_t encoded[U8_MAX_LENGTH];
            int32_t length = 0;
            U8_APPEND_UNSAFE(encoded, length, c);
            out.append(reinterpret_cast<const char*>(encoded), static_cast<std::size_t>(length));
        }
        if (!more)
            break;
    }
    if (pendingLead != 0)
        return std::nullopt;
    return out;
}

bool startsWith(std::string_view bytes, std::string_view prefix) {
    return bytes.substr(0, prefix.size()) == prefix;
}

std::size_t afterLineBreak(std::string_view text, std::size_t at) {
    if (text[at] == '\r' && at + 1 < text.size() && text[at + 1] == '\n')
        return at + 2;
    return at + 1;
}

// Blanks around an unquoted field are layout, not content.
void trimInPlace(std::string& field) {
    const std::string_view kept = trimmedWhitespace(field);
    if (kept.size() == field.size())
        return;
    const auto offset = static_cast<std::size_t>(kept.data() - field.data());
    field.erase(offset + kept.size());
    field.erase(0, offset);
}

}  // namespace

bool CSVRecord::isBlank() const {
    return std::all_of(fields.begin(), fields.end(),
                       [](const std::string& field) { return isBlankText(field); });
}

DecodedText DecodedText::borrowing(std::string_view bytes) {
    DecodedText text;
    text.m_borrowed = bytes;
    return text;
}

DecodedText DecodedText::owning(std::string converted) {
    DecodedText text;
    text.m_owned = std::move(converted);
    text.m_owns = true;
    return text;
}

std::string DecodedText::toString() && {
    return m_owns ? std::move(m_owned) : std::string(m_borrowed);
}

// The stream walks bytes: quote, delimiter and line breaks are ASCII (or, for
// an unusual delimiter, a whole encoded scalar), and no byte of a multi-byte
// UTF-8 sequence is ASCII, so every other scalar passes through untouched.
CSVRecordStream::CSVRecordStream(std::string_view text, char32_t delimiter) : m_text(text) {
    if (delimiter == 0 || delimiter > 0x10FFFF || U_IS_SURROGATE(delimiter))
        delimiter = U',';
    uint8_t encoded[U8_MAX_LENGTH] = {};
    int32_t length = 0;
    U8_APPEND_UNSAFE(encoded, length, delimiter);
    std::memcpy(m_delimiter.data(), encoded, static_cast<std::size_t>(length));
    m_delimiterLength = static_cast<std::size_t>(length);
    m_special[static_cast<uint8_t>('"')] = true;
    m_special[static_cast<uint8_t>('\n')] = true;
    m_special[static_cast<uint8_t>('\r')] = true;
    m_special[encoded[0]] = true;
}

bool CSVRecordStream::next(CSVRecord& record) {
    const std::size_t size = m_text.size();
    if (m_at >= size)
        return false;
    record.line = m_line;
    record.rawText.clear();
    std::size_t rawStart = m_at;
    std::size_t at = m_at;
    std::size_t count = 0;
    for (;;) {
        if (count == record.fields.size())
            record.fields.emplace_back();
        std::string& field = record.fields[count++];
        field.clear();
        bool quoted = false;
        at = readField(at, field, record.rawText, rawStart, quoted);
        if (!quoted)
            trimInPlace(field);
        // A field stops at the end, at a line break or at the delimiter; line
        // breaks win over a delimiter that happens to be one, so a record's
        // raw text stays on one line.
        if (at == size || m_text[at] == '\n' || m_text[at] == '\r')
            break;
        at += m_delimiterLength;
    }
    record.fields.resize(count);
    record.rawText.append(m_text, rawStart, at - rawStart);
    if (at < size) {
        at = afterLineBreak(m_text, at);
        ++m_line;
    }
    m_at = at;
    return true;
}

std::size_t CSVRecordStream::readField(std::size_t at, std::string& field, std::string& raw,
                                       std::size_t& rawStart, bool& quoted) {
    const std::size_t size = m_text.size();
    bool inQuotes = false;
    // Once the field has shown text it keeps it, so a quote late in a long
    // field doesn't look at its bytes again.
    bool hasText = false;
    for (;;) {
        const std::size_t start = at;
        if (!inQuotes) {
            while (at < size && !m_special[static_cast<uint8_t>(m_text[at])])
                ++at;
            field.append(m_text, start, at - start);
            if (at == size)
                return at;
            const char c = m_text[at];
            if (c == '"') {
                if (!hasText)
                    hasText = !isBlankText(field);
                if (!hasText) {
                    // Blanks before an opening quote are layout, not content.
                    field.clear();
                    inQuotes = true;
                    quoted = true;
                } else {
                    field.push_back('"');
                }
                ++at;
                continue;
            }
            if (c == '\n' || c == '\r')
                return at;
            // The only other special byte is the delimiter's first.
            if (m_delimiterLength == 1 ||
                m_text.substr(at, m_delimiterLength) ==
                    std::string_view(m_delimiter.data(), m_delimiterLength))
                return at;
            field.push_back(c);
            ++at;
            continue;
        }

        while (at < size && m_text[at] != '"' && m_text[at] != '\n' && m_text[at] != '\r')
            ++at;
        field.append(m_text, start, at - start);
        if (at == size)
            return at;  // a quote left open ends with the text
        if (m_text[at] == '"') {
            if (at + 1 < size && m_text[at + 1] == '"') {
                field.push_back('"');
                at += 2;
            } else {
                inQuotes = false;
                ++at;
            }
            continue;
        }
        // Whatever the file used, a quoted line break is LF in the field and
        // one blank in the raw text, which is shown on a single line.
        field.push_back('\n');
        raw.append(m_text, rawStart, at - rawStart);
        raw.push_back(' ');
        at = afterLineBreak(m_text, at);
        rawStart = at;
        ++m_line;
    }
}

namespace CSVReader {

std::variant<std::string, CSVReaderError> decode(std::string_view bytes) {
    auto decoded = decodeBorrowing(bytes);
    if (const auto* error = std::get_if<CSVReaderError>(&decoded))
        return *error;
    return std::move(std::get<DecodedText>(decoded)).toString();
}

std::variant<DecodedText, CSVReaderError> decodeBorrowing(std::string_view bytes) {
    if (bytes.empty())
        return CSVReaderError::empty;

    std::optional<std::string> text;
    if (startsWith(bytes, "\xFF\xFE"))
        text = convertStrictly("UTF-16LE", bytes, bytes.size() / 2, Refuse::nothing);
    else if (startsWith(bytes, "\xFE\xFF"))
        text = convertStrictly("UTF-16BE", bytes, bytes.size() / 2, Refuse::nothing);

    if (!text) {
        if (isStrictUtf8(bytes)) {
            if (startsWith(bytes, kByteOrderMarkUtf8))
                bytes.remove_prefix(kByteOrderMarkUtf8.size());
            return DecodedText::borrowing(bytes);
        }
        // ICU maps the five bytes code page 1252 leaves undefined to C1
        // controls; a file holding them is no 1252 text, so they refuse it.
        // Such text cannot start with U+FEFF, so it is returned as it is.
        // Every byte past ASCII takes two or three bytes in UTF-8.
        const auto high = static_cast<std::size_t>(std::count_if(
            bytes.begin(), bytes.end(), [](char c) { return static_cast<uint8_t>(c) >= 0x80; }));
        auto latin =
            convertStrictly("windows-1252", bytes, bytes.size() + 2 * high, Refuse::c1Controls);
        if (!latin)
            return CSVReaderError::unreadableEncoding;
        return DecodedText::owning(std::move(*latin));
    }

    if (startsWith(*text, kByteOrderMarkUtf8))
        text->erase(0, kByteOrderMarkUtf8.size());
    return DecodedText::owning(std::move(*text));
}

char32_t detectDelimiter(std::string_view text) {
    constexpr int kScannedLines = 20;
    int64_t commas = 0;
    int64_t tabs = 0;
    int64_t semicolons = 0;
    int lines = 0;
    bool inQuotes = false;
    for (const char c : text) {
        if (c == '"') {
            inQuotes = !inQuotes;
        } else if (inQuotes) {
            continue;
        } else if (c == ',') {
            ++commas;
        } else if (c == '\t') {
            ++tabs;
        } else if (c == ';') {
            ++semicolons;
        } else if (c == '\n' && ++lines == kScannedLines) {
            break;
        }
    }
    char32_t choice = U',';
    int64_t best = commas;
    if (tabs > best) {
        choice = U'\t';
        best = tabs;
    }
    if (semicolons > best)
        choice = U';';
    return choice;
}

std::vector<CSVRecord> parse(std::string_view text, char32_t delimiter) {
    std::vector<CSVRecord> records;
    records.reserve(maxRecords(text));
    CSVRecordStream stream(text, delimiter);
    CSVRecord record;
    while (stream.next(record))
        records.push_back(record);  // a copy sized to fit; `record` keeps its buffers
    return records;
}

std::size_t maxRecords(std::string_view text) {
    // Each LF ends a line, and so does each CR that no LF follows.
    auto breaks = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    for (std::size_t at = text.find('\r'); at != std::string_view::npos;
         at = text.find('\r', at + 1)) {
        if (at + 1 == text.size() || text[at + 1] != '\n')
            ++breaks;
    }
    return breaks + 1;
}

}  // namespace CSVReader
}  // namespace copperwick
