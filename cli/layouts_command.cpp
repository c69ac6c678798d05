// `copperwick layouts list|export ID FILE|import FILE`: the CSV layouts
// Copperwick knows, and saved layout files for moving taught ones around.

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>

#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/runtime_session.h"
#include "core/import/builtin_profiles.h"
#include "core/import/layout_file.h"
#include "core/model/enum_text.h"
#include "core/operations/upsert_profile.h"

namespace copperwick::cli {

namespace {

boost::json::object layoutJSON(const ImportProfile& profile) {
    boost::json::object object{
        {"id", profile.id}, {"name", profile.name}, {"isBuiltIn", profile.isBuiltIn}};
    if (profile.accountType)
        object["accountType"] = rawValue(*profile.accountType);
    object["numberStyle"] = rawValue(profile.numberStyle.value_or(NumberStyle::decimalPoint));
    return object;
}

void runList(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    reportNotes(*runtime, context);
    const auto profiles = allProfiles(runtime->ledger());
    if (context.json) {
        boost::json::array array;
        for (const auto& profile : profiles)
            array.push_back(layoutJSON(profile));
        printJSON(context, array);
        return;
    }
    for (const auto& profile : profiles) {
        context.out << profile.id << " \u00B7 " << profile.name << " \u00B7 "
                    << (profile.isBuiltIn ? "built in" : "taught") << '\n';
    }
}

void fail(CommandContext& context, const std::string& message) {
    context.err << message << '\n';
    context.exitCode = kExitFailure;
}

void report(CommandContext& context, const std::string& status, boost::json::object extra = {}) {
    if (context.json) {
        extra["statusMessage"] = status;
        printJSON(context, extra);
    } else {
        context.out << status << '\n';
    }
}

void runExport(CommandContext& context, const std::string& id, const std::string& file) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const auto& taught = runtime->ledger().profiles;
    const auto found = std::find_if(taught.begin(), taught.end(),
                                    [&](const ImportProfile& p) { return p.id == id; });
    if (found == taught.end()) {
        // Built-in layouts ship with every copy of Copperwick; there is
        // nothing to carry over.
        const auto& builtIns = builtInProfiles();
        const bool builtIn = std::any_of(builtIns.begin(), builtIns.end(),
                                         [&](const ImportProfile& p) { return p.id == id; });
        fail(context, builtIn
                          ? "“" + id + "” is a built-in layout; only taught layouts can be saved."
                          : "No taught layout has the id “" + id + "”.");
        return;
    }
    const std::filesystem::path path(file);
    try {
        writeLayoutFile(path, *found);
    } catch (const std::exception& error) {
        fail(context, layoutSaveFailure(error));
        return;
    }
    report(context, savedLayoutMessage(path), {{"file", path.string()}});
}

void runImport(CommandContext& context, const std::string& file) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    ImportProfile profile;
    try {
        profile = readLayoutFile(file);
    } catch (const std::exception& error) {
        fail(context, importRefusal(error));
        return;
    }
    runtime->setErrorMessage(std::nullopt);  // only this save's outcome counts here
    runtime->apply([&](Ledger& ledger) { return upsertProfile(ledger, profile); });
    if (runtime->errorMessage()) {
        fail(context, *runtime->errorMessage());
        return;
    }
    report(context, importedLayoutMessage(profile), layoutJSON(profile));
}

}  // namespace

void addLayoutsCommands(CLI::App& app, CommandContext& context) {
    auto* layouts = app.add_subcommand("layouts", "List, save and load bank file layouts");
    layouts->require_subcommand(1);

    auto* list = layouts->add_subcommand("list", "List the taught layouts, then the built-in ones");
    list->callback([&context] { runList(context); });

    auto* exporting =
        layouts->add_subcommand("export", "Save a taught layout to a file to use elsewhere");
    auto exportID = std::make_shared<std::string>();
    auto exportFile = std::make_shared<std::string>();
    exporting->add_option("ID", *exportID, "The layout's id, as `layouts list` shows it")
        ->required();
    takesPath(context, exporting->add_option("FILE", *exportFile,
                                             "Where to save it, such as \"My bank.json\""))
        ->required();
    exporting->callback(
        [&context, exportID, exportFile] { runExport(context, *exportID, *exportFile); });

    auto* importing =
        layouts->add_subcommand("import", "Add a layout from a saved layout file as a taught one");
    auto importFile = std::make_shared<std::string>();
    takesPath(context, importing->add_option("FILE", *importFile, "A saved layout file"))
        ->required();
    importing->callback([&context, importFile] { runImport(context, *importFile); });
}

}  // namespace copperwick::cli
