#include <sys/wait.h>

#include <cstdio>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "cli/command_line.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::TempFolder;

using testing::CommandResult;
constexpr auto runWith = testing::runCommand;

boost::json::value json(const CommandResult& result) {
    return boost::json::parse(result.out);
}

TEST(InfoCommand, NewFolderIsCreatedAndDescribed) {
    TempFolder temp;
    const auto folder = (temp / "data").string();
    const auto result = runWith({"--data-dir", folder, "--json", "info"});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto info = json(result).as_object();
    EXPECT_EQ(info.at("dataFolder").as_string(), folder);
    EXPECT_EQ(info.at("formatVersion").as_int64(), 2);
    EXPECT_EQ(info.at("revision").as_int64(), 1);
    EXPECT_EQ(info.at("unreadableRecords").as_int64(), 0);
    EXPECT_EQ(info.at("counts").at("category").as_int64(), 23);
    EXPECT_EQ(info.at("counts").at("transaction").as_int64(), 0);
    EXPECT_EQ(info.at("counts").as_object().size(), 12u);
    EXPECT_FALSE(info.contains("newestBackup"));
    EXPECT_TRUE(std::filesystem::exists(temp / "data" / "Copperwick.sqlite"));

    // Global options may also follow the command.
    const auto text = runWith({"info", "--data-dir", folder});
    ASSERT_EQ(text.code, 0) << text.err;
    EXPECT_NE(text.out.find("File format: 2"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("category: 23"), std::string::npos) << text.out;
}

TEST(BackupCommands, MakeListAndRestore) {
    TempFolder temp;
    const auto folder = (temp / "data").string();
    ASSERT_EQ(runWith({"--data-dir", folder, "info"}).code, 0);

    const auto made = runWith({"--data-dir", folder, "backup", "now"});
    ASSERT_EQ(made.code, 0) << made.err;
    EXPECT_EQ(made.out.rfind("Backed up to Copperwick-", 0), 0u) << made.out;
    EXPECT_NE(made.out.find("-manual.sqlite."), std::string::npos) << made.out;

    const auto listed = runWith({"--data-dir", folder, "--json", "backup", "list"});
    ASSERT_EQ(listed.code, 0) << listed.err;
    const auto backups = json(listed).as_array();
    ASSERT_GE(backups.size(), 1u);
    const auto& newest = backups[0].as_object();
    EXPECT_EQ(newest.at("reason").as_string(), "manual");
    EXPECT_GT(newest.at("bytes").as_int64(), 0);
    const std::string url(newest.at("url").as_string());

    const auto restored = runWith({"--data-dir", folder, "backup", "restore", url});
    ASSERT_EQ(restored.code, 0) << restored.err;
    EXPECT_EQ(restored.out.rfind("Restored the backup from ", 0), 0u) << restored.out;

    // A copy may also be named by its file name alone.
    const auto byName = std::filesystem::path(url).filename().string();
    EXPECT_EQ(runWith({"--data-dir", folder, "backup", "restore", byName}).code, 0);
}

TEST(BackupCommands, RestoringATextFileFailsAndKeepsTheData) {
    TempFolder temp;
    const auto folder = (temp / "data").string();
    ASSERT_EQ(runWith({"--data-dir", folder, "info"}).code, 0);
    const auto dataFile = temp / "data" / "Copperwick.sqlite";
    const auto text = temp / "notes.txt";
    testing::writeFile(text, "hello");

    const auto result = runWith({"--data-dir", folder, "backup", "restore", text.string()});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err,
              "Copperwick couldn't open its data file: The backup file is damaged or isn't an "
              "Copperwick backup.\n");
    const auto info = runWith({"--data-dir", folder, "--json", "info"});
    ASSERT_EQ(info.code, 0);
    EXPECT_EQ(json(info).at("counts").at("category").as_int64(), 23);
}

TEST(BackupCommands, UsageMistakesExitTwo) {
    TempFolder temp;
    EXPECT_EQ(runWith({"--data-dir", temp.path().string(), "backup"}).code, 2);
    EXPECT_EQ(runWith({"--data-dir", temp.path().string(), "backup", "restore"}).code, 2);
    EXPECT_EQ(runWith({"--data-dir", temp.path().string(), "backup", "sideways"}).code, 2);
}

// Commands that only read said "Copperwick couldn't save: file is not a
// database" when the data file couldn't be opened.
TEST(InfoCommand, ADataFileThatCantBeOpenedIsSaidSoByEveryCommand) {
    TempFolder temp;
    std::filesystem::create_directory(temp / "data");
    testing::writeFile(temp / "data" / "Copperwick.sqlite", "notes, not a ledger\n");
    for (const std::vector<std::string>& command : {std::vector<std::string>{"info"},
                                                    {"transactions"},
                                                    {"review"},
                                                    {"report"},
                                                    {"accounts", "add", "Checking"}}) {
        auto arguments = command;
        arguments.insert(arguments.begin(), {"--data-dir", (temp / "data").string()});
        const auto result = runWith(arguments);
        EXPECT_EQ(result.code, 1) << command[0];
        EXPECT_EQ(result.err, "Copperwick couldn't open its data file: file is not a database\n")
            << command[0];
    }
    EXPECT_EQ(testing::readFile(temp / "data" / "Copperwick.sqlite"), "notes, not a ledger\n");
}

TEST(CommandLineProcess, FailureGoesToStderrWithExitOne) {
    TempFolder temp;
    // A file where the data folder should be: the folder can't be made.
    testing::writeFile(temp / "blocked", "x");
    const std::string command = std::string(COPPERWICK_EXECUTABLE) + " --data-dir " +
                                (temp / "blocked").string() + " info 2>" +
                                (temp / "err.txt").string();
    const int status = std::system(command.c_str());
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 1);
    const auto err = testing::readFile(temp / "err.txt");
    EXPECT_EQ(err.rfind("Copperwick couldn't", 0), 0u) << err;
}

}  // namespace
}  // namespace copperwick::cli
