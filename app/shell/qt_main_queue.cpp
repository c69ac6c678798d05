#include "app/shell/qt_main_queue.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QMetaObject>

namespace copperwick::app {

QtMainQueue::QtMainQueue(QObject* receiver) : m_receiver(receiver) {}

void QtMainQueue::post(std::function<void()> job) {
    QMetaObject::invokeMethod(m_receiver, std::move(job), Qt::QueuedConnection);
}

void QtMainQueue::runUntil(const std::function<bool()>& done) {
    while (!done())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

}  // namespace copperwick::app
