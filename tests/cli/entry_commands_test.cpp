#include <filesystem>

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

// Entries typed by hand through the command line, on a checking account with
// one imported ATM line.
class EntryCommandsTest : public ::testing::Test {
  protected:
    void SetUp() override {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
        runtime.apply([&](Ledger& ledger) {
            LedgerDelta delta;
            const Account checking(Uuid::random(), "Checking", AccountType::checking);
            ledger.accounts.push_back(checking);
            delta.change(RecordKind::account, checking.id);
            ledger.transactions.set(atm, LedgerTransaction{.id = atm,
                                                           .accountID = checking.id,
                                                           .date = day(2026, 3, 2),
                                                           .amount = -6000,
                                                           .rawDescription = "ATM WITHDRAWAL 0045",
                                                           .fingerprint = "atm"});
            delta.change(RecordKind::transaction, atm);
            return delta;
        });
    }

    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", folder.path().string()});
        return testing::runCommand(arguments);
    }

    std::size_t backups() {
        std::size_t count = 0;
        if (std::filesystem::exists(folder.path() / "Backups")) {
            for ([[maybe_unused]] const auto& entry :
                 std::filesystem::directory_iterator(folder.path() / "Backups"))
                ++count;
        }
        return count;
    }

    testing::TempFolder folder;
    Uuid atm = Uuid::random();
};

