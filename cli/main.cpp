#include <malloc.h>

#include <iostream>
#include <string>
#include <vector>

#include "cli/command_line.h"

namespace {

// A command lives for one load of the ledger and what it does with it, and
// most of what it allocates stays until it ends. glibc's defaults suit a
// long-lived program that gives memory back: they grow each thread's heap a
// few pages at a time, each growth a system call, and hand every block over
// 128 KiB to a fresh mapping whose pages are faulted in anew each time a
// vector grows. Growing in 64 MiB steps (address space only, until touched)
// and keeping blocks up to 32 MiB in the heap takes a sixth off opening a
// 100,000-line ledger. The desktop application keeps the defaults.
void tuneAllocatorForOneCommand() {
    mallopt(M_TOP_PAD, 64 << 20);
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
}

}  // namespace

int main(int argc, char** argv) {
    tuneAllocatorForOneCommand();
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
