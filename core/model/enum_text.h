#pragma once

// Raw texts of enumerations, as the data file and the command line write them.
//
// Each enumeration specialises EnumTraits with its cases in declaration order
// and their raw values; rawValue, enumFromRaw and allCases then work for all of
// them alike. Labels (what screens show) are separate `label` overloads, since
// not every enumeration has one.

#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace copperwick {

template <typename E>
struct EnumTraits;  // static constexpr std::array<std::pair<E, std::string_view>, N> cases;

template <typename E>
[[nodiscard]] constexpr std::string_view rawValue(E value) {
    for (const auto& [c, raw] : EnumTraits<E>::cases) {
        if (c == value)
            return raw;
    }
    return {};
}

// The case whose raw value is exactly `raw`; the raw values are case-sensitive.
template <typename E>
[[nodiscard]] constexpr std::optional<E> enumFromRaw(std::string_view raw) {
    for (const auto& [c, text] : EnumTraits<E>::cases) {
        if (text == raw)
            return c;
    }
    return std::nullopt;
}

template <typename E>
[[nodiscard]] constexpr auto allCases() {
    std::array<E, EnumTraits<E>::cases.size()> result{};
    for (std::size_t i = 0; i < result.size(); ++i)
        result[i] = EnumTraits<E>::cases[i].first;
    return result;
}

}  // namespace copperwick
