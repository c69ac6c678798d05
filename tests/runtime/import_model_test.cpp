#include "runtime/import_model.h"

#include <sys/stat.h>

#include <gtest/gtest.h>

#include "core/operations/upsert_account.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

using testing::TempFolder;
using testing::writeFile;

const std::filesystem::path kData = COPPERWICK_TEST_DATA;

constexpr std::string_view kCheckingHeader =
    "Details,Posting Date,Description,Amount,Type,Balance,Check or Slip #\n";

class ImportModelTest : public ::testing::Test {
  protected:
    ImportModelTest() : runtime(RuntimeOptions{.dataFolder = folder / "data"}) {}

    // A copy in the drop folder, so archiving may move it.
    std::filesystem::path dropped(const std::string& sample, const std::string& as = {}) {
        const auto target = folder / "drop" / (as.empty() ? sample : as);
        std::filesystem::create_directories(target.parent_path());
        std::filesystem::copy_file(kData / "csv" / sample, target,
                                   std::filesystem::copy_options::overwrite_existing);
        return target;
    }
    std::filesystem::path written(const std::string& name, const std::string& contents) {
        const auto target = folder / "drop" / name;
        std::filesystem::create_directories(target.parent_path());
        writeFile(target, contents);
        return target;
    }
    void drop(const std::vector<std::filesystem::path>& urls) {
        model.add(urls, runtime);
        model.waitForAnalyses(runtime);
    }
    std::size_t activeCount() { return runtime.ledger().activeTransactions().size(); }

    TempFolder folder;
    LedgerRuntime runtime;
    ImportModel model;
};

TEST_F(ImportModelTest, NewCardImportsAndTheSameFileAgainAddsNothing) {
    drop({dropped("chase-checking.csv")});
    ASSERT_EQ(model.files().size(), 1u);
    const auto& file = model.files().front();
    ASSERT_FALSE(file.blocker()) << *file.blocker();
    EXPECT_EQ(file.choice.kind, ImportFile::AccountChoice::Kind::newAccount);
    EXPECT_EQ(file.suggestionReason, "A new account. Check the name and owner.");
    const int64_t total = model.totalToImport();
    ASSERT_GT(total, 0);

    model.commit(runtime, {});
    EXPECT_EQ(model.lastResult(),
              "Imported " + std::to_string(total) + " transactions from 1 file.");
    EXPECT_TRUE(model.files().empty());
    ASSERT_EQ(runtime.ledger().accounts.size(), 1u);
    ASSERT_EQ(runtime.ledger().batches.size(), 1u);
    EXPECT_EQ(activeCount(), static_cast<std::size_t>(total));

    // The account now exists, so the same file is matched to it and planned as saved.
    drop({dropped("chase-checking.csv")});
    ASSERT_EQ(model.files().size(), 1u);
    const auto& again = model.files().front();
    EXPECT_EQ(again.choice.kind, ImportFile::AccountChoice::Kind::existing);
    ASSERT_TRUE(again.plan);
    EXPECT_TRUE(again.plan->previousImport);
    EXPECT_EQ(again.plan->newCount(), 0);
    EXPECT_EQ(model.totalToImport(), 0);
    const auto backups = runtime.backups().list().size();
    model.commit(runtime, {});
    EXPECT_EQ(model.lastResult(),
              "Nothing to import: every transaction in chase-checking.csv is already saved.");
    EXPECT_EQ(activeCount(), static_cast<std::size_t>(total));
    EXPECT_EQ(runtime.ledger().batches.size(), 1u);
    EXPECT_EQ(runtime.backups().list().size(), backups);
}

