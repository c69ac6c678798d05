#include "runtime/intelligence_controller.h"

#include <algorithm>
#include <utility>

#include "core/import/layout_proposal.h"
#include "core/intelligence/ask_tools.h"
#include "core/intelligence/layout_prompt.h"
#include "core/intelligence/merchant_names.h"
#include "core/intelligence/suggestion_check.h"
#include "core/model/text.h"
#include "core/operations/ai_filings.h"
#include "core/operations/classification.h"
#include "core/reports/payment_service_detection.h"
#include "runtime/intelligence_prompts.h"
#include "runtime/loopback_endpoint.h"

namespace copperwick {

namespace prompts = IntelligencePrompts;

namespace {

// Rows of a file the model reads to tell its columns.
constexpr std::size_t kLayoutRows = 8;

// Payments to people: what they were for can't be told from their text, so
// the model isn't asked. PayPal usually has a business behind it. The key
// alone may have lost the service's name ("ZELLE TO JANE DOE" keys as the
// person), so the bank text is read too.
bool isPaymentToAPerson(const ReviewGroup& group) {
    return requiresPurpose(group.key) || requiresPurpose(group.example);
}

// "custom-" and eight characters of a new id: a taught layout's id.
std::string newLayoutID() {
    return "custom-" + text::lowercased(Uuid::random().text().substr(0, 8));
}

}  // namespace

IntelligenceSwitches IntelligenceSwitches::read(const Preferences& preferences) {
    const auto on = [&](std::string_view key) { return preferences.boolValue(key).value_or(true); };
    return {.enabled = on(preference_keys::aiEnabled),
            .autoSuggest = on(preference_keys::aiAutoSuggest),
            .autoFile = on(preference_keys::aiAutoFile),
            .tidyNames = on(preference_keys::aiTidyNames),
            .setUpLayouts = on(preference_keys::aiSetUpLayouts)};
}

// What a model call came to, back on the main thread.
template <typename T>
struct IntelligenceController::Outcome {
    enum class Kind {
        value,
        unavailable,  // `words` says why
        timedOut,
        failed,  // `words` says what went wrong, for the caller's sentence
    };
    Kind kind = Kind::failed;
    std::optional<T> value;
    std::string words;
};

struct IntelligenceController::LookRun {
    std::vector<ReviewGroup> groups;
    // What the run started from: prompts are built from it beside the window.
    Ledger snapshot;
    bool autoFile = true;
    std::set<std::string> rejectedKeys;
    std::size_t next = 0;
    std::vector<AIFilingRequest> requests;
    std::size_t suggested = 0;
    // After an import nobody asked: an absent model goes unmentioned.
    bool quiet = false;
    bool thenTidy = false;
    bool checked = false;
    std::shared_ptr<std::atomic<bool>> stop = std::make_shared<std::atomic<bool>>(false);
};

struct IntelligenceController::TidyRun {
    std::vector<Merchant> merchants;
    std::size_t next = 0;
    std::vector<MerchantRename> renames;
    bool quiet = false;
    bool checked = false;
    std::shared_ptr<std::atomic<bool>> stop = std::make_shared<std::atomic<bool>>(false);
};

IntelligenceController::IntelligenceController(LedgerRuntime& runtime, ModelLimits limits)
    : m_runtime(runtime),
      m_limits(limits),
      m_work(std::make_unique<BackgroundWork>(runtime.mainQueue())) {
    // A changed rule or setting can change every figure a summary speaks of.
    m_savedChanges = m_runtime.observeSavedChanges([this](const SavedChange& change) {
        if (!change.delta) {
            invalidate();
            return;
        }
        for (const auto* kinds : {&change.delta->changed, &change.delta->deleted}) {
            if (kinds->contains(RecordKind::rule) || kinds->contains(RecordKind::settings)) {
                invalidate();
                return;
            }
        }
    });
}

IntelligenceController::~IntelligenceController() {
    m_runtime.removeObserver(m_savedChanges);
    m_closing->store(true);
    m_work.reset();
}

bool IntelligenceController::isBusy() const {
    return m_inFlight > 0 || m_look || m_tidy || m_isAnswering || !m_explaining.empty() ||
           !m_writingNarrative.empty();
}

IntelligenceSwitches IntelligenceController::switches() const {
    return IntelligenceSwitches::read(m_runtime.defaults());
}

OnDeviceModel IntelligenceController::model() const {
    return OnDeviceModel::fromPreferences(m_runtime.modelPreferences(), m_limits);
}

std::optional<std::string> IntelligenceController::setUpModel(Preferences& preferences,
                                                              std::string_view endpoint,
                                                              std::optional<std::string> model) {
    const auto parsed = LoopbackEndpoint::parse(endpoint);
    if (!parsed)
        return std::string(OnDeviceModelText::kNotLoopback);
    preferences.set(preference_keys::aiEndpoint, parsed->text());
    if (model)
        preferences.set(preference_keys::aiModel, text::trimmed(*model));
    return std::nullopt;
}

template <typename T>
void IntelligenceController::callModel(const std::shared_ptr<std::atomic<bool>>& stop,
                                       bool checkFirst, std::function<T(const OnDeviceModel&)> call,
                                       std::function<void(Outcome<T>)> done) {
    const OnDeviceModel model = this->model().withCancellation(
        [stop, closing = m_closing] { return (stop && stop->load()) || closing->load(); });
    ++m_inFlight;
    m_work->run(
        [model, checkFirst, call = std::move(call)]() {
            Outcome<T> outcome;
            if (checkFirst) {
                if (auto reason = model.unavailableReason()) {
                    outcome.kind = Outcome<T>::Kind::unavailable;
                    outcome.words = std::move(*reason);
                    return outcome;
                }
            }
            try {
                outcome.value = call(model);
                outcome.kind = Outcome<T>::Kind::value;
            } catch (const ModelTimeout&) {
                outcome.kind = Outcome<T>::Kind::timedOut;
            } catch (const ModelError& error) {
                outcome.words = error.what();
            }
            return outcome;
        },
        [this, done = std::move(done)](WorkResult<Outcome<T>> result) {
            --m_inFlight;
            if (result.value) {
                done(std::move(*result.value));
                return;
            }
            Outcome<T> failed;
            failed.words = result.error;
            done(std::move(failed));
        });
}

// ---- Looking at review groups.

void IntelligenceController::afterImport() {
    const auto on = switches();
    if (!on.enabled)
        return;
    // With no server set up the model is surely unavailable, and grouping
    // twenty years of lines only to find that out would slow every import.
    // A server that is set up is asked on the worker, before the first group.
    if (!LoopbackEndpoint::parse(model().endpoint()))
        return;
    std::vector<ReviewGroup> groups;
    if (on.autoSuggest)
        groups = groupsToLookAt(m_runtime.ledger());
    if (groups.empty()) {
        if (on.tidyNames)
            startTidy(/*quiet=*/true);
        return;
    }
    if (m_look)
        return;
    m_look = std::make_unique<LookRun>();
    m_look->quiet = true;
    m_look->thenTidy = on.tidyNames;
    start(std::move(groups));
}

std::vector<ReviewGroup> IntelligenceController::groupsToLookAt(const Ledger& ledger) {
    std::vector<ReviewGroup> groups;
    for (auto& group : ReviewQueue::groups(ledger)) {
        const bool suggestedByModel =
            group.suggestion && group.suggestion->source == MatchMethod::ai;
        if (!suggestedByModel && !isPaymentToAPerson(group))
            groups.push_back(std::move(group));
    }
    return groups;
}

void IntelligenceController::start(std::vector<ReviewGroup> groups, bool suggestOnly) {
    const auto on = switches();
    // afterImport prepares its run before starting it; a run by hand has none yet.
    const bool prepared = m_look && !m_isSuggesting;
    if (m_isSuggesting)
        return;
    if (!on.enabled) {
        m_look.reset();
        m_runtime.setStatusMessage(std::string(prompts::kTurnedOff));
        return;
    }
    if (!prepared)
        m_look = std::make_unique<LookRun>();
    if (groups.size() > kGroupsPerRun)
        groups.resize(kGroupsPerRun);
    LookRun& run = *m_look;
    run.groups = std::move(groups);
    run.snapshot = m_runtime.ledger();
    run.autoFile = on.autoFile && !suggestOnly;
    run.rejectedKeys = run.snapshot.rejectedAIKeys();
    m_isSuggesting = true;
    m_isFilingTransactions = run.autoFile;
    notify();
    lookNext();
}

void IntelligenceController::cancel() {
    if (m_look)
        m_look->stop->store(true);
    if (m_tidy)
        m_tidy->stop->store(true);
}

void IntelligenceController::lookAt(std::vector<ReviewGroup> groups, bool suggestOnly) {
    start(std::move(groups), suggestOnly);
    wait();
}

void IntelligenceController::lookNext() {
    LookRun& run = *m_look;
    // Groups whose lines have all gone since the run began are passed over.
    const LedgerTransaction* first = nullptr;
    while (!run.stop->load() && run.next < run.groups.size()) {
        const ReviewGroup& group = run.groups[run.next];
        for (const auto& id : group.transactionIDs) {
            if ((first = m_runtime.ledger().transaction(id)))
                break;
        }
        if (first)
            break;
        ++run.next;
    }
    if (!first) {
        finishLook();
        return;
    }
    const ReviewGroup& group = run.groups[run.next];
    m_suggestionProgress = prompts::lookProgress(run.next + 1, run.groups.size());
    m_workingGroupIDs = {group.id};
    notify();
    const Uuid transactionID = first->id;
    callModel<OnDeviceModel::Guess>(
        run.stop, !run.checked,
        [transaction = *first, group, snapshot = run.snapshot](const OnDeviceModel& model) {
            return model.guessMerchant(prompts::merchantPrompt(transaction, group, snapshot));
        },
        [this, transactionID](Outcome<OnDeviceModel::Guess> outcome) {
            LookRun& run = *m_look;
            using Kind = Outcome<OnDeviceModel::Guess>::Kind;
            if (outcome.kind == Kind::unavailable) {
                if (!run.quiet)
                    m_runtime.setStatusMessage(outcome.words);
                run.thenTidy = false;
                run.stop->store(true);
                finishLook();
                return;
            }
            run.checked = true;
            const LedgerTransaction* transaction = m_runtime.ledger().transaction(transactionID);
            // A time-out or an error costs this group alone.
            if (outcome.kind == Kind::value && transaction) {
                const ReviewGroup& group = run.groups[run.next];
                const auto& guess = *outcome.value;
                if (auto suggestion =
                        SuggestionCheck::validate(guess.merchant, guess.category, guess.kind,
                                                  m_runtime.ledger(), transaction->amount)) {
                    suggestion->reason =
                        guess.reason.empty() ? std::string(prompts::kBestMatch) : guess.reason;
                    if (run.autoFile && !group.key.empty() &&
                        !run.rejectedKeys.contains(group.key)) {
                        run.requests.push_back({.ids = group.transactionIDs,
                                                .key = group.key,
                                                .merchantName = suggestion->merchantName,
                                                .kind = suggestion->kind,
                                                .categoryID = suggestion->categoryID,
                                                .reason = suggestion->reason});
                    } else {
                        const std::string evidence =
                            prompts::suggestionEvidence(*suggestion, m_runtime.ledger());
                        const auto result = m_runtime.apply([&](Ledger& ledger) {
                            return setSuggestion(ledger, *suggestion, evidence,
                                                 group.transactionIDs);
                        });
                        if (result.saved && !result.delta.isEmpty())
                            ++run.suggested;
                    }
                }
            }
            ++run.next;
            lookNext();
        });
}

void IntelligenceController::finishLook() {
    LookRun& run = *m_look;
    std::size_t filed = 0;
    if (!run.requests.empty()) {
        const std::size_t before = m_runtime.ledger().aiFiledUnchecked().size();
        const auto now = m_runtime.now();
        m_runtime.apply([&](Ledger& ledger) { return fileByAI(ledger, run.requests, now); });
        const std::size_t after = m_runtime.ledger().aiFiledUnchecked().size();
        filed = after > before ? after - before : 0;
    }
    if (const auto status = prompts::lookStatus(filed, run.suggested); !status.empty())
        m_runtime.setStatusMessage(status);
    const bool thenTidy = run.thenTidy;
    m_look.reset();
    m_isSuggesting = false;
    m_isFilingTransactions = false;
    m_suggestionProgress.clear();
    m_workingGroupIDs.clear();
    notify();
    if (thenTidy)
        startTidy(/*quiet=*/true);
}

// ---- Tidying merchant names.

void IntelligenceController::tidyMerchantNames() {
    if (!switches().enabled) {
        m_runtime.setStatusMessage(std::string(prompts::kTurnedOff));
        return;
    }
    startTidy(/*quiet=*/false);
}

void IntelligenceController::startTidy(bool quiet) {
    if (m_tidy)
        return;
    auto run = std::make_unique<TidyRun>();
    run->quiet = quiet;
    const auto& directory = MerchantNames::directoryNames();
    for (const auto& merchant : m_runtime.ledger().merchants) {
        if (MerchantNames::needsTidying(merchant, directory))
            run->merchants.push_back(merchant);
    }
    std::sort(run->merchants.begin(), run->merchants.end(),
              [](const Merchant& a, const Merchant& b) {
                  return a.name != b.name ? a.name < b.name : a.id < b.id;
              });
    if (run->merchants.size() > kNamesPerRun)
        run->merchants.resize(kNamesPerRun);
    m_tidy = std::move(run);
    m_isTidying = true;
    notify();
    tidyNext();
}

void IntelligenceController::tidyNext() {
    TidyRun& run = *m_tidy;
    if (run.stop->load() || run.next >= run.merchants.size()) {
        finishTidy();
        return;
    }
    const Merchant& merchant = run.merchants[run.next];
    callModel<std::string>(
        run.stop, !run.checked,
        [prompt = prompts::tidyPrompt(merchant)](const OnDeviceModel& model) {
            return model.tidyName(prompt);
        },
        [this](Outcome<std::string> outcome) {
            TidyRun& run = *m_tidy;
            using Kind = Outcome<std::string>::Kind;
            if (outcome.kind == Kind::unavailable) {
                if (!run.quiet)
                    m_runtime.setStatusMessage(outcome.words);
                run.stop->store(true);
                finishTidy();
                return;
            }
            run.checked = true;
            const Merchant& merchant = run.merchants[run.next];
            if (outcome.kind == Kind::value) {
                if (auto name = MerchantNames::acceptRename(merchant.name, *outcome.value))
                    run.renames.push_back({.id = merchant.id, .name = std::move(*name)});
            }
            ++run.next;
            tidyNext();
        });
}

void IntelligenceController::finishTidy() {
    const std::vector<MerchantRename> renames = std::move(m_tidy->renames);
    m_tidy.reset();
    m_isTidying = false;
    if (!renames.empty()) {
        const auto now = m_runtime.now();
        const auto result = m_runtime.apply(
            [&](Ledger& ledger) { return copperwick::tidyMerchantNames(ledger, renames, now); });
        if (result.saved && !result.delta.isEmpty())
            m_runtime.setStatusMessage(std::string(prompts::kTidied));
    }
    notify();
}

// ---- Explaining a charge.

void IntelligenceController::explain(const LedgerTransaction& transaction) {
    const Uuid id = transaction.id;
    if (m_explaining.contains(id))
        return;
    if (!switches().enabled) {
        m_explanations[id] = {.text = std::string(prompts::kTurnedOff), .failed = true};
        notify();
        return;
    }
    const std::string facts = prompts::explanationFacts(transaction, m_runtime.ledger());
    m_explaining.insert(id);
    notify();
    callModel<OnDeviceModel::Explanation>(
        nullptr, true,
        [prompt = prompts::explainPrompt(facts)](const OnDeviceModel& model) {
            return model.explain(prompt);
        },
        [this, id, facts](Outcome<OnDeviceModel::Explanation> outcome) {
            using Kind = Outcome<OnDeviceModel::Explanation>::Kind;
            ChargeExplanation explanation{.failed = true};
            switch (outcome.kind) {
                case Kind::value: {
                    const bool grounded = Grounding::isGrounded(outcome.value->text, {facts});
                    explanation = {.text = outcome.value->text,
                                   .isConfident = outcome.value->isConfident && grounded,
                                   .isGrounded = grounded,
                                   .failed = false};
                    break;
                }
                case Kind::unavailable:
                    explanation.text = outcome.words;
                    break;
                case Kind::timedOut:
                    explanation.text = prompts::kTookTooLong;
                    break;
                case Kind::failed:
                    explanation.text = prompts::explainFailure(outcome.words);
                    break;
            }
            m_explanations[id] = std::move(explanation);
            m_explaining.erase(id);
            notify();
        });
}

// ---- Report summaries.

std::string IntelligenceController::narrativeKey(const ReportFilter& filter, int64_t revision) {
    return prompts::narrativeKey(filter, revision);
}

void IntelligenceController::writeNarrative(const std::string& key, std::vector<ReportFact> facts) {
    if (m_writingNarrative.contains(key))
        return;
    if (!switches().enabled) {
        m_narrativeFailures[key] = prompts::kTurnedOff;
        notify();
        return;
    }
    m_writingNarrative.insert(key);
    notify();
    const std::string prompt = prompts::narrativePrompt(facts);
    callModel<std::vector<Grounding::Bullet>>(
        nullptr, true,
        [prompt](const OnDeviceModel& model) { return model.writeNarrative(prompt); },
        [this, key, facts = std::move(facts)](Outcome<std::vector<Grounding::Bullet>> outcome) {
            using Kind = Outcome<std::vector<Grounding::Bullet>>::Kind;
            std::optional<std::string> failure;
            switch (outcome.kind) {
                case Kind::value:
                    if (auto bullets = Grounding::checkBullets(*outcome.value, facts);
                        !bullets.empty()) {
                        m_narratives[key] = std::move(bullets);
                        m_narrativeFailures.erase(key);
                    } else {
                        failure = prompts::kSummaryDidntMatch;
                    }
                    break;
                case Kind::unavailable:
                    failure = outcome.words;
                    break;
                case Kind::timedOut:
                    failure = prompts::kTookTooLong;
                    break;
                case Kind::failed:
                    failure = prompts::narrativeFailure(outcome.words);
                    break;
            }
            if (failure) {
                m_narrativeFailures[key] = std::move(*failure);
                m_narratives.erase(key);
            }
            m_writingNarrative.erase(key);
            notify();
        });
}

void IntelligenceController::invalidate() {
    if (m_narratives.empty() && m_narrativeFailures.empty())
        return;
    m_narratives.clear();
    m_narrativeFailures.clear();
    notify();
}

// ---- Questions.

void IntelligenceController::answerFailed(const std::string& question, std::string text) {
    m_answers.push_back(
        {.id = Uuid::random(), .question = question, .text = std::move(text), .failed = true});
    notify();
}

void IntelligenceController::ask(const std::string& asked) {
    const std::string question(text::trimmed(asked));
    if (question.empty() || m_isAnswering)
        return;
    if (!switches().enabled) {
        answerFailed(question, std::string(prompts::kTurnedOff));
        return;
    }
    m_isAnswering = true;
    notify();
    const LocalDate today = m_runtime.today();
    auto log = std::make_shared<ToolCallLog>();
    const Ledger& ledger = m_runtime.ledger();
    callModel<std::string>(
        nullptr, true,
        [question, instructions = prompts::askInstructions(ledger, today),
         tools = AskTools::all(ledger, today, log)](const OnDeviceModel& model) {
            return model.answer(question, instructions, tools);
        },
        [this, question, log](Outcome<std::string> outcome) {
            m_isAnswering = false;
            using Kind = Outcome<std::string>::Kind;
            switch (outcome.kind) {
                case Kind::value: {
                    AskAnswer answer{.id = Uuid::random(),
                                     .question = question,
                                     .text = std::move(*outcome.value),
                                     .lookups = log->entries()};
                    // Figures with nothing to back them are a warning, not a refusal.
                    answer.isGrounded = Grounding::numbers(answer.text).empty() ||
                                        (!answer.lookups.empty() &&
                                         Grounding::isGrounded(answer.text, log->results()));
                    m_answers.push_back(std::move(answer));
                    notify();
                    return;
                }
                case Kind::unavailable:
                    answerFailed(question, outcome.words);
                    return;
                case Kind::timedOut:
                    answerFailed(question, std::string(prompts::kAnswerTookTooLong));
                    return;
                case Kind::failed:
                    answerFailed(question, prompts::askFailure(outcome.words));
                    return;
            }
        });
}

void IntelligenceController::clearAnswers() {
    m_answers.clear();
    notify();
}

// ---- Layouts.

void IntelligenceController::proposeLayout(std::string fileName,
                                           std::shared_ptr<const std::string> data,
                                           std::function<void(LayoutOutcome)> done, bool quiet) {
    if (!switches().enabled) {
        done({.message = quiet ? std::string() : std::string(prompts::kTurnedOff)});
        return;
    }
    const OnDeviceModel model =
        this->model().withCancellation([closing = m_closing] { return closing->load(); });
    ++m_inFlight;
    m_work->run(
        [model, quiet, fileName = std::move(fileName), data = std::move(data)]() {
            LayoutOutcome outcome;
            const auto rows = LayoutProposal::sampleRows(*data, kLayoutRows);
            if (rows.size() < 2) {
                outcome.message = prompts::kFileTooShort;
                return outcome;
            }
            if (auto reason = model.unavailableReason()) {
                outcome.message = quiet ? std::string() : std::move(*reason);
                return outcome;
            }
            LayoutGuess guess;
            try {
                guess = model.proposeLayout(LayoutProposal::question(rows));
            } catch (const ModelTimeout&) {
                outcome.message = prompts::kLayoutTookTooLong;
                return outcome;
            } catch (const ModelError& error) {
                outcome.message = prompts::layoutFailure(error.what());
                return outcome;
            }
            const auto profile = LayoutProposal::makeProfile(guess, rows, newLayoutID());
            if (!profile) {
                outcome.message = prompts::kLayoutDidntFit;
                return outcome;
            }
            LayoutCheck check = LayoutProposal::check(*profile, fileName, *data);
            outcome.message = check.note;
            outcome.check = {.profile = std::move(check.profile),
                             .accepted = check.accepted,
                             .note = std::move(check.note),
                             .analysis = std::move(check.analysis)};
            return outcome;
        },
        [this, done = std::move(done)](WorkResult<LayoutOutcome> result) {
            --m_inFlight;
            done(result.value ? std::move(*result.value)
                              : LayoutOutcome{.message = prompts::layoutFailure(result.error)});
            notify();
        });
}

// ---- Waiting and watching.

void IntelligenceController::wait() {
    m_runtime.mainQueue()->runUntil([this] { return !isBusy(); });
}

ObserverID IntelligenceController::observe(std::function<void()> callback) {
    return m_observers.add(std::move(callback));
}

void IntelligenceController::removeObserver(ObserverID id) {
    m_observers.remove(id);
}

void IntelligenceController::notify() {
    m_observers.notify();
}

}  // namespace copperwick
