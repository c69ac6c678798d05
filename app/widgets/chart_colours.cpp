#include "app/widgets/chart_colours.h"

#include <algorithm>

#include "app/widgets/colour_mix.h"

namespace copperwick::app {

namespace {

// Neighbouring categories land far apart on the colour wheel: a step of
// about the golden angle never comes back to the same hue.
constexpr int kHueStep = 137;

bool isDark(const QPalette& palette) {
    return palette.color(QPalette::Window).lightness() < 128;
}

}  // namespace

QColor categoryColour(const QPalette& palette, int colorIndex) {
    if (colorIndex < 0)
        return mix(palette.color(QPalette::Base), palette.color(QPalette::Text), 0.35);
    const QColor accent = palette.color(QPalette::Link).toHsv();
    const int hue = (std::max(accent.hsvHue(), 0) + colorIndex * kHueStep) % 360;
    const int saturation = std::clamp(accent.hsvSaturation(), 110, 170);
    const int value = isDark(palette) ? 225 : 185;
    return QColor::fromHsv(hue, saturation, value);
}

QColor warningColour(const QPalette& palette) {
    const QColor accent = palette.color(QPalette::Link).toHsv();
    return QColor::fromHsv(24, std::clamp(accent.hsvSaturation(), 170, 220),
                           isDark(palette) ? 240 : 205);
}

QColor incomeColour(const QPalette& palette) {
    return palette.color(QPalette::Link);
}

}  // namespace copperwick::app
