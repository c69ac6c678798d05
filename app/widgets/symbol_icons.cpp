#include "app/widgets/symbol_icons.h"

#include <algorithm>
#include <array>

namespace copperwick::app {

namespace {

// Breeze has no gear, medical case, ticket, briefcase, bus or tram; the
// nearest picture of the same idea stands in for each (KDE's own settings
// picture, a heart, a play sign, a toolbox, a route).
constexpr std::array<SymbolIcon, 48> kTable{{
    // Sections
    {"square.and.arrow.down", "document-import"},
    {"checklist", "view-task"},
    {"list.bullet.rectangle", "view-list-details"},
    {"chart.pie", "office-chart-pie"},
    {"banknote", "view-financial-account-cash"},
    {"sparkles", "tools-wizard"},
    {"slider.horizontal.3", "adjustlevels"},
    {"gearshape", "configure"},
    // Sidebar foot and message bars
    {"lock.shield", "security-high"},
    {"exclamationmark.triangle.fill", "emblem-warning"},
    {"exclamationmark.triangle", "data-warning"},
    {"checkmark.circle.fill", "emblem-success"},
    // Import, review and reports screens
    {"checkmark.seal.fill", "emblem-checked"},
    {"tray.and.arrow.down", "download"},
    {"square.and.arrow.up", "document-export"},
    {"doc.text", "text-x-generic"},
    {"xmark.circle.fill", "window-close"},
    {"hand.raised", "hand"},
    {"clock.arrow.circlepath", "view-history"},
    {"lightbulb", "games-hint"},
    {"info.circle", "dialog-information"},
    // Account types
    {"building.columns", "view-bank"},
    {"creditcard", "view-financial-account-credit-card"},
    {"wallet.bifold", "wallet-open"},
    // Merchant badges: transfers, categories and the demo's merchants
    {"arrow.left.arrow.right", "exchange-positions"},
    {"house.fill", "go-home"},
    {"basket.fill", "amarok_cart_view"},
    {"fork.knife", "food"},
    {"car.fill", "car"},
    {"bag.fill", "package"},
    {"repeat", "media-playlist-repeat"},
    {"bolt.fill", "preferences-system-power-management"},
    {"cross.case.fill", "love"},
    {"ticket.fill", "media-playback-start"},
    {"airplane", "network-flightmode-on"},
    {"book.closed.fill", "documentation"},
    {"star.fill", "rating"},
    {"briefcase.fill", "tools"},
    {"bus.fill", "routeplanning"},
    {"tram.fill", "routeplanning"},
    {"takeoutbag.and.cup.and.straw.fill", "food"},
    {"cup.and.saucer.fill", "kteatime"},
    // Settings
    {"person.2", "user-group-properties"},
    {"tag", "tag"},
    {"paintpalette", "color-management"},
    {"dollarsign.circle", "view-financial-budget"},
    {"externaldrive", "drive-harddisk"},
    {"arrow.down.circle", "system-software-update"},
}};

}  // namespace

std::span<const SymbolIcon> symbolIconTable() {
    return kTable;
}

QIcon symbolIcon(std::string_view symbol) {
    const auto it = std::find_if(kTable.begin(), kTable.end(),
                                 [&](const SymbolIcon& entry) { return entry.symbol == symbol; });
    if (it == kTable.end())
        return {};
    return QIcon::fromTheme(
        QString::fromUtf8(it->themeIcon.data(), static_cast<qsizetype>(it->themeIcon.size())));
}

}  // namespace copperwick::app
