#include "core/operations/household_assignment.h"

#include <utility>

#include "core/operations/change_history.h"

namespace copperwick {

LedgerDelta assignSpending(Ledger& ledger, const std::optional<SpendingAssignment>& assignment,
                           const std::vector<Uuid>& ids, Instant now) {
    const Ledger original = ledger;
    LedgerDelta delta;
    for (const auto& id : ids) {
        const LedgerTransaction* current = ledger.transaction(id);
        if (!current || current->spendingAssignment == assignment)
            continue;
        ledger.transactions.update(id, [&](LedgerTransaction& transaction) {
            transaction.spendingAssignment = assignment;
        });
        delta.change(RecordKind::transaction, id);
    }
    if (delta.isEmpty())
        return delta;
    delta.merge(record(ledger, changeSetFor(original, delta, "Assign household spending", now)));
    return delta;
}

LedgerDelta applySpendingDefault(Ledger& ledger, const Uuid& accountID,
                                 const std::optional<std::string>& cardIdentifier, Instant now) {
    // Collected first: writing a record while walking the table would clone
    // the chunk under the walk.
    std::vector<std::pair<Uuid, SpendingAssignment>> updates;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.accountID != accountID)
            continue;
        if (cardIdentifier && transaction.cardIdentifier != cardIdentifier)
            continue;
        if (transaction.spendingAssignment)
            continue;
        const auto fallback =
            defaultAssignment(ledger, accountID, transaction.cardIdentifier.optional());
        if (transaction.inheritedAssignment == fallback)
            continue;
        updates.emplace_back(transaction.id, fallback);
    }
    if (updates.empty())
        return {};

    const Ledger original = ledger;
    LedgerDelta delta;
    for (const auto& update : updates) {
        ledger.transactions.update(update.first, [&](LedgerTransaction& transaction) {
            transaction.inheritedAssignment = update.second;
        });
        delta.change(RecordKind::transaction, update.first);
    }
    delta.merge(record(ledger, changeSetFor(original, delta, "Apply account assignment", now)));
    return delta;
}

}  // namespace copperwick
