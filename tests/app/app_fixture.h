#pragma once

// The application on a workspace of its own, for a screen test: a runtime on
// a temporary data folder, preferences beside it, an import model, and work
// of other threads coming back through Qt's event loop as in the
// application. A test shows either the whole window on it, active so that
// its keys work as they do for a person, or one screen alone.

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <utility>

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>

#include <gtest/gtest.h>

#include "app/shell/main_window.h"
#include "app/shell/qt_main_queue.h"
#include "app/shell/runtime_bridge.h"
#include "core/store/ledger_store.h"
#include "runtime/data_folders.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/temp_folder.h"

// Failures print the text rather than its bytes.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace copperwick::testing {

// Runs the event loop until `done` holds or `allowed` has passed; whether it held.
inline bool waitUntil(const std::function<bool()>& done,
                      std::chrono::milliseconds allowed = std::chrono::seconds(10)) {
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > allowed.count())
            return false;
        QTest::qWait(5);
    }
    return true;
}

// Shows `widget` and waits until it is the active window.
inline void showActive(QWidget& widget) {
    widget.show();
    widget.activateWindow();
    (void)QTest::qWaitForWindowActive(&widget);
}

struct WorkspaceOptions {
    bool demo = false;
    // Written as the data file before the runtime opens it.
    std::optional<Ledger> ledger;
    // Where work of other threads comes back; Qt's event loop when null.
    std::shared_ptr<MainQueue> queue;
};

class AppWorkspace {
  public:
    AppWorkspace() = default;
    AppWorkspace(const AppWorkspace&) = delete;
    AppWorkspace& operator=(const AppWorkspace&) = delete;
    virtual ~AppWorkspace() { close(); }

    void openRuntime(WorkspaceOptions options = {}) {
        const auto folder = temp / "Copperwick";
        if (options.ledger) {
            std::filesystem::create_directories(folder);
            LedgerStore store(data_folders::dataFile(folder));
            store.saveAll(*options.ledger);
        }
        RuntimeOptions runtimeOptions;
        runtimeOptions.demo = options.demo;
        runtimeOptions.dataFolder = folder;
        runtimeOptions.preferencesFolder = temp / "config";
        runtimeOptions.mainQueue =
            options.queue ? std::move(options.queue) : std::make_shared<app::QtMainQueue>(qApp);
        runtime = std::make_unique<LedgerRuntime>(runtimeOptions);
    }

    // The whole window, active, showing `section` when one is given.
    app::MainWindow& showWindow(std::optional<AppSection> section = std::nullopt) {
        window = std::make_unique<app::MainWindow>(*runtime, importer);
        if (section)
            runtime->setSection(*section);
        showActive(*window);
        return *window;
    }

    // One screen alone, in a window of its own, on a bridge of its own.
    template <typename Page>
    Page& showPage() {
        bridge = std::make_unique<app::RuntimeBridge>(*runtime, importer);
        auto page = std::make_unique<Page>(*bridge);
        Page& shown = *page;
        m_page = std::move(page);
        m_page->resize(900, 1400);
        showActive(*m_page);
        return shown;
    }

    // Waits until nothing Local AI's screens asked beside the window (whether
    // the model server answers, a summary, a file's columns) is still out,
    // then for the layouts its answers set off: a screen measured before
    // that is measured mid-change.
    void settleLocalAI() {
        app::RuntimeBridge& shown = window ? window->bridge() : *bridge;
        EXPECT_TRUE(
            waitUntil([&] { return !shown.isCheckingModel() && !shown.intelligence().isBusy(); }));
        QApplication::processEvents();
        QApplication::processEvents();
    }

    // A bank line on the first account that waits for review, saved as an
    // import would save it.
    Uuid addWaitingLine(const std::string& text, int64_t cents) {
        LedgerTransaction line{.id = Uuid::random(),
                               .accountID = runtime->ledger().accounts.front().id,
                               .date = runtime->today(),
                               .amount = cents,
                               .rawDescription = text};
        const bool saved = runtime
                               ->apply([&](Ledger& copy) {
                                   copy.transactions.set(line.id, line);
                                   LedgerDelta delta;
                                   delta.change(RecordKind::transaction, line.id);
                                   return delta;
                               })
                               .saved;
        EXPECT_TRUE(saved) << text;
        return line.id;
    }

    // Everything that watches the runtime goes first, then the runtime.
    void close() {
        window.reset();
        m_page.reset();
        bridge.reset();
        runtime.reset();
    }

    TempFolder temp;
    std::unique_ptr<LedgerRuntime> runtime;
    ImportModel importer;
    std::unique_ptr<app::RuntimeBridge> bridge;
    std::unique_ptr<app::MainWindow> window;

  private:
    std::unique_ptr<QWidget> m_page;
};

// The whole window on a fresh workspace.
struct AppFixture : AppWorkspace {
    AppFixture() {
        openRuntime();
        showWindow();
    }
};

}  // namespace copperwick::testing
