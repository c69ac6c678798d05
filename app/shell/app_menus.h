#pragma once

// The window's menus and their keys. File: "Open Demo Workspace", "Import
// Bank Files…" (Ctrl+O), Quit. Edit: Undo (Ctrl+Z), whose title follows the
// last saved change, and "Settings…" (Ctrl+,), where Linux desktops keep
// their preferences. Go: the eight sections by their own keys. Help: "Check
// for Updates…", through the application's UpdateService and on only when
// it can check, and About.
//
// Each command runs the road a person's action would: through the runtime
// and the import model, never around them. Main thread only.

#include <array>

#include <QAction>
#include <QMainWindow>
#include <QObject>

#include "app/shell/runtime_bridge.h"
#include "runtime/app_section.h"

namespace copperwick::app {

class AppMenus : public QObject {
    Q_OBJECT

  public:
    // Fills `window`'s menu bar; the window owns the menus, this their commands.
    AppMenus(QMainWindow& window, RuntimeBridge& bridge);

    [[nodiscard]] QAction* openDemoAction() const { return m_openDemo; }
    [[nodiscard]] QAction* importFilesAction() const { return m_importFiles; }
    [[nodiscard]] QAction* undoAction() const { return m_undo; }
    [[nodiscard]] QAction* settingsAction() const { return m_settings; }
    [[nodiscard]] QAction* checkForUpdatesAction() const { return m_checkForUpdates; }
    [[nodiscard]] QAction* goAction(AppSection section) const;

    // "Undo " and the label, with any "&" kept as text rather than a mnemonic.
    [[nodiscard]] static QString undoTitle(const std::optional<std::string>& label);

  private:
    // Edit › Undo: beside the window on a long history.
    void undo();
    void updateUndo();
    void openDemoWorkspace();
    void checkForUpdates();
    // On while the application's updater can check and isn't already at it.
    void updateCheckForUpdates();
    void showAbout();

    QMainWindow& m_window;
    RuntimeBridge& m_bridge;
    QAction* m_openDemo = nullptr;
    QAction* m_importFiles = nullptr;
    QAction* m_undo = nullptr;
    QAction* m_settings = nullptr;
    QAction* m_checkForUpdates = nullptr;
    std::array<QAction*, 8> m_go{};
};

}  // namespace copperwick::app
