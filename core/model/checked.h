#pragma once

// Overflow-checked integer arithmetic for money and counts. Pure functions,
// safe on any thread.
//
// Amounts are bounded far below the 64-bit range (Money::kLargestAmount), so
// an overflow means a figure no household has: usually a ledger made
// elsewhere, or one amount typed with far too many digits. Carrying a wrapped
// figure on would show a wrong number, and stopping the process would take
// the person's work with it; so the helpers throw Overflow instead. It is an
// ordinary exception: the runtime reports it as it reports a failed save and
// keeps the ledger it had, and a command says it in the words below.

#include <cstdint>
#include <stdexcept>

namespace copperwick::checked {

// The one failure of these helpers, with the words a person reads.
class Overflow : public std::overflow_error {
  public:
    Overflow() : std::overflow_error("These amounts are too large for Copperwick to add up.") {}
};

[[nodiscard]] inline int64_t add(int64_t a, int64_t b) {
    int64_t result;
    if (__builtin_add_overflow(a, b, &result))
        throw Overflow();
    return result;
}

[[nodiscard]] inline int64_t sub(int64_t a, int64_t b) {
    int64_t result;
    if (__builtin_sub_overflow(a, b, &result))
        throw Overflow();
    return result;
}

[[nodiscard]] inline int64_t mul(int64_t a, int64_t b) {
    int64_t result;
    if (__builtin_mul_overflow(a, b, &result))
        throw Overflow();
    return result;
}

[[nodiscard]] inline int64_t neg(int64_t a) {
    return sub(0, a);
}

}  // namespace copperwick::checked
