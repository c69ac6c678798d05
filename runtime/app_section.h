#pragma once

// Where the person is in the application: the section on screen, and a set of
// transactions the Transactions section has been asked to show.

#include <set>
#include <string>
#include <string_view>

#include "core/model/enum_text.h"
#include "core/model/uuid.h"

namespace copperwick {

// The sidebar's sections, in the sidebar's order.
enum class AppSection {
    importFiles,
    review,
    transactions,
    reports,
    cash,
    ask,
    rules,
    settings,
};

template <>
struct EnumTraits<AppSection> {
    static constexpr std::array<std::pair<AppSection, std::string_view>, 8> cases{{
        {AppSection::importFiles, "importFiles"},
        {AppSection::review, "review"},
        {AppSection::transactions, "transactions"},
        {AppSection::reports, "reports"},
        {AppSection::cash, "cash"},
        {AppSection::ask, "ask"},
        {AppSection::rules, "rules"},
        {AppSection::settings, "settings"},
    }};
};

// Asks the Transactions section to show just these transactions, under a title.
struct TransactionsFocus {
    std::string title;
    std::set<Uuid> ids;

    friend bool operator==(const TransactionsFocus&, const TransactionsFocus&) = default;
};

}  // namespace copperwick
