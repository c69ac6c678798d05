#pragma once

// The single live model object: owns the one current Ledger, the data file's
// store and the backups, and carries the little shared state that screens
// watch (the section, the message bar, how often the ledger has changed).
//
// The central rule: the live Ledger changes only after the disk has the
// change. Every change runs on a copy, produces a LedgerDelta, and the copy
// becomes live only once LedgerStore::save has committed. A failed save leaves
// the live value, and so the screen, showing exactly what the file holds.
//
// Main thread only, and without locks of its own: background work receives a
// copy of the ledger and brings its result back here through apply(). Not
// copyable. The status message is cleared after 5 seconds by whoever shows it;
// the error message stays until the person dismisses it.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <future>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "core/model/instant.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"
#include "core/operations/entry_error.h"
#include "core/reports/report_bundle.h"
#include "core/reports/report_filter.h"
#include "core/store/backup_manager.h"
#include "core/store/ledger_store.h"
#include "runtime/activity_count.h"
#include "runtime/app_section.h"
#include "runtime/main_queue.h"
#include "runtime/observable.h"
#include "runtime/preferences.h"
#include "runtime/update_policy.h"

namespace copperwick {

class ImportModel;
class IntelligenceController;

struct RuntimeOptions {
    bool demo = false;
    // The data folder; absent means the standard one, or a fresh temporary
    // folder for a demo.
    std::optional<std::filesystem::path> dataFolder;
    // Where preferences live; absent means the standard configuration folder.
    std::optional<std::filesystem::path> preferencesFolder;
    // The present instant; tests replace it to step through days.
    std::function<Instant()> clock = [] { return Instant::now(); };
    // Where background work hands its results to the main thread; absent
    // means a PlainQueue, run by whoever waits for the work.
    std::shared_ptr<MainQueue> mainQueue;
    // Whether every line's merchant key is worked out beside the caller
    // after a read, ahead of the first remembered decision. A window wants
    // that head start; a command that runs once and ends only pays for it,
    // on the core its own work needs.
    bool warmMerchantKeys = true;
    // Whether a large import's save may go straight into the data file
    // (LedgerStore::allowDirectWrites). The file then counts as changed, and
    // a window would read it all again on its next look; a command ends first.
    bool directImportWrites = false;
};

// What a change came to.
struct ApplyResult {
    // True once the change is on disk and live.
    bool saved = false;
    // What it changed; empty unless saved.
    LedgerDelta delta;
    // Why it wasn't saved, in the words the message bar shows; absent when
    // it was, or when the change found nothing to do.
    std::optional<std::string> message;
    // An entry typed by hand that was refused, for the sheet to show beside
    // the field it concerns; then `message` holds its words too.
    std::optional<EntryError> refusal;
};

// Told to observers after every change that reached the disk and the live
// ledger. Without a delta the whole ledger was read again (another program
// saved, or a backup was restored), and everything shown must be redrawn.
struct SavedChange {
    int64_t revision = 0;
    std::optional<LedgerDelta> delta;
};

class LedgerRuntime {
  public:
    // A change to a copy of the ledger, returning what it changed.
    using Change = std::function<LedgerDelta(Ledger&)>;
    // A change that may find nothing to do (absent).
    using PossibleChange = std::function<std::optional<LedgerDelta>(Ledger&)>;

    // Builds everything and opens the data file. Never throws: a file that
    // can't be opened leaves the runtime without a store, showing why.
    explicit LedgerRuntime(RuntimeOptions options = {});
    // A demo's temporary folder goes with it; a live data folder stays, of course.
    ~LedgerRuntime();
    // Waits for a change being saved beside the window, closes the data file
    // and takes a demo's folder away; the ledger stays readable. The
    // destructor does the same, so this is for a caller that ends the process
    // next and leaves freeing the ledger's memory to it.
    void close();
    LedgerRuntime(const LedgerRuntime&) = delete;
    LedgerRuntime& operator=(const LedgerRuntime&) = delete;