TEST_F(EntryCommandsTest, WalletOpeningCashAndAMoveFromTheImportedATMLine) {
    auto result =
        run({"cash", "add-wallet", "Pocket", "--opening-cash", "40", "--date", "2026-03-01"});
    ASSERT_EQ(result.code, 0) << result.err;
    result = run({"cash", "withdrawal", "--wallet", "pocket", "--amount", "60", "--date",
                  "2026-03-02", "--bank-account", "Checking", "--bank-transaction", atm.text()});
    ASSERT_EQ(result.code, 0) << result.err;
    result = run({"cash", "spending", "--wallet", "Pocket", "--amount", "12.50", "--date",
                  "2026-03-03", "--description", "Tacos", "--category", "Dining"});
    ASSERT_EQ(result.code, 0) << result.err;

    result = run({"--json", "cash", "balance", "Pocket"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(boost::json::parse(result.out).at("balance").as_int64(), 4000 + 6000 - 1250);
    result = run({"cash", "balance", "Pocket", "--through", "2026-03-01"});
    EXPECT_EQ(result.out, "Pocket: $40.00 through 2026-03-01\n");

    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
    const LedgerTransaction& bankLeg = *runtime.ledger().transaction(atm);
    EXPECT_EQ(bankLeg.kind, TransactionKind::transfer);
    ASSERT_TRUE(bankLeg.transferPairID);
    EXPECT_EQ(runtime.ledger().transactions.size(), 4u) << "the ATM line is the bank's leg";
    EXPECT_GE(backups(), 1u) << "every entry is saved after a safety backup";
}

TEST_F(EntryCommandsTest, RefusedEntriesSayWhyAndSaveNothing) {
    auto result = run({"add", "--account", "Checking", "--date", "2026-03-05", "--amount", "-5",
                       "--description", "Parking"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "Choose a category that matches spending or income.\n");
    result = run({"cash", "gift", "--wallet", "Pocket", "--amount", "0", "--date", "2026-03-05"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "Choose an account and enter a valid date and positive amount.\n");
    result = run({"cash", "add-wallet", " ", "--opening-cash", "-1"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "Enter a wallet name, valid date, and nonnegative opening cash.\n");

    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
    EXPECT_EQ(runtime.ledger().transactions.size(), 1u);
    EXPECT_TRUE(runtime.ledger().changes.empty());
}

TEST_F(EntryCommandsTest, AddCorrectSplitShowAndUndo) {
    auto result = run({"--json", "add", "--account", "Checking", "--date", "2026-03-05", "--amount",
                       "-50", "--description", "Market", "--category", "Groceries"});
    ASSERT_EQ(result.code, 0) << result.err;
    const std::string id(
        boost::json::parse(result.out).at("transactions").at(0).at("id").as_string());

    result =
        run({"transaction", atm.text(), "correct", "--amount", "-55", "--reason", "Fee left out"});
    ASSERT_EQ(result.code, 0) << result.err;
    result = run({"transaction", atm.text(), "correct", "--amount", "-55"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err, "Add a brief reason for this correction.\n");

    result = run({"transaction", id, "split", "Groceries=30", "Shopping=-20.00"});
    ASSERT_EQ(result.code, 0) << result.err;
    result = run({"transaction", id, "split", "Groceries=30", "Shopping=20.01"});
    EXPECT_EQ(result.code, 1);
    EXPECT_EQ(result.err,
              "Use at least two spending parts, with the same direction, that add up "
              "exactly to the transaction.\n");

    result = run({"transaction", atm.text(), "show"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("The bank's version: 2026-03-02  ATM WITHDRAWAL 0045  \u2212$60.00"),
              std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("(Fee left out)"), std::string::npos) << result.out;
    result = run({"transaction", id, "show"});
    EXPECT_NE(result.out.find("Split:\n  Groceries  \u2212$30.00\n  Shopping  \u2212$20.00\n"),
              std::string::npos)
        << result.out;

    result = run({"undo"});
    EXPECT_EQ(result.out, "Undone.\nSplit transaction\n");
    result = run({"undo"});
    EXPECT_EQ(result.out, "Undone.\nCorrect transaction\n");
    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
    EXPECT_EQ(runtime.ledger().transaction(atm)->amount, -6000);
    EXPECT_FALSE(runtime.ledger().transaction(atm)->originalDetails);
}

TEST_F(EntryCommandsTest, APartThatCantBeReadIsAUsageErrorAndSavesNothing) {
    const auto result = run({"transaction", atm.text(), "split", "Groceries=30", "Dining"});
    EXPECT_EQ(result.code, 2);
    EXPECT_EQ(result.err,
              "\u201CDining\u201D isn't a part: write CATEGORY=AMOUNT with a category of this "
              "ledger.\n");
    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
    EXPECT_FALSE(runtime.ledger().transaction(atm)->splits);
    EXPECT_TRUE(runtime.ledger().changes.empty());
}

// From a bank file to a wallet and back: the ATM line of the import feeds the
// wallet once, and every step comes undone in turn.
TEST(EntryCommandsScenario, WalletFedFromAnImportedATMLineThenUndoneStepByStep) {
    testing::TempFolder folder;
    const auto run = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", folder.path().string()});
        return testing::runCommand(arguments);
    };
    const auto samples =
        std::filesystem::path(COPPERWICK_TEST_DATA).parent_path().parent_path() / "samples";
    ASSERT_EQ(run({"import", (samples / "chase-checking.csv").string()}).code, 0);
    auto result = run({"--json", "transactions", "--search", "ATM WITHDRAWAL", "--limit", "1"});
    ASSERT_EQ(result.code, 0) << result.err;
    const std::string atm(boost::json::parse(result.out).at(0).at("id").as_string());

    ASSERT_EQ(
        run({"cash", "add-wallet", "Pocket", "--opening-cash", "20", "--date", "2026-08-01"}).code,
        0);
    result =
        run({"cash", "withdrawal", "--wallet", "Pocket", "--amount", "60", "--date", "2026-10-12",
             "--bank-account", "Chase checking or savings", "--bank-transaction", atm});
    ASSERT_EQ(result.code, 0) << result.err;
    ASSERT_EQ(run({"cash", "spending", "--wallet", "Pocket", "--amount", "7.25", "--date",
                   "2026-10-13", "--description", "Farmers market", "--category", "Groceries"})
                  .code,
              0);
    EXPECT_EQ(run({"cash", "balance", "Pocket"}).out, "Pocket: $72.75\n");  // 20 + 60 - 7.25
    {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
        const LedgerTransaction& bankLeg = *runtime.ledger().transaction(Uuid::parse(atm));
        EXPECT_EQ(bankLeg.kind, TransactionKind::transfer) << "counted once, as a move";
    }

    for (const char* label : {"Add manual transaction", "Move cash", "Add opening cash"}) {
        result = run({"undo"});
        EXPECT_EQ(result.out, std::string("Undone.\n") + label + "\n");
    }
    EXPECT_EQ(run({"cash", "balance", "Pocket"}).out, "Pocket: $0.00\n");
    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder.path()});
    EXPECT_FALSE(runtime.ledger().transaction(Uuid::parse(atm))->transferPairID);
}

}  // namespace
}  // namespace copperwick::cli
