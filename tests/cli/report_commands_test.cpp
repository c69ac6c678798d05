#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "cli/command_line.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::day;

bool contains(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

class ReportCommandsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
        runtime.apply([&](Ledger& ledger) {
            LedgerDelta delta;
            const Account checking(checkingID, "Joint Checking", AccountType::checking);
            ledger.accounts.push_back(checking);
            delta.change(RecordKind::account, checking.id);
            const auto add = [&](LocalDate date, int64_t amount, std::string description,
                                 TransactionKind kind, std::string_view category) {
                const Uuid id = Uuid::random();
                ledger.transactions.set(
                    id, LedgerTransaction{.id = id,
                                          .accountID = checking.id,
                                          .date = date,
                                          .amount = amount,
                                          .rawDescription = description,
                                          .kind = kind,
                                          .categoryID = ledger.categoryNamed(category)->id});
                delta.change(RecordKind::transaction, id);
            };
            add(day(2026, 3, 1), 250000, "ACME PAYROLL", TransactionKind::income, "Salary");
            add(day(2026, 3, 2), -4550, "BLUE BOTTLE COFFEE", TransactionKind::expense, "Dining");
            add(day(2026, 3, 20), -120000, "RENT MARCH", TransactionKind::expense, "Housing");
            add(day(2026, 3, 29), 1000, "BLUE BOTTLE COFFEE", TransactionKind::expense, "Dining");
            add(day(2026, 2, 10), -2000, "BLUE BOTTLE COFFEE", TransactionKind::expense, "Dining");
            return delta;
        });
    }

    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", folder.path().string()});
        return testing::runCommand(arguments);
    }

    testing::TempFolder folder;
    Uuid checkingID = Uuid::random();
};

