#pragma once

// The merchant key of a bank description, remembered for the life of the
// process. Operations that look for every transaction sharing a key (a
// remembered decision, a model filing, the review queue's groups) would
// otherwise parse every description of the ledger on every call. Keys are a
// pure function of the text, so the cache can never be stale; past a bound
// it stops growing and keys are worked out afresh. Safe on any thread.

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace copperwick::MerchantKeys {

[[nodiscard]] std::string of(std::string_view rawDescription);

// Calls `visit(i, key)` with the key of every description, in no set order,
// taking the cache's lock once rather than once per description.
void visit(const std::vector<const std::string*>& rawDescriptions,
           const std::function<void(std::size_t, std::string_view)>& visit);

// `key` equals `learned`, or begins with it followed by a blank.
[[nodiscard]] bool isCoveredBy(std::string_view key, std::string_view learned);

}  // namespace copperwick::MerchantKeys
