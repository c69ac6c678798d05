#include "core/model/ledger.h"

#include "core/model/text.h"

namespace copperwick {

namespace {

template <typename T>
const T* findByID(const SharedVector<T>& records, const std::optional<Uuid>& id) {
    if (!id)
        return nullptr;
    for (const auto& record : records) {
        if (record.id == *id)
            return &record;
    }
    return nullptr;
}

}  // namespace

Ledger Ledger::starter() {
    Ledger ledger;
    ledger.categories = SharedVector<LedgerCategory>(LedgerCategory::defaults());
    return ledger;
}

const Person* Ledger::person(const std::optional<Uuid>& id) const {
    return findByID(people, id);
}
const Account* Ledger::account(const std::optional<Uuid>& id) const {
    return findByID(accounts, id);
}
const LedgerCategory* Ledger::category(const std::optional<Uuid>& id) const {
    return findByID(categories, id);
}

const Merchant* Ledger::merchant(const std::optional<Uuid>& id) const {
    return id ? merchants.find(*id) : nullptr;
}

const LedgerTransaction* Ledger::transaction(const std::optional<Uuid>& id) const {
    return id ? transactions.find(*id) : nullptr;
}

const LedgerCategory* Ledger::categoryNamed(std::string_view name) const {
    const auto wanted = text::lowercased(name);
    for (const auto& category : categories) {
        if (text::lowercased(category.name) == wanted)
            return &category;
    }
    return nullptr;
}

const Merchant* Ledger::merchantNamed(std::string_view name) const {
    const auto wanted = text::lowercased(name);
    const Merchant* best = nullptr;
    for (const auto& merchant : merchants) {
        if (text::lowercased(merchant.name) != wanted)
            continue;
        if (!best || merchant.id < best->id)
            best = &merchant;
    }
    return best;
}

std::vector<const LedgerTransaction*> Ledger::activeTransactions() const {
    std::vector<const LedgerTransaction*> result;
    result.reserve(transactions.size());
    for (const auto& transaction : transactions) {
        if (transaction.isActive())
            result.push_back(&transaction);
    }
    return result;
}

std::size_t Ledger::reviewCount() const {
    std::size_t count = 0;
    for (const auto& transaction : transactions) {
        if (transaction.needsReview())
            ++count;
    }
    return count;
}

std::vector<const LedgerTransaction*> Ledger::aiFiledUnchecked() const {
    std::vector<const LedgerTransaction*> result;
    for (const auto& transaction : transactions) {
        if (transaction.isAIFiledUnchecked())
            result.push_back(&transaction);
    }
    return result;
}

std::set<std::string> Ledger::rejectedAIKeys() const {
    std::set<std::string> keys;
    for (const auto& filing : aiFilings) {
        if (filing.rejected)
            keys.insert(filing.key);
    }
    return keys;
}

std::optional<std::string> Ledger::aiFilingKey(std::string_view key) const {
    if (aiFilings.contains(std::string(key)))
        return std::string(key);
    std::optional<std::string> best;
    for (auto it = aiFilings.begin(); it != aiFilings.end(); ++it) {
        const std::string& stored = it.key();
        const bool qualifies = stored.find(' ') != std::string::npos || stored.size() >= 6;
        if (!qualifies || key.size() <= stored.size() || key[stored.size()] != ' ' ||
            !key.starts_with(stored))
            continue;
        if (!best || stored.size() > best->size() ||
            (stored.size() == best->size() && stored < *best))
            best = stored;
    }
    return best;
}

std::optional<std::string> Ledger::undoLabel() const {
    if (changes.empty())
        return std::nullopt;
    return changes.back().label;
}

}  // namespace copperwick
