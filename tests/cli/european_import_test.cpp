#include <filesystem>
#include <string>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "runtime/ledger_runtime.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::TempFolder;

const std::filesystem::path kData = COPPERWICK_TEST_DATA;

class EuropeanImportTest : public ::testing::Test {
  protected:
    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", (folder / "data").string()});
        return testing::runCommand(arguments);
    }
    std::string sample(const std::string& name) { return (kData / "csv" / name).string(); }

    // Each row of a dry run as "date amount".
    std::vector<std::string> plannedRows(const std::string& file) {
        const auto result = run({"--json", "import", "--dry-run", file});
        EXPECT_EQ(result.code, 0) << result.err << result.out;
        std::vector<std::string> rows;
        if (result.code != 0)
            return rows;
        const auto answer = boost::json::parse(result.out);
        for (const auto& row : answer.at("files").at(0).at("plan").at("rows").as_array()) {
            rows.push_back(std::string(row.at("date").as_string()) + " " +
                           std::to_string(row.at("amount").as_int64()));
        }
        return rows;
    }

    TempFolder folder;
};

TEST_F(EuropeanImportTest, AnalyzeReadsDecimalCommasAndDayFirstDates) {
    const auto result = run({"--json", "analyze", sample("sparkasse-camt.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto files = boost::json::parse(result.out);
    const auto& file = files.as_array().at(0).as_object();
    EXPECT_EQ(file.at("delimiter").as_string(), ";");
    EXPECT_EQ(file.at("dateLayout").as_string(), "dayMonthYear");
    EXPECT_EQ(file.at("layoutWorkedOut").as_string(),
              "Layout worked out from the file: date in “Buchungstag”, description in "
              "“Beguenstigter/Zahlungspflichtiger”, amount in “Betrag”, amounts with decimal "
              "commas.");
    EXPECT_TRUE(file.at("issues").as_array().empty());
    const auto& rows = file.at("rows").as_array();
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[1].at("date").as_string(), "2020-11-05");
    EXPECT_EQ(rows[1].at("amount").as_int64(), 234567);
    EXPECT_EQ(rows[2].at("amount").as_int64(), -105800);
    EXPECT_EQ(rows[2].at("description").as_string(), "Stadtwerke Beispiel");
}

TEST_F(EuropeanImportTest, EachBanksFileImportsWithItsSignsAndDates) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases{
        {"ing-nl.csv", {"2020-11-04 -2345", "2020-11-05 215000", "2020-11-10 -410"}},
        {"banque-fr.csv", {"2020-11-04 -2340", "2020-11-05 215000", "2020-11-17 -6500"}},
        {"volksbank-sh.csv", {"2020-11-02 -2345", "2020-11-05 215000", "2020-11-18 -85000"}},
        {"month-names.csv", {"2020-11-04 -1250", "2020-11-04 150000", "2020-11-09 -4000"}},
        {"late-day-first.csv",
         {"2020-11-02 -350", "2020-11-05 -4510", "2020-11-09 -75000", "2020-11-11 210000",
          "2020-11-24 -1295"}},
    };
    for (const auto& [name, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_EQ(plannedRows(sample(name)), expected);
        const auto imported = run({"import", sample(name)});
        ASSERT_EQ(imported.code, 0) << imported.err << imported.out;
        EXPECT_EQ(imported.out,
                  "Imported " + std::to_string(expected.size()) + " transactions from 1 file.\n");
        const auto again = run({"--json", "import", "--dry-run", sample(name)});
        ASSERT_EQ(again.code, 0) << again.err;
        EXPECT_EQ(boost::json::parse(again.out).at("totalToImport").as_int64(), 0);
    }
}

// The bank's next statement is read by the layout taught from the first, with
// its decimal commas and its day-first dates, even when every day in it is
// under 13 and an amount such as "1.000" would mean one dollar elsewhere.
TEST_F(EuropeanImportTest, TheTaughtLayoutKeepsItsNumberStyleAndDateOrder) {
    auto result = run({"import", sample("dkb-giro.csv")});
    ASSERT_EQ(result.code, 0) << result.err << result.out;
    EXPECT_EQ(result.out, "Imported 3 transactions from 1 file.\n");

    const auto december = folder / "dkb-december.csv";
    testing::writeFile(
        december,
        "\"Kontonummer:\";\"DE00 1203 0000 0000 0000 00 / Girokonto\";\r\n\r\n"
        "\"Buchungstag\";\"Wertstellung\";\"Buchungstext\";\"Auftraggeber / "
        "Begünstigter\";\"Verwendungszweck\";\"Kontonummer\";\"BLZ\";\"Betrag "
        "(EUR)\";\"Gläubiger-ID\";\"Mandatsreferenz\";\"Kundenreferenz\";\r\n"
        "\"01.12.2020\";\"01.12.2020\";\"Überweisung\";\"Vermieter\";\"Miete\";\"\";\"\";\"-1.000"
        "\";\"\";\"\";\"\";\r\n"
        "\"02.12.2020\";\"02.12.2020\";\"Gutschrift\";\"Arbeitgeber "
        "AG\";\"Gehalt\";\"\";\"\";\"1.234"
        ",56\";\"\";\"\";\"\";\r\n");
    result = run({"--json", "import", "--dry-run", december.string()});
    ASSERT_EQ(result.code, 0) << result.err << result.out;
    const auto answer = boost::json::parse(result.out);
    const auto& file = answer.at("files").at(0);
    EXPECT_TRUE(file.at("layoutWorkedOut").is_null());
    EXPECT_EQ(answer.at("totalToImport").as_int64(), 2);
    EXPECT_EQ(plannedRows(december.string()),
              (std::vector<std::string>{"2020-12-01 -100000", "2020-12-02 123456"}));

    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
    ASSERT_EQ(runtime.ledger().profiles.size(), 1u);
    const auto& taught = runtime.ledger().profiles[0];
    EXPECT_EQ(file.at("profile").as_string(), taught.id);
    EXPECT_EQ(taught.numberStyle, NumberStyle::decimalComma);
    EXPECT_EQ(taught.dateLayout, DateLayout::dayMonthYear);

    result = run({"--json", "layouts", "list"});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto layouts = boost::json::parse(result.out).as_array();
    EXPECT_EQ(layouts.at(0).at("numberStyle").as_string(), "decimalComma");
    EXPECT_EQ(layouts.at(1).at("numberStyle").as_string(), "decimalPoint");
}

}  // namespace
}  // namespace copperwick::cli
