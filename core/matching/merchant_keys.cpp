#include "core/matching/merchant_keys.h"

#include <array>
#include <atomic>
#include <mutex>
#include <unordered_map>
#include <unordered_set>

#include "core/matching/merchant_text.h"

namespace copperwick::MerchantKeys {

namespace {

// Far more distinct descriptions than twenty years of a household's statements hold.
constexpr std::size_t kMaximumEntries = 1'000'000;

// Lookups come from two threads at once when a first visit summarises a
// ledger's chunks on both cores; one lock would have them take turns.
constexpr std::size_t kShards = 32;

// A text with its hash worked out once: the hash picks the shard and then
// the bucket within it.
struct Hashed {
    std::string_view text;
    std::size_t hash;
};

struct ByHash {
    using is_transparent = void;
    std::size_t operator()(const std::string& text) const noexcept {
        return std::hash<std::string_view>{}(text);
    }
    std::size_t operator()(const Hashed& text) const noexcept { return text.hash; }
};

struct SameText {
    using is_transparent = void;
    bool operator()(const std::string& a, const std::string& b) const noexcept { return a == b; }
    bool operator()(const Hashed& a, const std::string& b) const noexcept { return a.text == b; }
    bool operator()(const std::string& a, const Hashed& b) const noexcept { return a == b.text; }
};

struct Shard {
    std::mutex mutex;
    std::unordered_map<std::string, const std::string*, ByHash, SameText> keys;
};

struct Cache {
    std::array<Shard, kShards> shards;
    std::atomic<std::size_t> entries = 0;
    // Every key handed out. Nodes never move, and nothing is ever removed,
    // so the addresses stay good.
    std::mutex keysMutex;
    std::unordered_set<std::string> distinctKeys;
};

Cache& cache() {
    static Cache shared;
    return shared;
}

const std::string& keep(Cache& shared, std::string key) {
    std::lock_guard lock(shared.keysMutex);
    return *shared.distinctKeys.insert(std::move(key)).first;
}

}  // namespace

const std::string& held(std::string_view rawDescription) {
    auto& shared = cache();
    const Hashed text{rawDescription, std::hash<std::string_view>{}(rawDescription)};
    Shard& shard = shared.shards[text.hash % kShards];
    {
        std::lock_guard lock(shard.mutex);
        if (const auto it = shard.keys.find(text); it != shard.keys.end())
            return *it->second;
    }
    // Worked out outside the lock: two threads may both do it, harmlessly.
    const std::string& key = keep(shared, MerchantText(rawDescription).key);
    if (shared.entries.load(std::memory_order_relaxed) < kMaximumEntries) {
        std::lock_guard lock(shard.mutex);
        if (shard.keys.try_emplace(std::string(rawDescription), &key).second)
            shared.entries.fetch_add(1, std::memory_order_relaxed);
    }
    return key;
}

std::string of(std::string_view rawDescription) {
    return held(rawDescription);
}

bool isCoveredBy(std::string_view key, std::string_view learned) {
    if (learned.empty() || !key.starts_with(learned))
        return false;
    return key.size() == learned.size() || key[learned.size()] == ' ';
}

}  // namespace copperwick::MerchantKeys
