// Pictures of the Transactions screen on the demo workspace, a spending line
// chosen, in the light and the dark form of the default skin at 1200 by 800,
// for a person to look at: written only when COPPERWICK_SCREENSHOT_DIR names
// a folder.

#include <algorithm>

#include <QDir>

#include "app/shell/main_window.h"
#include "app/shell/skin_store.h"
#include "app/transactions/transactions_page.h"
#include "tests/app/app_fixture.h"

namespace copperwick::testing {
namespace {

TEST(TransactionsScreenshots, LightAndDark) {
    const QString folder = qEnvironmentVariable("COPPERWICK_SCREENSHOT_DIR");
    if (folder.isEmpty())
        GTEST_SKIP() << "COPPERWICK_SCREENSHOT_DIR names no folder";
    AppWorkspace workspace;
    workspace.openRuntime({.demo = true});
    app::SkinStore skins(workspace.runtime->defaults());
    for (const bool dark : {false, true}) {
        SkinPreference preference = skins.preference();
        preference.appearance = dark ? AppearanceMode::dark : AppearanceMode::light;
        skins.update(preference);
        skins.applyAppearance();
        app::MainWindow& window = workspace.showWindow(AppSection::transactions);
        window.resize(1200, 800);
        auto* page = qobject_cast<app::TransactionsPage*>(window.page(AppSection::transactions));
        ASSERT_TRUE(waitUntil([&] { return !page->model()->isReading(); }));
        const auto& ids = page->model()->ids();
        const auto spending = std::find_if(ids.begin(), ids.end(), [&](const Uuid& id) {
            return workspace.runtime->ledger().transaction(id)->kind == TransactionKind::expense;
        });
        if (spending != ids.end())
            page->selectLines({*spending});
        QTest::qWait(50);
        const QString name = dark ? QStringLiteral("transactions-dark.png")
                                  : QStringLiteral("transactions-light.png");
        EXPECT_TRUE(window.grab().save(QDir(folder).filePath(name)));
    }
}

}  // namespace
}  // namespace copperwick::testing
