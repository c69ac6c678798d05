// Pictures of the Reports screen on the demo workspace, tab by tab, in the
// light and the dark form, at 1200 by 800: written only when
// COPPERWICK_REPORTS_SCREENSHOT_DIR names a folder, for a person to look at.

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QScrollBar>
#include <QTest>

#include "app/reports/reports_page.h"
#include "app/shell/main_window.h"
#include "app/shell/qt_main_queue.h"
#include "app/shell/skin_store.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/temp_folder.h"

namespace copperwick::app {
namespace {

TEST(ReportsScreenshots, EveryTabInLightAndDark) {
    const QString folder = qEnvironmentVariable("COPPERWICK_REPORTS_SCREENSHOT_DIR");
    if (folder.isEmpty())
        GTEST_SKIP() << "COPPERWICK_REPORTS_SCREENSHOT_DIR names no folder";
    copperwick::testing::TempFolder preferences;
    RuntimeOptions options;
    options.demo = true;
    options.preferencesFolder = preferences.path();
    options.mainQueue = std::make_shared<QtMainQueue>(qApp);
    LedgerRuntime runtime(std::move(options));
    ImportModel importer;
    SkinStore skins(runtime.defaults());
    for (const bool dark : {false, true}) {
        SkinPreference preference = skins.preference();
        preference.appearance = dark ? AppearanceMode::dark : AppearanceMode::light;
        skins.update(preference);
        skins.applyAppearance();
        const QString form = dark ? QStringLiteral("dark") : QStringLiteral("light");
        MainWindow window(runtime, importer);
        window.resize(1200, 800);
        window.show();
        runtime.setSection(AppSection::reports);
        auto* page = qobject_cast<ReportsPage*>(window.page(AppSection::reports));
        ASSERT_NE(page, nullptr);
        page->periodBox()->setCurrentIndex(static_cast<int>(PeriodChoice::last3Months));
        for (int wait = 0; wait < 500 && page->isBuilding(); ++wait)
            QTest::qWait(10);
        for (ReportTab tab : kReportTabs) {
            page->setTab(tab);
            QApplication::processEvents();
            const QString name = QStringLiteral("reports-") + tabLabel(tab).toLower() +
                                 QLatin1Char('-') + form + QStringLiteral(".png");
            EXPECT_TRUE(window.grab().save(QDir(folder).filePath(name)));
            // The end of the tab, where it scrolls.
            QScrollBar* bar = page->scrollArea()->verticalScrollBar();
            bar->setValue(bar->maximum());
            EXPECT_TRUE(window.grab().save(QDir(folder).filePath(QStringLiteral("end-") + name)));
            bar->setValue(0);
        }
        page->setTab(ReportTab::overview);
        page->tile(QStringLiteral("Spending"))->click();
        QApplication::processEvents();
        EXPECT_TRUE(page->drillDownSheet()->grab().save(
            QDir(folder).filePath(QStringLiteral("reports-drilldown-") + form + ".png")));
        page->drillDownSheet()->reject();
    }
}

}  // namespace
}  // namespace copperwick::app
