#pragma once

// Colours between two of the palette's, for the shades a skin and its
// surfaces are drawn in.

#include <QColor>

namespace copperwick::app {

// `t` of the way from `from` to `to`, channel by channel; 0 is `from`, 1 `to`.
[[nodiscard]] inline QColor mix(const QColor& from, const QColor& to, double t) {
    const auto channel = [t](float a, float b) { return static_cast<float>(a + (b - a) * t); };
    return QColor::fromRgbF(channel(from.redF(), to.redF()), channel(from.greenF(), to.greenF()),
                            channel(from.blueF(), to.blueF()));
}

}  // namespace copperwick::app
