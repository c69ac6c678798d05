#include "core/import/import_planner.h"

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "core/matching/key_similarity.h"
#include "core/matching/merchant_keys.h"
#include "core/model/checked.h"
#include "core/model/text.h"

namespace copperwick {

namespace {

// A charge posts on the day it was authorised or up to a week later, and at
// most a day before.
constexpr int64_t kPostsAfterAtMost = 7;
constexpr int64_t kPostsBeforeAtMost = 1;
// Tips: the posted charge may be up to 1.3 times the authorisation.
constexpr int64_t kTipNumerator = 13;
constexpr int64_t kTipDenominator = 10;
constexpr int kPendingKeyScore = 60;
constexpr int64_t kDuplicateDaysApart = 3;
constexpr int kDuplicateKeyScore = 50;

using Kind = RowDisposition::Kind;

bool isPending(TransactionStatus status) {
    return status == TransactionStatus::pending;
}

// Cards of the fuzzy tests: a clash only when both sides name one.
bool cardsMayAgree(const std::optional<std::string>& existing,
                   const std::optional<std::string_view>& row) {
    return !existing || !row || text::equalsIgnoringCase(*existing, *row);
}

uint64_t magnitude(int64_t cents) {
    const auto bits = static_cast<uint64_t>(cents);
    return cents < 0 ? 0 - bits : bits;
}

// The posted amount of a pending charge: the same, or a larger charge out
// within the tip allowance. A charge that shrinks or turns into a refund is
// something else.
bool postsAs(int64_t pending, int64_t posted) {
    if (pending == posted)
        return true;
    if (pending >= 0 || posted >= 0)
        return false;
    const uint64_t authorised = magnitude(pending);
    const uint64_t charged = magnitude(posted);
    // Products of real amounts stay far inside 64 bits.
    return authorised < charged && charged * kTipDenominator <= authorised * kTipNumerator;
}

class Planner {
  public:
    Planner(const FileAnalysis& analysis, const Uuid& accountID, const Ledger& ledger)
        : m_analysis(analysis) {
        // A file reaches a few months or years of an account that may hold
        // twenty: only lines a row could match are kept. The fuzzy passes
        // look from a week before the file's first row to a day after its
        // last, by the line's date; a fingerprint begins with the date of
        // the row it came from, which a person's edit of the line's date
        // leaves as it was, so those are picked by the fingerprint's own.
        const auto first = analysis.firstDate();
        const auto last = analysis.lastDate();
        if (!first || !last)
            return;
        std::unordered_set<std::string> rowDays;
        for (const auto& row : analysis.rows)
            rowDays.insert(row.date.iso());
        const LocalDate from = first->addingDays(-kPostsAfterAtMost);
        const LocalDate to = last->addingDays(kPostsBeforeAtMost);
        for (const auto& transaction : ledger.transactions) {
            if (transaction.accountID != accountID || !transaction.isActive())
                continue;
            if (transaction.date >= from && transaction.date <= to)
                m_existing.push_back(&transaction);
            const std::string_view fingerprint = transaction.fingerprint;
            if (rowDays.contains(std::string(fingerprint.substr(0, fingerprint.find('|')))))
                m_byFingerprint[fingerprint].push_back(&transaction);
            if (transaction.externalID)
                m_byExternalID[*transaction.externalID].push_back(&transaction);
        }
        for (const auto& batch : ledger.batches)
            m_fileHashOfBatch.emplace(batch.id, batch.fileHash);
    }

    std::vector<RowDisposition> run() {
        std::vector<RowDisposition> dispositions(m_analysis.rows.size());
        std::vector<std::size_t> deferred;
        for (std::size_t i = 0; i < m_analysis.rows.size(); ++i) {
            if (auto settled = exactMatch(m_analysis.rows[i]))
                dispositions[i] = *settled;
            else
                deferred.push_back(i);
        }
        // Every scan below walks this order, so that ties are repeatable.
        std::sort(m_existing.begin(), m_existing.end(),
                  [](const LedgerTransaction* a, const LedgerTransaction* b) {
                      if (a->date != b->date)
                          return a->date < b->date;
                      return a->id < b->id;
                  });
        const auto firstDate = m_analysis.firstDate();
        const auto lastDate = m_analysis.lastDate();
        for (const std::size_t i : deferred)
            dispositions[i] = fuzzyMatch(m_analysis.rows[i], firstDate, lastDate);
        return dispositions;
    }

  private:
    bool claim(const LedgerTransaction* transaction) {
        return m_claimed.insert(transaction->id).second;
    }
    bool isClaimed(const LedgerTransaction* transaction) const {
        return m_claimed.contains(transaction->id);
    }

