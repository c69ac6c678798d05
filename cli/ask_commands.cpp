// `copperwick lookup`, `facts`, `ask` and `explain`: the finance lookups and
// report facts that Local AI reads, and what it makes of them. `lookup` and
// `facts` need no model: they are the program's own words, which every
// figure the model states is held against.

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/ledger_lookup.h"
#include "cli/report_options.h"
#include "cli/runtime_session.h"
#include "core/intelligence/ask_tools.h"
#include "core/reports/report_facts.h"
#include "runtime/intelligence_controller.h"
#include "runtime/intelligence_prompts.h"

namespace copperwick::cli {

namespace {

namespace prompts = IntelligencePrompts;

std::string joined(const std::vector<std::string>& items, std::string_view separator) {
    std::string text;
    for (const auto& item : items)
        text += (text.empty() ? "" : std::string(separator)) + item;
    return text;
}

boost::json::array idTexts(const std::vector<Uuid>& ids) {
    boost::json::array array;
    for (const auto& id : ids)
        array.push_back(boost::json::string(id.text()));
    return array;
}

// ---- lookup

struct LookupOptions {
    std::string tool;
    std::vector<std::string> arguments;
};

void runLookup(CommandContext& context, const LookupOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const auto tools = AskTools::all(runtime->ledger(), runtime->today(), nullptr);
    const auto tool = std::find_if(tools.begin(), tools.end(),
                                   [&](const AskTool& t) { return t.name() == options.tool; });
    if (tool == tools.end()) {
        std::vector<std::string> names;
        for (const auto& known : tools)
            names.push_back(known.name());
        context.err << "There's no lookup called \u201C" << options.tool << "\u201D. Use "
                    << joined(names, ", ") << ".\n";
        context.exitCode = kExitUsage;
        return;
    }
    std::vector<std::string> names;
    for (const auto& parameter : tool->parameters())
        names.push_back(parameter.name);
    boost::json::object arguments;
    for (const auto& argument : options.arguments) {
        const auto equals = argument.find('=');
        const std::string name = argument.substr(0, equals);
        if (equals == std::string::npos ||
            std::find(names.begin(), names.end(), name) == names.end()) {
            context.err << "\u201C" << argument << "\u201D isn't an argument of " << tool->name()
                        << ". Give NAME=VALUE with the names " << joined(names, ", ") << ".\n";
            context.exitCode = kExitUsage;
            return;
        }
        // Whole dollars are read from text as the model may send them.
        arguments[name] = argument.substr(equals + 1);
    }
    const std::string result = tool->call(arguments);
    if (context.json) {
        printJSON(context,
                  boost::json::object{
                      {"tool", tool->name()}, {"arguments", arguments}, {"result", result}});
    } else {
        context.out << result << '\n';
    }
    // The lookup answered, but only to say what it needs instead.
    if (result.rfind("Error: ", 0) == 0)
        context.exitCode = kExitFailure;
}

// ---- facts

boost::json::value factJSON(const ReportFact& fact) {
    return boost::json::object{
        {"id", fact.id}, {"text", fact.text}, {"transactionIDs", idTexts(fact.transactionIDs)}};
}

void runFacts(CommandContext& context, const ReportOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const auto filter = reportFilter(options, runtime->ledger(), runtime->today(), context);
    if (!filter)
        return;
    const ReportBundle bundle = runtime->buildReportBundle(*filter);
    const auto facts = ReportFacts::build(bundle.comparison, bundle.recurring, bundle.unusual);
    if (context.json) {
        boost::json::array array;
        for (const auto& fact : facts)
            array.push_back(factJSON(fact));
        printJSON(context, array);
        return;
    }
    for (const auto& fact : facts)
        context.out << fact.id << ": " << fact.text << '\n';
}

// ---- ask

boost::json::value answerJSON(const AskAnswer& answer) {
    boost::json::array lookups;
    for (const auto& entry : answer.lookups) {
        lookups.push_back(boost::json::object{{"id", entry.id.text()},
                                              {"tool", entry.tool},
                                              {"arguments", entry.arguments},
                                              {"result", entry.result}});
    }
    return boost::json::object{
        {"id", answer.id.text()}, {"question", answer.question},     {"text", answer.text},
        {"lookups", lookups},     {"isGrounded", answer.isGrounded}, {"failed", answer.failed}};
}

// Each lookup's result indented under what was asked of it.
void printLookups(std::ostream& out, const std::vector<ToolCallLog::Entry>& lookups) {
    out << '\n' << prompts::lookupsHeading(lookups.size()) << '\n';
    for (const auto& entry : lookups) {
        out << "  " << entry.tool << ": " << entry.arguments << '\n';
        std::size_t start = 0;
        while (start <= entry.result.size()) {
            const auto end = entry.result.find('\n', start);
            out << "    " << entry.result.substr(start, end - start) << '\n';
            if (end == std::string::npos)
                break;
            start = end + 1;
        }
    }
}

void runAsk(CommandContext& context, const std::vector<std::string>& words) {
    const std::string question(text::trimmed(joined(words, " ")));
    if (question.empty()) {
        context.err
            << "Ask a question in words, such as \u201CWhat subscriptions do I have?\u201D\n";
        context.exitCode = kExitUsage;
        return;
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    IntelligenceController intelligence(*runtime);
    intelligence.ask(question);
    intelligence.wait();
    const AskAnswer& answer = intelligence.answers().back();
    if (answer.failed)
        context.exitCode = kExitFailure;
    if (context.json) {
        printJSON(context, answerJSON(answer));
        return;
    }
    if (answer.failed) {
        context.err << answer.text << '\n';
        return;
    }
    context.out << answer.text << '\n';
    if (!answer.isGrounded)
        context.out << "! " << prompts::kNotGrounded << '\n';
    printLookups(context.out, answer.lookups);
}

// ---- explain

void runExplain(CommandContext& context, const std::string& idText) {
    const auto ids = readTransactionIDs(context, {idText});
    if (!ids)
        return;
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const LedgerTransaction* transaction = runtime->ledger().transaction(ids->front());
    if (!transaction) {
        context.err << "There's no transaction with the id " << ids->front().text() << ".\n";
        context.exitCode = kExitFailure;
        return;
    }
    IntelligenceController intelligence(*runtime);
    intelligence.explain(*transaction);
    intelligence.wait();
    const ChargeExplanation& explanation = intelligence.explanations().at(ids->front());
    if (explanation.failed)
        context.exitCode = kExitFailure;
    if (context.json) {
        printJSON(context, boost::json::object{{"text", explanation.text},
                                               {"isConfident", explanation.isConfident},
                                               {"isGrounded", explanation.isGrounded},
                                               {"failed", explanation.failed}});
        return;
    }
    if (explanation.failed) {
        context.err << explanation.text << '\n';
        return;
    }
    context.out << explanation.text << '\n';
    if (!explanation.isConfident)
        context.out << prompts::kNotSure << '\n';
}

}  // namespace

void addAskCommands(CLI::App& app, CommandContext& context) {
    auto lookupOptions = std::make_shared<LookupOptions>();
    auto* lookup = app.add_subcommand(
        "lookup", "Run one of the finance lookups Local AI may call, and print its answer");
    lookup
        ->add_option("TOOL", lookupOptions->tool,
                     "spendingSummary, categorySpending, merchantSpending, comparePeriods, "
                     "findTransactions or recurringCharges")
        ->required();
    lookup->add_option("ARGUMENT", lookupOptions->arguments,
                       "NAME=VALUE, such as start=2026-03 end=2026-03 person=everyone");
    lookup->callback([&context, lookupOptions] { runLookup(context, *lookupOptions); });

    auto factsOptions = std::make_shared<ReportOptions>();
    auto* facts = app.add_subcommand(
        "facts", "The key facts of a report, numbered as Local AI reads them (default this month)");
    addReportOptions(*facts, *factsOptions);
    facts->callback([&context, factsOptions] { runFacts(context, *factsOptions); });

    auto words = std::make_shared<std::vector<std::string>>();
    auto* ask = app.add_subcommand(
        "ask", "Ask Local AI about your money; it answers from Copperwick's own lookups");
    ask->add_option("QUESTION", *words, "The question, in plain words")->required();
    ask->callback([&context, words] { runAsk(context, *words); });

    auto id = std::make_shared<std::string>();
    auto* explain = app.add_subcommand("explain", "Ask Local AI what a charge most likely is");
    explain->add_option("TRANSACTION_ID", *id, "The transaction's id")->required();
    explain->callback([&context, id] { runExplain(context, *id); });
}

}  // namespace copperwick::cli
