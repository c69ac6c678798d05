#include "runtime/ledger_runtime.h"

#include <future>
#include <limits>
#include <system_error>
#include <utility>

#include "core/matching/merchant_key_index.h"
#include "core/matching/merchant_keys.h"
#include "core/matching/transfer_pairing.h"
#include "core/model/amount_limits.h"
#include "core/operations/change_history.h"
#include "core/operations/entry_error.h"
#include "core/operations/update_settings.h"
#include "core/presentation/demo_ledger.h"
#include "core/store/private_folder.h"
#include "runtime/data_folders.h"
#include "runtime/import_model.h"
#include "runtime/instant_text.h"
#include "runtime/intelligence_controller.h"

namespace copperwick {

namespace {

constexpr std::string_view kImportBackupRefusal =
    "Copperwick couldn't make its safety backup, so nothing was imported: ";

// On a thread of its own when the machine will give one; else here and now.
template <typename Work>
auto startWork(Work work) {
    try {
        return std::async(std::launch::async, std::move(work));
    } catch (const std::system_error&) {
        return std::async(std::launch::deferred, std::move(work));
    }
}

std::filesystem::path chooseDataFolder(const RuntimeOptions& options) {
    if (options.demo)
        return data_folders::newDemoFolder();
    return options.dataFolder.value_or(data_folders::standardDataFolder());
}

std::filesystem::path preferencesFile(const RuntimeOptions& options) {
    const auto folder = options.preferencesFolder.value_or(Preferences::standardFolder());
    return options.demo ? Preferences::demoFile(folder) : Preferences::liveFile(folder);
}

std::filesystem::path personalPreferencesFile(const RuntimeOptions& options) {
    return Preferences::liveFile(options.preferencesFolder.value_or(Preferences::standardFolder()));
}

}  // namespace

LedgerRuntime::LedgerRuntime(RuntimeOptions options)
    : m_ledger(Ledger::starter()),
      m_isDemo(options.demo),
      m_warmMerchantKeys(options.warmMerchantKeys),
      m_directImportWrites(options.directImportWrites),
      m_dataFolder(chooseDataFolder(options)),
      m_backups(data_folders::backupsFolder(m_dataFolder)),
      m_defaults(preferencesFile(options)),
      m_personalDefaults(personalPreferencesFile(options)),
      m_clock(std::move(options.clock)),
      m_mainQueue(options.mainQueue ? std::move(options.mainQueue)
                                    : std::make_shared<PlainQueue>()) {
    openStore();
    if (m_isDemo)
        openDemo();
}

// What one attempt at a change came to.
struct LedgerRuntime::ChangeAttempt {
    enum class Kind { saved, nothing, failed, changedElsewhere };
    Kind kind = Kind::nothing;
    std::optional<Ledger> ledger;
    LedgerDelta delta;
    int64_t magnitude = 0;
    std::string message;
    std::optional<EntryError> refusal;