    // The exact pass's card test: a side without a card matches only a line
    // of this very file, imported before through a layout that read no card.
    bool cardsAgreeExactly(const LedgerTransaction& transaction, const ParsedRow& row) const {
        const auto rowCard = row.cardIdentifier();
        if (!transaction.cardIdentifier && !rowCard)
            return true;
        if (transaction.cardIdentifier && rowCard)
            return text::equalsIgnoringCase(*transaction.cardIdentifier, *rowCard);
        if (!transaction.batchID)
            return false;
        const auto it = m_fileHashOfBatch.find(*transaction.batchID);
        return it != m_fileHashOfBatch.end() && it->second == m_analysis.fileHash;
    }

    std::optional<RowDisposition> exactMatch(const ParsedRow& row) {
        if (const auto externalID = row.externalID()) {
            const auto it = m_byExternalID.find(*externalID);
            if (it != m_byExternalID.end()) {
                const LedgerTransaction* only = nullptr;
                int count = 0;
                for (const LedgerTransaction* transaction : it->second) {
                    if (!isClaimed(transaction)) {
                        only = transaction;
                        ++count;
                    }
                }
                if (count == 1) {
                    claim(only);
                    Kind kind = Kind::possibleDuplicate;
                    if (isPending(only->status) && !isPending(row.status))
                        kind = Kind::replacesPending;
                    else if (only->fingerprint == row.fingerprint())
                        kind = Kind::duplicate;
                    return RowDisposition{kind, only->id};
                }
            }
        }
        const auto it = m_byFingerprint.find(row.fingerprint());
        if (it == m_byFingerprint.end())
            return std::nullopt;
        const LedgerTransaction* only = nullptr;
        int count = 0;
        for (const LedgerTransaction* transaction : it->second) {
            if (isClaimed(transaction) || transaction->occurrence != row.occurrence ||
                !cardsAgreeExactly(*transaction, row))
                continue;
            only = transaction;
            ++count;
        }
        if (count != 1)
            return std::nullopt;
        claim(only);
        const bool replaces = isPending(only->status) && !isPending(row.status);
        return RowDisposition{replaces ? Kind::replacesPending : Kind::duplicate, only->id};
    }

    // The existing lines dated within [from, to], in scan order.
    template <typename F>
    void scan(LocalDate from, LocalDate to, F&& visit) const {
        const auto first = std::lower_bound(
            m_existing.begin(), m_existing.end(), from,
            [](const LedgerTransaction* t, LocalDate date) { return t->date < date; });
        for (auto it = first; it != m_existing.end() && (*it)->date <= to; ++it) {
            if (!visit(**it))
                return;
        }
    }

    static const std::string& keyOf(const LedgerTransaction& transaction) {
        return MerchantKeys::held(transaction.rawDescription);
    }

    RowDisposition fuzzyMatch(const ParsedRow& row, std::optional<LocalDate> firstDate,
                              std::optional<LocalDate> lastDate) {
        // Worked out only for a line that gets as far as the likeness test:
        // a file of new dates meets none, and parsing every row's text would
        // cost more than the rest of the plan.
        const std::string* rowKeyHeld = nullptr;
        const auto rowKey = [&]() -> const std::string& {
            if (!rowKeyHeld)
                rowKeyHeld = &MerchantKeys::held(row.description());
            return *rowKeyHeld;
        };
        const auto rowCard = row.cardIdentifier();

        if (!isPending(row.status)) {
            const LedgerTransaction* only = nullptr;
            int count = 0;
            scan(row.date.addingDays(-kPostsAfterAtMost), row.date.addingDays(kPostsBeforeAtMost),
                 [&](const LedgerTransaction& t) {
                     if (!isPending(t.status) || m_claimed.contains(t.id) ||
                         !cardsMayAgree(t.cardIdentifier.optional(), rowCard) ||
                         !postsAs(t.amount, row.amount) ||
                         KeySimilarity::score(keyOf(t), rowKey(), 0) < kPendingKeyScore)
                         return true;
                     only = &t;
                     return ++count < 2;
                 });
            if (count == 1) {
                claim(only);
                return {Kind::replacesPending, only->id};
            }
        }

        if (!firstDate || !lastDate)
            return {};
        const LedgerTransaction* found = nullptr;
        const auto from = std::max(*firstDate, row.date.addingDays(-kDuplicateDaysApart));
        const auto to = std::min(*lastDate, row.date.addingDays(kDuplicateDaysApart));
        scan(from, to, [&](const LedgerTransaction& t) {
            if (m_claimed.contains(t.id) || !cardsMayAgree(t.cardIdentifier.optional(), rowCard) ||
                t.amount != row.amount)
                return true;
            const bool needsLikeness = isPending(t.status) || !isPending(row.status);
            if (needsLikeness && t.date != row.date &&
                KeySimilarity::score(keyOf(t), rowKey(), 0) < kDuplicateKeyScore)
                return true;
            found = &t;
            return false;
        });
        if (!found)
            return {};
        claim(found);
        // A pending line whose charge has since posted under other words
        // mustn't come back in a later file.
        const bool sameCard = found->cardIdentifier.has_value() == rowCard.has_value() &&
                              (!rowCard || *found->cardIdentifier == *rowCard);
        if (isPending(row.status) && !isPending(found->status) && sameCard)
            return {Kind::duplicate, found->id};
        return {Kind::possibleDuplicate, found->id};
    }

