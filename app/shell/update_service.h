#pragma once

// The application's one UpdateController, with what it needs from Qt:
// alarms on Qt's timers, and the question "Copperwick {version} is ready to
// install." asked in a window of its own, with Install and Later, that
// doesn't hold the rest of the program while it stands. Its changes become
// the signal `changed`, where Settings and the menu read them again.
//
// main() makes it, a child of the application object, before the window,
// and starts it once the window shows, unless this is a demo or the
// self-check; Settings and the menu find it there (ofApplication). The
// runtime must outlive it. Main thread only.

#include <memory>

#include <QMessageBox>
#include <QObject>
#include <QPointer>

#include "runtime/ledger_runtime.h"
#include "runtime/updates/update_controller.h"

namespace copperwick::app {

class UpdateService : public QObject {
    Q_OBJECT

  public:
    // Alarms ring on Qt's timers unless `clock` is given; tests wind one by hand.
    UpdateService(LedgerRuntime& runtime, UpdateConfiguration configuration,
                  QObject* parent = nullptr, std::shared_ptr<AlarmClock> clock = nullptr);
    ~UpdateService() override;

    // The one main() made a child of the application; null when there is none.
    [[nodiscard]] static UpdateService* ofApplication();

    [[nodiscard]] UpdateController& controller() const { return *m_controller; }
    // The question standing now, if any.
    [[nodiscard]] QMessageBox* question() const { return m_question; }

  Q_SIGNALS:
    void changed();

  private:
    void ask(const std::string& question, std::function<void(bool)> answer);

    QPointer<QMessageBox> m_question;
    std::unique_ptr<UpdateController> m_controller;
    ObserverID m_observer = 0;
};

}  // namespace copperwick::app
