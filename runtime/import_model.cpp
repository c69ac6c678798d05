#include "runtime/import_model.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <utility>
#include <variant>

#include "core/import/builtin_profiles.h"
#include "core/import/import_analyzer.h"
#include "core/import/import_commit.h"
#include "core/import/statement_files.h"
#include "core/model/amount_limits.h"
#include "core/model/text.h"
#include "core/operations/upsert_account.h"
#include "core/operations/upsert_profile.h"
#include "runtime/intelligence_controller.h"

namespace copperwick {

namespace {

std::vector<Account> accountList(const Ledger& ledger) {
    std::vector<Account> accounts;
    accounts.reserve(ledger.accounts.size());
    for (std::size_t i = 0; i < ledger.accounts.size(); ++i)
        accounts.push_back(ledger.accounts[i]);
    return accounts;
}

bool hasProfile(const Ledger& ledger, const std::string& id) {
    for (std::size_t i = 0; i < ledger.profiles.size(); ++i) {
        if (ledger.profiles[i].id == id)
            return true;
    }
    return false;
}

bool amountsTooLarge(const FileAnalysis& analysis) {
    return amount_limits::exceedsLedger(analysis.rows,
                                        [](const ParsedRow& row) { return row.amount; });
}

// A free name for `name` in `folder`: the name itself, else "{stem} 2{ext}" and up.
std::filesystem::path freeTarget(const std::filesystem::path& folder,
                                 const std::filesystem::path& name) {
    auto target = folder / name;
    const auto stem = name.stem().string();
    const auto extension = name.extension().string();
    // A dangling link still holds the name: a rename would replace it.
    const auto taken = [](const std::filesystem::path& path) {
        std::error_code error;
        return std::filesystem::symlink_status(path, error).type() !=
               std::filesystem::file_type::not_found;
    };
    for (int n = 2; taken(target); ++n)
        target = folder / (stem + " " + std::to_string(n) + extension);
    return target;
}

void moveFile(const std::filesystem::path& from, const std::filesystem::path& to) {
    std::error_code error;
    std::filesystem::rename(from, to, error);
    if (!error)
        return;
    // Another file system: copy, then take the original away.
    std::filesystem::copy_file(from, to, std::filesystem::copy_options::none);
    std::filesystem::remove(from);
}

// Another program may have imported the same card meanwhile and made the
// account this file was to make: then the file goes to that account, as it
// would have had it been dropped a moment later. Only Copperwick's own
// suggestion is revisited; a new account the person asked for stays new.
void adoptAccountsMadeMeanwhile(std::vector<ImportFile>& ready, const Ledger& ledger) {
    for (auto& file : ready) {
        if (!file.choiceSuggested ||
            file.choice.kind != ImportFile::AccountChoice::Kind::newAccount)
            continue;
        const auto suggestion = ImportAnalyzer::suggestAccount(file.analysis, accountList(ledger));
        if (const auto* existing = std::get_if<AccountSuggestion::Existing>(&suggestion.value))
            file.choice = ImportFile::AccountChoice::existing(existing->accountID);
    }
}

// The import worked out in memory: the ledger as it will be saved, what to
// save, each file's batches, and the files passed over for having nothing
// to save.
struct Worked {
    Ledger ledger;
    LedgerDelta delta;
    std::vector<std::pair<Uuid, ImportBatch>> committed;
    std::vector<std::pair<Uuid, ImportPlan>> passedOver;
};

// The plan a file already holds when it still answers for `ledger`.
bool planHolds(const ImportFile& file, const Uuid& accountID, const Ledger& ledger) {
    return file.plan && file.plannedOn && file.plan->analysisID == file.analysis.id &&
           file.plan->accountID == accountID && *file.plannedOn == ledger;
}

// Why a file passed over brings nothing, as the end of a sentence.
std::string nothingNew(const ImportFile& file, const ImportPlan& plan) {
    const std::string name = file.name();
    if (plan.rows.empty()) {
        return plan.issues.empty() ? name + " holds no transactions"
                                   : "no row of " + name + " could be read";
    }
    if (plan.duplicateCount() == static_cast<int64_t>(plan.rows.size()))
        return "every transaction in " + name + " is already saved";
    return "the transactions in " + name + " are already saved or held back as possible duplicates";
}

std::string nothingToImport(const std::vector<std::string>& reasons) {
    if (reasons.empty())
        return "Nothing to import.";
    std::string text = "Nothing to import: ";
    for (std::size_t i = 0; i < reasons.size(); ++i)
        text += (i > 0 ? "; " : "") + reasons[i];
    return text + ".";
}

// A pure function of its arguments, apart from taking the plans out of
// `ready` when it can use them.
Worked workOut(Ledger ledger, std::vector<ImportFile>& ready, Instant now) {
    Worked worked;
    LedgerDelta& delta = worked.delta;
    for (auto& file : ready) {
        const auto accountID = file.targetAccountID();
        if (!accountID)
            continue;
        // Planned again when anything it was planned from has changed: an
        // earlier file of this same commit may have added lines, or
        // another save come between. A plan is a pure function of the
        // analysis, the account's id and the ledger's lines, so an
        // unchanged ledger gives the very plan shown. Planned before the
        // account is made: a file that brings nothing makes none.
        std::optional<ImportPlan> plan;
        if (planHolds(file, *accountID, ledger)) {
            plan = std::move(file.plan);
            file.plan.reset();
        } else {
            plan = ImportPlanner::plan(file.analysis, *accountID, ledger);
        }
        if (rowsToSave(*plan, file.forcedLines) == 0) {
            worked.passedOver.emplace_back(file.id, std::move(*plan));
            continue;
        }

        const auto& profile = file.analysis.profile;
        if (file.savesProposedProfile && profile && !hasProfile(ledger, profile->id))
            delta.merge(upsertProfile(ledger, *profile));

        const auto* existing = ledger.account(accountID);
        if (file.choice.kind == ImportFile::AccountChoice::Kind::newAccount && !existing) {
            const auto& draft = file.draft;
            Account account(draft.id, std::string(text::trimmed(draft.name)), draft.type);
            if (!draft.isShared && draft.personID) {
                account.setUserIDs({*draft.personID});
            } else {
                // No users means the household; with nobody named it means nobody.
                account.isUnassigned = !draft.isShared;
            }
            account.currency = file.analysis.currencyHint.value_or(ledger.settings->reportCurrency);
            if (draft.last4.size() == 4 && std::all_of(draft.last4.begin(), draft.last4.end(),
                                                       [](char c) { return c >= '0' && c <= '9'; }))
                account.last4 = draft.last4;
            if (profile)
                account.profileID = profile->id;
            account.flipSigns = file.flipSigns;
            delta.merge(upsertAccount(ledger, std::move(account)));
        } else if (existing && existing->flipSigns != file.flipSigns) {
            Account account = *existing;
            account.flipSigns = file.flipSigns;
            delta.merge(upsertAccount(ledger, std::move(account)));
        }

        std::vector<ImportCommitItem> items;
        items.push_back(ImportCommitItem{file.analysis, std::move(*plan), file.forcedLines});
        auto result = commitImport(ledger, items, now);
        delta.merge(std::move(result.delta));
        for (auto& batch : result.batches)
            worked.committed.emplace_back(file.id, std::move(batch));
    }
    worked.ledger = std::move(ledger);
    return worked;
}

}  // namespace

std::string ImportFile::name() const {
    const std::string fileName = url.filename().string();
    return statement.empty() ? fileName : StatementFiles::partName(fileName, statement);
}

std::optional<std::string> ImportFile::blocker() const {
    if (layoutHelp.kind == LayoutHelp::Kind::working)
        return "Local AI is reading this file's columns.";
    if (analysis.problem)
        return analysis.problem;
    if (amountsTooLarge(analysis))
        return std::string(amount_limits::kFileTooLargeMessage);
    if (choice.kind == AccountChoice::Kind::undecided)
        return "Choose which account this file belongs to.";
    if (choice.kind == AccountChoice::Kind::newAccount && text::trimmed(draft.name).empty())
        return "Give the new account a name.";
    if (!analysis.issues.empty() && !skipProblemRows)
        return "Some rows couldn't be read. Fix the file, or choose to skip those rows.";
    return std::nullopt;
}

std::optional<Uuid> ImportFile::targetAccountID() const {
    switch (choice.kind) {
        case AccountChoice::Kind::existing:
            return choice.accountID;
        case AccountChoice::Kind::newAccount:
            return draft.id;
        case AccountChoice::Kind::undecided:
            break;
    }
    return std::nullopt;
}

ImportModel::~ImportModel() = default;

const ImportFile* ImportModel::file(const Uuid& id) const {
    for (const auto& file : m_files) {
        if (file.id == id)
            return &file;
    }
    return nullptr;
}

ImportFile* ImportModel::find(const Uuid& id) {
    return const_cast<ImportFile*>(std::as_const(*this).file(id));
}

std::vector<std::filesystem::path> ImportModel::pendingFiles() const {
    std::vector<std::filesystem::path> files;
    for (const auto& pending : m_pending)
        files.push_back(pending.url);
    return files;
}

bool ImportModel::isBusy() const {
    return !m_pending.empty() || m_isCommitting ||
           std::any_of(m_files.begin(), m_files.end(), [](const ImportFile& file) {
               return file.layoutHelp.kind == ImportFile::LayoutHelp::Kind::working;
           });
}

std::vector<const ImportFile*> ImportModel::readyFiles() const {
    std::vector<const ImportFile*> ready;
    for (const auto& file : m_files) {
        if (file.include && !file.blocker())
            ready.push_back(&file);
    }
    return ready;
}

int64_t ImportModel::totalToImport() const {
    int64_t total = 0;
    for (const auto* file : readyFiles()) {
        if (!file->plan)
            continue;
        total += file->plan->newCount() + file->plan->replacesPendingCount();
        for (const auto* row : file->plan->possibleDuplicates()) {
            if (file->forcedLines.contains(row->row.line))
                ++total;
        }
    }
    return total;
}

void ImportModel::setRequestFilePicker(bool request) {
    m_requestFilePicker = request;
    notify();
}

void ImportModel::setMappingFileID(std::optional<Uuid> id) {
    m_mappingFileID = std::move(id);
    notify();
}

void ImportModel::setInclude(bool include, const Uuid& id) {
    if (auto* file = find(id)) {
        file->include = include;
        notify();
    }
}

void ImportModel::setSkipProblemRows(bool skip, const Uuid& id) {
    if (auto* file = find(id)) {
        file->skipProblemRows = skip;
        notify();
    }
}

void ImportModel::setForcedLines(std::set<int64_t> lines, const Uuid& id) {
    if (auto* file = find(id)) {
        file->forcedLines = std::move(lines);
        notify();
    }
}

void ImportModel::setDraft(ImportFile::NewAccountDraft draft, const Uuid& id) {
    if (auto* file = find(id)) {
        file->draft = std::move(draft);
        notify();
    }
}

void ImportModel::add(const std::vector<std::filesystem::path>& urls, LedgerRuntime& runtime) {
    if (urls.empty())
        return;
    const auto profiles = allProfiles(runtime.ledger());
    for (const auto& url : urls) {
        if (std::any_of(m_files.begin(), m_files.end(),
                        [&](const ImportFile& file) { return file.url == url; }) ||
            std::any_of(m_pending.begin(), m_pending.end(),
                        [&](const PendingFile& pending) { return pending.url == url; }))
            continue;
        m_pending.push_back(PendingFile{url});
        if (!m_work)
            m_work = std::make_unique<BackgroundWork>(runtime.mainQueue());
        // Reading is work too: a bank file may run to megabytes, on a slow
        // disk. The job keeps its own copy of the layouts: the model may be
        // gone before it ends.
        m_work->run(
            [url, profiles]() -> ReadOutcome {
                auto read = readBankFile(url);
                if (auto* problem = std::get_if<BankFileProblem>(&read))
                    return std::move(*problem);
                const std::string name = url.filename().string();
                std::vector<Analysed> analysed;
                for (auto& part : StatementFiles::split(name, std::get<std::string>(read))) {
                    auto bytes = std::make_shared<const std::string>(std::move(part.data));
                    auto analysis = ImportAnalyzer::analyze(name, *bytes, profiles, false);
                    analysis.fileName = StatementFiles::partName(name, part.label);
                    analysed.push_back({std::move(bytes), std::move(analysis), part.label});
                }
                if (analysed.empty()) {
                    auto bytes =
                        std::make_shared<const std::string>(std::move(std::get<std::string>(read)));
                    auto analysis = ImportAnalyzer::analyze(name, *bytes, profiles, false);
                    analysed.push_back({std::move(bytes), std::move(analysis), {}});
                }
                return analysed;
            },
            [this, url, &runtime](WorkResult<ReadOutcome> result) {
                const auto slot =
                    std::find_if(m_pending.begin(), m_pending.end(),
                                 [&](const PendingFile& pending) { return pending.url == url; });
                if (slot == m_pending.end())
                    return;
                slot->outcome =
                    result.value ? std::move(*result.value) : ReadOutcome(BankFileProblem{});
                slot->error = std::move(result.error);
                receiveInOrder(runtime);
            });
    }
    notify();
}

void ImportModel::receiveInOrder(LedgerRuntime& runtime) {
    // Cards come in the order the files were dropped, whichever analysis
    // ends first, so that a drop of several files reads the same each time.
    while (!m_pending.empty() && m_pending.front().outcome) {
        PendingFile pending = std::move(m_pending.front());
        m_pending.erase(m_pending.begin());
        auto& outcome = *pending.outcome;
        if (!pending.error.empty()) {
            runtime.setErrorMessage("Copperwick couldn't read " + pending.url.filename().string() +
                                    ".");
        } else if (auto* problem = std::get_if<BankFileProblem>(&outcome)) {
            runtime.setErrorMessage(unreadableFileMessage(pending.url, *problem));
        } else {
            for (auto& analysed : std::get<std::vector<Analysed>>(outcome)) {
                receive(pending.url, std::move(analysed.data), std::move(analysed.analysis),
                        runtime, analysed.statement);
            }
            continue;
        }
        notify();
    }
}

void ImportModel::waitForAnalyses(LedgerRuntime& runtime) {
    runtime.mainQueue()->runUntil([this] { return m_pending.empty(); });
}

void ImportModel::receive(const std::filesystem::path& url, std::shared_ptr<const std::string> data,
                          FileAnalysis analysis, LedgerRuntime& runtime,
                          const std::string& statement) {
    if (std::any_of(m_files.begin(), m_files.end(), [&](const ImportFile& file) {
            return file.url == url && file.statement == statement;
        }))
        return;
    const Ledger& ledger = runtime.ledger();

    ImportFile file;
    file.id = Uuid::random();
    file.url = url;
    file.statement = statement;
    file.data = std::move(data);
    file.analysis = std::move(analysis);
    file.analysis.fileName = file.name();
    auto& draft = file.draft;
    draft.id = Uuid::random();
    draft.name = file.analysis.profile ? file.analysis.profile->name : url.stem().string();
    if (!ledger.people.empty())
        draft.personID = ledger.people[0].id;
    draft.type = file.analysis.typeHint.value_or(AccountType::checking);
    draft.last4 = file.analysis.digitHints.empty() ? "" : file.analysis.digitHints.front();
    if (file.analysis.profile)
        draft.profileID = file.analysis.profile->id;

    // A layout worked out from the file is told before anything is saved,
    // and is taught at commit so that the bank's next file is recognised.
    if (file.analysis.layoutWorkedOut && file.analysis.profile) {
        file.layoutHelp = {ImportFile::LayoutHelp::Kind::done, *file.analysis.layoutWorkedOut};
        file.proposedProfile = file.analysis.profile;
        file.savesProposedProfile = true;
    }

    applySuggestion(file, runtime);

    if (file.choice.kind == ImportFile::AccountChoice::Kind::newAccount) {
        for (const auto& other : m_files) {
            if (other.choice.kind == ImportFile::AccountChoice::Kind::newAccount &&
                other.draft.profileID == file.draft.profileID &&
                other.draft.last4 == file.draft.last4 && other.draft.type == file.draft.type &&
                other.analysis.currencyHint == file.analysis.currencyHint) {
                file.draft = other.draft;
                file.suggestionReason = "Goes to the same new account as " + other.name() + ".";
                break;
            }
        }
    }

    const Uuid id = file.id;
    m_files.push_back(std::move(file));
    replan(id, runtime);
    const ImportFile* added = this->file(id);
    // Only a bank export in columns nobody recognised: its gaps say so.
    if (m_intelligence && m_setsUpLayoutsItself && added && !added->analysis.profile &&
        !added->analysis.layoutGaps.empty()) {
        const auto on = m_intelligence->switches();
        if (on.enabled && on.setUpLayouts)
            startLayout(id, runtime, /*quiet=*/true);
    }
    notify();
}

void ImportModel::applySuggestion(ImportFile& file, LedgerRuntime& runtime) {
    const auto suggestion =
        ImportAnalyzer::suggestAccount(file.analysis, accountList(runtime.ledger()));
    std::visit(
        [&](const auto& value) {
            using T = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<T, AccountSuggestion::Existing>) {
                file.choice = ImportFile::AccountChoice::existing(value.accountID);
                file.suggestionReason = "Matched automatically: " + value.reason + ".";
            } else if constexpr (std::is_same_v<T, AccountSuggestion::Choose>) {
                file.choice = ImportFile::AccountChoice::undecided();
                file.suggestionReason = value.reason;
            } else if constexpr (std::is_same_v<T, AccountSuggestion::New>) {
                file.choice = ImportFile::AccountChoice::newAccount();
                file.draft.name = value.name;
                file.draft.type = value.type;
                file.draft.last4 = value.last4.value_or("");
                file.draft.profileID = value.profileID;
                file.suggestionReason = "A new account. Check the name and owner.";
            } else {
                file.choice = ImportFile::AccountChoice::undecided();
                file.suggestionReason.reset();
            }
        },
        suggestion.value);
    file.choiceSuggested = true;

