#include "core/model/transaction_reader.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

#include "core/model/enum_text.h"
#include "core/model/text.h"

namespace copperwick::detail {

namespace {

// Every key of a transaction, in the order the encoder writes them, so that
// the next key in a row is nearly always the one after the last.
enum class Field {
    id,
    accountID,
    batchID,
    sourceLine,
    date,
    postedDate,
    amount,
    currency,
    rawDescription,
    bankMerchant,
    bankCategory,
    checkNumber,
    status,
    fingerprint,
    occurrence,
    kind,
    categoryID,
    merchantID,
    method,
    evidence,
    review,
    suggestion,
    transferPairID,
    supersededBy,
    voided,
    note,
    spendingAssignment,
    inheritedAssignment,
    cardIdentifier,
    entrySource,
    originalDetails,
    revisions,
    splits,
    externalID,
    unknown,
};

constexpr std::array<std::string_view, 34> kNames{
    "id",
    "accountID",
    "batchID",
    "sourceLine",
    "date",
    "postedDate",
    "amount",
    "currency",
    "rawDescription",
    "bankMerchant",
    "bankCategory",
    "checkNumber",
    "status",
    "fingerprint",
    "occurrence",
    "kind",
    "categoryID",
    "merchantID",
    "method",
    "evidence",
    "review",
    "suggestion",
    "transferPairID",
    "supersededBy",
    "voided",
    "note",
    "spendingAssignment",
    "inheritedAssignment",
    "cardIdentifier",
    "entrySource",
    "originalDetails",
    "revisions",
    "splits",
    "externalID",
};

constexpr uint64_t bit(Field f) {
    return uint64_t{1} << static_cast<int>(f);
}

constexpr uint64_t kRequired =
    bit(Field::id) | bit(Field::accountID) | bit(Field::sourceLine) | bit(Field::date) |
    bit(Field::amount) | bit(Field::currency) | bit(Field::rawDescription) | bit(Field::status) |
    bit(Field::fingerprint) | bit(Field::occurrence) | bit(Field::kind) | bit(Field::method) |
    bit(Field::evidence) | bit(Field::review) | bit(Field::voided) | bit(Field::note);

// Values that are objects or arrays, left to the ordinary reader. The two
// assignments are objects too, but read here in the forms the encoder
// writes: every imported line carries the one it inherited.
constexpr uint64_t kNested = bit(Field::suggestion) | bit(Field::originalDetails) |
                             bit(Field::revisions) | bit(Field::splits);

// A key as a row spells it, closing quote included, as the little-endian
// words it loads as and the masks of its bytes in them, so that a candidate
// is usually ruled out by one compare.
struct Key {
    std::array<uint64_t, 3> words{};
    std::array<uint64_t, 3> masks{};
    std::size_t size = 0;
    std::size_t room = 0;  // bytes read to compare it: whole words
};
static_assert(std::ranges::all_of(kNames, [](std::string_view name) {
    return name.size() < sizeof(Key::words);
}));
constexpr std::array<Key, kNames.size()> kKeys = [] {
    std::array<Key, kNames.size()> keys{};
    for (std::size_t k = 0; k < kNames.size(); ++k) {
        const std::string_view name = kNames[k];
        keys[k].size = name.size() + 1;
        keys[k].room = (keys[k].size + 7) / 8 * 8;
        for (std::size_t i = 0; i < keys[k].size; ++i) {
            const auto c = static_cast<unsigned char>(i < name.size() ? name[i] : '"');
            keys[k].words[i / 8] |= uint64_t{c} << (8 * (i % 8));
            keys[k].masks[i / 8] |= uint64_t{0xFF} << (8 * (i % 8));
        }
    }
    return keys;
}();

// Whether `p`, with at least key.room bytes to read, starts with `key`.
bool startsWith(const char* p, const Key& key) {
    for (std::size_t i = 0; 8 * i < key.room; ++i) {
        uint64_t w = 0;
        std::memcpy(&w, p + 8 * i, sizeof w);
        if (((w ^ key.words[i]) & key.masks[i]) != 0)
            return false;
    }
    return true;
}

// The type a field holds, whether or not it is optional.
template <typename T>
struct Held {
    using type = T;
};
template <typename T>
struct Held<std::optional<T>> {
    using type = T;
};

// Bytes that stand for themselves inside a string: printable ASCII but for the
// quote and the backslash. Everything else needs a closer look.
constexpr std::array<bool, 256> kPlain = [] {
    std::array<bool, 256> plain{};
    for (int c = 0x20; c < 0x80; ++c)
        plain[static_cast<std::size_t>(c)] = c != '"' && c != '\\';
    return plain;
}();

// The first byte at or after `p` that isn't plain, or `end`. Most text is
// plain, so it goes eight bytes at a time: each word is tested at once for a
// quote, a backslash, a control character or a byte of a longer UTF-8
// sequence, and the first such byte found by its bit rather than by a loop,
// whose unpredictable end would cost more than the scan.
const char* skipPlain(const char* p, const char* end) {
    constexpr uint64_t kOnes = 0x0101010101010101;
    constexpr uint64_t kHigh = 0x8080808080808080;
    // Flags every zero byte; bytes above the lowest flagged one may be
    // flagged wrongly, so only the lowest is trusted.
    const auto zeroBytes = [](uint64_t w) { return (w - kOnes) & ~w; };
    if constexpr (std::endian::native == std::endian::little) {
        while (end - p >= 8) {
            uint64_t w = 0;
            std::memcpy(&w, p, sizeof w);
            const uint64_t special = (zeroBytes(w ^ (kOnes * '"')) | zeroBytes(w ^ (kOnes * '\\')) |
                                      ((w - kOnes * 0x20) & ~w) | w) &
                                     kHigh;
            if (special != 0)
                return p + std::countr_zero(special) / 8;
            p += 8;
        }
    }
    while (p != end && kPlain[static_cast<unsigned char>(*p)])
        ++p;
    return p;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

int hexValue(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// Uuid::parse's reading of the canonical 8-4-4-4-12 text, done eight digits at
// a time: a row holds up to seven ids, and a load reads every one of them.
// Each word is taken straight from its loads; gathered in an array first, the
// compiler pairs them in vector registers through memory, which stalls.
std::optional<Uuid> readUuid(std::string_view text) {
    if constexpr (std::endian::native != std::endian::little) {
        return Uuid::parse(text);
    } else {
        if (text.size() != 36 || text[8] != '-' || text[13] != '-' || text[18] != '-' ||
            text[23] != '-')
            return std::nullopt;
        const auto load = [&](std::size_t at, std::size_t size) {
            uint64_t w = 0;
            std::memcpy(&w, text.data() + at, size);
            return w;
        };
        constexpr uint64_t kOnes = 0x0101010101010101;
        constexpr uint64_t kHigh = 0x8080808080808080;
        // With every byte below 0x80, adding 0x80 - n sets a byte's top bit
        // exactly when the byte is at least n, and never carries into the next.
        const auto atLeast = [](uint64_t x, uint64_t n) { return x + kOnes * (0x80 - n); };
        std::array<uint8_t, 16> bytes{};
        uint64_t bad = 0;
        // Eight digits into four bytes.
        const auto read = [&](uint64_t w, std::size_t at) {
            const uint64_t lower = w | kOnes * 0x20;
            const uint64_t hex = (atLeast(w, '0') & ~atLeast(w, '9' + 1)) |
                                 (atLeast(lower, 'a') & ~atLeast(lower, 'f' + 1));
            bad |= (w & kHigh) | (~hex & kHigh);
            // A digit's value is its low four bits; a letter's, those plus nine.
            const uint64_t nibbles = (w & kOnes * 0x0F) + ((w >> 6) & kOnes) * 9;
            // Pairs of nibbles into bytes, then the four bytes side by side.
            uint64_t x =
                ((nibbles & 0x000F000F000F000F) << 4) | ((nibbles >> 8) & 0x000F000F000F000F);
            x = (x | x >> 8) & 0x0000FFFF0000FFFF;
            x = (x | x >> 16) & 0x00000000FFFFFFFF;
            const auto four = static_cast<uint32_t>(x);
            std::memcpy(&bytes[at], &four, sizeof four);
        };
        read(load(0, 8), 0);
        read(load(9, 4) | load(14, 4) << 32, 4);
        read(load(19, 4) | load(24, 4) << 32, 8);
        read(load(28, 8), 12);
        if (bad != 0)
            return std::nullopt;
        return Uuid(bytes);
    }
}

// "YYYY-MM-DD", the only form the encoder writes, read without the general
// parser's allocations; absent for any other text, which the caller hands to
// the general parser (it accepts a few more spellings of the same day).
std::optional<LocalDate> readPlainDate(std::string_view text) {
    if (text.size() != 10 || text[4] != '-' || text[7] != '-')
        return std::nullopt;
    for (const std::size_t i : {0, 1, 2, 3, 5, 6, 8, 9}) {
        if (!isDigit(text[i]))
            return std::nullopt;
    }
    const auto digit = [&](std::size_t i) { return text[i] - '0'; };
    return LocalDate::make(digit(0) * 1000 + digit(1) * 100 + digit(2) * 10 + digit(3),
                           digit(5) * 10 + digit(6), digit(8) * 10 + digit(9));
}

// One pass over one row. Every read either moves past what it read and returns
// true, or returns false and the row is declined; the grammar is JSON's, less
// what the encoder never writes (nesting, fractions, "-0").
class Scanner {
  public:
    Scanner(std::string_view text, LedgerTransaction& record)
        : m_at(text.data()), m_end(text.data() + text.size()), m_record(record) {}

    bool read() {
        if (!takeAfterSpace('{'))
            return false;
        do {
            Field field = Field::unknown;
            if (!takeAfterSpace('"') || !readKey(field) || !takeAfterSpace(':'))
                return false;
            skipSpace();
            if (!readValue(field))
                return false;
        } while (takeAfterSpace(','));
        if (!takeAfterSpace('}'))
            return false;
        skipSpace();
        return m_at == m_end && (m_keys & kRequired) == kRequired;
    }

  private:
    bool take(char c) {
        if (m_at == m_end || *m_at != c)
            return false;
        ++m_at;
        return true;
    }
    // The encoder writes no white space, so the character is nearly always next.
    bool takeAfterSpace(char c) {
        if (m_at != m_end && *m_at == c) {
            ++m_at;
            return true;
        }
        skipSpace();
        return take(c);
    }
    // No token starts with a byte at or below the space, so one test settles
    // the usual case of no white space at all.
    void skipSpace() {
        if (m_at == m_end || static_cast<unsigned char>(*m_at) > ' ')
            return;
        while (m_at != m_end && (*m_at == ' ' || *m_at == '\n' || *m_at == '\r' || *m_at == '\t'))
            ++m_at;
    }

    // After the opening quote. A key is matched against the names in place,
    // starting with the one the encoder writes next; only a key that is
    // unknown or spelled with escapes is read as a string first.
    bool readKey(Field& field) {
        if constexpr (std::endian::native == std::endian::little) {
            const auto left = static_cast<std::size_t>(m_end - m_at);
            for (std::size_t n = 0, i = m_guess; n < kKeys.size(); ++n, ++i) {
                if (i == kKeys.size())
                    i = 0;
                if (left >= kKeys[i].room && startsWith(m_at, kKeys[i])) {
                    m_at += kKeys[i].size;
                    m_guess = i + 1;
                    field = static_cast<Field>(i);
                    return true;
                }
            }
        }
        std::string_view key;
        if (!readString(key))
            return false;
        field = fieldNamed(key);
        return true;
    }

    static Field fieldNamed(std::string_view key) {
        for (std::size_t i = 0; i < kNames.size(); ++i) {
            if (kNames[i] == key)
                return static_cast<Field>(i);
        }
        return Field::unknown;
    }

    // After the opening quote. The text points into the row, or into m_text
    // when escapes had to be undone; either way it lasts until the next string.
    bool readString(std::string_view& text) {
        const char* start = m_at;
        for (;;) {
            m_at = skipPlain(m_at, m_end);
            if (m_at == m_end)
                return false;
            if (*m_at == '"') {
                text = std::string_view(start, static_cast<std::size_t>(m_at - start));
                ++m_at;
                return true;
            }
            if (*m_at == '\\')
                return readEscapedString(start, text);
            if (!skipUtf8())
                return false;
        }
    }

    bool readEscapedString(const char* start, std::string_view& text) {
        m_text.assign(start, m_at);
        for (;;) {
            const char* run = m_at;
            m_at = skipPlain(m_at, m_end);
            m_text.append(run, m_at);
            if (m_at == m_end)
                return false;
            if (*m_at == '"') {
                text = m_text;
                ++m_at;
                return true;
            }
            if (*m_at == '\\') {
                ++m_at;
                if (!unescape())
                    return false;
                continue;
            }
            run = m_at;
            if (!skipUtf8())
                return false;
            m_text.append(run, m_at);
        }
    }

    // One escape, after its backslash. A surrogate must come as a whole pair.
    bool unescape() {
        if (m_at == m_end)
            return false;
        switch (*m_at++) {
            case '"':
                m_text.push_back('"');
                return true;
            case '\\':
                m_text.push_back('\\');
                return true;
            case '/':
                m_text.push_back('/');
                return true;
            case 'b':
                m_text.push_back('\b');
                return true;
            case 'f':
                m_text.push_back('\f');
                return true;
            case 'n':
                m_text.push_back('\n');
                return true;
            case 'r':
                m_text.push_back('\r');
                return true;
            case 't':
                m_text.push_back('\t');
                return true;
            case 'u':
                break;
            default:
                return false;
        }
        uint32_t unit = 0;
        if (!readHex4(unit) || (unit >= 0xDC00 && unit <= 0xDFFF))
            return false;
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            uint32_t low = 0;
            if (!take('\\') || !take('u') || !readHex4(low) || low < 0xDC00 || low > 0xDFFF)
                return false;
            unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
        }
        text::appendUTF8(m_text, unit);
        return true;
    }
    bool readHex4(uint32_t& out) {
        if (m_end - m_at < 4)
            return false;
        for (int i = 0; i < 4; ++i) {
            const int value = hexValue(*m_at++);
            if (value < 0)
                return false;
            out = out * 16 + static_cast<uint32_t>(value);
        }
        return true;
    }

    // One well-formed UTF-8 sequence: no overlong forms, no surrogates, nothing
    // above U+10FFFF. Anything else is a byte the JSON parser refuses too.
    bool skipUtf8() {
        const auto* p = reinterpret_cast<const unsigned char*>(m_at);
        const std::size_t left = static_cast<std::size_t>(m_end - m_at);
        const auto follows = [&](std::size_t i, unsigned char low = 0x80,
                                 unsigned char high = 0xBF) {
            return i < left && p[i] >= low && p[i] <= high;
        };
        const unsigned char lead = p[0];
        std::size_t length = 0;
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = follows(1) ? 2 : 0;
        } else if (lead == 0xE0) {
            length = follows(1, 0xA0) && follows(2) ? 3 : 0;
        } else if (lead == 0xED) {
            length = follows(1, 0x80, 0x9F) && follows(2) ? 3 : 0;
        } else if (lead >= 0xE1 && lead <= 0xEF) {
            length = follows(1) && follows(2) ? 3 : 0;
        } else if (lead == 0xF0) {
            length = follows(1, 0x90) && follows(2) && follows(3) ? 4 : 0;
        } else if (lead >= 0xF1 && lead <= 0xF3) {
            length = follows(1) && follows(2) && follows(3) ? 4 : 0;
        } else if (lead == 0xF4) {
            length = follows(1, 0x80, 0x8F) && follows(2) && follows(3) ? 4 : 0;
        }
        m_at += length;
        return length > 0;  // a control character or a stray byte when 0
    }

    bool readInteger(int64_t& out) {
        const bool negative = take('-');
        if (m_at == m_end || !isDigit(*m_at))
            return false;
        uint64_t magnitude = 0;
        if (*m_at == '0') {
            ++m_at;
            if (negative)
                return false;
        } else {
            int digits = 0;
            while (m_at != m_end && isDigit(*m_at)) {
                if (++digits > 19)
                    return false;
                magnitude = magnitude * 10 + static_cast<uint64_t>(*m_at++ - '0');
            }
        }
        // A fraction or an exponent makes a double; a digit after a leading zero
        // isn't JSON.
        if (m_at != m_end && (*m_at == '.' || *m_at == 'e' || *m_at == 'E' || isDigit(*m_at)))
            return false;
        constexpr uint64_t kLargest = uint64_t{1} << 63;  // magnitude of INT64_MIN
        if (magnitude > (negative ? kLargest : kLargest - 1))
            return false;
        out = negative ? -static_cast<int64_t>(magnitude - 1) - 1 : static_cast<int64_t>(magnitude);
        return true;
    }

    bool readWord(std::string_view word) {
        if (static_cast<std::size_t>(m_end - m_at) < word.size() ||
            std::memcmp(m_at, word.data(), word.size()) != 0)
            return false;
        m_at += word.size();
        return true;
    }

    bool readValue(Field field) {
        if (field != Field::unknown) {
            if ((m_keys & bit(field)) != 0 || (kNested & bit(field)) != 0)
                return false;
            m_keys |= bit(field);
        }
        if (m_at == m_end)
            return false;
        switch (*m_at) {
            case '"':
                ++m_at;
                return takeString(field);
            case 't':
            case 'f': {
                const bool value = *m_at == 't';
                if (!readWord(value ? "true" : "false"))
                    return false;
                if (field == Field::voided)
                    m_record.voided = value;
                return field == Field::voided || field == Field::unknown;
            }
            case 'n':
                // Null is absence: fine for an optional field, fatal for a required one.
                return readWord("null") &&
                       (field == Field::unknown || (kRequired & bit(field)) == 0);
            case '{':
                if (field == Field::spendingAssignment)
                    return readAssignment(m_record.spendingAssignment);
                if (field == Field::inheritedAssignment)
                    return readAssignment(m_record.inheritedAssignment);
                return false;
            default: {
                int64_t value = 0;
                return readInteger(value) && takeInteger(field, value);
            }
        }
    }

    // {"unassigned":{}}, {"shared":{}} or {"person":{"_0":"ID"}}, white space
    // allowed between tokens; any other spelling is declined, and the
    // ordinary reader decides what it means.
    bool readAssignment(std::optional<SpendingAssignment>& out) {
        if (!takeAfterSpace('{') || !takeAfterSpace('"'))
            return false;
        std::string_view name;
        if (!readString(name) || !takeAfterSpace(':') || !takeAfterSpace('{'))
            return false;
        if (name == "person") {
            Uuid person;
            if (!takeAfterSpace('"') || !readWord("_0\"") || !takeAfterSpace(':') ||
                !takeAfterSpace('"') || !takeUuid(person))
                return false;
            out = SpendingAssignment::person(person);
        } else if (name == "shared") {
            out = SpendingAssignment::shared();
        } else if (name == "unassigned") {
            out = SpendingAssignment::unassigned();
        } else {
            return false;
        }
        return takeAfterSpace('}') && takeAfterSpace('}');
    }

    // The take functions come after the opening quote and read the string
    // into a field of the record (plain or optional alike).
    template <typename Out>
    bool takeText(Out& out) {
        std::string_view text;
        if (!readString(text))
            return false;
        out = std::string(text);
        return true;
    }
    template <typename Out>
    bool takeEnum(Out& out) {
        std::string_view text;
        if (!readString(text))
            return false;
        const auto value = enumFromRaw<typename Held<Out>::type>(text);
        if (value)
            out = *value;
        return value.has_value();
    }
    // Ids and dates have a fixed width. When the closing quote stands where it
    // should and every byte before it is one an id or a date is made of, there
    // can be no escape in between, and the value is read where it stands.
    template <typename Out>
    bool takeUuid(Out& out) {
        constexpr std::size_t kWidth = 36;
        std::optional<Uuid> id;
        if (static_cast<std::size_t>(m_end - m_at) > kWidth && m_at[kWidth] == '"' &&
            (id = readUuid(std::string_view(m_at, kWidth)))) {
            m_at += kWidth + 1;
        } else {
            std::string_view text;
            if (!readString(text) || !(id = readUuid(text)))
                return false;
        }
        out = *id;
        return true;
    }
    template <typename Out>
    bool takeDate(Out& out) {
        constexpr std::size_t kWidth = 10;
        std::optional<LocalDate> date;
        if (static_cast<std::size_t>(m_end - m_at) > kWidth && m_at[kWidth] == '"' &&
            (date = readPlainDate(std::string_view(m_at, kWidth)))) {
            m_at += kWidth + 1;
        } else {
            std::string_view text;
            if (!readString(text))
                return false;
            date = readPlainDate(text);
            if (!date)
                date = LocalDate::fromISO(text);
            if (!date)
                return false;
        }
        out = *date;
        return true;
    }

    bool takeString(Field field) {
        auto& r = m_record;
        switch (field) {
            case Field::id:
                return takeUuid(r.id);
            case Field::accountID:
                return takeUuid(r.accountID);
            case Field::batchID:
                return takeUuid(r.batchID);
            case Field::date:
                return takeDate(r.date);
            case Field::postedDate:
                return takeDate(r.postedDate);
            case Field::currency:
                return takeText(r.currency);
            case Field::rawDescription:
                return takeText(r.rawDescription);
            case Field::bankMerchant:
                return takeText(r.bankMerchant);
            case Field::bankCategory:
                return takeText(r.bankCategory);
            case Field::checkNumber:
                return takeText(r.checkNumber);
            case Field::status:
                return takeEnum(r.status);
            case Field::fingerprint:
                return takeText(r.fingerprint);
            case Field::kind:
                return takeEnum(r.kind);
            case Field::categoryID:
                return takeUuid(r.categoryID);
            case Field::merchantID:
                return takeUuid(r.merchantID);
            case Field::method:
                return takeEnum(r.method);
            case Field::evidence:
                return takeText(r.evidence);
            case Field::review:
                return takeEnum(r.review);
            case Field::transferPairID:
                return takeUuid(r.transferPairID);
            case Field::supersededBy:
                return takeUuid(r.supersededBy);
            case Field::note:
                return takeText(r.note);
            case Field::cardIdentifier:
                return takeText(r.cardIdentifier);
            case Field::entrySource:
                return takeEnum(r.entrySource);
            case Field::externalID:
                return takeText(r.externalID);
            case Field::unknown: {
                std::string_view ignored;
                return readString(ignored);
            }
            default:
                return false;  // a string where a number or a boolean belongs
        }
    }

    bool takeInteger(Field field, int64_t value) {
        switch (field) {
            case Field::sourceLine:
                m_record.sourceLine = value;
                return true;
            case Field::amount:
                m_record.amount = value;
                return true;
            case Field::occurrence:
                m_record.occurrence = value;
                return true;
            case Field::unknown:
                return true;
            default:
                return false;
        }
    }

    const char* m_at;
    const char* m_end;
    LedgerTransaction& m_record;
    uint64_t m_keys = 0;  // known keys met so far, null or not
    std::size_t m_guess = 0;
    std::string m_text;  // a string with its escapes undone
};

}  // namespace

bool readFlatTransaction(std::string_view json, LedgerTransaction& out) {
    return Scanner(json, out).read();
}

std::optional<LedgerTransaction> readFlatTransaction(std::string_view json) {
    LedgerTransaction record;
    if (!readFlatTransaction(json, record))
        return std::nullopt;
    return record;
}

}  // namespace copperwick::detail
