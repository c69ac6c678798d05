#pragma once

// Runs `copperwick` in-process with the given arguments and keeps what it said.

#include <sstream>
#include <string>
#include <vector>

#include "cli/command_line.h"

namespace copperwick::testing {

struct CommandResult {
    int code;
    std::string out;
    std::string err;
};

inline CommandResult runCommand(const std::vector<std::string>& arguments) {
    std::ostringstream out, err;
    const int code = cli::run(arguments, out, err);
    return {code, out.str(), err.str()};
}

}  // namespace copperwick::testing
