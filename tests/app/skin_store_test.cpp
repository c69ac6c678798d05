#include "app/shell/skin_store.h"

#include <QApplication>
#include <QDBusVariant>
#include <QIcon>

#include <gtest/gtest.h>

#include "app/shell/app_icon.h"
#include "app/shell/system_color_scheme.h"
#include "tests/app/app_fixture.h"

namespace copperwick {
namespace {

using testing::AppFixture;
using testing::TempFolder;

QColor toColor(const RGB& rgb) {
    return QColor::fromRgbF(static_cast<float>(rgb.red), static_cast<float>(rgb.green),
                            static_cast<float>(rgb.blue));
}

// Colours compared as 8-bit channels, as the screen shows them.
std::string name(const QColor& color) {
    return color.name().toStdString();
}

TEST(SkinStore, AppliesEachSkinInBothForms) {
    // The window kept the platform's own grey whatever the skin, and the
    // icons stayed the light theme's in the dark form.
    TempFolder temp;
    Preferences preferences(temp / "preferences.json");
    app::SkinStore store(preferences);
    for (const Skin skin : kAllSkins) {
        for (const auto mode : {AppearanceMode::light, AppearanceMode::dark}) {
            const bool dark = mode == AppearanceMode::dark;
            store.update({.skin = skin, .appearance = mode, .iconFollowsSkin = true});
            const SkinPalette colors = palette(skin, dark);
            const QPalette applied = QApplication::palette();
            const std::string what = std::string(rawValue(skin)) + (dark ? " dark" : " light");
            EXPECT_EQ(name(applied.color(QPalette::Window)), name(toColor(colors.window))) << what;
            EXPECT_EQ(name(applied.color(QPalette::Base)), name(toColor(colors.surface))) << what;
            EXPECT_EQ(name(applied.color(QPalette::AlternateBase)), name(toColor(colors.sidebar)))
                << what;
            EXPECT_EQ(name(applied.color(QPalette::Highlight)), name(toColor(colors.selection)))
                << what;
            EXPECT_EQ(name(applied.color(QPalette::Link)), name(toColor(colors.accent))) << what;
            EXPECT_EQ(QIcon::themeName(), dark ? "breeze-dark" : "breeze") << what;
            // Text must read on its window in both forms.
            const bool lightText = applied.color(QPalette::WindowText).lightness() > 128;
            EXPECT_EQ(lightText, dark) << what;
        }
    }
    EXPECT_EQ(QApplication::style()->name().toLower(), "fusion");
    EXPECT_EQ(SkinPreference::load(Preferences(temp / "preferences.json")).skin, Skin::wisteria);
}

TEST(SkinStore, WindowTakesTheSkinsSidebarAndAccent) {
    // The sidebar was painted with the window's colour, not the skin's sidebar.
    TempFolder temp;
    Preferences preferences(temp / "preferences.json");
    app::SkinStore store(preferences);
    store.update({.skin = Skin::bordeaux, .appearance = AppearanceMode::light});
    AppFixture f;
    app::Sidebar* sidebar = f.window->sidebar();
    EXPECT_EQ(name(sidebar->palette().color(sidebar->backgroundRole())),
              name(toColor(palette(Skin::bordeaux, false).sidebar)));
    const QImage picture = sidebar->grab().toImage();
    EXPECT_EQ(name(picture.pixelColor(4, picture.height() / 2)),
              name(toColor(palette(Skin::bordeaux, false).sidebar)));
}

TEST(AppIcon, DrawsTheSkinsTileAndStripe) {
    // Every skin's icon came out in forest green.
    for (const Skin skin : kAllSkins) {
        const SkinIconColors colors = iconColors(skin);
        const QImage icon = app::drawAppIcon(colors, 256);
        ASSERT_EQ(icon.size(), QSize(256, 256));
        EXPECT_EQ(icon.pixelColor(0, 0).alpha(), 0) << "the corner stays clear";
        // Near the top and bottom of the tile, where no line crosses it.
        EXPECT_LT(std::abs(icon.pixelColor(128, 24).red() - toColor(colors.tileTop).red()), 6);
        EXPECT_LT(std::abs(icon.pixelColor(128, 230).blue() - toColor(colors.tileBottom).blue()),
                  6);
        // The stripe, solid, a third of the way along it.
        EXPECT_EQ(name(icon.pixelColor(90, 22 + static_cast<int>(0.62 * 225))),
                  name(toColor(colors.stripe)))
            << rawValue(skin);
    }
}

TEST(SystemColorScheme, ReadsThePortalsValueHoweverItIsWrapped) {
    using app::SystemColorScheme;
    // Read answers a variant in a variant; the change signal, a bare one.
    const auto wrapped = [](const QVariant& value) {
        return QVariant::fromValue(QDBusVariant(QVariant::fromValue(QDBusVariant(value))));
    };
    EXPECT_EQ(SystemColorScheme::fromPortalValue(wrapped(1u)), true);
    EXPECT_EQ(SystemColorScheme::fromPortalValue(wrapped(2u)), false);
    EXPECT_EQ(SystemColorScheme::fromPortalValue(QVariant(1u)), true);
    EXPECT_EQ(SystemColorScheme::fromPortalValue(QVariant(2u)), false);
    // No preference, or something no desktop should send: the palette decides.
    EXPECT_EQ(SystemColorScheme::fromPortalValue(wrapped(0u)), std::nullopt);
    EXPECT_EQ(SystemColorScheme::fromPortalValue(QVariant(7u)), std::nullopt);
    EXPECT_EQ(SystemColorScheme::fromPortalValue(QVariant(QStringLiteral("dark"))), std::nullopt);
    EXPECT_EQ(SystemColorScheme::fromPortalValue(QVariant()), std::nullopt);
}

TEST(SkinStore, StandardIconWhenItDoesNotFollowTheSkin) {
    // Turning "icon follows skin" off still showed the skin's icon.
    TempFolder temp;
    Preferences preferences(temp / "preferences.json");
    app::SkinStore store(preferences);
    store.update({.skin = Skin::sky, .appearance = AppearanceMode::dark, .iconFollowsSkin = true});
    const auto top = [] {
        return QApplication::windowIcon().pixmap(256).toImage().pixelColor(128, 24);
    };
    EXPECT_EQ(name(top()), name(app::drawAppIcon(iconColors(Skin::sky), 256).pixelColor(128, 24)));
    store.update({.skin = Skin::sky, .appearance = AppearanceMode::dark, .iconFollowsSkin = false});
    EXPECT_EQ(name(top()),
              name(app::drawAppIcon(iconColors(Skin::forest), 256).pixelColor(128, 24)));
}

}  // namespace
}  // namespace copperwick
