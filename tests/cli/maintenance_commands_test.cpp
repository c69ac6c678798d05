#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "cli/command_line.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

class MaintenanceCommandsTest : public ::testing::Test {
  protected:
    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", folder.path().string()});
        return testing::runCommand(arguments);
    }
    Ledger ledger() { return LedgerRuntime(RuntimeOptions{.dataFolder = folder.path()}).ledger(); }

    testing::TempFolder folder;
};

TEST_F(MaintenanceCommandsTest, PeopleAndASharedCardWithItsCards) {
    ASSERT_EQ(run({"people", "add", "Dana", "--bank-name", "DANA SMITH"}).code, 0);
    ASSERT_EQ(run({"people", "add", "Sam"}).code, 0);
    auto result = run({"--json", "accounts", "add", "Joint card", "--type", "creditCard", "--user",
                       "Dana", "--user", "sam", "--card", "1234=Dana", "--last4", "9876"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(boost::json::parse(result.out).at("userIDs").as_array().size(), 2u);
    result = run({"accounts", "update", "Joint card", "--card", "5555", "--flip-signs", "maybe"});
    EXPECT_EQ(result.code, 1);

    result = run({"people", "delete", "Dana"});
    ASSERT_EQ(result.code, 0) << result.err;
    const Ledger after = ledger();
    ASSERT_EQ(after.people.size(), 1u);
    const Account& card = after.accounts[0];
    EXPECT_EQ(card.personID(), after.people[0].id) << "the one left is the card's person";
    EXPECT_TRUE(card.cardAssignments.empty());
    EXPECT_EQ(card.last4, "9876");

    result = run({"people", "rename", "Sam", "Samuel"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(ledger().people[0].name, "Samuel");
    EXPECT_EQ(run({"people", "delete", "Nobody"}).code, 1);
}

TEST_F(MaintenanceCommandsTest, AnAccountWithTransactionsIsArchivedNotRemoved) {
    ASSERT_EQ(run({"accounts", "add", "Checking"}).code, 0);
    ASSERT_EQ(run({"add", "--account", "Checking", "--date", "2026-03-02", "--amount", "-5",
                   "--description", "Parking", "--category", "Transportation"})
                  .code,
              0);
    ASSERT_EQ(run({"transaction", ledger().transactions.begin()->id.text(), "void"}).code, 0);
    auto result = run({"accounts", "delete", "Checking"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err,
              "This account has transactions. Undo its imports first, or archive it.\n");
    result = run({"accounts", "archive", "Checking"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_TRUE(ledger().accounts[0].isArchived);

    ASSERT_EQ(run({"accounts", "add", "Spare"}).code, 0);
    EXPECT_EQ(run({"accounts", "delete", "Spare"}).out, "Removed Spare.\n");
    EXPECT_EQ(ledger().accounts.size(), 1u);
}

TEST_F(MaintenanceCommandsTest, CategoriesMoveTheirLinesWhenRemoved) {
    ASSERT_EQ(run({"accounts", "add", "Checking"}).code, 0);
    ASSERT_EQ(run({"categories", "add", "Side gigs", "--group", "income"}).code, 0);
    ASSERT_EQ(run({"categories", "add", "Kids"}).code, 0);
    EXPECT_EQ(run({"categories", "add", "kids"}).code, 1) << "names are unique, ignoring case";
    ASSERT_EQ(run({"add", "--account", "Checking", "--date", "2026-03-02", "--amount", "-40",
                   "--description", "Lessons", "--category", "Kids"})
                  .code,
              0);
    auto result = run({"categories", "delete", "Kids", "--replace-with", "Side gigs"});
    ASSERT_EQ(result.code, 0) << result.err;
    const Ledger after = ledger();
    const auto& line = *after.transactions.begin();
    EXPECT_EQ(line.kind, TransactionKind::income);
    EXPECT_EQ(after.category(line.categoryID)->name, "Side gigs");
    EXPECT_FALSE(after.categoryNamed("Kids"));
}

TEST_F(MaintenanceCommandsTest, SettingsAreCheckedThenSaved) {
    auto result = run({"--json", "settings", "monthlySavingsGoal", "500"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(boost::json::parse(result.out).at("monthlySavingsGoal").as_int64(), 50000);
    EXPECT_EQ(run({"settings", "paymentServices", "venmo,zelle"}).code, 0);
    EXPECT_EQ(ledger().settings->paymentServices,
              (std::vector<PaymentService>{PaymentService::zelle, PaymentService::venmo}))
        << "kept in the services' own order";
    EXPECT_EQ(run({"settings", "paymentServices", "carrier pigeon"}).code, 1);
    EXPECT_EQ(run({"settings", "timeZoneID", "Mars/Base"}).code, 1);
    EXPECT_EQ(run({"settings", "timeZoneID", "Europe/Dublin"}).code, 0);
    EXPECT_EQ(run({"settings", "reportCurrency", "eur"}).code, 0);
    EXPECT_EQ(run({"settings", "keepSourceText", "off"}).code, 0);
    const Ledger after = ledger();
    EXPECT_EQ(after.settings->timeZoneID, "Europe/Dublin");
    EXPECT_EQ(after.settings->reportCurrency, "EUR");
    EXPECT_FALSE(after.settings->keepSourceText);
    EXPECT_EQ(run({"settings", "colour", "blue"}).code, 1);
}

// `settings monthlySavingsGoal` took any amount as a goal, past its limit and
// without its words, and clearing the goal dropped the currency it was set in.
TEST_F(MaintenanceCommandsTest, SettingsGoalKeepsItsLimitWordsAndCurrency) {
    ASSERT_EQ(run({"settings", "reportCurrency", "EUR"}).code, 0);
    auto result = run({"settings", "monthlySavingsGoal", "900000000.01"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "Enter a positive monthly goal, or leave it empty.\n");
    EXPECT_EQ(run({"settings", "monthlySavingsGoal", "0.00"}).code, 1);
    ASSERT_EQ(run({"settings", "monthlySavingsGoal", "900,000,000.00"}).code, 0);
    EXPECT_EQ(ledger().settings->monthlySavingsGoal, 90'000'000'000);

    for (const std::string cleared : {"", "0"}) {
        ASSERT_EQ(run({"settings", "monthlySavingsGoal", "500"}).code, 0);
        result = run({"--json", "settings", "monthlySavingsGoal", cleared});
        ASSERT_EQ(result.code, 0) << result.err;
        const auto settings = boost::json::parse(result.out).as_object();
        EXPECT_FALSE(settings.contains("monthlySavingsGoal"));
        EXPECT_EQ(settings.at("monthlySavingsGoalCurrency").as_string(), "EUR");
    }

    result = run({"people", "add", "Dana", "--allowance", "-5"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "Enter a positive monthly allowance, or leave it empty.\n");
    ASSERT_EQ(run({"people", "add", "Sam", "--allowance", "0"}).code, 0);
    EXPECT_EQ(ledger().people[0].monthlyAllowance, 0);
}

}  // namespace
}  // namespace copperwick::cli
