#pragma once

// Amounts as statement files write them, read into cents. OFX, QIF and
// CAMT.053 writers pad amounts with zeros past the cents ("-30.000") or use
// a decimal comma; the padding is undone here and Money::parseCents reads
// the rest in the file's number style, so that money.* stays the one reader
// of amounts. Pure; any thread.

#include <cstdint>
#include <optional>
#include <string_view>

#include "core/model/money.h"

namespace copperwick::StatementAmount {

// Why a row whose amount names a fraction of a cent is left unread.
inline constexpr std::string_view kFinerThanCents = "This amount has more decimals than cents.";

struct Reading {
    std::optional<int64_t> cents;  // absent when the text isn't an exact amount
    bool finerThanCents = false;   // "-3.775": exact, but not in cents
};

[[nodiscard]] Reading read(std::string_view text, NumberStyle style);

}  // namespace copperwick::StatementAmount
