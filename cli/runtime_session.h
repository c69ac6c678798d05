#pragma once

// Opening the ledger for one command: the runtime on the chosen data folder,
// and the common ways a command reports what the runtime said.

#include <memory>

#include <boost/json/value.hpp>

#include "cli/command_line.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::cli {

// Frees what it holds unless the process ends next anyway: then the exit
// takes the memory back whole. An import's rows, a million at the largest,
// take a second to free one by one.
struct CommandMemory {
    bool processEnds = false;
    template <typename T>
    void operator()(T* held) const {
        if (!processEnds)
            delete held;
    }
};
template <typename T>
using HeldForCommand = std::unique_ptr<T, CommandMemory>;

// Closes the runtime when the command is done with it, and frees it unless
// the process ends next anyway.
struct RuntimeCloser {
    bool processEnds = false;
    void operator()(LedgerRuntime* runtime) const;
};
using OpenRuntime = std::unique_ptr<LedgerRuntime, RuntimeCloser>;

// The runtime for the command's data folder, or with --demo a fresh demo
// workspace, whose folder is named on stderr. Preferences stay where they
// are; no command here reads or writes them.
[[nodiscard]] OpenRuntime openRuntime(const CommandContext& context);

// When the data file couldn't be opened: prints "Copperwick couldn't open its
// data file: " and why on stderr and returns true, and the command stops with
// a failure. Said so for commands that only read as for those that change.
[[nodiscard]] bool reportUnavailable(const LedgerRuntime& runtime, CommandContext& context);

// After a change made through the runtime: when it left an error (the save
// failed), prints it on stderr, fails the command and returns true.
[[nodiscard]] bool reportFailedChange(const LedgerRuntime& runtime, CommandContext& context);

// Prints a message the runtime left in its message bar (such as unreadable
// records) on stderr, as a note beside the command's own output.
void reportNotes(const LedgerRuntime& runtime, CommandContext& context);

// One JSON value on its own line.
void printJSON(CommandContext& context, const boost::json::value& value);

}  // namespace copperwick::cli
