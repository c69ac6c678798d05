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

class LedgerCommandsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
        runtime.apply([&](Ledger& ledger) {
            LedgerDelta delta;
            const Person dana{Uuid::random(), "Dana", {"DANA SMITH"}};
            ledger.people.push_back(dana);
            delta.change(RecordKind::person, dana.id);
            const Account checking(Uuid::random(), "Joint Checking", AccountType::checking);
            ledger.accounts.push_back(checking);
            delta.change(RecordKind::account, checking.id);
            const auto add = [&](const Uuid& id, LocalDate date, int64_t amount,
                                 std::string description) {
                ledger.transactions.set(id, LedgerTransaction{.id = id,
                                                              .accountID = checking.id,
                                                              .date = date,
                                                              .amount = amount,
                                                              .rawDescription = description});
                delta.change(RecordKind::transaction, id);
            };
            add(coffee, day(2026, 3, 2), -450, "BLUE BOTTLE COFFEE");
            add(rent, day(2026, 3, 1), -200000, "RENT MARCH");
            return delta;
        });
    }

    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", folder.path().string()});
        return testing::runCommand(arguments);
    }

    testing::TempFolder folder;
    Uuid coffee = Uuid::random();
    Uuid rent = Uuid::random();
};

TEST_F(LedgerCommandsTest, TransactionsFilterAndCarryNames) {
    auto result = run({"--json", "transactions"});
    ASSERT_EQ(result.code, 0) << result.err;
    auto lines = boost::json::parse(result.out).as_array();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].at("id").as_string(), coffee.text()) << "newest first";
    EXPECT_EQ(lines[0].at("accountName").as_string(), "Joint Checking");

    result = run({"--json", "transactions", "--search", "coffee", "--account", "joint checking"});
    ASSERT_EQ(boost::json::parse(result.out).as_array().size(), 1u);
    result = run({"--json", "transactions", "--to", "2026-03-01", "--limit", "5"});
    lines = boost::json::parse(result.out).as_array();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].at("id").as_string(), rent.text());

    EXPECT_EQ(run({"transactions", "--from", "March 1"}).code, 2);
    EXPECT_EQ(run({"transactions", "--account", "Nope"}).code, 1);
}

TEST_F(LedgerCommandsTest, AssignIsOneUndoableStep) {
    auto result = run({"assign", "--ids", coffee.text() + "," + rent.text(), "dana"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("RENT MARCH  Dana"), std::string::npos) << result.out;

    result = run({"--json", "assign", "--ids", coffee.text(), "Dana"});
    EXPECT_FALSE(boost::json::parse(result.out).at("changed").as_bool());

    EXPECT_EQ(run({"undo"}).out, "Undone.\nAssign household spending\n");
    result = run({"--json", "assign", "--ids", rent.text(), "clear"});
    EXPECT_EQ(
        boost::json::parse(result.out).at("transactions").at(0).at("assignmentName").as_string(),
        "Shared household")
        << "cleared, the line follows its account, which has no single user";

    EXPECT_EQ(run({"assign", "--ids", rent.text(), "Riley"}).code, 1);
    EXPECT_EQ(run({"assign", "--ids", "not-an-id", "shared"}).code, 2);
}

TEST_F(LedgerCommandsTest, AccountsAndPeople) {
    auto result = run({"--json", "accounts"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(boost::json::parse(result.out).at(0).at("name").as_string(), "Joint Checking");
    result = run({"people"});
    EXPECT_NE(result.out.find("Dana  DANA SMITH"), std::string::npos) << result.out;
}

}  // namespace
}  // namespace copperwick::cli