    if (file.choice.kind == ImportFile::AccountChoice::Kind::existing) {
        const auto* account = runtime.ledger().account(file.choice.accountID);
        if (account && account->flipSigns != file.flipSigns) {
            file.flipSigns = account->flipSigns;
            reanalyze(file, runtime);
        }
    }
}

void ImportModel::reanalyze(ImportFile& file, LedgerRuntime& runtime) {
    const std::string name = file.url.filename().string();
    if (file.analysis.profile) {
        auto workedOut = std::move(file.analysis.layoutWorkedOut);
        file.analysis =
            ImportAnalyzer::analyze(name, *file.data, *file.analysis.profile, file.flipSigns);
        file.analysis.layoutWorkedOut = std::move(workedOut);
    } else {
        file.analysis = ImportAnalyzer::analyze(name, *file.data, allProfiles(runtime.ledger()),
                                                file.flipSigns);
    }
    file.analysis.fileName = file.name();
}

void ImportModel::replan(const Uuid& id, LedgerRuntime& runtime) {
    auto* file = find(id);
    if (!file)
        return;
    const auto accountID = file->targetAccountID();
    // A file whose amounts can't be summed can't be planned either; its
    // blocker says why.
    if (!accountID || !file->analysis.profile || amountsTooLarge(file->analysis)) {
        file->plan.reset();
        file->plannedOn.reset();
    } else if (planHolds(*file, *accountID, runtime.ledger())) {
        // Chosen again as it was (the command line confirms the suggested
        // account): planning a long history once more would give the same.
    } else {
        file->plan = ImportPlanner::plan(file->analysis, *accountID, runtime.ledger());
        file->plannedOn = runtime.ledger();
        std::set<int64_t> held;
        for (const auto* row : file->plan->possibleDuplicates())
            held.insert(row->row.line);
        std::erase_if(file->forcedLines, [&](int64_t line) { return !held.contains(line); });
    }
    notify();
}

