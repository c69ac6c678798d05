#include "app/shell/runtime_pump.h"

namespace copperwick::app {

RuntimePump::RuntimePump(RuntimeBridge& bridge, QObject* parent)
    : QObject(parent), m_bridge(bridge) {
    m_analyses.setInterval(kAnalysisPoll);
    connect(&m_analyses, &QTimer::timeout, this, &RuntimePump::takeInAnalyses);
    connect(&m_bridge, &RuntimeBridge::importChanged, this, &RuntimePump::importChanged);

    // Asking costs one look at the file's change counter when nothing changed.
    m_disk.setInterval(kDiskPoll);
    connect(&m_disk, &QTimer::timeout, this,
            [this] { (void)m_bridge.runtime().refreshFromDisk(); });
    m_disk.start();
    importChanged();
}

void RuntimePump::importChanged() {
    if (m_bridge.importer().pendingAnalyses() > 0 && !m_analyses.isActive())
        m_analyses.start();
}

void RuntimePump::takeInAnalyses() {
    m_bridge.importer().receiveFinished(m_bridge.runtime());
    if (m_bridge.importer().pendingAnalyses() == 0)
        m_analyses.stop();
}

}  // namespace copperwick::app
