#include "core/matching/merchant_keys.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/matching/merchant_text.h"

namespace copperwick {
namespace {

TEST(MerchantKeysTest, CoversTheKeyItselfAndLongerKeysOnAWordBoundary) {
    EXPECT_TRUE(MerchantKeys::isCoveredBy("BLUE BOTTLE", "BLUE BOTTLE"));
    EXPECT_TRUE(MerchantKeys::isCoveredBy("BLUE BOTTLE COFFEE", "BLUE BOTTLE"));
    EXPECT_FALSE(MerchantKeys::isCoveredBy("BLUE BOTTLES", "BLUE BOTTLE"));
    EXPECT_FALSE(MerchantKeys::isCoveredBy("BLUE", "BLUE BOTTLE"));
    EXPECT_FALSE(MerchantKeys::isCoveredBy("BLUE BOTTLE", ""));
}

TEST(MerchantKeysTest, TheKeyOfADescriptionIsWorkedOutOnceAndAgreesWithTheParse) {
    const std::vector<std::string> texts{"POS PURCHASE SQ *BLUE BOTTLE #1234 OAKLAND CA CARD 1234",
                                         "PAYPAL *SPOTIFY", "JOE'S PIZZA 0042", ""};
    std::vector<const std::string*> pointers;
    for (const auto& text : texts)
        pointers.push_back(&text);
    std::vector<std::string> visited(texts.size(), "unvisited");
    MerchantKeys::visit(
        pointers, [&](std::size_t i, std::string_view key) { visited[i] = std::string(key); });
    for (std::size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(visited[i], MerchantText(texts[i]).key) << texts[i];
        EXPECT_EQ(MerchantKeys::of(texts[i]), visited[i]);
    }
}

}  // namespace
}  // namespace copperwick