TEST_F(ImportModelTest, ALayoutWorkedOutIsToldKeptThroughAFlipAndTaughtOnImport) {
    drop({dropped("venmo-statement.csv")});
    ASSERT_EQ(model.files().size(), 1u);
    const Uuid id = model.files()[0].id;
    const auto told = model.file(id)->layoutHelp;
    EXPECT_EQ(told.kind, ImportFile::LayoutHelp::Kind::done);
    EXPECT_TRUE(told.text.starts_with("Layout worked out from the file: date in “Datetime”"));
    EXPECT_FALSE(model.file(id)->blocker()) << *model.file(id)->blocker();

    model.setFlip(true, id, runtime);
    EXPECT_EQ(model.file(id)->analysis.layoutWorkedOut, told.text);
    model.setFlip(false, id, runtime);
    EXPECT_TRUE(runtime.ledger().profiles.empty());  // nothing is saved before Import

    model.commit(runtime, {});
    ASSERT_EQ(runtime.ledger().profiles.size(), 1u);
    EXPECT_EQ(runtime.ledger().activeTransactions().size(), 3u);

    drop({written("venmo-april.csv",
                  ",ID,Datetime,Type,Status,Note,From,To,Amount (total),Amount (tip),Amount "
                  "(tax),Amount (fee),Tax Rate,Tax Exempt,Funding Source,Destination,Beginning "
                  "Balance,Ending Balance,Statement Period Venmo Fees,Terminal Location,Year to "
                  "Date Venmo Fees,Disclaimer\n"
                  ",4012345678901234570,2026-04-02T18:22:10,Payment,Complete,Tacos,Dana "
                  "Smith,Sam Lee,- $9.00,,0,,0,,Venmo balance,,,,,Venmo,,\n")});
    const auto& april = model.files().back();
    EXPECT_FALSE(april.analysis.layoutWorkedOut);
    ASSERT_TRUE(april.analysis.profile);
    EXPECT_EQ(april.analysis.profile->id, runtime.ledger().profiles[0].id);
    EXPECT_EQ(april.choice.kind, ImportFile::AccountChoice::Kind::existing);
}

TEST_F(ImportModelTest, DroppingTheSameFileTwiceGivesOneCard) {
    const auto url = dropped("chase-card.csv");
    drop({url, url});
    drop({url});
    EXPECT_EQ(model.files().size(), 1u);
    EXPECT_EQ(model.pendingAnalyses(), 0);
    EXPECT_FALSE(model.isBusy());
}

TEST_F(ImportModelTest, FileWhoseAmountsCantBeSummedWaitsWithTheReason) {
    // 102,482 rows of -900,000,000,000.00: the dry run printed "Money in:"
    // and stopped there, since its own totals overflowed.
    std::string rows = "Transaction Date,Post Date,Description,Category,Type,Amount,Memo\n";
    for (int i = 0; i < 45; ++i)
        rows += "04/02/2026,04/03/2026,HUGE " + std::to_string(i) +
                ",Shopping,Sale,-900000000000.00,\n";
    drop({written("huge.csv", rows)});
    ASSERT_EQ(model.files().size(), 1u);
    const auto& file = model.files()[0];
    EXPECT_EQ(file.blocker(),
              "The amounts in this file add up to more than Copperwick can count, so it can't be "
              "imported. Check that it's a bank export.");
    EXPECT_FALSE(file.plan);
    model.commit(runtime, {});
    EXPECT_TRUE(runtime.ledger().transactions.empty());
}

TEST_F(ImportModelTest, TwoStatementsOfOneNewCardMakeOneAccount) {
    drop({dropped("chase-card.csv", "chase-card-march.csv")});
    drop({written("chase-card-april.csv",
                  "Transaction Date,Post Date,Description,Category,Type,Amount,Memo\n"
                  "04/02/2026,04/03/2026,RIVERSIDE BAKERY,Food & Drink,Sale,-8.25,\n")});
    ASSERT_EQ(model.files().size(), 2u);
    const auto& first = model.files()[0];
    const auto& second = model.files()[1];
    ASSERT_EQ(first.choice.kind, ImportFile::AccountChoice::Kind::newAccount);
    EXPECT_EQ(second.draft.id, first.draft.id);
    EXPECT_EQ(second.suggestionReason, "Goes to the same new account as chase-card-march.csv.");

    model.commit(runtime, {});
    EXPECT_EQ(runtime.ledger().accounts.size(), 1u);
    EXPECT_EQ(runtime.ledger().batches.size(), 2u);
    EXPECT_EQ(model.lastResult(), "Imported 3 transactions from 2 files.");
}

