#include "core/model/file_output.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

using testing::TempFolder;

std::vector<std::string> namesIn(const std::filesystem::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

unsigned modeOf(const std::filesystem::path& file) {
    struct stat status {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0);
    return status.st_mode & 0777;
}

TEST(SaveFile, WritesANewNameOrARegularFileWholeAndPrivate) {
    TempFolder temp;
    const auto file = temp / "March.csv";
    ASSERT_FALSE(saveFile(file, "first"));
    EXPECT_EQ(testing::readFile(file), "first");
    EXPECT_EQ(modeOf(file), 0600u);

    testing::writeFile(file, "an older export that was readable by all");
    std::filesystem::permissions(file, std::filesystem::perms(0644));
    ASSERT_FALSE(saveFile(file, "second"));
    EXPECT_EQ(testing::readFile(file), "second");
    EXPECT_EQ(modeOf(file), 0600u);
    EXPECT_EQ(namesIn(temp.path()), std::vector<std::string>{"March.csv"});

    ASSERT_FALSE(saveFile(temp / "layout.json", "{}", FileAccess::everyone));
    EXPECT_EQ(modeOf(temp / "layout.json"), 0644u);
}

// Exporting to /dev/full as root replaced the device with a regular file; the
// same rename went over pipes and symbolic links, and a folder was answered
// with "Success".
TEST(SaveFile, RefusesWhatIsntARegularFileAndLeavesItAsItWas) {
    TempFolder temp;
    const auto pipe = temp / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const auto real = temp / "real.csv";
    testing::writeFile(real, "kept");
    const auto link = temp / "link.csv";
    std::filesystem::create_symlink(real, link);
    const auto folder = temp / "folder";
    std::filesystem::create_directory(folder);

    EXPECT_EQ(saveFile(pipe, "x"), pipe.string() + " isn't a regular file.");
    EXPECT_EQ(saveFile(link, "x"), link.string() + " isn't a regular file.");
    EXPECT_EQ(saveFile(folder, "x"), folder.string() + " is a folder, not a file.");
    EXPECT_EQ(saveFile(temp.path() / "", "x"),
              (temp.path() / "").string() + " is a folder, not a file.");

    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    EXPECT_TRUE(std::filesystem::is_symlink(link));
    EXPECT_EQ(testing::readFile(real), "kept");
    EXPECT_TRUE(std::filesystem::is_empty(folder));
    EXPECT_EQ(namesIn(temp.path()),
              (std::vector<std::string>{"folder", "link.csv", "pipe", "real.csv"}));
}

// A write the disk refuses halfway leaves the old file whole and no temporary
// beside it. The file size limit makes the refusal happen without a full disk.
TEST(SaveFile, AFailedWriteLeavesTheOldFileAndNoTemporary) {
    TempFolder temp;
    const auto file = temp / "export.csv";
    testing::writeFile(file, "the good export");

    struct rlimit before {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto previousHandler = ::signal(SIGXFSZ, SIG_IGN);
    struct rlimit small = before;
    small.rlim_cur = 4096;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    const auto problem = saveFile(file, std::string(100'000, 'x'));
    ::setrlimit(RLIMIT_FSIZE, &before);
    ::signal(SIGXFSZ, previousHandler);

    ASSERT_TRUE(problem);
    EXPECT_EQ(*problem, "The file is larger than this system allows.");
    EXPECT_EQ(testing::readFile(file), "the good export");
    EXPECT_EQ(namesIn(temp.path()), std::vector<std::string>{"export.csv"});

    EXPECT_EQ(saveFile(temp / "missing" / "x.csv", "x"),
              "The folder " + (temp / "missing").string() + " doesn't exist.");
    EXPECT_FALSE(std::filesystem::exists(temp / "missing"));
}

}  // namespace
}  // namespace copperwick
