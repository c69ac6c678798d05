#pragma once

// Runs the real `copperwick` executable as its own process, for what an
// in-process run can't show: a command that would hang (it is killed after
// the time allowed, and says so), a crash, or a working folder taken away.

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temp_folder.h"

namespace copperwick::testing {

struct ProcessResult {
    bool timedOut = false;
    bool exited = false;  // false: killed by a signal, such as an abort
    int code = -1;
    std::string out;
    std::string err;
};

// `arguments` follow the executable's path. The child starts in
// `workingFolder` when one is given; output is kept in files in `scratch`.
inline ProcessResult runProcess(const std::vector<std::string>& arguments,
                                const std::filesystem::path& scratch,
                                std::chrono::seconds allowed = std::chrono::seconds(20),
                                const std::filesystem::path& workingFolder = {}) {
    const auto outFile = scratch / "process-out.txt";
    const auto errFile = scratch / "process-err.txt";
    std::vector<std::string> words{COPPERWICK_EXECUTABLE};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (auto& word : words)
        argv.push_back(word.data());
    argv.push_back(nullptr);

    const pid_t child = ::fork();
    if (child == 0) {
        const int out = ::open(outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        const int err = ::open(errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        ::dup2(out, STDOUT_FILENO);
        ::dup2(err, STDERR_FILENO);
        if (!workingFolder.empty() && ::chdir(workingFolder.c_str()) != 0)
            ::_exit(127);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }
    ProcessResult result;
    int status = 0;
    const auto deadline = std::chrono::steady_clock::now() + allowed;
    while (::waitpid(child, &status, WNOHANG) == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            ::kill(child, SIGKILL);
            ::waitpid(child, &status, 0);
            result.timedOut = true;
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    result.exited = !result.timedOut && WIFEXITED(status);
    result.code = result.exited ? WEXITSTATUS(status) : -1;
    result.out = readFile(outFile);
    result.err = readFile(errFile);
    return result;
}

}  // namespace copperwick::testing
