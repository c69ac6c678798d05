#pragma once

// The packaged application's self-check (--check-package FILE): on a fresh
// demo workspace it visits every section in the sidebar's order, takes a
// picture of each screen next to FILE (FILE without its extension, then
// "-import.png", "-review.png"…), runs the window's own checks and each
// screen's selfChecks(), and writes FILE:
//
//   {"ok": bool, "version": "0.1.0",
//    "checks": [{"name": "...", "ok": bool, "detail": "..."}],
//    "screenshots": ["/path/to/result-import.png", ...]}
//
// "ok" is true when every check passed. Works offscreen. Main thread only.

#include <filesystem>
#include <string>
#include <vector>

#include <QObject>

#include "app/shell/main_window.h"

namespace copperwick::app {

struct CheckResult {
    std::string name;
    bool ok = false;
    std::string detail;
};

class PackageCheck : public QObject {
    Q_OBJECT

  public:
    // The check begins this long after the window first shows.
    static constexpr std::chrono::milliseconds kDelay{1000};

    PackageCheck(MainWindow& window, std::filesystem::path resultFile, QObject* parent = nullptr);

    // Runs kDelay from now, writes the result and ends the event loop with 0
    // when every check passed, 1 otherwise.
    void startAfterDelay();
    // Runs every check now and writes the result file; true when all passed
    // and the file was written.
    bool run();

    [[nodiscard]] const std::vector<CheckResult>& results() const { return m_results; }
    [[nodiscard]] const std::vector<std::filesystem::path>& screenshots() const {
        return m_screenshots;
    }

  private:
    void check(std::string name, bool ok, std::string detail);
    void checkWindow();
    void visitSections();
    void checkUndo();
    bool write() const;

    MainWindow& m_window;
    std::filesystem::path m_resultFile;
    std::vector<CheckResult> m_results;
    std::vector<std::filesystem::path> m_screenshots;
};

}  // namespace copperwick::app
