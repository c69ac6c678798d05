#include "core/operations/transaction_correction.h"

#include <unordered_set>

#include "core/model/checked.h"
#include "core/model/ledger_lookup.h"
#include "core/model/money.h"
#include "core/model/text.h"
#include "core/operations/change_history.h"

namespace copperwick {

namespace {

constexpr std::size_t kMostParts = 50;

// Lines that can be changed on their own: a transfer's leg can't, since the
// two amounts must stay equal, nor can a charge the bank hasn't posted.
const LedgerTransaction* changeable(const Ledger& ledger, const Uuid& id) {
    const LedgerTransaction* transaction = ledger.transaction(id);
    if (!transaction || !transaction->isActive() || transaction->transferPairID ||
        transaction->status != TransactionStatus::posted)
        return nullptr;
    return transaction;
}

}  // namespace

LedgerDelta correctTransaction(Ledger& ledger, const Uuid& id, LocalDate date, int64_t amount,
                               const std::string& description, const std::string& reason,
                               Instant now) {
    const LedgerTransaction* current = changeable(ledger, id);
    if (!current)
        throw EntryError(EntryError::Case::unavailable);
    if (!isEnterableAmount(amount) || (current->kind == TransactionKind::income && amount < 0))
        throw EntryError(EntryError::Case::amount);
    const std::string newDescription(text::trimmed(description));
    if (newDescription.empty())
        throw EntryError(EntryError::Case::description);
    const std::string why(text::trimmed(reason));
    if (why.empty())
        throw EntryError(EntryError::Case::reason);
    if (current->date == date && current->amount == amount &&
        current->rawDescription == newDescription)
        return {};

    const Ledger original = ledger;
    LedgerTransaction corrected = *current;
    const TransactionDetails before{corrected.date, corrected.amount, corrected.rawDescription};
    const TransactionDetails after{date, amount, newDescription};
    // Only the first correction: the bank's own version stays through any number.
    if (!corrected.isManualEntry() && !corrected.originalDetails)
        corrected.originalDetails = before;
    corrected.date = date;
    corrected.amount = amount;
    corrected.rawDescription = newDescription;
    // The fingerprint still names what the bank sent, so that importing the
    // file again finds this line and doesn't bring the old version back.
    if (before.amount != amount)
        corrected.splits.reset();  // the parts would no longer add up
    if (!corrected.revisions)
        corrected.revisions.emplace();
    corrected.revisions->push_back(TransactionRevision{Uuid::random(), now, before, after, why});
    corrected.review = ReviewState::confirmed;
    corrected.method = MatchMethod::manual;
    corrected.suggestion.reset();
    corrected.evidence = "Corrected by you: " + why;

    LedgerDelta delta;
    delta.change(RecordKind::transaction, id);
    ledger.transactions.set(id, std::move(corrected));
    delta.merge(record(ledger, changeSetFor(original, delta, "Correct transaction", now)));
    return delta;
}

std::vector<TransactionSplit> splitPartsEntered(const Ledger& ledger, const Uuid& id,
                                                const std::vector<std::string>& typed) {
    const LedgerTransaction* transaction = ledger.transaction(id);
    if (!transaction)
        throw EntryError(EntryError::Case::unavailable);
    std::vector<TransactionSplit> parts;
    for (const auto& item : typed) {
        const auto equals = item.rfind('=');
        const LedgerCategory* category =
            equals == std::string::npos ? nullptr : findCategory(ledger, item.substr(0, equals));
        const auto amount =
            equals == std::string::npos ? std::nullopt : Money::parseCents(item.substr(equals + 1));
        if (!category || !amount) {
            throw EntryError(EntryError::Case::splits,
                             "\u201C" + item +
                                 "\u201D isn't a part: write CATEGORY=AMOUNT with a category of "
                                 "this ledger.");
        }
        const int64_t signedAmount =
            transaction->amount < 0 && *amount > 0 ? checked::neg(*amount) : *amount;
        parts.push_back(TransactionSplit{Uuid::random(), category->id, signedAmount, ""});
    }
    return parts;
}

LedgerDelta splitTransaction(Ledger& ledger, const Uuid& id,
                             const std::vector<TransactionSplit>& parts, Instant now) {
    const LedgerTransaction* current = changeable(ledger, id);
    if (!current || current->kind != TransactionKind::expense)
        throw EntryError(EntryError::Case::unavailable);
    if (!parts.empty()) {
        if (parts.size() == 1 || parts.size() > kMostParts)
            throw EntryError(EntryError::Case::splits);
        std::unordered_set<Uuid> ids;
        int64_t sum = 0;
        for (const auto& part : parts) {
            const LedgerCategory* category = ledger.category(part.categoryID);
            const bool sameSign = (part.amount < 0) == (current->amount < 0);
            const bool fits =
                part.amount != 0 && sameSign &&
                (part.amount < 0 ? part.amount >= current->amount : part.amount <= current->amount);
            if (!ids.insert(part.id).second || !fits || !category ||
                category->group != CategoryGroup::expense)
                throw EntryError(EntryError::Case::splits);
            // At most fifty parts each within the amount: the sum stays in range.
            sum = checked::add(sum, part.amount);
        }
        if (sum != current->amount)
            throw EntryError(EntryError::Case::splits);
    }

    const Ledger original = ledger;
    LedgerTransaction split = *current;
    if (parts.empty())
        split.splits.reset();
    else
        split.splits = parts;
    split.review = ReviewState::confirmed;
    split.method = MatchMethod::manual;
    split.suggestion.reset();
    LedgerDelta delta;
    delta.change(RecordKind::transaction, id);
    ledger.transactions.set(id, std::move(split));
    const auto label = parts.empty() ? "Remove split" : "Split transaction";
    delta.merge(record(ledger, changeSetFor(original, delta, label, now)));
    return delta;
}

}  // namespace copperwick
