#include "core/store/backup_manager.h"

#include <chrono>
#include <sstream>

#include <fmt/format.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include "core/model/uuid.h"
#include "core/store/ledger_store.h"
#include "core/store/store_error.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

namespace fs = std::filesystem;

using testing::readFile;
using testing::TempFolder;
using testing::writeFile;

void setModified(const fs::path& path, int64_t unixSeconds) {
    const std::chrono::sys_seconds when{std::chrono::seconds(unixSeconds)};
    fs::last_write_time(path, std::chrono::file_clock::from_sys(when));
}

// A placeholder copy, made by hand: prune and list look at names and dates only.
fs::path placeCopy(const fs::path& folder, std::string_view name, int64_t modified) {
    const fs::path path = folder / name;
    writeFile(path, "copy");
    setModified(path, modified);
    return path;
}

// One line per copy, newest first: "file name | reason".
std::string describe(const std::vector<BackupManager::Info>& infos) {
    std::ostringstream out;
    for (const auto& info : infos)
        out << info.url.filename().string() << " | " << info.reason << "\n";
    return out.str();
}

std::vector<std::string> fileNames(const fs::path& folder) {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

Ledger ledgerWithPerson(std::string name) {
    Ledger ledger = Ledger::starter();
    ledger.people.push_back(Person{.id = Uuid::random(), .name = std::move(name)});
    return ledger;
}

constexpr int64_t kMarch9 = 1773065702;  // 2026-03-09 14:15:02 UTC

TEST(BackupManager, StampIsUtcWholeSecondsWhateverTheLocalZone) {
    struct Case {
        double unixSeconds;
        const char* stamp;
    };
    const Case cases[] = {
        // 23:30 on 9 March in Los Angeles (PDT, UTC-7) is already the 10th in UTC.
        {1773124200.0, "2026-03-10-063000"},
        {1773065702.0, "2026-03-09-141502"},
        // Fractions are dropped, never rounded up into the next second or day.
        {1709251199.999, "2024-02-29-235959"},
        {951868800.0, "2000-03-01-000000"},
        {978307200.0, "2001-01-01-000000"},
        // Before 1970 the seconds go down to the earlier second, not toward zero.
        {-0.5, "1969-12-31-235959"},
    };
    const char* savedZone = std::getenv("TZ");
    const std::string saved = savedZone ? savedZone : "";
    setenv("TZ", "America/Los_Angeles", 1);
    tzset();
    for (const auto& c : cases)
        EXPECT_EQ(BackupManager::stamp(Instant::fromUnixSeconds(c.unixSeconds)), c.stamp)
            << c.unixSeconds;
    if (savedZone)
        setenv("TZ", saved.c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

TEST(BackupManager, ListsOnlyCopperwickCopiesWithReasonFromTheName) {
    TempFolder temp;
    const BackupManager backups(temp.path());
    placeCopy(temp.path(), "notes.sqlite", kMarch9);
    placeCopy(temp.path(), "Copperwick-old.txt", kMarch9);
    placeCopy(temp.path(), ".Copperwick-2026-03-09-141502-daily.sqlite", kMarch9 + 50);
    placeCopy(temp.path(), "Copperwick-x.sqlite", kMarch9 - 10);
    placeCopy(temp.path(), "Copperwick-2026-03-09-141502-before-import.sqlite", kMarch9);
    placeCopy(temp.path(), "Copperwick-2026-03-09-141502-daily-2.sqlite", kMarch9 + 20);
    // The name's stamp says nothing about order; the file's date does.
    placeCopy(temp.path(), "Copperwick-2020-01-01-000000-manual.sqlite", kMarch9 + 30);
    fs::create_directory(temp.path() / "Copperwick-2026-03-09-141502-manual.sqlite");

    const auto infos = backups.list();
    EXPECT_EQ(describe(infos),
              "Copperwick-2020-01-01-000000-manual.sqlite | manual\n"
              "Copperwick-2026-03-09-141502-daily-2.sqlite | daily 2\n"
              "Copperwick-2026-03-09-141502-before-import.sqlite | before import\n"
              "Copperwick-x.sqlite | backup\n");
    ASSERT_EQ(infos.size(), 4u);
    EXPECT_EQ(infos[0].bytes, 4);
    EXPECT_EQ(infos[0].date, Instant::fromUnixSeconds(kMarch9 + 30));
}

TEST(BackupManager, CopiesWithTheSameDateListInAStableOrder) {
    TempFolder temp;
    placeCopy(temp.path(), "Copperwick-2026-03-09-141502-daily.sqlite", kMarch9);
    placeCopy(temp.path(), "Copperwick-2026-03-09-141502-daily-2.sqlite", kMarch9);
    placeCopy(temp.path(), "Copperwick-2026-03-09-141503-manual.sqlite", kMarch9);
    EXPECT_EQ(describe(BackupManager(temp.path()).list()),
              "Copperwick-2026-03-09-141503-manual.sqlite | manual\n"
              "Copperwick-2026-03-09-141502-daily.sqlite | daily\n"
              "Copperwick-2026-03-09-141502-daily-2.sqlite | daily 2\n");
}

TEST(BackupManager, DailyCopyIsDueOnlyAfterMoreThanTwentyHours) {
    TempFolder temp;
    const BackupManager backups(temp.path());
    EXPECT_TRUE(backups.needsDailyBackup(Instant::fromUnixSeconds(kMarch9))) << "empty folder";

    placeCopy(temp.path(), "Copperwick-2026-03-08-000000-daily.sqlite", kMarch9 - 90000);
    // The newest copy counts, whatever its reason.
    placeCopy(temp.path(), "Copperwick-2026-03-09-141502-manual-entry.sqlite", kMarch9);
    EXPECT_FALSE(backups.needsDailyBackup(Instant::fromUnixSeconds(kMarch9 + 72000)));
    EXPECT_TRUE(backups.needsDailyBackup(Instant::fromUnixSeconds(kMarch9 + 72001)));
}

TEST(BackupManager, FolderThatCantBeReadListsNothingSoADailyCopyIsTried) {
    TempFolder temp;
    const BackupManager missing(temp.path() / "Backups");
    EXPECT_TRUE(missing.list().empty());
    EXPECT_TRUE(missing.needsDailyBackup(Instant::fromUnixSeconds(kMarch9)));

    writeFile(temp.path() / "Backups", "a file where the folder should be");
    const BackupManager notAFolder(temp.path() / "Backups");
    EXPECT_TRUE(notAFolder.list().empty());
    EXPECT_TRUE(notAFolder.needsDailyBackup(Instant::fromUnixSeconds(kMarch9)));
}

TEST(BackupManager, CopyOpensAsADataFileWithTheSameRecords) {
    TempFolder temp;
    const Ledger ledger = ledgerWithPerson("Robin");
    const BackupManager backups(temp.path() / "Data" / "Backups");
    fs::path copy;
    {
        LedgerStore store(temp.path() / "Data" / "Copperwick.sqlite");
        store.saveAll(ledger);
        copy = backups.makeBackup(store, "manual", Instant::fromUnixSeconds(kMarch9));
    }
    EXPECT_EQ(copy,
              temp.path() / "Data" / "Backups" / "Copperwick-2026-03-09-141502-manual.sqlite");
    EXPECT_TRUE(LedgerStore::verify(copy));
    LedgerStore reopened(copy);
    EXPECT_EQ(reopened.load(), ledger);

    const auto mode = fs::status(backups.folder()).permissions() & fs::perms::all;
    EXPECT_EQ(mode, fs::perms::owner_all) << "a world-readable backups folder";
}

TEST(BackupManager, CopiesInTheSameSecondGetNumberedNames) {
    TempFolder temp;
    LedgerStore store(temp.path() / "Copperwick.sqlite");
    store.saveAll(Ledger::starter());
    const BackupManager backups(temp.path() / "Backups");
    const Instant now = Instant::fromUnixSeconds(kMarch9 + 0.25);
    for (int i = 0; i < 3; ++i)
        (void)backups.makeBackup(store, "daily", now);
    (void)backups.makeBackup(store, "before-import", now);
    EXPECT_EQ(fileNames(backups.folder()), (std::vector<std::string>{
                                               "Copperwick-2026-03-09-141502-before-import.sqlite",
                                               "Copperwick-2026-03-09-141502-daily-2.sqlite",
                                               "Copperwick-2026-03-09-141502-daily-3.sqlite",
                                               "Copperwick-2026-03-09-141502-daily.sqlite",
                                           }));
}

TEST(BackupManager, ThirtyFirstCopyDropsTheOldestWhateverItsReason) {
    TempFolder temp;
    LedgerStore store(temp.path() / "Copperwick.sqlite");
    store.saveAll(Ledger::starter());
    const BackupManager backups(temp.path() / "Backups");
    fs::create_directory(backups.folder());
    // The oldest is a safety copy made before a restore: it gets no protection.
    placeCopy(backups.folder(), "Copperwick-2026-01-01-000000-before-restore.sqlite",
              kMarch9 - 100 * 86400);
    for (int day = 1; day <= 28; ++day) {
        placeCopy(backups.folder(),
                  fmt::format("Copperwick-2026-02-{:02}-000000-daily.sqlite", day),
                  kMarch9 - (40 - day) * 86400);
    }

    // 29 + 1 = 30: nothing goes.
    (void)backups.makeBackup(store, "manual", Instant::fromUnixSeconds(kMarch9));
    EXPECT_EQ(backups.list().size(), 30u);
    EXPECT_TRUE(
        fs::exists(backups.folder() / "Copperwick-2026-01-01-000000-before-restore.sqlite"));

    // 30 + 1 = 31: the oldest goes, and only it.
    const fs::path newest =
        backups.makeBackup(store, "before-import", Instant::fromUnixSeconds(kMarch9 + 1));
    const auto infos = backups.list();
    EXPECT_EQ(infos.size(), 30u);
    EXPECT_EQ(infos.front().url, newest);
    EXPECT_FALSE(
        fs::exists(backups.folder() / "Copperwick-2026-01-01-000000-before-restore.sqlite"));
    EXPECT_TRUE(fs::exists(backups.folder() / "Copperwick-2026-02-01-000000-daily.sqlite"));
}

TEST(BackupManager, FailedCopyThrowsAndDropsNothing) {
    TempFolder temp;
    const BackupManager backups(temp.path() / "Backups", 2);
    LedgerStore store(temp.path() / "Copperwick.sqlite");
    fs::create_directory(backups.folder());
    for (int i = 0; i < 3; ++i) {
        placeCopy(backups.folder(),
                  "Copperwick-2026-03-0" + std::to_string(i + 1) + "-000000-daily.sqlite",
                  kMarch9 - (10 - i) * 86400);
    }
    store.close();
    EXPECT_THROW((void)backups.makeBackup(store, "manual", Instant::fromUnixSeconds(kMarch9)),
                 StoreError);
    EXPECT_EQ(backups.list().size(), 3u);
}

TEST(BackupManager, FolderThatCantBeMadeIsReportedInPlainWords) {
    TempFolder temp;
    writeFile(temp.path() / "Data", "a file where the data folder should be");
    LedgerStore store(temp.path() / "Copperwick.sqlite");
    const BackupManager backups(temp.path() / "Data" / "Backups");
    try {
        (void)backups.makeBackup(store, "manual", Instant::fromUnixSeconds(kMarch9));
        FAIL() << "made a backup inside a file";
    } catch (const FileError& error) {
        EXPECT_EQ(std::string(error.what()), "Copperwick couldn't create the folder " +
                                                 (temp.path() / "Data" / "Backups").string() +
                                                 ": Not a directory");
    }
}

TEST(BackupManager, RestoreRefusesWhatIsntASoundCopyAndLeavesTheDataFileAlone) {
    TempFolder temp;
    const fs::path dataFile = temp.path() / "Copperwick.sqlite";
    {
        LedgerStore store(dataFile);
        store.saveAll(ledgerWithPerson("Robin"));
    }
    const std::string before = readFile(dataFile);

    writeFile(temp.path() / "text.sqlite", "Date,Amount\n2026-03-09,12.00\n");
    writeFile(temp.path() / "empty.sqlite", "");
    {
        // Sound SQLite, but not ours: no records table.
        sqlite3* db = nullptr;
        ASSERT_EQ(sqlite3_open((temp.path() / "other.sqlite").c_str(), &db), SQLITE_OK);
        ASSERT_EQ(sqlite3_exec(db, "CREATE TABLE notes(text TEXT)", nullptr, nullptr, nullptr),
                  SQLITE_OK);
        sqlite3_close(db);
    }
    for (const char* name : {"text.sqlite", "empty.sqlite", "other.sqlite", "missing.sqlite"}) {
        try {
            BackupManager::restore(temp.path() / name, dataFile);
            ADD_FAILURE() << "restored " << name;
        } catch (const StoreError& error) {
            EXPECT_EQ(std::string(error.what()),
                      "Copperwick couldn't open its data file: The backup file is damaged or isn't "
                      "an Copperwick backup.")
                << name;
        }
        EXPECT_EQ(readFile(dataFile), before) << name;
        EXPECT_FALSE(fs::exists(temp.path() / "Copperwick.replaced.sqlite")) << name;
    }
}

TEST(BackupManager, RestoreKeepsTheReplacedLedgerBesideAndLeavesNoLog) {
    TempFolder temp;
    const fs::path dataFile = temp.path() / "Copperwick.sqlite";
    const fs::path side = temp.path() / "Copperwick.replaced.sqlite";
    const BackupManager backups(temp.path() / "Backups");
    const Ledger first = ledgerWithPerson("Robin");
    // saveAll leaves rows it doesn't name, so the second state adds to the first.
    Ledger second = first;
    second.people.push_back(Person{.id = Uuid::random(), .name = "Sam"});
    Ledger third = second;
    third.people.push_back(Person{.id = Uuid::random(), .name = "Taylor"});
    fs::path firstCopy;
    fs::path secondCopy;
    {
        LedgerStore store(dataFile);
        store.saveAll(first);
        firstCopy = backups.makeBackup(store, "manual", Instant::fromUnixSeconds(kMarch9));
        store.saveAll(second);
        secondCopy = backups.makeBackup(store, "manual", Instant::fromUnixSeconds(kMarch9 + 1));
        store.saveAll(third);
    }
    // Debris where a log would be is no log of this file, and does no harm.
    writeFile(dataFile.string() + "-wal", "stale log");
    writeFile(dataFile.string() + "-shm", "stale index");

    BackupManager::restore(firstCopy, dataFile);
    EXPECT_FALSE(fs::exists(dataFile.string() + "-wal"));
    EXPECT_FALSE(fs::exists(dataFile.string() + "-shm"));
    EXPECT_EQ(LedgerStore(side).load(), third);
    EXPECT_EQ(LedgerStore(dataFile).load(), first);

    // A second restore replaces the side file with the ledger it displaces.
    BackupManager::restore(secondCopy, dataFile);
    EXPECT_EQ(LedgerStore(side).load(), first);
    EXPECT_EQ(LedgerStore(dataFile).load(), second);
    for (const auto& name : fileNames(temp.path()))
        EXPECT_FALSE(name.starts_with('.')) << "left behind: " << name;
}

TEST(BackupManager, RestoreOverADamagedDataFileKeepsItsBytesBeside) {
    TempFolder temp;
    const fs::path dataFile = temp.path() / "Copperwick.sqlite";
    const BackupManager backups(temp.path() / "Backups");
    const Ledger ledger = ledgerWithPerson("Robin");
    fs::path copy;
    {
        LedgerStore store(dataFile);
        store.saveAll(ledger);
        copy = backups.makeBackup(store, "manual", Instant::fromUnixSeconds(kMarch9));
    }
    writeFile(dataFile, "not a database any more");
    BackupManager::restore(copy, dataFile);
    EXPECT_EQ(readFile(temp.path() / "Copperwick.replaced.sqlite"), "not a database any more");
    EXPECT_EQ(LedgerStore(dataFile).load(), ledger);
}

TEST(BackupManager, RestoreWorksWhenTheDataFileIsGone) {
    TempFolder temp;
    const fs::path dataFile = temp.path() / "Copperwick.sqlite";
    const BackupManager backups(temp.path() / "Backups");
    const Ledger ledger = ledgerWithPerson("Robin");
    fs::path copy;
    {
        LedgerStore store(dataFile);
        store.saveAll(ledger);
        copy = backups.makeBackup(store, "manual", Instant::fromUnixSeconds(kMarch9));
    }
    fs::remove(dataFile);
    BackupManager::restore(copy, dataFile);
    EXPECT_FALSE(fs::exists(temp.path() / "Copperwick.replaced.sqlite"));
    LedgerStore reopened(dataFile);
    EXPECT_EQ(reopened.load(), ledger);
}

}  // namespace
}  // namespace copperwick