void ImportModel::setChoice(ImportFile::AccountChoice choice, const Uuid& id,
                            LedgerRuntime& runtime) {
    auto* file = find(id);
    if (!file)
        return;
    file->choice = choice;
    file->choiceSuggested = false;
    if (choice.kind == ImportFile::AccountChoice::Kind::existing) {
        const auto* account = runtime.ledger().account(choice.accountID);
        if (account && file->analysis.currencyHint &&
            *file->analysis.currencyHint != account->currency) {
            runtime.setErrorMessage("This file uses " + *file->analysis.currencyHint +
                                    ". Choose an account in that currency.");
            replan(id, runtime);
            return;
        }
        if (account && account->flipSigns != file->flipSigns) {
            file->flipSigns = account->flipSigns;
            reanalyze(*file, runtime);
        }
    }
    replan(id, runtime);
}

void ImportModel::setFlip(bool flag, const Uuid& id, LedgerRuntime& runtime) {
    auto* file = find(id);
    if (!file)
        return;
    file->flipSigns = flag;
    reanalyze(*file, runtime);
    replan(id, runtime);
}

void ImportModel::applyMapping(ImportProfile profile, const Uuid& id, LedgerRuntime& runtime) {
    // Saved at once: a taught layout is kept even if the file is then removed.
    runtime.apply([profile](Ledger& ledger) { return upsertProfile(ledger, profile); });
    auto* file = find(id);
    if (!file)
        return;
    file->layoutHelp = {};
    file->savesProposedProfile = false;
    file->analysis = ImportAnalyzer::analyze(file->url.filename().string(), *file->data,
                                             std::move(profile), file->flipSigns);
    file->analysis.fileName = file->name();
    applySuggestion(*file, runtime);
    replan(id, runtime);
}

