#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "cli/command_line.h"
#include "tests/support/run_command.h"

namespace copperwick::cli {
namespace {

constexpr auto runWith = testing::runCommand;

TEST(TextCommand, JSONOmitsAbsentViewsAndKeepsDescriptionsInOrder) {
    const auto result =
        runWith({"--json", "text", "PAYPAL *SPOTIFY", "Card 1234", "--data-dir", "/nonexistent"});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto texts = boost::json::parse(result.out).as_array();
    ASSERT_EQ(texts.size(), 2u);

    const auto& paypal = texts[0].as_object();
    EXPECT_EQ(paypal.size(), 7u);
    EXPECT_EQ(paypal.at("normalized").as_string(), "PAYPAL *SPOTIFY");
    EXPECT_EQ(paypal.at("core").as_string(), "PAYPAL *SPOTIFY");
    EXPECT_EQ(paypal.at("via").as_string(), "PayPal");
    EXPECT_EQ(paypal.at("counterpart").as_string(), "SPOTIFY");
    EXPECT_EQ(paypal.at("key").as_string(), "SPOTIFY");
    EXPECT_EQ(paypal.at("displayName").as_string(), "Spotify");

    const auto& card = texts[1].as_object();
    EXPECT_EQ(card.size(), 5u);
    EXPECT_FALSE(card.contains("via"));
    EXPECT_FALSE(card.contains("counterpart"));
    EXPECT_EQ(card.at("key").as_string(), "CARD");
}

TEST(TextCommand, TextShowsOneBlockPerDescriptionWithDashesForAbsentViews) {
    // Global options may follow the command, and no data folder is touched.
    const auto result =
        runWith({"text", "SQ *Blue Bottle #1234", "Zelle to Jane", "--data-dir", "/nonexistent"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_FALSE(std::filesystem::exists("/nonexistent"));
    EXPECT_EQ(result.out,
              "normalized: SQ *BLUE BOTTLE #1234\n"
              "core: SQ *BLUE BOTTLE #1234\n"
              "via: \u2014\n"
              "counterpart: \u2014\n"
              "key: BLUE BOTTLE\n"
              "displayName: Blue Bottle\n"
              "kind: unknown\n"
              "category: \u2014\n"
              "merchant: \u2014\n"
              "method: none\n"
              "evidence: No rule or known merchant matched.\n"
              "review: unresolved\n"
              "suggestion: \u2014\n"
              "\n"
              "normalized: ZELLE TO JANE\n"
              "core: ZELLE TO JANE\n"
              "via: Zelle\n"
              "counterpart: JANE\n"
              "key: JANE\n"
              "displayName: Jane\n"
              "kind: unknown\n"
              "category: \u2014\n"
              "merchant: \u2014\n"
              "method: none\n"
              "evidence: No rule or known merchant matched.\n"
              "review: unresolved\n"
              "suggestion: \u2014\n");
}

TEST(TextCommand, NeedsADescription) {
    const auto result = runWith({"text"});
    EXPECT_EQ(result.code, 2);
    EXPECT_NE(result.err.find("DESCRIPTION"), std::string::npos) << result.err;
}

}  // namespace
}  // namespace copperwick::cli