    [[nodiscard]] const Ledger& ledger() const { return m_ledger; }
    [[nodiscard]] int64_t revision() const { return m_revision.get(); }
    [[nodiscard]] AppSection section() const { return m_section.get(); }
    [[nodiscard]] const std::optional<std::string>& errorMessage() const {
        return m_errorMessage.get();
    }
    [[nodiscard]] const std::optional<std::string>& statusMessage() const {
        return m_statusMessage.get();
    }
    [[nodiscard]] const std::optional<TransactionsFocus>& transactionsFocus() const {
        return m_transactionsFocus.get();
    }
    [[nodiscard]] int entryEditorCount() const { return m_entryEditorCount; }
    [[nodiscard]] int activeReportBuilds() const { return m_activeReportBuilds; }
    [[nodiscard]] int activePDFBuilds() const { return m_activePDFBuilds; }
    [[nodiscard]] bool isDemo() const { return m_isDemo; }
    [[nodiscard]] const std::filesystem::path& dataFolder() const { return m_dataFolder; }
    [[nodiscard]] std::filesystem::path dataFile() const;
    [[nodiscard]] bool hasStore() const { return m_store != nullptr; }
    // Saved records the last reading of the file had to skip.
    [[nodiscard]] int unreadableRecords() const;
    [[nodiscard]] const BackupManager& backups() const { return m_backups; }
    [[nodiscard]] Preferences& defaults() { return m_defaults; }
    // Where the local model's address and name are read: the person's own
    // preferences, also in a demo, which has its own switches but no model
    // server of its own. Read-only, so a demo can't change them.
    [[nodiscard]] const Preferences& modelPreferences() const {
        return m_isDemo ? m_personalDefaults : m_defaults;
    }
    // The present instant by the runtime's clock: every change made through
    // the runtime dates itself by this, never by the wall clock.
    [[nodiscard]] Instant now() const { return m_clock(); }
    [[nodiscard]] const std::shared_ptr<MainQueue>& mainQueue() const { return m_mainQueue; }

    void setSection(AppSection section) { m_section.set(section); }
    void setErrorMessage(std::optional<std::string> message) {
        m_errorMessage.set(std::move(message));
    }
    void setStatusMessage(std::optional<std::string> message) {
        m_statusMessage.set(std::move(message));
    }
    void setTransactionsFocus(std::optional<TransactionsFocus> focus) {
        m_transactionsFocus.set(std::move(focus));
    }
    void setEntryEditorCount(int count) { m_entryEditorCount = count; }
    // Keeps activePDFBuilds above 0 while a PDF is made, so that an update
    // waits for it.
    [[nodiscard]] ActivityCount countPDFBuild() { return ActivityCount(m_activePDFBuilds); }
    // The importer and Local AI live beside the runtime, not in it; the
    // application names them here so that an update can see what they are
    // doing. Not owned; null when there is none. Whoever names one takes it
    // back before it goes.
    void setActivitySources(const ImportModel* importer,
                            const IntelligenceController* intelligence) {
        m_importer = importer;
        m_intelligence = intelligence;
    }
    // What the program is doing now, read afresh on each call: an update
    // installs only when none of it is under way.
    [[nodiscard]] UpdateActivity updateActivity() const;
    // Expires when the runtime goes, for those who hold on to it from
    // outside (the update controller) and must not reach a gone one.
    [[nodiscard]] std::weak_ptr<const bool> lifetime() const { return m_alive; }

