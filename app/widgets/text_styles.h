#pragma once

// The few ways the screens set their text, buttons and lists, in one place
// so that every card reads alike: headings, quieter secondary lines,
// wrapped notes, fields' labels, buttons, and short lists sized to their
// rows. Colours stay the palette's. Main thread only.

#include <QAbstractItemView>
#include <QLabel>
#include <QPushButton>
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
// A field's label, naming `buddy` (when there is one): the field takes the
// label's words as its accessible name, and the label's mnemonic reaches it.
[[nodiscard]] QLabel* fieldLabel(const QString& text, QWidget* buddy, QWidget* parent);
// A button named by its words. Enter presses it while it has the keyboard,
// as Space does, on a screen as in a sheet.
[[nodiscard]] QPushButton* pushButton(const QString& text, QWidget* parent);
// Sets both the text and the accessible name.
void setLabelText(QLabel* label, const QString& text);
// Fixes a list's height to its rows, at most `maxRows` before it scrolls.
void fitToRows(QAbstractItemView* view, int rowCount, int maxRows);

}  // namespace copperwick::app
