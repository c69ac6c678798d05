#pragma once

// Keeps the runtime in step with what happens away from the main thread and
// outside this program: takes in file analyses as their threads finish, and
// reads the data file again once another program (the command line, a second
// window) has saved to it. Both changes reach the screens through the
// bridge's signals. Main thread only.

#include <chrono>

#include <QObject>
#include <QTimer>

#include "app/shell/runtime_bridge.h"

namespace copperwick::app {

class RuntimePump : public QObject {
    Q_OBJECT

  public:
    static constexpr std::chrono::milliseconds kAnalysisPoll{40};
    static constexpr std::chrono::milliseconds kDiskPoll{1000};

    explicit RuntimePump(RuntimeBridge& bridge, QObject* parent = nullptr);

  private:
    void importChanged();
    void takeInAnalyses();

    RuntimeBridge& m_bridge;
    // Runs only while analyses are under way.
    QTimer m_analyses;
    QTimer m_disk;
};

}  // namespace copperwick::app
