#include "app/shell/update_service.h"

#include <QApplication>
#include <QPushButton>
#include <QTimer>

#include "app/widgets/qt_text.h"

namespace copperwick::app {

namespace {

// Dropping it stops its timer, which goes once the event under way is
// over: the alarm may be dropped from inside its own ring.
class TimerAlarm final : public Alarm {
  public:
    explicit TimerAlarm(QTimer* timer) : m_timer(timer) {}
    ~TimerAlarm() override {
        if (m_timer) {
            m_timer->stop();
            m_timer->deleteLater();
        }
    }

  private:
    QPointer<QTimer> m_timer;
};

class TimerClock final : public AlarmClock {
  public:
    explicit TimerClock(QObject* owner) : m_owner(owner) {}

    std::unique_ptr<Alarm> set(std::chrono::milliseconds delay,
                               std::function<void()> ring) override {
        auto* timer = new QTimer(m_owner);
        timer->setSingleShot(true);
        // A day's wait needn't be kept to the millisecond.
        timer->setTimerType(delay > std::chrono::minutes(1) ? Qt::VeryCoarseTimer
                                                            : Qt::CoarseTimer);
        QObject::connect(timer, &QTimer::timeout, m_owner, std::move(ring));
        timer->start(delay);
        return std::make_unique<TimerAlarm>(timer);
    }

  private:
    QObject* m_owner;
};

}  // namespace

UpdateService::UpdateService(LedgerRuntime& runtime, UpdateConfiguration configuration,
                             QObject* parent, std::shared_ptr<AlarmClock> clock)
    : QObject(parent) {
    UpdateHooks hooks;
    hooks.clock = clock ? std::move(clock) : std::make_shared<TimerClock>(this);
    hooks.askToInstall = [this](const std::string& question, std::function<void(bool)> answer) {
        ask(question, std::move(answer));
    };
    m_controller =
        std::make_unique<UpdateController>(runtime, std::move(configuration), std::move(hooks));
    m_observer = m_controller->observe([this] { Q_EMIT changed(); });
}

UpdateService::~UpdateService() {
    if (m_question)
        m_question->close();
    m_controller->removeObserver(m_observer);
    m_controller.reset();
}

UpdateService* UpdateService::ofApplication() {
    return qApp ? qApp->findChild<UpdateService*>(QString(), Qt::FindDirectChildrenOnly) : nullptr;
}

void UpdateService::ask(const std::string& question, std::function<void(bool)> answer) {
    // A newer version ready while the person still looks at an older one:
    // the older question goes, answered "Later".
    if (m_question)
        m_question->reject();
    auto* box = new QMessageBox(QApplication::activeWindow());
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setIcon(QMessageBox::Information);
    box->setWindowTitle(QStringLiteral("Update"));
    box->setText(toQString(question));
    box->setInformativeText(QStringLiteral(
        "Installing may ask for your password. Your ledger stays as it is; open Copperwick again "
        "to use the new version."));
    QPushButton* install = box->addButton(QStringLiteral("Install"), QMessageBox::AcceptRole);
    QPushButton* later = box->addButton(QStringLiteral("Later"), QMessageBox::RejectRole);
    install->setAccessibleName(install->text());
    later->setAccessibleName(later->text());
    box->setDefaultButton(install);
    box->setEscapeButton(later);
    connect(box, &QMessageBox::finished, this, [box, install, answer = std::move(answer)](int) {
        answer(box->clickedButton() == install);
    });
    m_question = box;
    box->open();
}

}  // namespace copperwick::app
