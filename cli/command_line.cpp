#include "cli/command_line.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <new>
#include <ostream>
#include <stdexcept>

#include <CLI/CLI.hpp>

#include "cli/commands.h"
#include "cli/terminal_text.h"
#include "copperwick_version.h"
#include "core/model/text.h"

namespace copperwick::cli {

namespace {

// A command line refused before any command runs; what() is the reason.
class Refusal : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Every value given to `app` and the commands under it that would become
// ledger text (a name, a note, a pattern, search text) must be UTF-8: other
// bytes would be saved and could then never be read back.
void refuseTextThatIsntUTF8(const CLI::App& app, const CommandContext& context) {
    for (const CLI::Option* option : app.get_options()) {
        if (option->count() == 0 ||
            std::find(context.pathOptions.begin(), context.pathOptions.end(), option) !=
                context.pathOptions.end())
            continue;
        for (const std::string& value : option->results()) {
            if (!text::isValidUTF8(value)) {
                throw Refusal("The text given for " + option->get_name() +
                              " isn't valid UTF-8, so Copperwick can't use it. Type it again "
                              "in UTF-8.");
            }
        }
    }
    for (const CLI::App* command : app.get_subcommands())
        refuseTextThatIsntUTF8(*command, context);
}

// An empty --data-dir would quietly mean the current folder.
CLI::Validator namesAFolder() {
    return CLI::Validator(
        [](const std::string& dir) {
            return dir.empty() ? std::string("give the folder's name; an empty name isn't a folder")
                               : std::string();
        },
        "");
}

class CommandLine {
  public:
    CommandLine(std::ostream& out, std::ostream& err, AfterCommand after)
        : m_outBuffer(out),
          m_errBuffer(err),
          m_context{.out = m_out, .err = m_err, .processEnds = after == AfterCommand::processEnds} {
        m_app.name("copperwick");
        m_app.description(
            "Copperwick: a private household budget that never leaves this computer.\n"
            "Reads bank exports, files every transaction, and reports from one ledger.");
        m_app.set_version_flag("--version", std::string("Copperwick ") + COPPERWICK_VERSION,
                               "Print the version and exit");
        // Global options are accepted before or after a command's name.
        m_app.fallthrough();
        m_app.option_defaults()->always_capture_default(false);
        auto* dataDir = m_app.add_option_function<std::string>(
            "--data-dir", [this](const std::string& dir) { m_context.dataDir = dir; },
            "Use this data folder instead of the standard one");
        dataDir->type_name("DIR")->check(namesAFolder());
        takesPath(m_context, dataDir);
        m_app.add_flag("--json", m_context.json, "Write machine-readable JSON instead of text");
        m_app.add_flag("--demo", m_context.demo,
                       "Run the command on a fresh fictional household in a temporary folder, "
                       "leaving the data folder alone");
        m_app.require_subcommand(0, 1);
        addInfoCommand(m_app, m_context);
        addTextCommand(m_app, m_context);
        addBackupCommands(m_app, m_context);
        addAnalyzeCommand(m_app, m_context);
        addLayoutsCommands(m_app, m_context);
        addUndoCommand(m_app, m_context);
        addTransactionCommand(m_app, m_context);
        addTransactionsCommand(m_app, m_context);
        addHouseholdCommands(m_app, m_context);
        addImportCommands(m_app, m_context);
        addEntryCommands(m_app, m_context);
        addMaintenanceCommands(m_app, m_context);
        addReportCommand(m_app, m_context);
        addBudgetCommands(m_app, m_context);
        addNotesCommands(m_app, m_context);
        addAICommands(m_app, m_context);
        addAskCommands(m_app, m_context);
        addReviewCommands(m_app, m_context);
        addRulesCommands(m_app, m_context);
        addMerchantsCommands(m_app, m_context);
        addPaymentsCommand(m_app, m_context);
        addExportCommands(m_app, m_context);
        m_app.footer("Data folder: $XDG_DATA_HOME/Copperwick (default ~/.local/share/Copperwick).");
        // Runs once everything is parsed, before the command's own callback.
        m_app.parse_complete_callback([this] {
            refuseTextThatIsntUTF8(m_app, m_context);
            if (m_context.json)
                m_outBuffer.passThrough();
        });
    }

    int run(const std::vector<std::string>& arguments) {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        try {
            m_app.parse(reversed);
        } catch (const CLI::CallForHelp&) {
            m_context.out << m_app.help();
            return 0;
        } catch (const CLI::CallForAllHelp&) {
            m_context.out << m_app.help("", CLI::AppFormatMode::All);
            return 0;
        } catch (const CLI::CallForVersion& version) {
            m_context.out << version.what() << '\n';
            return 0;
        } catch (const CLI::ParseError& error) {
            m_context.err << "copperwick: " << error.what() << '\n'
                          << "Run 'copperwick --help' for the list of commands.\n";
            return kExitUsage;
        } catch (const Refusal& refusal) {
            m_context.err << refusal.what() << '\n';
            return kExitFailure;
        }
        if (m_app.get_subcommands().empty()) {
            // Nothing to do without a command: say what there is.
            m_context.out << m_app.help();
            return 0;
        }
        return m_context.exitCode;
    }

  private:
    // Everything a command writes passes through these; JSON output is let
    // through unchanged once the options are known.
    TerminalSafeBuffer m_outBuffer;
    TerminalSafeBuffer m_errBuffer;
    std::ostream m_out{&m_outBuffer};
    std::ostream m_err{&m_errBuffer};
    CLI::App m_app;
    CommandContext m_context;
};

}  // namespace

namespace {

// Runs the command. Whatever a command didn't expect ends it here, in words
// and with a failure, rather than as a crash; the command line is gone by
// then, so the words are made safe here.
int runCatching(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
                AfterCommand after) {
    try {
        CommandLine commandLine(out, err, after);
        return commandLine.run(arguments);
    } catch (const std::bad_alloc&) {
        err << "Copperwick ran out of memory and stopped.\n";
    } catch (const std::filesystem::filesystem_error& error) {
        err << terminalSafe("Copperwick stopped: " + error.code().message() +
                            (error.path1().empty() ? "" : " (" + error.path1().string() + ")") +
                            ".")
            << '\n';
    } catch (const std::exception& error) {
        err << terminalSafe(std::string("Copperwick stopped: ") + error.what()) << '\n';
    } catch (...) {
        err << "Copperwick stopped because of an error it doesn't recognise.\n";
    }
    return kExitFailure;
}

}  // namespace

int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err,
        AfterCommand after) {
    const int code = runCatching(arguments, out, err, after);
    // Output that never arrived, on a full disk for one, fails the command
    // even when the command itself did its job.
    if (!out.flush()) {
        err << "Copperwick couldn't write all of its output.\n";
        return kExitFailure;
    }
    return code;
}

}  // namespace copperwick::cli