void ImportModel::setIntelligence(IntelligenceController* intelligence, bool setsUpLayoutsItself) {
    m_intelligence = intelligence;
    m_setsUpLayoutsItself = setsUpLayoutsItself;
}

void ImportModel::setUpLayout(const Uuid& id, LedgerRuntime& runtime) {
    // Without Local AI the file is left for the mapping form rather than
    // shown as working forever.
    if (!find(id))
        return;
    if (!m_intelligence) {
        notify();
        return;
    }
    startLayout(id, runtime, /*quiet=*/false);
}

void ImportModel::startLayout(const Uuid& id, LedgerRuntime& runtime, bool quiet) {
    auto* file = find(id);
    file->layoutHelp = {ImportFile::LayoutHelp::Kind::working, {}};
    notify();
    m_intelligence->proposeLayout(
        file->url.filename().string(), file->data,
        [this, alive = std::weak_ptr<const bool>(m_alive), id, &runtime](LayoutOutcome outcome) {
            if (!alive.expired())
                receiveLayout(std::move(outcome), id, runtime);
        },
        quiet);
}

void ImportModel::receiveLayout(LayoutOutcome outcome, const Uuid& id, LedgerRuntime& runtime) {
    auto* file = find(id);
    if (!file)
        return;
    // Nobody asked, and there was no model to ask: as if nothing happened.
    if (!outcome.check.profile && outcome.message.empty()) {
        file->layoutHelp = {};
        notify();
        return;
    }
    if (outcome.check.profile)
        file->proposedProfile = outcome.check.profile;
    if (!outcome.check.accepted) {
        file->layoutHelp = {ImportFile::LayoutHelp::Kind::failed, outcome.message};
        notify();
        return;
    }
    file->layoutHelp = {ImportFile::LayoutHelp::Kind::done, outcome.check.note};
    file->savesProposedProfile = true;
    file->flipSigns = false;
    file->analysis = std::move(outcome.check.analysis);
    if (file->analysis.profile) {
        file->draft.profileID = file->analysis.profile->id;
        if (file->analysis.typeHint)
            file->draft.type = *file->analysis.typeHint;
    }
    applySuggestion(*file, runtime);
    replan(id, runtime);
}