    static ChangeAttempt failure(Kind kind, std::string message) {
        ChangeAttempt outcome;
        outcome.kind = kind;
        outcome.message = std::move(message);
        return outcome;
    }
};

LedgerRuntime::ChangeAttempt LedgerRuntime::attemptChange(
    const Ledger& base, int64_t magnitudeBefore, LedgerStore* store, const PossibleChange& change,
    std::future<void> safetyCopy, std::optional<EntryCopy> entryCopy) {
    using Kind = ChangeAttempt::Kind;
    Ledger copy = base;
    std::optional<LedgerDelta> delta;
    std::optional<std::string> refusal;
    std::optional<EntryError> entryRefusal;
    try {
        delta = change(copy);
    } catch (const EntryError& error) {
        entryRefusal = error;
        refusal = error.what();
    } catch (const std::exception& error) {
        // A refused entry, or amounts too large to add up: the copy goes,
        // the live ledger stays, and the person reads why.
        refusal = error.what();
    }
    if (safetyCopy.valid()) {
        try {
            safetyCopy.get();
        } catch (const std::exception& error) {
            return ChangeAttempt::failure(Kind::failed,
                                          std::string(kImportBackupRefusal) + error.what());
        }
    }
    if (refusal) {
        ChangeAttempt refused = ChangeAttempt::failure(Kind::failed, std::move(*refusal));
        refused.refusal = std::move(entryRefusal);
        return refused;
    }
    if (!delta)
        return ChangeAttempt{};
    if (!store)
        return ChangeAttempt::failure(Kind::failed, std::string(kNoStoreMessage));
    const int64_t magnitude = amount_limits::magnitudeAfter(magnitudeBefore, base, copy, *delta);
    if (magnitude > amount_limits::kLargestLedgerMagnitude && magnitude > magnitudeBefore)
        return ChangeAttempt::failure(Kind::failed, std::string(amount_limits::kTooLargeMessage));
    try {
        if (entryCopy)
            (void)entryCopy->backups->makeBackup(*store, "manual-entry", entryCopy->at);
        store->save(*delta, copy);
    } catch (const StoreError& error) {
        return ChangeAttempt::failure(error.kind() == StoreError::Case::changedElsewhere
                                          ? Kind::changedElsewhere
                                          : Kind::failed,
                                      error.what());
    } catch (const std::exception& error) {
        return ChangeAttempt::failure(Kind::failed, error.what());
    }
    ChangeAttempt saved;
    saved.kind = Kind::saved;
    saved.ledger = std::move(copy);
    saved.delta = std::move(*delta);
    saved.magnitude = magnitude;
    return saved;
}

struct LedgerRuntime::BackgroundChange {
    PossibleChange change;
    std::function<void(ApplyResult)> done;
    bool backUpBeforeImport = false;
    EntryRoad entry = EntryRoad::none;
    int attempt = 0;
    // Which launch the main queue's word is about: a word for an attempt
    // already taken in must not make the main thread wait for the next one.
    uint64_t launch = 0;
    std::future<ChangeAttempt> outcome;
};

LedgerRuntime::~LedgerRuntime() {
    close();
}

void LedgerRuntime::close() {
    // What it saves stays saved; it just isn't made live any more.
    if (m_background && m_background->outcome.valid())
        m_background->outcome.wait();
    if (m_keyWarmer.joinable()) {
        m_keyWarmer.request_stop();
        m_keyWarmer.join();
    }
    if (m_store)
        m_store->close();
    m_store.reset();
    if (!m_isDemo)
        return;
    std::error_code ignored;
    std::filesystem::remove_all(m_dataFolder, ignored);
}

namespace {

// The indexes a remembered decision and transfer pairing read, brought up to
// date with `ledger`. Only a head start: whatever stops it here is met again,
// and reported, where the indexes are really needed.
void warmIndexes(const Ledger& ledger) {
    try {
        MerchantKeyIndex::warm(ledger.transactions);
        warmTransferPairing(ledger);
    } catch (const std::exception&) {
    }
}

}  // namespace

void LedgerRuntime::warmAfterChange(Ledger replaced) {
    if (!m_warmMerchantKeys)
        return;
    // Only the chunks the change wrote are new to the indexes, so the next
    // decision finds them ready. The ledger it replaced goes here too: most
    // of its records are still shared, but freeing the thousands it alone
    // held would otherwise hold up the change's return.
    m_keyWarmer = std::jthread(
        [ledger = m_ledger, replaced = std::move(replaced)](const std::stop_token& stop) mutable {
            replaced = Ledger();
            if (!stop.stop_requested())
                warmIndexes(ledger);
        });
}

void LedgerRuntime::warmMerchantKeys() {
    if (!m_warmMerchantKeys)
        return;
    // A remembered decision looks for every line sharing its merchant key;
    // with the keys already read it costs milliseconds, not the reading of
    // the whole history. The thread reads its own copy of the ledger, and
    // stops early when the runtime goes away first.
    m_keyWarmer = std::jthread([ledger = m_ledger](const std::stop_token& stop) {
        try {
            for (const auto& transaction : ledger.transactions) {
                if (stop.stop_requested())
                    return;
                (void)MerchantKeys::held(transaction.rawDescription);
            }
        } catch (const std::exception&) {
            return;
        }
        warmIndexes(ledger);
    });
}

LocalDate LedgerRuntime::today() const {
    return LocalDate::today(*m_ledger.settings->timeZone(), m_clock());
}

ReportBundle LedgerRuntime::buildReportBundle(const ReportFilter& filter) {
    const ActivityCount counting(m_activeReportBuilds);
    return ReportBundle::build(m_ledger, filter, today());
}

UpdateActivity LedgerRuntime::updateActivity() const {
    return UpdateActivity{
        .isImporting = (m_importer && m_importer->isBusy()) || m_entryEditorCount > 0,
        .isBuildingReport = m_activeReportBuilds > 0,
        .isBuildingPDF = m_activePDFBuilds > 0,
        .isFilingWithAppleIntelligence = m_intelligence && m_intelligence->isFilingTransactions(),
        .isTidyingMerchants = m_intelligence && m_intelligence->isTidying(),
    };
}

std::filesystem::path LedgerRuntime::dataFile() const {
    return data_folders::dataFile(m_dataFolder);
}

void LedgerRuntime::openStore() {
    try {
        // What a program killed while copying left behind.
        removeAbandonedFiles(m_dataFolder);
        removeAbandonedFiles(m_backups.folder());
        auto store = std::make_unique<LedgerStore>(dataFile());
        store->allowDirectWrites(m_directImportWrites);
        Ledger loaded = store->load();
        // Counting the rows of a file of twenty years reads all of it again;
        // one whose load met records can't be empty.
        const bool wasEmpty = !store->loadFoundRecords() && store->isEmpty();
        // A new file keeps its starter categories' ids for good from here on.
        // A demo's file gets the demo's own categories at once instead; saving
        // the starter ones too would leave both sets in it.
        if (wasEmpty && !m_isDemo) {
            try {
                store->saveAll(loaded);
            } catch (const StoreError& error) {
                // Another program started the same new file a moment earlier:
                // its starter ledger is the one.
                if (error.kind() != StoreError::Case::changedElsewhere)
                    throw;
                loaded = store->load();
            }
        }
        m_store = std::move(store);
        install(std::move(loaded));
        if (!wasEmpty && !m_isDemo && m_backups.needsDailyBackup(m_clock())) {
            try {
                m_backups.makeBackup(*m_store, "daily", m_clock());
            } catch (const std::exception&) {
                // A missed daily copy is tried again at the next start.
            }
        }
    } catch (const StoreError& error) {
        // A statement that fails while the file is being opened failed to
        // open it, whatever the store calls a failed statement.
        setErrorMessage(error.kind() == StoreError::Case::sql
                            ? std::string(StoreError::open(error.detail()).what())
                            : std::string(error.what()));
    } catch (const std::exception& error) {
        setErrorMessage(error.what());
    }
}

void LedgerRuntime::install(Ledger loaded) {
    m_ledger = std::move(loaded);
    m_magnitude = amount_limits::magnitude(m_ledger);
    warmMerchantKeys();
    bumpRevision();
    if (const int unreadable = m_store->unreadableRecords(); unreadable > 0) {
        setErrorMessage(std::to_string(unreadable) +
                        " saved records couldn't be read and were skipped. They're still in "
                        "the data file.");
    }
}

bool LedgerRuntime::reload() {
    if (!m_store)
        return false;
    if (m_store->replaced()) {
        // Only a new connection sees the file that now has the name.
        m_store->close();
        m_store.reset();
        openStore();
        return m_store != nullptr;
    }
    try {
        install(m_store->load());
    } catch (const std::exception& error) {
        setErrorMessage(error.what());
        return false;
    }
    return true;
}

bool LedgerRuntime::refreshFromDisk() {
    // A change saving in the background will see another program's save itself.
    if (m_background || !m_store || !m_store->changedOnDisk())
        return false;
    return reload();
}

void LedgerRuntime::openDemo() {
    // Without a store the message already says why nothing can be saved.
    if (!m_store)
        return;
    try {
        Ledger demo = DemoLedger::make(today());
        m_store->saveAll(demo);
        m_ledger = std::move(demo);
        m_magnitude = amount_limits::magnitude(m_ledger);
    } catch (const std::exception& error) {
        setErrorMessage("Could not open the demo workspace: " + std::string(error.what()));
        return;
    }
    warmMerchantKeys();
    setSection(AppSection::reports);
    bumpRevision();
}

void LedgerRuntime::bumpRevision(LedgerDelta* delta) {
    m_revision.set(m_revision.get() + 1);
    if (m_savedChangeObservers.empty())
        return;
    // Lent to the observers rather than copied: an import's delta names
    // every line it added, and holds each line's raw text.
    SavedChange change{.revision = m_revision.get()};
    if (delta)
        change.delta = std::move(*delta);
    // An observer may remove observers; work on a copy.
    const auto observers = m_savedChangeObservers;
    for (const auto& [id, callback] : observers)
        callback(change);
    if (delta)
        *delta = std::move(*change.delta);
}

int LedgerRuntime::unreadableRecords() const {
    return m_store ? m_store->unreadableRecords() : 0;
}

LedgerRuntime::Outcome LedgerRuntime::fail(std::string message) {
    m_lastFailure = message;
    setErrorMessage(std::move(message));
    return Outcome::failed;
}

LedgerRuntime::Outcome LedgerRuntime::save(const PossibleChange& change, EntryRoad entry) {
    // One change at a time: one running in the background goes first.
    finishBackgroundChange();
    for (int attempt = 1;; ++attempt) {
        // One safety copy is enough when the entry is worked out again
        // after another program's save.
        std::optional<EntryCopy> entryCopy;
        if (entry != EntryRoad::none && attempt == 1)
            entryCopy = EntryCopy{&m_backups, m_clock()};
        ChangeAttempt tried =
            attemptChange(m_ledger, m_magnitude, m_store.get(), change, {}, entryCopy);
        // Another program saved first: what it saved stays, and this change
        // is worked out again on top of it, as if it came second.
        if (tried.kind == ChangeAttempt::Kind::changedElsewhere && attempt < kSaveAttempts &&
            reload())
            continue;
        return take(std::move(tried), entry);
    }
}

LedgerRuntime::Outcome LedgerRuntime::take(ChangeAttempt tried, EntryRoad entry) {
    m_lastFailure.reset();
    m_lastRefusal = std::move(tried.refusal);
    switch (tried.kind) {
        case ChangeAttempt::Kind::nothing:
            return Outcome::nothing;
        case ChangeAttempt::Kind::failed:
            if (entry == EntryRoad::sheet && m_lastRefusal) {
                m_lastFailure = std::move(tried.message);
                return Outcome::failed;
            }
            return fail(std::move(tried.message));
        case ChangeAttempt::Kind::changedElsewhere:
            return fail(std::move(tried.message));
        case ChangeAttempt::Kind::saved:
            break;
    }
    Ledger replaced = std::exchange(m_ledger, std::move(*tried.ledger));
    m_magnitude = tried.magnitude;
    m_lastDelta = std::move(tried.delta);
    warmAfterChange(std::move(replaced));
    bumpRevision(&m_lastDelta);
    return Outcome::saved;
}

ApplyResult LedgerRuntime::resultOf(Outcome outcome) {
    ApplyResult result;
    if (outcome == Outcome::saved) {
        result.saved = true;
        result.delta = std::exchange(m_lastDelta, {});
    } else if (outcome == Outcome::failed) {
        result.message = m_lastFailure;
        result.refusal = m_lastRefusal;
    }
    return result;
}

ApplyResult LedgerRuntime::apply(const Change& change) {
    ApplyResult result;
    applyForScreen(
        [&change](Ledger& ledger) -> std::optional<LedgerDelta> { return change(ledger); },
        [&result](ApplyResult done) { result = std::move(done); },
        std::numeric_limits<std::size_t>::max());
    return result;
}

void LedgerRuntime::applyInBackground(PossibleChange change, std::function<void(ApplyResult)> done,
                                      bool backUpBeforeImport) {
    finishBackgroundChange();
    m_lastFailure.reset();
    if (!m_store) {
        fail(std::string(kNoStoreMessage));
        done(ApplyResult{.message = m_lastFailure});
        return;
    }
    m_background = std::make_unique<BackgroundChange>();
    m_background->change = std::move(change);
    m_background->done = std::move(done);
    m_background->backUpBeforeImport = backUpBeforeImport;
    launchBackgroundChange();
}

void LedgerRuntime::applyForScreen(PossibleChange change, std::function<void(ApplyResult)> done,
                                   std::size_t longFrom) {
    if (m_ledger.transactions.size() >= longFrom) {
        applyInBackground(std::move(change), std::move(done));
        return;
    }
    done(resultOf(save(change)));
}

void LedgerRuntime::launchBackgroundChange() {
    BackgroundChange& pending = *m_background;
    ++pending.attempt;
    pending.launch = ++m_backgroundAttempts;
    // Everything the thread reads is its own copy, or the store and the
    // backups, which nothing else uses until this change is taken in.
    auto work = [base = m_ledger, magnitudeBefore = m_magnitude, store = m_store.get(),
                 backups = &m_backups, now = m_clock(), change = pending.change,
                 backUp = pending.backUpBeforeImport && pending.attempt == 1,
                 entryCopy = pending.entry != EntryRoad::none && pending.attempt == 1]() {
        std::future<void> safetyCopy;
        if (backUp) {
            safetyCopy = startWork(
                [store, backups, now] { (void)backups->makeBackup(*store, "before-import", now); });
        }
        return attemptChange(base, magnitudeBefore, store, change, std::move(safetyCopy),
                             entryCopy ? std::optional(EntryCopy{backups, now}) : std::nullopt);
    };
    pending.outcome =
        startWork([work = std::move(work), queue = m_mainQueue,
                   alive = std::weak_ptr<const bool>(m_alive), this, launch = pending.launch]() {
            ChangeAttempt outcome = work();
            queue->post([alive, this, launch] {
                if (!alive.expired() && m_background && m_background->launch == launch)
                    settleBackgroundChange();
            });
            return outcome;
        });
}

void LedgerRuntime::finishBackgroundChange() {
    // Another program's save may send the change round once more.
    while (m_background)
        settleBackgroundChange();
}

void LedgerRuntime::settleBackgroundChange() {
    ChangeAttempt tried;
    try {
        tried = m_background->outcome.get();
    } catch (const std::exception& error) {
        tried = ChangeAttempt::failure(ChangeAttempt::Kind::failed, error.what());
    }
    std::unique_ptr<BackgroundChange> pending = std::move(m_background);
    // As save() does: worked out again after another program's save.
    if (tried.kind == ChangeAttempt::Kind::changedElsewhere && pending->attempt < kSaveAttempts &&
        reload()) {
        m_background = std::move(pending);
        launchBackgroundChange();
        return;
    }
    pending->done(resultOf(take(std::move(tried), pending->entry)));
}

bool LedgerRuntime::undoLastChange() {
    std::optional<std::string> label;
    const Outcome outcome = save([&label](Ledger& ledger) {
        label = ledger.undoLabel();
        return copperwick::undoLastChange(ledger);
    });
    if (outcome != Outcome::saved)
        return false;
    m_undoneLabel = std::move(label);
    setStatusMessage("Undone.");
    return true;
}

bool LedgerRuntime::commitEntry(const Change& change) {
    return save(entryChange(change, m_store != nullptr), EntryRoad::messageBar) == Outcome::saved;
}

void LedgerRuntime::commitEntryForScreen(Change change, std::function<void(ApplyResult)> done,
                                         std::size_t longFrom) {
    PossibleChange entry = entryChange(std::move(change), m_store != nullptr);
    // Without a file the entry is refused here, in its own words.
    if (m_store && m_ledger.transactions.size() >= longFrom) {
        finishBackgroundChange();
        m_lastFailure.reset();
        m_background = std::make_unique<BackgroundChange>();
        m_background->change = std::move(entry);
        m_background->done = std::move(done);
        m_background->entry = EntryRoad::sheet;
        launchBackgroundChange();
        return;
    }
    done(resultOf(save(entry, EntryRoad::sheet)));
}

LedgerRuntime::PossibleChange LedgerRuntime::entryChange(Change change, bool canSave) {
    return [change = std::move(change), canSave](Ledger& ledger) -> std::optional<LedgerDelta> {
        LedgerDelta delta = change(ledger);
        // Checked after the entry itself, so that what was typed is
        // answered first.
        if (!canSave)
            throw EntryError(EntryError::Case::unavailable);
        return delta;
    };
}

void LedgerRuntime::undoLastChangeForScreen(std::function<void(bool)> done, std::size_t longFrom) {
    if (m_ledger.transactions.size() < longFrom) {
        done(undoLastChange());
        return;
    }
    // Read on the worker, handed over only once the undo is saved.
    auto label = std::make_shared<std::optional<std::string>>();
    applyInBackground(
        [label](Ledger& ledger) {
            *label = ledger.undoLabel();
            return copperwick::undoLastChange(ledger);
        },
        [this, label, done = std::move(done)](const ApplyResult& result) {
            if (result.saved) {
                m_undoneLabel = std::move(*label);
                setStatusMessage("Undone.");
            }
            done(result.saved);
        });
}

std::filesystem::path LedgerRuntime::backUp(std::string_view reason) {
    return m_backups.makeBackup(*m_store, reason, m_clock());
}

bool LedgerRuntime::backUpBeforeImport() {
    finishBackgroundChange();
    if (!m_store)
        return false;
    try {
        backUp("before-import");
    } catch (const std::exception& error) {
        setErrorMessage(std::string(kImportBackupRefusal) + error.what());
        return false;
    }
    return true;
}

void LedgerRuntime::backUpNow() {
    finishBackgroundChange();
    if (!m_store)
        return;
    try {
        const auto file = backUp("manual");
        setStatusMessage("Backed up to " + file.filename().string() + ".");
    } catch (const std::exception& error) {
        setErrorMessage(error.what());
    }
}

void LedgerRuntime::restore(const BackupManager::Info& backup) {
    finishBackgroundChange();
    if (m_store) {
        try {
            backUp("before-restore");
        } catch (const std::exception& error) {
            setErrorMessage(error.what());
            return;
        }
        m_store->close();
        m_store.reset();
    }
    try {
        BackupManager::restore(backup.url, dataFile());
    } catch (const std::exception& error) {
        setErrorMessage(error.what());
        // Back on whatever file now stands there.
        openStore();
        return;
    }
    openStore();
    if (m_store)
        setStatusMessage("Restored the backup from " + abbreviatedDateTime(backup.date) + ".");
}

void LedgerRuntime::setKeepSourceText(bool keep) {
    apply([keep](Ledger& ledger) {
        return updateSettings(ledger,
                              [keep](LedgerSettings& settings) { settings.keepSourceText = keep; });
    });
    if (keep || !m_store)
        return;
    try {
        m_store->deleteAllSourceLines();
    } catch (const std::exception& error) {
        setErrorMessage(error.what());
    }
}

std::optional<std::string> LedgerRuntime::sourceLine(const LedgerTransaction& transaction) {
    if (!transaction.batchID || !m_store)
        return std::nullopt;
    return m_store->sourceLine(*transaction.batchID, transaction.sourceLine);
}

ObserverID LedgerRuntime::observeRevision(std::function<void(const int64_t&)> callback) {
    return m_revision.observe(m_nextObserver++, std::move(callback));
}

ObserverID LedgerRuntime::observeSection(std::function<void(const AppSection&)> callback) {
    return m_section.observe(m_nextObserver++, std::move(callback));
}

ObserverID LedgerRuntime::observeErrorMessage(
    std::function<void(const std::optional<std::string>&)> callback) {
    return m_errorMessage.observe(m_nextObserver++, std::move(callback));
}

ObserverID LedgerRuntime::observeStatusMessage(
    std::function<void(const std::optional<std::string>&)> callback) {
    return m_statusMessage.observe(m_nextObserver++, std::move(callback));
}

ObserverID LedgerRuntime::observeTransactionsFocus(
    std::function<void(const std::optional<TransactionsFocus>&)> callback) {
    return m_transactionsFocus.observe(m_nextObserver++, std::move(callback));
}

ObserverID LedgerRuntime::observeSavedChanges(std::function<void(const SavedChange&)> callback) {
    const ObserverID id = m_nextObserver++;
    m_savedChangeObservers.emplace(id, std::move(callback));
    return id;
}

void LedgerRuntime::removeObserver(ObserverID id) {
    m_revision.remove(id) || m_section.remove(id) || m_errorMessage.remove(id) ||
        m_statusMessage.remove(id) || m_transactionsFocus.remove(id) ||
        m_savedChangeObservers.erase(id) > 0;
}

}  // namespace copperwick
