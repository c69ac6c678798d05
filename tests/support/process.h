#pragma once

// Runs another program of the build as a separate process: with extra
// environment, optionally killed after a delay, keeping what it printed.

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace copperwick::testing {

struct ProcessResult {
    int exitCode = -1;  // -1 when it didn't exit by itself
    int signal = 0;     // the signal that ended it, if one did
    std::string out;
};

class Process {
  public:
    // Starts `argv[0]` with `argv`, stdout to a file in `scratch`, stderr
    // dropped, `environment` added to this process's own.
    Process(const std::vector<std::string>& argv,
            const std::map<std::string, std::string>& environment,
            const std::filesystem::path& scratch)
        : m_output(scratch /
                   ("out-" + std::to_string(::getpid()) + "-" + std::to_string(s_counter++))) {
        std::vector<std::string> env;
        for (char** e = environ; *e; ++e) {
            const std::string entry = *e;
            const auto name = entry.substr(0, entry.find('='));
            if (!environment.contains(name))
                env.push_back(entry);
        }
        for (const auto& [name, value] : environment)
            env.push_back(name + "=" + value);
        std::vector<char*> args;
        for (const auto& a : argv)
            args.push_back(const_cast<char*>(a.c_str()));
        args.push_back(nullptr);
        std::vector<char*> envs;
        for (auto& e : env)
            envs.push_back(e.data());
        envs.push_back(nullptr);

        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, m_output.c_str(),
                                         O_WRONLY | O_CREAT | O_TRUNC, 0600);
        posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
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
        if (m_pid > 0)
            ::kill(m_pid, SIGKILL);
    }

    ProcessResult wait() {
        ProcessResult result;
        if (m_pid <= 0)
            return result;
        int status = 0;
        ::waitpid(m_pid, &status, 0);
        m_waited = true;
        if (WIFEXITED(status))
            result.exitCode = WEXITSTATUS(status);
        if (WIFSIGNALED(status))
            result.signal = WTERMSIG(status);
        std::ifstream in(m_output);
        std::ostringstream text;
        text << in.rdbuf();
        result.out = text.str();
        std::error_code ignored;
        std::filesystem::remove(m_output, ignored);
        return result;
    }

  private:
    static inline int s_counter = 0;
    std::filesystem::path m_output;
    pid_t m_pid = -1;
    bool m_waited = false;
};

inline ProcessResult runProcess(const std::vector<std::string>& argv,
                                const std::map<std::string, std::string>& environment,
                                const std::filesystem::path& scratch) {
    Process process(argv, environment, scratch);
    return process.wait();
}

}  // namespace copperwick::testing
