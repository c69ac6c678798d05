#include "runtime/main_queue.h"

namespace copperwick {

void PlainQueue::post(std::function<void()> job) {
    {
        std::lock_guard lock(m_mutex);
        m_jobs.push_back(std::move(job));
    }
    m_posted.notify_all();
}

std::size_t PlainQueue::runPending() {
    std::deque<std::function<void()>> jobs;
    {
        std::lock_guard lock(m_mutex);
        jobs.swap(m_jobs);
    }
    // Outside the lock: a job may post more.
    for (auto& job : jobs)
        job();
    return jobs.size();
}

void PlainQueue::runUntil(const std::function<bool()>& done) {
    while (!done()) {
        std::function<void()> job;
        {
            std::unique_lock lock(m_mutex);
            m_posted.wait(lock, [this] { return !m_jobs.empty(); });
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        job();
    }
}

BackgroundWork::BackgroundWork(std::shared_ptr<MainQueue> queue) : m_queue(std::move(queue)) {}

BackgroundWork::~BackgroundWork() {
    m_state->alive = false;
    // The threads hold the state and the queue themselves; waiting keeps a
    // job from outliving the program's own teardown.
    std::unique_lock lock(m_state->mutex);
    m_state->finished.wait(lock, [this] { return m_state->running == 0; });
}

}  // namespace copperwick