void ImportModel::remove(const Uuid& id) {
    std::erase_if(m_files, [&](const ImportFile& file) { return file.id == id; });
    notify();
}

void ImportModel::clear() {
    m_files.clear();
    notify();
}

// One Import, from the moment it is asked for until it is saved: the files
// it takes, and what working them out on the ledger came to.
struct ImportModel::CommitJob {
    std::vector<ImportFile> ready;
    Instant now;
    std::filesystem::path archiveFolder;
    std::vector<std::pair<Uuid, ImportBatch>> committed;
    std::vector<std::pair<Uuid, ImportPlan>> passedOver;
};

void ImportModel::commit(LedgerRuntime& runtime, const std::filesystem::path& archiveFolder) {
    startCommit(runtime, archiveFolder);
    runtime.finishBackgroundChange();
}

void ImportModel::startCommit(LedgerRuntime& runtime, const std::filesystem::path& archiveFolder) {
    if (m_isCommitting)
        return;
    std::vector<ImportFile> ready;
    for (const auto* file : readyFiles())
        ready.push_back(*file);
    if (ready.empty())
        return;
    // Files whose plans still hold and bring nothing are known before any
    // work: then there is nothing to back up and nothing to save.
    std::vector<std::string> nothing;
    for (const auto& file : ready) {
        const auto accountID = file.targetAccountID();
        if (!accountID || !planHolds(file, *accountID, runtime.ledger()) ||
            rowsToSave(*file.plan, file.forcedLines) > 0)
            break;
        nothing.push_back(nothingNew(file, *file.plan));
    }
    if (nothing.size() == ready.size()) {
        m_lastBatches.clear();
        m_lastResult = nothingToImport(nothing);
        notify();
        return;
    }
    m_isCommitting = true;
    notify();

    auto job = std::make_shared<CommitJob>();
    job->ready = std::move(ready);
    job->now = runtime.now();
    job->archiveFolder = archiveFolder;
    // Worked out where the runtime saves it, away from the main thread,
    // while the safety copy is made. Unless something was saved meanwhile,
    // the ledger is the one the cards were planned on, and their plans are
    // used as they stand.
    auto change = [job](Ledger& ledger) -> std::optional<LedgerDelta> {
        adoptAccountsMadeMeanwhile(job->ready, ledger);
        Worked worked = workOut(std::move(ledger), job->ready, job->now);
        ledger = std::move(worked.ledger);
        job->committed = std::move(worked.committed);
        job->passedOver = std::move(worked.passedOver);
        if (job->committed.empty())
            return std::nullopt;
        return std::move(worked.delta);
    };
    auto done = [this, alive = std::weak_ptr<const bool>(m_alive), job,
                 &runtime](ApplyResult result) {
        if (!alive.expired())
            finishCommit(*job, result, runtime);
    };
    runtime.applyInBackground(std::move(change), std::move(done), /*backUpBeforeImport=*/true);
}

