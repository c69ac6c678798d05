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
        // Another program may have taken back the last change meanwhile.
        context.err << runtime->errorMessage().value_or("There's nothing to undo.") << '\n';
        context.exitCode = kExitFailure;
        return;
    }
    // Another program's save may have made the last change a different one.
    const std::string undone = runtime->undoneLabel().value_or(*label);
    const std::string status = runtime->statusMessage().value_or("");
    if (context.json) {
        printJSON(context, boost::json::object{{"statusMessage", status}, {"label", undone}});
        return;
    }
    context.out << status << '\n' << undone << '\n';
}

}  // namespace

void addUndoCommand(CLI::App& app, CommandContext& context) {
    auto* undo = app.add_subcommand("undo", "Take back the last change");
    undo->callback([&context] { runUndo(context); });
}

}  // namespace copperwick::cli
