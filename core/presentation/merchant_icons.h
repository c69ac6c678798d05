#pragma once

// Which badge a merchant wears: a logo when the resource bundle has one, else
// a symbol for its category, else its initials, always on a tone. Decisions
// only; drawing belongs to whoever shows the badge.
//
// A catalog reads its bundle's two brand lists once, when made, and is
// read-only afterwards, so one catalog may be used from any thread. A missing
// bundle, a broken list or a missing logo file only means fewer logos;
// nothing here reports an error.

#include <cstddef>
#include <filesystem>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/model/ledger.h"
#include "core/model/ledger_enums.h"

namespace copperwick {

// A value: copyable, equatable and hashable.
struct MerchantIconDescriptor {
    enum class Tone {
        forest,
        sage,
        ochre,
        blue,
        terracotta,
        neutral,
    };

    std::optional<std::string> logo;    // a logo asset's name
    std::optional<std::string> symbol;  // a symbol's name, for when no logo loads
    std::string initials;               // for when there is neither; never empty
    Tone tone = Tone::neutral;

    friend bool operator==(const MerchantIconDescriptor&, const MerchantIconDescriptor&) = default;
};

// One logo and the names it stands for, folded or not. `catalog.json` in each
// of the bundle's two folders holds an array of these, as {"asset", "names"}.
struct MerchantIconBrand {
    std::string asset;  // the PNG file's name, less ".png"
    std::vector<std::string> names;

    friend bool operator==(const MerchantIconBrand&, const MerchantIconBrand&) = default;
};

class MerchantIconCatalog {
  public:
    // The catalog of the bundle "Copperwick_CopperwickCore.bundle", looked for
    // from the executable's folder under "Contents/Resources/", "Resources/"
    // and directly, then in the installed data folder; the first folder that
    // exists is used, and with none there are no logos. Loaded once, on first
    // use, from whichever thread asks first.
    [[nodiscard]] static const MerchantIconCatalog& shared();

    // The catalog of `bundle`; without one, no logos.
    explicit MerchantIconCatalog(std::optional<std::filesystem::path> bundle);

    // The badge for a merchant called `name`. `categoryName` is the filed
    // category's name; without one, the built-in directory's category for a
    // merchant of that name. A transfer never wears a category's symbol.
    [[nodiscard]] MerchantIconDescriptor descriptor(std::string_view name,
                                                    std::optional<std::string_view> categoryName,
                                                    std::optional<TransactionKind> kind) const;
    // The badge for a transaction: its merchant's name (or its bank text's, as
    // reports name it), its category's name and its kind.
    [[nodiscard]] MerchantIconDescriptor descriptor(const LedgerTransaction& transaction,
                                                    const Ledger& ledger) const;

    // The PNG file of a logo asset: "prepared-" assets in
    // "PreparedMerchantIcons", the rest in "MerchantIcons". Absent without a
    // bundle or when the file isn't there.
    [[nodiscard]] std::optional<std::filesystem::path> logoURL(std::string_view asset) const;

    // The form in which names are compared: case and diacritics removed, "’"
    // as "'", white space collapsed to single blanks and trimmed.
    [[nodiscard]] static std::string fold(std::string_view name);

  private:
    [[nodiscard]] std::optional<std::string> brandAsset(const std::string& folded) const;
    [[nodiscard]] std::optional<std::string> purposeAsset(const std::string& folded) const;

    std::optional<std::filesystem::path> m_bundle;
    // Folded brand name to asset; the first brand to claim a name keeps it.
    std::unordered_map<std::string, std::string> m_byName;
    // The assets of "PreparedMerchantIcons", which stand for what a payment
    // was for rather than who took it.
    std::set<std::string, std::less<>> m_purposeAssets;
};

}  // namespace copperwick

template <>
struct std::hash<copperwick::MerchantIconDescriptor> {
    [[nodiscard]] std::size_t operator()(
        const copperwick::MerchantIconDescriptor& descriptor) const noexcept;
};
