#include "core/model/uuid.h"

#include <array>
#include <cstdlib>

#include <openssl/rand.h>

namespace copperwick {

namespace {

constexpr char kHexDigits[] = "0123456789ABCDEF";

// A load reads several ids per record, and random hex digits defeat branch
// prediction, so digits are looked up rather than compared.
constexpr std::array<int8_t, 256> kHexValues = [] {
    std::array<int8_t, 256> table{};
    table.fill(-1);
    for (int i = 0; i < 10; ++i)
        table['0' + i] = static_cast<int8_t>(i);
    for (int i = 0; i < 6; ++i) {
        table['a' + i] = static_cast<int8_t>(10 + i);
        table['A' + i] = static_cast<int8_t>(10 + i);
    }
    return table;
}();

// Where each byte's two digits start in the 8-4-4-4-12 text.
constexpr std::array<uint8_t, 16> kByteOffsets{0,  2,  4,  6,  9,  11, 14, 16,
                                               19, 21, 24, 26, 28, 30, 32, 34};

}  // namespace

Uuid Uuid::random() {
    std::array<uint8_t, 16> bytes{};
    // Without randomness every new record could collide with an old one;
    // there is no safe way to go on.
    if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1)
        std::abort();
    bytes[6] = static_cast<uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<uint8_t>((bytes[8] & 0x3F) | 0x80);
    return Uuid(bytes);
}

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != 36 || text[8] != '-' || text[13] != '-' || text[18] != '-' ||
        text[23] != '-')
        return std::nullopt;
    std::array<uint8_t, 16> bytes{};
    int bad = 0;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const int high = kHexValues[static_cast<uint8_t>(text[kByteOffsets[i]])];
        const int low = kHexValues[static_cast<uint8_t>(text[kByteOffsets[i] + 1])];
        bad |= high | low;
        bytes[i] = static_cast<uint8_t>(high * 16 + low);
    }
    if (bad < 0)
        return std::nullopt;
    return Uuid(bytes);
}

std::string Uuid::text() const {
    std::string out;
    out.reserve(36);
    appendText(out);
    return out;
}

void Uuid::appendText(std::string& out) const {
    for (std::size_t i = 0; i < m_bytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10)
            out.push_back('-');
        out.push_back(kHexDigits[m_bytes[i] >> 4]);
        out.push_back(kHexDigits[m_bytes[i] & 0x0F]);
    }
}

}  // namespace copperwick
