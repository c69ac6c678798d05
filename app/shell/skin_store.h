#pragma once

// The live skin and appearance of the application. It puts the skin's
// palette into Qt's, so that every widget takes its colours from QPalette and
// light and dark both work; the screens never hold a colour of their own.
// The skin's colours stand in these roles:
//
//   Window          window         Base, Button, ToolTipBase   surface
//   AlternateBase   sidebar        Highlight                   selection
//   HighlightedText the light form's onAccent (selection is the light accent)
//   Link, LinkVisited  accent      Text, WindowText…           worked out of window
//
// It also picks the Fusion style (the same everywhere, so the palette shows
// as meant), the Breeze icon theme of the form ("breeze" or "breeze-dark"),
// and the application's icon. One per application. Main thread only.

#include <map>

#include <QIcon>
#include <QObject>
#include <QPalette>

#include "app/shell/system_color_scheme.h"
#include "core/presentation/skin.h"
#include "runtime/preferences.h"
#include "runtime/skin_preference.h"

namespace copperwick::app {

class SkinStore : public QObject {
    Q_OBJECT

  public:
    // Reads the choice from `preferences` (the runtime's, so a demo keeps its
    // own); they must outlive the store. Changes nothing until applied.
    explicit SkinStore(Preferences& preferences, QObject* parent = nullptr);

    [[nodiscard]] const SkinPreference& preference() const { return m_preference; }
    // Saves the new choice and applies it.
    void update(const SkinPreference& preference);
    // The palette, style and icon theme of the skin in the form the mode asks for.
    void applyAppearance();
    // The skin's icon when it is to follow the skin, else the standard one.
    void applyAppIcon();
    // Whether the form now applied (or about to be) is the dark one.
    [[nodiscard]] bool isDark() const;

    // Qt's palette for one form of a skin.
    [[nodiscard]] static QPalette qtPalette(Skin skin, bool dark);

  Q_SIGNALS:
    void preferenceChanged(const copperwick::SkinPreference& preference);

  private:
    Preferences& m_preferences;
    SkinPreference m_preference;
    // What the platform gave before any skin was applied: how "Follow the
    // system" tells light from dark when the desktop doesn't say.
    QPalette m_systemPalette;
    SystemColorScheme* m_systemScheme;
    // Drawn once for each skin.
    std::map<Skin, QIcon> m_icons;
};

}  // namespace copperwick::app
