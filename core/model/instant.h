#pragma once

// A point in time, kept the way the data file stores it: seconds (with
// fraction) since 2001-01-01 00:00:00 UTC. Instants stamp records (when a
// rule was made, when a file was imported); they never carry money.

#include <chrono>
#include <compare>

namespace copperwick {

struct Instant {
    // Seconds between 1970-01-01 and 2001-01-01, both UTC.
    static constexpr double kReferenceOffsetFromUnix = 978307200.0;

    double secondsSinceReference = 0;

    [[nodiscard]] static Instant fromUnixSeconds(double seconds) {
        return Instant{seconds - kReferenceOffsetFromUnix};
    }
    [[nodiscard]] static Instant now() {
        const auto since = std::chrono::system_clock::now().time_since_epoch();
        return fromUnixSeconds(std::chrono::duration<double>(since).count());
    }
    [[nodiscard]] double unixSeconds() const {
        return secondsSinceReference + kReferenceOffsetFromUnix;
    }

    auto operator<=>(const Instant&) const = default;
};

}  // namespace copperwick
