#include "core/matching/merchant_key_index.h"

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <utility>

#include "core/matching/merchant_keys.h"

namespace copperwick::MerchantKeyIndex {

namespace {

using Transactions = SharedMap<Uuid, LedgerTransaction>;

struct ChunkKeys {
    // Held so that the chunk can't change under its address.
    std::shared_ptr<const Transactions::ChunkTable> chunk;
    std::vector<std::pair<std::string, const LedgerTransaction*>> sorted;
    std::uint64_t lastSearch = 0;
};

struct Index {
    std::mutex mutex;
    std::unordered_map<const Transactions::ChunkTable*, ChunkKeys> chunks;
    std::uint64_t searches = 0;
};

Index& index() {
    static Index shared;
    return shared;
}

// Chunks of ledgers gone or changed are dropped once the index holds more than
// two ledgers' worth; holding them would keep their records alive.
constexpr std::size_t kChunksKept = 2 * Transactions::chunkCount();

const ChunkKeys& keysOf(Index& shared, std::shared_ptr<const Transactions::ChunkTable> chunk) {
    auto [it, fresh] = shared.chunks.try_emplace(chunk.get());
    ChunkKeys& keys = it->second;
    if (fresh) {
        keys.sorted.reserve(chunk->size());
        for (const auto& [id, record] : *chunk)
            keys.sorted.emplace_back(MerchantKeys::of(record->rawDescription), record.get());
        std::sort(keys.sorted.begin(), keys.sorted.end(),
                  [](const auto& a, const auto& b) { return a.first < b.first; });
        keys.chunk = std::move(chunk);
    }
    keys.lastSearch = shared.searches;
    return keys;
}

template <typename Visit>
void eachChunk(const Transactions& transactions, Visit&& visit) {
    auto& shared = index();
    std::lock_guard lock(shared.mutex);
    ++shared.searches;
    for (std::size_t c = 0; c < Transactions::chunkCount(); ++c) {
        auto chunk = transactions.chunk(c);
        if (chunk && !chunk->empty())
            visit(keysOf(shared, std::move(chunk)));
    }
    if (shared.chunks.size() > kChunksKept) {
        std::erase_if(shared.chunks, [&](const auto& entry) {
            return entry.second.lastSearch != shared.searches;
        });
    }
}

}  // namespace

std::vector<const LedgerTransaction*> covered(const Transactions& transactions,
                                              const std::vector<std::string>& keys) {
    std::vector<const LedgerTransaction*> found;
    if (keys.empty())
        return found;
    eachChunk(transactions, [&](const ChunkKeys& chunk) {
        for (const auto& learned : keys) {
            if (learned.empty())
                continue;
            // Keys a learned key covers sort together: the key itself, then
            // those that begin with it, among others sharing its first bytes.
            auto it = std::lower_bound(
                chunk.sorted.begin(), chunk.sorted.end(), learned,
                [](const auto& entry, const std::string& key) { return entry.first < key; });
            for (; it != chunk.sorted.end() && it->first.starts_with(learned); ++it) {
                if (MerchantKeys::isCoveredBy(it->first, learned))
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
    eachChunk(transactions, [](const ChunkKeys&) {});
}

}  // namespace copperwick::MerchantKeyIndex
