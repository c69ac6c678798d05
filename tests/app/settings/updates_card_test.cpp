// Settings' part about updates: the switches written through, Check Now and
// what it found, an install that waits for a busy program and says why,
// and the one line that stands when the build leaves updates to the
// package manager.

#include "app/settings/updates_card.h"

#include <gtest/gtest.h>

#include <QMessageBox>
#include <QTest>

#include "app/settings/settings_page.h"
#include "app/shell/skin_store.h"
#include "app/shell/update_service.h"
#include "app/widgets/qt_text.h"
#include "runtime/preferences.h"
#include "tests/app/app_fixture.h"
#include "tests/support/update_feed_server.h"

namespace copperwick::testing {
namespace {

using namespace std::chrono_literals;

class UpdatesSettings : public ::testing::Test, protected AppWorkspace {
  protected:
    void open(std::optional<UpdateConfiguration> setUp, bool demo = false) {
        openRuntime({.demo = demo});
        runtime->defaults().set(preference_keys::automaticallyChecksForUpdates, false);
        // As the application makes it: one service, a child of the application.
        service = std::make_unique<app::UpdateService>(
            *runtime, setUp.value_or(UpdateConfiguration{.runningVersion = "1.0.0"}), qApp, clock);
        if (!demo)
            service->controller().start();
        skins = std::make_unique<app::SkinStore>(runtime->defaults(), qApp);
        card = showPage<app::SettingsPage>().updates();
    }
    ~UpdatesSettings() override {
        close();
        service.reset();
        skins.reset();
    }

    [[nodiscard]] UpdateConfiguration fromServer() const {
        return testing::configurationFor(server, key);
    }

