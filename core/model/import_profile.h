#pragma once

// One CSV layout: which headers identify a bank's file, which columns hold
// which data, and which way the money signs run. Taught layouts are ledger
// records; built-in ones live in code and are never stored. A layout holds
// column mappings only, never transactions.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/date_layout.h"
#include "core/model/enum_text.h"
#include "core/model/ledger_enums.h"
#include "core/model/money.h"

namespace copperwick {

// How a single signed amount column relates to the ledger's sign.
enum class SignConvention {
    positiveIsMoneyIn,
    positiveIsMoneyOut,
};

// Row test of a layout whose file has no header row.
enum class HeaderlessShape {
    none,
    wellsFargoClassic,
    comenity,
};

template <>
struct EnumTraits<SignConvention> {
    static constexpr std::array<std::pair<SignConvention, std::string_view>, 2> cases{{
        {SignConvention::positiveIsMoneyIn, "positiveIsMoneyIn"},
        {SignConvention::positiveIsMoneyOut, "positiveIsMoneyOut"},
    }};
};

template <>
struct EnumTraits<HeaderlessShape> {
    static constexpr std::array<std::pair<HeaderlessShape, std::string_view>, 3> cases{{
        {HeaderlessShape::none, "none"},
        {HeaderlessShape::wellsFargoClassic, "wellsFargoClassic"},
        {HeaderlessShape::comenity, "comenity"},
    }};
};

[[nodiscard]] std::string_view label(SignConvention convention);

struct ImportProfile {
    std::string id;
    std::string name;
    std::optional<AccountType> accountType;
    bool hasHeader = true;
    std::vector<std::string> requiredHeaders;
    std::vector<std::string> forbiddenHeaders;
    std::vector<std::string> headerlessColumns;
    HeaderlessShape headerlessShape = HeaderlessShape::none;
    std::string dateColumn;
    std::optional<std::string> postedDateColumn;
    std::string descriptionColumn;
    std::optional<std::string> merchantColumn;
    std::optional<std::string> categoryColumn;
    std::optional<std::string> amountColumn;
    std::optional<std::string> debitColumn;
    std::optional<std::string> creditColumn;
    SignConvention signConvention = SignConvention::positiveIsMoneyIn;
    std::optional<std::string> statusColumn;
    std::vector<std::string> pendingValues;
    std::optional<std::string> checkNumberColumn;
    std::optional<std::string> cardNumberColumn;
    std::optional<std::string> cardholderColumn;
    std::optional<DateLayout> dateLayout;
    bool isBuiltIn = false;
    std::optional<std::string> currencyColumn;
    std::optional<std::string> currency;
    std::optional<std::string> externalIDColumn;
    std::optional<std::vector<std::string>> fileNameHints;
    // How the file writes its amounts; absent means decimalPoint, as every
    // layout read before the style was kept.
    std::optional<NumberStyle> numberStyle;
    // A column beside an unsigned amount that says which way the money went
    // ("S"/"H", "D"/"C", "Af"/"Bij"). A row whose marker is one of
    // `moneyOutMarkers` (compared without regard to case) is money out, any
    // other marker money in; the sign convention then plays no part. A row
    // without a marker keeps the amount's own sign.
    std::optional<std::string> signMarkerColumn;
    std::optional<std::vector<std::string>> moneyOutMarkers;

    friend bool operator==(const ImportProfile&, const ImportProfile&) = default;
};

}  // namespace copperwick
