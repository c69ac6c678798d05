// `copperwick ai` and its commands: Local AI's switches and model server, a
// look at what waits in review, and tidier merchant names. The model runs
// on this computer; its address must be a loopback one.

#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/local_ai.h"
#include "cli/runtime_session.h"
#include "core/model/text.h"
#include "core/review/review_queue.h"
#include "runtime/intelligence_controller.h"

namespace copperwick::cli {

namespace {

constexpr std::string_view kDemoKeepsModel =
    "A demo uses the local model set up for Copperwick itself and can't change it. Run "
    "'copperwick ai setup' without --demo.";

boost::json::value orNull(const std::optional<std::string>& text) {
    return text ? boost::json::value(*text) : boost::json::value(nullptr);
}

std::optional<std::string> nonEmpty(const std::optional<std::string>& text) {
    if (!text || text::trimmed(*text).empty())
        return std::nullopt;
    return text;
}

std::string_view onOff(bool on) {
    return on ? "on" : "off";
}

// The switches, the model server and whether it answers.
void printStatus(CommandContext& context, LedgerRuntime& runtime,
                 const IntelligenceController& intelligence) {
    const auto on = intelligence.switches();
    const auto& preferences = runtime.modelPreferences();
    const auto endpoint = nonEmpty(preferences.stringValue(preference_keys::aiEndpoint));
    const auto model = nonEmpty(preferences.stringValue(preference_keys::aiModel));
    const auto reason = intelligence.model().unavailableReason();
    if (context.json) {
        printJSON(context, boost::json::object{{"enabled", on.enabled},
                                               {"autoSuggest", on.autoSuggest},
                                               {"autoFile", on.autoFile},
                                               {"tidyNames", on.tidyNames},
                                               {"endpoint", orNull(endpoint)},
                                               {"model", orNull(model)},
                                               {"available", !reason},
                                               {"unavailableReason", orNull(reason)}});
        return;
    }
    std::ostream& out = context.out;
    out << "Local AI: " << onOff(on.enabled) << '\n'
        << "  Look at new review groups after an import (autoSuggest): " << onOff(on.autoSuggest)
        << '\n'
        << "  File what it is sure of, rather than only suggest (autoFile): " << onOff(on.autoFile)
        << '\n'
        << "  Tidy merchant names after an import (tidyNames): " << onOff(on.tidyNames) << '\n'
        << "Model server: " << endpoint.value_or("not set up") << '\n'
        << "Model: " << model.value_or("the first one the server lists") << '\n'
        << (reason ? *reason : std::string("The local model is answering.")) << '\n';
}

void runStatus(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    IntelligenceController intelligence(*runtime);
    printStatus(context, *runtime, intelligence);
}

struct SetupOptions {
    std::string endpoint;
    std::optional<std::string> model;
};

void runSetup(CommandContext& context, const SetupOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    if (runtime->isDemo()) {
        context.err << kDemoKeepsModel << '\n';
        context.exitCode = kExitFailure;
        return;
    }
    if (const auto refusal = IntelligenceController::setUpModel(runtime->defaults(),
                                                                options.endpoint, options.model)) {
        context.err << *refusal << '\n';
        context.exitCode = kExitFailure;
        return;
    }
    IntelligenceController intelligence(*runtime);
    printStatus(context, *runtime, intelligence);
}

// Sets one switch, and says how it stands now.
void runSwitch(CommandContext& context, std::string_view key, std::string_view name, bool on) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    runtime->defaults().set(key, on);
    IntelligenceController intelligence(*runtime);
    if (context.json) {
        printStatus(context, *runtime, intelligence);
        return;
    }
    context.out << name << ": " << onOff(on) << '\n';
}

struct LookOptions {
    std::vector<std::string> groups;
    bool suggestOnly = false;
};

void runLook(CommandContext& context, const LookOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    std::vector<ReviewGroup> groups;
    if (options.groups.empty()) {
        groups = IntelligenceController::groupsToLookAt(ledger);
    } else {
        const auto waiting = ReviewQueue::groups(ledger);
        for (const auto& id : options.groups) {
            const auto found = std::find_if(waiting.begin(), waiting.end(), [&](const auto& group) {
                return text::equalsIgnoringCase(group.id, id);
            });
            if (found == waiting.end()) {
                context.err << "Nothing in the review queue has the group id \u201C" << id
                            << "\u201D; `copperwick review` shows them.\n";
                context.exitCode = kExitFailure;
                return;
            }
            groups.push_back(*found);
        }
    }
    if (groups.empty()) {
        if (context.json) {
            printJSON(context, boost::json::object{{"statusMessage", nullptr},
                                                   {"filedIDs", boost::json::array()},
                                                   {"suggestedGroupIDs", boost::json::array()}});
        } else {
            context.out << "Nothing in Review is left for Local AI to look at.\n";
        }
        return;
    }
    IntelligenceController intelligence(*runtime);
    if (refuseLocalAI(context, intelligence))
        return;

    std::set<Uuid> filedBefore;
    for (const auto* transaction : runtime->ledger().aiFiledUnchecked())
        filedBefore.insert(transaction->id);
    runtime->setStatusMessage(std::nullopt);
    {
        const ProgressLines progress(intelligence, context.err);
        intelligence.lookAt(std::move(groups), options.suggestOnly);
    }
    if (reportFailedChange(*runtime, context))
        return;

    const auto status = runtime->statusMessage();
    if (context.json) {
        boost::json::array filed;
        boost::json::array suggested;
        for (const auto* transaction : runtime->ledger().aiFiledUnchecked()) {
            if (!filedBefore.contains(transaction->id))
                filed.push_back(boost::json::string(transaction->id.text()));
        }
        for (const auto& group : ReviewQueue::groups(runtime->ledger())) {
            if (group.suggestion && group.suggestion->source == MatchMethod::ai)
                suggested.push_back(boost::json::string(group.id));
        }
        printJSON(context, boost::json::object{{"statusMessage", orNull(status)},
                                               {"filedIDs", filed},
                                               {"suggestedGroupIDs", suggested}});
        return;
    }
    context.out << status.value_or("Local AI found nothing it could file or suggest.") << '\n';
}

void runTidy(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    IntelligenceController intelligence(*runtime);
    if (refuseLocalAI(context, intelligence))
        return;
    runtime->setStatusMessage(std::nullopt);
    intelligence.tidyMerchantNames();
    intelligence.wait();
    if (reportFailedChange(*runtime, context))
        return;
    const auto status = runtime->statusMessage();
    if (context.json) {
        printJSON(context, boost::json::object{{"statusMessage", orNull(status)}});
        return;
    }
    context.out << status.value_or("No merchant name needed tidying.") << '\n';
}

}  // namespace

