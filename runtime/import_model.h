#pragma once

// The state behind the import screen: the files a person has dropped, what
// each will do, and the one Import action. Nothing touches the ledger until
// commit. Lives beside LedgerRuntime for the application's life; every
// operation takes the runtime, which outlives it. Main thread only: analyses
// run on their own threads and come back through the runtime's main queue.

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "core/import/bank_file.h"
#include "core/import/file_analysis.h"
#include "core/import/import_planner.h"
#include "core/model/import_batch.h"
#include "core/model/import_profile.h"
#include "core/model/ledger_enums.h"
#include "core/model/uuid.h"
#include "runtime/ledger_runtime.h"
#include "runtime/main_queue.h"
#include "runtime/observer_list.h"

namespace copperwick {

// "Copperwick couldn't read {file name}." and why, for a bank file whose
// bytes couldn't be had.
[[nodiscard]] std::string unreadableFileMessage(const std::filesystem::path& file,
                                                const BankFileProblem& problem);

// One dropped file: its bytes, what reading them found, and where the rows go.
struct ImportFile {
    struct AccountChoice {
        enum class Kind { existing, newAccount, undecided };
        Kind kind = Kind::undecided;
        std::optional<Uuid> accountID;  // for `existing`

        [[nodiscard]] static AccountChoice existing(const Uuid& id) { return {Kind::existing, id}; }
        [[nodiscard]] static AccountChoice newAccount() { return {Kind::newAccount, {}}; }
        [[nodiscard]] static AccountChoice undecided() { return {}; }
        friend bool operator==(const AccountChoice&, const AccountChoice&) = default;
    };

    struct NewAccountDraft {
        Uuid id;
        std::string name;
        std::optional<Uuid> personID;
        AccountType type = AccountType::checking;
        std::string last4;
        std::optional<std::string> profileID;
        bool isShared = false;
        friend bool operator==(const NewAccountDraft&, const NewAccountDraft&) = default;
    };

    struct LayoutHelp {
        enum class Kind { done, failed, none, working };
        Kind kind = Kind::none;
        std::string text;  // the note of `done`, the message of `failed`
        friend bool operator==(const LayoutHelp&, const LayoutHelp&) = default;
    };

    Uuid id;
    std::filesystem::path url;
    // For one statement of a file that holds several, the words that tell it
    // from the others ("card ending 1234"); "" for a whole file.
    std::string statement;
    // The file's bytes, or its statement's, shared by every copy of the card and by its analysis:
    // a bank file can run to megabytes.
    std::shared_ptr<const std::string> data;
    FileAnalysis analysis;
    AccountChoice choice;
    // The choice is Copperwick's own suggestion, not the person's.
    bool choiceSuggested = false;
    NewAccountDraft draft;
    std::optional<std::string> suggestionReason;
    std::optional<ImportPlan> plan;
    // The ledger `plan` was made from. Copies share their storage, so holding
    // it is cheap and telling it apart from the ledger at commit is too.
    std::optional<Ledger> plannedOn;
    bool include = true;
    std::set<int64_t> forcedLines;
    bool skipProblemRows = false;
    bool flipSigns = false;
    LayoutHelp layoutHelp;
    std::optional<ImportProfile> proposedProfile;
    bool savesProposedProfile = false;

    // The file's name, with the statement's words after it for a statement:
    // "Activity.ofx · card ending 1234". Its analysis and its import carry it.
    [[nodiscard]] std::string name() const;
    // Why this file can't be imported as it stands, or absent when it can.
    [[nodiscard]] std::optional<std::string> blocker() const;
    // The account the rows go to: the chosen one, or the draft's for a new one.
    [[nodiscard]] std::optional<Uuid> targetAccountID() const;
};

// What the on-device layout proposal hands back.
struct LayoutOutcome {
    struct Check {
        std::optional<ImportProfile> profile;
        bool accepted = false;
        std::string note;
        FileAnalysis analysis;
    };
    Check check;
    std::string message;
};

class IntelligenceController;

class ImportModel {
  public:
    ImportModel() = default;
    ~ImportModel();
    ImportModel(const ImportModel&) = delete;
    ImportModel& operator=(const ImportModel&) = delete;

    [[nodiscard]] const std::vector<ImportFile>& files() const { return m_files; }
    [[nodiscard]] const ImportFile* file(const Uuid& id) const;
    [[nodiscard]] bool requestFilePicker() const { return m_requestFilePicker; }
    [[nodiscard]] const std::optional<std::string>& lastResult() const { return m_lastResult; }
    [[nodiscard]] const std::optional<Uuid>& mappingFileID() const { return m_mappingFileID; }
    [[nodiscard]] int pendingAnalyses() const { return static_cast<int>(m_pending.size()); }
    // The files still being read and analysed, in the order they were dropped.
    [[nodiscard]] std::vector<std::filesystem::path> pendingFiles() const;
    [[nodiscard]] bool isCommitting() const { return m_isCommitting; }
    [[nodiscard]] bool isBusy() const;
    [[nodiscard]] std::vector<const ImportFile*> readyFiles() const;
    [[nodiscard]] int64_t totalToImport() const;
    // The batches of the last commit, in the order of their files.
    [[nodiscard]] const std::vector<ImportBatch>& lastBatches() const { return m_lastBatches; }

