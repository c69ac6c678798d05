#include "app/shell/main_window.h"

#include <filesystem>
#include <vector>

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include "app/import/file_panels.h"
#include "app/shell/section_pages.h"
#include "app/shell/sections.h"
#include "app/widgets/qt_text.h"

namespace copperwick::app {

MainWindow::MainWindow(LedgerRuntime& runtime, ImportModel& importer, QWidget* parent)
    : QMainWindow(parent),
      m_runtime(runtime),
      m_importer(importer),
      m_bridge(runtime, importer, this),
      m_pump(new RuntimePump(m_bridge, this)),
      m_sidebar(new Sidebar(runtime.isDemo())),
      m_pages(new QStackedWidget) {
    setWindowTitle(QStringLiteral("Copperwick"));
    setAcceptDrops(true);
    resize(1180, 760);
    setMinimumSize(760, 520);

    auto* central = new QWidget(this);
    auto* splitter = new QSplitter(Qt::Horizontal, central);
    splitter->setChildrenCollapsible(false);
    splitter->setHandleWidth(1);
    splitter->addWidget(m_sidebar);
    for (const auto& info : kSections) {
        SectionPage* page = makeSectionPage(info.section, m_bridge, m_pages);
        page->setAccessibleName(toQString(info.label));
        m_sectionPages[static_cast<std::size_t>(sectionIndex(info.section))] = page;
        m_pages->addWidget(page);
    }
    // The message bars head the screens' column and push the screen down
    // while they stand.
    auto* column = new QWidget;
    auto* columnLayout = new QVBoxLayout(column);
    columnLayout->setContentsMargins(0, 0, 0, 0);
    columnLayout->setSpacing(0);
    m_messageBars = new MessageBarStack(column);
    columnLayout->addWidget(m_messageBars);
    columnLayout->addWidget(m_pages, 1);
    splitter->addWidget(column);
    splitter->setStretchFactor(0, 0);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({210, width() - 210});
    auto* layout = new QHBoxLayout(central);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(splitter);
    setCentralWidget(central);

    m_menus = new AppMenus(*this, m_bridge);

    connect(m_sidebar, &Sidebar::sectionChosen, this,
            [this](AppSection section) { m_runtime.setSection(section); });
    connect(&m_bridge, &RuntimeBridge::sectionChanged, this, &MainWindow::showSection);
    connect(&m_bridge, &RuntimeBridge::revisionChanged, this, [this] { m_reviewCount.start(); });
    connect(&m_bridge, &RuntimeBridge::errorMessageChanged, m_messageBars,
            &MessageBarStack::setErrorMessage);
    connect(&m_bridge, &RuntimeBridge::statusMessageChanged, this,
            &MainWindow::statusMessageChanged);
    connect(m_messageBars, &MessageBarStack::errorDismissed, this,
            [this] { m_runtime.setErrorMessage(std::nullopt); });
    connect(m_messageBars, &MessageBarStack::statusDismissed, this,
            [this] { m_runtime.setStatusMessage(std::nullopt); });
    connect(&m_bridge, &RuntimeBridge::importChanged, this, [this] {
        if (m_importer.requestFilePicker())
            QTimer::singleShot(0, this, &MainWindow::chooseFilesIfStillAsked);
    });

    m_statusTimer.setSingleShot(true);
    // A coarse timer may fire up to a twentieth early; the message has its
    // full time.
    m_statusTimer.setTimerType(Qt::PreciseTimer);
    m_statusTimer.setInterval(kStatusLifetime);
    connect(&m_statusTimer, &QTimer::timeout, this, &MainWindow::clearTimedStatus);

    // What the runtime held before the window existed: its section, the
    // messages of its launch (an unreadable file says so at once), its count.
    showSection(m_runtime.section());
    m_reviewCount.start();
    m_messageBars->setErrorMessage(m_runtime.errorMessage());
    statusMessageChanged(m_runtime.statusMessage());
    // The keyboard starts in the sidebar: arrows choose a section, Tab
    // moves on into its screen.
    m_sidebar->list()->setFocus();
}

MainWindow::~MainWindow() {
    // The screens and the pump hold the bridge; they go while it still stands,
    // not after it, as Qt's own order (members, then children) would have it.
    delete takeCentralWidget();
    delete m_pump;
}

SectionPage* MainWindow::page(AppSection section) const {
    return m_sectionPages[static_cast<std::size_t>(sectionIndex(section))];
}

void MainWindow::setStatusLifetime(std::chrono::milliseconds lifetime) {
    m_statusTimer.setInterval(lifetime);
}

void MainWindow::showSection(AppSection section) {
    m_sidebar->setCurrentSection(section);
    m_pages->setCurrentWidget(page(section));
}

void MainWindow::statusMessageChanged(const std::optional<std::string>& message) {
    m_messageBars->setStatusMessage(message);
    m_timedStatus = message;
    if (message)
        m_statusTimer.start();
    else
        m_statusTimer.stop();
}

void MainWindow::clearTimedStatus() {
    // A message that came after the one timed has its own full time.
    if (m_runtime.statusMessage() == m_timedStatus)
        m_runtime.setStatusMessage(std::nullopt);
}

void MainWindow::chooseFilesIfStillAsked() {
    // The Import screen answers the request itself once it has a chooser of
    // its own; this plain one stands in while nobody else has.
    if (!m_importer.requestFilePicker())
        return;
    m_importer.setRequestFilePicker(false);
    const QStringList chosen = QFileDialog::getOpenFileNames(
        this, QStringLiteral("Import Bank Files"), QString(),
        QStringLiteral("Bank files (*.csv *.tsv *.txt *.ofx *.qfx);;All files (*)"));
    std::vector<std::filesystem::path> files;
    for (const QString& name : chosen)
        files.push_back(localPath(name));
    m_importer.add(files, m_runtime);
}

void MainWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (!localFiles(event->mimeData()).empty())
        event->acceptProposedAction();
}

void MainWindow::dragMoveEvent(QDragMoveEvent* event) {
    if (!localFiles(event->mimeData()).empty())
        event->acceptProposedAction();
}

void MainWindow::dropEvent(QDropEvent* event) {
    const auto files = localFiles(event->mimeData());
    if (files.empty())
        return;
    event->acceptProposedAction();
    m_runtime.setSection(AppSection::importFiles);
    m_importer.add(files, m_runtime);
}

}  // namespace copperwick::app
