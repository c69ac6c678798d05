#pragma once

// The settings card of the data itself: where the file lives and that it
// stays on this computer, whether the original bank lines of imports are
// kept, and the backups: the list of copies (date, reason, size), a copy
// made now, and a restore that backs the current file up first. Main
// thread only.

#include <vector>

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/section_card.h"
#include "core/store/backup_manager.h"

namespace copperwick::app {

class DataCard : public SectionCard {
    Q_OBJECT

  public:
    explicit DataCard(RuntimeBridge& bridge, QWidget* parent = nullptr);

    [[nodiscard]] QCheckBox* keepLinesBox() const { return m_keepLines; }
    [[nodiscard]] QTreeWidget* backupList() const { return m_backups; }
    [[nodiscard]] QPushButton* backUpNowButton() const { return m_backUpNow; }
    [[nodiscard]] QPushButton* restoreButton() const { return m_restore; }
    // The backups as listed, newest first.
    [[nodiscard]] const std::vector<BackupManager::Info>& backups() const { return m_infos; }
    // Restores the chosen backup once the person confirms; `alreadyConfirmed` stands
    // in for the question in tests.
    void restoreChosen(bool alreadyConfirmed = false);
    void changeSaved(const SavedChange& change);

  private:
    void showBackups();
    void showKeepLines();
    void keepLinesToggled(bool keep);

    RuntimeBridge& m_bridge;
    QLabel* m_folder = nullptr;
    QCheckBox* m_keepLines = nullptr;
    QTreeWidget* m_backups = nullptr;
    QLabel* m_noBackups = nullptr;
    QPushButton* m_backUpNow = nullptr;
    QPushButton* m_restore = nullptr;
    std::vector<BackupManager::Info> m_infos;
};

}  // namespace copperwick::app
