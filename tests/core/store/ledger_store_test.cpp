#include "core/store/ledger_store.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <limits>
#include <random>
#include <thread>

#include <sqlite3.h>

#include <gtest/gtest.h>

#include "core/model/record_json.h"
#include "core/model/transaction_reader.h"
#include "tests/support/imported_lines.h"
#include "tests/support/random_records.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

using testing::TempFolder;

// Direct access to the file, beside the store, to see what it really holds.
class Peek {
  public:
    explicit Peek(const std::filesystem::path& file) { sqlite3_open(file.c_str(), &m_db); }
    ~Peek() { sqlite3_close(m_db); }
    int64_t integer(const std::string& sql) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(m_db, sql.c_str(), -1, &statement, nullptr);
        int64_t value = -1;
        if (statement && sqlite3_step(statement) == SQLITE_ROW)
            value = sqlite3_column_int64(statement, 0);
        sqlite3_finalize(statement);
        return value;
    }
    void exec(const std::string& sql) {
        ASSERT_EQ(sqlite3_exec(m_db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    }
    int64_t rows(const std::string& kind) {
        return integer("SELECT COUNT(*) FROM records WHERE kind = '" + kind + "'");
    }
    // A row exactly as given, whatever quotes its text holds.
    void insert(const std::string& kind, const std::string& id, const std::string& data) {
        sqlite3_stmt* statement = nullptr;
        sqlite3_prepare_v2(m_db, "INSERT INTO records (kind, id, data) VALUES (?, ?, ?)", -1,
                           &statement, nullptr);
        sqlite3_bind_text(statement, 1, kind.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_text(statement, 2, id.c_str(), -1, SQLITE_TRANSIENT);
        sqlite3_bind_blob(statement, 3, data.data(), static_cast<int>(data.size()),
                          SQLITE_TRANSIENT);
        EXPECT_EQ(sqlite3_step(statement), SQLITE_DONE) << id;
        sqlite3_finalize(statement);
    }

  private:
    sqlite3* m_db = nullptr;
};

LedgerTransaction transaction(const std::string& note = "") {
    LedgerTransaction t{.id = Uuid::random(),
                        .accountID = Uuid::random(),
                        .date = *LocalDate::make(2026, 3, 9),
                        .amount = -1250,
                        .rawDescription = "BLUE BOTTLE COFFEE",
                        .fingerprint = "2026-03-09|-1250|BLUE BOTTLE COFFEE"};
    t.note = note;
    return t;
}

LedgerDelta changing(RecordKind kind, const std::string& id) {
    LedgerDelta delta;
    delta.change(kind, id);
    return delta;
}

TEST(LedgerStore, NewFileIsFormatTwoWithTwoTablesAndNoBackup) {
    TempFolder temp;
    const auto folder = temp / "Copperwick";
    {
        LedgerStore store(folder / "Copperwick.sqlite");
        EXPECT_TRUE(store.isEmpty());
        EXPECT_EQ(store.openedAtVersion(), 0);
    }
    struct stat info {};
    ASSERT_EQ(::stat(folder.c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);
    EXPECT_FALSE(std::filesystem::exists(folder / "Backups"));
    Peek peek(folder / "Copperwick.sqlite");
    EXPECT_EQ(peek.integer("PRAGMA user_version"), 2);
    EXPECT_EQ(peek.integer("SELECT COUNT(*) FROM sqlite_master WHERE type = 'table'"), 2);
    EXPECT_EQ(peek.integer("SELECT COUNT(*) FROM sqlite_master WHERE type = 'index'"), 0);
}

TEST(LedgerStore, OpenMakesTheFolderAndFilesPrivateButLeavesSharedPlacesAlone) {
    // A data folder made earlier with mode 0755, or 0777, stayed readable by
    // every account on the machine, and so did the 0644 data file in it.
    const auto mode = [](const std::filesystem::path& path) {
        struct stat info {};
        ::stat(path.c_str(), &info);
        return info.st_mode & 07777;
    };
    TempFolder temp;
    const auto folder = temp / "Copperwick";
    for (const auto loose : {0755u, 0777u}) {
        std::filesystem::create_directories(folder);
        ::chmod(folder.c_str(), loose);
        if (std::filesystem::exists(folder / "Copperwick.sqlite"))
            ::chmod((folder / "Copperwick.sqlite").c_str(), 0644);
        LedgerStore store(folder / "Copperwick.sqlite");
        store.saveAll(Ledger::starter());
        EXPECT_EQ(mode(folder), 0700u) << std::oct << loose;
        EXPECT_EQ(mode(folder / "Copperwick.sqlite"), 0600u) << std::oct << loose;
        EXPECT_EQ(mode(folder.string() + "-wal"), 0u) << "no log file by that name";
        EXPECT_EQ(mode(folder / "Copperwick.sqlite-wal"), 0600u);
    }

    // /tmp given on the command line: a shared place, not ours to close.
    const auto shared = temp / "shared";
    std::filesystem::create_directories(shared);
    ::chmod(shared.c_str(), 01777);
    LedgerStore store(shared / "Copperwick.sqlite");
    EXPECT_EQ(mode(shared), 01777u);
    EXPECT_EQ(mode(shared / "Copperwick.sqlite"), 0600u);
}

TEST(LedgerStore, FormatOneIsBackedUpThenMigrated) {
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    {
        LedgerStore store(file);
        store.saveAll(Ledger::starter());
    }
    Peek(file).exec("PRAGMA user_version = 1");
    {
        LedgerStore store(file);
        EXPECT_EQ(store.openedAtVersion(), 1);
    }
    EXPECT_EQ(Peek(file).integer("PRAGMA user_version"), 2);
    std::vector<std::string> backups;
    for (const auto& entry : std::filesystem::directory_iterator(temp / "Backups")) {
        backups.push_back(entry.path().filename().string());
    }
    ASSERT_EQ(backups.size(), 1u);
    EXPECT_TRUE(backups[0].ends_with("-before-format-2.sqlite")) << backups[0];
    // The copy is a data file of its own, at the old format.
    LedgerStore copy(temp / "Backups" / backups[0]);
    EXPECT_EQ(copy.load().categories.size(), 23u);
}

TEST(LedgerStore, NewerFormatIsRefusedAndLeftUntouched) {
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    { LedgerStore store(file); }
    Peek(file).exec("PRAGMA user_version = 3");
    const auto before = testing::readFile(file);
    try {
        LedgerStore store(file);
        FAIL() << "a format 3 file opened";
    } catch (const StoreError& error) {
        EXPECT_EQ(error.kind(), StoreError::Case::newerVersion);
        EXPECT_STREQ(error.what(),
                     "This data was saved by a newer Copperwick (format 3). Install the newer app "
                     "to open it.");
    }
    EXPECT_EQ(Peek(file).integer("PRAGMA user_version"), 3);
    EXPECT_EQ(testing::readFile(file), before);
}

TEST(LedgerStore, DamagedFileCannotBeOpened) {
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    testing::writeFile(file, std::string(4096, 'x'));
    try {
        LedgerStore store(file);
        FAIL() << "a damaged file opened";
    } catch (const StoreError& error) {
        EXPECT_EQ(std::string(error.what()).rfind("Copperwick couldn't", 0), 0u) << error.what();
    }
    EXPECT_EQ(testing::readFile(file), std::string(4096, 'x'));
}

TEST(LedgerStore, LedgerSurvivesSaveAndReopen) {
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    Ledger ledger = Ledger::starter();
    // In the order a load gives back, so the two values compare equal.
    ledger.people = SharedVector<Person>{{Uuid::random(), "Avery", {"AVERY K"}, 5000},
                                         {Uuid::random(), "Blake", {}}};
    ledger.accounts =
        SharedVector<Account>{Account(Uuid::random(), "Card", AccountType::creditCard),
                              Account(Uuid::random(), "Checking", AccountType::checking)};
    for (int i = 0; i < 50; ++i) {
        const auto t = transaction("n" + std::to_string(i));
        ledger.transactions.set(t.id, t);
    }
    const Merchant merchant{
        Uuid::random(), "Blue Bottle", std::nullopt, TransactionKind::expense, {"BLUE BOTTLE"}};
    ledger.merchants.set(merchant.id, merchant);
    ledger.aiFilings.set("BLUE BOTTLE",
                         AIFiling{.key = "BLUE BOTTLE", .reason = "coffee", .date = Instant{9.0}});
    ledger.batches =
        SharedVector<ImportBatch>{ImportBatch{.id = Uuid::random(), .importedAt = Instant{1.0}},
                                  ImportBatch{.id = Uuid::random(), .importedAt = Instant{2.0}}};
    ledger.changes = SharedVector<ChangeSet>{
        ChangeSet{.id = Uuid::random(), .date = Instant{1.0}, .label = "a"},
        ChangeSet{.id = Uuid::random(), .date = Instant{5.0}, .label = "b"}};
    ledger.profiles = SharedVector<ImportProfile>{ImportProfile{.id = "custom-1", .name = "Mine"}};
    ledger.settings.update([](LedgerSettings& s) { s.timeZoneID = "Europe/Berlin"; });
    {
        LedgerStore store(file);
        store.saveAll(ledger);
    }
    LedgerStore store(file);
    const Ledger loaded = store.load();
    EXPECT_EQ(store.unreadableRecords(), 0);
    // Filings are keyed by text, the one key a careless move could empty.
    ASSERT_NE(loaded.aiFilings.find("BLUE BOTTLE"), nullptr);
    EXPECT_EQ(loaded, ledger);
}

TEST(LedgerStore, ArraysLoadInTheirStatedOrder) {
    TempFolder temp;
    Ledger ledger;
    // Ids sort the other way from the wanted order, so only the sort can fix it.
    const auto low = *Uuid::parse("00000000-0000-4000-8000-000000000000");
    const auto high = *Uuid::parse("FFFFFFFF-0000-4000-8000-000000000000");
    ledger.categories = SharedVector<LedgerCategory>{{low, "Salary", CategoryGroup::income, 0},
                                                     {high, "Housing", CategoryGroup::expense, 0}};
    ledger.people = SharedVector<Person>{{low, "zed"}, {high, "Amy"}};
    ledger.changes =
        SharedVector<ChangeSet>{ChangeSet{.id = low, .date = Instant{9.0}, .label = "newer"},
                                ChangeSet{.id = high, .date = Instant{1.0}, .label = "older"}};
    LedgerStore store(temp / "Copperwick.sqlite");
    store.saveAll(ledger);
    const Ledger loaded = store.load();
    EXPECT_EQ(loaded.categories[0].name, "Housing");
    EXPECT_EQ(loaded.people[0].name, "Amy");  // plain text order: upper case first
    EXPECT_EQ(loaded.undoLabel(), "newer");
}

TEST(LedgerStore, EmptyFileGivesFreshStarterCategoriesUntilSaved) {
    TempFolder temp;
    LedgerStore store(temp / "Copperwick.sqlite");
    const auto first = store.load();
    const auto second = store.load();
    ASSERT_EQ(first.categories.size(), 23u);
    ASSERT_EQ(second.categories.size(), 23u);
    EXPECT_NE(first.categories[0].id, second.categories[0].id);

    // A file that has an account but lost its categories is not refilled.
    Ledger oneAccount;
    oneAccount.accounts.push_back(Account(Uuid::random(), "Checking", AccountType::checking));
    store.saveAll(oneAccount);
    EXPECT_TRUE(store.load().categories.empty());
}

TEST(LedgerStore, DeltaWritesOnlyWhatItNames) {
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    LedgerStore store(file);
    Ledger ledger;
    const auto kept = transaction("kept");
    const auto gone = transaction("gone");
    ledger.transactions.set(kept.id, kept);
    ledger.transactions.set(gone.id, gone);
    store.saveAll(ledger);

    // A change the delta doesn't name never reaches the file.
    ledger.transactions.update(kept.id, [](LedgerTransaction& t) { t.note = "unsaved"; });
    // A transaction named as changed but no longer in the ledger loses its row.
    ledger.transactions.erase(gone.id);
    store.save(changing(RecordKind::transaction, gone.id.text()), ledger);

    const Ledger loaded = store.load();
    EXPECT_EQ(loaded.transactions.size(), 1u);
    EXPECT_EQ(loaded.transaction(kept.id)->note, "kept");

    // An id that isn't a UUID counts as a record that doesn't exist.
    store.save(changing(RecordKind::transaction, "not-a-uuid"), ledger);
    EXPECT_EQ(Peek(file).rows("transaction"), 1);
}

TEST(LedgerStore, UnreadableRecordIsCountedSkippedAndKept) {
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    LedgerStore store(file);
    Ledger ledger = Ledger::starter();
    const auto t = transaction();
    ledger.transactions.set(t.id, t);
    store.saveAll(ledger);
    Peek(file).exec(
        "INSERT INTO records (kind, id, data) VALUES ('transaction', 'BROKEN', '{not json')");
    Peek(file).exec(
        "INSERT OR REPLACE INTO records (kind, id, data) VALUES ('settings', 'settings', "
        "'{\"timeZoneID\": 5}')");

    Ledger loaded = store.load();
    EXPECT_EQ(store.unreadableRecords(), 2);
    EXPECT_EQ(loaded.transactions.size(), 1u);
    EXPECT_EQ(loaded.settings->timeZoneID,
              "America/Los_Angeles");  // defaults stay for unreadable settings

    loaded.transactions.update(t.id, [](LedgerTransaction& x) { x.note = "edited"; });
    store.save(changing(RecordKind::transaction, t.id.text()), loaded);
    EXPECT_EQ(Peek(file).integer("SELECT COUNT(*) FROM records WHERE id = 'BROKEN'"), 1);
}

TEST(LedgerStore, FailedSaveLeavesTheFileAsItWas) {
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    LedgerStore store(file);
    Ledger ledger;
    std::vector<Uuid> ids;
    for (int i = 0; i < 20; ++i) {
        const auto t = transaction("v1");
        ids.push_back(t.id);
        ledger.transactions.set(t.id, t);
    }
    store.saveAll(ledger);

    // Fault injection at the seam: SQLite itself refuses one row halfway through.
    std::sort(ids.begin(), ids.end());
    Peek(file).exec("CREATE TRIGGER poison BEFORE INSERT ON records WHEN NEW.id = '" +
                    ids[10].text() + "' BEGIN SELECT RAISE(ABORT, 'refused by test'); END");
    (void)store.load();  // the trigger came from another connection
    LedgerDelta delta;
    for (const auto& id : ids) {
        ledger.transactions.update(id, [](LedgerTransaction& t) { t.note = "v2"; });
        delta.change(RecordKind::transaction, id);
    }
    delta.sourceLines.push_back({ids[0], 1, "raw"});
    try {
        store.save(delta, ledger);
        FAIL() << "the poisoned save went through";
    } catch (const StoreError& error) {
        EXPECT_EQ(error.kind(), StoreError::Case::sql);
        EXPECT_STREQ(error.what(), "Copperwick couldn't save: refused by test");
    }
    for (const auto& t : store.load().transactions)
        EXPECT_EQ(t.note, "v1");
    EXPECT_FALSE(store.sourceLine(ids[0], 1));

    // The store is still usable afterwards.
    Peek(file).exec("DROP TRIGGER poison");
    (void)store.load();
    store.save(delta, ledger);
    for (const auto& t : store.load().transactions)
        EXPECT_EQ(t.note, "v2");
}

TEST(LedgerStore, FullDiskRollsTheSaveBack) {
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    {
        LedgerStore store(file);
        Ledger ledger;
        for (int i = 0; i < 10; ++i) {
            const auto t = transaction("v1");
            ledger.transactions.set(t.id, t);
        }
        store.saveAll(ledger);
    }
    int pipeFDs[2];
    ASSERT_EQ(::pipe(pipeFDs), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        // A disk that fills up: no file of this process may grow past 256 KB.
        ::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{256 * 1024, 256 * 1024};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        std::string said = "saved";
        try {
            LedgerStore store(file);
            Ledger ledger = store.load();
            LedgerDelta delta;
            for (int i = 0; i < 5000; ++i) {
                const auto t = transaction(std::string(200, 'x'));
                ledger.transactions.set(t.id, t);
                delta.change(RecordKind::transaction, t.id);
            }
            store.save(delta, ledger);
        } catch (const StoreError& error) {
            said = error.what();
        }
        [[maybe_unused]] auto written = ::write(pipeFDs[1], said.data(), said.size());
        ::_exit(0);
    }
    ::close(pipeFDs[1]);
    std::string said;
    char buffer[512];
    ssize_t n = 0;
    while ((n = ::read(pipeFDs[0], buffer, sizeof(buffer))) > 0)
        said.append(buffer, static_cast<std::size_t>(n));
    ::close(pipeFDs[0]);
    int status = 0;
    ::waitpid(child, &status, 0);

    EXPECT_EQ(said.rfind("Copperwick couldn't save: ", 0), 0u) << said;
    ASSERT_TRUE(LedgerStore::verify(file));
    LedgerStore store(file);
    const Ledger ledger = store.load();
    EXPECT_EQ(ledger.transactions.size(), 10u);
    for (const auto& t : ledger.transactions)
        EXPECT_EQ(t.note, "v1");
}

// The log of a save of thousands of records is copied back into the file by
// the store's own thread: the file catches up while the store stays open and
// takes further saves, and close waits for the copy and leaves no log behind.
TEST(LedgerStore, LargeSaveIsCopiedBackWhileOpenAndCloseLeavesNoLog) {
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    const auto log = temp / "Copperwick.sqlite-wal";
    Ledger ledger;
    for (int i = 0; i < 6000; ++i) {
        const auto t = transaction(std::string(400, 'x'));
        ledger.transactions.set(t.id, t);
    }
    LedgerStore store(file);
    store.saveAll(ledger);
    EXPECT_TRUE(std::filesystem::exists(log));
    constexpr std::uintmax_t kCopied = 3'000'000;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (std::filesystem::file_size(file) < kCopied &&
           std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_GE(std::filesystem::file_size(file), kCopied) << "the log was never copied back";

    const Uuid changed = ledger.transactions.begin().key();
    ledger.transactions.update(changed, [](LedgerTransaction& t) { t.note = "after"; });
    store.save(changing(RecordKind::transaction, changed.text()), ledger);
    store.close();
    EXPECT_FALSE(std::filesystem::exists(log));
    LedgerStore reopened(file);
    EXPECT_TRUE(reopened.load().transactions == ledger.transactions);
}

// Bytes 18 and 19 of the header: 2 for a file on its log, 1 for a journal.
int fileFormatBytes(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    char header[20] = {};
    in.read(header, sizeof(header));
    return header[18] * 10 + header[19];
}

bool changedElsewhere(const std::function<void()>& save) {
    try {
        save();
    } catch (const StoreError& error) {
        return error.kind() == StoreError::Case::changedElsewhere;
    }
    return false;
}

// A store on a new file that may write an import straight in.
struct StraightIn {
    StraightIn() { store.allowDirectWrites(true); }
    TempFolder temp;
    const std::filesystem::path file = temp / "Copperwick.sqlite";
    LedgerStore store{file};
};

TEST(LedgerStore, AnImportAloneWithTheFileGoesStraightInAndBackOnItsLog) {
    StraightIn f;
    auto& [temp, file, store] = f;
    Ledger ledger = store.load();
    const auto lines = LedgerStore::kDirectWriteLines;
    store.save(testing::importLines(ledger, lines), ledger);

    // Straight in: the rows are in the file itself, not waiting in a log.
    const auto log = temp / "Copperwick.sqlite-wal";
    EXPECT_TRUE(!std::filesystem::exists(log) || std::filesystem::file_size(log) < 65536);
    EXPECT_GT(std::filesystem::file_size(file), lines * 100);
    EXPECT_FALSE(std::filesystem::exists(temp / "Copperwick.sqlite-journal"));
    EXPECT_EQ(fileFormatBytes(file), 22) << "the file is on its log again";
    EXPECT_EQ(Peek(file).integer("SELECT COUNT(*) FROM source_lines"), static_cast<int64_t>(lines));

    // The store reads the file again before it writes on top of it.
    EXPECT_TRUE(store.changedOnDisk());
    const Uuid first = ledger.transactions.begin().key();
    ledger.transactions.update(first, [](LedgerTransaction& t) { t.note = "later"; });
    EXPECT_TRUE(changedElsewhere(
        [&] { store.save(changing(RecordKind::transaction, first.text()), ledger); }));
    Ledger loaded = store.load();
    EXPECT_FALSE(store.changedOnDisk());
    loaded.transactions.update(first, [](LedgerTransaction& t) { t.note = "later"; });
    store.save(changing(RecordKind::transaction, first.text()), loaded);
    store.close();
    EXPECT_TRUE(LedgerStore(file).load().transactions == ledger.transactions);
}

TEST(LedgerStore, AnImportGoesThroughTheLogUnlessAllowedStraightIn) {
    TempFolder temp;
    LedgerStore store(temp / "Copperwick.sqlite");
    Ledger ledger = store.load();
    store.save(testing::importLines(ledger, LedgerStore::kDirectWriteLines), ledger);
    EXPECT_FALSE(store.changedOnDisk()) << "a save through the log knows itself";
    EXPECT_GT(std::filesystem::file_size(temp / "Copperwick.sqlite-wal"),
              LedgerStore::kDirectWriteLines * 100);
}

TEST(LedgerStore, AnImportGoesThroughTheLogWhileAnotherProgramHasTheFileOpen) {
    StraightIn f;
    auto& [temp, file, store] = f;
    LedgerStore other(file);
    (void)other.load();
    Ledger ledger = store.load();
    store.save(testing::importLines(ledger, LedgerStore::kDirectWriteLines), ledger);
    EXPECT_FALSE(store.changedOnDisk()) << "a save through the log knows itself";
    EXPECT_TRUE(other.changedOnDisk());

    // Not held: the other program reads the import and saves on top of it.
    Ledger seen = other.load();
    EXPECT_TRUE(seen.transactions == ledger.transactions);
    const Uuid first = seen.transactions.begin().key();
    seen.transactions.update(first, [](LedgerTransaction& t) { t.note = "other"; });
    other.save(changing(RecordKind::transaction, first.text()), seen);
    EXPECT_TRUE(store.changedOnDisk());
}

TEST(LedgerStore, AFailedImportStraightIntoTheFileLeavesItAsItWasAndLetsItGo) {
    StraightIn f;
    auto& [temp, file, store] = f;
    Ledger ledger = store.load();
    store.saveAll(ledger);
    const auto before = Peek(file).integer("SELECT COUNT(*) FROM records");
    // Text that could never be read back stops the save partway.
    auto delta = testing::importLines(ledger, LedgerStore::kDirectWriteLines, "caf\xe9");
    EXPECT_THROW(store.save(delta, ledger), StoreError);

    EXPECT_EQ(Peek(file).integer("SELECT COUNT(*) FROM records"), before);
    EXPECT_EQ(Peek(file).integer("SELECT COUNT(*) FROM source_lines"), 0);
    EXPECT_EQ(fileFormatBytes(file), 22);
    EXPECT_FALSE(std::filesystem::exists(temp / "Copperwick.sqlite-journal"));
    // Another program can open the file and save at once.
    LedgerStore other(file);
    Ledger seen = other.load();
    other.saveAll(seen);
}

TEST(LedgerStore, AnotherProgramReadsEverySaveThroughTheLogWhole) {
    // Saves that change lines spread over the whole file, as a review
    // decision does: their log is written in gathered runs, and spills past
    // SQLite's own cache before the commit.
    TempFolder temp;
    const auto file = temp / "Copperwick.sqlite";
    LedgerStore store(file);
    LedgerStore other(file);
    Ledger ledger = store.load();
    store.save(testing::importLines(ledger, 3000), ledger);
    std::vector<Uuid> ids;
    for (const auto& t : ledger.transactions)
        ids.push_back(t.id);
    for (int round = 1; round <= 6; ++round) {
        LedgerDelta delta;
        for (std::size_t i = static_cast<std::size_t>(round) % 3; i < ids.size(); i += 3) {
            ledger.transactions.update(ids[i], [&](LedgerTransaction& t) {
                t.note = "round " + std::to_string(round) + std::string(200, 'x');
            });
            delta.change(RecordKind::transaction, ids[i]);
        }
        store.save(delta, ledger);
        ASSERT_TRUE(other.changedOnDisk()) << round;
        EXPECT_TRUE(other.load().transactions == ledger.transactions) << round;
    }
    store.close();
    other.close();
    EXPECT_TRUE(LedgerStore(file).load().transactions == ledger.transactions);
}

TEST(LedgerStore, AJournalAKilledSaveLeftWithNothingToRollBackIsGoneOnOpen) {
    // Stopped after its commit (empty), or before its first sync (the header's
    // first byte is written last): SQLite passes over both and leaves them.
    const std::string unfinished =
        std::string(12, '\0') + "\x1d\x79\xa9\xc6" + std::string(4096, 'p');
    for (const std::string& journal : {std::string(), unfinished}) {
        TempFolder temp;
        const auto file = temp / "Copperwick.sqlite";
        Ledger ledger;
        {
            LedgerStore store(file);
            ledger = store.load();
            store.save(testing::importLines(ledger, 3), ledger);
        }
        testing::writeFile(file.string() + "-journal", journal);
        LedgerStore store(file);
        EXPECT_TRUE(store.load().transactions == ledger.transactions) << journal.size();
        EXPECT_FALSE(std::filesystem::exists(file.string() + "-journal")) << journal.size();
    }
}

TEST(LedgerStore, ClosedStoreRefusesEverythingButEmptyDeltasAndLookups) {
    TempFolder temp;
    LedgerStore store(temp / "Copperwick.sqlite");
    store.close();
    store.save(LedgerDelta{}, Ledger());  // nothing to do, so nothing to fail
    try {
        store.save(changing(RecordKind::settings, "settings"), Ledger());
        FAIL();
    } catch (const StoreError& error) {
        EXPECT_STREQ(error.what(), "Copperwick couldn't save: database is closed");
    }
    EXPECT_THROW((void)store.load(), StoreError);
    EXPECT_THROW((void)store.isEmpty(), StoreError);
    EXPECT_THROW(store.backup(temp / "copy.sqlite"), StoreError);
    EXPECT_FALSE(store.sourceLine(Uuid::random(), 1));
}

TEST(LedgerStore, SourceLinesAreReplacedPerBatchAndErasable) {
    TempFolder temp;
    LedgerStore store(temp / "Copperwick.sqlite");
    const auto batch = Uuid::random();
    LedgerDelta first;
    first.sourceLines = {{batch, 2, "old line two"}, {batch, 3, "old line three"}};
    store.save(first, Ledger());
    EXPECT_EQ(store.sourceLine(batch, 3), "old line three");

    // A re-import under the same batch: the batch's old lines go before the new ones land.
    LedgerDelta again;
    again.deletedSourceBatches = {batch};
    again.sourceLines = {{batch, 2, "new line two"}};
    store.save(again, Ledger());
    EXPECT_EQ(store.sourceLine(batch, 2), "new line two");
    EXPECT_FALSE(store.sourceLine(batch, 3));

    store.deleteAllSourceLines();
    EXPECT_FALSE(store.sourceLine(batch, 2));
}

using testing::awkwardText;

// Every optional field set or not at random, amounts up to the extremes, and
// now and then a nested value, which only the ordinary reader takes.
LedgerTransaction variedTransaction(std::mt19937& random) {
    LedgerTransaction t = testing::randomFlatTransaction(random);
    if (random() % 10 == 0) {
        t.suggestion = Suggestion{awkwardText(random), Uuid::random(), TransactionKind::expense,
                                  MatchMethod::ai, awkwardText(random)};
        t.splits = std::vector<TransactionSplit>{{Uuid::random(), Uuid::random(), -1, "x"}};
        t.spendingAssignment = SpendingAssignment::shared();
    }
    return t;
}

// Loads large enough to go through the batched, threaded path: several
// batches of rows, decoded on more than one thread and put back in order.
class LargeLedger : public ::testing::Test {
  protected:
    void SetUp() override {
        std::mt19937 random(29);
        ledger = Ledger::starter();
        for (int i = 0; i < 5000; ++i) {
            const auto t = variedTransaction(random);
            ledger.transactions.set(t.id, t);
        }
        // Arrays come back in id order; thousands of budgets take the batched path too.
        std::vector<Budget> budgets;
        for (int i = 0; i < 3000; ++i)
            budgets.push_back({Uuid::random(), Uuid::random(), i});
        std::sort(budgets.begin(), budgets.end(),
                  [](const Budget& a, const Budget& b) { return a.id.text() < b.id.text(); });
        ledger.budgets = SharedVector<Budget>(budgets);
        LedgerStore(file).saveAll(ledger);
    }

    TempFolder temp;
    std::filesystem::path file = temp / "Copperwick.sqlite";
    Ledger ledger;
};

TEST_F(LargeLedger, LoadsRecordForRecordAsItWasSaved) {
    // Both readers get their share: rows with nested values go the ordinary way.
    int declined = 0;
    for (const auto& t : ledger.transactions)
        declined += detail::readFlatTransaction(record_json::encode(t)) ? 0 : 1;
    EXPECT_GT(declined, 100);

    Peek peek(file);
    // Damaged rows first, in the middle and last in id order.
    for (const char* id : {"00000000", "80000000", "FFFFFFFF"})
        peek.insert("transaction", std::string(id) + "-damaged", R"({"id": ")");
    // A row no build of ours wrote, but a JSON reader takes.
    LedgerTransaction byHand = *ledger.transactions.begin();
    byHand.id = Uuid::random();
    std::string text = record_json::encode(byHand);
    text.replace(text.rfind('}'), 1, R"( , "weight" : 0.5 })");
    ASSERT_FALSE(detail::readFlatTransaction(text)) << "meant for the ordinary reader";
    peek.insert("transaction", byHand.id.text(), text);
    ledger.transactions.set(byHand.id, byHand);
    // Two more rows holding one record, filed under texts that sort before and
    // after every UUID: rows are read in id order, so the last one wins,
    // thousands of rows and several batches later.
    LedgerTransaction copy = *ledger.transactions.begin();
    copy.note = "early copy";
    peek.insert("transaction", "0-copy", record_json::encode(copy));
    copy.note = "late copy";
    peek.insert("transaction", "Z-copy", record_json::encode(copy));
    ledger.transactions.set(copy.id, copy);

    LedgerStore store(file);
    const Ledger loaded = store.load();
    EXPECT_EQ(store.unreadableRecords(), 3);
    EXPECT_EQ(loaded.transactions.size(), ledger.transactions.size());
    EXPECT_EQ(loaded, ledger);
    // Saved again, every record comes out as the same bytes.
    for (const auto& t : ledger.transactions)
        ASSERT_EQ(record_json::encode(*loaded.transaction(t.id)), record_json::encode(t));
}

TEST_F(LargeLedger, DamagedPageHalfwayThroughFailsTheLoadCleanly) {
    // Overwrite the page holding the middle transaction in id order, so that
    // SQLite fails while batches are being decoded on other threads.
    std::vector<Uuid> ids;
    for (const auto& t : ledger.transactions)
        ids.push_back(t.id);
    std::sort(ids.begin(), ids.end());
    const std::string middle = ids[ids.size() / 2].text();
    std::string bytes;
    {
        std::ifstream in(file, std::ios::binary);
        bytes.assign(std::istreambuf_iterator<char>(in), {});
    }
    const auto at = bytes.find(R"({"id":")" + middle);
    ASSERT_NE(at, std::string::npos);
    const auto pageSize = static_cast<std::size_t>(Peek(file).integer("PRAGMA page_size"));
    const auto page = at / pageSize * pageSize;
    ASSERT_GT(page, 0u);
    {
        std::fstream out(file, std::ios::binary | std::ios::in | std::ios::out);
        out.seekp(static_cast<std::streamoff>(page));
        const std::string garbage(pageSize, '\x5A');
        out.write(garbage.data(), static_cast<std::streamsize>(garbage.size()));
    }

    LedgerStore store(file);
    for (int attempt = 0; attempt < 2; ++attempt) {
        try {
            (void)store.load();
            FAIL() << "a damaged page went unnoticed";
        } catch (const StoreError& error) {
            EXPECT_EQ(error.kind(), StoreError::Case::sql);
        }
    }
}

// The copy is read where no log can be kept (a read-only folder, a copy
// handed to someone), and must hold what the live file holds, log and all.
TEST(LedgerStore, ABackupKeepsNoLogAndHoldsWhatTheLogHeld) {
    TempFolder temp;
    LedgerStore store(temp / "Copperwick.sqlite");
    store.saveAll(Ledger::starter());
    Ledger changed = store.load();
    changed.settings.update(
        [](LedgerSettings& settings) { settings.timeZoneID = "Europe/Berlin"; });
    store.saveAll(changed);

    store.backup(temp / "copy.sqlite");
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open_v2((temp / "copy.sqlite").c_str(), &db, SQLITE_OPEN_READONLY, nullptr),
              SQLITE_OK);
    sqlite3_stmt* statement = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(db, "PRAGMA journal_mode", -1, &statement, nullptr), SQLITE_OK);
    ASSERT_EQ(sqlite3_step(statement), SQLITE_ROW);
    EXPECT_STREQ(reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)), "delete");
    sqlite3_finalize(statement);
    sqlite3_close(db);
    EXPECT_FALSE(std::filesystem::exists(temp / "copy.sqlite-wal"));

    LedgerStore copy(temp / "copy.sqlite");
    EXPECT_EQ(copy.load(), changed);
}

TEST(LedgerStore, VerifyAcceptsOnlyDataFiles) {
    TempFolder temp;
    const auto text = temp / "notes.sqlite";
    testing::writeFile(text, "just some words");
    EXPECT_FALSE(LedgerStore::verify(text));
    EXPECT_FALSE(LedgerStore::verify(temp / "missing.sqlite"));
    EXPECT_FALSE(std::filesystem::exists(temp / "missing.sqlite"));  // verify never creates

    const auto other = temp / "other.sqlite";
    Peek(other).exec("CREATE TABLE t (x)");
    EXPECT_FALSE(LedgerStore::verify(other));

    LedgerStore store(temp / "Copperwick.sqlite");
    store.saveAll(Ledger::starter());
    store.backup(temp / "copy.sqlite");
    EXPECT_TRUE(LedgerStore::verify(temp / "Copperwick.sqlite"));
    EXPECT_TRUE(LedgerStore::verify(temp / "copy.sqlite"));
    LedgerStore copy(temp / "copy.sqlite");
    EXPECT_EQ(copy.load(), store.load());
}

}  // namespace
}  // namespace copperwick
