#include "core/matching/merchant_keys.h"

#include <mutex>
#include <unordered_map>

#include "core/matching/merchant_text.h"

namespace copperwick::MerchantKeys {

namespace {

// Far more distinct descriptions than twenty years of a household's statements hold.
constexpr std::size_t kMaximumEntries = 1'000'000;

struct TransparentHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
        return std::hash<std::string_view>{}(text);
    }
};

struct Cache {
    std::mutex mutex;
    std::unordered_map<std::string, std::string, TransparentHash, std::equal_to<>> keys;
};

Cache& cache() {
    static Cache shared;
    return shared;
}

}  // namespace

std::string of(std::string_view rawDescription) {
    auto& shared = cache();
    {
        std::lock_guard lock(shared.mutex);
        if (const auto it = shared.keys.find(rawDescription); it != shared.keys.end())
            return it->second;
    }
    // Worked out outside the lock: two threads may both do it, harmlessly.
    auto key = MerchantText(rawDescription).key;
    std::lock_guard lock(shared.mutex);
    if (shared.keys.size() < kMaximumEntries)
        shared.keys.try_emplace(std::string(rawDescription), key);
    return key;
}

void visit(const std::vector<const std::string*>& rawDescriptions,
           const std::function<void(std::size_t, std::string_view)>& visit) {
    auto& shared = cache();
    std::vector<std::size_t> missing;
    {
        std::lock_guard lock(shared.mutex);
        for (std::size_t i = 0; i < rawDescriptions.size(); ++i) {
            const auto it = shared.keys.find(std::string_view(*rawDescriptions[i]));
            if (it == shared.keys.end())
                missing.push_back(i);
            else
                visit(i, it->second);
        }
    }
    for (const std::size_t i : missing) {
        const auto key = of(*rawDescriptions[i]);
        visit(i, key);
    }
}

bool isCoveredBy(std::string_view key, std::string_view learned) {
    if (learned.empty() || !key.starts_with(learned))
        return false;
    return key.size() == learned.size() || key[learned.size()] == ' ';
}

}  // namespace copperwick::MerchantKeys
