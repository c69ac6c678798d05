// `copperwick undo`: takes back the last change, exactly as the Undo menu
// command does. There is no redo.

#include <ostream>

#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/runtime_session.h"

namespace copperwick::cli {

namespace {

void runUndo(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const auto label = runtime->ledger().undoLabel();
    if (!label) {
        context.err << "There's nothing to undo.\n";
        context.exitCode = kExitFailure;
        return;
    }
    runtime->setErrorMessage(std::nullopt);  // only this action's outcome counts here
    if (!runtime->undoLastChange()) {
        context.err << runtime->errorMessage().value_or(std::string(LedgerRuntime::kNoStoreMessage))
                    << '\n';
        context.exitCode = kExitFailure;
        return;
    }
    const std::string status = runtime->statusMessage().value_or("");
    if (context.json) {
        printJSON(context, boost::json::object{{"statusMessage", status}, {"label", *label}});
        return;
    }
    context.out << status << '\n' << *label << '\n';
}

}  // namespace

void addUndoCommand(CLI::App& app, CommandContext& context) {
    auto* undo = app.add_subcommand("undo", "Take back the last change");
    undo->callback([&context] { runUndo(context); });
}

}  // namespace copperwick::cli
