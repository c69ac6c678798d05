#pragma once

// One piece of work counted for as long as it lasts: the count goes up when
// an ActivityCount is made and down when it goes, also when the work ends in
// an exception. The runtime hands these out for the counts an update waits
// on. Movable, so that work which ends later (on another thread, told back
// through the main queue) can carry it; not copyable. Main thread only, like
// the counts themselves.

#include <utility>

namespace copperwick {

class [[nodiscard]] ActivityCount {
  public:
    explicit ActivityCount(int& count) : m_count(&count) { ++*m_count; }
    ~ActivityCount() {
        if (m_count)
            --*m_count;
    }
    ActivityCount(ActivityCount&& other) noexcept
        : m_count(std::exchange(other.m_count, nullptr)) {}
    ActivityCount(const ActivityCount&) = delete;
    ActivityCount& operator=(const ActivityCount&) = delete;
    ActivityCount& operator=(ActivityCount&&) = delete;

  private:
    int* m_count;
};

}  // namespace copperwick