TEST_F(ImportModelTest, OverlappingFilesInOneCommitAddOnlyNewLines) {
    const std::string march =
        "DEBIT,03/02/2026,\"CORNER SHOP\",-12.50,DEBIT_CARD,100.00,\n"
        "DEBIT,03/05/2026,\"CITY WATER\",-40.00,ACH_DEBIT,60.00,\n";
    const std::string later = "DEBIT,03/07/2026,\"RIVERSIDE BAKERY\",-6.00,DEBIT_CARD,54.00,\n";
    drop({written("first.csv", std::string(kCheckingHeader) + march)});
    drop({written("second.csv", std::string(kCheckingHeader) + march + later)});
    ASSERT_EQ(model.files().size(), 2u);
    // Planned on their own, both files look entirely new.
    EXPECT_EQ(model.totalToImport(), 5);

    model.commit(runtime, {});
    EXPECT_EQ(activeCount(), 3u);
    EXPECT_EQ(model.lastResult(), "Imported 3 transactions from 2 files; 2 were already saved.");
}

// An Amex download of two cycles of one card and a bank's checking
// statement in one OFX file was refused as "not exactly one statement".
TEST_F(ImportModelTest, FileOfSeveralStatementsIsOneCardPerStatement) {
    const auto url = folder / "drop" / "Activity.ofx";
    std::filesystem::create_directories(url.parent_path());
    std::filesystem::copy_file(kData / "statements" / "two_cards_and_checking.ofx", url);
    drop({url, url});
    ASSERT_EQ(model.files().size(), 3u);
    const auto& first = model.files()[0];
    const auto& second = model.files()[1];
    const auto& checking = model.files()[2];
    EXPECT_EQ(first.name(), "Activity.ofx \xC2\xB7 card ending 1234, statement 1 of 3");
    EXPECT_EQ(second.name(), "Activity.ofx \xC2\xB7 card ending 1234, statement 2 of 3");
    EXPECT_EQ(checking.name(), "Activity.ofx \xC2\xB7 account ending 5678");
    EXPECT_EQ(first.analysis.fileName, first.name());
    EXPECT_NE(first.analysis.fileHash, second.analysis.fileHash);
    // The card's cycles share one new account; the checking account is its own.
    EXPECT_EQ(second.draft.id, first.draft.id);
    EXPECT_EQ(second.suggestionReason,
              "Goes to the same new account as Activity.ofx \xC2\xB7 card ending 1234, statement 1 "
              "of 3.");
    EXPECT_NE(checking.draft.id, first.draft.id);
    EXPECT_EQ(checking.draft.type, AccountType::checking);
    EXPECT_EQ(checking.draft.last4, "5678");
    ASSERT_FALSE(first.blocker()) << *first.blocker();

    model.commit(runtime, folder / "archive");
    // The cycles overlap by one line, which is saved once.
    EXPECT_EQ(model.lastResult(), "Imported 5 transactions from 3 files; 1 were already saved.");
    EXPECT_EQ(runtime.ledger().accounts.size(), 2u);
    ASSERT_EQ(runtime.ledger().batches.size(), 3u);
    EXPECT_EQ(runtime.ledger().batches[1].fileName,
              "Activity.ofx \xC2\xB7 card ending 1234, statement 2 of 3");
    EXPECT_EQ(activeCount(), 5u);
    // The file moved once, with no complaint about the statements after the first.
    EXPECT_FALSE(runtime.errorMessage()) << *runtime.errorMessage();
    EXPECT_TRUE(std::filesystem::exists(folder / "archive" / "2024-01" / "Activity.ofx"));

    // The same statements again find their accounts and bring nothing.
    const auto again = folder / "drop" / "Again.ofx";
    std::filesystem::copy_file(kData / "statements" / "two_cards_and_checking.ofx", again);
    drop({again});
    ASSERT_EQ(model.files().size(), 3u);
    for (const auto& file : model.files()) {
        EXPECT_EQ(file.choice.kind, ImportFile::AccountChoice::Kind::existing) << file.name();
        ASSERT_TRUE(file.plan);
        EXPECT_EQ(file.plan->newCount(), 0) << file.name();
    }
    EXPECT_EQ(model.totalToImport(), 0);
}

