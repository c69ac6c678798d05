#pragma once

// Everything Local AI does for the program, and the state the screens watch
// while it does it: looking at review groups after an import and filing or
// suggesting for them, tidying merchant names, explaining a charge, writing
// a report summary, answering a question, and reading the columns of a file
// no layout fits. The model only ever proposes; what reaches the ledger goes
// through the ordinary operations (setSuggestion, fileByAI,
// tidyMerchantNames), each saved through the runtime, and every figure the
// model states is held against the program's own before a person sees it.
//
// Every operation begins with two checks: the master switch, then whether
// the model is there at all. Either failing ends it at once, with its
// words where the operation has a place for them.
//
// Main thread only, beside the LedgerRuntime it was made with, which must
// outlive it. Model calls run on worker threads, one at a time within a run,
// each with a value copy of what it needs; results come back through the
// runtime's main queue and find their group, merchant, transaction or
// question again by id. wait() runs that queue until nothing is under way,
// for the command line and tests. Not copyable.

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/intelligence/grounding.h"
#include "core/intelligence/tool_call_log.h"
#include "core/model/ledger.h"
#include "core/reports/report_facts.h"
#include "core/reports/report_filter.h"
#include "core/review/review_queue.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"
#include "runtime/main_queue.h"
#include "runtime/observable.h"
#include "runtime/observer_list.h"
#include "runtime/on_device_model.h"
#include "runtime/preferences.h"

namespace copperwick {

// The four switches of Local AI and the one of layouts. A key that is
// missing, or holds something other than true or false, counts as on.
struct IntelligenceSwitches {
    bool enabled = true;
    bool autoSuggest = true;
    bool autoFile = true;
    bool tidyNames = true;
    bool setUpLayouts = true;

    [[nodiscard]] static IntelligenceSwitches read(const Preferences& preferences);

    friend bool operator==(const IntelligenceSwitches&, const IntelligenceSwitches&) = default;
};

struct ChargeExplanation {
    std::string text;
    bool isConfident = false;
    bool isGrounded = false;
    bool failed = false;

    friend bool operator==(const ChargeExplanation&, const ChargeExplanation&) = default;
};

// One question and what became of it. A failure is an answer too, with its
// words as `text`.
struct AskAnswer {
    Uuid id;
    std::string question;
    std::string text;
    std::vector<ToolCallLog::Entry> lookups;
    bool isGrounded = false;
    bool failed = false;

    friend bool operator==(const AskAnswer&, const AskAnswer&) = default;
};

class IntelligenceController {
  public:
    // Look-at runs take at most this many groups, tidying this many merchants.
    static constexpr std::size_t kGroupsPerRun = 100;
    static constexpr std::size_t kNamesPerRun = 40;

    explicit IntelligenceController(LedgerRuntime& runtime, ModelLimits limits = {});
    // Stops what is under way; nothing it would have brought back arrives.
    ~IntelligenceController();
    IntelligenceController(const IntelligenceController&) = delete;
    IntelligenceController& operator=(const IntelligenceController&) = delete;

    [[nodiscard]] bool isSuggesting() const { return m_isSuggesting; }
    [[nodiscard]] bool isFilingTransactions() const { return m_isFilingTransactions; }
    [[nodiscard]] const std::string& suggestionProgress() const { return m_suggestionProgress; }
    [[nodiscard]] const std::set<std::string>& workingGroupIDs() const { return m_workingGroupIDs; }
    [[nodiscard]] bool isTidying() const { return m_isTidying; }
    [[nodiscard]] const std::map<std::string, std::vector<GroundedBullet>>& narratives() const {
        return m_narratives;
    }
    [[nodiscard]] const std::map<std::string, std::string>& narrativeFailures() const {
        return m_narrativeFailures;
    }
    [[nodiscard]] const std::set<std::string>& writingNarrative() const {
        return m_writingNarrative;
    }
    [[nodiscard]] const std::map<Uuid, ChargeExplanation>& explanations() const {
        return m_explanations;
    }
    [[nodiscard]] const std::set<Uuid>& explaining() const { return m_explaining; }
    [[nodiscard]] const std::vector<AskAnswer>& answers() const { return m_answers; }
    [[nodiscard]] bool isAnswering() const { return m_isAnswering; }
    // Anything under way: a run, a call, a question.
    [[nodiscard]] bool isBusy() const;

    // The switches as they stand now in the runtime's preferences.
    [[nodiscard]] IntelligenceSwitches switches() const;
    // The model as set up now: the person's address and model name.
    [[nodiscard]] OnDeviceModel model() const;