    // Every ordinary change: run on a copy, save, then make the copy live.
    // When another program saved to the file since it was read here, the file
    // is read again and the change runs once more on what is there now; a
    // change that adds more than the ledger can sum up is refused. Either
    // way, a failure leaves the message and the live ledger as the file is.
    ApplyResult apply(const Change& change);
    // A change too long for the main thread, such as an import into years of
    // history: worked out and saved on a thread of its own, made live back
    // on the main thread through the main queue, and then `done` is told.
    // Until then the live ledger stays as it was, ordinary changes wait for
    // this one, and the file isn't read again. `change` touches nothing but
    // the ledger it is given and what it owns itself: it runs again on the
    // file's new contents when another program saved first. With
    // `backUpBeforeImport` the safety copy is made alongside the change, and
    // nothing is saved without it.
    void applyInBackground(PossibleChange change, std::function<void(ApplyResult)> done,
                           bool backUpBeforeImport = false);
    // A screen's change: made here and now on a short history, beside the
    // window (as applyInBackground) from `longFrom` transactions on. `done`
    // hears the result either way; on a short history before this returns.
    void applyForScreen(PossibleChange change, std::function<void(ApplyResult)> done,
                        std::size_t longFrom = kLongHistory);
    [[nodiscard]] bool isChangingInBackground() const { return m_background != nullptr; }
    // Waits for the change running in the background, if any, and makes it
    // live (or shows why it couldn't be), telling its `done` first.
    void finishBackgroundChange();
    // Takes back the last recorded change and says "Undone."; false when
    // there was nothing to undo or the save failed (the message shows why).
    bool undoLastChange();
    // The same for a screen: on a history of `longFrom` transactions or more
    // it runs on a thread of its own, as applyInBackground runs a change.
    // `done` hears whether something was undone.
    void undoLastChangeForScreen(std::function<void(bool)> done,
                                 std::size_t longFrom = kLongHistory);
    // The label of what the last successful undoLastChange took back.
    [[nodiscard]] const std::optional<std::string>& undoneLabel() const { return m_undoneLabel; }
    // When another program (the command line, a second window) saved to or
    // replaced the data file, reads it again, installs it and bumps
    // revision, so that screens show it. True when it did. Cheap when
    // nothing changed: the application asks on a timer.
    bool refreshFromDisk();
    // Entries typed by hand: refused entries and failed safety backups show
    // their message and save nothing. True when the entry was saved.
    bool commitEntry(const Change& change);
    // The same for a sheet, beside the window from `longFrom` transactions
    // on, as applyForScreen. A refusal goes back to the sheet in `refusal`
    // rather than to the message bar: the sheet stays open and shows it
    // under what was typed. The safety copy is made once the entry is
    // accepted, on the same thread as its save.
    void commitEntryForScreen(Change change, std::function<void(ApplyResult)> done,
                              std::size_t longFrom = kLongHistory);
    // The safety copy before an import; false (with the message shown) means
    // the caller must not commit.
    [[nodiscard]] bool backUpBeforeImport();
    void backUpNow();
    void restore(const BackupManager::Info& backup);
    // Turning it off erases every raw line already kept, at once and for good.
    void setKeepSourceText(bool keep);
    // Today's date in the ledger's time zone, by the runtime's clock.
    [[nodiscard]] LocalDate today() const;
    // Everything the Reports section shows for the filter, as of today.
    // activeReportBuilds counts it while it runs, so that an update waits.
    [[nodiscard]] ReportBundle buildReportBundle(const ReportFilter& filter);
    // The raw bank line a transaction came from, when it was kept.
    [[nodiscard]] std::optional<std::string> sourceLine(const LedgerTransaction& transaction);

    ObserverID observeRevision(std::function<void(const int64_t&)> callback);
    ObserverID observeSection(std::function<void(const AppSection&)> callback);
    ObserverID observeErrorMessage(std::function<void(const std::optional<std::string>&)> callback);
    ObserverID observeStatusMessage(
        std::function<void(const std::optional<std::string>&)> callback);
    ObserverID observeTransactionsFocus(
        std::function<void(const std::optional<TransactionsFocus>&)> callback);
    // Told after the revision observers, with what the change touched, so
    // that a table redraws only the rows the delta names.
    ObserverID observeSavedChanges(std::function<void(const SavedChange&)> callback);
    void removeObserver(ObserverID id);

    // From this many transactions on, a change that looks again at every
    // line (a remembered decision, an undo) is better made beside the window:
    // on 100,000 lines one takes a third of a second or more.
    static constexpr std::size_t kLongHistory = 20'000;

    static constexpr std::string_view kNoStoreMessage =
        "Copperwick can't save changes because its data file couldn't be opened.";

  private:
    // Tests reach the store to make it fail at will.
    friend struct LedgerRuntimeProbe;

    enum class Outcome {
        saved,
        nothing,
        failed,
    };
    struct BackgroundChange;
    struct ChangeAttempt;
    // Whether a change is an entry typed by hand, which is saved only with
    // a safety copy, and where its refusal is shown.
    enum class EntryRoad { none, messageBar, sheet };
    // Where and when an entry's safety copy is made.
    struct EntryCopy {
        const BackupManager* backups = nullptr;
        Instant at;
    };
    // How often a change is worked out again when other programs keep
    // saving first.
    static constexpr int kSaveAttempts = 5;

