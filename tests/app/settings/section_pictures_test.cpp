// Pictures of the Cash and Settings screens on the demo workspace, light and
// dark, at 1200 by 800 and at 1000 by 700, with the end of each scrolling
// page, for a person to look at: written only when COPPERWICK_SECTION_PICTURES
// names a folder. The layout audit runs on each picture's screen as well.

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QScrollArea>
#include <QScrollBar>

#include "app/cash/cash_entry_sheet.h"
#include "app/cash/cash_page.h"
#include "app/settings/account_sheet.h"
#include "app/shell/main_window.h"
#include "app/shell/qt_main_queue.h"
#include "app/shell/skin_store.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"
#include "tests/app/screen_audit.h"
#include "tests/support/temp_folder.h"

namespace copperwick::app {
namespace {

TEST(SectionPictures, CashAndSettingsInLightAndDark) {
    const QString folder = qEnvironmentVariable("COPPERWICK_SECTION_PICTURES");
    if (folder.isEmpty())
        GTEST_SKIP() << "COPPERWICK_SECTION_PICTURES names no folder";
    copperwick::testing::TempFolder preferences;
    RuntimeOptions options;
    options.demo = true;
    options.preferencesFolder = preferences.path();
    options.mainQueue = std::make_shared<QtMainQueue>(qApp);
    LedgerRuntime runtime(std::move(options));
    ImportModel importer;
    SkinStore skins(runtime.defaults(), qApp);
    for (const bool dark : {false, true}) {
        SkinPreference preference = skins.preference();
        preference.appearance = dark ? AppearanceMode::dark : AppearanceMode::light;
        skins.update(preference);
        skins.applyAppearance();
        MainWindow window(runtime, importer);
        window.show();
        for (const auto& [section, name] :
             {std::pair{AppSection::cash, "cash"}, std::pair{AppSection::settings, "settings"}}) {
            runtime.setSection(section);
            for (const QSize size : {QSize(1200, 800), QSize(1000, 700)}) {
                window.resize(size);
                QApplication::processEvents();
                const QString base = QDir(folder).filePath(
                    QString::fromLatin1(name) + (dark ? "-dark" : "-light") +
                    (size.width() == 1200 ? QString() : QStringLiteral("-small")));
                EXPECT_TRUE(window.grab().save(base + ".png"));
                EXPECT_EQ(copperwick::testing::layoutFaults(window.page(section)), QStringList())
                    << name;
                if (auto* area = window.page(section)->scrollArea()) {
                    area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum() / 2);
                    QApplication::processEvents();
                    EXPECT_TRUE(window.grab().save(base + "-middle.png"));
                    area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
                    QApplication::processEvents();
                    EXPECT_TRUE(window.grab().save(base + "-end.png"));
                    area->verticalScrollBar()->setValue(0);
                }
            }
        }
        // The sheets, as they open.
        runtime.setSection(AppSection::cash);
        auto* cash = static_cast<CashPage*>(window.page(AppSection::cash));
        CashEntrySheet* entry = cash->openCashEntry();
        entry->kindField()->setCurrentIndex(5);
        QApplication::processEvents();
        EXPECT_TRUE(entry->grab().save(
            QDir(folder).filePath(dark ? "cash-sheet-dark.png" : "cash-sheet-light.png")));
        EXPECT_EQ(copperwick::testing::layoutFaults(entry), QStringList());
        entry->reject();
        AccountSheet account(window.bridge(), runtime.ledger().accounts[0].id, &window);
        account.show();
        QApplication::processEvents();
        EXPECT_TRUE(account.grab().save(
            QDir(folder).filePath(dark ? "account-sheet-dark.png" : "account-sheet-light.png")));
        EXPECT_EQ(copperwick::testing::layoutFaults(&account), QStringList());
    }
}

}  // namespace
}  // namespace copperwick::app
