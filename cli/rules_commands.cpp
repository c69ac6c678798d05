// `copperwick rules ...` and `copperwick builtin-rules ...`: the person's
// rules in running order and the switches on the built-in ones. Rule changes
// aren't undoable steps; they reach every transaction not set by hand.

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/ledger_lookup.h"
#include "cli/rule_options.h"
#include "cli/runtime_session.h"
#include "core/matching/builtin_knowledge.h"
#include "core/matching/matcher.h"
#include "core/model/record_json.h"
#include "core/operations/classification.h"
#include "core/operations/entry_error.h"
#include "core/operations/rules.h"
#include "core/presentation/review_text.h"
#include "core/review/rule_preview.h"
#include "core/review/rule_suggester.h"

namespace copperwick::cli {

namespace {

constexpr std::string_view kNoRulesText =
    "No rules yet. Make one here, or approve a suggested rule in Review. Corrections with "
    "\u201CRemember\u201D also teach Copperwick without a rule.";

bool reportNoRule(CommandContext& context, std::string_view id) {
    context.err << "There's no rule with the id " << id << ".\n";
    context.exitCode = kExitFailure;
    return true;
}

std::size_t changedTransactions(const LedgerDelta& delta) {
    const auto found = delta.changed.find(RecordKind::transaction);
    return found == delta.changed.end() ? 0 : found->second.size();
}

boost::json::object ruleJSON(const Ledger& ledger, const Rule& rule) {
    auto object = record_json::toJSON(rule).as_object();
    object["description"] = describeRule(ledger, rule);
    return object;
}

std::string ruleLine(const Ledger& ledger, const Rule& rule) {
    return fmt::format("{}{}  {}  {}", rule.name, rule.isEnabled ? "" : " (off)",
                       describeRule(ledger, rule), rule.id.text());
}

void runList(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const auto rules = orderedRules(ledger);
    if (context.json) {
        boost::json::array array;
        for (const auto& rule : rules)
            array.push_back(ruleJSON(ledger, rule));
        printJSON(context, array);
        return;
    }
    if (rules.empty()) {
        context.out << kNoRulesText << '\n';
        return;
    }
    for (std::size_t i = 0; i < rules.size(); ++i)
        context.out << fmt::format("{}. {}\n", i + 1, ruleLine(ledger, rules[i]));
}

// Runs one rule operation through the runtime and reports the rule as it
// now stands (absent after a deletion) and how many lines were filed anew.
void applyAndReport(CommandContext& context, LedgerRuntime& runtime, const Uuid& ruleID,
                    std::string_view done, const LedgerRuntime::Change& change) {
    runtime.setErrorMessage(std::nullopt);  // only this change's outcome counts here
    std::size_t refiled = 0;
    runtime.apply([&](Ledger& copy) {
        auto delta = change(copy);
        refiled = changedTransactions(delta);
        return delta;
    });
    if (reportFailedChange(runtime, context))
        return;
    const Ledger& ledger = runtime.ledger();
    const Rule* rule = findRule(ledger, ruleID.text());
    if (context.json) {
        boost::json::object object{{"changedTransactions", refiled}};
        if (rule)
            object["rule"] = ruleJSON(ledger, *rule);
        printJSON(context, object);
        return;
    }
    context.out << done << '\n';
    if (rule)
        context.out << ruleLine(ledger, *rule) << '\n';
    context.out << fmt::format("{} transaction{} filed anew.\n", refiled, refiled == 1 ? "" : "s");
}

struct AddOptions {
    RuleOptions rule;
    bool top = false;
    bool noApply = false;
};

void runAdd(CommandContext& context, const AddOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    Rule draft{.id = Uuid::random(), .createdAt = runtime->now()};
    const auto rule = editedRule(runtime->ledger(), draft, options.rule, context);
    if (!rule)
        return;
    applyAndReport(
        context, *runtime, rule->id, "Added the rule \u201C" + rule->name + "\u201D.",
        [&](Ledger& copy) { return addRule(copy, *rule, options.top, !options.noApply); });
}

struct UpdateOptions {
    std::string id;
    RuleOptions rule;
    bool noApply = false;
};

void runUpdate(CommandContext& context, const UpdateOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Rule* existing = findRule(runtime->ledger(), options.id);
    if (!existing && reportNoRule(context, options.id))
        return;
    const auto rule = editedRule(runtime->ledger(), *existing, options.rule, context);
    if (!rule)
        return;
    applyAndReport(context, *runtime, rule->id, "Changed the rule \u201C" + rule->name + "\u201D.",
                   [&](Ledger& copy) { return updateRule(copy, *rule, !options.noApply); });
}

void runSwitch(CommandContext& context, const std::string& id, bool enabled) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Rule* existing = findRule(runtime->ledger(), id);
    if (!existing && reportNoRule(context, id))
        return;
    Rule rule = *existing;
    rule.isEnabled = enabled;
    applyAndReport(
        context, *runtime, rule.id,
        fmt::format("Turned the rule \u201C{}\u201D {}.", rule.name, enabled ? "on" : "off"),
        [&](Ledger& copy) { return updateRule(copy, rule, true); });
}

void runDelete(CommandContext& context, const std::string& id) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Rule* existing = findRule(runtime->ledger(), id);
    if (!existing && reportNoRule(context, id))
        return;
    const Rule rule = *existing;
    applyAndReport(context, *runtime, rule.id, "Deleted the rule \u201C" + rule.name + "\u201D.",
                   [&](Ledger& copy) { return deleteRule(copy, rule.id, true); });
}