// The plan on the card is reused at commit only while the ledger is the one
// it was made from: here another session saves the same lines in between.
TEST_F(ImportModelTest, LinesSavedAfterThePlanWasMadeAreDuplicatesAtCommit) {
    const std::string lines =
        "DEBIT,03/02/2026,\"CORNER SHOP\",-12.50,DEBIT_CARD,100.00,\n"
        "DEBIT,03/05/2026,\"CITY WATER\",-40.00,ACH_DEBIT,60.00,\n";
    const auto file = written("march.csv", std::string(kCheckingHeader) + lines);
    Account checking(Uuid::random(), "Checking", AccountType::checking);
    runtime.apply([&](Ledger& ledger) { return upsertAccount(ledger, checking); });
    const auto choose = [&](ImportModel& session) {
        session.add({file}, runtime);
        session.waitForAnalyses(runtime);
        ASSERT_EQ(session.files().size(), 1u);
        session.setChoice(ImportFile::AccountChoice::existing(checking.id),
                          session.files().front().id, runtime);
        ASSERT_TRUE(session.files().front().plan);
        EXPECT_EQ(session.files().front().plan->newCount(), 2);
    };
    choose(model);
    ImportModel other;
    choose(other);
    other.commit(runtime, {});
    EXPECT_EQ(other.lastResult(), "Imported 2 transactions from 1 file.");

    model.commit(runtime, {});
    EXPECT_EQ(model.lastResult(),
              "Nothing to import: every transaction in march.csv is already saved.");
    EXPECT_EQ(activeCount(), 2u);
    EXPECT_EQ(runtime.ledger().batches.size(), 1u);
}

TEST_F(ImportModelTest, PaymentBetweenCheckingAndCardPairsOnceBothAreIn) {
    drop({written("checking.csv", std::string(kCheckingHeader) +
                                      "DEBIT,03/04/2026,\"CHASE CREDIT CRD AUTOPAY\",-250.00,"
                                      "ACH_DEBIT,750.00,\n")});
    model.commit(runtime, {});
    ASSERT_EQ(activeCount(), 1u);
    EXPECT_FALSE(runtime.ledger().activeTransactions().front()->transferPairID);

    drop({written("card.csv",
                  "Transaction Date,Post Date,Description,Category,Type,Amount,Memo\n"
                  "03/05/2026,03/05/2026,AUTOMATIC PAYMENT - THANK,,Payment,250.00,\n")});
    ASSERT_EQ(model.files().size(), 1u);
    ASSERT_FALSE(model.files().front().blocker()) << *model.files().front().blocker();
    model.commit(runtime, {});
    ASSERT_EQ(activeCount(), 2u);
    for (const auto* transaction : runtime.ledger().activeTransactions())
        EXPECT_TRUE(transaction->transferPairID) << transaction->rawDescription;
}

TEST_F(ImportModelTest, ForcedLineIsDroppedWhenFlippingSignsMakesItNew) {
    drop({written("first.csv",
                  std::string(kCheckingHeader) +
                      "DEBIT,03/02/2026,\"CORNER SHOP 42\",-12.50,DEBIT_CARD,1.00,\n")});
    model.commit(runtime, {});
    drop(
        {written("second.csv", std::string(kCheckingHeader) +
                                   "DEBIT,03/02/2026,\"CORNER STORE\",-12.50,DEBIT_CARD,1.00,\n")});
    ASSERT_EQ(model.files().size(), 1u);
    const auto id = model.files().front().id;
    ASSERT_EQ(model.files().front().plan->possibleDuplicates().size(), 1u);
    model.setForcedLines({2}, id);
    EXPECT_EQ(model.totalToImport(), 1);

    model.setFlip(true, id, runtime);
    EXPECT_TRUE(model.files().front().forcedLines.empty());
    EXPECT_EQ(model.files().front().plan->newCount(), 1);
    EXPECT_EQ(model.totalToImport(), 1);
}

