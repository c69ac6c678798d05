#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::TempFolder;

// The folder a demo command named on stderr, where its workspace lived.
std::filesystem::path demoFolder(const std::string& err) {
    const std::string prefix = "Demo workspace: ";
    EXPECT_EQ(err.rfind(prefix, 0), 0u) << err;
    const auto end = err.find('\n');
    return err.substr(prefix.size(), end - prefix.size());
}

TEST(DemoCommand, ReviewShowsWaitingGroupsAndLeavesNothingBehind) {
    const auto result = testing::runCommand({"--demo", "--json", "review"});
    ASSERT_EQ(result.code, 0) << result.err;
    // Only the workspace line on stderr, so stdout stays one JSON value.
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    const auto review = boost::json::parse(result.out).as_object();
    EXPECT_GE(review.at("groups").as_array().size(), 3u);
    EXPECT_EQ(review.at("stalePending").as_array().size(), 1u);

    const auto folder = demoFolder(result.err);
    EXPECT_EQ(folder.filename().string().rfind("Copperwick-Demo-", 0), 0u);
    EXPECT_FALSE(std::filesystem::exists(folder));
}

TEST(DemoCommand, ReportFindsRecurringAndUnusualCharges) {
    const auto result =
        testing::runCommand({"--demo", "--json", "report", "--period", "last3Months"});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto report = boost::json::parse(result.out).as_object();
    const auto& recurring = report.at("recurring").as_array();
    EXPECT_TRUE(std::any_of(recurring.begin(), recurring.end(), [](const auto& charge) {
        return charge.at("merchantName") == "Netflix" && charge.at("count").as_int64() >= 13;
    }));
    const auto& unusual = report.at("unusual").as_array();
    EXPECT_TRUE(std::any_of(unusual.begin(), unusual.end(), [](const auto& charge) {
        return charge.at("merchantName") == "Best Buy";
    }));

    // The text form says the same.
    const auto text = testing::runCommand({"report", "--demo", "--tab", "recurring"});
    ASSERT_EQ(text.code, 0) << text.err;
    EXPECT_NE(text.out.find("Netflix"), std::string::npos);
}

TEST(DemoCommand, GivenDataFolderIsLeftUntouched) {
    TempFolder temp;
    const auto data = temp / "data";
    const auto result = testing::runCommand({"--data-dir", data.string(), "--demo", "accounts"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("Demo cash wallet"), std::string::npos) << result.out;
    EXPECT_FALSE(std::filesystem::exists(data));
    EXPECT_NE(demoFolder(result.err).parent_path(), temp.path());
}

}  // namespace
}  // namespace copperwick::cli
