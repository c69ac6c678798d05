#pragma once

// Runs a program of the build as a process of its own, for what an
// in-process run can't show: a command that would hang (killed after the
// time allowed, and said so), a crash, a kill at a chosen moment, two
// commands at once, a working folder taken away.

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/temp_folder.h"

extern char** environ;

namespace copperwick::testing {

struct ProcessResult {
    bool timedOut = false;
    bool exited = false;  // false: ended by a signal, such as a kill or an abort
    int code = -1;        // the exit code when it exited
    int signal = 0;       // the signal that ended it, if one did
    std::string out;
    std::string err;
};

struct ProcessOptions {
    // Added to this process's own environment, replacing what has the same name.
    std::map<std::string, std::string> environment;
    // Where the child starts; empty for this process's own folder.
    std::filesystem::path workingFolder;
};

class Process {
  public:
    // Starts `argv[0]` with `argv`; its output goes to files in `scratch`.
    Process(const std::vector<std::string>& argv, const std::filesystem::path& scratch,
            const ProcessOptions& options = {})
        : m_out(scratch / ("process-" + std::to_string(s_count) + ".out")),
          m_err(scratch / ("process-" + std::to_string(s_count) + ".err")) {
        ++s_count;
        std::vector<std::string> env;
        for (char** entry = environ; *entry; ++entry) {
            const std::string text = *entry;
            if (!options.environment.contains(text.substr(0, text.find('='))))
                env.push_back(text);
        }
        for (const auto& [name, value] : options.environment)
            env.push_back(name + "=" + value);
        std::vector<char*> args;
        for (const auto& word : argv)
            args.push_back(const_cast<char*>(word.c_str()));
        args.push_back(nullptr);
        std::vector<char*> envs;
        for (auto& entry : env)
            envs.push_back(entry.data());
        envs.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, m_out.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, m_err.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
        if (!options.workingFolder.empty())
            posix_spawn_file_actions_addchdir_np(&actions, options.workingFolder.c_str());
        if (posix_spawn(&m_pid, args[0], &actions, nullptr, args.data(), envs.data()) != 0)
            m_pid = -1;
        posix_spawn_file_actions_destroy(&actions);
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process() {
        if (m_pid > 0 && !m_waited) {
            ::kill(m_pid, SIGKILL);
            (void)wait();
        }
    }

    void kill() {
        if (m_pid > 0 && !m_waited)
            ::kill(m_pid, SIGKILL);
    }

    // Waits for the end, killing it after `allowed` when given.
    ProcessResult wait(std::optional<std::chrono::milliseconds> allowed = std::nullopt) {
        ProcessResult result;
        if (m_pid <= 0 || m_waited)
            return result;
        int status = 0;
        if (allowed) {
            const auto deadline = std::chrono::steady_clock::now() + *allowed;
            while (::waitpid(m_pid, &status, WNOHANG) == 0) {
                if (std::chrono::steady_clock::now() > deadline) {
                    ::kill(m_pid, SIGKILL);
                    ::waitpid(m_pid, &status, 0);
                    result.timedOut = true;
                    break;
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(10));
            }
        } else {
            ::waitpid(m_pid, &status, 0);
        }
        m_waited = true;
        result.exited = !result.timedOut && WIFEXITED(status);
        result.code = result.exited ? WEXITSTATUS(status) : -1;
        result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
        result.out = readFile(m_out);
        result.err = readFile(m_err);
        std::error_code ignored;
        std::filesystem::remove(m_out, ignored);
        std::filesystem::remove(m_err, ignored);
        return result;
    }

  private:
    static inline int s_count = 0;
    std::filesystem::path m_out;
    std::filesystem::path m_err;
    pid_t m_pid = -1;
    bool m_waited = false;
};

inline ProcessResult runProcess(const std::vector<std::string>& argv,
                                const std::filesystem::path& scratch,
                                const ProcessOptions& options = {},
                                std::chrono::milliseconds allowed = std::chrono::seconds(60)) {
    Process process(argv, scratch, options);
    return process.wait(allowed);
}

#ifdef COPPERWICK_EXECUTABLE
// The real `copperwick`, `arguments` following its path.
inline ProcessResult runCopperwick(const std::vector<std::string>& arguments,
                                   const std::filesystem::path& scratch,
                                   const ProcessOptions& options = {},
                                   std::chrono::milliseconds allowed = std::chrono::seconds(20)) {
    std::vector<std::string> argv{COPPERWICK_EXECUTABLE};
    argv.insert(argv.end(), arguments.begin(), arguments.end());
    return runProcess(argv, scratch, options, allowed);
}
#endif

}  // namespace copperwick::testing
