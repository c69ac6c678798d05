#pragma once

// The callbacks of those who watch a controller for any change. Each is told,
// in the order it came, every time the controller says something changed.
// Main thread only, like the controllers that keep one.

#include <functional>
#include <map>
#include <utility>

#include "runtime/observable.h"

namespace copperwick {

class ObserverList {
  public:
    ObserverID add(std::function<void()> callback) {
        const ObserverID id = m_next++;
        m_callbacks.emplace(id, std::move(callback));
        return id;
    }
    void remove(ObserverID id) { m_callbacks.erase(id); }

    void notify() const {
        // A callback may remove observers; work on a copy.
        const auto callbacks = m_callbacks;
        for (const auto& [id, callback] : callbacks)
            callback();
    }

  private:
    std::map<ObserverID, std::function<void()>> m_callbacks;
    ObserverID m_next = 1;
};

}  // namespace copperwick
