#include "cli/command_line.h"

#include <ostream>

#include <CLI/CLI.hpp>

#include "cli/commands.h"
#include "copperwick_version.h"

namespace copperwick::cli {

namespace {

class CommandLine {
  public:
    CommandLine(std::ostream& out, std::ostream& err)
        : m_context{std::nullopt, false, false, out, err} {
        m_app.name("copperwick");
        m_app.description(
            "Copperwick: a private household budget that never leaves this computer.\n"
            "Reads bank exports, files every transaction, and reports from one ledger.");
        m_app.set_version_flag("--version", std::string("Copperwick ") + COPPERWICK_VERSION,
                               "Print the version and exit");
        // Global options are accepted before or after a command's name.
        m_app.fallthrough();
        m_app.option_defaults()->always_capture_default(false);
        m_app
            .add_option_function<std::string>(
                "--data-dir", [this](const std::string& dir) { m_context.dataDir = dir; },
                "Use this data folder instead of the standard one")
            ->type_name("DIR");
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
        addReviewCommands(m_app, m_context);
        addRulesCommands(m_app, m_context);
        addMerchantsCommands(m_app, m_context);
        addPaymentsCommand(m_app, m_context);
        addExportCommands(m_app, m_context);
        m_app.footer("Data folder: $XDG_DATA_HOME/Copperwick (default ~/.local/share/Copperwick).");
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
        }
        if (m_app.get_subcommands().empty()) {
            // Nothing to do without a command: say what there is.
            m_context.out << m_app.help();
            return 0;
        }
        return m_context.exitCode;
    }

  private:
    CLI::App m_app;
    CommandContext m_context;
};

}  // namespace

int run(const std::vector<std::string>& arguments, std::ostream& out, std::ostream& err) {
    CommandLine commandLine(out, err);
    try {
        return commandLine.run(arguments);
    } catch (const std::exception& error) {
        err << "copperwick: " << error.what() << '\n';
        return kExitFailure;
    }
}

}  // namespace copperwick::cli
