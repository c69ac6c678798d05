#include "app/settings/updates_card.h"

#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "runtime/instant_text.h"

namespace copperwick::app {

UpdatesCard::UpdatesCard(UpdateService& service, QWidget* parent)
    : SectionCard(QStringLiteral("Updates"), {}, "arrow.down.circle", parent), m_service(service) {
    const UpdateController& controller = m_service.controller();
    if (!controller.isConfigured()) {
        m_packageManager = secondaryLabel(toQString(kPackageManager), this);
        body()->addWidget(m_packageManager);
        return;
    }
    // Close together, as Local AI's switches stand.
    auto* switches = new QVBoxLayout;
    switches->setContentsMargins(0, 0, 0, 0);
    switches->setSpacing(6);
    const auto addSwitch = [this, switches](const QString& words) {
        auto* box = new QCheckBox(words, this);
        box->setAccessibleName(words);
        switches->addWidget(box);
        return box;
    };
    m_checks = addSwitch(QStringLiteral("Check for updates automatically"));
    m_installs = addSwitch(QStringLiteral("Download and install updates automatically"));
    body()->addLayout(switches);
    body()->addWidget(noteLabel(toQString(kNote), this, true));

    auto* checkRow = new QHBoxLayout;
    checkRow->setSpacing(10);
    m_checkNow = pushButton(QStringLiteral("Check Now"), this);
    checkRow->addWidget(m_checkNow, 0, Qt::AlignTop);
    m_lastCheck = secondaryLabel({}, this);
    checkRow->addWidget(m_lastCheck, 1, Qt::AlignVCenter);
    body()->addSpacing(4);
    body()->addLayout(checkRow);
    m_progress = textLabel({}, this);
    m_progress->setWordWrap(true);
    body()->addWidget(m_progress);
    if (controller.isDemo())
        body()->addWidget(noteLabel(toQString(kDemo), this, true));

    connect(m_checks, &QCheckBox::toggled, this,
            [this](bool on) { m_service.controller().setAutomaticallyChecks(on); });
    connect(m_installs, &QCheckBox::toggled, this,
            [this](bool on) { m_service.controller().setAutomaticallyInstalls(on); });
    connect(m_checkNow, &QPushButton::clicked, this, [this] { m_service.controller().checkNow(); });
    connect(&m_service, &UpdateService::changed, this, &UpdatesCard::showState);
    showState();
}

void UpdatesCard::showState() {
    const UpdateController& controller = m_service.controller();
    for (const auto& [box, on] : {std::pair{m_checks, controller.automaticallyChecks()},
                                  std::pair{m_installs, controller.automaticallyInstalls()}}) {
        const QSignalBlocker quiet(box);
        box->setChecked(on);
        box->setEnabled(!controller.isDemo());
    }
    m_checkNow->setEnabled(controller.canCheckForUpdates() && !controller.isBusy());
    const auto& last = controller.lastCheckDate();
    setLabelText(m_lastCheck, last ? QStringLiteral("Last checked ") +
                                         toQString(abbreviatedDateTime(*last)) + QLatin1Char('.')
                                   : toQString(kNeverChecked));
    const auto progress = controller.progressText();
    setLabelText(m_progress, progress ? toQString(*progress) : QString());
    m_progress->setVisible(progress.has_value());
}

}  // namespace copperwick::app
