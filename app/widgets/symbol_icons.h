#pragma once

// The icons behind the symbol names that the logic and the screens use
// ("chart.pie", "house.fill", an account type's symbol). The names stay as
// identifiers everywhere; this one table maps each to an icon of the Breeze
// theme, which the skin switches between its light and dark forms. A symbol
// a screen needs and the table lacks is added here, never looked up by a
// theme name in a screen.
//
// Main thread only, like every QIcon.

#include <span>
#include <string_view>

#include <QIcon>

namespace copperwick::app {

struct SymbolIcon {
    std::string_view symbol;     // the name the logic uses
    std::string_view themeIcon;  // a Breeze icon's name
};

// Every symbol with its icon, in no particular order.
[[nodiscard]] std::span<const SymbolIcon> symbolIconTable();

// The themed icon for `symbol`; a null icon when the table doesn't have it.
[[nodiscard]] QIcon symbolIcon(std::string_view symbol);

}  // namespace copperwick::app
