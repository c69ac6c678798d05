#pragma once

// The `copperwick` command: parses the arguments, runs one command, and
// returns the process exit code (0 done, 1 failed, 2 bad usage). Output goes
// to the given streams so that tests can run commands in-process.

#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class Option;
}

namespace copperwick::cli {

// What every command receives: the global options and where to write.
struct CommandContext {
    std::optional<std::filesystem::path> dataDir;  // --data-dir, else the standard place
    bool json = false;                             // --json: machine-readable output
    bool demo = false;  // --demo: a fresh fictional household in a temporary folder
    std::ostream& out;
    std::ostream& err;
    int exitCode = 0;  // what the command that ran decided
    // Options whose values are file or folder paths (see takesPath).
    std::vector<const CLI::Option*> pathOptions;
    // The process ends once the command is done (see AfterCommand).
    bool processEnds = false;
};

// Whether anything runs after the command in the same process. When nothing
// does, the ledger's records (hundreds of thousands on a long history) are
// left for the system to take back with the process instead of being freed
// one by one, which costs as much as a quarter of a short command.
enum class AfterCommand { returnToCaller, processEnds };

[[nodiscard]] int run(const std::vector<std::string>& arguments, std::ostream& out,
                      std::ostream& err, AfterCommand after = AfterCommand::returnToCaller);

}  // namespace copperwick::cli
