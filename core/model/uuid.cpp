#include "core/model/uuid.h"

#include <pthread.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>

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

// Bumped in a child after fork(), so that the child never hands out bytes
// its parent's pool held too.
std::atomic<uint64_t> g_forks{0};

// An import makes an id for every new line; asking the generator for each
// one's sixteen bytes on their own costs a lock and a reseed check apiece,
// so the bytes are drawn a page at a time per thread.
void randomBytes(uint8_t* out, std::size_t count) {
    struct Pool {
        std::array<uint8_t, 4096> bytes{};
        std::size_t used = 4096;
        uint64_t forks = 0;
    };
    static const int watched =
        pthread_atfork(nullptr, nullptr, [] { g_forks.fetch_add(1, std::memory_order_relaxed); });
    (void)watched;
    thread_local Pool pool;
    const uint64_t forks = g_forks.load(std::memory_order_relaxed);
    if (pool.used + count > pool.bytes.size() || pool.forks != forks) {
        // Without randomness every new record could collide with an old one;
        // there is no safe way to go on.
        if (RAND_bytes(pool.bytes.data(), static_cast<int>(pool.bytes.size())) != 1)
            std::abort();
        pool.used = 0;
        pool.forks = forks;
    }
    std::memcpy(out, pool.bytes.data() + pool.used, count);
    pool.used += count;
}

}  // namespace

Uuid Uuid::random() {
    std::array<uint8_t, 16> bytes{};
    randomBytes(bytes.data(), bytes.size());
    bytes[6] = static_cast<uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<uint8_t>((bytes[8] & 0x3F) | 0x80);
    return Uuid(bytes);
}

Uuid Uuid::timeOrdered() {
    // Within a millisecond the twelve bits of count keep the order; past
    // 4,096 ids, or when the clock steps back, the time is carried forward.
    thread_local uint64_t lastMillis = 0;
    thread_local uint32_t count = 0;
    const auto now = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::system_clock::now().time_since_epoch());
    const auto millis = static_cast<uint64_t>(std::max<int64_t>(0, now.count()));
    if (millis > lastMillis) {
        lastMillis = millis;
        count = 0;
    } else if (++count > 0xFFF) {
        ++lastMillis;
        count = 0;
    }
    std::array<uint8_t, 16> bytes{};
    for (int i = 0; i < 6; ++i)
        bytes[static_cast<std::size_t>(i)] = static_cast<uint8_t>(lastMillis >> (40 - 8 * i));
    bytes[6] = static_cast<uint8_t>(0x70 | (count >> 8));
    bytes[7] = static_cast<uint8_t>(count & 0xFF);
    randomBytes(bytes.data() + 8, 8);
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
