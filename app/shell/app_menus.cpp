#include "app/shell/app_menus.h"

#include <QApplication>
#include <QMenuBar>
#include <QMessageBox>
#include <QPointer>
#include <QProcess>

#include "app/shell/sections.h"
#include "app/shell/update_service.h"
#include "app/widgets/qt_text.h"
#include "copperwick_version.h"

namespace copperwick::app {

namespace {

// Menu texts treat "&" as the mark of a mnemonic; a label's own stays text.
QString menuText(QString text) {
    return text.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

}  // namespace

AppMenus::AppMenus(QMainWindow& window, RuntimeBridge& bridge)
    : QObject(&window), m_window(window), m_bridge(bridge) {
    QMenuBar* bar = window.menuBar();

    QMenu* file = bar->addMenu(QStringLiteral("&File"));
    m_openDemo = file->addAction(QStringLiteral("Open Demo Workspace"));
    connect(m_openDemo, &QAction::triggered, this, &AppMenus::openDemoWorkspace);
    file->addSeparator();
    m_importFiles = file->addAction(QStringLiteral("Import Bank Files…"));
    m_importFiles->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_O));
    connect(m_importFiles, &QAction::triggered, this, [this] {
        m_bridge.runtime().setSection(AppSection::importFiles);
        m_bridge.importer().setRequestFilePicker(true);
    });
    file->addSeparator();
    QAction* quit = file->addAction(QStringLiteral("&Quit"));
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(quit, &QAction::triggered, &m_window, &QWidget::close);

    QMenu* edit = bar->addMenu(QStringLiteral("&Edit"));
    m_undo = edit->addAction(undoTitle(std::nullopt));
    m_undo->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Z));
    connect(m_undo, &QAction::triggered, this, &AppMenus::undo);
    edit->addSeparator();
    m_settings = edit->addAction(QStringLiteral("Settings…"));
    m_settings->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Comma));
    m_settings->setMenuRole(QAction::PreferencesRole);
    connect(m_settings, &QAction::triggered, this,
            [this] { m_bridge.runtime().setSection(AppSection::settings); });

    QMenu* go = bar->addMenu(QStringLiteral("&Go"));
    for (const auto& info : kSections) {
        QAction* action = go->addAction(menuText(toQString(info.label)));
        action->setShortcut(QKeySequence(Qt::CTRL | static_cast<Qt::Key>(Qt::Key_0 + info.key)));
        const AppSection section = info.section;
        connect(action, &QAction::triggered, this,
                [this, section] { m_bridge.runtime().setSection(section); });
        m_go[static_cast<std::size_t>(sectionIndex(section))] = action;
    }

    QMenu* help = bar->addMenu(QStringLiteral("&Help"));
    m_checkForUpdates = help->addAction(QStringLiteral("Check for Updates…"));
    connect(m_checkForUpdates, &QAction::triggered, this, &AppMenus::checkForUpdates);
    if (UpdateService* updates = UpdateService::ofApplication())
        connect(updates, &UpdateService::changed, this, &AppMenus::updateCheckForUpdates);
    updateCheckForUpdates();
    help->addSeparator();
    QAction* about = help->addAction(QStringLiteral("About Copperwick"));
    about->setMenuRole(QAction::AboutRole);
    connect(about, &QAction::triggered, this, &AppMenus::showAbout);

    connect(&m_bridge, &RuntimeBridge::revisionChanged, this, &AppMenus::updateUndo);
    updateUndo();
}

QAction* AppMenus::goAction(AppSection section) const {
    return m_go[static_cast<std::size_t>(sectionIndex(section))];
}

QString AppMenus::undoTitle(const std::optional<std::string>& label) {
    if (!label)
        return QStringLiteral("Undo Last Change");
    return QStringLiteral("Undo ") + menuText(toQString(*label));
}

void AppMenus::undo() {
    // Taking back an import or a remembered decision on a long history looks
    // again at every line: the menu waits, the window doesn't.
    m_undo->setEnabled(false);
    m_bridge.runtime().undoLastChangeForScreen([menus = QPointer<AppMenus>(this)](bool) {
        if (menus)
            menus->updateUndo();
    });
}

void AppMenus::updateUndo() {
    const auto label = m_bridge.runtime().ledger().undoLabel();
    m_undo->setText(undoTitle(label));
    m_undo->setEnabled(label.has_value());
}

void AppMenus::openDemoWorkspace() {
    // The demo is a program of its own, with its own folder and preferences,
    // so this window and its data stay exactly as they are.
    if (!QProcess::startDetached(QCoreApplication::applicationFilePath(),
                                 {QStringLiteral("--demo")})) {
        m_bridge.runtime().setErrorMessage("Copperwick couldn't open the demo workspace.");
    }
}

void AppMenus::checkForUpdates() {
    if (UpdateService* updates = UpdateService::ofApplication())
        updates->controller().checkNow();
}

void AppMenus::updateCheckForUpdates() {
    const UpdateService* updates = UpdateService::ofApplication();
    m_checkForUpdates->setEnabled(updates && updates->controller().canCheckForUpdates() &&
                                  !updates->controller().isBusy());
}

void AppMenus::showAbout() {
    QMessageBox::about(&m_window, QStringLiteral("About Copperwick"),
                       QStringLiteral("Copperwick %1\n\nPrivate household budgeting. Your "
                                      "financial data stays on this computer.")
                           .arg(QStringLiteral(COPPERWICK_VERSION)));
}

}  // namespace copperwick::app
