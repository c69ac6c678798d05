#pragma once

// How the update controller waits without holding the main thread: an alarm
// rings once, on the main thread, after its delay, unless it is dropped
// first. The application's clock is Qt's timers; the tests' is one they
// wind by hand, so that no test waits fifteen real seconds.

#include <chrono>
#include <functional>
#include <memory>

namespace copperwick {

// Dropping it before it rings means it never does. It may be dropped from
// inside its own ring.
class Alarm {
  public:
    Alarm() = default;
    virtual ~Alarm() = default;
    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;
};

class AlarmClock {
  public:
    AlarmClock() = default;
    virtual ~AlarmClock() = default;
    AlarmClock(const AlarmClock&) = delete;
    AlarmClock& operator=(const AlarmClock&) = delete;

    // Main thread. `ring` runs once, on the main thread, `delay` from now.
    [[nodiscard]] virtual std::unique_ptr<Alarm> set(std::chrono::milliseconds delay,
                                                     std::function<void()> ring) = 0;
};

}  // namespace copperwick