TEST_F(ImportModelTest, FailedSafetyBackupImportsNothing) {
    drop({dropped("chase-checking.csv")});
    // A file where the backups folder belongs: no permission games, which root ignores.
    const auto backups = folder / "data" / "Backups";
    std::filesystem::remove_all(backups);
    writeFile(backups, "in the way");
    const auto before = runtime.revision();
    model.commit(runtime, {});

    EXPECT_EQ(runtime.revision(), before);
    EXPECT_TRUE(runtime.ledger().batches.empty());
    EXPECT_EQ(model.files().size(), 1u);
    EXPECT_FALSE(model.lastResult());
    EXPECT_FALSE(model.isCommitting());
    ASSERT_TRUE(runtime.errorMessage());
    EXPECT_EQ(runtime.errorMessage()->rfind(
                  "Copperwick couldn't make its safety backup, so nothing was imported: ", 0),
              0u)
        << *runtime.errorMessage();
}

TEST_F(ImportModelTest, UnreadableFileIsReportedAndOthersStay) {
    drop({folder / "drop" / "missing.csv", dropped("chase-card.csv")});
    EXPECT_EQ(runtime.errorMessage(),
              "Copperwick couldn't read missing.csv. There's no file by that name.");
    EXPECT_EQ(model.files().size(), 1u);
}

TEST_F(ImportModelTest, UntickedAndUndecidedFilesStayBehind) {
    drop({dropped("chase-card.csv"), dropped("chase-checking.csv")});
    ASSERT_EQ(model.files().size(), 2u);
    const auto cardID = model.files()[0].id;
    const auto cardCount = model.files()[0].plan->newCount();
    const auto total = model.totalToImport();
    model.setInclude(false, cardID);
    EXPECT_EQ(model.readyFiles().size(), 1u);
    EXPECT_EQ(model.totalToImport(), total - cardCount);

    model.setChoice(ImportFile::AccountChoice::undecided(), model.files()[1].id, runtime);
    EXPECT_EQ(model.files()[1].blocker(), "Choose which account this file belongs to.");
    EXPECT_FALSE(model.files()[1].plan);
    EXPECT_TRUE(model.readyFiles().empty());
    model.commit(runtime, {});
    EXPECT_FALSE(model.lastResult());
    EXPECT_EQ(model.files().size(), 2u);
}

TEST_F(ImportModelTest, ChoosingAnAccountInAnotherCurrencyIsRefused) {
    Account euro(Uuid::random(), "Euro account", AccountType::checking);
    euro.currency = "EUR";
    runtime.apply([&](Ledger& ledger) { return upsertAccount(ledger, euro); });
    drop({written("statement.ofx", testing::readFile(kData / "ofx" / "checking_tag_only.ofx"))});
    ASSERT_EQ(model.files().size(), 1u);
    const auto& file = model.files().front();
    ASSERT_TRUE(file.analysis.currencyHint);
    model.setChoice(ImportFile::AccountChoice::existing(euro.id), file.id, runtime);
    EXPECT_EQ(model.files().front().choice, ImportFile::AccountChoice::existing(euro.id));
    EXPECT_EQ(runtime.errorMessage(), "This file uses " + *file.analysis.currencyHint +
                                          ". Choose an account in that "
                                          "currency.");
}

TEST_F(ImportModelTest, ArchiveFilesByMonthWithFreeNames) {
    const auto archive = folder / "archive";
    drop({dropped("chase-checking.csv")});
    model.commit(runtime, archive);
    ASSERT_TRUE(model.lastResult());
    EXPECT_TRUE(std::filesystem::exists(archive / "2026-03" / "chase-checking.csv"));
    EXPECT_FALSE(std::filesystem::exists(folder / "drop" / "chase-checking.csv"));

    // The same name into the same month takes the next free number.
    drop({written("chase-checking.csv",
                  std::string(kCheckingHeader) +
                      "DEBIT,03/20/2026,\"RIVERSIDE BAKERY\",-6.00,DEBIT_CARD,54.00,\n")});
    model.commit(runtime, archive);
    EXPECT_TRUE(std::filesystem::exists(archive / "2026-03" / "chase-checking 2.csv"));
}

