#pragma once

// The few ways the screens set their text and lists, in one place so that
// every card reads alike: headings, quieter secondary lines, wrapped
// notes, and short lists sized to their rows. Colours stay the palette's.
// Main thread only.

#include <QAbstractItemView>
#include <QLabel>
#include <QString>
#include <QWidget>

namespace copperwick::app {

// A label whose accessible name is its text, as every label of the screen.
[[nodiscard]] QLabel* textLabel(const QString& text, QWidget* parent);
// Semi-bold, `scale` times the standard size.
[[nodiscard]] QLabel* headingLabel(const QString& text, QWidget* parent, qreal scale = 1.0);
// A quieter line in the palette's placeholder colour, wrapped.
[[nodiscard]] QLabel* secondaryLabel(const QString& text, QWidget* parent);
// A note in the palette's placeholder colour, wrapped; `small` a little
// smaller than the standard size.
[[nodiscard]] QLabel* noteLabel(const QString& text, QWidget* parent, bool small = false);
// Sets both the text and the accessible name.
void setLabelText(QLabel* label, const QString& text);
// Fixes a list's height to its rows, at most `maxRows` before it scrolls.
void fitToRows(QAbstractItemView* view, int rowCount, int maxRows);

}  // namespace copperwick::app
