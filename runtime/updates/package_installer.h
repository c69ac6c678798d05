#pragma once

// Handing a verified package to the system. With pkexec and apt-get both
// there: "pkexec apt-get install -y PACKAGE", where the system asks for the
// administrator's password in its own window and apt-get installs the
// package with what it depends on. Otherwise "xdg-open PACKAGE", which opens
// it in the desktop's software installer for the person to finish.
//
// The programs are run without a shell, with the arguments as given. Tests
// replace both the look-up and the running. Safe on any thread.

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace copperwick {

struct PackageInstaller {
    enum class Way {
        packageManager,  // pkexec apt-get
        opener,          // xdg-open
    };

    // Runs the program named first with the rest as its arguments, waits for
    // it, and gives its exit status; -1 when it couldn't be started.
    std::function<int(const std::vector<std::string>&)> run = runProgram;
    // Whether a program of that name is on the PATH.
    std::function<bool(std::string_view)> hasProgram = isOnPath;

    [[nodiscard]] Way way() const;
    [[nodiscard]] std::vector<std::string> command(const std::filesystem::path& package) const;

    [[nodiscard]] static int runProgram(const std::vector<std::string>& arguments);
    [[nodiscard]] static bool isOnPath(std::string_view program);
};

}  // namespace copperwick
