#include "core/import/bank_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <future>

#include <gtest/gtest.h>

#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

using testing::TempFolder;
using Case = BankFileProblem::Case;

std::optional<Case> problemOf(const std::variant<std::string, BankFileProblem>& read) {
    if (const auto* problem = std::get_if<BankFileProblem>(&read))
        return problem->kind;
    return std::nullopt;
}

TEST(ReadBankFile, GivesEveryByteOfARegularFileOrOneItLinksTo) {
    TempFolder temp;
    const std::string bytes("Date,Description,Amount\r\n03/01/2026,\"A\0B\",-1.00\n", 48);
    testing::writeFile(temp / "march.csv", bytes);
    std::filesystem::create_symlink(temp / "march.csv", temp / "latest.csv");
    for (const char* name : {"march.csv", "latest.csv"}) {
        const auto read = readBankFile(temp / name);
        ASSERT_TRUE(std::holds_alternative<std::string>(read)) << name;
        EXPECT_EQ(std::get<std::string>(read), bytes) << name;
    }
    const auto empty = temp / "empty.csv";
    testing::writeFile(empty, "");
    EXPECT_EQ(std::get<std::string>(readBankFile(empty)), "");
}

// A pipe given as a bank file hung the import, /dev/zero grew without end, a
// folder answered "basic_filebuf::underflow", and a file of any size was read
// whole.
TEST(ReadBankFile, RefusesPipesDevicesFoldersAndHugeFilesWithoutReadingThem) {
    TempFolder temp;
    const auto pipe = temp / "pipe.csv";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    auto reading = std::async(std::launch::async, [&] { return readBankFile(pipe); });
    if (reading.wait_for(std::chrono::seconds(10)) != std::future_status::ready) {
        // Let the stuck reader go before failing.
        ::close(::open(pipe.c_str(), O_WRONLY | O_NONBLOCK));
        FAIL() << "reading a pipe waited for a writer";
    }
    EXPECT_EQ(problemOf(reading.get()), Case::notRegularFile);

    EXPECT_EQ(problemOf(readBankFile("/dev/zero")), Case::notRegularFile);
    EXPECT_EQ(problemOf(readBankFile(temp.path())), Case::folder);
    EXPECT_EQ(problemOf(readBankFile(temp / "absent.csv")), Case::missing);

    // Sparse: the size says too large, and nothing is read to find out.
    const auto huge = temp / "huge.csv";
    testing::writeFile(huge, "Date,Description,Amount\n");
    std::filesystem::resize_file(huge, kLargestBankFileBytes + 1);
    EXPECT_EQ(problemOf(readBankFile(huge)), Case::tooLarge);
}

}  // namespace
}  // namespace copperwick
