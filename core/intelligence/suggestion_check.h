#pragma once

// A transaction told to the model, and the model's filing of it held to the
// ledger. The telling masks long digit runs, so that account and card
// numbers never reach the model; the check refuses whatever doesn't name a
// real category of the right group, or a merchant name that couldn't be one.
// What fails is dropped without a message. Pure; safe on any thread.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/model/ledger.h"

namespace copperwick::SuggestionCheck {

// The reason a suggestion from the model carries until the caller gives it
// the model's own words.
inline constexpr std::string_view kReason = "Local AI suggestion";

// Every run of five or more digits as as many "#": "CARD 123456 REF 1234" is
// "CARD ###### REF 1234". Store numbers of up to four digits stay, as a help.
[[nodiscard]] std::string redactDigits(std::string_view text);

// The lines the model reads about one transaction: its bank text (masked),
// the cleaned merchant key, direction, amount, the account's type, and the
// payment service, bank merchant and bank category when there are any.
[[nodiscard]] std::string describe(const LedgerTransaction& transaction, const Ledger& ledger);

// The model's answer as a suggestion of source `ai`, or absent when the kind
// isn't spending, income or a transfer, the merchant text can't be a name,
// the category isn't one of the ledger's of the kind's group, or money that
// left is called income. "unknown" or "none" as merchant leaves the name
// out; a transfer takes no category.
[[nodiscard]] std::optional<Suggestion> validate(std::string_view merchant,
                                                 std::string_view category, std::string_view kind,
                                                 const Ledger& ledger, int64_t amount);

}  // namespace copperwick::SuggestionCheck
