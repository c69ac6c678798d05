#include "cli/command_line.h"
#include "tests/support/run_command.h"

#include <sys/wait.h>

#include <cstdlib>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "copperwick_version.h"
#include "tests/support/temp_folder.h"

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

// `accounts update Card1 --name $'Card\xff1'` exited 0, and the account
// saved under that name couldn't be read back.
TEST(CommandLine, TextThatIsntUTF8IsRefusedNamingTheOptionButPathsMayBeAnyBytes) {
    testing::TempFolder temp;
    const std::string data = (temp / "data").string();
    ASSERT_EQ(runWith({"--data-dir", data, "accounts", "add", "Card1"}).code, 0);

    const std::vector<std::pair<std::vector<std::string>, std::string>> refused{
        {{"accounts", "update", "Card1", "--name",
          "Card\xff"
          "1"},
         "--name"},
        {{"accounts", "add", "Card\xc3(2"}, "NAME"},
        {{"transactions", "--search", "caf\xe9"}, "--search"},
        {{"settings", "reportCurrency", "\xed\xa0\x80"}, "VALUE"},
    };
    for (const auto& [command, option] : refused) {
        auto arguments = command;
        arguments.insert(arguments.begin(), {"--data-dir", data});
        const auto result = runWith(arguments);
        EXPECT_EQ(result.code, 1) << option;
        EXPECT_EQ(result.err, "The text given for " + option +
                                  " isn't valid UTF-8, so Copperwick can't use it. Type it "
                                  "again in UTF-8.\n");
        EXPECT_TRUE(result.out.empty()) << result.out;
    }
    const auto accounts = runWith({"--data-dir", data, "--json", "accounts"});
    ASSERT_EQ(accounts.code, 0) << accounts.err;
    const auto list = boost::json::parse(accounts.out).as_array();
    ASSERT_EQ(list.size(), 1u);
    EXPECT_EQ(list[0].at("name").as_string(), "Card1");

    // A file name is whatever bytes the file system holds.
    const auto file = temp / "export \xff.csv";
    const auto saved = runWith({"--data-dir", data, "export", "transactions", file.string()});
    EXPECT_EQ(saved.code, 0) << saved.err;
    EXPECT_TRUE(std::filesystem::exists(file));
}

// `--data-dir ""` quietly used the current folder, and `--limit -1` was
// refused with a number 309 digits long.
TEST(CommandLine, EmptyDataFolderAndLimitsBelowOneAreRefusedInWords) {
    testing::TempFolder temp;
    const auto empty = runWith({"--data-dir", "", "info"});
    EXPECT_EQ(empty.code, 2);
    EXPECT_EQ(empty.err.rfind("copperwick: --data-dir: give the folder's name; an empty name "
                              "isn't a folder\n",
                              0),
              0u)
        << empty.err;
    EXPECT_FALSE(std::filesystem::exists("Copperwick.sqlite"));

    for (const std::string limit : {"-1", "0", "ten", "99999999999999999999"}) {
        const auto result =
            runWith({"--data-dir", temp.path().string(), "transactions", "--limit", limit});
        EXPECT_EQ(result.code, 2) << limit;
        EXPECT_EQ(result.err.rfind("copperwick: --limit: the number of lines is a whole number "
                                   "from 1 up, not \u201C" +
                                       limit + "\u201D\n",
                                   0),
                  0u)
            << result.err;
    }
    EXPECT_EQ(runWith({"--data-dir", temp.path().string(), "transactions", "--limit", "3"}).code,
              0);
}

// An exception nobody expected ended the command in the library's own words
// ("filesystem error: cannot get current path"); a working folder deleted
// under the command is one way to meet one.
TEST(CommandLine, AnUnexpectedErrorEndsTheCommandInWordsWithExitOne) {
    testing::TempFolder temp;
    const auto data = (temp / "data").string();
    ASSERT_EQ(runWith({"--data-dir", data, "info"}).code, 0);
    const auto gone = temp / "gone";
    std::filesystem::create_directory(gone);
    const std::string command = "cd " + gone.string() + " && rmdir " + gone.string() + " && exec " +
                                COPPERWICK_EXECUTABLE + " --data-dir " + data +
                                " import march.csv 2>" + (temp / "err.txt").string();
    const int status = std::system(command.c_str());
    ASSERT_TRUE(WIFEXITED(status)) << "killed by a signal";
    EXPECT_EQ(WEXITSTATUS(status), 1);
    EXPECT_EQ(testing::readFile(temp / "err.txt"),
              "Copperwick stopped: No such file or directory.\n");
}

// `transactions > /dev/full` lost every line and still exited 0.
TEST(CommandLine, OutputThatCantBeWrittenFailsTheCommand) {
    testing::TempFolder temp;
    std::ostream nowhere(nullptr);
    std::ostringstream err;
    EXPECT_EQ(run({"--data-dir", temp.path().string(), "info"}, nowhere, err), 1);
    EXPECT_EQ(err.str(), "Copperwick couldn't write all of its output.\n");
}

}  // namespace
}  // namespace copperwick::cli
