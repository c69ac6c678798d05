#include "app/shell/runtime_pump.h"

namespace copperwick::app {

RuntimePump::RuntimePump(RuntimeBridge& bridge, QObject* parent)
    : QObject(parent), m_bridge(bridge) {
    // Asking costs one look at the file's change counter when nothing changed.
    m_disk.setInterval(kDiskPoll);
    connect(&m_disk, &QTimer::timeout, this,
            [this] { (void)m_bridge.runtime().refreshFromDisk(); });
    m_disk.start();
}

}  // namespace copperwick::app