TEST_F(ReportCommandsTest, TextAndJSONTellTheSameFigures) {
    auto result = run({"report", "--from", "2026-03-01", "--to", "2026-03-31"});
    ASSERT_EQ(result.code, 0) << result.err;
    const std::string& text = result.out;
    EXPECT_TRUE(contains(text, "March 2026 \u00B7 Whole household \u00B7 USD")) << text;
    // Spending 45.50 + 1200.00 - 10.00 refund; February spent 20.00.
    EXPECT_TRUE(contains(text, "$1,235.50  +6077.5% vs previous period")) << text;
    EXPECT_TRUE(contains(text, "$1,264.50  50.6% of income")) << text;
    EXPECT_TRUE(contains(text, "Compared with February 2026")) << text;
    EXPECT_TRUE(contains(text, "Twelve months to Mar 2026")) << text;
    EXPECT_TRUE(contains(text, "About these numbers")) << text;

    result = run({"--json", "report", "--from", "2026-03-01", "--to", "2026-03-31"});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto bundle = boost::json::parse(result.out).as_object();
    const auto& report = bundle.at("report").as_object();
    EXPECT_EQ(report.at("spending").as_int64(), 123550);
    EXPECT_EQ(report.at("refunds").as_int64(), 1000);
    EXPECT_EQ(report.at("income").as_int64(), 250000);
    EXPECT_EQ(report.at("savingsRateTenths").as_int64(), 506);
    EXPECT_EQ(report.at("categories").as_array()[0].at("name").as_string(), "Housing");
    EXPECT_EQ(bundle.at("comparison").at("previous").at("spending").as_int64(), 2000);
    EXPECT_EQ(bundle.at("zelle").at("lines").as_array().size(), 0u);
    EXPECT_EQ(bundle.at("payments").at("sent").as_int64(), 0);
    EXPECT_FALSE(bundle.contains("savingsGoal"));

    result = run({"report", "--period", "lastMonth", "--tab", "income"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_TRUE(contains(result.out, "Income sources")) << result.out;
    EXPECT_FALSE(contains(result.out, "Overview")) << result.out;
}

TEST_F(ReportCommandsTest, APersonsReportStandsInTheHouseholdsContext) {
    {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
        runtime.apply([](Ledger& ledger) {
            LedgerDelta delta;
            const Person dana{Uuid::random(), "Dana", {}, std::nullopt};
            ledger.people.push_back(dana);
            delta.change(RecordKind::person, dana.id);
            return delta;
        });
    }
    const auto result = run({"report", "--from", "2026-03-01", "--to", "2026-03-31", "--people",
                             "dana", "--include-shared", "--tab", "overview"});
    ASSERT_EQ(result.code, 0) << result.err;
    // The joint account has no users, so all of it is the household's shared spending.
    EXPECT_TRUE(contains(result.out, "100.0% of household spending")) << result.out;
    EXPECT_TRUE(contains(result.out,
                         "Dana + Shared household: $1,235.50 \u00B7 Whole household: "
                         "$1,235.50"))
        << result.out;
    EXPECT_TRUE(contains(result.out, "Shared household spending is included in this selection."))
        << result.out;
}

TEST_F(ReportCommandsTest, BadReportOptionsAreUsageErrors) {
    EXPECT_EQ(run({"report", "--period", "fortnight"}).code, 2);
    EXPECT_EQ(run({"report", "--tab", "pie"}).code, 2);
    EXPECT_EQ(run({"report", "--from", "2026-03-01"}).code, 2);
    EXPECT_EQ(
        run({"report", "--period", "lastMonth", "--from", "2026-03-01", "--to", "2026-03-02"}).code,
        2);
    EXPECT_EQ(run({"report", "--people", "Nobody"}).code, 1);
    // A currency that isn't one would head every figure with it.
    const auto dollars = run({"report", "--currency", "dollars"});
    EXPECT_EQ(dollars.code, 2);
    EXPECT_TRUE(dollars.out.empty());
    EXPECT_EQ(run({"report", "--currency", " usd "}).code, 0);
}

TEST_F(ReportCommandsTest, BudgetsAndTheSavingsGoal) {
    auto result = run({"budgets"});
    EXPECT_TRUE(contains(result.out, "No budgets yet.")) << result.out;
    ASSERT_EQ(run({"budgets", "set", "dining", "50"}).code, 0);
    result = run({"budgets", "set", "Housing", "1,500.00"});
    EXPECT_EQ(result.out, "Housing: $1,500.00 a month.\n");
    result = run({"budgets", "set", "Dining", "-5"});
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.err, "\u201C-5\u201D isn't an amount. Use a number like 250 or 250.00.\n");
    EXPECT_EQ(run({"budgets", "set", "Nonsense", "5"}).code, 1);

    result = run({"report", "--from", "2026-03-01", "--to", "2026-03-31", "--tab", "budgets"});
    EXPECT_TRUE(contains(result.out, "$35.50 of $50.00 \u00B7 $14.50 left")) << result.out;
    EXPECT_TRUE(contains(result.out, "$1,200.00 of $1,500.00 \u00B7 $300.00 left")) << result.out;

    EXPECT_EQ(run({"budgets", "goal", "abc"}).err,
              "Enter a positive monthly goal, or leave it empty.\n");
    EXPECT_EQ(run({"budgets", "goal", "900000000.01"}).code, 2);
    ASSERT_EQ(run({"budgets", "goal", "500"}).code, 0);
    result = run({"--json", "report", "--from", "2026-03-01", "--to", "2026-03-31"});
    const auto bundle = boost::json::parse(result.out).as_object();
    EXPECT_EQ(bundle.at("savingsGoal").at("target").as_int64(), 50000);
    EXPECT_EQ(bundle.at("savingsGoal").at("title").as_string(), "Savings goal reached");
    EXPECT_EQ(bundle.at("budgets").as_array().size(), 2u);

    ASSERT_EQ(run({"budgets", "set", "Dining", "0"}).code, 0);
    result = run({"--json", "budgets"});
    const auto list = boost::json::parse(result.out).as_object();
    ASSERT_EQ(list.at("budgets").as_array().size(), 1u);
    EXPECT_EQ(list.at("budgets").as_array()[0].at("categoryName").as_string(), "Housing");
    EXPECT_EQ(list.at("monthlySavingsGoal").as_int64(), 50000);
}

TEST_F(ReportCommandsTest, NotesAreAnsweredAndFreshnessFollows) {
    // A period far ahead is not over yet.
    const std::vector<std::string> future = {"--from", "2099-01-01", "--to", "2099-01-31"};
    auto arguments = std::vector<std::string>{"notes"};
    arguments.insert(arguments.end(), future.begin(), future.end());
    auto result = run(arguments);
    EXPECT_TRUE(contains(result.out,
                         "partial  info  This period isn't over yet (it runs to Jan "
                         "31, 2099)."))
        << result.out;
    arguments = {"notes", "dismiss", "partial"};
    arguments.insert(arguments.end(), future.begin(), future.end());
    result = run(arguments);
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_FALSE(contains(result.out, "partial")) << result.out;
    EXPECT_EQ(run({"notes", "dismiss", "nothing-like-it"}).code, 1);
    EXPECT_EQ(run({"notes", "dismiss"}).code, 2);

    result = run({"freshness"});
    EXPECT_TRUE(contains(result.out, "Joint Checking  May need an import  Last import: Never"))
        << result.out;
    ASSERT_EQ(run({"accounts", "mark-current", "joint checking"}).code, 0);
    result = run({"freshness"});
    EXPECT_TRUE(contains(result.out, "Joint Checking  Recent activity")) << result.out;
    EXPECT_TRUE(contains(result.out, "You confirmed complete through")) << result.out;
    ASSERT_EQ(run({"accounts", "mark-occasional", checkingID.text()}).code, 0);
    result = run({"--json", "freshness"});
    EXPECT_EQ(boost::json::parse(result.out).as_array()[0].at("state").as_string(), "rarelyUsed");
    EXPECT_EQ(run({"accounts", "mark-current", "Nope"}).code, 1);

    result = run({"notes", "show-all"});
    EXPECT_EQ(result.out, "Cleared 2 answers to report notes.\n");
    EXPECT_TRUE(contains(run({"accounts"}).out, "Joint Checking")) << "the list still works";
}

}  // namespace
}  // namespace copperwick::cli
