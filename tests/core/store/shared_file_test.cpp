// Two programs on one data file: the desktop application and the command
// line, or two commands at once. Each store here stands for one program with
// its own connection.

#include <sys/stat.h>

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "core/store/backup_manager.h"
#include "core/store/ledger_store.h"
#include "core/store/private_folder.h"
#include "core/store/store_error.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

namespace fs = std::filesystem;
using testing::TempFolder;

LedgerDelta addPerson(Ledger& ledger, std::string name) {
    const Person person{.id = Uuid::random(), .name = std::move(name)};
    ledger.people.push_back(person);
    LedgerDelta delta;
    delta.change(RecordKind::person, person.id);
    return delta;
}

std::string names(const Ledger& ledger) {
    std::string text;
    for (const auto& person : ledger.people)
        text += (text.empty() ? "" : ",") + person.name;
    return text;
}

TEST(SharedFile, SaveFromAStaleReadIsRefusedUntilReadAgain) {
    // Two imports of one file at once gave 3,000 duplicates: each program
    // saved what it had worked out from the ledger before the other's save.
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    LedgerStore first(file);
    LedgerStore second(file);
    Ledger mine = first.load();
    Ledger theirs = second.load();
    EXPECT_FALSE(first.changedOnDisk());

    const LedgerDelta robin = addPerson(mine, "Robin");
    first.save(robin, mine);
    EXPECT_FALSE(first.changedOnDisk()) << "its own save isn't another program's";
    EXPECT_TRUE(second.changedOnDisk());

    const LedgerDelta sam = addPerson(theirs, "Sam");
    try {
        second.save(sam, theirs);
        FAIL() << "a save from a stale read went through";
    } catch (const StoreError& error) {
        EXPECT_EQ(error.kind(), StoreError::Case::changedElsewhere);
        EXPECT_EQ(std::string(error.what()),
                  "Another program changed Copperwick's data while this change was being saved, "
                  "so it wasn't saved. Try it again.");
    }
    EXPECT_EQ(names(LedgerStore(file).load()), "Robin") << "the refused save wrote something";

    // Read again, the change is worked out on top of the other program's.
    theirs = second.load();
    EXPECT_FALSE(second.changedOnDisk());
    second.save(addPerson(theirs, "Sam"), theirs);
    EXPECT_EQ(names(LedgerStore(file).load()), "Robin,Sam");
    EXPECT_TRUE(first.changedOnDisk());
}

TEST(SharedFile, ReadsAndOwnWritesAreNotMistakenForAnotherProgramsSave) {
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    LedgerStore store(file);
    Ledger ledger = store.load();
    LedgerStore reader(file);
    for (int i = 0; i < 3; ++i) {
        (void)reader.load();
        (void)reader.isEmpty();
        BackupManager(temp / "Backups").makeBackup(reader, "manual", Instant::now());
        store.save(addPerson(ledger, "P" + std::to_string(i)), ledger);
    }
    EXPECT_FALSE(store.changedOnDisk());
}

TEST(SharedFile, FileReplacedUnderItsNameCountsAsChanged) {
    // A copy put in place by hand (or by an older build's restore) is a new
    // file: a store still holding the old one would save into a file nobody reads.
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    const auto other = temp / "Other.sqlite";
    {
        LedgerStore store(other);
        Ledger ledger = store.load();
        store.save(addPerson(ledger, "Robin"), ledger);
    }
    LedgerStore store(file);
    Ledger ledger = store.load();
    EXPECT_FALSE(store.replaced());
    fs::rename(other, file);
    EXPECT_TRUE(store.replaced());
    EXPECT_TRUE(store.changedOnDisk());
    try {
        store.save(addPerson(ledger, "Sam"), ledger);
        FAIL() << "saved into a file that is no longer the data file";
    } catch (const StoreError& error) {
        EXPECT_EQ(error.kind(), StoreError::Case::changedElsewhere);
    }
}

TEST(SharedFile, RestoreIsSeenByAProgramThatHasTheFileOpen) {
    // An import during a restore reported "Imported 3000 transactions" that
    // were in no file: it saved into the file the restore had moved away.
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    const BackupManager backups(temp / "Backups");
    fs::path copy;
    {
        LedgerStore store(file);
        Ledger ledger = store.load();
        store.save(addPerson(ledger, "Robin"), ledger);
        copy = backups.makeBackup(store, "manual", Instant::now());
        store.save(addPerson(ledger, "Sam"), ledger);
    }
    LedgerStore open(file);
    Ledger ledger = open.load();
    ASSERT_EQ(names(ledger), "Robin,Sam");

    BackupManager::restore(copy, file);
    EXPECT_TRUE(open.changedOnDisk());
    EXPECT_THROW(open.save(addPerson(ledger, "Alex"), ledger), StoreError);
    ledger = open.load();
    EXPECT_EQ(names(ledger), "Robin");
    open.save(addPerson(ledger, "Alex"), ledger);
    EXPECT_EQ(names(LedgerStore(file).load()), "Alex,Robin");
    EXPECT_EQ(names(LedgerStore(temp / "Copperwick.replaced.sqlite").load()), "Robin,Sam");
}

