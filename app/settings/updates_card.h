#pragma once

// Settings' part about updates. In a build that checks for them: the two
// switches, the note that nothing of the ledger is sent, "Check Now" with
// the last check's date, and what the updater is doing, such as a version
// that waits because the program is busy, and why. In a build without a
// feed, one line: updates come from the system's package manager. In a
// demo the controls stand but are off, since a demo never checks.
//
// The switches are written through to the controller, which keeps them in
// the preferences. Main thread only; the service must outlive the card.

#include <string_view>

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>

#include "app/shell/update_service.h"
#include "app/widgets/section_card.h"

namespace copperwick::app {

class UpdatesCard : public SectionCard {
    Q_OBJECT

  public:
    static constexpr std::string_view kNote =
        "Copperwick goes online to check for and download signed app updates. Your ledger and "
        "account data are not sent.";
    static constexpr std::string_view kPackageManager =
        "Updates for Copperwick come from your system's package manager.";
    static constexpr std::string_view kDemo = "A demo workspace never checks for updates.";
    static constexpr std::string_view kNeverChecked = "Not checked yet.";

    explicit UpdatesCard(UpdateService& service, QWidget* parent = nullptr);

    // All null when the build leaves updates to the package manager.
    [[nodiscard]] QCheckBox* checksBox() const { return m_checks; }
    [[nodiscard]] QCheckBox* installsBox() const { return m_installs; }
    [[nodiscard]] QPushButton* checkNowButton() const { return m_checkNow; }
    [[nodiscard]] QLabel* lastCheckLabel() const { return m_lastCheck; }
    [[nodiscard]] QLabel* progressLabel() const { return m_progress; }
    // The line that stands instead when updates come from the package manager.
    [[nodiscard]] QLabel* packageManagerLabel() const { return m_packageManager; }

  private:
    void showState();

    UpdateService& m_service;
    QCheckBox* m_checks = nullptr;
    QCheckBox* m_installs = nullptr;
    QPushButton* m_checkNow = nullptr;
    QLabel* m_lastCheck = nullptr;
    QLabel* m_progress = nullptr;
    QLabel* m_packageManager = nullptr;
};

}  // namespace copperwick::app
