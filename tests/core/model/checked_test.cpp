#include "core/model/checked.h"

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "core/model/money.h"

namespace copperwick {
namespace {

constexpr int64_t kMost = std::numeric_limits<int64_t>::max();
constexpr int64_t kLeast = std::numeric_limits<int64_t>::min();

// Figures past 64 bits stopped the whole program with an abort, so a ledger
// with absurd amounts took the person's command down instead of being refused.
TEST(Checked, OverflowThrowsWordsInsteadOfStoppingTheProgram) {
    EXPECT_THROW((void)checked::add(kMost, 1), checked::Overflow);
    EXPECT_THROW((void)checked::sub(kLeast, 1), checked::Overflow);
    EXPECT_THROW((void)checked::mul(kMost / 2 + 1, 2), checked::Overflow);
    EXPECT_THROW((void)checked::neg(kLeast), checked::Overflow);
    // The money helpers built on them fail the same way, and a caller that
    // only knows the standard exceptions still catches it.
    EXPECT_THROW((void)Money::shareTenths(kMost / 100, 1), std::overflow_error);
    EXPECT_THROW((void)Money::format(kLeast), std::overflow_error);
    try {
        (void)checked::add(kMost, kMost);
        FAIL() << "no exception";
    } catch (const std::exception& error) {
        EXPECT_EQ(std::string(error.what()),
                  "These amounts are too large for Copperwick to add up.");
    }
    // Right at the edge nothing is thrown.
    EXPECT_EQ(checked::add(kMost - 1, 1), kMost);
    EXPECT_EQ(checked::neg(kMost), kLeast + 1);
}

}  // namespace
}  // namespace copperwick
