// Times the desktop application as a person meets it: from a cold start on a
// large data folder to the first screen drawn, then each section's switch,
// first visit and again. Runs offscreen unless a display is asked for.
//
//   app_timing [TRANSACTIONS]     (default 100,000)
//
// Prints one line per figure, in milliseconds.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include <QApplication>

#include "app/shell/main_window.h"
#include "app/shell/qt_main_queue.h"
#include "app/shell/sections.h"
#include "bench/ledger_generator.h"
#include "core/store/ledger_store.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Lets the window handle what a switch queued, then draws it, as the screen
// would before a person sees the result.
void settleAndDraw(QWidget& window) {
    QCoreApplication::processEvents();
    (void)window.grab();
}

}  // namespace

int main(int argc, char** argv) {
    using namespace copperwick;
    const std::size_t transactions = argc > 1 ? std::stoul(argv[1]) : 100'000;
    if (!std::getenv("QT_QPA_PLATFORM"))
        setenv("QT_QPA_PLATFORM", "offscreen", 1);

    const auto folder = std::filesystem::temp_directory_path() / "copperwick-app-timing";
    std::filesystem::remove_all(folder);
    {
        LedgerStore store(folder / "data" / "Copperwick.sqlite");
        store.saveAll(bench::generateLedger({.transactions = transactions}));
    }
    setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
    setenv("XDG_DATA_HOME", (folder / "share").c_str(), 1);

    const auto start = Clock::now();
    QApplication application(argc, argv);
    RuntimeOptions options{.dataFolder = folder / "data", .preferencesFolder = folder / "config"};
    options.mainQueue = std::make_shared<app::QtMainQueue>(&application);
    LedgerRuntime runtime(std::move(options));
    const double opened = millisecondsSince(start);
    ImportModel importer;
    app::MainWindow window(runtime, importer);
    window.resize(1200, 800);
    window.show();
    settleAndDraw(window);
    const double firstScreen = millisecondsSince(start);

    std::printf("transactions: %zu\n", runtime.ledger().transactions.size());
    std::printf("data file opened: %.1f ms\n", opened);
    std::printf("first screen drawn: %.1f ms\n", firstScreen);
    for (const char* visit : {"first visit", "again"}) {
        for (const auto& info : app::kSections) {
            const auto section = info.section;
            const auto switchStart = Clock::now();
            runtime.setSection(section);
            settleAndDraw(window);
            std::printf("switch to %s (%s): %.1f ms\n", std::string(info.label).c_str(), visit,
                        millisecondsSince(switchStart));
        }
    }
    std::filesystem::remove_all(folder);
    return 0;
}