void runOrder(CommandContext& context, const std::vector<std::string>& given) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    std::vector<Uuid> ids;
    for (const auto& text : given) {
        const Rule* rule = findRule(runtime->ledger(), text);
        if (!rule && reportNoRule(context, text))
            return;
        ids.push_back(rule->id);
    }
    runtime->setErrorMessage(std::nullopt);
    runtime->apply([&](Ledger& copy) { return setRuleOrder(copy, ids, true); });
    if (reportFailedChange(*runtime, context))
        return;
    runList(context);
}

void runBuiltInList(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const auto& disabled = runtime->ledger().settings->disabledBuiltInRules;
    const auto isOn = [&](const BuiltInRule& rule) {
        return std::find(disabled.begin(), disabled.end(), rule.id) == disabled.end();
    };
    if (context.json) {
        boost::json::array array;
        for (const auto& rule : BuiltInKnowledge::rules()) {
            boost::json::array types;
            for (const auto type : rule.accountTypes)
                types.push_back(boost::json::string(rawValue(type)));
            boost::json::object object{
                {"id", rule.id},           {"name", rule.name},
                {"pattern", rule.pattern}, {"direction", rawValue(rule.direction)},
                {"accountTypes", types},   {"kind", rawValue(rule.kind)},
                {"isEnabled", isOn(rule)}};
            if (rule.categoryName)
                object["categoryName"] = *rule.categoryName;
            array.push_back(object);
        }
        printJSON(context, array);
        return;
    }
    for (const auto& rule : BuiltInKnowledge::rules())
        context.out << fmt::format("{}  {}  {}  {}\n", isOn(rule) ? "on " : "off", rule.name,
                                   describeBuiltInRule(rule), rule.id);
    context.out << BuiltInKnowledge::directoryText() << '\n';
}

struct BuiltInSwitch {
    std::string state;
    std::string id;
};

