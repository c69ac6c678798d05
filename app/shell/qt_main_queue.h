#pragma once

// The runtime's main queue in the application: work finished on other
// threads is posted into Qt's event loop and runs there, on the main
// thread, between paints. Any thread may post; runUntil turns the event
// loop until its condition holds.

#include <QObject>

#include "runtime/main_queue.h"

namespace copperwick::app {

class QtMainQueue final : public MainQueue {
  public:
    // `receiver` lives on the main thread for as long as jobs may arrive.
    explicit QtMainQueue(QObject* receiver);

    void post(std::function<void()> job) override;
    void runUntil(const std::function<bool()>& done) override;

  private:
    QObject* m_receiver;
};

}  // namespace copperwick::app