    const FileAnalysis& m_analysis;
    std::vector<const LedgerTransaction*> m_existing;
    std::unordered_map<Uuid, std::string> m_fileHashOfBatch;
    // Keyed by views of the ledger's own texts, which outlive the planner:
    // a plan against twenty years of lines would otherwise copy every one.
    std::unordered_map<std::string_view, std::vector<const LedgerTransaction*>> m_byFingerprint;
    std::unordered_map<std::string_view, std::vector<const LedgerTransaction*>> m_byExternalID;
    std::unordered_set<Uuid> m_claimed;
};

int64_t countOf(const std::vector<PlannedRow>& rows, Kind kind) {
    return std::count_if(rows.begin(), rows.end(),
                         [&](const PlannedRow& r) { return r.disposition.kind == kind; });
}

std::vector<const PlannedRow*> rowsOf(const std::vector<PlannedRow>& rows, Kind kind) {
    std::vector<const PlannedRow*> result;
    for (const auto& row : rows) {
        if (row.disposition.kind == kind)
            result.push_back(&row);
    }
    return result;
}

}  // namespace

std::vector<const PlannedRow*> ImportPlan::newRows() const {
    return rowsOf(rows, Kind::newRow);
}
int64_t ImportPlan::newCount() const {
    return countOf(rows, Kind::newRow);
}
int64_t ImportPlan::duplicateCount() const {
    return countOf(rows, Kind::duplicate);
}
int64_t ImportPlan::replacesPendingCount() const {
    return countOf(rows, Kind::replacesPending);
}
std::vector<const PlannedRow*> ImportPlan::possibleDuplicates() const {
    return rowsOf(rows, Kind::possibleDuplicate);
}

ImportPlan::Totals ImportPlan::totals() const {
    Totals totals;
    for (const auto& planned : rows) {
        const auto kind = planned.disposition.kind;
        if (kind != Kind::newRow && kind != Kind::replacesPending)
            continue;
        auto& sum = planned.row.amount > 0 ? totals.moneyIn : totals.moneyOut;
        sum = checked::add(sum, planned.row.amount);
    }
    return totals;
}

std::optional<LocalDate> ImportPlan::firstDate() const {
    std::optional<LocalDate> first;
    for (const auto& planned : rows) {
        if (!first || planned.row.date < *first)
            first = planned.row.date;
    }
    return first;
}

std::optional<LocalDate> ImportPlan::lastDate() const {
    std::optional<LocalDate> last;
    for (const auto& planned : rows) {
        if (!last || planned.row.date > *last)
            last = planned.row.date;
    }
    return last;
}

ImportPlan ImportPlanner::plan(const FileAnalysis& analysis, const Uuid& accountID,
                               const Ledger& ledger) {
    ImportPlan plan{.analysisID = analysis.id,
                    .accountID = accountID,
                    .issues = analysis.issues,
                    .blankLines = analysis.blankLines,
                    .skippedLines = analysis.skippedLines};
    const auto dispositions = Planner(analysis, accountID, ledger).run();
    plan.rows.reserve(analysis.rows.size());
    for (std::size_t i = 0; i < analysis.rows.size(); ++i)
        plan.rows.push_back({analysis.rows[i], dispositions[i]});
    for (const auto& batch : ledger.batches) {
        if (batch.fileHash == analysis.fileHash && batch.accountID == accountID) {
            plan.previousImport = batch;
            break;
        }
    }
    return plan;
}

std::string_view label(RowDisposition::Kind kind) {
    switch (kind) {
        case RowDisposition::Kind::duplicate:
            return "already saved";
        case RowDisposition::Kind::replacesPending:
            return "replaces pending";
        case RowDisposition::Kind::possibleDuplicate:
            return "held for you";
        case RowDisposition::Kind::newRow:
            break;
    }
    return "new";
}

}  // namespace copperwick
