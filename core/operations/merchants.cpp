#include "core/operations/merchants.h"

#include <algorithm>
#include <string>
#include <unordered_set>
#include <vector>

#include "core/model/text.h"
#include "core/operations/classification.h"
#include "core/operations/entry_error.h"

namespace copperwick {

std::string merchantNameEntered(std::string_view text) {
    std::string name(text::trimmedSpaces(text));
    if (name.empty())
        throw EntryError(EntryError::Case::name, "Give the merchant a name.");
    return name;
}

Merchant withFiling(const Ledger& ledger, Merchant merchant, const MerchantFiling& filing) {
    switch (filing.kind) {
        case MerchantFiling::Kind::none:
            merchant.kind.reset();
            merchant.categoryID.reset();
            break;
        case MerchantFiling::Kind::transfer:
            merchant.kind = TransactionKind::transfer;
            merchant.categoryID.reset();
            break;
        case MerchantFiling::Kind::category:
            if (!ledger.category(filing.categoryID))
                throw EntryError(EntryError::Case::category);
            // The kind follows the category's group, as a remembered decision leaves it.
            merchant.kind.reset();
            merchant.categoryID = filing.categoryID;
            break;
    }
    return merchant;
}

LedgerDelta renameMerchant(Ledger& ledger, Uuid id, std::string_view to) {
    const std::string name(text::trimmedSpaces(to));
    const Merchant* merchant = ledger.merchant(id);
    if (name.empty() || !merchant)
        return {};
    if (const Merchant* other = ledger.merchantNamed(name); other && other->id != id)
        return mergeMerchants(ledger, id, other->id);
    ledger.merchants.update(id, [&](Merchant& renamed) {
        renamed.name = name;
        renamed.nameLocked = true;
    });
    LedgerDelta delta;
    delta.change(RecordKind::merchant, id);
    return delta;
}

LedgerDelta mergeMerchants(Ledger& ledger, Uuid id, Uuid into) {
    const Merchant* source = ledger.merchant(id);
    if (id == into || !source || !ledger.merchant(into))
        return {};
    const Merchant from = *source;
    ledger.merchants.update(into, [&](Merchant& target) {
        for (const auto& key : from.keys) {
            if (std::find(target.keys.begin(), target.keys.end(), key) == target.keys.end())
                target.keys.push_back(key);
        }
        if (!target.categoryID && !target.kind) {
            target.categoryID = from.categoryID;
            target.kind = from.kind;
        }
    });
    ledger.merchants.erase(id);

    LedgerDelta delta;
    delta.change(RecordKind::merchant, into);
    delta.remove(RecordKind::merchant, id);
    std::vector<Uuid> moving;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.merchantID == id)
            moving.push_back(transaction.id);
    }
    for (const auto& transactionID : moving) {
        ledger.transactions.update(
            transactionID, [&](LedgerTransaction& transaction) { transaction.merchantID = into; });
        delta.change(RecordKind::transaction, transactionID);
    }
    return delta;
}

LedgerDelta updateMerchant(Ledger& ledger, const Merchant& merchant, bool applyNow) {
    ledger.merchants.set(merchant.id, merchant);
    LedgerDelta delta;
    delta.change(RecordKind::merchant, merchant.id);
    if (applyNow)
        delta.merge(rematch(ledger));
    return delta;
}

LedgerDelta pruneUnusedMerchants(Ledger& ledger) {
    std::unordered_set<Uuid> used;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.merchantID)
            used.insert(*transaction.merchantID);
    }
    std::vector<Uuid> unused;
    for (const auto& merchant : ledger.merchants) {
        if (!used.contains(merchant.id) && merchant.keys.empty() && !merchant.categoryID &&
            !merchant.kind)
            unused.push_back(merchant.id);
    }
    LedgerDelta delta;
    for (const auto& id : unused) {
        ledger.merchants.erase(id);
        delta.remove(RecordKind::merchant, id);
    }
    return delta;
}

}  // namespace copperwick