void ImportModel::finishCommit(CommitJob& job, const ApplyResult& result, LedgerRuntime& runtime) {
    m_isCommitting = false;
    if (!result.saved && result.message) {
        // The runtime shows why; the cards stay as they were.
        notify();
        return;
    }
    if (!result.saved) {
        // Plans made on an older ledger said otherwise; nothing was saved.
        std::vector<std::string> reasons;
        for (const auto& passed : job.passedOver) {
            // Named apart: some compilers can't capture a structured binding.
            const Uuid& fileID = passed.first;
            const auto found =
                std::find_if(job.ready.begin(), job.ready.end(),
                             [&](const ImportFile& file) { return file.id == fileID; });
            reasons.push_back(nothingNew(*found, passed.second));
        }
        m_lastBatches.clear();
        m_lastResult = nothingToImport(reasons);
        notify();
        return;
    }

    int64_t imported = 0;
    int64_t duplicates = 0;
    m_lastBatches.clear();
    for (const auto& [fileID, batch] : job.committed) {
        imported +=
            batch.counts.imported + batch.counts.replacedPending + batch.counts.forcedDuplicates;
        duplicates += batch.counts.duplicates;
        m_lastBatches.push_back(batch);
    }
    for (const auto& [fileID, plan] : job.passedOver)
        duplicates += plan.duplicateCount();
    const auto fileCount = job.committed.size();
    std::string text = "Imported " + std::to_string(imported) + " transactions from " +
                       std::to_string(fileCount) + " file" + (fileCount == 1 ? "" : "s");
    text += duplicates > 0 ? "; " + std::to_string(duplicates) + " were already saved." : ".";
    m_lastResult = text;

    if (!job.archiveFolder.empty())
        archive(job.committed, job.archiveFolder, runtime);

    std::erase_if(m_files, [&](const ImportFile& file) {
        return std::any_of(job.ready.begin(), job.ready.end(),
                           [&](const ImportFile& done) { return done.id == file.id; });
    });
    notify();
    if (m_intelligence)
        m_intelligence->afterImport();
}