void runBuiltInSwitch(CommandContext& context, const BuiltInSwitch& options) {
    const auto& rules = BuiltInKnowledge::rules();
    if (std::none_of(rules.begin(), rules.end(),
                     [&](const BuiltInRule& rule) { return rule.id == options.id; })) {
        context.err << "There's no built-in rule with the id " << options.id
                    << "; `copperwick builtin-rules` lists them.\n";
        context.exitCode = kExitFailure;
        return;
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    runtime->setErrorMessage(std::nullopt);
    runtime->apply(
        [&](Ledger& copy) { return setBuiltInRule(copy, options.id, options.state == "on"); });
    if (reportFailedChange(*runtime, context))
        return;
    runBuiltInList(context);
}

struct PreviewOptions {
    RuleOptions rule;
    std::optional<std::string> id;
    bool top = false;
    std::optional<std::size_t> position;
};

boost::json::array idArray(const std::vector<Uuid>& ids) {
    boost::json::array array;
    for (const auto& id : ids)
        array.push_back(boost::json::string(id.text()));
    return array;
}

void runPreview(CommandContext& context, const PreviewOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    Rule draft{.id = Uuid::random(), .createdAt = runtime->now()};
    if (options.id) {
        const Rule* existing = findRule(ledger, *options.id);
        if (!existing && reportNoRule(context, *options.id))
            return;
        draft = *existing;
    }
    const auto rule = editedRule(ledger, draft, options.rule, context);
    if (!rule)
        return;
    // Where `rules add` would put it: on top with --top, else behind the others.
    // A saved rule keeps its own place.
    std::optional<std::size_t> position = options.position;
    if (!position && !options.top) {
        const auto ordered = orderedRules(ledger);
        position = static_cast<std::size_t>(
            std::find_if(ordered.begin(), ordered.end(),
                         [&](const Rule& saved) { return saved.id == rule->id; }) -
            ordered.begin());
    }
    const auto preview = RulePreview::compute(*rule, ledger, position);
    if (context.json) {
        boost::json::array shadows;
        for (const auto& [name, count] : preview.shadowedBy)
            shadows.push_back(boost::json::object{{"name", name}, {"count", count}});
        printJSON(context, boost::json::object{{"matchingIDs", idArray(preview.matchingIDs)},
                                               {"changingIDs", idArray(preview.changingIDs)},
                                               {"confirmedIDs", idArray(preview.confirmedIDs)},
                                               {"shadowedBy", shadows}});
        return;
    }
    context.out << describeRule(ledger, *rule) << '\n' << preview.countsText() << '\n';
    for (const auto& line : preview.shadowTexts())
        context.out << line << '\n';
}

void runSuggestions(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const auto suggestions = RuleSuggester::suggestions(ledger);
    if (context.json) {
        boost::json::array array;
        for (const auto& suggestion : suggestions) {
            boost::json::object object{{"id", suggestion.id},
                                       {"pattern", suggestion.pattern},
                                       {"kind", rawValue(suggestion.kind)},
                                       {"exampleIDs", idArray(suggestion.exampleIDs)},
                                       {"matchCount", suggestion.matchCount},
                                       {"conflictIDs", idArray(suggestion.conflictIDs)}};
            if (suggestion.merchantName)
                object["merchantName"] = *suggestion.merchantName;
            if (suggestion.categoryID)
                object["categoryID"] = suggestion.categoryID->text();
            array.push_back(object);
        }
        printJSON(context, array);
        return;
    }
    if (suggestions.empty()) {
        context.out << "No suggested rules.\n";
        return;
    }
    for (const auto& suggestion : suggestions) {
        context.out << "Suggested rule: " << ReviewText::suggestedRule(ledger, suggestion) << "\n  "
                    << ReviewText::suggestedRuleBasis(suggestion) << '\n';
        if (const auto conflicts = ReviewText::suggestedRuleConflicts(suggestion))
            context.out << "  " << *conflicts << '\n';
        context.out << "  id: " << suggestion.id << '\n';
    }
}

struct AcceptOptions {
    std::string id;
    std::optional<std::string> category;
};

void runAccept(CommandContext& context, const AcceptOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const auto suggestions = RuleSuggester::suggestions(ledger);
    const auto found =
        std::find_if(suggestions.begin(), suggestions.end(),
                     [&](const RuleSuggestion& suggestion) { return suggestion.id == options.id; });
    if (found == suggestions.end()) {
        context.err << "There's no suggested rule with the id \u201C" << options.id
                    << "\u201D; `copperwick rules suggestions` lists them.\n";
        context.exitCode = kExitFailure;
        return;
    }
    RuleSuggestion suggestion = *found;
    if (options.category) {
        const LedgerCategory* category = findCategory(ledger, *options.category);
        if (!category) {
            context.err << "There's no category called \u201C" << *options.category << "\u201D.\n";
            context.exitCode = kExitFailure;
            return;
        }
        suggestion.categoryID = category->id;
        suggestion.kind = filingKind(*category);
    }
    const LedgerCategory* category = ledger.category(suggestion.categoryID);
    Rule rule;
    try {
        rule = ruleEntered(
            ledger, suggestion.makeRule(category ? std::optional(category->name) : std::nullopt),
            nullptr);
    } catch (const EntryError& refusal) {
        context.err << refusal.what() << '\n';
        context.exitCode = kExitFailure;
        return;
    }
    applyAndReport(context, *runtime, rule.id, "Added the rule \u201C" + rule.name + "\u201D.",
                   [&](Ledger& copy) { return addRule(copy, rule, false, true); });
}

}  // namespace

