#pragma once

// A window on a runtime of its own: a temporary data folder and preferences
// beside it, an import model, and the window shown and active, so that its
// keys work as they do for a person.

#include <chrono>
#include <functional>
#include <memory>
#include <ostream>

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>

#include "app/shell/main_window.h"
#include "app/shell/qt_main_queue.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/temp_folder.h"

// Failures print the text rather than its bytes.
inline void PrintTo(const QString& text, std::ostream* out) {
    *out << '"' << text.toStdString() << '"';
}

namespace copperwick::testing {

struct AppFixture {
    TempFolder temp;
    std::unique_ptr<LedgerRuntime> runtime;
    ImportModel importer;
    std::unique_ptr<app::MainWindow> window;

    AppFixture() {
        RuntimeOptions options;
        options.dataFolder = temp / "Copperwick";
        options.preferencesFolder = temp / "config";
        // Work of other threads comes back through the event loop, as in the application.
        options.mainQueue = std::make_shared<app::QtMainQueue>(QCoreApplication::instance());
        runtime = std::make_unique<LedgerRuntime>(options);
        window = std::make_unique<app::MainWindow>(*runtime, importer);
        window->show();
        window->activateWindow();
        (void)QTest::qWaitForWindowActive(window.get());
    }
    ~AppFixture() {
        // The window observes the runtime and the import model; it goes first.
        window.reset();
    }
};

// Runs the event loop until `done` holds or `allowed` has passed; whether it held.
inline bool waitUntil(const std::function<bool()>& done,
                      std::chrono::milliseconds allowed = std::chrono::seconds(10)) {
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > allowed.count())
            return false;
        QTest::qWait(10);
    }
    return true;
}

}  // namespace copperwick::testing
