#pragma once

// Benchmarks run at their full size by hand, and once at a small size in the
// tests (COPPERWICK_BENCH_SMOKE set), so that one that stops building or
// running is seen at once rather than when someone next measures.

#include <cstddef>
#include <cstdlib>

namespace copperwick::bench {

[[nodiscard]] inline bool smokeRun() {
    static const bool smoke = std::getenv("COPPERWICK_BENCH_SMOKE") != nullptr;
    return smoke;
}

// A size at full scale, or a fiftieth of it (at least 100) in a smoke run.
[[nodiscard]] inline std::size_t scaled(std::size_t full) {
    if (!smokeRun())
        return full;
    return full / 50 > 100 ? full / 50 : (full < 100 ? full : 100);
}

// Seconds a benchmark runs for at least, or next to none in a smoke run.
[[nodiscard]] inline double minTime(double full) {
    return smokeRun() ? 0.01 : full;
}

}  // namespace copperwick::bench
