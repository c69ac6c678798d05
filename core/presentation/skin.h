#pragma once

// The colour skins: six of them, each with a light and a dark form, and the
// colours they give the app icon and the PDF reports. Plain data in the logic
// module so that reports can be coloured without any screen. Everything here
// is a pure function, safe on any thread.

#include <array>
#include <cstdint>
#include <string_view>
#include <utility>

#include "core/model/enum_text.h"

namespace copperwick {

// A colour of three channels from 0 to 1. A value: copyable and equatable.
struct RGB {
    double red = 0;
    double green = 0;
    double blue = 0;

    friend bool operator==(const RGB&, const RGB&) = default;
};

// 0x21543D as 0x21 / 255, 0x54 / 255, 0x3D / 255.
[[nodiscard]] RGB rgbFromHex(uint32_t hex);

// WCAG's relative luminance: 0 for black, 1 for white.
[[nodiscard]] double relativeLuminance(const RGB& colour);

enum class Skin {
    forest,
    sky,
    slate,
    turquoise,
    bordeaux,
    wisteria,
};

template <>
struct EnumTraits<Skin> {
    static constexpr std::array<std::pair<Skin, std::string_view>, 6> cases{{
        {Skin::forest, "forest"},
        {Skin::sky, "sky"},
        {Skin::slate, "slate"},
        {Skin::turquoise, "turquoise"},
        {Skin::bordeaux, "bordeaux"},
        {Skin::wisteria, "wisteria"},
    }};
};

// In the order the appearance settings list them.
inline constexpr std::array<Skin, 6> kAllSkins{Skin::forest,    Skin::sky,      Skin::slate,
                                               Skin::turquoise, Skin::bordeaux, Skin::wisteria};

// "Forest"
[[nodiscard]] std::string_view displayName(Skin skin);
// "Copperwick green"
[[nodiscard]] std::string_view tagline(Skin skin);

// The colours of the window in one form of a skin. `selection` is the light
// accent in both forms.
struct SkinPalette {
    RGB accent;
    RGB onAccent;
    RGB window;
    RGB surface;
    RGB sidebar;
    RGB selection;

    friend bool operator==(const SkinPalette&, const SkinPalette&) = default;
};

[[nodiscard]] SkinPalette palette(Skin skin, bool dark);

// The app icon: a tile shaded from top to bottom, with a stripe across it.
struct SkinIconColors {
    RGB tileTop;
    RGB tileBottom;
    RGB stripe;

    friend bool operator==(const SkinIconColors&, const SkinIconColors&) = default;
};

[[nodiscard]] SkinIconColors iconColors(Skin skin);

// The colours of a printed report, always on white paper.
struct PrintPalette {
    RGB accent;
    RGB soft;
    RGB pale;
    RGB ink;
    RGB muted;
    RGB rule;

    friend bool operator==(const PrintPalette&, const PrintPalette&) = default;
};

// Forest's is a set of its own; every other skin's is worked out of its
// light accent.
[[nodiscard]] PrintPalette printPalette(Skin skin);

// Whether the application follows the system's light or dark setting or
// fixes one. The raw value "followMac" is what preference files hold.
enum class AppearanceMode {
    followMac,
    light,
    dark,
};

template <>
struct EnumTraits<AppearanceMode> {
    static constexpr std::array<std::pair<AppearanceMode, std::string_view>, 3> cases{{
        {AppearanceMode::followMac, "followMac"},
        {AppearanceMode::light, "light"},
        {AppearanceMode::dark, "dark"},
    }};
};

// "Follow the system", "Always light", "Always dark".
[[nodiscard]] std::string_view title(AppearanceMode mode);

}  // namespace copperwick
