#include "core/model/heap_optional.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

// A rematch compared a transaction's absent suggestion with a matcher's
// absent one, found them different, and rewrote every line of the ledger.
TEST(HeapOptional, ComparesWithAPlainOptionalAsAnOptional) {
    const HeapOptional<std::string> none;
    const HeapOptional<std::string> some = std::string("1042");
    const std::optional<std::string> plainNone;
    const std::optional<std::string> plainSome = "1042";

    EXPECT_TRUE(none == plainNone);
    EXPECT_FALSE(none != plainNone);
    EXPECT_TRUE(some == plainSome);
    EXPECT_FALSE(some == plainNone);
    EXPECT_FALSE(none == plainSome);
    EXPECT_TRUE(plainSome == some);
    EXPECT_TRUE(none == std::nullopt);
    EXPECT_FALSE(some == HeapOptional<std::string>(std::string("1043")));
    EXPECT_TRUE(some == std::string("1042"));
    EXPECT_FALSE(none == std::string("1042"));
}

TEST(HeapOptional, CopiesAreIndependentValues) {
    HeapOptional<std::vector<int>> splits = std::vector<int>{1, 2};
    HeapOptional<std::vector<int>> copy = splits;
    copy->push_back(3);
    EXPECT_EQ(splits->size(), 2u);
    EXPECT_EQ(copy->size(), 3u);

    copy = splits;
    EXPECT_TRUE(copy == splits);
    splits = std::nullopt;
    EXPECT_FALSE(splits.has_value());
    EXPECT_EQ(copy->size(), 2u);
    EXPECT_THROW((void)splits.value(), std::bad_optional_access);
    EXPECT_EQ(HeapOptional<std::string>().value_or("none"), "none");
}

}  // namespace
}  // namespace copperwick
