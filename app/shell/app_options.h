#pragma once

// The application's command line:
//
//   copperwick-app [--data-dir DIR] [--demo] [--check-package FILE]
//                  [--show-finder-icon SKIN|none] [FILE...]
//
// with Qt's own options (-platform, -style…) taken out by QApplication
// first. Files named after the options go to the Import section.
// --show-finder-icon runs before any of this (desktop_icon.h).

#include <filesystem>
#include <optional>
#include <vector>

#include <QCoreApplication>
#include <QStringList>

#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

struct AppOptions {
    std::optional<std::filesystem::path> dataDir;
    bool demo = false;
    // Where --check-package writes its result; it runs on a demo.
    std::optional<std::filesystem::path> checkPackage;
    std::vector<std::filesystem::path> files;

    // The runtime these options ask for: a fresh demo workspace for --demo
    // and --check-package, whatever --data-dir says, as for the command line.
    [[nodiscard]] RuntimeOptions runtimeOptions() const;
};

// Reads the application's arguments. --help and --version print and exit
// with 0; a mistake prints what was wrong and exits with 1.
[[nodiscard]] AppOptions parseAppOptions(const QCoreApplication& application);
// The same for an argument list that begins with the program's name, as the
// desktop's file manager passes it (Exec=copperwick-app %F).
[[nodiscard]] AppOptions parseAppOptions(const QStringList& arguments);

// Files the application was started with open in the Import section, each
// read as a dropped file is; nothing is saved until Import is chosen.
void openFilesToImport(const AppOptions& options, LedgerRuntime& runtime, ImportModel& importer);

}  // namespace copperwick::app
