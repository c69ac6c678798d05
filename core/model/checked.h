#pragma once

// Overflow-checked integer arithmetic for money and counts.
//
// An overflow here is a programming fault: inputs are bounded far below the
// 64-bit range (see Money::kLargestAmount), so reaching it means a broken
// invariant. The process stops rather than carry a wrong figure.

#include <cstdint>
#include <cstdio>
#include <cstdlib>

namespace copperwick::checked {

namespace detail {
[[noreturn]] inline void overflow(const char* operation) {
    std::fprintf(stderr, "copperwick: integer overflow in %s\n", operation);
    std::abort();
}
}  // namespace detail

[[nodiscard]] inline int64_t add(int64_t a, int64_t b) {
    int64_t result;
    if (__builtin_add_overflow(a, b, &result))
        detail::overflow("addition");
    return result;
}

[[nodiscard]] inline int64_t sub(int64_t a, int64_t b) {
    int64_t result;
    if (__builtin_sub_overflow(a, b, &result))
        detail::overflow("subtraction");
    return result;
}

[[nodiscard]] inline int64_t mul(int64_t a, int64_t b) {
    int64_t result;
    if (__builtin_mul_overflow(a, b, &result))
        detail::overflow("multiplication");
    return result;
}

[[nodiscard]] inline int64_t neg(int64_t a) {
    return sub(0, a);
}

}  // namespace copperwick::checked
