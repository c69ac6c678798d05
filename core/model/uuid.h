#pragma once

// Identity of every record: a 128-bit UUID.
//
// The text form is canonical, 36 characters, upper-case hex with hyphens; it
// is what the data file and the command line write. Reading accepts any case.
// Byte order and text order agree, so sorting by value sorts by text, which is
// how ties between records are broken everywhere.

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace copperwick {

class Uuid {
  public:
    // The nil UUID (all zero). Records never carry it; it is a default only.
    constexpr Uuid() = default;
    constexpr explicit Uuid(const std::array<uint8_t, 16>& bytes) : m_bytes(bytes) {}

    // A new random (version 4) UUID from the system's secure generator.
    [[nodiscard]] static Uuid random();
    // A new time-ordered (version 7) UUID: the time in milliseconds, a count
    // that keeps ids made on one thread in the order they were made, then
    // random bits from the same generator. Records made together sort
    // together, so a store keyed by id writes a large import to neighbouring
    // pages rather than to every page of the file.
    [[nodiscard]] static Uuid timeOrdered();
    // Reads the canonical 8-4-4-4-12 form in any case; anything else is absent.
    [[nodiscard]] static std::optional<Uuid> parse(std::string_view text);

    [[nodiscard]] std::string text() const;
    // The same text at the end of `out`, for writers of many records.
    void appendText(std::string& out) const;
    [[nodiscard]] const std::array<uint8_t, 16>& bytes() const { return m_bytes; }
    [[nodiscard]] bool isNil() const { return *this == Uuid(); }

    friend auto operator<=>(const Uuid&, const Uuid&) = default;
    friend bool operator==(const Uuid&, const Uuid&) = default;

  private:
    std::array<uint8_t, 16> m_bytes{};
};

}  // namespace copperwick

template <>
struct std::hash<copperwick::Uuid> {
    std::size_t operator()(const copperwick::Uuid& id) const noexcept {
        // Random UUIDs are already uniformly spread; fold the two halves.
        uint64_t high = 0, low = 0;
        for (int i = 0; i < 8; ++i)
            high = (high << 8) | id.bytes()[i];
        for (int i = 8; i < 16; ++i)
            low = (low << 8) | id.bytes()[i];
        return static_cast<std::size_t>(high ^ (low * 0x9E3779B97F4A7C15ull));
    }
};
