#include "core/operations/upsert_account.h"

#include <utility>
#include <vector>

#include "core/model/household_resolution.h"

namespace copperwick {

namespace {

bool ownersDiffer(const Account& old, const Account& updated) {
    return defaultAssignment(old) != defaultAssignment(updated) ||
           old.cardAssignments != updated.cardAssignments;
}

}  // namespace

LedgerDelta upsertAccount(Ledger& ledger, Account account) {
    LedgerDelta delta;
    std::optional<std::size_t> index;
    for (std::size_t i = 0; i < ledger.accounts.size(); ++i) {
        if (ledger.accounts[i].id == account.id) {
            index = i;
            break;
        }
    }

    const bool rederive = index && ownersDiffer(ledger.accounts[*index], account);
    if (index) {
        ledger.accounts.set(*index, account);
    } else {
        ledger.accounts.push_back(account);
    }

    if (rederive) {
        // Collected first: the map must not change while it is walked.
        std::vector<LedgerTransaction> changed;
        for (const auto& transaction : ledger.transactions) {
            if (transaction.accountID != account.id)
                continue;
            const auto inherited =
                defaultAssignment(ledger, account.id, transaction.cardIdentifier);
            if (transaction.inheritedAssignment != inherited) {
                LedgerTransaction updated = transaction;
                updated.inheritedAssignment = inherited;
                changed.push_back(std::move(updated));
            }
        }
        for (auto& transaction : changed) {
            const Uuid id = transaction.id;
            ledger.transactions.set(id, std::move(transaction));
            delta.change(RecordKind::transaction, id);
        }
    }
    delta.change(RecordKind::account, account.id);
    return delta;
}

}  // namespace copperwick
