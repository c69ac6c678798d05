#include "core/reports/merchant_summary.h"

#include <algorithm>

#include "core/model/text.h"

namespace copperwick {

std::unordered_map<Uuid, std::size_t> merchantTransactionCounts(const Ledger& ledger) {
    std::unordered_map<Uuid, std::size_t> counts;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.isActive() && transaction.merchantID)
            ++counts[*transaction.merchantID];
    }
    return counts;
}

std::vector<const Merchant*> merchantsMatching(const Ledger& ledger, std::string_view search) {
    const auto wanted = text::lowercased(search);
    std::vector<std::pair<std::string, const Merchant*>> found;
    for (const auto& merchant : ledger.merchants) {
        auto lowered = text::lowercased(merchant.name);
        if (lowered.find(wanted) != std::string::npos)
            found.emplace_back(std::move(lowered), &merchant);
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) {
        return a.first != b.first ? a.first < b.first : a.second->id < b.second->id;
    });
    std::vector<const Merchant*> merchants;
    merchants.reserve(found.size());
    for (const auto& [name, merchant] : found)
        merchants.push_back(merchant);
    return merchants;
}

std::string defaultFilingText(const Ledger& ledger, const Merchant& merchant) {
    if (merchant.kind == TransactionKind::transfer)
        return "always a transfer";
    if (const LedgerCategory* category = ledger.category(merchant.categoryID))
        return "always " + category->name;
    return "no default";
}

std::string recognizedText(const Merchant& merchant) {
    const std::size_t count = merchant.keys.size();
    if (count == 0)
        return "no bank text yet";
    return "recognizes " + std::to_string(count) + " bank text" + (count == 1 ? "" : "s");
}

}  // namespace copperwick
