#include "app/widgets/merchant_badge.h"

#include <gtest/gtest.h>

#include <QIcon>

#include "core/presentation/skin.h"

namespace copperwick::app {
namespace {

using Tone = MerchantIconDescriptor::Tone;

class MerchantBadgeTest : public ::testing::Test {
  protected:
    void SetUp() override {
        QStringList paths = QIcon::themeSearchPaths();
        if (!paths.contains(QStringLiteral("/usr/share/icons")))
            paths << QStringLiteral("/usr/share/icons");
        QIcon::setThemeSearchPaths(paths);
        QIcon::setThemeName(QStringLiteral("breeze"));
    }
};

// A logo named in the catalog but missing from the bundle left the badge
// empty instead of falling back to the category's symbol.
TEST_F(MerchantBadgeTest, FallsBackFromLogoToSymbolToInitials) {
    MerchantBadge badge(40);
    MerchantIconDescriptor descriptor{
        .logo = "no-such-logo", .symbol = "house.fill", .initials = "SP", .tone = Tone::forest};
    badge.setDescriptor(descriptor);
    EXPECT_EQ(badge.face(), MerchantBadge::Face::symbol);

    descriptor.symbol = "no.such.symbol";
    badge.setDescriptor(descriptor);
    EXPECT_EQ(badge.face(), MerchantBadge::Face::initials);

    descriptor.logo.reset();
    descriptor.symbol.reset();
    badge.setDescriptor(descriptor);
    EXPECT_EQ(badge.face(), MerchantBadge::Face::initials);
}

double contrast(const QColor& a, const QColor& b) {
    const auto luminance = [](const QColor& c) {
        return relativeLuminance({c.redF(), c.greenF(), c.blueF()});
    };
    const double x = luminance(a), y = luminance(b);
    return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05);
}

// The symbol or initials must stand out from the round in every skin, light
// and dark: a tone's ink chosen for a light surface vanished on a dark one.
TEST_F(MerchantBadgeTest, InkStandsOutFromItsRoundInEverySkinAndForm) {
    for (const Skin skin : kAllSkins) {
        for (const bool dark : {false, true}) {
            const SkinPalette colours = palette(skin, dark);
            QPalette qt;
            qt.setColor(QPalette::Base, QColor::fromRgbF(static_cast<float>(colours.surface.red),
                                                         static_cast<float>(colours.surface.green),
                                                         static_cast<float>(colours.surface.blue)));
            qt.setColor(QPalette::Text, dark ? QColor(240, 240, 240) : QColor(22, 24, 23));
            for (const Tone tone : {Tone::forest, Tone::sage, Tone::ochre, Tone::blue,
                                    Tone::terracotta, Tone::neutral}) {
                const double ratio =
                    contrast(MerchantBadge::toneInk(tone, qt), MerchantBadge::toneFill(tone, qt));
                EXPECT_GE(ratio, 3.0) << rawValue(skin) << (dark ? " dark" : " light") << " tone "
                                      << static_cast<int>(tone);
            }
        }
    }
}

}  // namespace
}  // namespace copperwick::app
