#include "core/presentation/skin.h"

#include <cmath>
#include <cstdint>

#include <fmt/format.h>
#include <gtest/gtest.h>

namespace copperwick {
namespace {

std::string hexOf(const RGB& colour) {
    const auto channel = [](double c) { return static_cast<int>(std::lround(c * 255.0)); };
    return fmt::format("#{:02X}{:02X}{:02X}", channel(colour.red), channel(colour.green),
                       channel(colour.blue));
}

std::string hex(uint32_t value) {
    return fmt::format("#{:06X}", value);
}

void expectNear(const RGB& actual, const RGB& expected, const std::string& what) {
    EXPECT_NEAR(actual.red, expected.red, 1e-12) << what;
    EXPECT_NEAR(actual.green, expected.green, 1e-12) << what;
    EXPECT_NEAR(actual.blue, expected.blue, 1e-12) << what;
}

struct PaletteRow {
    Skin skin;
    bool dark;
    std::array<uint32_t, 5> colours;  // accent, onAccent, window, surface, sidebar
};

// Written out again by hand, so that a mistyped digit in either place shows.
TEST(Skin, EveryPaletteColourIsTheOneOfItsTable) {
    const std::array<PaletteRow, 12> rows{{
        {Skin::forest, false, {0x21543D, 0xFFFFFF, 0xFAF7F0, 0xFEFDF7, 0xEDE8DE}},
        {Skin::forest, true, {0xA8DEBA, 0x0B2117, 0x141F1C, 0x1C2924, 0x0F1A17}},
        {Skin::sky, false, {0x2D64AE, 0xFFFFFF, 0xEEF3FA, 0xFBFCFE, 0xE3EAF5}},
        {Skin::sky, true, {0x86B5F4, 0x06142B, 0x08101D, 0x0F1A2C, 0x060C17}},
        {Skin::slate, false, {0x3F4752, 0xFFFFFF, 0xF1F1EF, 0xFBFBFA, 0xE4E4E1}},
        {Skin::slate, true, {0xC9CED6, 0x16191D, 0x1B1D20, 0x25282C, 0x141618}},
        {Skin::turquoise, false, {0x1D7470, 0xFFFFFF, 0xEDF5F4, 0xFAFDFC, 0xE1EDEB}},
        {Skin::turquoise, true, {0x5FD0C8, 0x04201F, 0x081416, 0x0F2023, 0x061012}},
        {Skin::bordeaux, false, {0xA33B4F, 0xFFFFFF, 0xF7F0F1, 0xFDFAFA, 0xEEE3E5}},
        {Skin::bordeaux, true, {0xE8909F, 0x2A0A10, 0x160B0E, 0x211216, 0x10080A}},
        {Skin::wisteria, false, {0x6352A8, 0xFFFFFF, 0xF3F1F9, 0xFCFBFE, 0xE8E5F3}},
        {Skin::wisteria, true, {0xB9A6F2, 0x130C2E, 0x110F1D, 0x1A1729, 0x0C0A16}},
    }};
    for (const PaletteRow& row : rows) {
        const std::string what =
            fmt::format("{} {}", rawValue(row.skin), row.dark ? "dark" : "light");
        const SkinPalette colours = palette(row.skin, row.dark);
        EXPECT_EQ(hexOf(colours.accent), hex(row.colours[0])) << what << " accent";
        EXPECT_EQ(hexOf(colours.onAccent), hex(row.colours[1])) << what << " onAccent";
        EXPECT_EQ(hexOf(colours.window), hex(row.colours[2])) << what << " window";
        EXPECT_EQ(hexOf(colours.surface), hex(row.colours[3])) << what << " surface";
        EXPECT_EQ(hexOf(colours.sidebar), hex(row.colours[4])) << what << " sidebar";
        // The dark form selects in the light accent too, not in its own.
        EXPECT_EQ(colours.selection, palette(row.skin, false).accent) << what << " selection";
    }

    const std::array<std::pair<Skin, std::array<uint32_t, 3>>, 6> icons{{
        {Skin::forest, {0x144538, 0x0D3029, 0xB8DEC4}},
        {Skin::sky, {0x183D70, 0x0E284B, 0xA9CBF7}},
        {Skin::slate, {0x3B4048, 0x23262B, 0xD3D8DF}},
        {Skin::turquoise, {0x12494B, 0x0B3133, 0x8EE3DC}},
        {Skin::bordeaux, {0x5C1F2B, 0x3F131C, 0xF2B3BE}},
        {Skin::wisteria, {0x3B3068, 0x282049, 0xD3C6F7}},
    }};
    for (const auto& [skin, expected] : icons) {
        const SkinIconColors colours = iconColors(skin);
        EXPECT_EQ(hexOf(colours.tileTop), hex(expected[0])) << rawValue(skin);
        EXPECT_EQ(hexOf(colours.tileBottom), hex(expected[1])) << rawValue(skin);
        EXPECT_EQ(hexOf(colours.stripe), hex(expected[2])) << rawValue(skin);
    }
    // Channels are exact fractions of 255, not rounded on the way.
    EXPECT_EQ(rgbFromHex(0x21543D), (RGB{33.0 / 255.0, 84.0 / 255.0, 61.0 / 255.0}));
}

TEST(Skin, NamesTitlesAndRawTextsAreTheirOwnWords) {
    const std::array<std::tuple<Skin, std::string_view, std::string_view, std::string_view>, 6>
        skins{{
            {Skin::forest, "forest", "Forest", "Copperwick green"},
            {Skin::sky, "sky", "Sky", "Midnight blue"},
            {Skin::slate, "slate", "Slate", "Charcoal and silver"},
            {Skin::turquoise, "turquoise", "Turquoise", "Deep teal"},
            {Skin::bordeaux, "bordeaux", "Bordeaux", "Wine red"},
            {Skin::wisteria, "wisteria", "Wisteria", "Soft violet"},
        }};
    for (std::size_t i = 0; i < skins.size(); ++i) {
        const auto& [skin, raw, name, line] = skins[i];
        EXPECT_EQ(kAllSkins[i], skin);
        EXPECT_EQ(rawValue(skin), raw);
        EXPECT_EQ(enumFromRaw<Skin>(raw), skin);
        EXPECT_EQ(displayName(skin), name);
        EXPECT_EQ(tagline(skin), line);
    }
    // The persisted value keeps its old spelling; only the words on screen changed.
    EXPECT_EQ(rawValue(AppearanceMode::followMac), "followMac");
    EXPECT_EQ(title(AppearanceMode::followMac), "Follow the system");
    EXPECT_EQ(title(AppearanceMode::light), "Always light");
    EXPECT_EQ(title(AppearanceMode::dark), "Always dark");
    EXPECT_EQ(enumFromRaw<AppearanceMode>("Dark"), std::nullopt);
}

TEST(Skin, PrintPalettesComeFromTheLightAccentExceptForest) {
    {
        const PrintPalette forest = printPalette(Skin::forest);
        expectNear(forest.accent, {0.10, 0.29, 0.21}, "forest accent");
        expectNear(forest.soft, {0.42, 0.60, 0.44}, "forest soft");
        expectNear(forest.pale, {0.93, 0.96, 0.93}, "forest pale");
        expectNear(forest.ink, {0.09, 0.14, 0.12}, "forest ink");
        expectNear(forest.muted, {0.34, 0.39, 0.36}, "forest muted");
        expectNear(forest.rule, {0.78, 0.82, 0.79}, "forest rule");
    }
    {
        // #3F4752
        const PrintPalette slate = printPalette(Skin::slate);
        const double r = 0x3F / 255.0, g = 0x47 / 255.0, b = 0x52 / 255.0;
        expectNear(slate.accent, {r, g, b}, "slate accent");
        expectNear(slate.pale, {r * 0.08 + 0.92, g * 0.08 + 0.92, b * 0.08 + 0.92}, "slate pale");
    }
    for (const Skin skin : kAllSkins) {
        if (skin == Skin::forest)
            continue;
        const RGB c = palette(skin, false).accent;
        const auto per = [&c](double scale, double lift) {
            return RGB{c.red * scale + lift, c.green * scale + lift, c.blue * scale + lift};
        };
        const PrintPalette print = printPalette(skin);
        const std::string name(rawValue(skin));
        expectNear(print.soft, per(0.62, 0.38), name + " soft");
        // 17 ÷ 255, not 0.17: a dark ink, not a grey one.
        expectNear(print.ink, per(0.15, 17.0 / 255.0), name + " ink");
        expectNear(print.muted, per(0.20, 0.27294117647058824), name + " muted");
        expectNear(print.rule, per(0.15, 0.68), name + " rule");
    }
}

TEST(Skin, RelativeLuminanceRunsFromBlackToWhite) {
    EXPECT_DOUBLE_EQ(relativeLuminance(rgbFromHex(0xFFFFFF)), 1.0);
    EXPECT_DOUBLE_EQ(relativeLuminance(rgbFromHex(0x000000)), 0.0);
    // Below the knee a channel is scaled, not raised to a power.
    EXPECT_DOUBLE_EQ(relativeLuminance({0.03, 0.03, 0.03}), 0.03 / 12.92);
    EXPECT_NEAR(relativeLuminance({0.5, 0.5, 0.5}), 0.21404114048223255, 1e-12);
    // Green weighs most; white text on every light accent keeps 4.5 to 1.
    EXPECT_GT(relativeLuminance({0, 1, 0}), relativeLuminance({1, 0, 0}));
    for (const Skin skin : kAllSkins)
        EXPECT_LT(relativeLuminance(palette(skin, false).accent), 0.2) << rawValue(skin);
}

}  // namespace
}  // namespace copperwick