void addRulesCommands(CLI::App& app, CommandContext& context) {
    auto* rules = app.add_subcommand("rules", "List your rules in running order, or change them");
    rules->callback([&context, rules] {
        if (rules->get_subcommands().empty())
            runList(context);
    });

    auto addOptions = std::make_shared<AddOptions>();
    auto* add = rules->add_subcommand("add", "Add a rule; it files every line not set by hand");
    addRuleOptions(*add, addOptions->rule);
    add->add_flag("--top", addOptions->top, "Run it before every other rule");
    add->add_flag("--no-apply", addOptions->noApply, "Leave the transactions as they are");
    add->callback([&context, addOptions] { runAdd(context, *addOptions); });

    auto updateOptions = std::make_shared<UpdateOptions>();
    auto* update = rules->add_subcommand("update", "Change a rule; options not given stay");
    update->add_option("ID", updateOptions->id, "The rule's id or name")->required();
    addRuleOptions(*update, updateOptions->rule);
    update->add_flag("--no-apply", updateOptions->noApply, "Leave the transactions as they are");
    update->callback([&context, updateOptions] { runUpdate(context, *updateOptions); });

    auto target = std::make_shared<std::string>();
    auto* remove = rules->add_subcommand("delete", "Delete a rule");
    remove->add_option("ID", *target, "The rule's id or name")->required();
    remove->callback([&context, target] { runDelete(context, *target); });

    for (const bool enabled : {true, false}) {
        auto* toggle = rules->add_subcommand(enabled ? "enable" : "disable",
                                             enabled ? "Turn a rule on" : "Turn a rule off");
        toggle->add_option("ID", *target, "The rule's id or name")->required();
        toggle->callback([&context, target, enabled] { runSwitch(context, *target, enabled); });
    }

    auto order = std::make_shared<std::vector<std::string>>();
    auto* orderCommand =
        rules->add_subcommand("order", "Set the running order; rules left out run after these");
    orderCommand->add_option("IDS", *order, "Rule ids, separated by commas")
        ->required()
        ->delimiter(',');
    orderCommand->callback([&context, order] { runOrder(context, *order); });

    auto previewOptions = std::make_shared<PreviewOptions>();
    auto* preview =
        rules->add_subcommand("preview", "Show what a rule would do, without saving it");
    addRuleOptions(*preview, previewOptions->rule);
    preview->add_option("--id", previewOptions->id, "Preview a change to this saved rule");
    preview->add_flag("--top", previewOptions->top, "As if it ran before every other rule");
    preview->add_option("--position", previewOptions->position,
                        "As if it ran at this place among the other rules (0 is the top)");
    preview->callback([&context, previewOptions] { runPreview(context, *previewOptions); });

    rules->add_subcommand("suggestions", "Rules that would make your repeated corrections for you")
        ->callback([&context] { runSuggestions(context); });

    auto acceptOptions = std::make_shared<AcceptOptions>();
    auto* accept = rules->add_subcommand("accept-suggestion", "Add a suggested rule and apply it");
    accept->add_option("SUGGESTION_ID", acceptOptions->id, "The suggestion's id")->required();
    accept->add_option("--category", acceptOptions->category, "File as this category instead");
    accept->callback([&context, acceptOptions] { runAccept(context, *acceptOptions); });

    auto* builtIn = app.add_subcommand("builtin-rules", "List the built-in rules, or switch one");
    auto builtInOptions = std::make_shared<BuiltInSwitch>();
    builtIn->add_option("STATE", builtInOptions->state, "on or off")
        ->check(CLI::IsMember({"on", "off"}));
    builtIn->add_option("ID", builtInOptions->id, "The built-in rule's id");
    builtIn->callback([&context, builtInOptions] {
        if (builtInOptions->state.empty()) {
            runBuiltInList(context);
        } else if (builtInOptions->id.empty()) {
            context.err << "Name the built-in rule to switch.\n";
            context.exitCode = kExitUsage;
        } else {
            runBuiltInSwitch(context, *builtInOptions);
        }
    });
}

}  // namespace copperwick::cli
