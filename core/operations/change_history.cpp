#include "core/operations/change_history.h"

#include <algorithm>
#include <unordered_set>

#include "core/matching/transfer_pairing.h"

namespace copperwick {

namespace {

std::vector<Uuid> idsOf(const LedgerDelta& delta, RecordKind kind, bool deleted = false) {
    std::vector<Uuid> ids;
    const auto& byKind = deleted ? delta.deleted : delta.changed;
    if (const auto it = byKind.find(kind); it != byKind.end()) {
        for (const auto& recordID : it->second.sorted()) {
            if (const auto id = recordID.uuid())
                ids.push_back(*id);
        }
    }
    return ids;
}

}  // namespace

ChangeSet changeSetFor(const Ledger& original, const LedgerDelta& delta, std::string label,
                       Instant now) {
    ChangeSet changeSet{.id = Uuid::random(), .date = now, .label = std::move(label)};
    for (const bool deleted : {false, true}) {
        for (const auto& id : idsOf(delta, RecordKind::transaction, deleted)) {
            if (const LedgerTransaction* before = original.transaction(id))
                changeSet.before.push_back(*before);
            else if (!deleted)
                changeSet.createdTransactionIDs.push_back(id);
        }
        for (const auto& id : idsOf(delta, RecordKind::merchant, deleted)) {
            if (const Merchant* before = original.merchant(id))
                changeSet.merchantsBefore.push_back(*before);
            else if (!deleted)
                changeSet.createdMerchantIDs.push_back(id);
        }
    }
    for (const bool deleted : {false, true}) {
        const auto& byKind = deleted ? delta.deleted : delta.changed;
        const auto filings = byKind.find(RecordKind::aiFiling);
        if (filings == byKind.end())
            continue;
        for (const auto& recordID : filings->second.sorted()) {
            const std::string key = recordID.text();
            if (const AIFiling* before = original.aiFilings.find(key))
                changeSet.aiFilingsBefore.push_back(*before);
            else if (!deleted)
                changeSet.createdAIFilingKeys.push_back(key);
        }
    }
    for (const auto& id : idsOf(delta, RecordKind::rule)) {
        const bool existed = std::any_of(original.rules.begin(), original.rules.end(),
                                         [&](const Rule& rule) { return rule.id == id; });
        if (!existed)
            changeSet.createdRuleIDs.push_back(id);
    }
    return changeSet;
}

LedgerDelta record(Ledger& ledger, ChangeSet changeSet) {
    LedgerDelta delta;
    delta.change(RecordKind::change, changeSet.id);
    ledger.changes.push_back(std::move(changeSet));
    while (ledger.changes.size() > static_cast<std::size_t>(Ledger::kMaximumUndoSteps)) {
        delta.remove(RecordKind::change, ledger.changes.front().id);
        ledger.changes.erase(0);
    }
    return delta;
}

std::optional<LedgerDelta> undoLastChange(Ledger& ledger) {
    if (ledger.changes.empty())
        return std::nullopt;
    const ChangeSet last = ledger.changes.back();
    ledger.changes.erase(ledger.changes.size() - 1);

    LedgerDelta delta;
    delta.remove(RecordKind::change, last.id);

    for (const auto& id : last.createdTransactionIDs) {
        if (ledger.transactions.erase(id))
            delta.remove(RecordKind::transaction, id);
    }
    for (const auto& snapshot : last.before) {
        const LedgerTransaction* current = ledger.transaction(snapshot.id);
        if (current && *current == snapshot)
            continue;
        ledger.transactions.set(snapshot.id, snapshot);
        delta.change(RecordKind::transaction, snapshot.id);
    }
    for (const auto& snapshot : last.merchantsBefore) {
        ledger.merchants.set(snapshot.id, snapshot);
        delta.change(RecordKind::merchant, snapshot.id);
    }
    if (!last.createdMerchantIDs.empty()) {
        std::unordered_set<Uuid> inUse;
        for (const auto& transaction : ledger.transactions) {
            if (transaction.merchantID)
                inUse.insert(*transaction.merchantID);
        }
        for (const auto& id : last.createdMerchantIDs) {
            if (!inUse.contains(id) && ledger.merchants.erase(id))
                delta.remove(RecordKind::merchant, id);
        }
    }
    for (const auto& key : last.createdAIFilingKeys) {
        if (ledger.aiFilings.erase(key))
            delta.remove(RecordKind::aiFiling, key);
    }
    for (const auto& snapshot : last.aiFilingsBefore) {
        ledger.aiFilings.set(snapshot.key, snapshot);
        delta.change(RecordKind::aiFiling, snapshot.key);
    }
    for (const auto& id : last.createdRuleIDs) {
        ledger.rules.eraseIf([&](const Rule& rule) { return rule.id == id; });
        ledger.settings.update(
            [&](LedgerSettings& settings) { std::erase(settings.ruleOrder, id); });
        delta.remove(RecordKind::rule, id);
        delta.change(RecordKind::settings, std::string(LedgerDelta::kSettingsID));
    }
    delta.merge(pairTransfers(ledger));
    return delta;
}

}  // namespace copperwick
