#pragma once

// The one window: the sidebar and the screen of the runtime's section side by
// side, the message bars over both, and the menus. It decides nothing about
// money; it follows the runtime's section, messages and revision through the
// bridge, and hands what a person does to the runtime.
//
// The runtime and the import model must outlive the window. Main thread only.

#include <array>
#include <chrono>
#include <string>

#include <QMainWindow>
#include <QSplitter>
#include <QStackedWidget>
#include <QTimer>

#include "app/shell/app_menus.h"
#include "app/shell/message_bar.h"
#include "app/shell/runtime_bridge.h"
#include "app/shell/runtime_pump.h"
#include "app/shell/sidebar.h"
#include "app/widgets/section_page.h"
#include "runtime/import_model.h"
#include "runtime/ledger_reading.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

class MainWindow : public QMainWindow {
    Q_OBJECT

  public:
    // How long a status message stands before it clears itself.
    static constexpr std::chrono::milliseconds kStatusLifetime{5000};

    MainWindow(LedgerRuntime& runtime, ImportModel& importer, QWidget* parent = nullptr);
    ~MainWindow() override;

    [[nodiscard]] RuntimeBridge& bridge() { return m_bridge; }
    [[nodiscard]] Sidebar* sidebar() const { return m_sidebar; }
    [[nodiscard]] QStackedWidget* pages() const { return m_pages; }
    [[nodiscard]] SectionPage* page(AppSection section) const;
    [[nodiscard]] MessageBarStack* messageBars() const { return m_messageBars; }
    [[nodiscard]] AppMenus* menus() const { return m_menus; }

    // Tests shorten it; a person always has the standard five seconds.
    void setStatusLifetime(std::chrono::milliseconds lifetime);

  protected:
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dragMoveEvent(QDragMoveEvent* event) override;
    void dropEvent(QDropEvent* event) override;

  private:
    void showSection(AppSection section);
    void statusMessageChanged(const std::optional<std::string>& message);
    void clearTimedStatus();
    void chooseFilesIfStillAsked();

    LedgerRuntime& m_runtime;
    // The count beside Review: lines waiting for a decision and lines the
    // local model filed that nobody has checked.
    LedgerReading<std::size_t> m_reviewCount{
        m_runtime,
        [](const Ledger& ledger, LocalDate) {
            return ledger.reviewCount() + ledger.aiFiledUnchecked().size();
        },
        [this](std::size_t count) { m_sidebar->setReviewCount(count); }};
    ImportModel& m_importer;
    RuntimeBridge m_bridge;
    RuntimePump* m_pump;
    Sidebar* m_sidebar;
    QStackedWidget* m_pages;
    std::array<SectionPage*, 8> m_sectionPages{};
    MessageBarStack* m_messageBars;
    AppMenus* m_menus;
    // One timer for the status: each new message restarts it, and it clears
    // only the message it was started for.
    QTimer m_statusTimer;
    std::optional<std::string> m_timedStatus;
};

}  // namespace copperwick::app
