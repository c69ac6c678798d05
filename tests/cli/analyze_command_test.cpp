#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::TempFolder;

std::string sample(const std::string& name) {
    return (std::filesystem::path(COPPERWICK_TEST_DATA) / "csv" / name).string();
}

TEST(AnalyzeCommand, JSONCarriesEveryRowFieldByName) {
    TempFolder temp;
    const auto result =
        testing::runCommand({"--data-dir", temp.path().string(), "--json", "analyze",
                             sample("capital-one-card.csv"), sample("bank-of-america.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto files = boost::json::parse(result.out).as_array();
    ASSERT_EQ(files.size(), 2u);
    const auto& card = files[0].as_object();
    EXPECT_EQ(card.at("profile").at("id").as_string(), "capital-one-card");
    EXPECT_EQ(card.at("dateLayout").as_string(), "yearMonthDay");
    EXPECT_EQ(card.at("typeHint").as_string(), "creditCard");
    EXPECT_FALSE(card.contains("problem"));
    const auto& row = card.at("rows").as_array().at(0).as_object();
    EXPECT_EQ(row.at("amount").as_int64(), -2350);
    EXPECT_EQ(row.at("date").as_string(), "2026-03-08");
    EXPECT_EQ(row.at("postedDate").as_string(), "2026-03-09");
    EXPECT_EQ(row.at("cardIdentifier").as_string(), "Card ending 4421");
    EXPECT_EQ(row.at("occurrence").as_int64(), 1);
    EXPECT_FALSE(row.contains("externalID"));  // absent, not null

    const auto& bank = files[1].as_object();
    EXPECT_EQ(bank.at("skippedLines").as_int64(), 4);
    EXPECT_TRUE(bank.at("issues").as_array().empty());
    EXPECT_EQ(bank.at("blankLines").as_int64(), 1);
}

TEST(AnalyzeCommand, LayoutAndFlipOptions) {
    TempFolder temp;
    const auto flipped =
        testing::runCommand({"--data-dir", temp.path().string(), "--json", "analyze",
                             "--flip-signs", "--layout", "chase-card", sample("chase-card.csv")});
    ASSERT_EQ(flipped.code, 0) << flipped.err;
    EXPECT_EQ(boost::json::parse(flipped.out).at(0).at("rows").at(0).at("amount").as_int64(), 2350);

    const auto unknown = testing::runCommand({"--data-dir", temp.path().string(), "analyze",
                                              "--layout", "nope", sample("chase-card.csv")});
    EXPECT_EQ(unknown.code, 1);
    const auto missing = testing::runCommand(
        {"--data-dir", temp.path().string(), "analyze", (temp / "none.csv").string()});
    EXPECT_EQ(missing.code, 1);
    EXPECT_EQ(missing.err, "Copperwick couldn't read none.csv. There's no file by that name.\n");
}

}  // namespace
}  // namespace copperwick::cli
