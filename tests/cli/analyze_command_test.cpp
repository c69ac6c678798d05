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

// A file of several statements was told as one refused file, so a person
// couldn't see what each statement held.
TEST(AnalyzeCommand, TellsEachStatementOfAFileOnItsOwn) {
    TempFolder temp;
    const std::filesystem::path data = std::filesystem::path(COPPERWICK_TEST_DATA) / "statements";
    auto result = testing::runCommand({"--data-dir", temp.path().string(), "--json", "analyze",
                                       (data / "two_cards_and_checking.ofx").string(),
                                       (data / "checking.qif").string()});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto files = boost::json::parse(result.out).as_array();
    ASSERT_EQ(files.size(), 4u);
    EXPECT_EQ(files[0].at("fileName").as_string(),
              "two_cards_and_checking.ofx \xC2\xB7 card ending 1234, statement 1 of 3");
    EXPECT_EQ(files[2].at("fileName").as_string(),
              "two_cards_and_checking.ofx \xC2\xB7 account ending 5678");
    EXPECT_EQ(files[2].at("typeHint").as_string(), "checking");
    EXPECT_NE(files[0].at("fileHash").as_string(), files[1].at("fileHash").as_string());
    EXPECT_EQ(files[3].at("profile").at("id").as_string(), "qif-bank");
    EXPECT_EQ(files[3].at("rows").as_array().at(0).at("bankCategory").as_string(), "Housing:Rent");

    result = testing::runCommand({"--data-dir", temp.path().string(), "analyze",
                                  (data / "camt053_v02_two_statements.xml").string()});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("camt053_v02_two_statements.xml \xC2\xB7 account ending 3000\n"
                              "  Layout: CAMT.053 checking (camt053)\n"),
              std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("25.00  KARTENZAHLUNG REWE SAGT DANKE  (pending)"), std::string::npos)
        << result.out;
}

}  // namespace
}  // namespace copperwick::cli