    void openStore();
    // Makes a freshly read ledger the live one.
    void install(Ledger loaded);
    // Reads the file again (a new store when the file was replaced); false
    // when it couldn't, with the message shown.
    bool reload();
    // Fills a demo's fresh file with the fictional household and shows its reports.
    void openDemo();
    // The road of every change: run on a copy, check, save, install.
    Outcome save(const PossibleChange& change, EntryRoad entry = EntryRoad::none);
    // One attempt at a change: run on a copy of `base`, checked against the
    // ledger-wide amount limit, and saved once the safety copy (when there
    // is one) is made. Touches nothing but its arguments, so it runs on the
    // main thread or beside it alike.
    // An entry's safety copy (`entryCopy`) is made after the change is
    // worked out and before it is saved, so a refused entry needs none.
    static ChangeAttempt attemptChange(const Ledger& base, int64_t magnitudeBefore,
                                       LedgerStore* store, const PossibleChange& change,
                                       std::future<void> safetyCopy = {},
                                       std::optional<EntryCopy> entryCopy = std::nullopt);
    // An entry typed by hand as a change that is refused when nothing can be saved.
    static PossibleChange entryChange(Change change, bool canSave);
    // Makes an attempt's saved ledger live, or shows why it wasn't saved:
    // on the message bar, except an entry's refusal, which a sheet shows.
    Outcome take(ChangeAttempt tried, EntryRoad entry = EntryRoad::none);
    // What apply and the screens' changes hand back, after take.
    ApplyResult resultOf(Outcome outcome);
    // Shows why a change wasn't saved, and keeps it for apply's answer.
    Outcome fail(std::string message);
    // Bumps the revision and tells the saved-change observers; no delta
    // means everything was read afresh.
    void bumpRevision(LedgerDelta* delta = nullptr);
    void warmMerchantKeys();
    void warmAfterChange(Ledger replaced);
    // Starts the background change's next attempt on a thread of its own.
    void launchBackgroundChange();
    // Takes in the finished attempt: makes it live, tries again after
    // another program's save, or shows why it failed.
    void settleBackgroundChange();
    std::filesystem::path backUp(std::string_view reason);

    Ledger m_ledger;
    // Sum of the live ledger's transaction magnitudes (amount_limits.h).
    int64_t m_magnitude = 0;
    std::optional<std::string> m_undoneLabel;
    // The delta of the last save and why the last change failed, for
    // apply to hand back.
    LedgerDelta m_lastDelta;
    std::optional<std::string> m_lastFailure;
    std::optional<EntryError> m_lastRefusal;
    Observable<int64_t> m_revision{0};
    int m_activeReportBuilds = 0;
    int m_activePDFBuilds = 0;
    Observable<AppSection> m_section{AppSection::importFiles};
    Observable<std::optional<std::string>> m_errorMessage;
    Observable<std::optional<std::string>> m_statusMessage;
    int m_entryEditorCount = 0;
    const ImportModel* m_importer = nullptr;
    const IntelligenceController* m_intelligence = nullptr;
    Observable<std::optional<TransactionsFocus>> m_transactionsFocus;
    bool m_isDemo;
    bool m_warmMerchantKeys;
    bool m_directImportWrites;
    std::filesystem::path m_dataFolder;
    std::unique_ptr<LedgerStore> m_store;
    BackupManager m_backups;
    Preferences m_defaults;
    Preferences m_personalDefaults;
    std::function<Instant()> m_clock;
    std::shared_ptr<MainQueue> m_mainQueue;
    std::map<ObserverID, std::function<void(const SavedChange&)>> m_savedChangeObservers;
    ObserverID m_nextObserver = 1;
    // Tells work posted to the main queue whether the runtime is still there.
    std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
    uint64_t m_backgroundAttempts = 0;
    // Last, so that they stop before anything they could outlive.
    std::jthread m_keyWarmer;
    std::unique_ptr<BackgroundChange> m_background;
};

}  // namespace copperwick
