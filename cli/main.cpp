#include <iostream>
#include <string>
#include <vector>

#include "cli/command_line.h"

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
#if defined(__SANITIZE_ADDRESS__)
    // Under the address sanitizer everything is freed, so that its leak check
    // still sees what a command forgot.
    constexpr auto after = copperwick::cli::AfterCommand::returnToCaller;
#else
    constexpr auto after = copperwick::cli::AfterCommand::processEnds;
#endif
    return copperwick::cli::run(arguments, std::cout, std::cerr, after);
}