void addAICommands(CLI::App& app, CommandContext& context) {
    auto* ai = app.add_subcommand(
        "ai", "Show Local AI's switches and model server, or set them; let it look at what waits");
    ai->callback([&context, ai] {
        if (ai->get_subcommands().empty())
            runStatus(context);
    });

    auto setupOptions = std::make_shared<SetupOptions>();
    auto* setup = ai->add_subcommand(
        "setup",
        "Use the model server at this address, on this computer (http://127.0.0.1:PORT/v1)");
    setup->add_option("--endpoint", setupOptions->endpoint, "The server's address")
        ->type_name("URL")
        ->required();
    setup->add_option("--model", setupOptions->model, "The model the server is to run")
        ->type_name("NAME");
    setup->callback([&context, setupOptions] { runSetup(context, *setupOptions); });

    for (const bool on : {true, false}) {
        ai->add_subcommand(on ? "on" : "off", on ? "Turn Local AI on" : "Turn Local AI off")
            ->callback(
                [&context, on] { runSwitch(context, preference_keys::aiEnabled, "Local AI", on); });
    }

    auto setting = std::make_shared<std::pair<std::string, std::string>>();
    auto* set = ai->add_subcommand("set", "Switch one of Local AI's features on or off");
    set->add_option("SWITCH", setting->first, "autoSuggest, autoFile or tidyNames")
        ->required()
        ->check(CLI::IsMember({"autoSuggest", "autoFile", "tidyNames"}));
    set->add_option("STATE", setting->second, "on or off")
        ->required()
        ->check(CLI::IsMember({"on", "off"}));
    set->callback([&context, setting] {
        const auto& [name, state] = *setting;
        const std::string_view key = name == "autoSuggest" ? preference_keys::aiAutoSuggest
                                     : name == "autoFile"  ? preference_keys::aiAutoFile
                                                           : preference_keys::aiTidyNames;
        runSwitch(context, key, name, state == "on");
    });

    auto lookOptions = std::make_shared<LookOptions>();
    auto* look = ai->add_subcommand(
        "look", "Let Local AI file or suggest for review groups (default: all it can help with)");
    look->add_option("GROUP_ID", lookOptions->groups,
                     "Groups' ids, as `copperwick review` shows them");
    look->add_flag("--suggest-only", lookOptions->suggestOnly,
                   "Only suggest, whatever autoFile says");
    look->callback([&context, lookOptions] { runLook(context, *lookOptions); });

    ai->add_subcommand("tidy", "Let Local AI tidy merchant names that look like bank text")
        ->callback([&context] { runTidy(context); });
}

}  // namespace copperwick::cli
