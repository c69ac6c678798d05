// Pictures of the Review screen on the demo workspace in the light and the
// dark form of the default skin, for a person to look at: written only when
// COPPERWICK_SCREENSHOT_DIR names a folder.

#include <gtest/gtest.h>

#include <QApplication>
#include <QDir>
#include <QScrollBar>

#include "app/review/review_page.h"
#include "app/shell/main_window.h"
#include "app/shell/skin_store.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/temp_folder.h"

namespace copperwick::app {
namespace {

TEST(ReviewScreenshots, DemoWorkspaceInLightAndDark) {
    const QString folder = qEnvironmentVariable("COPPERWICK_SCREENSHOT_DIR");
    if (folder.isEmpty())
        GTEST_SKIP() << "COPPERWICK_SCREENSHOT_DIR names no folder";
    copperwick::testing::TempFolder preferences;
    RuntimeOptions options;
    options.demo = true;
    options.preferencesFolder = preferences.path();
    LedgerRuntime runtime(std::move(options));
    ImportModel importer;
    SkinStore skins(runtime.defaults());

    for (const bool dark : {false, true}) {
        SkinPreference preference = skins.preference();
        preference.appearance = dark ? AppearanceMode::dark : AppearanceMode::light;
        skins.update(preference);
        skins.applyAppearance();
        MainWindow window(runtime, importer);
        window.resize(1180, 900);
        runtime.setSection(AppSection::review);
        window.show();
        QApplication::processEvents();
        const QString form = dark ? QStringLiteral("dark") : QStringLiteral("light");
        EXPECT_TRUE(window.grab().save(QDir(folder).filePath("review-" + form + ".png")));
        // The end of the screen: pending charges and suggested rules.
        auto* page = qobject_cast<ReviewPage*>(window.page(AppSection::review));
        ASSERT_NE(page, nullptr);
        QScrollBar* bar = page->scrollArea()->verticalScrollBar();
        bar->setValue(bar->maximum());
        QApplication::processEvents();
        EXPECT_TRUE(window.grab().save(QDir(folder).filePath("review-" + form + "-end.png")));
    }

    // A payment to a person, which the demo has already filed, asks its own question.
    const Uuid checking = runtime.ledger().accounts.front().id;
    runtime.apply([&](Ledger& copy) {
        LedgerTransaction line{.id = Uuid::random(),
                               .accountID = checking,
                               .date = runtime.today(),
                               .amount = -4500,
                               .rawDescription = "Zelle payment to Robin Sample"};
        copy.transactions.set(line.id, line);
        LedgerDelta delta;
        delta.change(RecordKind::transaction, line.id);
        return delta;
    });
    MainWindow window(runtime, importer);
    window.resize(1180, 900);
    window.show();
    QApplication::processEvents();
    auto* page = qobject_cast<ReviewPage*>(window.page(AppSection::review));
    for (ReviewGroupCard* card : page->cards()) {
        if (card->asksPurpose()) {
            card->purposeButton(ZelleChoice::spending)->click();
            QApplication::processEvents();
            EXPECT_TRUE(card->grab().save(QDir(folder).filePath("review-zelle-dark.png")));
        }
    }
}

}  // namespace
}  // namespace copperwick::app
