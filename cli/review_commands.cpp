// `copperwick review`, `copperwick classify`, `copperwick classify-zelle`,
// `copperwick approve` and `copperwick ai confirm`: what waits for a
// decision, what Local AI filed, and the decisions themselves, each one
// undoable step.

#include <algorithm>
#include <functional>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/ledger_lookup.h"
#include "cli/runtime_session.h"
#include "core/model/money.h"
#include "core/model/record_json.h"
#include "core/model/text.h"
#include "core/operations/ai_filings.h"
#include "core/operations/classification.h"
#include "core/operations/entry_error.h"
#include "core/operations/zelle_choice.h"
#include "core/presentation/review_text.h"
#include "core/reports/payment_service_detection.h"
#include "core/review/review_decision.h"
#include "core/review/review_queue.h"

namespace copperwick::cli {

namespace {

boost::json::value groupJSON(const ReviewGroup& group) {
    boost::json::array ids;
    for (const auto& id : group.transactionIDs)
        ids.push_back(boost::json::string(id.text()));
    boost::json::array accounts;
    for (const auto& name : group.accountNames)
        accounts.push_back(boost::json::string(name));
    boost::json::object object{{"id", group.id},
                               {"key", group.key},
                               {"displayName", group.displayName},
                               {"example", group.example},
                               {"transactionIDs", ids},
                               {"total", group.total},
                               {"firstDate", group.firstDate.iso()},
                               {"lastDate", group.lastDate.iso()},
                               {"isMoneyIn", group.isMoneyIn},
                               {"accountNames", accounts}};
    if (group.suggestion)
        object["suggestion"] = record_json::toJSON(*group.suggestion);
    if (group.merchantID)
        object["merchantID"] = group.merchantID->text();
    object["requiresPurpose"] = requiresPurpose(group.example);
    return object;
}

// The --choice values offered for the direction, as one line.
std::string choiceList(bool moneyIn) {
    std::string list = "--choice ";
    const auto choices = zelleChoices(moneyIn);
    for (std::size_t i = 0; i < choices.size(); ++i)
        list += std::string(i == 0                    ? ""
                            : i + 1 == choices.size() ? " or "
                                                      : ", ") +
                std::string(rawValue(choices[i]));
    return list;
}

// What the model filed and nobody has looked at yet, grouped as the review
// queue groups, so that one "Looks right" covers one bank text.
std::vector<ReviewGroup> aiFiledGroups(const Ledger& ledger) {
    return ReviewQueue::makeGroups(ledger.aiFiledUnchecked(), ledger);
}

constexpr std::string_view kAIFiledTitle = "Filed by Local AI";
constexpr std::string_view kAIFiledDetail =
    "Local AI filed these on this computer and they're counted in your reports. Looks Right keeps "
    "the filing and teaches Copperwick; Change lets you file it yourself, and Local AI won't file "
    "that bank text again.";

void printAIFiled(CommandContext& context, const Ledger& ledger,
                  const std::vector<ReviewGroup>& groups) {
    if (groups.empty())
        return;
    context.out << '\n' << kAIFiledTitle << '\n' << kAIFiledDetail << '\n';
    for (const auto& group : groups) {
        const auto count = group.transactionIDs.size();
        const LedgerTransaction* first = ledger.transaction(group.transactionIDs.front());
        const Merchant* merchant = first ? ledger.merchant(first->merchantID) : nullptr;
        context.out << fmt::format(
            "\n{}\n  {}\n  {} transaction{}, {}, {}\n  Filed as: {}\n  id: {}\n", group.displayName,
            group.example, count, count == 1 ? "" : "s",
            group.firstDate == group.lastDate
                ? group.firstDate.iso()
                : group.firstDate.iso() + " to " + group.lastDate.iso(),
            Money::format(group.total),
            first ? ReviewText::filing(ledger,
                                       merchant ? std::optional(merchant->name) : std::nullopt,
                                       first->categoryID, first->kind)
                  : std::string(),
            group.id);
    }
    context.out << "\nLooks right? `copperwick ai confirm GROUP_ID` (or --all). Otherwise file it "
                   "yourself with `copperwick classify`.\n";
}

void runReview(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const auto groups = ReviewQueue::groups(ledger);
    const auto stale = ReviewQueue::stalePending(ledger, runtime->today());
    const auto aiFiled = aiFiledGroups(ledger);
    if (context.json) {
        boost::json::array groupArray;
        for (const auto& group : groups)
            groupArray.push_back(groupJSON(group));
        boost::json::array staleArray;
        for (const auto& transaction : stale)
            staleArray.push_back(record_json::toJSON(transaction));
        boost::json::array aiFiledArray;
        for (const auto& group : aiFiled)
            aiFiledArray.push_back(groupJSON(group));
        printJSON(context, boost::json::object{{"groups", groupArray},
                                               {"stalePending", staleArray},
                                               {"aiFiled", aiFiledArray}});
        return;
    }
    if (groups.empty()) {
        context.out << ReviewText::kAllCaughtUp << '\n' << ReviewText::kAllCaughtUpDetail << '\n';
    } else {
        context.out << ReviewText::waitingCount(groups) << '\n';
    }
    for (const auto& group : groups) {
        const auto count = group.transactionIDs.size();
        std::string accounts;
        for (const auto& name : group.accountNames)
            accounts += (accounts.empty() ? "" : ", ") + name;
        const std::string dates = group.firstDate == group.lastDate
                                      ? group.firstDate.iso()
                                      : group.firstDate.iso() + " to " + group.lastDate.iso();
        context.out << fmt::format("\n{}\n  {}\n  {} transaction{}, {}, {}, {}\n  id: {}\n",
                                   group.displayName, group.example, count, count == 1 ? "" : "s",
                                   dates, accounts, Money::format(group.total), group.id);
        if (group.suggestion) {
            const Suggestion& suggestion = *group.suggestion;
            context.out << fmt::format(
                "  {}: {}{}\n", ReviewText::suggestionTitle(suggestion.source),
                ReviewText::filing(ledger, suggestion.merchantName, suggestion.categoryID,
                                   suggestion.kind),
                suggestion.reason.empty() ? "" : " (" + suggestion.reason + ")");
        }
        // A payment to a person can't be filed from its text alone.
        if (ReviewDecisions::asksPurpose(group))
            context.out << "  What was this for? Answer with `copperwick classify-zelle` and "
                        << choiceList(group.isMoneyIn) << ".\n";
    }
    printAIFiled(context, ledger, aiFiled);
    if (!stale.empty()) {
        context.out << '\n'
                    << ReviewText::kStalePendingTitle << '\n'
                    << ReviewText::kStalePendingDetail << '\n';
        for (const auto& transaction : stale)
            context.out << fmt::format(
                "  {}  {}  {}  {}\n", transaction.date.iso(), transaction.rawDescription,
                Money::format(transaction.amount, transaction.currency), transaction.id.text());
    }
}

const ReviewGroup* findGroup(const std::vector<ReviewGroup>& groups, std::string_view id) {
    for (const auto& group : groups) {
        if (text::equalsIgnoringCase(group.id, id))
            return &group;
    }
    return nullptr;
}

bool reportNoGroup(CommandContext& context, std::string_view id) {
    context.err << "Nothing in the review queue has the group id \u201C" << id
                << "\u201D; `copperwick review` shows them.\n";
    context.exitCode = kExitFailure;
    return true;
}

// Prints how the decided lines stand now and what is left.
void printOutcome(CommandContext& context, const LedgerRuntime& runtime,
                  const std::vector<Uuid>& ids, bool changed, const std::string& label) {
    const Ledger& ledger = runtime.ledger();
    if (context.json) {
        boost::json::array lines;
        for (const auto& id : ids) {
            if (const LedgerTransaction* transaction = ledger.transaction(id))
                lines.push_back(record_json::toJSON(*transaction));
        }
        printJSON(context, boost::json::object{
                               {"changed", changed}, {"label", label}, {"transactions", lines}});
        return;
    }
    if (!changed)
        context.out << "Nothing to change.\n";
    for (const auto& id : ids) {
        const LedgerTransaction* transaction = ledger.transaction(id);
        if (!transaction)
            continue;
        const Merchant* merchant = ledger.merchant(transaction->merchantID);
        context.out << fmt::format(
            "{}  {}  {}  {}\n", transaction->date.iso(), transaction->rawDescription,
            Money::format(transaction->amount, transaction->currency),
            ReviewText::filing(ledger, merchant ? std::optional(merchant->name) : std::nullopt,
                               transaction->categoryID, transaction->kind));
    }
    // Only the count: grouping what is left in full would cost a decision on
    // a large ledger more than the decision itself.
    const auto waiting = ReviewQueue::waiting(ledger);
    context.out << (waiting.groups == 0 ? std::string(ReviewText::kAllCaughtUp)
                                        : ReviewText::waitingCount(waiting))
                << '\n';
}

// Runs one decision on the ledger as an undoable step and shows the outcome.
void decide(CommandContext& context, LedgerRuntime& runtime, const std::vector<Uuid>& ids,
            const std::string& label, const std::function<LedgerDelta(Ledger&)>& decision) {
    runtime.setErrorMessage(std::nullopt);  // only this decision's outcome counts here
    bool changed = false;
    std::optional<Uuid> gone;
    runtime.apply([&](Ledger& copy) {
        // Another program may have removed the lines since they were looked
        // up (an import taken back); then nothing is decided, as if this
        // command had come second.
        gone.reset();
        for (const auto& id : ids) {
            if (!copy.transaction(id)) {
                gone = id;
                return LedgerDelta{};
            }
        }
        auto delta = decision(copy);
        changed = !delta.isEmpty();
        return delta;
    });
    if (reportFailedChange(runtime, context))
        return;
    if (gone) {
        context.err << "There's no transaction with the id " << gone->text() << ".\n";
        context.exitCode = kExitFailure;
        return;
    }
    printOutcome(context, runtime, ids, changed, label);
}

struct ClassifyOptions {
    std::string group;
    std::vector<std::string> ids;
    std::string merchant;
    std::string category;
    std::string kind;
    bool noRemember = false;
};

// What a decision is about: a review group's lines, or the listed ones.
struct DecisionTarget {
    std::vector<Uuid> ids;
    std::string label;                        // what Undo shows
    std::optional<std::string> merchantName;  // the group's name, offered when none is typed
};

// Absent, with the reason printed, when the group or a listed id isn't there.
std::optional<DecisionTarget> decisionTarget(CommandContext& context, const Ledger& ledger,
                                             const std::string& groupID,
                                             const std::vector<Uuid>& listed) {
    DecisionTarget target;
    if (!groupID.empty()) {
        const auto group = ReviewQueue::group(ledger, groupID);
        if (!group && reportNoGroup(context, groupID))
            return std::nullopt;
        target.ids = group->transactionIDs;
        target.label = ReviewDecisions::label(*group);
        target.merchantName = group->displayName;
        return target;
    }
    for (const auto& id : listed) {
        if (!ledger.transaction(id)) {
            context.err << "There's no transaction with the id " << id.text() << ".\n";
            context.exitCode = kExitFailure;
            return std::nullopt;
        }
    }
    target.ids = listed;
    target.label = "Classify";
    return target;
}

// The runtime and what the decision is about, from a group id or the --ids
// (exactly one of them); absent after saying why not.
struct OpenDecision {
    OpenRuntime runtime;
    DecisionTarget target;
};

std::optional<OpenDecision> openDecision(CommandContext& context, const std::string& groupID,
                                         const std::vector<std::string>& ids) {
    if (groupID.empty() == ids.empty()) {
        context.err << "Give either a group id or --ids, not both.\n";
        context.exitCode = kExitUsage;
        return std::nullopt;
    }
    const auto listed = readTransactionIDs(context, ids);
    if (!listed)
        return std::nullopt;
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return std::nullopt;
    auto target = decisionTarget(context, runtime->ledger(), groupID, *listed);
    if (!target)
        return std::nullopt;
    return OpenDecision{std::move(runtime), std::move(*target)};
}

void runClassify(CommandContext& context, const ClassifyOptions& options) {
    auto opened = openDecision(context, options.group, options.ids);
    if (!opened)
        return;
    LedgerRuntime* runtime = opened->runtime.get();
    const Ledger& ledger = runtime->ledger();
    const DecisionTarget* target = &opened->target;
    const std::vector<Uuid>& ids = target->ids;

    Classification decision;
    decision.remember = !options.noRemember;
    decision.ids = ids;
    decision.label = target->label;
    decision.merchantName =
        options.merchant.empty() ? target->merchantName : std::optional(options.merchant);

    const LedgerCategory* category = nullptr;
    if (!options.category.empty()) {
        category = categoryOrComplain(context, ledger, options.category);
        if (!category)
            return;
        decision.categoryID = category->id;
    }
    if (!options.kind.empty()) {
        decision.kind = *enumFromRaw<TransactionKind>(options.kind);
    } else if (category) {
        decision.kind = filingKind(*category);
    } else {
        context.err << "Say what these are: give --category, or --kind transfer or unknown.\n";
        context.exitCode = kExitUsage;
        return;
    }
    try {
        checkClassification(ledger, decision);
    } catch (const EntryError& refusal) {
        context.err << refusal.what() << '\n';
        context.exitCode = kExitFailure;
        return;
    }

    decide(context, *runtime, ids, decision.label,
           [&](Ledger& copy) { return classify(copy, decision, runtime->now()); });
}

struct ClassifyZelleOptions {
    std::string group;
    std::vector<std::string> ids;
    std::string choice;
    std::string merchant;
    std::string category;
    bool noRemember = false;
};

void runClassifyZelle(CommandContext& context, const ClassifyZelleOptions& options) {
    const ZelleChoice choice = *enumFromRaw<ZelleChoice>(options.choice);
    auto opened = openDecision(context, options.group, options.ids);
    if (!opened)
        return;
    LedgerRuntime* runtime = opened->runtime.get();
    const Ledger& ledger = runtime->ledger();
    const DecisionTarget* target = &opened->target;

    ZelleDecision decision;
    decision.ids = target->ids;
    decision.choice = choice;
    decision.remember = !options.noRemember;
    decision.label = target->label;
    decision.merchantName =
        options.merchant.empty() ? target->merchantName : std::optional(options.merchant);
    if (traits(choice).needsCategory && !options.category.empty()) {
        const LedgerCategory* category = categoryOrComplain(context, ledger, options.category);
        if (!category)
            return;
        decision.categoryID = category->id;
    }
    try {
        checkZelleDecision(ledger, decision);
    } catch (const EntryError& refusal) {
        if (refusal.kind() != EntryError::Case::choice) {
            context.err << refusal.what() << '\n';
            context.exitCode = kExitFailure;
            return;
        }
        // The question offers different answers for money in and money out.
        const bool moneyIn = asksAboutMoneyIn(ledger, decision);
        context.err << "\u201C" << traits(choice).label << "\u201D isn't offered for money "
                    << (moneyIn ? "in" : "out") << ". Choose " << choiceList(moneyIn) << ".\n";
        context.exitCode = kExitUsage;
        return;
    }

    decide(context, *runtime, decision.ids, decision.label,
           [&](Ledger& copy) { return classifyZelle(copy, decision, runtime->now()); });
}

struct ApproveOptions {
    std::string group;
    bool noRemember = false;
};

void runApprove(CommandContext& context, const ApproveOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const auto groups = ReviewQueue::groups(runtime->ledger());
    const ReviewGroup* group = findGroup(groups, options.group);
    if (!group && reportNoGroup(context, options.group))
        return;
    if (!group->suggestion) {
        context.err << "The group \u201C" << group->displayName
                    << "\u201D has no suggestion to approve; file it with `copperwick "
                       "classify`.\n";
        context.exitCode = kExitFailure;
        return;
    }
    const auto ids = group->transactionIDs;
    decide(context, *runtime, ids, "Approve suggestion", [&](Ledger& copy) {
        return approveSuggestions(copy, ids, !options.noRemember, runtime->now());
    });
}

struct ConfirmOptions {
    std::string group;
    std::vector<std::string> ids;
    bool all = false;
};

// "Looks right": the model's filing of these lines becomes the person's own.
void runConfirm(CommandContext& context, const ConfirmOptions& options) {
    const int chosen =
        (options.group.empty() ? 0 : 1) + (options.ids.empty() ? 0 : 1) + (options.all ? 1 : 0);
    if (chosen != 1) {
        context.err << "Give one of a group id, --ids or --all.\n";
        context.exitCode = kExitUsage;
        return;
    }
    const auto listed = readTransactionIDs(context, options.ids);
    if (!listed)
        return;
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    std::vector<Uuid> ids = *listed;
    if (options.all) {
        for (const auto* transaction : ledger.aiFiledUnchecked())
            ids.push_back(transaction->id);
    } else if (!options.group.empty()) {
        const auto groups = aiFiledGroups(ledger);
        const ReviewGroup* group = findGroup(groups, options.group);
        if (!group) {
            context.err << "Nothing Local AI filed has the group id \u201C" << options.group
                        << "\u201D; `copperwick review` shows them.\n";
            context.exitCode = kExitFailure;
            return;
        }
        ids = group->transactionIDs;
    } else {
        for (const auto& id : ids) {
            if (!ledger.transaction(id)) {
                context.err << "There's no transaction with the id " << id.text() << ".\n";
                context.exitCode = kExitFailure;
                return;
            }
        }
    }
    decide(context, *runtime, ids, "Keep Local AI filing",
           [&](Ledger& copy) { return confirmAIFiled(copy, ids, runtime->now()); });
}

}  // namespace

void addReviewCommands(CLI::App& app, CommandContext& context) {
    app.add_subcommand("review",
                       "Show what waits for a decision, grouped by bank text, and pending "
                       "charges that may never have posted")
        ->callback([&context] { runReview(context); });

    auto* classifyCommand = app.add_subcommand(
        "classify", "File a review group, or the given transactions, and remember it");
    auto classifyOptions = std::make_shared<ClassifyOptions>();
    classifyCommand->add_option("GROUP_ID", classifyOptions->group,
                                "A group's id, as `copperwick review` shows it");
    classifyCommand
        ->add_option("--ids", classifyOptions->ids, "The transactions' ids, separated by commas")
        ->delimiter(',');
    classifyCommand->add_option("--merchant", classifyOptions->merchant,
                                "The merchant's name (default: the group's name)");
    classifyCommand->add_option("--category", classifyOptions->category,
                                "The category's name or id");
    classifyCommand
        ->add_option("--kind", classifyOptions->kind, "expense, income, transfer or unknown")
        ->check(CLI::IsMember({"expense", "income", "transfer", "unknown"}));
    classifyCommand->add_flag("--no-remember", classifyOptions->noRemember,
                              "Only these transactions change");
    classifyCommand->callback(
        [&context, classifyOptions] { runClassify(context, *classifyOptions); });

    auto* zelle = app.add_subcommand("classify-zelle",
                                     "Say what a Zelle or other person-to-person payment was for");
    auto zelleOptions = std::make_shared<ClassifyZelleOptions>();
    zelle->add_option("GROUP_ID", zelleOptions->group,
                      "A group's id, as `copperwick review` shows it");
    zelle->add_option("--ids", zelleOptions->ids, "The transactions' ids, separated by commas")
        ->delimiter(',');
    std::vector<std::string> choices;
    for (const ZelleChoice choice : allCases<ZelleChoice>())
        choices.emplace_back(rawValue(choice));
    zelle
        ->add_option("--choice", zelleOptions->choice,
                     "Money out: spending, giftSent, payingEachOther, dontCount. Money in: "
                     "income, sold, giftReceived, payingMeBack, payingEachOther, dontCount")
        ->required()
        ->check(CLI::IsMember(choices));
    zelle->add_option("--category", zelleOptions->category,
                      "The category, for spending, income and payingMeBack");
    zelle->add_option("--merchant", zelleOptions->merchant,
                      "The person or business (default: the group's name)");
    zelle->add_flag("--no-remember", zelleOptions->noRemember, "Only these transactions change");
    zelle->callback([&context, zelleOptions] { runClassifyZelle(context, *zelleOptions); });

    auto* approve = app.add_subcommand("approve", "Approve a review group's suggestion");
    auto approveOptions = std::make_shared<ApproveOptions>();
    approve->add_option("GROUP_ID", approveOptions->group, "A group's id")->required();
    approve->add_flag("--no-remember", approveOptions->noRemember,
                      "Only these transactions change");
    approve->callback([&context, approveOptions] { runApprove(context, *approveOptions); });

    // Beside the other decisions, under `ai`, which addAICommands made.
    {
        auto* ai = app.get_subcommand("ai");
        auto confirmOptions = std::make_shared<ConfirmOptions>();
        auto* confirm = ai->add_subcommand(
            "confirm", "Looks Right: keep what Local AI filed, and teach it to Copperwick");
        confirm->add_option(
            "GROUP_ID", confirmOptions->group,
            "A group's id, as `copperwick review` shows it under Filed by Local AI");
        confirm
            ->add_option("--ids", confirmOptions->ids, "The transactions' ids, separated by commas")
            ->delimiter(',');
        confirm->add_flag("--all", confirmOptions->all, "Everything Local AI filed");
        confirm->callback([&context, confirmOptions] { runConfirm(context, *confirmOptions); });
    }
}

}  // namespace copperwick::cli
