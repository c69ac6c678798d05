#include <iostream>
#include <string>
#include <vector>

#include "cli/command_line.h"

int main(int argc, char** argv) {
    std::vector<std::string> arguments(argv + 1, argv + argc);
    return copperwick::cli::run(arguments, std::cout, std::cerr);
}
