#pragma once

// The colours figures are drawn in, worked out from the skin's palette so
// that every screen shows a category in the same colour, light or dark.

#include <QColor>
#include <QPalette>

namespace copperwick::app {

// The colour of a category's `colorIndex` (-1, a line with no category, is
// the palette's quiet grey), for the light or dark form the palette is in.
[[nodiscard]] QColor categoryColour(const QPalette& palette, int colorIndex);
// The colour of a figure gone wrong (over budget), in the palette's light.
[[nodiscard]] QColor warningColour(const QPalette& palette);
// The colour of income beside spending in the charts.
[[nodiscard]] QColor incomeColour(const QPalette& palette);

}  // namespace copperwick::app