    UpdateFeedServer server;
    TestSigningKey key;
    std::shared_ptr<ManualAlarmClock> clock = std::make_shared<ManualAlarmClock>();
    std::unique_ptr<app::UpdateService> service;
    std::unique_ptr<app::SkinStore> skins;
    app::UpdatesCard* card = nullptr;
};

TEST_F(UpdatesSettings, ABuildWithoutAFeedSaysUpdatesComeFromThePackageManager) {
    open(std::nullopt);
    ASSERT_NE(card->packageManagerLabel(), nullptr);
    EXPECT_EQ(card->packageManagerLabel()->text(),
              "Updates for Copperwick come from your system's package manager.");
    EXPECT_TRUE(card->packageManagerLabel()->isVisible());
    EXPECT_EQ(card->checksBox(), nullptr);
    EXPECT_EQ(card->checkNowButton(), nullptr);
    EXPECT_FALSE(service->controller().canCheckForUpdates());
}

TEST_F(UpdatesSettings, TheSwitchesAreWrittenThroughAndWorkByKeyboard) {
    open(fromServer());
    ASSERT_NE(card->checksBox(), nullptr);
    EXPECT_EQ(card->checksBox()->text(), "Check for updates automatically");
    EXPECT_EQ(card->installsBox()->text(), "Download and install updates automatically");
    for (QWidget* control : std::initializer_list<QWidget*>{card->checksBox(), card->installsBox()})
        EXPECT_EQ(control->accessibleName(), qobject_cast<QAbstractButton*>(control)->text());
    EXPECT_EQ(card->checkNowButton()->accessibleName(), "Check Now");
    const auto notes = card->findChildren<QLabel*>();
    EXPECT_TRUE(std::any_of(notes.begin(), notes.end(), [](QLabel* label) {
        return label->text() == app::toQString(app::UpdatesCard::kNote);
    }));

    EXPECT_FALSE(card->checksBox()->isChecked()) << "the preference said no";
    EXPECT_FALSE(card->installsBox()->isChecked());
    card->checksBox()->setFocus();
    QTest::keyClick(card->checksBox(), Qt::Key_Space);
    EXPECT_EQ(runtime->defaults().boolValue(preference_keys::automaticallyChecksForUpdates), true);
    EXPECT_TRUE(service->controller().automaticallyChecks());
    card->installsBox()->click();
    EXPECT_EQ(runtime->defaults().boolValue(preference_keys::automaticallyDownloadsUpdates), true);
    EXPECT_TRUE(service->controller().automaticallyInstalls());
    card->installsBox()->click();
    EXPECT_EQ(runtime->defaults().boolValue(preference_keys::automaticallyDownloadsUpdates), false);
}

TEST_F(UpdatesSettings, CheckNowSaysWhatItFoundAndWhenItLooked) {
    server.serveFeed(feedXML({}));
    open(fromServer());
    EXPECT_EQ(card->lastCheckLabel()->text(), app::toQString(app::UpdatesCard::kNeverChecked));
    card->checkNowButton()->setFocus();
    QTest::keyClick(card->checkNowButton(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !service->controller().isBusy(); }));
    EXPECT_EQ(runtime->statusMessage(), UpdateControllerText::kUpToDate);
    EXPECT_TRUE(card->lastCheckLabel()->text().startsWith("Last checked "))
        << card->lastCheckLabel()->text().toStdString();
    EXPECT_EQ(server.requestsFor("/appcast.xml"), 1);
}

TEST_F(UpdatesSettings, AnInstallThatWaitsForTheProgramSaysWhyAndThenAsks) {
    const std::string package = "!<arch>\na newer Copperwick\n";
    server.serve("/copperwick.deb", package);
    server.serveFeed(feedXML({{.version = "1.1.0",
                               .url = server.url("/copperwick.deb"),
                               .length = package.size(),
                               .signature = key.sign(package)}}));
    open(fromServer());
    runtime->setEntryEditorCount(1);
    card->checkNowButton()->click();
    ASSERT_TRUE(waitUntil([&] { return service->controller().heldBy().has_value(); }));
    EXPECT_TRUE(card->progressLabel()->isVisible());
    EXPECT_EQ(card->progressLabel()->text(),
              "Copperwick 1.1.0 is ready and waits until Copperwick is done importing or editing "
              "an entry.");
    EXPECT_EQ(card->progressLabel()->accessibleName(), card->progressLabel()->text());
    EXPECT_EQ(service->question(), nullptr);

    runtime->setEntryEditorCount(0);
    clock->advance(UpdateInstallPolicy::retryInterval);
    QMessageBox* question = service->question();
    ASSERT_NE(question, nullptr);
    EXPECT_EQ(question->text(), "Copperwick 1.1.0 is ready to install.");
    EXPECT_FALSE(card->progressLabel()->isVisible());
    question->reject();
    EXPECT_FALSE(service->controller().isBusy()) << "Later still installed it";
}

TEST_F(UpdatesSettings, TheMenuChecksOnlyWhenTheBuildCan) {
    server.serveFeed(feedXML({}));
    openRuntime();
    runtime->defaults().set(preference_keys::automaticallyChecksForUpdates, false);
    service = std::make_unique<app::UpdateService>(*runtime, fromServer(), qApp, clock);
    app::MainWindow& window = showWindow();
    QAction* check = window.menus()->checkForUpdatesAction();
    EXPECT_FALSE(check->isEnabled()) << "on before the updater started";
    service->controller().start();
    ASSERT_TRUE(check->isEnabled());
    check->trigger();
    EXPECT_FALSE(check->isEnabled()) << "on while a check was under way";
    ASSERT_TRUE(waitUntil([&] { return check->isEnabled(); }));
    EXPECT_EQ(server.requestsFor("/appcast.xml"), 1);

    close();
    service.reset();
    openRuntime();
    service = std::make_unique<app::UpdateService>(
        *runtime, UpdateConfiguration{.runningVersion = "1.0.0"}, qApp, clock);
    service->controller().start();
    EXPECT_FALSE(showWindow().menus()->checkForUpdatesAction()->isEnabled());
}

TEST_F(UpdatesSettings, ADemoShowsTheControlsOff) {
    open(fromServer(), true);
    ASSERT_NE(card->checksBox(), nullptr);
    EXPECT_FALSE(card->checksBox()->isEnabled());
    EXPECT_FALSE(card->installsBox()->isEnabled());
    EXPECT_FALSE(card->checkNowButton()->isEnabled());
    const auto notes = card->findChildren<QLabel*>();
    EXPECT_TRUE(std::any_of(notes.begin(), notes.end(), [](QLabel* label) {
        return label->text() == app::toQString(app::UpdatesCard::kDemo);
    }));
    EXPECT_TRUE(server.requests().empty());
}

}  // namespace
}  // namespace copperwick::testing
