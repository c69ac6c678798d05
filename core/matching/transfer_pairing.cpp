#include "core/matching/transfer_pairing.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include <fmt/format.h>

#include "core/matching/merchant_text.h"
#include "core/model/chunk_summaries.h"
#include "core/model/date_text.h"
#include "core/model/money.h"

namespace copperwick {

namespace {

constexpr int64_t kMaximumDaysApart = 5;

// Words banks print on moves of money; plain containment, so "PAYMENTS" counts.
constexpr std::array<std::string_view, 14> kTransferMarkers{
    "PAYMENT", "PYMT",      "PMT",   "TRANSFER", "XFER",    "AUTOPAY",    "AUTO PAY",
    "EPAY",    "THANK YOU", "ZELLE", "ACH",      "DEPOSIT", "WITHDRAWAL", "ONLINE BANKING"};

bool looksLikeTransfer(const std::string& rawDescription) {
    const auto normalized = MerchantText::normalize(rawDescription);
    return std::any_of(kTransferMarkers.begin(), kTransferMarkers.end(),
                       [&](std::string_view m) { return normalized.find(m) != std::string::npos; });
}

bool isLinkIntact(const Ledger& ledger, const LedgerTransaction& transaction) {
    if (!transaction.isActive() || transaction.kind != TransactionKind::transfer)
        return false;
    const LedgerTransaction* partner = ledger.transaction(transaction.transferPairID);
    return partner && partner->isActive() && partner->kind == TransactionKind::transfer &&
           partner->transferPairID == transaction.id;
}

bool isCandidate(const LedgerTransaction& transaction) {
    if (!transaction.isActive() || transaction.transferPairID || transaction.amount == 0)
        return false;
    if (transaction.entrySource == TransactionEntrySource::openingBalance)
        return false;
    return transaction.kind == TransactionKind::transfer ||
           (transaction.kind == TransactionKind::unknown &&
            transaction.review != ReviewState::confirmed);
}

// What the pairing needs of a candidate, copied so that the ledger can be
// written while pairs are being applied.
struct Candidate {
    Uuid id;
    Uuid accountID;
    LocalDate date;
    int64_t amount = 0;
    bool isTransfer = false;
    const std::string* description = nullptr;
    mutable std::optional<bool> marked;