// A statement with no transactions, or none readable with problem rows
// skipped, made an empty account and an empty import record.
TEST_F(ImportModelTest, AFileThatBringsNothingMakesNoAccountRecordOrBackup) {
    std::string statement = testing::readFile(kData / "ofx" / "checking_tag_only.ofx");
    const auto first = statement.find("<STMTTRN>");
    const auto last = statement.rfind("</STMTTRN>") + std::string_view("</STMTTRN>").size();
    statement.erase(first, last - first);
    const auto quiet = written("quiet-month.ofx", statement);
    const auto unreadable =
        written("damaged.csv", std::string(kCheckingHeader) +
                                   "DEBIT,03/03/2026,\"BAKERY\",lots,DEBIT_CARD,1.00,\n");
    drop({quiet, unreadable});
    ASSERT_EQ(model.files().size(), 2u);
    for (const auto& file : model.files()) {
        model.setChoice(ImportFile::AccountChoice::newAccount(), file.id, runtime);
        model.setSkipProblemRows(true, file.id);
        ASSERT_FALSE(file.blocker()) << *file.blocker();
    }
    const auto revision = runtime.revision();
    const auto archive = folder / "archive";
    model.commit(runtime, archive);

    EXPECT_EQ(model.lastResult(),
              "Nothing to import: quiet-month.ofx holds no transactions; no row of damaged.csv "
              "could be read.");
    EXPECT_EQ(runtime.revision(), revision);
    EXPECT_TRUE(runtime.ledger().accounts.empty());
    EXPECT_TRUE(runtime.ledger().batches.empty());
    EXPECT_TRUE(runtime.backups().list().empty());
    EXPECT_FALSE(std::filesystem::exists(archive));
    EXPECT_TRUE(std::filesystem::exists(quiet));

    // Beside a file that does bring lines, the empty one is passed over.
    drop({dropped("chase-checking.csv")});
    for (const auto& file : model.files())
        model.setSkipProblemRows(true, file.id);
    model.commit(runtime, {});
    EXPECT_EQ(model.lastResult(), "Imported 2 transactions from 1 file.");
    EXPECT_EQ(runtime.ledger().accounts.size(), 1u);
    EXPECT_EQ(runtime.ledger().batches.size(), 1u);
}

// A pipe, a device or a folder dropped as a bank file hung the import or
// answered in the stream library's words.
TEST_F(ImportModelTest, WhatIsntARegularFileIsRefusedByNameAndReason) {
    const auto pipe = folder / "drop" / "pipe.csv";
    std::filesystem::create_directories(pipe.parent_path());
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    drop({pipe});
    EXPECT_EQ(runtime.errorMessage(),
              "Copperwick couldn't read pipe.csv. It isn't a regular file, so it can't be a bank "
              "export.");
    drop({folder / "drop"});
    EXPECT_EQ(runtime.errorMessage(),
              "Copperwick couldn't read drop. It's a folder, not a bank file.");
    const auto huge = written("huge.csv", std::string(kCheckingHeader));
    std::filesystem::resize_file(huge, kLargestBankFileBytes + 1);
    drop({huge});
    EXPECT_EQ(runtime.errorMessage(),
              "Copperwick couldn't read huge.csv. It's larger than 64 MB, far more than any bank "
              "export.");
    EXPECT_TRUE(model.files().empty());
}

}  // namespace
}  // namespace copperwick

namespace copperwick {
namespace {

TEST(ImportModelClock, ImportsAreDatedByTheRuntimesClock) {
    // Imports were stamped with the wall clock, so a runtime stepped through
    // days in a test (or a check of a later day) recorded them at today.
    testing::TempFolder folder;
    const Instant later{Instant::now().secondsSinceReference + 86400.0 * 400};
    LedgerRuntime runtime(
        RuntimeOptions{.dataFolder = folder / "data", .clock = [later] { return later; }});
    const auto file = folder / "chase-checking.csv";
    std::filesystem::copy_file(kData / "csv" / "chase-checking.csv", file);
    ImportModel model;
    model.add({file}, runtime);
    EXPECT_EQ(model.pendingAnalyses(), 1) << "the analysis runs in the background";
    model.waitForAnalyses(runtime);
    ASSERT_EQ(model.files().size(), 1u);
    model.commit(runtime, {});
    ASSERT_EQ(runtime.ledger().batches.size(), 1u);
    EXPECT_EQ(runtime.ledger().batches[0].importedAt, later);
}

}  // namespace
}  // namespace copperwick