    void setRequestFilePicker(bool request);
    void setMappingFileID(std::optional<Uuid> id);
    void setInclude(bool include, const Uuid& id);
    void setSkipProblemRows(bool skip, const Uuid& id);
    void setForcedLines(std::set<int64_t> lines, const Uuid& id);
    void setDraft(ImportFile::NewAccountDraft draft, const Uuid& id);

    // Reads each file and starts its analysis; a file already on the list is
    // skipped. A file of several statements (OFX, CAMT.053) becomes one card
    // per statement.
    void add(const std::vector<std::filesystem::path>& urls, LedgerRuntime& runtime);
    // Waits for every analysis still running and takes them in, running the
    // runtime's main queue meanwhile. Analyses otherwise come back by
    // themselves, through that queue.
    void waitForAnalyses(LedgerRuntime& runtime);
    // `statement` names one statement of a file of several, as ImportFile's does.
    void receive(const std::filesystem::path& url, std::shared_ptr<const std::string> data,
                 FileAnalysis analysis, LedgerRuntime& runtime, const std::string& statement = {});
    void replan(const Uuid& id, LedgerRuntime& runtime);
    void setChoice(ImportFile::AccountChoice choice, const Uuid& id, LedgerRuntime& runtime);
    void setFlip(bool flag, const Uuid& id, LedgerRuntime& runtime);
    void applyMapping(ImportProfile profile, const Uuid& id, LedgerRuntime& runtime);
    // Local AI's part in the session, when it has one (it must outlive the
    // model): it reads the columns of files no layout fits when asked, and
    // looks at what an import leaves for review. With
    // `setsUpLayoutsItself`, it is also asked for every such file as it
    // arrives, as the switches "Copperwick.aiEnabled" and
    // "Copperwick.aiSetUpLayouts" allow; a missing model then goes unmentioned.
    void setIntelligence(IntelligenceController* intelligence, bool setsUpLayoutsItself = false);
    // Asks Local AI which column holds what; without it the file stays
    // unrecognised, for the mapping form.
    void setUpLayout(const Uuid& id, LedgerRuntime& runtime);
    void receiveLayout(LayoutOutcome outcome, const Uuid& id, LedgerRuntime& runtime);
    void remove(const Uuid& id);
    void clear();
    // Imports every ready file in one save; an empty folder archives nothing.
    // A file with no row to save is passed over, making no account and no
    // import record; when no file has one, nothing is backed up or saved and
    // lastResult says "Nothing to import: " and why. The work and the save
    // run in the background (isCommitting meanwhile); the model tells its
    // observers when they are done.
    void startCommit(LedgerRuntime& runtime, const std::filesystem::path& archiveFolder);
    // The same, waiting until it is done.
    void commit(LedgerRuntime& runtime, const std::filesystem::path& archiveFolder);

    // Called after every change to the model's state.
    ObserverID observe(std::function<void()> callback);
    void removeObserver(ObserverID id);

  private:
    // A bank file, or one statement of it, read and analysed away from the
    // main thread.
    struct Analysed {
        std::shared_ptr<const std::string> data;
        FileAnalysis analysis;
        std::string statement;
    };
    using ReadOutcome = std::variant<BankFileProblem, std::vector<Analysed>>;
    struct PendingFile {
        std::filesystem::path url;
        std::optional<ReadOutcome> outcome;
        // What the work threw, if it did.
        std::string error;
    };

    struct CommitJob;

    ImportFile* find(const Uuid& id);
    void finishCommit(CommitJob& job, const ApplyResult& result, LedgerRuntime& runtime);
    // Takes in the outcomes that are back, up to the first still running.
    void receiveInOrder(LedgerRuntime& runtime);
    void applySuggestion(ImportFile& file, LedgerRuntime& runtime);
    void startLayout(const Uuid& id, LedgerRuntime& runtime, bool quiet);
    void reanalyze(ImportFile& file, LedgerRuntime& runtime);
    void archive(const std::vector<std::pair<Uuid, ImportBatch>>& committed,
                 const std::filesystem::path& folder, LedgerRuntime& runtime);
    void notify();

    std::vector<ImportFile> m_files;
    // The files being read and analysed, in the order they were dropped,
    // each with its outcome once it is back.
    std::vector<PendingFile> m_pending;
    bool m_requestFilePicker = false;
    std::optional<std::string> m_lastResult;
    std::optional<Uuid> m_mappingFileID;
    bool m_isCommitting = false;
    std::vector<ImportBatch> m_lastBatches;
    IntelligenceController* m_intelligence = nullptr;
    bool m_setsUpLayoutsItself = false;
    ObserverList m_observers;
    // Tells an import finishing in the background whether the model is still there.
    std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
    // Made on first use, on the runtime's queue. Last, so that analyses
    // still running end before the rest of the model goes.
    std::unique_ptr<BackgroundWork> m_work;
};

}  // namespace copperwick
