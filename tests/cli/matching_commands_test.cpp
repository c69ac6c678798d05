#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "cli/command_line.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::TempFolder;
constexpr auto runWith = testing::runCommand;

class MatchingCommandsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
        runtime.apply([&](Ledger& ledger) {
            LedgerDelta delta;
            const Account account(Uuid::random(), "Checking", AccountType::checking);
            ledger.accounts.push_back(account);
            delta.change(RecordKind::account, account.id);
            const LedgerTransaction transaction{.id = id,
                                                .accountID = account.id,
                                                .date = testing::day(2026, 3, 2),
                                                .amount = -1250,
                                                .rawDescription = "CORNER SHOP 42"};
            ledger.transactions.set(id, transaction);
            delta.change(RecordKind::transaction, id);
            return delta;
        });
        ASSERT_EQ(runtime.revision(), 2);
    }

    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", folder.path().string()});
        return runWith(arguments);
    }
    LedgerTransaction stored() {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
        return *runtime.ledger().transaction(id);
    }

    TempFolder folder;
    Uuid id = Uuid::random();
};

TEST_F(MatchingCommandsTest, NoteThenUndo) {
    auto result = run({"transaction", id.text(), "note", "split", "with", "Sam"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("Note: split with Sam"), std::string::npos) << result.out;
    EXPECT_EQ(stored().note, "split with Sam");

    result = run({"undo"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "Undone.\nEdit transaction note\n");
    EXPECT_EQ(stored().note, "");

    result = run({"undo"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "There's nothing to undo.\n");
}

TEST_F(MatchingCommandsTest, VoidRestoreAndReset) {
    auto result = run({"--json", "transaction", id.text(), "void"});
    ASSERT_EQ(result.code, 0) << result.err;
    auto answer = boost::json::parse(result.out).as_object();
    EXPECT_TRUE(answer.at("changed").as_bool());
    EXPECT_TRUE(stored().voided);

    // Already removed: nothing changes and no undo step is recorded.
    result = run({"--json", "transaction", id.text(), "void"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_FALSE(boost::json::parse(result.out).at("changed").as_bool());

    result = run({"--json", "undo"});
    ASSERT_EQ(result.code, 0) << result.err;
    answer = boost::json::parse(result.out).as_object();
    EXPECT_EQ(answer.at("statusMessage").as_string(), "Undone.");
    EXPECT_EQ(answer.at("label").as_string(), "Remove");
    EXPECT_FALSE(stored().voided);

    result = run({"transaction", id.text(), "reset"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(stored().evidence, "No rule or known merchant matched.");
    EXPECT_EQ(run({"undo"}).out, "Undone.\nReset to automatic\n");
}

TEST_F(MatchingCommandsTest, RefusesWhatItCantDo) {
    auto result = run({"transaction", Uuid::random().text(), "void"});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("There's no transaction with the id"), std::string::npos);
    EXPECT_EQ(run({"transaction", id.text(), "explode"}).code, 2);
    EXPECT_EQ(run({"transaction", id.text(), "note"}).code, 2);
    EXPECT_EQ(run({"transaction", id.text(), "void", "now"}).code, 2);
}

TEST_F(MatchingCommandsTest, TextMatchesAgainstTheLedger) {
    auto result = run({"--json", "text", "STARBUCKZ"});
    const auto suggestion = boost::json::parse(result.out).at(0).at("match").at("suggestion");
    EXPECT_EQ(suggestion.at("merchantName").as_string(), "Starbucks");
    EXPECT_EQ(suggestion.at("categoryName").as_string(), "Dining");
    EXPECT_EQ(suggestion.at("kind").as_string(), "expense");
    EXPECT_EQ(suggestion.at("source").as_string(), "similar");
    EXPECT_EQ(suggestion.at("reason").as_string(), "Looks like Starbucks (89% similar).");

    // A learned merchant in the data folder wins over the built-in list.
    LedgerRuntime(RuntimeOptions{.dataFolder = folder.path()}).apply([](Ledger& ledger) {
        LedgerDelta delta;
        const Merchant merchant{.id = Uuid::random(),
                                .name = "Our Coffee",
                                .categoryID = ledger.categoryNamed("Groceries")->id,
                                .keys = {"STARBUCKS"}};
        ledger.merchants.set(merchant.id, merchant);
        delta.change(RecordKind::merchant, merchant.id);
        return delta;
    });
    result = run({"--json", "text", "STARBUCKS", "--amount", "3.25"});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto match = boost::json::parse(result.out).at(0).at("match").as_object();
    EXPECT_EQ(match.at("merchantName").as_string(), "Our Coffee");
    EXPECT_EQ(match.at("categoryName").as_string(), "Groceries");
    EXPECT_EQ(match.at("method").as_string(), "learned");
    EXPECT_EQ(match.at("evidence").as_string(),
              "Learned: you filed Our Coffee this way before. Money in, so it counts as a refund.");

    result = run({"text", "ACME PAYROLL", "--amount", "2,000.00", "--account-type", "creditCard"});
    EXPECT_NE(result.out.find("method: none"), std::string::npos) << result.out;
    EXPECT_EQ(run({"text", "X", "--amount", "ten"}).code, 2);
    EXPECT_EQ(run({"text", "X", "--account-type", "wallet"}).code, 2);
}

}  // namespace
}  // namespace copperwick::cli
