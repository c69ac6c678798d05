#pragma once

// The eight sections as the window shows them: each has one label, one icon
// and one key, tied to the section and not to its place in the sidebar. Cash
// stands fifth in the sidebar with key 8, and the three behind it keep 5, 6
// and 7, so that the keys people already know stay where they were.

#include <array>
#include <string_view>

#include "runtime/app_section.h"

namespace copperwick::app {

struct SectionInfo {
    AppSection section;
    std::string_view label;   // the sidebar's and the Go menu's words
    std::string_view symbol;  // a symbol of symbol_icons.h
    int key;                  // Ctrl and this digit
    std::string_view slug;    // short name for file names, such as screenshots
};

inline constexpr std::array<SectionInfo, 8> kSections{{
    {AppSection::importFiles, "Import", "square.and.arrow.down", 1, "import"},
    {AppSection::review, "Review", "checklist", 2, "review"},
    {AppSection::transactions, "Transactions", "list.bullet.rectangle", 3, "transactions"},
    {AppSection::reports, "Reports", "chart.pie", 4, "reports"},
    {AppSection::cash, "Cash", "banknote", 8, "cash"},
    {AppSection::ask, "Ask", "sparkles", 5, "ask"},
    {AppSection::rules, "Rules & Merchants", "slider.horizontal.3", 6, "rules"},
    {AppSection::settings, "Settings", "gearshape", 7, "settings"},
}};

static_assert(
    [] {
        for (std::size_t i = 0; i < kSections.size(); ++i) {
            if (kSections[i].section != allCases<AppSection>()[i])
                return false;
        }
        return true;
    }(),
    "kSections follows AppSection's order");

// The section's entry; kSections is in AppSection's (the sidebar's) order.
[[nodiscard]] constexpr const SectionInfo& sectionInfo(AppSection section) {
    return kSections[static_cast<std::size_t>(section)];
}

// The section's place in the sidebar and in the window's stack of pages.
[[nodiscard]] constexpr int sectionIndex(AppSection section) {
    return static_cast<int>(section);
}

}  // namespace copperwick::app
