// Settings' Local AI part: the switches and the model server, kept in the
// per-machine preferences, and never an address that isn't this computer's.

#include "app/settings/local_ai_card.h"

#include <gtest/gtest.h>

#include <QTest>

#include "app/settings/settings_page.h"
#include "app/shell/skin_store.h"
#include "app/widgets/qt_text.h"
#include "runtime/on_device_model.h"
#include "tests/app/local_ai_fixture.h"

namespace copperwick::testing {
namespace {

class LocalAISettings : public ::testing::Test, protected LocalAIWorkspace {
  protected:
    LocalAISettings() {
        openRuntime();
        skins = std::make_unique<app::SkinStore>(runtime->defaults(), qApp);
        card = showPage<app::SettingsPage>().localAI();
    }
    ~LocalAISettings() override {
        close();
        skins.reset();
    }

    void type(const QString& text) {
        card->addressField()->setFocus();
        card->addressField()->selectAll();
        QTest::keyClicks(card->addressField(), text);
    }

    std::unique_ptr<app::SkinStore> skins;
    app::LocalAICard* card = nullptr;
};

TEST_F(LocalAISettings, AnAddressOffThisComputerIsRefusedAndNothingIsStored) {
    type(QStringLiteral("http://example.com"));
    EXPECT_TRUE(card->addressRefusal()->isVisible());
    EXPECT_EQ(card->addressRefusal()->label()->text(),
              app::toQString(OnDeviceModelText::kNotLoopback));
    EXPECT_FALSE(card->useServerButton()->isEnabled());
    QTest::keyClick(card->addressField(), Qt::Key_Return);
    EXPECT_EQ(runtime->defaults().stringValue(preference_keys::aiEndpoint), std::nullopt);
    EXPECT_TRUE(card->addressRefusal()->isVisible());
}

TEST_F(LocalAISettings, AServerOnThisComputerIsKeptAndAsked) {
    ASSERT_TRUE(
        waitUntil([&] { return bridge->modelStatus().known && !bridge->isCheckingModel(); }));
    EXPECT_EQ(card->statusLabel()->text(), app::toQString(OnDeviceModelText::kNoAddress));

    type(app::toQString(server.endpoint()));
    EXPECT_FALSE(card->addressRefusal()->isVisible());
    ASSERT_TRUE(card->useServerButton()->isEnabled());
    QTest::keyClicks(card->modelField(), QStringLiteral("fake-model"));
    card->useServerButton()->click();
    EXPECT_EQ(runtime->defaults().stringValue(preference_keys::aiEndpoint), server.endpoint());
    EXPECT_EQ(runtime->defaults().stringValue(preference_keys::aiModel), "fake-model");
    ASSERT_TRUE(waitUntil([&] { return bridge->modelStatus().isAvailable(); }));
    EXPECT_EQ(card->statusLabel()->text(), app::toQString(app::LocalAICard::kReady));
}

TEST_F(LocalAISettings, TheSwitchesAreKeptAndTheFeaturesFollowTheMasterSwitch) {
    for (QCheckBox* box :
         {card->enabledBox(), card->autoSuggestBox(), card->autoFileBox(), card->tidyNamesBox()})
        EXPECT_TRUE(box->isChecked()) << "a switch never written counts as on";
    card->autoFileBox()->click();
    EXPECT_EQ(runtime->defaults().boolValue(preference_keys::aiAutoFile), false);
    card->enabledBox()->setFocus();
    QTest::keyClick(card->enabledBox(), Qt::Key_Space);
    EXPECT_EQ(runtime->defaults().boolValue(preference_keys::aiEnabled), false);
    EXPECT_FALSE(card->autoSuggestBox()->isEnabled());
    EXPECT_FALSE(card->tidyNamesBox()->isEnabled());
}

}  // namespace
}  // namespace copperwick::testing
