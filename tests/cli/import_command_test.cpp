#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "cli/command_line.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/process.h"
#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::TempFolder;
constexpr auto runWith = testing::runCommand;

const std::filesystem::path kData = COPPERWICK_TEST_DATA;

class ImportCommandTest : public ::testing::Test {
  protected:
    testing::CommandResult run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--data-dir", (folder / "data").string()});
        return runWith(arguments);
    }
    std::string sample(const std::string& name) { return (kData / "csv" / name).string(); }

    TempFolder folder;
};

TEST_F(ImportCommandTest, DryRunChangesNothingAndShowsThePlan) {
    auto result = run({"import", "--dry-run", sample("chase-checking.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("Rows in file: 2"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("2 transactions ready from 1 file\n"), std::string::npos)
        << result.out;

    result = run({"--json", "import", "--dry-run", sample("chase-checking.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto answer = boost::json::parse(result.out).as_object();
    EXPECT_EQ(answer.at("totalToImport").as_int64(), 2);
    const auto& plan = answer.at("files").as_array().at(0).at("plan").as_object();
    EXPECT_EQ(plan.at("rows").as_array().at(0).at("disposition").as_string(), "new");
    EXPECT_EQ(plan.at("rows").as_array().at(0).at("amount").as_int64(), -4512);
    EXPECT_EQ(plan.at("firstDate").as_string(), "2026-03-09");
    // Every key is there; what is absent is null.
    EXPECT_TRUE(plan.at("previousImport").is_null());
    EXPECT_TRUE(plan.at("rows").as_array().at(0).at("matchID").is_null());
    EXPECT_TRUE(answer.at("files").as_array().at(0).at("blocker").is_null());

    result = run({"--json", "imports"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_TRUE(boost::json::parse(result.out).as_array().empty());
}

TEST_F(ImportCommandTest, ImportReimportListAndUndo) {
    auto result = run({"import", sample("chase-checking.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "Imported 2 transactions from 1 file.\n");

    result = run({"import", "--dry-run", sample("chase-checking.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("You imported this exact file on "), std::string::npos) << result.out;
    EXPECT_NE(result.out.find(". Rows already saved are skipped.\n"), std::string::npos);
    EXPECT_NE(result.out.find("Already saved: 2\n"), std::string::npos);
    result = run({"--json", "import", "--dry-run", sample("chase-checking.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(boost::json::parse(result.out)
                  .at("files")
                  .at(0)
                  .at("plan")
                  .at("previousImport")
                  .at("fileName")
                  .as_string(),
              "chase-checking.csv");

    result = run({"--json", "import", sample("chase-checking.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    auto answer = boost::json::parse(result.out).as_object();
    EXPECT_EQ(answer.at("result").as_string(),
              "Nothing to import: every transaction in chase-checking.csv is already saved.");
    EXPECT_TRUE(answer.at("batches").as_array().empty());

    result = run({"--json", "imports"});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto batches = boost::json::parse(result.out).as_array();
    ASSERT_EQ(batches.size(), 1u);
    const std::string first = std::string(batches.at(0).at("id").as_string());

    result = run({"imports"});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find(first), std::string::npos) << result.out;

    result = run({"undo-import", first});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "Removed the import of chase-checking.csv.\n");
    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
    EXPECT_TRUE(runtime.ledger().activeTransactions().empty());
    EXPECT_TRUE(runtime.ledger().batches.empty());

    result = run({"undo-import", first});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("There is no import with the id"), std::string::npos);
}

TEST_F(ImportCommandTest, NamedNewAccountAndAccountByName) {
    auto result = run({"import", "--new-account", "Joint card", "--type", "creditCard", "--last4",
                       "4242", "--shared", sample("chase-card.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
        ASSERT_EQ(runtime.ledger().accounts.size(), 1u);
        const auto& account = runtime.ledger().accounts[0];
        EXPECT_EQ(account.name, "Joint card");
        EXPECT_EQ(account.last4, "4242");
        EXPECT_EQ(account.type, AccountType::creditCard);
        EXPECT_FALSE(account.isUnassigned);
    }
    result = run({"import", "--account", "Joint card", "--dry-run", sample("chase-card.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("Account: Joint card"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("0 transactions ready"), std::string::npos) << result.out;

    result = run({"import", "--account", "Nobody's", sample("chase-card.csv")});
    EXPECT_EQ(result.code, 1);
}

// An import into a new card with --last4 "123" went through and made the
// account without any last four, while the accounts command refused it.
TEST_F(ImportCommandTest, NewAccountsLastFourAreRefusedAsTheAccountsCommandRefusesThem) {
    for (const char* typed : {"123", "12ab"}) {
        const auto result = run(
            {"import", "--new-account", "Joint card", "--last4", typed, sample("chase-card.csv")});
        EXPECT_EQ(result.code, 1) << typed;
        EXPECT_EQ(result.err, "The last four are four digits.\n") << typed;
        EXPECT_FALSE(std::filesystem::exists(folder / "data")) << "nothing was opened or saved";
    }
    const auto result = run(
        {"import", "--new-account", "Joint card", "--last4", " 4242 ", sample("chase-card.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
    ASSERT_EQ(runtime.ledger().accounts.size(), 1u);
    EXPECT_EQ(runtime.ledger().accounts[0].last4, "4242") << "trimmed, as the form keeps it";
}

TEST_F(ImportCommandTest, HeldLineIsShownWithItsMatchAndImportedWhenForced) {
    const std::string header =
        "Details,Posting Date,Description,Amount,Type,Balance,Check or Slip #\n";
    const auto first = folder / "first.csv";
    const auto second = folder / "second.csv";
    testing::writeFile(first,
                       header + "DEBIT,03/02/2026,\"CORNER SHOP 42\",-12.50,DEBIT_CARD,1.00,\n");
    // Same day and amount under other words: it may be the same purchase.
    testing::writeFile(second, header +
                                   "DEBIT,03/02/2026,\"CORNER STORE\",-12.50,DEBIT_CARD,1.00,\n"
                                   "DEBIT,03/03/2026,\"BAKERY\",-3.00,DEBIT_CARD,1.00,\n");
    auto result = run({"import", first.string()});
    ASSERT_EQ(result.code, 0) << result.err;

    result = run({"import", "--dry-run", second.string()});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("Held for you: 1"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("CORNER STORE  held for you, matches 2026-03-02"), std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("1 transactions ready from 1 file\n"), std::string::npos)
        << result.out;

    result = run({"--json", "import", "--dry-run", "--force", "2", second.string()});
    ASSERT_EQ(result.code, 0) << result.err;
    auto answer = boost::json::parse(result.out).as_object();
    EXPECT_EQ(answer.at("totalToImport").as_int64(), 2);
    const auto& row = answer.at("files").at(0).at("plan").at("rows").at(0).as_object();
    EXPECT_EQ(row.at("disposition").as_string(), "possibleDuplicate");
    EXPECT_TRUE(row.contains("matchID"));

    // "2x" was read as line 2 and imported the held line.
    for (const char* notALine : {"2x", "0", "-2", " "}) {
        result = run({"import", "--force", notALine, second.string()});
        EXPECT_EQ(result.code, 1) << notALine;
        EXPECT_EQ(result.err, "'" + std::string(notALine) + "' isn't a line number.\n");
    }

    result = run({"import", "--force", "2", second.string()});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "Imported 2 transactions from 1 file.\n");
}

TEST_F(ImportCommandTest, BlockedFileImportsNothing) {
    const auto file = folder / "notes.csv";
    testing::writeFile(file, "just,some\nwords,here\n");
    auto result = run({"import", "--dry-run", file.string(), sample("chase-card.csv")});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.out.find("Layout not recognized"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("1 file needs a decision first (see above), or turn it off.\n"),
              std::string::npos)
        << result.out;
    result = run({"import", file.string(), sample("chase-card.csv")});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("notes.csv: "), std::string::npos) << result.err;
    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
    EXPECT_TRUE(runtime.ledger().batches.empty());
}

TEST_F(ImportCommandTest, UnreadableRowsAreListedAndSkippedOnlyWhenAsked) {
    const auto file = folder / "damaged.csv";
    testing::writeFile(file,
                       "Details,Posting Date,Description,Amount,Type,Balance,Check or Slip #\n"
                       "DEBIT,03/02/2026,\"CORNER SHOP 42\",-12.50,DEBIT_CARD,1.00,\n"
                       "DEBIT,03/03/2026,\"BAKERY\",lots,DEBIT_CARD,1.00,\n");
    auto result = run({"import", "--dry-run", file.string()});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.out.find("Rows in file: 2\n"), std::string::npos) << result.out;
    EXPECT_NE(result.out.find("Couldn't read: 1\n"), std::string::npos);
    EXPECT_NE(result.out.find("Rows Copperwick couldn't read (1)\n    Line 3: "), std::string::npos)
        << result.out;
    EXPECT_NE(result.out.find("BAKERY"), std::string::npos);

    result = run({"import", "--skip-problem-rows", file.string()});
    ASSERT_EQ(result.code, 0) << result.err;
    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
    EXPECT_EQ(runtime.ledger().activeTransactions().size(), 1u);
}

// A file with no readable row, imported with --skip-problem-rows, made an
// empty account and an empty import record.
TEST_F(ImportCommandTest, AFileWithNothingToBringInChangesNothing) {
    const auto file = folder / "damaged.csv";
    testing::writeFile(file,
                       "Details,Posting Date,Description,Amount,Type,Balance,Check or Slip #\n"
                       "DEBIT,03/03/2026,\"BAKERY\",lots,DEBIT_CARD,1.00,\n");
    ASSERT_EQ(run({"info"}).code, 0);
    const auto result = run({"import", "--skip-problem-rows", file.string()});
    EXPECT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "Nothing to import: no row of damaged.csv could be read.\n");
    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
    EXPECT_TRUE(runtime.ledger().accounts.empty());
    EXPECT_TRUE(runtime.ledger().batches.empty());
    for (const auto& backup : runtime.backups().list())
        EXPECT_NE(backup.reason, "before-import") << backup.url;
}

// A pipe named as a bank file hung `analyze` and `import` for good, /dev/zero
// grew without end, and a folder answered "basic_filebuf::underflow".
TEST_F(ImportCommandTest, WhatIsntABankFileIsRefusedInWordsWithoutWaiting) {
    const auto pipe = folder / "pipe.csv";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::string data = (folder / "data").string();
    for (const auto& [path, words] : std::vector<std::pair<std::string, std::string>>{
             {pipe.string(), "pipe.csv. It isn't a regular file, so it can't be a bank export."},
             {"/dev/zero", "zero. It isn't a regular file, so it can't be a bank export."},
             {folder.path().string() + "/",
              folder.path().string() + "/. It's a folder, not a bank file."}}) {
        for (const std::vector<std::string>& command :
             {std::vector<std::string>{"analyze", path},
              {"import", "--dry-run", path},
              {"import", "--layout", "chase-checking", path}}) {
            auto arguments = command;
            arguments.insert(arguments.begin(), {"--data-dir", data});
            const auto result = testing::runCopperwick(arguments, folder.path());
            ASSERT_FALSE(result.timedOut) << command[0] << " " << path << " hung";
            EXPECT_EQ(result.code, 1) << command[0] << " " << path;
            EXPECT_EQ(result.err, "Copperwick couldn't read " + words + "\n")
                << command[0] << " " << path;
        }
    }
}

// A file that no layout fitted was refused until someone taught its columns by
// hand; now its layout is worked out, told before saving, and taught on import.
TEST_F(ImportCommandTest, AnUnknownLayoutIsWorkedOutToldAndTaught) {
    const std::string line =
        "Layout worked out from the file: date in “Date”, description in “Payee”, amount in "
        "“Amount”.";
    auto result = run({"import", "--dry-run", sample("generic-payee.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_NE(result.out.find("  " + line + "\n"), std::string::npos) << result.out;

    result = run({"--json", "import", "--dry-run", sample("generic-payee.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    auto answer = boost::json::parse(result.out).as_object();
    const auto& file = answer.at("files").at(0).as_object();
    EXPECT_EQ(file.at("layoutWorkedOut").as_string(), line);
    EXPECT_TRUE(file.at("layoutGaps").as_array().empty());
    const auto& rows = file.at("plan").at("rows").as_array();
    ASSERT_EQ(rows.size(), 3u);
    EXPECT_EQ(rows[1].at("date").as_string(), "2026-03-15");  // day first: 15/03/2026
    EXPECT_EQ(rows[1].at("amount").as_int64(), 150000);
    EXPECT_EQ(rows[2].at("amount").as_int64(), -4000);

    result = run({"import", sample("generic-payee.csv")});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "Imported 3 transactions from 1 file.\n");

    // The bank's next file is recognised by the layout taught, into the same account.
    const auto april = folder / "april.csv";
    testing::writeFile(april,
                       "Date,Payee,Amount\n02/04/2026,CORNER SHOP,-9.00\n"
                       "20/04/2026,CITY WATER,-41.00\n");
    result = run({"--json", "import", "--dry-run", april.string()});
    ASSERT_EQ(result.code, 0) << result.err;
    answer = boost::json::parse(result.out).as_object();
    EXPECT_TRUE(answer.at("files").at(0).at("layoutWorkedOut").is_null());
    EXPECT_EQ(answer.at("totalToImport").as_int64(), 2);
    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
    ASSERT_EQ(runtime.ledger().profiles.size(), 1u);
    EXPECT_EQ(runtime.ledger().profiles[0].name, "generic-payee");
    EXPECT_EQ(answer.at("files").at(0).at("profile").as_string(), runtime.ledger().profiles[0].id);
    ASSERT_EQ(runtime.ledger().accounts.size(), 1u);
    EXPECT_EQ(answer.at("files").at(0).at("account").as_string(),
              runtime.ledger().accounts[0].id.text());
}

TEST_F(ImportCommandTest, AFileThatCantBeWorkedOutSaysWhatIsMissing) {
    const auto file = folder / "undated.csv";
    testing::writeFile(file,
                       "When,Payee,Amount\nlast week,CORNER SHOP,-9.00\n"
                       "yesterday,CITY WATER,-41.00\n");
    auto result = run({"import", file.string()});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("  Copperwick couldn't find a date column in this file.\n  Choose "
                              "which columns hold the date, description and amount on the "
                              "Import screen.\n"),
              std::string::npos)
        << result.err;
    result = run({"--json", "import", "--dry-run", file.string()});
    EXPECT_EQ(result.code, 1);
    const auto gaps = boost::json::parse(result.out).at("files").at(0).at("layoutGaps");
    EXPECT_EQ(gaps.as_array().size(), 1u);
}

// Each bank's sample: what the dry run promises is what the import does, and
// the same file again adds nothing.
TEST_F(ImportCommandTest, EverySampleImportsWhatItsDryRunPromised) {
    std::vector<std::filesystem::path> samples;
    for (const char* folderName : {"csv", "ofx"}) {
        for (const auto& entry : std::filesystem::directory_iterator(kData / folderName))
            samples.push_back(entry.path());
    }
    std::sort(samples.begin(), samples.end());
    ASSERT_GE(samples.size(), 18u);
    int index = 0;
    for (const auto& sample : samples) {
        SCOPED_TRACE(sample.filename().string());
        const std::string dataFolder = (folder / ("data-" + std::to_string(index++))).string();
        const auto dryRun = runWith({"--data-dir", dataFolder, "--json", "import", "--dry-run",
                                     "--skip-problem-rows", sample.string()});
        ASSERT_EQ(dryRun.code, 0) << dryRun.err << dryRun.out;
        const auto plan = boost::json::parse(dryRun.out).as_object();
        const int64_t promised = plan.at("totalToImport").as_int64();
        EXPECT_GT(promised, 0);

        const auto committed = runWith(
            {"--data-dir", dataFolder, "--json", "import", "--skip-problem-rows", sample.string()});
        ASSERT_EQ(committed.code, 0) << committed.err;
        const auto answer = boost::json::parse(committed.out).as_object();
        const auto& batch = answer.at("batches").at(0).as_object();
        EXPECT_EQ(batch.at("counts").at("imported").as_int64(), promised);

        const auto again = runWith({"--data-dir", dataFolder, "--json", "import", "--dry-run",
                                    "--skip-problem-rows", sample.string()});
        ASSERT_EQ(again.code, 0) << again.err;
        const auto replanned = boost::json::parse(again.out).as_object();
        EXPECT_EQ(replanned.at("totalToImport").as_int64(), 0);
        EXPECT_FALSE(replanned.at("files").at(0).at("plan").at("previousImport").is_null());
    }
}

// OFX files of several statements, OFX as banks really write it, QIF and
// CAMT.053 were all refused or misread; each now goes in whole on the first
// try, with its dates, signs and amounts, and a second import adds nothing.
TEST_F(ImportCommandTest, EveryStatementFileImportsOnceAndAgainAddsNothing) {
    const struct {
        std::string_view file;
        std::string_view result;
        std::string_view ledger;  // accounts, transactions, their sum, first and last date
    } cases[] = {
        {"two_cards_and_checking.ofx",
         "Imported 5 transactions from 3 files; 1 were already saved.",
         "2 accounts, 5 lines, 209184 cents, 2024-01-05 to 2024-02-16"},
        {"bank_quirks.ofx", "Imported 6 transactions from 1 file.",
         "1 accounts, 6 lines, -17911 cents, 2024-03-02 to 2024-03-08"},
        {"checking.qif", "Imported 4 transactions from 1 file.",
         "1 accounts, 4 lines, 106544 cents, 2024-12-31 to 2025-01-07"},
        {"card_day_first.qif", "Imported 3 transactions from 1 file.",
         "1 accounts, 3 lines, 19491 cents, 2025-02-03 to 2025-02-28"},
        {"camt053_v02_two_statements.xml", "Imported 5 transactions from 2 files.",
         "2 accounts, 5 lines, 252270 cents, 2024-03-01 to 2024-03-30"},
        {"camt053_v08.xml", "Imported 3 transactions from 1 file.",
         "1 accounts, 3 lines, 111560 cents, 2024-04-25 to 2024-04-30"},
    };
    int index = 0;
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.file));
        const std::string dataFolder = (folder / ("data-" + std::to_string(index++))).string();
        const std::string file = (kData / "statements" / c.file).string();
        auto result = runWith({"--data-dir", dataFolder, "import", file});
        ASSERT_EQ(result.code, 0) << result.err << result.out;
        EXPECT_EQ(result.out, std::string(c.result) + "\n");
        {
            LedgerRuntime runtime(RuntimeOptions{.dataFolder = dataFolder});
            const auto active = runtime.ledger().activeTransactions();
            int64_t sum = 0;
            std::string first = "9999", last;
            for (const auto* transaction : active) {
                sum += transaction->amount;
                first = std::min(first, transaction->date.iso());
                last = std::max(last, transaction->date.iso());
            }
            EXPECT_EQ(std::to_string(runtime.ledger().accounts.size()) + " accounts, " +
                          std::to_string(active.size()) + " lines, " + std::to_string(sum) +
                          " cents, " + first + " to " + last,
                      c.ledger);
        }

        result = runWith({"--data-dir", dataFolder, "--json", "import", "--dry-run", file});
        ASSERT_EQ(result.code, 0) << result.err << result.out;
        EXPECT_EQ(boost::json::parse(result.out).at("totalToImport").as_int64(), 0);
        result = runWith({"--data-dir", dataFolder, "import", file});
        ASSERT_EQ(result.code, 0) << result.err << result.out;
        EXPECT_TRUE(result.out.starts_with("Nothing to import: every transaction in "))
            << result.out;
    }
}

// Undoing the imports of a file's statements takes each statement's lines
// back, and the file can then come in again whole.
TEST_F(ImportCommandTest, StatementsOfOneFileAreImportsOfTheirOwn) {
    const std::string file = (kData / "statements" / "camt053_v02_two_statements.xml").string();
    auto result = run({"--json", "import", file});
    ASSERT_EQ(result.code, 0) << result.err;
    const auto batches = boost::json::parse(result.out).at("batches").as_array();
    ASSERT_EQ(batches.size(), 2u);
    EXPECT_EQ(batches.at(1).at("fileName").as_string(),
              "camt053_v02_two_statements.xml \xC2\xB7 account ending 2051");
    for (const auto& batch : batches) {
        result = run({"undo-import", std::string(batch.at("id").as_string())});
        ASSERT_EQ(result.code, 0) << result.err;
    }
    EXPECT_EQ(
        result.out,
        "Removed the import of camt053_v02_two_statements.xml \xC2\xB7 account ending 2051.\n");
    {
        LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
        EXPECT_TRUE(runtime.ledger().activeTransactions().empty());
    }
    result = run({"import", file});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "Imported 5 transactions from 2 files.\n");
}

TEST_F(ImportCommandTest, BankErrorsAndUndecidableDatesImportNothing) {
    auto result = run({"import", (kData / "statements" / "bank_error.ofx").string()});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("bank_error.ofx: Your bank sent an error instead of a statement: "
                              "General error. Please try again later. Download the file again."),
              std::string::npos)
        << result.err;
    result = run({"import", (kData / "statements" / "ambiguous.qif").string()});
    EXPECT_EQ(result.code, 1);
    EXPECT_NE(result.err.find("day/month or month/day"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find("Nothing was imported."), std::string::npos) << result.err;
}

// The quick start of the README: the bundled samples import as it says.
TEST_F(ImportCommandTest, BundledSamplesImportAndPairTheCardPayments) {
    const auto samples = kData.parent_path().parent_path() / "samples";
    auto result = run({"import", (samples / "chase-checking.csv").string(),
                       (samples / "chase-card.csv").string()});
    ASSERT_EQ(result.code, 0) << result.err;
    EXPECT_EQ(result.out, "Imported 56 transactions from 2 files.\n");
    LedgerRuntime runtime(RuntimeOptions{.dataFolder = folder / "data"});
    const Ledger& ledger = runtime.ledger();
    EXPECT_EQ(ledger.accounts.size(), 2u);
    int paired = 0;
    for (const auto& transaction : ledger.transactions)
        paired += transaction.transferPairID ? 1 : 0;
    EXPECT_EQ(paired, 6);  // three autopay lines and their three card payments
}

}  // namespace
}  // namespace copperwick::cli
