#pragma once

// Keeps the runtime in step with what happens outside this program: reads
// the data file again once another program (the command line, a second
// window) has saved to it, and the change reaches the screens through the
// bridge's signals. Work of this program's own threads comes back through
// the runtime's main queue (QtMainQueue) instead. Main thread only.

#include <chrono>

#include <QObject>
#include <QTimer>

#include "app/shell/runtime_bridge.h"

namespace copperwick::app {

class RuntimePump : public QObject {
    Q_OBJECT

  public:
    static constexpr std::chrono::milliseconds kDiskPoll{1000};

    explicit RuntimePump(RuntimeBridge& bridge, QObject* parent = nullptr);

  private:
    RuntimeBridge& m_bridge;
    QTimer m_disk;
};

}  // namespace copperwick::app
