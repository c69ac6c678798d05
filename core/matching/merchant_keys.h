#pragma once

// The merchant key of a bank description, remembered for the life of the
// process. Operations that look for every transaction sharing a key (a
// remembered decision, a model filing, the review queue's groups) would
// otherwise parse every description of the ledger on every call. Keys are a
// pure function of the text, so the cache can never be stale; it is cleared
// when it grows past a bound so that it can't grow without end. Safe on any
// thread.

#include <string>
#include <string_view>

namespace copperwick::MerchantKeys {

[[nodiscard]] std::string of(std::string_view rawDescription);

// `key` equals `learned`, or begins with it followed by a blank.
[[nodiscard]] bool isCoveredBy(std::string_view key, std::string_view learned);

}  // namespace copperwick::MerchantKeys
