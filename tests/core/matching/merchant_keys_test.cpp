#include "core/matching/merchant_keys.h"

#include <string>
#include <thread>
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

TEST(MerchantKeysTest, HeldKeysAgreeWithTheParseAndShareAnAddressExactlyWhenEqual) {
    const std::vector<std::string> texts{"POS PURCHASE SQ *BLUE BOTTLE #1234 OAKLAND CA CARD 1234",
                                         "SQ *BLUE BOTTLE #9876 BERKELEY CA",
                                         "PAYPAL *SPOTIFY",
                                         "JOE'S PIZZA 0042",
                                         "JOE'S PIZZA 0042",
                                         "joe's pizza 0042",
                                         ""};
    std::vector<const std::string*> held;
    for (const auto& text : texts) {
        held.push_back(&MerchantKeys::held(text));
        EXPECT_EQ(*held.back(), MerchantText(text).key) << text;
        EXPECT_EQ(MerchantKeys::of(text), *held.back()) << text;
        // Asked again, the same string answers.
        EXPECT_EQ(&MerchantKeys::held(text), held.back()) << text;
    }
    for (std::size_t i = 0; i < texts.size(); ++i) {
        for (std::size_t j = 0; j < texts.size(); ++j)
            EXPECT_EQ(held[i] == held[j], *held[i] == *held[j]) << texts[i] << " / " << texts[j];
    }
}

TEST(MerchantKeysTest, HeldKeysAreTheSameFromManyThreadsAtOnce) {
    std::vector<std::string> texts;
    for (int i = 0; i < 2000; ++i)
        texts.push_back("THREADED SHOP #" + std::to_string(i % 97) + " STORE " + std::to_string(i));
    std::vector<std::vector<const std::string*>> seen(4);
    {
        std::vector<std::jthread> threads;
        for (std::size_t t = 0; t < seen.size(); ++t) {
            threads.emplace_back([&, t] {
                for (const auto& text : texts)
                    seen[t].push_back(&MerchantKeys::held(text));
            });
        }
    }
    for (std::size_t t = 1; t < seen.size(); ++t)
        EXPECT_EQ(seen[t], seen[0]);
    for (std::size_t i = 0; i < texts.size(); ++i)
        EXPECT_EQ(*seen[0][i], MerchantText(texts[i]).key);
}

}  // namespace
}  // namespace copperwick
