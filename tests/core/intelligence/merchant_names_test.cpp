#include "core/intelligence/merchant_names.h"

#include <gtest/gtest.h>

namespace copperwick {
namespace {

Merchant named(std::string name, std::vector<std::string> keys = {}) {
    return Merchant{.id = Uuid::random(), .name = std::move(name), .keys = std::move(keys)};
}

TEST(MerchantNames, RawLookingNamesNeedTidying) {
    const auto& directory = MerchantNames::directoryNames();
    ASSERT_TRUE(directory.contains("ikea"));
    const auto needs = [&](const Merchant& merchant) {
        return MerchantNames::needsTidying(merchant, directory);
    };
    EXPECT_TRUE(needs(named("AMZN MKTP")));
    EXPECT_FALSE(needs(named("IKEA"))) << "a directory name is tidy as it is";
    EXPECT_FALSE(needs(named("A1")));
    EXPECT_FALSE(needs(named("CVs"))) << "one lower-case letter is a choice";
    EXPECT_TRUE(needs(named("Sq *Corner")));
    EXPECT_TRUE(needs(named("Shell #4471")));
    EXPECT_TRUE(needs(named("Shell 447")));
    EXPECT_FALSE(needs(named("Shell 44")));
    EXPECT_TRUE(needs(named("Blue Bottle", {"BLUE BOTTLE"}))) << "what its key reads as";
    EXPECT_FALSE(needs(named("Blue Bottle Coffee", {"BLUE BOTTLE"})));

    Merchant locked = named("AMZN MKTP");
    locked.nameLocked = true;
    EXPECT_FALSE(needs(locked)) << "a person set this name";
}

TEST(MerchantNames, ARenameMustKeepTheBusiness) {
    using MerchantNames::acceptRename;
    EXPECT_EQ(acceptRename("SQ *JOE'S COFFEE 1234", " Joe's Coffee "), "Joe's Coffee");
    EXPECT_FALSE(acceptRename("SQ *JOE'S COFFEE 1234", "Starbucks"));
    EXPECT_EQ(acceptRename("AMZN", "AMZN Marketplace"), "AMZN Marketplace")
        << "the old letters inside the new";
    EXPECT_EQ(acceptRename("TST* BLUE BOTTLE COFFEE", "Blue Bottle"), "Blue Bottle");
    EXPECT_EQ(acceptRename("PEETS COFFEE & TEA", "Peet's Coffee"), "Peet's Coffee");
    EXPECT_FALSE(acceptRename("PEETS COFFEE & TEA", "Peet's Tea House"))
        << "\"peet's\" isn't \"peets\", and no other long word is shared";
    EXPECT_EQ(acceptRename("WHOLEFDS MKT 10234", "Whole Foods Market"), std::nullopt)
        << "no letters held either way and no long word shared";
    EXPECT_EQ(acceptRename("COSTCO GAS STATION", "Station Fuel"), "Station Fuel")
        << "one long word in common";

    EXPECT_FALSE(acceptRename("BLUE BOTTLE", "BLUE BOTTLE")) << "unchanged";
    EXPECT_FALSE(acceptRename("AB CAFE", "A")) << "too short";
    EXPECT_FALSE(acceptRename("AB CAFE", std::string(41, 'a')));
    EXPECT_FALSE(acceptRename("AB CAFE", "Ab\nCafe"));
    EXPECT_FALSE(acceptRename("AB CAFE 12", "A 12"));
    EXPECT_FALSE(acceptRename("HTTP CAFE", "Http Cafe"));
}

}  // namespace
}  // namespace copperwick
