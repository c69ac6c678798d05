#include "core/import/import_commit.h"

#include <algorithm>
#include <unordered_set>

#include "core/matching/transfer_pairing.h"
#include "core/model/household_resolution.h"
#include "core/operations/classification.h"

namespace copperwick {

namespace {

using Kind = RowDisposition::Kind;

std::optional<std::string> owned(std::optional<std::string_view> text) {
    return text ? std::optional<std::string>(*text) : std::nullopt;
}

LedgerTransaction makeTransaction(const Ledger& ledger, const Account& account, const Uuid& batchID,
                                  const ParsedRow& row) {
    LedgerTransaction transaction{.id = Uuid::timeOrdered(),
                                  .accountID = account.id,
                                  .batchID = batchID,
                                  .sourceLine = row.line,
                                  .date = row.date,
                                  .postedDate = row.postedDate,
                                  .amount = row.amount,
                                  .currency = account.currency,
                                  .rawDescription = std::string(row.description()),
                                  .bankMerchant = owned(row.bankMerchant()),
                                  .bankCategory = owned(row.bankCategory()),
                                  .checkNumber = owned(row.checkNumber()),
                                  .status = row.status,
                                  .fingerprint = row.fingerprint(),
                                  .occurrence = row.occurrence};
    transaction.cardIdentifier = owned(row.cardIdentifier());
    transaction.externalID = owned(row.externalID());
    transaction.inheritedAssignment =
        defaultAssignment(ledger, account.id, transaction.cardIdentifier.optional());
    return transaction;
}

// The posted line takes the pending charge's place: who it belongs to
// always, the person's own filing when they had confirmed one.
void replacePending(Ledger& ledger, LedgerTransaction& posted, const Uuid& pendingID,
                    bool rowHasCard, LedgerDelta& delta) {
    const LedgerTransaction* found = ledger.transaction(pendingID);
    if (!found)
        return;
    const LedgerTransaction pending = *found;
    posted.spendingAssignment = pending.spendingAssignment;
    if (pending.cardIdentifier || !rowHasCard) {
        if (pending.inheritedAssignment)
            posted.inheritedAssignment = pending.inheritedAssignment;
        if (!rowHasCard)
            posted.cardIdentifier = pending.cardIdentifier;
    }
    ledger.transactions.update(pendingID,
                               [&](LedgerTransaction& t) { t.supersededBy = posted.id; });
    delta.change(RecordKind::transaction, pendingID);
    if (pending.review == ReviewState::confirmed) {
        posted.kind = pending.kind;
        posted.categoryID = pending.categoryID;
        posted.merchantID = pending.merchantID;
        posted.method = pending.method;
        posted.evidence = pending.evidence;
        posted.note = pending.note;
        posted.review = ReviewState::confirmed;
    }
    if (pending.transferPairID)
        unpair(ledger, *pending.transferPairID, delta);
}

}  // namespace

int64_t rowsToSave(const ImportPlan& plan, const std::set<int64_t>& forcedLines) {
    int64_t count = 0;
    for (const auto& planned : plan.rows) {
        switch (planned.disposition.kind) {
            case Kind::newRow:
            case Kind::replacesPending:
                ++count;
                break;
            case Kind::possibleDuplicate:
                count += forcedLines.contains(planned.row.line) ? 1 : 0;
                break;
            case Kind::duplicate:
                break;
        }
    }
    return count;
}

ImportCommitResult commitImport(Ledger& ledger, const std::vector<ImportCommitItem>& items,
                                Instant importedAt) {
    ImportCommitResult result;
    LedgerDelta& delta = result.delta;
    std::vector<std::shared_ptr<LedgerTransaction>> created;
    for (const auto& item : items) {
        const FileAnalysis& analysis = item.analysis;
        const ImportPlan& plan = item.plan;
        const Account* found = ledger.account(plan.accountID);
        if (!found || !analysis.profile || found->type == AccountType::cash ||
            (analysis.currencyHint && *analysis.currencyHint != found->currency) ||
            rowsToSave(plan, item.forcedLines) == 0)
            continue;
        const Account account = *found;

        ImportBatch batch{.id = Uuid::random(),
                          .fileName = analysis.fileName,
                          .fileHash = analysis.fileHash,
                          .accountID = account.id,
                          .profileID = analysis.profile->id,
                          .importedAt = importedAt,
                          .firstDate = plan.firstDate(),
                          .lastDate = plan.lastDate()};
        ImportCounts& counts = batch.counts;
        const bool keepText = ledger.settings->keepSourceText;
        for (const auto& planned : plan.rows) {
            const auto& disposition = planned.disposition;
            switch (disposition.kind) {
                case Kind::duplicate:
                    ++counts.duplicates;
                    continue;
                case Kind::possibleDuplicate:
                    if (!item.forcedLines.contains(planned.row.line)) {
                        ++counts.heldDuplicates;
                        continue;
                    }
                    ++counts.forcedDuplicates;
                    break;
                case Kind::newRow:
                    ++counts.imported;
                    break;
                case Kind::replacesPending:
                    ++counts.replacedPending;
                    break;
            }
            auto transaction = std::make_shared<LedgerTransaction>(
                makeTransaction(ledger, account, batch.id, planned.row));
            if (disposition.kind == Kind::replacesPending && disposition.match) {
                replacePending(ledger, *transaction, *disposition.match,
                               planned.row.cardIdentifier().has_value(), delta);
            }
            created.push_back(std::move(transaction));
            if (keepText) {
                delta.sourceLines.push_back(
                    {batch.id, planned.row.line, std::string(planned.row.rawText())});
            }
        }
        if (keepText) {
            for (const auto& issue : analysis.issues)
                delta.sourceLines.push_back({batch.id, issue.line, issue.rawText});
        }
        counts.totalRows =
            static_cast<int64_t>(plan.rows.size()) + static_cast<int64_t>(analysis.issues.size());
        counts.errors = static_cast<int64_t>(analysis.issues.size());
        counts.blank = analysis.blankLines;
        ledger.batches.push_back(batch);
        delta.change(RecordKind::batch, batch.id);
        result.batches.push_back(batch);

        // The next file of this layout then goes to this account by itself.
        if (account.profileID != analysis.profile->id) {
            for (std::size_t i = 0; i < ledger.accounts.size(); ++i) {
                if (ledger.accounts[i].id == account.id) {
                    ledger.accounts.update(i,
                                           [&](Account& a) { a.profileID = analysis.profile->id; });
                    delta.change(RecordKind::account, account.id);
                    break;
                }
            }
        }
    }
    delta.merge(addMatched(ledger, std::move(created)));
    return result;
}

LedgerDelta undoImport(Ledger& ledger, const Uuid& batchID) {
    LedgerDelta delta;
    std::vector<Uuid> removedOrder;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.batchID == batchID)
            removedOrder.push_back(transaction.id);
    }
    // A cash wallet's side of one of these lines was only ever its mirror.
    const std::size_t imported = removedOrder.size();
    for (std::size_t i = 0; i < imported; ++i) {
        const LedgerTransaction* transaction = ledger.transaction(removedOrder[i]);
        const LedgerTransaction* partner = ledger.transaction(transaction->transferPairID);
        if (!partner || !partner->entrySource)
            continue;
        const Account* wallet = ledger.account(partner->accountID);
        if (wallet && wallet->type == AccountType::cash)
            removedOrder.push_back(partner->id);
    }
    std::sort(removedOrder.begin(), removedOrder.end());
    removedOrder.erase(std::unique(removedOrder.begin(), removedOrder.end()), removedOrder.end());
    const std::unordered_set<Uuid> removed(removedOrder.begin(), removedOrder.end());

    for (const auto& id : removedOrder) {
        const LedgerTransaction* transaction = ledger.transaction(id);
        if (transaction->transferPairID && !removed.contains(*transaction->transferPairID))
            unpair(ledger, *transaction->transferPairID, delta);
        ledger.transactions.erase(id);
        delta.remove(RecordKind::transaction, id);
    }

    std::vector<Uuid> restored;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.supersededBy && removed.contains(*transaction.supersededBy))
            restored.push_back(transaction.id);
    }
    for (const auto& id : restored) {
        ledger.transactions.update(id, [](LedgerTransaction& t) { t.supersededBy.reset(); });
        delta.change(RecordKind::transaction, id);
    }

    ledger.batches.eraseIf([&](const ImportBatch& batch) { return batch.id == batchID; });
    delta.remove(RecordKind::batch, batchID);
    delta.deletedSourceBatches.push_back(batchID);

    // An undo step that speaks of vanished transactions could never be applied.
    const auto namesRemoved = [&](const ChangeSet& change) {
        return std::any_of(change.before.begin(), change.before.end(),
                           [&](const LedgerTransaction& t) { return removed.contains(t.id); }) ||
               std::any_of(change.createdTransactionIDs.begin(), change.createdTransactionIDs.end(),
                           [&](const Uuid& id) { return removed.contains(id); });
    };
    for (const auto& change : ledger.changes) {
        if (namesRemoved(change))
            delta.remove(RecordKind::change, change.id);
    }
    ledger.changes.eraseIf(namesRemoved);

    if (!restored.empty())
        delta.merge(pairTransfers(ledger));
    return delta;
}

}  // namespace copperwick