    // Stores the model server's address (and the model's name, when given)
    // in `preferences`. An address that isn't plain http to this computer is
    // refused with the words to show, and nothing is stored.
    [[nodiscard]] static std::optional<std::string> setUpModel(Preferences& preferences,
                                                               std::string_view endpoint,
                                                               std::optional<std::string> model);

    // Once an import has landed: looks at groupsToLookAt and then tidies
    // merchant names, as the switches say. Says nothing when Local AI is off
    // or unavailable.
    void afterImport();
    // The review groups a run looks at when nobody chose: all but those the
    // model already suggested for, and payments to people, whose purpose no
    // text tells.
    [[nodiscard]] static std::vector<ReviewGroup> groupsToLookAt(const Ledger& ledger);
    // A run over the given groups, the first 100 in their order: files what
    // the model is sure of, with "Copperwick.aiAutoFile" on (and not
    // `suggestOnly`) and the key never rejected by the person, or else
    // suggests. Suggestions are saved one by one, filings all at once at the
    // end, as one undoable step. The status message says what came of it. A
    // run already going ends the call.
    void start(std::vector<ReviewGroup> groups, bool suggestOnly = false);
    // Stops the run after the call in progress; what was found so far is
    // still filed.
    void cancel();
    // start() and wait().
    void lookAt(std::vector<ReviewGroup> groups, bool suggestOnly = false);
    // Tidier names for at most 40 merchants whose names look like raw bank
    // text, kept where they still name the same business; one undoable step.
    void tidyMerchantNames();
    // An explanation of one charge, held against its facts, in explanations().
    void explain(const LedgerTransaction& transaction);
    // The key a summary of this report is kept under.
    [[nodiscard]] static std::string narrativeKey(const ReportFilter& filter, int64_t revision);
    // Bullets about the facts, each kept only when its figures are in the
    // facts it cites: in narratives(), or why not in narrativeFailures().
    void writeNarrative(const std::string& key, std::vector<ReportFact> facts);
    // Forgets every summary and its failure.
    void invalidate();
    // Appends the answer to a question, found through the six lookups; it
    // can't fail towards the caller. A blank question, or one while another
    // is being answered, is passed over.
    void ask(const std::string& question);
    void clearAnswers();
    // Which column of a file no layout fits holds what: the model's reading
    // made into a layout and checked against the whole file. `done` hears the
    // outcome on the main thread. With `quiet`, an unavailable model answers
    // with no check and no message, as when nobody asked.
    void proposeLayout(std::string fileName, std::shared_ptr<const std::string> data,
                       std::function<void(LayoutOutcome)> done, bool quiet = false);

    // Runs the main queue until nothing is under way.
    void wait();

    // Called after every change to the state above.
    ObserverID observe(std::function<void()> callback);
    void removeObserver(ObserverID id);

  private:
    template <typename T>
    struct Outcome;
    struct LookRun;
    struct TidyRun;

    // Runs `call` with the model on a worker thread, asking first whether the
    // model is there when `checkFirst`, and hands its outcome to `done` here.
    template <typename T>
    void callModel(const std::shared_ptr<std::atomic<bool>>& stop, bool checkFirst,
                   std::function<T(const OnDeviceModel&)> call,
                   std::function<void(Outcome<T>)> done);
    void lookNext();
    void finishLook();
    void tidyNext();
    void finishTidy();
    void startTidy(bool quiet);
    void answerFailed(const std::string& question, std::string text);
    void notify();

    LedgerRuntime& m_runtime;
    ModelLimits m_limits;
    bool m_isSuggesting = false;
    bool m_isFilingTransactions = false;
    std::string m_suggestionProgress;
    std::set<std::string> m_workingGroupIDs;
    bool m_isTidying = false;
    std::map<std::string, std::vector<GroundedBullet>> m_narratives;
    std::map<std::string, std::string> m_narrativeFailures;
    std::set<std::string> m_writingNarrative;
    std::map<Uuid, ChargeExplanation> m_explanations;
    std::set<Uuid> m_explaining;
    std::vector<AskAnswer> m_answers;
    bool m_isAnswering = false;
    std::unique_ptr<LookRun> m_look;
    std::unique_ptr<TidyRun> m_tidy;
    // Model calls and layout readings on their way back.
    int m_inFlight = 0;
    ObserverList m_observers;
    ObserverID m_savedChanges = 0;
    // Set when the controller goes: every call in flight stops at once.
    std::shared_ptr<std::atomic<bool>> m_closing = std::make_shared<std::atomic<bool>>(false);
    // Last, so that calls still running end before the rest goes.
    std::unique_ptr<BackgroundWork> m_work;
};

}  // namespace copperwick
