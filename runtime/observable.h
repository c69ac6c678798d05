#pragma once

// A value that screens can watch. Observers hear of a change only when the new
// value differs from the old one, so setting the same section twice causes no
// redraw. Main thread only, like the runtime that owns it.

#include <cstdint>
#include <functional>
#include <map>
#include <utility>

namespace copperwick {

using ObserverID = uint64_t;

template <typename T>
class Observable {
  public:
    using Callback = std::function<void(const T&)>;

    Observable() = default;
    explicit Observable(T value) : m_value(std::move(value)) {}
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;

    [[nodiscard]] const T& get() const { return m_value; }

    // Returns whether the value changed (and observers were told).
    bool set(T value) {
        if (value == m_value)
            return false;
        m_value = std::move(value);
        notify();
        return true;
    }

    ObserverID observe(ObserverID id, Callback callback) {
        m_observers.emplace(id, std::move(callback));
        return id;
    }
    bool remove(ObserverID id) { return m_observers.erase(id) > 0; }

    void notify() const {
        // A callback may remove observers; work on a copy.
        const auto observers = m_observers;
        for (const auto& [id, callback] : observers)
            callback(m_value);
    }

  private:
    T m_value{};
    std::map<ObserverID, Callback> m_observers;
};

}  // namespace copperwick
