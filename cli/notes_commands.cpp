// `copperwick notes [period and people options]`, `copperwick notes dismiss
// NOTE|--all`, `copperwick notes show-all` and `copperwick freshness`: what a
// report's totals leave out, the one-click answers to it, and how current
// each account's imports are.

#include <memory>
#include <ostream>
#include <string>

#include <fmt/format.h>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/report_json.h"
#include "cli/report_options.h"
#include "cli/runtime_session.h"
#include "core/model/date_text.h"
#include "core/operations/entry_error.h"
#include "core/operations/report_notes.h"
#include "core/reports/account_freshness.h"
#include "core/reports/report_engine.h"
#include "runtime/instant_text.h"

namespace copperwick::cli {

namespace {

struct NotesOptions {
    ReportOptions filter;
    std::string note;
    bool all = false;
};

// The report's notes for the options, or absent with the reason printed.
std::optional<std::vector<DataNote>> reportNotesFor(LedgerRuntime& runtime,
                                                    const ReportOptions& options,
                                                    CommandContext& context) {
    const auto filter = reportFilter(options, runtime.ledger(), runtime.today(), context);
    if (!filter)
        return std::nullopt;
    return ReportEngine::build(runtime.ledger(), *filter, runtime.today()).notes;
}

void printNoteList(CommandContext& context, const std::vector<DataNote>& notes) {
    if (context.json) {
        boost::json::array list;
        for (const auto& note : notes)
            list.push_back(report_json::toJSON(note));
        printJSON(context, list);
        return;
    }
    if (notes.empty())
        context.out << "No notes for this period.\n";
    for (const auto& note : notes)
        context.out << fmt::format("{}  {}  {}\n", note.id, rawValue(note.severity), note.text);
}

void runList(CommandContext& context, const NotesOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    if (const auto notes = reportNotesFor(*runtime, options.filter, context))
        printNoteList(context, *notes);
}

void runDismiss(CommandContext& context, const NotesOptions& options) {
    if (options.all == !options.note.empty()) {
        context.err << "Name one note, or use --all for every note that can be answered.\n";
        context.exitCode = kExitUsage;
        return;
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const auto notes = reportNotesFor(*runtime, options.filter, context);
    if (!notes)
        return;
    std::optional<std::vector<DataNote::Acknowledgement>> answers;
    try {
        answers = noteAnswers(*notes, options.all ? std::nullopt : std::optional(options.note));
    } catch (const EntryError& refusal) {
        context.err << refusal.what() << '\n';
        context.exitCode = kExitFailure;
        return;
    }
    if (!answers) {
        context.err << "There's no note \u201C" << options.note << "\u201D for this period.\n";
        context.exitCode = kExitFailure;
        return;
    }
    runtime->setErrorMessage(std::nullopt);
    runtime->apply([&](Ledger& copy) { return acknowledge(copy, *answers); });
    if (reportFailedChange(*runtime, context))
        return;
    if (const auto after = reportNotesFor(*runtime, options.filter, context))
        printNoteList(context, *after);
}

void runShowAll(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const int64_t count = acknowledgedNoteCount(runtime->ledger());
    runtime->setErrorMessage(std::nullopt);
    runtime->apply([](Ledger& copy) { return showAllReportNotes(copy); });
    if (reportFailedChange(*runtime, context))
        return;
    if (context.json) {
        printJSON(context, boost::json::object{{"cleared", count}});
        return;
    }
    context.out << (count == 0 ? std::string("No notes were set aside.")
                               : fmt::format("Cleared {} answer{} to report notes.", count,
                                             count == 1 ? "" : "s"))
                << '\n';
}

void runFreshness(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const auto lines = AccountFreshness::build(runtime->ledger(), runtime->today());
    if (context.json) {
        boost::json::array list;
        for (const auto& line : lines)
            list.push_back(report_json::toJSON(line));
        printJSON(context, list);
        return;
    }
    if (lines.empty()) {
        context.out << "No accounts yet.\n";
        return;
    }
    for (const auto& line : lines) {
        std::string details = line.importLine(
            line.lastImportedAt ? std::optional(abbreviatedDateTime(*line.lastImportedAt))
                                : std::nullopt);
        if (const auto confirmed = line.confirmedLine())
            details += " \u00B7 " + *confirmed;
        context.out << fmt::format("{}  {}  {}\n", line.account.name, label(line.state), details);
    }
}

}  // namespace

void addNotesCommands(CLI::App& app, CommandContext& context) {
    auto* notes = app.add_subcommand(
        "notes", "What a report's totals leave out, for a period (default this month)");
    auto options = std::make_shared<NotesOptions>();
    addReportOptions(*notes, options->filter);
    notes->require_subcommand(0, 1);
    notes->callback([&context, notes, options] {
        if (notes->get_subcommands().empty())
            runList(context, *options);
    });

    auto* dismiss = notes->add_subcommand(
        "dismiss", "Answer a note (by its id) the way its one-click answer does, or all of them");
    dismiss->add_option("NOTE", options->note, "The note's id, such as partial or late-ID");
    dismiss->add_flag("--all", options->all, "Every note of the period that has an answer");
    dismiss->callback([&context, options] { runDismiss(context, *options); });

    notes->add_subcommand("show-all", "Take back every answer, so that the notes can return")
        ->callback([&context] { runShowAll(context); });

    app.add_subcommand("freshness", "How current each account's imports are")->callback([&context] {
        runFreshness(context);
    });
}

}  // namespace copperwick::cli
