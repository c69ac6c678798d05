#pragma once

// The merchant key of a bank description, remembered for the life of the
// process. Operations that look for every transaction sharing a key (a
// remembered decision, a model filing, the review queue's groups, a report's
// unfiled lines) would otherwise parse every description of the ledger on
// every call. Keys are a pure function of the text, so the cache can never be
// stale. Past a bound it stops remembering descriptions, and their keys are
// worked out afresh; the keys themselves are always kept. Safe on any thread.

#include <string>
#include <string_view>

namespace copperwick::MerchantKeys {

[[nodiscard]] std::string of(std::string_view rawDescription);

// The key as the cache holds it: one string per distinct key, kept for the
// life of the process. Two descriptions have the same key exactly when they
// give the same address, so callers grouping many lines compare and hash
// addresses rather than text.
[[nodiscard]] const std::string& held(std::string_view rawDescription);

// `key` equals `learned`, or begins with it followed by a blank.
[[nodiscard]] bool isCoveredBy(std::string_view key, std::string_view learned);

}  // namespace copperwick::MerchantKeys
