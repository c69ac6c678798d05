#include "core/presentation/skin.h"

#include <cmath>

namespace copperwick {

namespace {

struct SkinColours {
    Skin skin;
    std::string_view displayName;
    std::string_view tagline;
    // accent, onAccent, window, surface, sidebar
    std::array<uint32_t, 5> light;
    std::array<uint32_t, 5> dark;
    // tileTop, tileBottom, stripe
    std::array<uint32_t, 3> icon;
};

// In the order of Skin's cases, so that a skin's row is found by its index.
constexpr std::array<SkinColours, 6> kSkins{{
    {Skin::forest,
     "Forest",
     "Copperwick green",
     {0x21543D, 0xFFFFFF, 0xFAF7F0, 0xFEFDF7, 0xEDE8DE},
     {0xA8DEBA, 0x0B2117, 0x141F1C, 0x1C2924, 0x0F1A17},
     {0x144538, 0x0D3029, 0xB8DEC4}},
    {Skin::sky,
     "Sky",
     "Midnight blue",
     {0x2D64AE, 0xFFFFFF, 0xEEF3FA, 0xFBFCFE, 0xE3EAF5},
     {0x86B5F4, 0x06142B, 0x08101D, 0x0F1A2C, 0x060C17},
     {0x183D70, 0x0E284B, 0xA9CBF7}},
    {Skin::slate,
     "Slate",
     "Charcoal and silver",
     {0x3F4752, 0xFFFFFF, 0xF1F1EF, 0xFBFBFA, 0xE4E4E1},
     {0xC9CED6, 0x16191D, 0x1B1D20, 0x25282C, 0x141618},
     {0x3B4048, 0x23262B, 0xD3D8DF}},
    {Skin::turquoise,
     "Turquoise",
     "Deep teal",
     {0x1D7470, 0xFFFFFF, 0xEDF5F4, 0xFAFDFC, 0xE1EDEB},
     {0x5FD0C8, 0x04201F, 0x081416, 0x0F2023, 0x061012},
     {0x12494B, 0x0B3133, 0x8EE3DC}},
    {Skin::bordeaux,
     "Bordeaux",
     "Wine red",
     {0xA33B4F, 0xFFFFFF, 0xF7F0F1, 0xFDFAFA, 0xEEE3E5},
     {0xE8909F, 0x2A0A10, 0x160B0E, 0x211216, 0x10080A},
     {0x5C1F2B, 0x3F131C, 0xF2B3BE}},
    {Skin::wisteria,
     "Wisteria",
     "Soft violet",
     {0x6352A8, 0xFFFFFF, 0xF3F1F9, 0xFCFBFE, 0xE8E5F3},
     {0xB9A6F2, 0x130C2E, 0x110F1D, 0x1A1729, 0x0C0A16},
     {0x3B3068, 0x282049, 0xD3C6F7}},
}};

const SkinColours& colours(Skin skin) {
    return kSkins[static_cast<std::size_t>(skin)];
}

double linearChannel(double c) {
    return c <= 0.03928 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4);
}

// Each channel of `c` scaled and lifted alike.
RGB blend(const RGB& c, double scale, double lift) {
    return {c.red * scale + lift, c.green * scale + lift, c.blue * scale + lift};
}

}  // namespace

RGB rgbFromHex(uint32_t hex) {
    return {static_cast<double>((hex >> 16) & 0xFF) / 255.0,
            static_cast<double>((hex >> 8) & 0xFF) / 255.0,
            static_cast<double>(hex & 0xFF) / 255.0};
}

double relativeLuminance(const RGB& colour) {
    return 0.2126 * linearChannel(colour.red) + 0.7152 * linearChannel(colour.green) +
           0.0722 * linearChannel(colour.blue);
}

std::string_view displayName(Skin skin) {
    return colours(skin).displayName;
}

std::string_view tagline(Skin skin) {
    return colours(skin).tagline;
}

SkinPalette palette(Skin skin, bool dark) {
    const SkinColours& row = colours(skin);
    const auto& form = dark ? row.dark : row.light;
    return {rgbFromHex(form[0]), rgbFromHex(form[1]), rgbFromHex(form[2]),
            rgbFromHex(form[3]), rgbFromHex(form[4]), rgbFromHex(row.light[0])};
}

SkinIconColors iconColors(Skin skin) {
    const auto& icon = colours(skin).icon;
    return {rgbFromHex(icon[0]), rgbFromHex(icon[1]), rgbFromHex(icon[2])};
}

PrintPalette printPalette(Skin skin) {
    // Forest's print colours were picked by eye; the other skins derive theirs
    // from the accent so that each report stays in its skin's family.
    if (skin == Skin::forest) {
        return {{0.10, 0.29, 0.21}, {0.42, 0.60, 0.44}, {0.93, 0.96, 0.93},
                {0.09, 0.14, 0.12}, {0.34, 0.39, 0.36}, {0.78, 0.82, 0.79}};
    }
    const RGB c = rgbFromHex(colours(skin).light[0]);
    return {c,
            blend(c, 0.62, 0.38),
            blend(c, 0.08, 0.92),
            blend(c, 0.15, 17.0 / 255.0),
            blend(c, 0.20, 0.27294117647058824),
            blend(c, 0.15, 0.68)};
}

std::string_view title(AppearanceMode mode) {
    switch (mode) {
        case AppearanceMode::followMac:
            return "Follow the system";
        case AppearanceMode::light:
            return "Always light";
        case AppearanceMode::dark:
            return "Always dark";
    }
    return {};
}

}  // namespace copperwick
