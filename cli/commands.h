#pragma once

// The subcommands of `copperwick`. Each adds itself to the application; its
// callback runs the command against the runtime and sets context.exitCode.

#include <CLI/CLI.hpp>

#include "cli/command_line.h"

namespace copperwick::cli {

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;

// Marks an option whose values are file or folder paths. Every other value
// on the command line may become ledger text and must be UTF-8; a Linux path
// may be any bytes, so these are exempt.
inline CLI::Option* takesPath(CommandContext& context, CLI::Option* option) {
    context.pathOptions.push_back(option);
    return option;
}

void addInfoCommand(CLI::App& app, CommandContext& context);
void addBackupCommands(CLI::App& app, CommandContext& context);
void addTextCommand(CLI::App& app, CommandContext& context);
void addAnalyzeCommand(CLI::App& app, CommandContext& context);
void addLayoutsCommands(CLI::App& app, CommandContext& context);
void addUndoCommand(CLI::App& app, CommandContext& context);
void addTransactionCommand(CLI::App& app, CommandContext& context);
void addTransactionsCommand(CLI::App& app, CommandContext& context);
void addHouseholdCommands(CLI::App& app, CommandContext& context);
void addImportCommands(CLI::App& app, CommandContext& context);
void addEntryCommands(CLI::App& app, CommandContext& context);
// Adds to `people` and `accounts`, so it comes after addHouseholdCommands.
void addMaintenanceCommands(CLI::App& app, CommandContext& context);
void addReportCommand(CLI::App& app, CommandContext& context);
void addBudgetCommands(CLI::App& app, CommandContext& context);
void addNotesCommands(CLI::App& app, CommandContext& context);
void addAICommands(CLI::App& app, CommandContext& context);
void addAskCommands(CLI::App& app, CommandContext& context);
// Adds `ai confirm`, so it comes after addAICommands.
void addReviewCommands(CLI::App& app, CommandContext& context);
void addRulesCommands(CLI::App& app, CommandContext& context);
void addMerchantsCommands(CLI::App& app, CommandContext& context);
void addPaymentsCommand(CLI::App& app, CommandContext& context);
void addExportCommands(CLI::App& app, CommandContext& context);

}  // namespace copperwick::cli
