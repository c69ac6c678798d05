#include <fstream>
#include <sstream>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "cli/command_line.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::TempFolder;

std::string readFile(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

// Person-to-person payments on a checking account in Chase's layout, plus a
// bank text that tries to run a formula in a spreadsheet.
constexpr std::string_view kStatement =
    "Details,Posting Date,Description,Amount,Type,Balance,Check or Slip #\n"
    "DEBIT,03/04/2026,\"ZELLE TO JANE DOE\",-45.00,QUICKPAY_DEBIT,,\n"
    "CREDIT,03/09/2026,\"ZELLE FROM JANE DOE\",20.00,QUICKPAY_CREDIT,,\n"
    "DEBIT,03/12/2026,\"VENMO *MORGAN DEMO\",-12.00,ACH_DEBIT,,\n"
    "DEBIT,03/15/2026,=HYPERLINK(1),-3.00,DEBIT_CARD,,\n";

class PaymentsCommandsTest : public ::testing::Test {
  protected:
    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", (folder / "data").string()});
        return testing::runCommand(arguments);
    }
    boost::json::object json(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), "--json");
        const auto result = run(arguments);
        EXPECT_EQ(result.code, 0) << result.err;
        return boost::json::parse(result.out).as_object();
    }
    void SetUp() override {
        testing::writeFile(folder / "checking.csv", std::string(kStatement));
        const auto result = run({"import", (folder / "checking.csv").string(), "--new-account",
                                 "Checking", "--type", "checking"});
        ASSERT_EQ(result.code, 0) << result.err;
    }
    // The review group whose example holds `text`.
    std::string groupFor(std::string_view text) {
        const auto review = json({"review"});
        for (const auto& group : review.at("groups").as_array()) {
            if (std::string_view(group.at("example").as_string()).find(text) !=
                std::string_view::npos)
                return std::string(group.at("id").as_string());
        }
        ADD_FAILURE() << "no group for " << text;
        return {};
    }

    TempFolder folder;
    const std::vector<std::string> march = {"--from", "2026-03-01", "--to", "2026-03-31"};
};

TEST_F(PaymentsCommandsTest, PaymentsShowTrackedServicesAndZelleByPerson) {
    auto arguments = std::vector<std::string>{"payments"};
    arguments.insert(arguments.end(), march.begin(), march.end());
    const auto text = run(arguments);
    ASSERT_EQ(text.code, 0) << text.err;
    EXPECT_NE(text.out.find("Payment services"), std::string::npos) << text.out;
    EXPECT_NE(text.out.find("Net = received \u2212 sent."), std::string::npos);
    EXPECT_NE(text.out.find("Jane Doe"), std::string::npos) << text.out;

    const auto result = json(arguments);
    const auto& payments = result.at("payments").as_object();
    EXPECT_EQ(payments.at("lines").as_array().size(), 1u) << "only Zelle is tracked by default";
    EXPECT_EQ(payments.at("sent").as_int64(), 4500);
    EXPECT_EQ(payments.at("received").as_int64(), 2000);
    EXPECT_EQ(result.at("zelle").at("lines").as_array().size(), 1u);

    ASSERT_EQ(run({"settings", "paymentServices", "zelle,venmo"}).code, 0);
    EXPECT_EQ(json(arguments).at("payments").at("lines").as_array().size(), 2u);
}

TEST_F(PaymentsCommandsTest, ClassifyZelleFilesByChoiceAndRefusesOneNotOffered) {
    const auto group = groupFor("ZELLE FROM JANE DOE");
    const auto refused = run({"classify-zelle", group, "--choice", "giftSent"});
    EXPECT_EQ(refused.code, 2);
    EXPECT_NE(refused.err.find("isn't offered for money in"), std::string::npos) << refused.err;
    const auto noCategory = run({"classify-zelle", group, "--choice", "payingMeBack"});
    EXPECT_EQ(noCategory.code, 1);

    // Remembering would spread the choice to the payment to Jane as well.
    const auto filed = json({"classify-zelle", group, "--choice", "giftReceived", "--no-remember"});
    EXPECT_TRUE(filed.at("changed").as_bool());
    const auto& line = filed.at("transactions").at(0).as_object();
    EXPECT_EQ(line.at("kind").as_string(), "income");
    auto arguments = std::vector<std::string>{"report"};
    arguments.insert(arguments.end(), march.begin(), march.end());
    const auto report = json(arguments).at("report").as_object();
    EXPECT_EQ(report.at("giftsReceived").as_int64(), 2000) << "the made category counts as gifts";

    const auto undo = run({"undo"});
    EXPECT_EQ(undo.code, 0) << undo.err;
    EXPECT_NE(undo.out.find("Review "), std::string::npos) << undo.out;
}

TEST_F(PaymentsCommandsTest, ExportsAreSavedAndAFailureSaysWhy) {
    const auto csv = folder / "out transactions.csv";
    auto arguments = std::vector<std::string>{"export", "transactions", csv.string()};
    arguments.insert(arguments.end(), march.begin(), march.end());
    const auto saved = run(arguments);
    ASSERT_EQ(saved.code, 0) << saved.err;
    EXPECT_EQ(saved.out, "Saved out transactions.csv\n");
    const auto text = readFile(csv);
    EXPECT_TRUE(text.starts_with("Date,Posted,Account,Owner,Description,")) << text;
    EXPECT_NE(text.find(",\"'=HYPERLINK(1)\","), std::string::npos) << text;
    EXPECT_NE(text.find(",-45.00,USD,"), std::string::npos) << "amounts stay numbers";
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4) << "a header and four lines";

    const auto summary = folder / "summary.csv";
    arguments = {"export", "summary", summary.string()};
    arguments.insert(arguments.end(), march.begin(), march.end());
    ASSERT_EQ(run(arguments).code, 0);
    EXPECT_TRUE(readFile(summary).starts_with("Copperwick report,March 2026\n"));

    const auto failed = run({"export", "transactions", (folder / "missing" / "x.csv").string()});
    EXPECT_EQ(failed.code, 1);
    EXPECT_TRUE(failed.err.starts_with("Couldn't save the file: ")) << failed.err;
    EXPECT_FALSE(std::filesystem::exists(folder / "missing"));
}

}  // namespace
}  // namespace copperwick::cli
