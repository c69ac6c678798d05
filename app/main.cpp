#include <iostream>

#include <QApplication>
#include <QTimer>

#include "app/shell/app_options.h"
#include "app/shell/desktop_icon.h"
#include "app/shell/main_window.h"
#include "app/shell/package_check.h"
#include "app/shell/qt_main_queue.h"
#include "app/shell/skin_store.h"
#include "app/shell/update_service.h"
#include "copperwick_version.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"

int main(int argc, char** argv) {
    using namespace copperwick;
    using namespace copperwick::app;

    // Before Qt starts: it needs no display, and exits without a window.
    if (const auto code = runDesktopIconCommandIfAsked(argc, argv, std::cerr))
        return *code;

    QApplication application(argc, argv);
    QApplication::setApplicationVersion(QStringLiteral(COPPERWICK_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("copperwick"));
    const AppOptions options = parseAppOptions(application);

    RuntimeOptions runtimeOptions = options.runtimeOptions();
    runtimeOptions.mainQueue = std::make_shared<QtMainQueue>(&application);
    LedgerRuntime runtime(std::move(runtimeOptions));
    ImportModel importer;
    // A child of the application, where the Settings page finds it.
    SkinStore skins(runtime.defaults(), &application);
    skins.applyAppearance();
    skins.applyAppIcon();
    // Also a child of the application, where Settings and the menu find it.
    UpdateService updates(runtime, UpdateConfiguration::fromBuild(), &application);
    MainWindow window(runtime, importer);

    openFilesToImport(options, runtime, importer);
    PackageCheck* check = nullptr;
    if (options.checkPackage) {
        runtime.setSection(AppSection::transactions);
        check = new PackageCheck(window, *options.checkPackage, &window);
    }
    window.show();
    // Once the window is up; a demo and the self-check never look for updates.
    if (!runtime.isDemo() && !options.checkPackage)
        QTimer::singleShot(0, &updates, [&updates] { updates.controller().start(); });
    if (check)
        check->startAfterDelay();
    const int code = QApplication::exec();
    if (check && code != 0)
        std::cerr << "The self-check failed; see " << options.checkPackage->string() << '\n';
    return code;
}
