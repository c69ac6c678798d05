#pragma once

// One line of money, imported from a bank file or entered by hand: the heart
// of the data file. The bank's own words (`rawDescription`, and the first
// version in `originalDetails` after a correction) are never overwritten by
// filing; voided and superseded transactions are kept but count nowhere.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/model/heap_optional.h"
#include "core/model/ledger_enums.h"
#include "core/model/local_date.h"
#include "core/model/spending_assignment.h"
#include "core/model/transaction_entry.h"
#include "core/model/uuid.h"

namespace copperwick {

// A filing proposed by matching or the model, waiting for a person's approval.
struct Suggestion {
    std::optional<std::string> merchantName;
    std::optional<Uuid> categoryID;
    TransactionKind kind = TransactionKind::unknown;
    MatchMethod source = MatchMethod::none;
    std::string reason;

    friend bool operator==(const Suggestion&, const Suggestion&) = default;
};

// Build one with designated initialisers from what the file gave (id through
// occurrence); filing fields start unfiled: kind unknown, method none, review
// unresolved, not voided, empty note, every optional absent.
struct LedgerTransaction {
    Uuid id;
    Uuid accountID;
    std::optional<Uuid> batchID;
    int64_t sourceLine = 0;
    LocalDate date;
    std::optional<LocalDate> postedDate;
    int64_t amount = 0;  // cents; above zero is money in
    std::string currency = "USD";
    std::string rawDescription;
    HeapOptional<std::string> bankMerchant;
    HeapOptional<std::string> bankCategory;
    HeapOptional<std::string> checkNumber;
    TransactionStatus status = TransactionStatus::posted;
    std::string fingerprint;
    int64_t occurrence = 1;

    TransactionKind kind = TransactionKind::unknown;
    std::optional<Uuid> categoryID;
    std::optional<Uuid> merchantID;
    MatchMethod method = MatchMethod::none;
    std::string evidence;
    ReviewState review = ReviewState::unresolved;
    HeapOptional<Suggestion> suggestion;
    std::optional<Uuid> transferPairID;
    std::optional<Uuid> supersededBy;
    bool voided = false;
    std::string note;
    std::optional<SpendingAssignment> spendingAssignment;
    std::optional<SpendingAssignment> inheritedAssignment;
    HeapOptional<std::string> cardIdentifier;
    std::optional<TransactionEntrySource> entrySource;
    HeapOptional<TransactionDetails> originalDetails;
    HeapOptional<std::vector<TransactionRevision>> revisions;
    HeapOptional<std::vector<TransactionSplit>> splits;
    HeapOptional<std::string> externalID;

    // Counts in figures: neither voided nor replaced by its posted version.
    [[nodiscard]] bool isActive() const { return !supersededBy && !voided; }
    [[nodiscard]] bool needsReview() const { return isActive() && isWaiting(review); }
    // Filed by the local model and not yet seen by a person.
    [[nodiscard]] bool isAIFiledUnchecked() const {
        return isActive() && method == MatchMethod::ai && review == ReviewState::automatic;
    }
    [[nodiscard]] bool isManualEntry() const { return entrySource.has_value(); }
    [[nodiscard]] bool isInflow() const { return amount > 0; }

    friend bool operator==(const LedgerTransaction&, const LedgerTransaction&) = default;
};

}  // namespace copperwick
