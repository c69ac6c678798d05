#include "cli/command_line.h"
#include "tests/support/run_command.h"

#include <gtest/gtest.h>

#include "copperwick_version.h"

namespace copperwick::cli {
namespace {

constexpr auto runWith = testing::runCommand;

TEST(CommandLine, VersionAndHelpSucceed) {
    const auto version = runWith({"--version"});
    EXPECT_EQ(version.code, 0);
    EXPECT_EQ(version.out, std::string("Copperwick ") + COPPERWICK_VERSION + "\n");

    const auto help = runWith({"--help"});
    EXPECT_EQ(help.code, 0);
    EXPECT_NE(help.out.find("--data-dir"), std::string::npos);
    EXPECT_NE(help.out.find("--json"), std::string::npos);
}

TEST(CommandLine, GlobalOptionsAreAccepted) {
    EXPECT_EQ(runWith({"--data-dir", "/tmp/copperwick-test-unused", "--json"}).code, 0);
    EXPECT_EQ(runWith({"--json", "--data-dir=/tmp/copperwick-test-unused"}).code, 0);
}

TEST(CommandLine, BadUsageExitsTwoWithAMessage) {
    for (const auto& arguments :
         std::vector<std::vector<std::string>>{{"--bogus"}, {"--data-dir"}, {"frobnicate"}}) {
        const auto result = runWith(arguments);
        EXPECT_EQ(result.code, 2) << arguments[0];
        EXPECT_NE(result.err.find("copperwick:"), std::string::npos);
        EXPECT_TRUE(result.out.empty());
    }
}

}  // namespace
}  // namespace copperwick::cli
