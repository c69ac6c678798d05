#include "runtime/updates/update_version.h"

#include <algorithm>

namespace copperwick::update_version {

namespace {

constexpr std::size_t kMostParts = 8;
constexpr std::size_t kMostDigits = 9;

}  // namespace

std::optional<std::vector<uint32_t>> parse(std::string_view text) {
    std::vector<uint32_t> parts;
    std::size_t start = 0;
    while (true) {
        const std::size_t dot = std::min(text.find('.', start), text.size());
        const std::string_view part = text.substr(start, dot - start);
        if (part.empty() || part.size() > kMostDigits || parts.size() == kMostParts)
            return std::nullopt;
        uint32_t value = 0;
        for (const char c : part) {
            if (c < '0' || c > '9')
                return std::nullopt;
            value = value * 10 + static_cast<uint32_t>(c - '0');
        }
        parts.push_back(value);
        if (dot == text.size())
            return parts;
        start = dot + 1;
    }
}

bool isNewer(std::string_view candidate, std::string_view current) {
    const auto offered = parse(candidate);
    const auto running = parse(current);
    if (!offered || !running)
        return false;
    const std::size_t length = std::max(offered->size(), running->size());
    for (std::size_t i = 0; i < length; ++i) {
        const uint32_t a = i < offered->size() ? (*offered)[i] : 0;
        const uint32_t b = i < running->size() ? (*running)[i] : 0;
        if (a != b)
            return a > b;
    }
    return false;
}

}  // namespace copperwick::update_version
