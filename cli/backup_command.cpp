// `copperwick backup now|list|restore FILE`: the data file's safety copies.

#include <ostream>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/backup_json.h"
#include "cli/commands.h"
#include "cli/runtime_session.h"

namespace copperwick::cli {

namespace {

// What the runtime said about a backup action: the status on success, the
// error on failure.
void reportOutcome(const LedgerRuntime& runtime, CommandContext& context,
                   boost::json::object extra = {}) {
    if (runtime.errorMessage()) {
        context.err << *runtime.errorMessage() << '\n';
        context.exitCode = kExitFailure;
        return;
    }
    const std::string status = runtime.statusMessage().value_or("");
    if (context.json) {
        extra["statusMessage"] = status;
        printJSON(context, extra);
    } else {
        context.out << status << '\n';
    }
}

void runNow(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    runtime->setErrorMessage(std::nullopt);  // only this action's outcome counts here
    runtime->backUpNow();
    boost::json::object extra;
    if (const auto backups = runtime->backups().list(); !backups.empty())
        extra["backup"] = backupJSON(backups.front());
    reportOutcome(*runtime, context, std::move(extra));
}

void runList(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    reportNotes(*runtime, context);
    const auto backups = runtime->backups().list();
    if (context.json) {
        boost::json::array array;
        for (const auto& backup : backups)
            array.push_back(backupJSON(backup));
        printJSON(context, array);
        return;
    }
    if (backups.empty())
        context.out << "No backups yet.\n";
    for (const auto& backup : backups)
        context.out << backupLine(backup) << '\n';
}

// The backup named on the command line: a path, or the name of a copy in
// the Backups folder.
BackupManager::Info findBackup(const LedgerRuntime& runtime, const std::string& file) {
    std::filesystem::path path(file);
    std::error_code error;
    if (!std::filesystem::exists(path, error)) {
        const auto inFolder = runtime.backups().folder() / path;
        if (std::filesystem::exists(inFolder, error))
            path = inFolder;
    }
    const auto absolute = std::filesystem::absolute(path, error);
    for (const auto& backup : runtime.backups().list()) {
        if (std::filesystem::equivalent(backup.url, absolute, error))
            return backup;
    }
    return BackupManager::info(absolute);
}

void runRestore(CommandContext& context, const std::string& file) {
    auto runtime = openRuntime(context);
    // A restore works even when the current file can't be opened: backups are plain files.
    runtime->setErrorMessage(std::nullopt);
    const auto backup = findBackup(*runtime, file);
    runtime->restore(backup);
    reportOutcome(*runtime, context, {{"restored", backupJSON(backup)}});
}

}  // namespace

void addBackupCommands(CLI::App& app, CommandContext& context) {
    auto* backup =
        app.add_subcommand("backup", "Make, list and restore safety copies of the data file");
    backup->require_subcommand(1);

    auto* now = backup->add_subcommand("now", "Make a backup of the data file now");
    now->callback([&context] { runNow(context); });

    auto* list = backup->add_subcommand("list", "List the backups, newest first");
    list->callback([&context] { runList(context); });

    auto* restore = backup->add_subcommand(
        "restore", "Replace the data file with a backup (the current file is backed up first)");
    auto file = std::make_shared<std::string>();
    takesPath(context, restore->add_option("FILE", *file,
                                           "The backup file, or its name in the Backups folder"))
        ->required();
    restore->callback([&context, file] { runRestore(context, *file); });
}

}  // namespace copperwick::cli
