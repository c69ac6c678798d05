#include "core/matching/merchant_key_index.h"

#include <algorithm>
#include <utility>

#include "core/matching/merchant_keys.h"
#include "core/model/chunk_summaries.h"

namespace copperwick::MerchantKeyIndex {

namespace {

using Transactions = SharedMap<Uuid, LedgerTransaction>;
// A chunk's transactions by merchant key, the keys as the key cache holds them.
using SortedKeys = std::vector<std::pair<const std::string*, const LedgerTransaction*>>;

ChunkSummaries<Transactions, SortedKeys>& index() {
    static ChunkSummaries<Transactions, SortedKeys> shared(
        [](const Transactions::ChunkTable& chunk) {
            SortedKeys keys;
            keys.reserve(chunk.size());
            for (const auto& [id, record] : chunk)
                keys.emplace_back(&MerchantKeys::held(record->rawDescription), record.get());
            std::sort(keys.begin(), keys.end(),
                      [](const auto& a, const auto& b) { return *a.first < *b.first; });
            return keys;
        });
    return shared;
}

}  // namespace

std::vector<const LedgerTransaction*> covered(const Transactions& transactions,
                                              const std::vector<std::string>& keys) {
    std::vector<const LedgerTransaction*> found;
    if (keys.empty())
        return found;
    index().each(transactions, [&](const SortedKeys& chunk) {
        for (const auto& learned : keys) {
            if (learned.empty())
                continue;
            // Keys a learned key covers sort together: the key itself, then
            // those that begin with it, among others sharing its first bytes.
            auto it = std::lower_bound(
                chunk.begin(), chunk.end(), learned,
                [](const auto& entry, const std::string& key) { return *entry.first < key; });
            for (; it != chunk.end() && it->first->starts_with(learned); ++it) {
                if (MerchantKeys::isCoveredBy(*it->first, learned))
                    found.push_back(it->second);
            }
        }
    });
    // A transaction two learned keys cover is found twice.
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    return found;
}

void warm(const Transactions& transactions) {
    index().each(transactions, [](const SortedKeys&) {});
}

}  // namespace copperwick::MerchantKeyIndex