    bool hasMarker() const {
        if (!marked)
            marked = isTransfer || looksLikeTransfer(*description);
        return *marked;
    }
};

}  // namespace

void unpair(Ledger& ledger, const Uuid& id, LedgerDelta& delta) {
    const bool found = ledger.transactions.update(id, [](LedgerTransaction& transaction) {
        transaction.transferPairID.reset();
        if (transaction.method == MatchMethod::transferPair &&
            transaction.review != ReviewState::confirmed) {
            transaction.kind = TransactionKind::unknown;
            transaction.method = MatchMethod::none;
            transaction.review = ReviewState::unresolved;
            transaction.evidence = "Its matching transfer was removed.";
        }
    });
    if (found)
        delta.change(RecordKind::transaction, id);
}

namespace {

using Transactions = SharedMap<Uuid, LedgerTransaction>;

Candidate candidateOf(const LedgerTransaction& transaction) {
    return Candidate{.id = transaction.id,
                     .accountID = transaction.accountID,
                     .date = transaction.date,
                     .amount = transaction.amount,
                     .isTransfer = transaction.kind == TransactionKind::transfer,
                     .description = &transaction.rawDescription};
}

// The lines of each chunk that pairing looks at: linked ones, whose links it
// checks, and candidates, already copied as pairing reads them. Most of a
// ledger is neither, and pairing runs after nearly every change, so it reads
// these short lists rather than every record. A ledger of unfiled lines is
// nearly all candidates, and reading each record again for its copy would
// cost more than the pairing.
struct PairingLines {
    std::vector<Candidate> candidates;
    std::vector<const LedgerTransaction*> linked;
};

ChunkSummaries<Transactions, PairingLines>& pairingLines() {
    static ChunkSummaries<Transactions, PairingLines> shared(
        [](const Transactions::ChunkTable& chunk) {
            PairingLines lines;
            for (const auto& [id, record] : chunk) {
                if (record->transferPairID)
                    lines.linked.push_back(record.get());
                else if (isCandidate(*record))
                    lines.candidates.push_back(candidateOf(*record));
            }
            return lines;
        });
    return shared;
}

// One pass over the unpaired candidates, which loses those it pairs. True when
// another pass could pair more: only a debit left with equally near credits
// can, once others are taken. A candidate's record is never written unless it
// pairs, so what a candidate copied, and its text, stay good between passes.
bool pairOnce(Ledger& ledger, std::vector<Candidate>& candidates, LedgerDelta& delta) {
    bool ambiguous = false;
    std::unordered_map<int64_t, std::vector<const Candidate*>> creditsByAmount;
    for (const auto& candidate : candidates) {
        if (candidate.amount > 0)
            creditsByAmount[candidate.amount].push_back(&candidate);
    }
    // Only debits with a credit of their very amount can pair, and in a
    // ledger of unfiled purchases they are few; only they need an order.
    // Every amount is a real cent figure, so the negation can't overflow
    // except at the one value no bank prints; such a debit has no mirror.
    std::vector<const Candidate*> debits;
    for (const auto& candidate : candidates) {
        if (candidate.amount < 0 && candidate.amount != INT64_MIN &&
            creditsByAmount.contains(-candidate.amount))
            debits.push_back(&candidate);
    }
    std::sort(debits.begin(), debits.end(), [](const Candidate* a, const Candidate* b) {
        if (a->date != b->date)
            return a->date < b->date;
        return a->id < b->id;
    });

    std::unordered_set<Uuid> used;
    std::vector<std::pair<Uuid, Uuid>> pairs;  // debit, credit
    for (const Candidate* debit : debits) {
        const auto credits = creditsByAmount.find(-debit->amount);
        int64_t nearest = kMaximumDaysApart + 1;
        const Candidate* chosen = nullptr;
        int atNearest = 0;
        for (const Candidate* credit : credits->second) {
            if (used.contains(credit->id) || credit->accountID == debit->accountID)
                continue;
            const int64_t apart = std::abs(debit->date.daysUntil(credit->date));
            if (apart > kMaximumDaysApart)
                continue;
            if (!debit->hasMarker() && !credit->hasMarker())
                continue;
            if (apart < nearest) {
                nearest = apart;
                chosen = credit;
                atNearest = 1;
            } else if (apart == nearest) {
                ++atNearest;
            }
        }
        // Two credits equally near: which one is the mirror is a guess, so neither.
        if (chosen && atNearest != 1)
            ambiguous = true;
        if (!chosen || atNearest != 1)
            continue;
        used.insert(debit->id);
        used.insert(chosen->id);
        pairs.emplace_back(debit->id, chosen->id);
    }

    const auto link = [&](const Uuid& id, const LedgerTransaction& partner) {
        const Account* account = ledger.account(partner.accountID);
        const auto evidence = fmt::format("Matches {} in {} on {}.",
                                          Money::format(partner.amount, "USD", false, false),
                                          account ? account->name : std::string("another account"),
                                          DateText::shortText(partner.date));
        ledger.transactions.update(id, [&](LedgerTransaction& transaction) {
            transaction.transferPairID = partner.id;
            // A transfer somebody or some rule already filed keeps its own words.
            if (transaction.kind == TransactionKind::transfer &&
                transaction.method != MatchMethod::none)
                return;
            transaction.kind = TransactionKind::transfer;
            transaction.categoryID.reset();
            transaction.method = MatchMethod::transferPair;
            transaction.review = ReviewState::automatic;
            transaction.suggestion.reset();
            transaction.evidence = evidence;
        });
        delta.change(RecordKind::transaction, id);
    };
    for (const auto& [debitID, creditID] : pairs) {
        // Copies: linking one side rewrites the record the other reads.
        const LedgerTransaction debit = *ledger.transaction(debitID);
        const LedgerTransaction credit = *ledger.transaction(creditID);
        link(debitID, credit);
        link(creditID, debit);
    }
    std::erase_if(candidates,
                  [&](const Candidate& candidate) { return used.contains(candidate.id); });
    return !pairs.empty() && ambiguous;
}

}  // namespace

LedgerDelta pairTransfers(Ledger& ledger) {
    LedgerDelta delta;

    // One walk over the ledger finds both the links to check and the lines
    // that could pair.
    std::vector<Uuid> broken;
    std::vector<Candidate> candidates;
    // At most every line; only what is used is ever touched.
    candidates.reserve(ledger.transactions.size());
    pairingLines().each(ledger.transactions, [&](const PairingLines& lines) {
        candidates.insert(candidates.end(), lines.candidates.begin(), lines.candidates.end());
        for (const LedgerTransaction* transaction : lines.linked) {
            if (!isLinkIntact(ledger, *transaction))
                broken.push_back(transaction->id);
        }
    });
    // A link is judged from each side as it stands before any repair: one
    // side's fault always breaks the other's test too, so the order of
    // repairs can't change the outcome.
    std::sort(broken.begin(), broken.end());
    for (const auto& id : broken)
        unpair(ledger, id, delta);
    for (const auto& id : broken) {
        if (const LedgerTransaction* transaction = ledger.transaction(id);
            isCandidate(*transaction))
            candidates.push_back(candidateOf(*transaction));
    }

    // A pair taken leaves fewer credits, and a debit that had two equally
    // near ones may now have exactly one. Passes repeat until nothing more
    // pairs, so that running again right away finds nothing to do.
    while (pairOnce(ledger, candidates, delta)) {
    }
    return delta;
}

void warmTransferPairing(const Ledger& ledger) {
    pairingLines().each(ledger.transactions, [](const PairingLines&) {});
}

}  // namespace copperwick
