#pragma once

// The application's icon, drawn from a skin's icon colours: a rounded tile
// shaded from top to bottom, with ledger lines and a stripe across it. Drawn
// rather than shipped, so that every skin has one at every size. Needs no
// QGuiApplication (the desktop-icon command draws before any window). Main
// thread only, like QIcon.

#include <QByteArray>
#include <QIcon>
#include <QImage>
#include <QPainter>

#include "core/presentation/skin.h"

namespace copperwick::app {

// Paints the icon into the square of `size` from the painter's origin.
void paintAppIcon(QPainter& painter, const SkinIconColors& colors, double size);

// One square picture of `size` pixels, transparent around the tile.
[[nodiscard]] QImage drawAppIcon(const SkinIconColors& colors, int size);

// The icon as a scalable SVG document, for the desktop's icon theme.
[[nodiscard]] QByteArray appIconSVG(const SkinIconColors& colors);

// The icon at the sizes desktops ask for, 16 to 256 pixels.
[[nodiscard]] QIcon appIcon(Skin skin);

}  // namespace copperwick::app