TEST(SharedFile, TextThatIsntUTF8IsNeverWritten) {
    // An account renamed to "Card\xff1" from the command line was saved; on
    // the next open its record couldn't be read, and its 3,033 lines were orphaned.
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    LedgerStore store(file);
    Ledger ledger = store.load();
    store.save(addPerson(ledger, "Robin"), ledger);
    for (const std::string bad : {"Card\xff"
                                  "1",
                                  "\xc3", "\xed\xa0\x80", "\xc0\xaf", "\xf4\x90\x80\x80"}) {
        Ledger changed = ledger;
        try {
            store.save(addPerson(changed, bad), changed);
            ADD_FAILURE() << "saved " << bad;
        } catch (const StoreError& error) {
            EXPECT_EQ(std::string(error.what()),
                      "Copperwick couldn't save: some of its text isn't valid UTF-8, and it "
                      "couldn't be read back. Nothing was saved.");
        }
    }
    store.save(addPerson(ledger, "Zoë 🐝"), ledger);
    LedgerStore reopened(file);
    EXPECT_EQ(names(reopened.load()), "Robin,Zoë 🐝");
    EXPECT_EQ(reopened.unreadableRecords(), 0);
}

TEST(SharedFile, MissingDataFileBesideBackupsIsReportedNotStartedAfresh) {
    // A restore killed halfway left no data file (or an empty one), and the
    // next open showed an empty ledger as if nothing had been lost.
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    {
        LedgerStore store(file);
        Ledger ledger = store.load();
        store.save(addPerson(ledger, "Robin"), ledger);
        BackupManager(temp / "Backups").makeBackup(store, "manual", Instant::now());
    }
    for (const bool empty : {false, true}) {
        fs::remove(file);
        if (empty)
            testing::writeFile(file, "");
        try {
            LedgerStore store(file);
            ADD_FAILURE() << "opened a new ledger in place of a lost one";
        } catch (const StoreError& error) {
            EXPECT_EQ(error.kind(), StoreError::Case::open);
            EXPECT_NE(std::string(error.what()).find("is missing or empty, but the Backups folder"),
                      std::string::npos)
                << error.what();
        }
        EXPECT_FALSE(fs::exists(file) && fs::file_size(file) > 0);
    }
    // Without backups, a missing file is simply a first start.
    fs::remove_all(temp / "Backups");
    LedgerStore fresh(file);
    EXPECT_TRUE(fresh.isEmpty());
}

TEST(SharedFile, HalfWrittenCopiesAreNeverListedAndAreCleanedUp) {
    // A kill or a full disk during a safety backup left a truncated copy
    // (and its -journal) that `backup list` showed as the newest, and that
    // retention counted in place of a real one.
    TempFolder temp;
    const auto folder = temp / "Backups";
    const BackupManager backups(folder);
    LedgerStore store(temp / "Copperwick.sqlite");
    (void)store.load();
    backups.makeBackup(store, "manual", Instant::now());

    const auto abandoned = folder / ".Copperwick-2026-03-09-141502-before-import-x1.partial";
    testing::writeFile(abandoned, "SQLite format 3");
    testing::writeFile(abandoned.string() + "-journal", "journal");
    ASSERT_EQ(backups.list().size(), 1u);
    {
        // Another program is writing this one right now.
        TemporaryFile inFlight(folder, "Copperwick-in-flight");
        removeAbandonedFiles(folder);
        EXPECT_TRUE(fs::exists(inFlight.path()));
        EXPECT_FALSE(fs::exists(abandoned));
        EXPECT_FALSE(fs::exists(abandoned.string() + "-journal"));
    }
    const auto made = backups.makeBackup(store, "manual", Instant::now());
    EXPECT_EQ(backups.list().size(), 2u);
    for (const auto& entry : fs::directory_iterator(folder))
        EXPECT_FALSE(entry.path().filename().string().starts_with('.')) << entry.path();
    struct stat info {};
    ASSERT_EQ(::stat(made.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
    EXPECT_TRUE(LedgerStore::verify(made));
}

}  // namespace
}  // namespace copperwick
