#pragma once

// How work done on other threads comes back to the main thread, which alone
// touches the runtime and its models. The desktop application posts through
// Qt's event loop; the command line and the tests use PlainQueue, which runs
// what was posted when the main thread asks.
//
// BackgroundWork runs a job on a thread of its own and posts the result back.
// A result whose owner went away meanwhile is dropped, never delivered to a
// destroyed object: each owner keeps its own BackgroundWork.

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

namespace copperwick {

class MainQueue {
  public:
    MainQueue() = default;
    virtual ~MainQueue() = default;
    MainQueue(const MainQueue&) = delete;
    MainQueue& operator=(const MainQueue&) = delete;

    // Any thread. The job runs later on the main thread, in the order posted.
    virtual void post(std::function<void()> job) = 0;
    // Main thread: runs posted jobs, waiting for more, until `done` holds.
    virtual void runUntil(const std::function<bool()>& done) = 0;
};

class PlainQueue final : public MainQueue {
  public:
    void post(std::function<void()> job) override;
    void runUntil(const std::function<bool()>& done) override;
    // Runs the jobs posted so far without waiting; returns how many ran.
    std::size_t runPending();

  private:
    std::mutex m_mutex;
    std::condition_variable m_posted;
    std::deque<std::function<void()>> m_jobs;
};

// The result of a job run in the background: its value, or the words of
// what it threw.
template <typename T>
struct WorkResult {
    std::optional<T> value;
    std::string error;
};

class BackgroundWork {
  public:
    explicit BackgroundWork(std::shared_ptr<MainQueue> queue);
    // Waits for jobs still running; their results are never delivered.
    ~BackgroundWork();
    BackgroundWork(const BackgroundWork&) = delete;
    BackgroundWork& operator=(const BackgroundWork&) = delete;

    // Runs `work` on its own thread; `done` gets its result on the main
    // thread, unless this BackgroundWork has gone by then.
    template <typename Work, typename Done>
    void run(Work work, Done done) {
        using T = std::invoke_result_t<Work&>;
        auto state = m_state;
        {
            std::lock_guard lock(state->mutex);
            ++state->running;
        }
        std::thread([state, queue = m_queue, work = std::move(work),
                     done = std::move(done)]() mutable {
            WorkResult<T> result;
            try {
                result.value.emplace(work());
            } catch (const std::exception& error) {
                result.error = error.what();
            } catch (...) {
                result.error = "An unexpected error stopped the work.";
            }
            queue->post([state, result = std::move(result), done = std::move(done)]() mutable {
                if (state->alive)
                    done(std::move(result));
            });
            std::lock_guard lock(state->mutex);
            --state->running;
            state->finished.notify_all();
        }).detach();
    }

    [[nodiscard]] MainQueue& queue() const { return *m_queue; }

  private:
    struct State {
        std::mutex mutex;
        std::condition_variable finished;
        int running = 0;
        // Read and written on the main thread only.
        bool alive = true;
    };
    std::shared_ptr<MainQueue> m_queue;
    std::shared_ptr<State> m_state = std::make_shared<State>();
};

}  // namespace copperwick
