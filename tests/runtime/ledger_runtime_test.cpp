#include "runtime/ledger_runtime.h"
#include "runtime/ledger_reading.h"

#include <sys/stat.h>

#include <atomic>
#include <cstdlib>
#include <future>

#include <sqlite3.h>

#include <gtest/gtest.h>

#include "core/model/amount_limits.h"
#include "core/model/money.h"
#include "core/operations/classification.h"
#include "core/operations/entry_error.h"
#include "core/store/ledger_store.h"
#include "tests/support/imported_lines.h"
#include "tests/support/temp_folder.h"

namespace copperwick {

// The one way in to the runtime's store, to make it fail on purpose.
struct LedgerRuntimeProbe {
    static LedgerStore& store(LedgerRuntime& runtime) { return *runtime.m_store; }
};
namespace {

using testing::TempFolder;

// A runtime on a temporary data folder, with preferences kept there too.
struct Fixture {
    TempFolder temp;
    double offsetSeconds = 0;  // how far the runtime's clock runs ahead of the real one

    RuntimeOptions options(bool demo = false) {
        RuntimeOptions o;
        o.demo = demo;
        o.dataFolder = temp / "Copperwick";
        o.preferencesFolder = temp / "config";
        o.clock = [this] { return Instant{Instant::now().secondsSinceReference + offsetSeconds}; };
        return o;
    }
    std::unique_ptr<LedgerRuntime> launch() { return std::make_unique<LedgerRuntime>(options()); }
    // Options whose background work comes back through `queue`, run when the test says.
    std::shared_ptr<PlainQueue> queue = std::make_shared<PlainQueue>();
    RuntimeOptions queued() {
        RuntimeOptions o = options();
        o.mainQueue = queue;
        return o;
    }
    std::vector<BackupManager::Info> backups() {
        return BackupManager(temp / "Copperwick" / "Backups").list();
    }
};

LedgerDelta addPerson(Ledger& ledger, const std::string& name) {
    const Person person{Uuid::random(), name};
    ledger.people.push_back(person);
    LedgerDelta delta;
    delta.change(RecordKind::person, person.id);
    return delta;
}

void setUserVersion(const std::filesystem::path& file, int version) {
    sqlite3* db = nullptr;
    sqlite3_open(file.c_str(), &db);
    sqlite3_exec(db, ("PRAGMA user_version = " + std::to_string(version)).c_str(), nullptr, nullptr,
                 nullptr);
    sqlite3_close(db);
}

TEST(LedgerRuntime, FirstLaunchMakesAPrivateStarterFile) {
    Fixture f;
    auto runtime = f.launch();
    ASSERT_TRUE(runtime->hasStore()) << runtime->errorMessage().value_or("");
    EXPECT_EQ(runtime->revision(), 1);
    EXPECT_EQ(runtime->section(), AppSection::importFiles);
    EXPECT_FALSE(runtime->errorMessage());
    EXPECT_EQ(runtime->ledger().categories.size(), 23u);
    EXPECT_TRUE(f.backups().empty());
    struct stat info {};
    ASSERT_EQ(::stat((f.temp / "Copperwick").c_str(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0700u);

    // The starter categories were saved, so the next launch sees the same ids.
    const auto firstID = runtime->ledger().categories[0].id;
    runtime.reset();
    EXPECT_EQ(f.launch()->ledger().categories[0].id, firstID);
}

TEST(LedgerRuntime, DailyBackupComesAfterTwentyHours) {
    Fixture f;
    f.launch();
    EXPECT_TRUE(f.backups().empty()) << "a new file needs no copy";
    f.launch();
    ASSERT_EQ(f.backups().size(), 1u) << "a file with data and no copy gets one";
    EXPECT_EQ(f.backups()[0].reason, "daily");

    f.offsetSeconds = 19 * 3600;
    f.launch();
    EXPECT_EQ(f.backups().size(), 1u);
    f.offsetSeconds = 20 * 3600 + 60;
    f.launch();
    EXPECT_EQ(f.backups().size(), 2u);
}

TEST(LedgerRuntime, ChangesBecomeLiveOnlyOnceSaved) {
    Fixture f;
    auto runtime = f.launch();
    std::vector<int64_t> revisions;
    runtime->observeRevision([&](const int64_t& r) { revisions.push_back(r); });

    runtime->apply([](Ledger& l) { return addPerson(l, "Dana"); });
    ASSERT_EQ(runtime->ledger().people.size(), 1u);
    EXPECT_EQ(runtime->revision(), 2);
    runtime->apply([](Ledger&) { return LedgerDelta{}; });  // an empty change still counts
    EXPECT_EQ(revisions, (std::vector<int64_t>{2, 3}));
    EXPECT_EQ(f.launch()->ledger().people[0].name, "Dana");

    // The disk refuses: the live value and the revision stay.
    LedgerRuntimeProbe::store(*runtime).close();
    runtime->apply([](Ledger& l) { return addPerson(l, "Sam"); });
    EXPECT_EQ(runtime->ledger().people.size(), 1u);
    EXPECT_EQ(runtime->revision(), 3);
    EXPECT_EQ(runtime->errorMessage(), "Copperwick couldn't save: database is closed");
}

TEST(LedgerRuntime, UndoSurvivesARestartAndFailsWithoutLosingHistory) {
    Fixture f;
    const LedgerTransaction transaction{.id = Uuid::random(), .rawDescription = "SHOP"};
    {
        auto runtime = f.launch();
        runtime->apply([&](Ledger& l) {
            l.transactions.set(transaction.id, transaction);
            LedgerDelta delta;
            delta.change(RecordKind::transaction, transaction.id);
            return delta;
        });
        // The history loads in order of its steps' dates.
        runtime->apply([&](Ledger& l) { return setNote(l, "first", transaction.id, Instant{1}); });
        runtime->apply([&](Ledger& l) { return setNote(l, "second", transaction.id, Instant{2}); });
    }
    auto runtime = f.launch();
    ASSERT_EQ(runtime->ledger().changes.size(), 2u);
    EXPECT_EQ(runtime->ledger().undoLabel(), "Edit transaction note");

    EXPECT_TRUE(runtime->undoLastChange());
    EXPECT_EQ(runtime->statusMessage(), "Undone.");
    EXPECT_EQ(runtime->ledger().transaction(transaction.id)->note, "first");
    EXPECT_EQ(f.launch()->ledger().changes.size(), 1u);

    // A failed save keeps both the history and the ledger as they were.
    LedgerRuntimeProbe::store(*runtime).close();
    EXPECT_FALSE(runtime->undoLastChange());
    EXPECT_EQ(runtime->ledger().changes.size(), 1u);
    EXPECT_EQ(runtime->ledger().transaction(transaction.id)->note, "first");

    auto fresh = f.launch();
    EXPECT_TRUE(fresh->undoLastChange());
    EXPECT_FALSE(fresh->undoLastChange());
    EXPECT_EQ(fresh->ledger().transaction(transaction.id)->note, "");
}

TEST(LedgerRuntime, UnopenableFileLeavesTheStarterLedgerAndRefusesChanges) {
    Fixture f;
    f.launch();
    setUserVersion(f.temp / "Copperwick" / "Copperwick.sqlite", 7);
    auto runtime = f.launch();
    EXPECT_FALSE(runtime->hasStore());
    EXPECT_EQ(
        runtime->errorMessage(),
        "This data was saved by a newer Copperwick (format 7). Install the newer app to open it.");
    EXPECT_EQ(runtime->ledger().categories.size(), 23u);
    EXPECT_EQ(runtime->revision(), 0);

    runtime->apply([](Ledger& l) { return addPerson(l, "Dana"); });
    EXPECT_EQ(runtime->errorMessage(),
              "Copperwick can't save changes because its data file couldn't be opened.");
    EXPECT_TRUE(runtime->ledger().people.empty());

    EXPECT_FALSE(runtime->commitEntry([](Ledger& l) { return addPerson(l, "Dana"); }));
    EXPECT_EQ(runtime->errorMessage(), "This transaction can no longer be changed.");
    EXPECT_FALSE(runtime->backUpBeforeImport());
}

TEST(LedgerRuntime, EntriesAreSavedOnlyWithTheirSafetyCopy) {
    Fixture f;
    auto runtime = f.launch();
    EXPECT_FALSE(runtime->commitEntry(
        [](Ledger&) -> LedgerDelta { throw EntryError(EntryError::Case::amount); }));
    EXPECT_EQ(runtime->errorMessage(),
              "Enter a nonzero amount with no more than two decimal places.");
    EXPECT_TRUE(f.backups().empty()) << "a refused entry needs no copy";

    runtime->setErrorMessage(std::nullopt);
    EXPECT_TRUE(runtime->commitEntry([](Ledger& l) { return addPerson(l, "Dana"); }));
    ASSERT_EQ(f.backups().size(), 1u);
    EXPECT_EQ(f.backups()[0].reason, "manual entry");
    EXPECT_FALSE(runtime->errorMessage());

    // Without a place for the copy, nothing is saved.
    std::filesystem::remove_all(f.temp / "Copperwick" / "Backups");
    testing::writeFile(f.temp / "Copperwick" / "Backups", "in the way");
    EXPECT_FALSE(runtime->commitEntry([](Ledger& l) { return addPerson(l, "Sam"); }));
    EXPECT_EQ(runtime->ledger().people.size(), 1u);
    EXPECT_TRUE(runtime->errorMessage());
    EXPECT_FALSE(runtime->backUpBeforeImport());
    EXPECT_EQ(runtime->errorMessage()->rfind(
                  "Copperwick couldn't make its safety backup, so nothing was imported: ", 0),
              0u);
}

TEST(LedgerRuntime, MessagesAndSectionNotifyOnlyOnChange) {
    Fixture f;
    auto runtime = f.launch();
    int sections = 0, errors = 0;
    runtime->observeSection([&](const AppSection&) { ++sections; });
    const auto errorObserver =
        runtime->observeErrorMessage([&](const std::optional<std::string>&) { ++errors; });
    runtime->setSection(AppSection::reports);
    runtime->setSection(AppSection::reports);
    runtime->setErrorMessage("x");
    runtime->setErrorMessage("x");
    runtime->removeObserver(errorObserver);
    runtime->setErrorMessage("y");
    EXPECT_EQ(sections, 1);
    EXPECT_EQ(errors, 1);
}

TEST(LedgerRuntime, BackUpNowSaysWhereTheCopyWent) {
    Fixture f;
    auto runtime = f.launch();
    runtime->backUpNow();
    ASSERT_EQ(f.backups().size(), 1u);
    EXPECT_EQ(runtime->statusMessage(),
              "Backed up to " + f.backups()[0].url.filename().string() + ".");
    EXPECT_EQ(f.backups()[0].reason, "manual");
}

TEST(LedgerRuntime, RestoreReplacesTheFileAndKeepsTheOldOneBeside) {
    Fixture f;
    auto runtime = f.launch();
    runtime->apply([](Ledger& l) { return addPerson(l, "Before"); });
    runtime->backUpNow();
    const auto copy = f.backups()[0];
    runtime->apply([](Ledger& l) { return addPerson(l, "After"); });

    runtime->restore(copy);
    ASSERT_TRUE(runtime->hasStore());
    EXPECT_FALSE(runtime->errorMessage());
    ASSERT_EQ(runtime->ledger().people.size(), 1u);
    EXPECT_EQ(runtime->ledger().people[0].name, "Before");
    EXPECT_EQ(runtime->statusMessage()->rfind("Restored the backup from ", 0), 0u);
    EXPECT_TRUE(std::filesystem::exists(f.temp / "Copperwick" / "Copperwick.replaced.sqlite"));
    bool madeBeforeRestore = false;
    for (const auto& b : f.backups())
        madeBeforeRestore = madeBeforeRestore || b.reason == "before restore";
    EXPECT_TRUE(madeBeforeRestore);
}

TEST(LedgerRuntime, RestoreOfADamagedCopyKeepsTheCurrentFile) {
    Fixture f;
    auto runtime = f.launch();
    runtime->apply([](Ledger& l) { return addPerson(l, "Dana"); });
    const auto text = f.temp / "Copperwick-2026-03-09-141502-manual.sqlite";
    testing::writeFile(text, "not a database");

    runtime->restore(BackupManager::info(text));
    EXPECT_EQ(runtime->errorMessage(),
              "Copperwick couldn't open its data file: The backup file is damaged or isn't an "
              "Copperwick backup.");
    ASSERT_TRUE(runtime->hasStore());
    ASSERT_EQ(runtime->ledger().people.size(), 1u);
    EXPECT_EQ(runtime->ledger().people[0].name, "Dana");
}

TEST(LedgerRuntime, TurningOffSourceTextErasesKeptLines) {
    Fixture f;
    auto runtime = f.launch();
    const auto batch = Uuid::random();
    LedgerTransaction t{.id = Uuid::random(),
                        .batchID = batch,
                        .sourceLine = 4,
                        .rawDescription = "X",
                        .fingerprint = "f"};
    runtime->apply([&](Ledger& l) {
        l.transactions.set(t.id, t);
        LedgerDelta delta;
        delta.change(RecordKind::transaction, t.id);
        delta.sourceLines.push_back({batch, 4, "03/09/2026,X,-1.00"});
        return delta;
    });
    EXPECT_EQ(runtime->sourceLine(t), "03/09/2026,X,-1.00");

    runtime->setKeepSourceText(false);
    EXPECT_FALSE(runtime->ledger().settings->keepSourceText);
    EXPECT_FALSE(runtime->sourceLine(t));
    runtime->setKeepSourceText(true);
    EXPECT_TRUE(runtime->ledger().settings->keepSourceText);
    EXPECT_FALSE(runtime->sourceLine(t));
}

TEST(LedgerRuntime, UnreadableRecordsAreReportedNotFatal) {
    Fixture f;
    f.launch();
    sqlite3* db = nullptr;
    sqlite3_open((f.temp / "Copperwick" / "Copperwick.sqlite").c_str(), &db);
    sqlite3_exec(db, "INSERT INTO records VALUES ('person', 'X', '{}')", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    auto runtime = f.launch();
    EXPECT_TRUE(runtime->hasStore());
    EXPECT_EQ(runtime->errorMessage(),
              "1 saved records couldn't be read and were skipped. They're still in the data file.");
}

TEST(LedgerRuntime, DemoStaysOutOfTheRealFolders) {
    Fixture f;
    const auto temporary = f.temp / "tmp";
    std::filesystem::create_directories(temporary);
    const char* old = std::getenv("TMPDIR");
    const std::string saved = old ? old : "";
    ::setenv("TMPDIR", temporary.c_str(), 1);
    std::filesystem::path demoFolder;
    {
        LedgerRuntime demo(f.options(/*demo=*/true));
        demoFolder = demo.dataFolder();
        EXPECT_TRUE(demo.isDemo());
        EXPECT_TRUE(demo.hasStore());
        EXPECT_EQ(demo.dataFolder().parent_path(), temporary);
        EXPECT_EQ(demo.dataFolder().filename().string().rfind("Copperwick-Demo-", 0), 0u);
        EXPECT_EQ(demo.defaults().file().filename(), "Copperwick.Demo.json");
    }
    old ? ::setenv("TMPDIR", saved.c_str(), 1) : ::unsetenv("TMPDIR");
    EXPECT_FALSE(std::filesystem::exists(f.temp / "Copperwick"));
    EXPECT_FALSE(std::filesystem::exists(f.temp / "config"));
    EXPECT_FALSE(std::filesystem::exists(demoFolder)) << "a demo leaves nothing behind";
}

TEST(LedgerRuntime, DemoReadsThePersonsLocalModelAndKeepsItsSwitchesToItself) {
    Fixture f;
    const auto temporary = f.temp / "tmp";
    std::filesystem::create_directories(temporary);
    const char* old = std::getenv("TMPDIR");
    const std::string saved = old ? old : "";
    ::setenv("TMPDIR", temporary.c_str(), 1);
    const auto own = Preferences::liveFile(f.temp / "config");
    Preferences(own).set(preference_keys::aiEndpoint, "http://127.0.0.1:8080/v1");
    Preferences(own).set(preference_keys::aiModel, "llama");
    const std::string before = testing::readFile(own);
    {
        LedgerRuntime demo(f.options(/*demo=*/true));
        EXPECT_EQ(demo.modelPreferences().stringValue(preference_keys::aiEndpoint),
                  "http://127.0.0.1:8080/v1");
        EXPECT_EQ(demo.modelPreferences().stringValue(preference_keys::aiModel), "llama");
        demo.defaults().set(preference_keys::aiEnabled, false);
        EXPECT_EQ(demo.defaults().stringValue(preference_keys::aiEndpoint), std::nullopt);
    }
    old ? ::setenv("TMPDIR", saved.c_str(), 1) : ::unsetenv("TMPDIR");
    EXPECT_EQ(testing::readFile(own), before);
    EXPECT_EQ(
        Preferences(Preferences::demoFile(f.temp / "config")).boolValue(preference_keys::aiEnabled),
        false);

    // Outside a demo the one file holds both.
    LedgerRuntime live(f.options());
    EXPECT_EQ(&live.modelPreferences(), &live.defaults());
}

TEST(LedgerRuntime, DemoOpensOnTheFictionalHouseholdAndSavesItOnce) {
    Fixture f;
    const auto temporary = f.temp / "tmp";
    std::filesystem::create_directories(temporary);
    const char* old = std::getenv("TMPDIR");
    const std::string saved = old ? old : "";
    ::setenv("TMPDIR", temporary.c_str(), 1);
    {
        LedgerRuntime demo(f.options(/*demo=*/true));
        EXPECT_FALSE(demo.errorMessage()) << demo.errorMessage().value_or("");
        EXPECT_EQ(demo.dataFolder().parent_path(), temporary);
        EXPECT_EQ(demo.section(), AppSection::reports);
        EXPECT_EQ(demo.revision(), 2) << "the empty file, then the household";
        EXPECT_EQ(demo.ledger().accounts.size(), 6u);
        EXPECT_TRUE(BackupManager(demo.dataFolder() / "Backups").list().empty());

        // What the file holds is the household alone: no second set of starter
        // categories beside the demo's own.
        LedgerStore store(demo.dataFile());
        const Ledger loaded = store.load();
        EXPECT_EQ(loaded.categories.size(), demo.ledger().categories.size());
        EXPECT_EQ(loaded.transactions.size(), demo.ledger().transactions.size());
        EXPECT_EQ(loaded.batches.size(), demo.ledger().batches.size());

        // Changes go through the ordinary road and are saved.
        demo.apply([](Ledger& ledger) { return addPerson(ledger, "Visitor"); });
        EXPECT_EQ(demo.revision(), 3);
        EXPECT_EQ(store.load().people.size(), 4u);
    }
    old ? ::setenv("TMPDIR", saved.c_str(), 1) : ::unsetenv("TMPDIR");
    EXPECT_FALSE(std::filesystem::exists(f.temp / "Copperwick"));
    EXPECT_TRUE(std::filesystem::is_empty(temporary));
}

TEST(LedgerRuntime, ChangeAfterAnotherProgramsSaveIsWorkedOutOnTopOfIt) {
    // `undo` during `classify` said "Undone." and undid nothing, and an undo
    // of an import during a classify left lines that could never be removed:
    // each program saved what it had worked out from a ledger already gone.
    Fixture f;
    auto app = f.launch();
    auto command = f.launch();
    command->apply([](Ledger& l) { return addPerson(l, "Dana"); });

    // The desktop application still shows the ledger without Dana, yet its
    // next change lands beside hers, and its screens learn of her.
    int runs = 0;
    app->apply([&runs](Ledger& l) {
        ++runs;
        return addPerson(l, "Sam");
    });
    EXPECT_EQ(runs, 2) << "the change should have been worked out again on the fresh ledger";
    EXPECT_FALSE(app->errorMessage());
    std::vector<std::string> names;
    const auto reopened = f.launch();
    for (const auto& person : reopened->ledger().people)
        names.push_back(person.name);
    EXPECT_EQ(names, (std::vector<std::string>{"Dana", "Sam"}));
    EXPECT_EQ(app->ledger().people.size(), 2u);
}

TEST(LedgerRuntime, AChangeAfterAnImportWrittenStraightInIsWorkedOutOnTheFileAsItStands) {
    Fixture f;
    RuntimeOptions options = f.options();
    options.directImportWrites = true;
    LedgerRuntime command(options);
    const auto lines = LedgerStore::kDirectWriteLines;
    const auto imported =
        command.apply([lines](Ledger& ledger) { return testing::importLines(ledger, lines); });
    ASSERT_TRUE(imported.saved);

    // The store can't vouch for a file it wrote straight into, so the next
    // change reads it first and is worked out again on what is there.
    int runs = 0;
    const auto next = command.apply([&runs](Ledger& l) {
        ++runs;
        return addPerson(l, "Dana");
    });
    EXPECT_TRUE(next.saved);
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(command.ledger().transactions.size(), lines);
    const auto reopened = f.launch();
    EXPECT_EQ(reopened->ledger().transactions.size(), lines);
    ASSERT_EQ(reopened->ledger().people.size(), 1u);
    EXPECT_EQ(reopened->ledger().people[0].name, "Dana");
}

TEST(LedgerRuntime, RefreshShowsWhatTheCommandLineSaved) {
    Fixture f;
    auto app = f.launch();
    int64_t revisions = 0;
    app->observeRevision([&](const int64_t&) { ++revisions; });
    EXPECT_FALSE(app->refreshFromDisk()) << "nothing changed yet";

    f.launch()->apply([](Ledger& l) { return addPerson(l, "Dana"); });
    EXPECT_TRUE(app->refreshFromDisk());
    EXPECT_EQ(revisions, 1);
    ASSERT_EQ(app->ledger().people.size(), 1u);
    EXPECT_FALSE(app->refreshFromDisk()) << "read once is enough";

    // A restore from the command line replaces everything.
    const auto copy = BackupManager(f.temp / "Copperwick" / "Backups")
                          .makeBackup(LedgerRuntimeProbe::store(*app), "manual", Instant::now());
    f.launch()->apply([](Ledger& l) { return addPerson(l, "Sam"); });
    {
        auto command = f.launch();
        command->restore(BackupManager::info(copy));
        ASSERT_TRUE(command->hasStore()) << command->errorMessage().value_or("");
    }
    EXPECT_TRUE(app->refreshFromDisk());
    EXPECT_EQ(app->ledger().people.size(), 1u);
    app->apply([](Ledger& l) { return addPerson(l, "Alex"); });
    EXPECT_EQ(f.launch()->ledger().people.size(), 2u);
}

TEST(LedgerRuntime, ChangeThatWouldOverflowTheLedgersTotalsIsRefused) {
    // 102,482 rows of -900,000,000,000.00 imported, then `report` aborted with
    // "integer overflow in addition".
    Fixture f;
    auto runtime = f.launch();
    const auto addLines = [](int count) {
        return [count](Ledger& ledger) {
            LedgerDelta delta;
            for (int i = 0; i < count; ++i) {
                LedgerTransaction t{.id = Uuid::random(),
                                    .accountID = Uuid::random(),
                                    .date = *LocalDate::make(2026, 1, 1),
                                    .amount = -Money::kLargestAmount,
                                    .rawDescription = "HUGE"};
                ledger.transactions.set(t.id, t);
                delta.change(RecordKind::transaction, t.id);
            }
            return delta;
        };
    };
    const auto limit = amount_limits::kLargestLedgerMagnitude / Money::kLargestAmount;
    runtime->apply(addLines(static_cast<int>(limit)));
    ASSERT_FALSE(runtime->errorMessage());
    ASSERT_EQ(runtime->ledger().transactions.size(), static_cast<std::size_t>(limit));

    const int64_t revision = runtime->revision();
    runtime->apply(addLines(1));
    EXPECT_EQ(runtime->errorMessage(),
              "That would make the ledger's amounts too large for Copperwick to add up, so "
              "nothing was saved.");
    EXPECT_EQ(runtime->revision(), revision);
    EXPECT_EQ(f.launch()->ledger().transactions.size(), static_cast<std::size_t>(limit));

    // What doesn't add to the total still goes through.
    runtime->setErrorMessage(std::nullopt);
    runtime->apply([](Ledger& l) { return addPerson(l, "Dana"); });
    EXPECT_FALSE(runtime->errorMessage());
}

}  // namespace
}  // namespace copperwick

namespace copperwick {
namespace {

TEST(LedgerRuntime, ApplySaysWhatHappenedAndObserversHearTheDelta) {
    Fixture f;
    auto runtime = f.launch();
    std::vector<SavedChange> heard;
    runtime->observeSavedChanges([&](const SavedChange& change) { heard.push_back(change); });

    const auto saved = runtime->apply([](Ledger& l) { return addPerson(l, "Dana"); });
    EXPECT_TRUE(saved.saved);
    EXPECT_FALSE(saved.message);
    const Uuid dana = runtime->ledger().people[0].id;
    EXPECT_EQ(saved.delta.changed.at(RecordKind::person).texts(),
              std::vector<std::string>{dana.text()});
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard[0].revision, runtime->revision());
    EXPECT_EQ(heard[0].delta, saved.delta) << "a table redraws only what the delta names";

    // A refused change answers with its own words, even under an older error.
    runtime->setErrorMessage("An older message.");
    const auto refused = runtime->apply(
        [](Ledger&) -> LedgerDelta { throw std::runtime_error("Give the person a name."); });
    EXPECT_FALSE(refused.saved);
    EXPECT_EQ(refused.message, "Give the person a name.");
    EXPECT_TRUE(refused.delta.isEmpty());
    EXPECT_EQ(heard.size(), 1u) << "nothing saved, nothing to redraw";

    // Another program's save is read whole: no delta, so everything redraws.
    f.launch()->apply([](Ledger& l) { return addPerson(l, "Sam"); });
    ASSERT_TRUE(runtime->refreshFromDisk());
    ASSERT_EQ(heard.size(), 2u);
    EXPECT_FALSE(heard[1].delta);
}

TEST(LedgerRuntime, FocusObserversHearANewFocusOnce) {
    Fixture f;
    auto runtime = f.launch();
    int heard = 0;
    const auto id = runtime->observeTransactionsFocus(
        [&](const std::optional<TransactionsFocus>&) { ++heard; });
    const TransactionsFocus focus{.title = "SHOP", .ids = {Uuid::random()}};
    runtime->setTransactionsFocus(focus);
    runtime->setTransactionsFocus(focus);
    EXPECT_EQ(heard, 1);
    runtime->removeObserver(id);
    runtime->setTransactionsFocus(std::nullopt);
    EXPECT_EQ(heard, 1);
}

// A change held on its thread until the test opens the gate.
struct Gate {
    std::promise<void> promise;
    std::shared_future<void> opened = promise.get_future().share();
    void open() { promise.set_value(); }
};

std::vector<std::string> namesOf(const Ledger& ledger) {
    std::vector<std::string> names;
    for (const auto& person : ledger.people)
        names.push_back(person.name);
    return names;
}

TEST(LedgerRuntime, BackgroundChangeBecomesLiveOnlyWhenTheMainThreadTakesItIn) {
    Fixture f;
    auto& queue = f.queue;
    LedgerRuntime runtime(f.queued());
    std::vector<SavedChange> heard;
    runtime.observeSavedChanges([&](const SavedChange& change) { heard.push_back(change); });

    Gate gate;
    std::optional<ApplyResult> result;
    runtime.applyInBackground(
        [opened = gate.opened](Ledger& l) -> std::optional<LedgerDelta> {
            opened.wait();
            return addPerson(l, "Dana");
        },
        [&](ApplyResult r) { result = std::move(r); });
    // Meanwhile the screens go on showing the ledger as it was.
    EXPECT_TRUE(runtime.isChangingInBackground());
    EXPECT_TRUE(runtime.ledger().people.empty());
    EXPECT_FALSE(runtime.refreshFromDisk());
    EXPECT_FALSE(result);

    gate.open();
    queue->runUntil([&] { return result.has_value(); });
    EXPECT_TRUE(result->saved);
    EXPECT_FALSE(runtime.isChangingInBackground());
    EXPECT_EQ(namesOf(runtime.ledger()), std::vector<std::string>{"Dana"});
    ASSERT_EQ(heard.size(), 1u);
    EXPECT_EQ(heard[0].delta, result->delta);
    EXPECT_EQ(namesOf(f.launch()->ledger()), std::vector<std::string>{"Dana"});
}

// A sheet's entry on a long history: the refusal comes back to the sheet in
// its own case, not through the message bar, and an accepted entry is backed
// up and saved beside the window before it is live.
TEST(LedgerRuntime, AScreensEntryIsRefusedToTheSheetAndSavedBesideTheWindow) {
    Fixture f;
    LedgerRuntime runtime(f.queued());
    std::optional<ApplyResult> result;
    const auto told = [&](ApplyResult r) { result = std::move(r); };

    runtime.commitEntryForScreen(
        [](Ledger&) -> LedgerDelta { throw EntryError(EntryError::Case::amount); }, told, 0);
    f.queue->runUntil([&] { return result.has_value(); });
    ASSERT_TRUE(result->refusal);
    EXPECT_EQ(result->refusal->kind(), EntryError::Case::amount);
    EXPECT_EQ(result->message, "Enter a nonzero amount with no more than two decimal places.");
    EXPECT_FALSE(runtime.errorMessage()) << "the sheet shows it under the field";
    EXPECT_TRUE(f.backups().empty());

    result.reset();
    runtime.commitEntryForScreen([](Ledger& l) { return addPerson(l, "Dana"); }, told, 0);
    EXPECT_TRUE(runtime.isChangingInBackground());
    EXPECT_TRUE(runtime.ledger().people.empty());
    f.queue->runUntil([&] { return result.has_value(); });
    EXPECT_TRUE(result->saved);
    EXPECT_FALSE(result->refusal);
    EXPECT_EQ(namesOf(runtime.ledger()), std::vector<std::string>{"Dana"});
    ASSERT_EQ(f.backups().size(), 1u);
    EXPECT_EQ(f.backups()[0].reason, "manual entry");

    // A failed safety copy is no refusal of what was typed: the bar says it.
    result.reset();
    std::filesystem::remove_all(f.temp / "Copperwick" / "Backups");
    testing::writeFile(f.temp / "Copperwick" / "Backups", "in the way");
    runtime.commitEntryForScreen([](Ledger& l) { return addPerson(l, "Sam"); }, told, 0);
    f.queue->runUntil([&] { return result.has_value(); });
    EXPECT_FALSE(result->saved);
    EXPECT_FALSE(result->refusal);
    EXPECT_TRUE(runtime.errorMessage());
    EXPECT_EQ(namesOf(f.launch()->ledger()), std::vector<std::string>{"Dana"});
}

TEST(LedgerRuntime, ChangeMadeWhileOneRunsInTheBackgroundComesSecond) {
    // A decision made on the Review screen while an import saved in the
    // background must neither be lost under the import's save nor lose it.
    Fixture f;
    auto& queue = f.queue;
    LedgerRuntime runtime(f.queued());
    int told = 0;
    runtime.applyInBackground(
        [](Ledger& l) -> std::optional<LedgerDelta> { return addPerson(l, "Dana"); },
        [&](const ApplyResult& r) {
            ++told;
            EXPECT_TRUE(r.saved);
        });
    EXPECT_TRUE(runtime.apply([](Ledger& l) { return addPerson(l, "Sam"); }).saved);
    EXPECT_EQ(told, 1) << "the background change is taken in first";
    EXPECT_EQ(namesOf(runtime.ledger()), (std::vector<std::string>{"Dana", "Sam"}));

    // Its word on the queue arrives late and finds nothing left to do.
    queue->runPending();
    EXPECT_EQ(told, 1);
    EXPECT_EQ(namesOf(f.launch()->ledger()), (std::vector<std::string>{"Dana", "Sam"}));
}

TEST(LedgerRuntime, BackgroundChangeAfterAnotherProgramsSaveIsWorkedOutOnTopOfIt) {
    Fixture f;
    auto runtime = f.launch();
    Gate gate;
    std::atomic<int> runs = 0;
    std::optional<ApplyResult> result;
    runtime->applyInBackground(
        [&runs, opened = gate.opened](Ledger& l) -> std::optional<LedgerDelta> {
            ++runs;
            opened.wait();
            return addPerson(l, "Sam");
        },
        [&](ApplyResult r) { result = std::move(r); });
    f.launch()->apply([](Ledger& l) { return addPerson(l, "Dana"); });
    gate.open();
    runtime->finishBackgroundChange();

    ASSERT_TRUE(result);
    EXPECT_TRUE(result->saved) << result->message.value_or("");
    EXPECT_EQ(runs, 2);
    EXPECT_EQ(namesOf(runtime->ledger()), (std::vector<std::string>{"Dana", "Sam"}));
    EXPECT_EQ(namesOf(f.launch()->ledger()), (std::vector<std::string>{"Dana", "Sam"}));
}

TEST(LedgerRuntime, BackgroundImportWithoutItsSafetyCopySavesNothing) {
    Fixture f;
    auto runtime = f.launch();
    std::filesystem::remove_all(f.temp / "Copperwick" / "Backups");
    testing::writeFile(f.temp / "Copperwick" / "Backups", "in the way");
    std::optional<ApplyResult> result;
    runtime->applyInBackground(
        [](Ledger& l) -> std::optional<LedgerDelta> { return addPerson(l, "Dana"); },
        [&](ApplyResult r) { result = std::move(r); }, /*backUpBeforeImport=*/true);
    runtime->finishBackgroundChange();

    ASSERT_TRUE(result);
    EXPECT_FALSE(result->saved);
    ASSERT_TRUE(result->message);
    EXPECT_EQ(result->message->rfind(
                  "Copperwick couldn't make its safety backup, so nothing was imported: ", 0),
              0u);
    EXPECT_EQ(runtime->errorMessage(), result->message);
    EXPECT_TRUE(runtime->ledger().people.empty());
    EXPECT_TRUE(f.launch()->ledger().people.empty());
}

TEST(LedgerRuntime, BackgroundChangeOutlivesAClosedWindowSafely) {
    // The window closed while an import was still saving: its word came
    // back to a runtime that was gone.
    Fixture f;
    auto& queue = f.queue;
    bool told = false;
    {
        LedgerRuntime runtime(f.queued());
        runtime.applyInBackground(
            [](Ledger& l) -> std::optional<LedgerDelta> { return addPerson(l, "Dana"); },
            [&](const ApplyResult&) { told = true; });
    }
    queue->runPending();
    EXPECT_FALSE(told);
    EXPECT_EQ(namesOf(f.launch()->ledger()), std::vector<std::string>{"Dana"})
        << "what it saved stays saved";
}

// A reading of the people count, shown into `shown`.
std::unique_ptr<LedgerReading<std::size_t>> peopleReading(LedgerRuntime& runtime,
                                                          std::vector<std::size_t>& shown) {
    return std::make_unique<LedgerReading<std::size_t>>(
        runtime, [](const Ledger& ledger, LocalDate) { return ledger.people.size(); },
        [&shown](std::size_t people) { shown.push_back(people); });
}

TEST(LedgerRuntime, UndoBesideTheWindowSaysUndoneOnlyOnceSaved) {
    Fixture f;
    LedgerRuntime runtime(f.queued());
    const LedgerTransaction transaction{.id = Uuid::random(), .rawDescription = "SHOP"};
    runtime.apply([&](Ledger& l) {
        l.transactions.set(transaction.id, transaction);
        LedgerDelta delta;
        delta.change(RecordKind::transaction, transaction.id);
        return delta;
    });
    runtime.apply([&](Ledger& l) { return setNote(l, "first", transaction.id, Instant{1}); });

    std::optional<bool> undone;
    runtime.undoLastChangeForScreen([&](bool result) { undone = result; }, 0);
    EXPECT_FALSE(runtime.statusMessage()) << "nothing is undone until it is saved";
    EXPECT_EQ(runtime.ledger().transaction(transaction.id)->note, "first");
    f.queue->runUntil([&] { return undone.has_value(); });
    EXPECT_TRUE(*undone);
    EXPECT_EQ(runtime.statusMessage(), "Undone.");
    EXPECT_EQ(runtime.undoneLabel(), "Edit transaction note");
    EXPECT_EQ(runtime.ledger().transaction(transaction.id)->note, "");

    // With nothing left to undo, nothing is said.
    runtime.setStatusMessage(std::nullopt);
    undone.reset();
    runtime.undoLastChangeForScreen([&](bool result) { undone = result; }, 0);
    runtime.finishBackgroundChange();
    EXPECT_EQ(undone, false);
    EXPECT_FALSE(runtime.statusMessage());
}

TEST(LedgerRuntime, AScreensChangeGoesBesideTheWindowOnlyOnALongHistory) {
    Fixture f;
    LedgerRuntime runtime(f.queued());
    std::vector<std::string> told;
    const auto tell = [&told](const std::string& name) {
        return [&told, name](const ApplyResult& result) {
            if (result.saved)
                told.push_back(name);
        };
    };
    const auto adding = [](std::string name) {
        return [name](Ledger& l) -> std::optional<LedgerDelta> { return addPerson(l, name); };
    };
    runtime.applyForScreen(adding("Dana"), tell("Dana"));
    EXPECT_EQ(told, std::vector<std::string>{"Dana"}) << "a short history is saved at once";

    runtime.applyForScreen(adding("Sam"), tell("Sam"), /*longFrom=*/0);
    EXPECT_TRUE(runtime.isChangingInBackground());
    EXPECT_EQ(told.size(), 1u);
    f.queue->runUntil([&] { return told.size() == 2; });
    EXPECT_EQ(namesOf(runtime.ledger()), (std::vector<std::string>{"Dana", "Sam"}));
}

TEST(LedgerReading, ShortHistoryIsShownAtOnceLongOneWhenItsNewestReadingIsBack) {
    Fixture f;
    auto& queue = f.queue;
    LedgerRuntime runtime(f.queued());
    std::vector<std::size_t> shown;
    auto reading = peopleReading(runtime, shown);
    reading->start();
    EXPECT_EQ(shown, std::vector<std::size_t>{0});
    EXPECT_FALSE(reading->isReading());

    reading->setInBackgroundFrom(0);
    reading->start();
    EXPECT_TRUE(reading->isReading());
    ASSERT_TRUE(runtime.apply([](Ledger& l) { return addPerson(l, "Dana"); }).saved);
    reading->start();
    queue->runUntil([&] { return !reading->isReading(); });
    queue->runPending();
    // The reading of the ledger before Dana came back too, and was too old to show.
    EXPECT_EQ(shown, (std::vector<std::size_t>{0, 1}));

    // A reading still out when its screen goes is never shown.
    reading->start();
    reading.reset();
    queue->runPending();
    EXPECT_EQ(shown, (std::vector<std::size_t>{0, 1}));
}

}  // namespace
}  // namespace copperwick
