#include <sys/stat.h>

#include <gtest/gtest.h>

#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::TempFolder;

class ExportCommandTest : public ::testing::Test {
  protected:
    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", (folder / "data").string()});
        return testing::runCommand(arguments);
    }

    TempFolder folder;
};

// `export transactions /dev/full` as root replaced the device with a regular
// file; the same rename went over pipes and symbolic links, and a folder was
// answered with "Couldn't save the file: Success".
TEST_F(ExportCommandTest, OnlyARegularFileOrANewNameIsWritten) {
    const auto pipe = folder / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const auto kept = folder / "kept.csv";
    testing::writeFile(kept, "mine");
    const auto link = folder / "link.csv";
    std::filesystem::create_symlink(kept, link);
    const auto box = folder / "box";
    std::filesystem::create_directory(box);

    for (const auto& [target, reason] : std::vector<std::pair<std::filesystem::path, std::string>>{
             {pipe, " isn't a regular file."},
             {link, " isn't a regular file."},
             {box, " is a folder, not a file."}}) {
        for (const char* kind : {"transactions", "summary"}) {
            const auto result = run({"export", kind, target.string()});
            EXPECT_EQ(result.code, 1) << kind;
            EXPECT_EQ(result.err, "Couldn't save the file: " + target.string() + reason + "\n");
        }
    }
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(testing::readFile(kept), "mine");
    EXPECT_TRUE(std::filesystem::is_empty(box));

    // A new file is private: it holds someone's finances.
    const auto saved = run({"export", "transactions", (folder / "new.csv").string()});
    ASSERT_EQ(saved.code, 0) << saved.err;
    struct stat status {};
    ASSERT_EQ(::stat((folder / "new.csv").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0600u);
    EXPECT_EQ(run({"export", "summary", kept.string()}).code, 0);
    EXPECT_NE(testing::readFile(kept), "mine");
}

}  // namespace
}  // namespace copperwick::cli