void ImportModel::archive(const std::vector<std::pair<Uuid, ImportBatch>>& committed,
                          const std::filesystem::path& folder, LedgerRuntime& runtime) {
    // The statements of one file share it, and it moves once, with the first.
    std::set<std::filesystem::path> moved;
    for (const auto& [fileID, batch] : committed) {
        const auto* file = this->file(fileID);
        if (!file || !moved.insert(file->url).second)
            continue;
        const std::string name = file->url.filename().string();
        try {
            const auto subfolder =
                folder / (batch.firstDate ? batch.firstDate->monthKey() : std::string("Undated"));
            std::filesystem::create_directories(subfolder);
            moveFile(file->url, freeTarget(subfolder, file->url.filename()));
        } catch (const std::exception& error) {
            runtime.setErrorMessage("Imported, but couldn't move " + name +
                                    " to your archive folder: " + error.what());
        }
    }
}

std::string unreadableFileMessage(const std::filesystem::path& file,
                                  const BankFileProblem& problem) {
    const std::string name = file.has_filename() ? file.filename().string() : file.string();
    std::string why;
    switch (problem.kind) {
        case BankFileProblem::Case::missing:
            why = "There's no file by that name.";
            break;
        case BankFileProblem::Case::notAllowed:
            why = "Copperwick isn't allowed to open it.";
            break;
        case BankFileProblem::Case::folder:
            why = "It's a folder, not a bank file.";
            break;
        case BankFileProblem::Case::notRegularFile:
            why = "It isn't a regular file, so it can't be a bank export.";
            break;
        case BankFileProblem::Case::tooLarge:
            why = "It's larger than " + std::to_string(kLargestBankFileBytes / (1024 * 1024)) +
                  " MB, far more than any bank export.";
            break;
        case BankFileProblem::Case::unreadable:
            why = "The system said: " + std::generic_category().message(problem.systemError) + ".";
            break;
    }
    return "Copperwick couldn't read " + name + ". " + why;
}

ObserverID ImportModel::observe(std::function<void()> callback) {
    return m_observers.add(std::move(callback));
}

void ImportModel::removeObserver(ObserverID id) {
    m_observers.remove(id);
}

void ImportModel::notify() {
    m_observers.notify();
}

}  // namespace copperwick
