#include "runtime/updates/package_installer.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace copperwick {

PackageInstaller::Way PackageInstaller::way() const {
    return hasProgram("pkexec") && hasProgram("apt-get") ? Way::packageManager : Way::opener;
}

std::vector<std::string> PackageInstaller::command(const std::filesystem::path& package) const {
    // apt-get takes a path for a file only when it looks like one, so the
    // path is always absolute.
    const std::string file = std::filesystem::absolute(package).string();
    if (way() == Way::packageManager)
        return {"pkexec", "apt-get", "install", "-y", file};
    return {"xdg-open", file};
}

int PackageInstaller::runProgram(const std::vector<std::string>& arguments) {
    if (arguments.empty())
        return -1;
    std::vector<char*> argv;
    argv.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t child = 0;
    if (::posix_spawnp(&child, argv[0], nullptr, nullptr, argv.data(), environ) != 0)
        return -1;
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            return -1;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool PackageInstaller::isOnPath(std::string_view program) {
    const char* path = std::getenv("PATH");
    if (!path || program.empty() || program.find('/') != std::string_view::npos)
        return false;
    const std::string_view folders(path);
    std::size_t start = 0;
    while (start <= folders.size()) {
        const std::size_t end = std::min(folders.find(':', start), folders.size());
        const std::string_view folder = folders.substr(start, end - start);
        if (!folder.empty()) {
            const std::string candidate = std::string(folder) + "/" + std::string(program);
            struct stat status {};
            if (::stat(candidate.c_str(), &status) == 0 && S_ISREG(status.st_mode) &&
                ::access(candidate.c_str(), X_OK) == 0)
                return true;
        }
        start = end + 1;
    }
    return false;
}

}  // namespace copperwick
