#include "app/widgets/symbol_icons.h"

#include <filesystem>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "app/shell/sections.h"
#include "core/model/ledger_category.h"
#include "core/model/ledger_enums.h"
#include "core/presentation/demo_ledger.h"
#include "core/presentation/merchant_icons.h"

namespace copperwick {
namespace {

// Whether the installed theme has a picture of that name at some size.
bool themeHas(const std::filesystem::path& theme, std::string_view icon) {
    std::error_code error;
    for (auto it = std::filesystem::recursive_directory_iterator(theme, error);
         it != std::filesystem::recursive_directory_iterator(); it.increment(error)) {
        const auto stem = it->path().stem().string();
        const auto extension = it->path().extension();
        if (stem == icon && (extension == ".svg" || extension == ".png"))
            return true;
    }
    return false;
}

std::set<std::string> tableSymbols() {
    std::set<std::string> symbols;
    for (const auto& entry : app::symbolIconTable())
        symbols.emplace(entry.symbol);
    return symbols;
}

TEST(SymbolIcons, EveryEntryIsAnIconOfBothBreezeThemes) {
    // A symbol mapped to a name Breeze doesn't have painted as an empty space.
    std::set<std::string> seen;
    for (const auto& entry : app::symbolIconTable()) {
        EXPECT_TRUE(seen.emplace(entry.symbol).second) << "twice in the table: " << entry.symbol;
        for (const char* theme : {"/usr/share/icons/breeze", "/usr/share/icons/breeze-dark"})
            EXPECT_TRUE(themeHas(theme, entry.themeIcon))
                << entry.symbol << " → " << entry.themeIcon << " is missing from " << theme;
    }
    EXPECT_TRUE(app::symbolIcon("no.such.symbol").isNull());
}

TEST(SymbolIcons, EverySymbolTheLogicNamesHasAnIcon) {
    // A category, account type or section whose symbol wasn't in the table
    // showed its row without a picture.
    const auto symbols = tableSymbols();
    for (const auto& info : app::kSections)
        EXPECT_TRUE(symbols.contains(std::string(info.symbol))) << info.symbol;
    for (const AccountType type : allCases<AccountType>())
        EXPECT_TRUE(symbols.contains(std::string(symbol(type)))) << symbol(type);

    // Badges: every default category, every merchant of the demo, a transfer.
    const MerchantIconCatalog catalog(std::nullopt);
    std::set<std::string> badgeSymbols;
    for (const auto& category : LedgerCategory::defaults()) {
        if (const auto found = catalog.descriptor("Somewhere", category.name, std::nullopt).symbol)
            badgeSymbols.insert(*found);
    }
    const Ledger demo = DemoLedger::make(*LocalDate::make(2026, 3, 15));
    for (const auto& merchant : demo.merchants) {
        if (const auto found = catalog.descriptor(merchant.name, std::nullopt, std::nullopt).symbol)
            badgeSymbols.insert(*found);
    }
    for (const char* name :
         {"Example Activities", "Sample Books", "Example Services", "Sample Goods", "Example Bus",
          "Sample Transit", "Example Kitchen", "Sample Lunch", "Example Cafe", "Sample Market",
          "Sample Property Rent"}) {
        if (const auto found = catalog.descriptor(name, std::nullopt, std::nullopt).symbol)
            badgeSymbols.insert(*found);
    }
    if (const auto found =
            catalog.descriptor("Savings", std::nullopt, TransactionKind::transfer).symbol)
        badgeSymbols.insert(*found);
    EXPECT_GE(badgeSymbols.size(), 10u);
    for (const auto& symbol : badgeSymbols)
        EXPECT_TRUE(symbols.contains(symbol)) << symbol;
}

}  // namespace
}  // namespace copperwick
