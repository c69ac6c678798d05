#include "core/review/review_queue.h"

#include <algorithm>
#include <array>
#include <set>
#include <string_view>
#include <unordered_map>

#include "core/matching/merchant_keys.h"
#include "core/matching/merchant_text.h"
#include "core/model/checked.h"
#include "core/model/chunk_summaries.h"
#include "core/model/text.h"

namespace copperwick {

namespace {

bool earlier(const LedgerTransaction* a, const LedgerTransaction* b) {
    if (a->date != b->date)
        return a->date < b->date;
    return a->id < b->id;
}

int64_t magnitude(int64_t cents) {
    return cents < 0 ? checked::neg(cents) : cents;
}

// The queue's order: most lines first, then most money.
bool listedBefore(const ReviewGroup& a, const ReviewGroup& b) {
    if (a.transactionIDs.size() != b.transactionIDs.size())
        return a.transactionIDs.size() > b.transactionIDs.size();
    const int64_t aTotal = magnitude(a.total), bTotal = magnitude(b.total);
    if (aTotal != bTotal)
        return aTotal > bTotal;
    return a.id < b.id;
}

// A line that waits, with what grouping reads of it.
struct WaitingLine {
    const LedgerTransaction* record;
    const std::string* key;  // as the key cache holds it: one address per key
    bool isIn;
};

WaitingLine waitingLine(const LedgerTransaction& transaction) {
    return WaitingLine{.record = &transaction,
                       .key = &MerchantKeys::held(transaction.rawDescription),
                       .isIn = transaction.amount > 0};
}

ReviewGroup makeGroup(std::string id, const std::string& key,
                      std::vector<const LedgerTransaction*>& lines, const Ledger& ledger) {
    std::sort(lines.begin(), lines.end(), earlier);
    const LedgerTransaction& oldest = *lines.front();
    ReviewGroup group;
    group.id = std::move(id);
    group.key = key;
    group.example = lines.back()->rawDescription;

    std::vector<Suggestion> suggestions;
    bool everyLineSuggests = true;
    std::set<Uuid> merchantIDs;
    // Names are looked up per account, not per line: a group can hold
    // thousands of lines of one or two accounts.
    std::set<Uuid> accountIDs;
    for (const LedgerTransaction* line : lines) {
        if (line->suggestion) {
            if (std::find(suggestions.begin(), suggestions.end(), *line->suggestion) ==
                suggestions.end())
                suggestions.push_back(*line->suggestion);
        } else {
            everyLineSuggests = false;
        }
        if (line->merchantID)
            merchantIDs.insert(*line->merchantID);
        accountIDs.insert(line->accountID);
        group.transactionIDs.push_back(line->id);
        group.total = checked::add(group.total, line->amount);
    }
    std::set<std::string> accountNames;
    for (const Uuid& id : accountIDs) {
        if (const Account* account = ledger.account(id))
            accountNames.insert(account->name);
    }
    group.accountNames.assign(accountNames.begin(), accountNames.end());
    if (merchantIDs.size() == 1)
        group.merchantID = *merchantIDs.begin();
    const Merchant* merchant = ledger.merchant(group.merchantID);
    group.displayName = merchant ? merchant->name : MerchantText::titleCase(group.key);
    if (everyLineSuggests && suggestions.size() == 1)
        group.suggestion = suggestions.front();
    group.firstDate = oldest.date;
    group.lastDate = lines.back()->date;
    group.isMoneyIn = oldest.amount > 0;
    return group;
}

using Transactions = SharedMap<Uuid, LedgerTransaction>;

// The waiting lines of each chunk. Nearly every command and every screen
// refresh asks what waits; in a large ledger most lines don't, and those
// that do are found, and their texts keyed, once per chunk write.
ChunkSummaries<Transactions, std::vector<WaitingLine>>& waitingSummaries() {
    static ChunkSummaries<Transactions, std::vector<WaitingLine>> shared(
        [](const Transactions::ChunkTable& chunk) {
            std::vector<WaitingLine> lines;
            for (const auto& [id, record] : chunk) {
                if (record->needsReview())
                    lines.push_back(waitingLine(*record));
            }
            return lines;
        });
    return shared;
}

// Every waiting line of the ledger.
std::vector<WaitingLine> waitingLines(const Ledger& ledger) {
    std::vector<WaitingLine> waiting;
    waitingSummaries().each(ledger.transactions, [&](const std::vector<WaitingLine>& chunk) {
        waiting.insert(waiting.end(), chunk.begin(), chunk.end());
    });
    return waiting;
}

struct Partition {
    const std::string* key;
    bool isIn;
    std::vector<const LedgerTransaction*> lines;
};

// The lines of each group, in the order the groups were met.
std::vector<Partition> partition(const std::vector<WaitingLine>& lines) {
    constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    std::unordered_map<const std::string*, std::array<std::size_t, 2>> groupOf;
    std::vector<Partition> groups;
    for (const WaitingLine& line : lines) {
        auto [it, fresh] = groupOf.try_emplace(line.key, std::array{kNone, kNone});
        std::size_t& group = it->second[line.isIn ? 1 : 0];
        if (group == kNone) {
            group = groups.size();
            groups.push_back(Partition{.key = line.key, .isIn = line.isIn, .lines = {}});
        }
        groups[group].lines.push_back(line.record);
    }
    return groups;
}

std::vector<ReviewGroup> groupsOf(const std::vector<WaitingLine>& lines, const Ledger& ledger) {
    std::vector<ReviewGroup> result;
    auto byKey = partition(lines);
    result.reserve(byKey.size());
    for (auto& group : byKey)
        result.push_back(
            makeGroup((group.isIn ? "in|" : "out|") + *group.key, *group.key, group.lines, ledger));
    std::sort(result.begin(), result.end(), listedBefore);
    return result;
}

}  // namespace

namespace ReviewQueue {

std::vector<ReviewGroup> groups(const Ledger& ledger) {
    return groupsOf(waitingLines(ledger), ledger);
}

std::vector<ReviewGroup> makeGroups(const std::vector<const LedgerTransaction*>& transactions,
                                    const Ledger& ledger) {
    std::vector<WaitingLine> lines;
    lines.reserve(transactions.size());
    for (const LedgerTransaction* transaction : transactions)
        lines.push_back(waitingLine(*transaction));
    return groupsOf(lines, ledger);
}

Waiting waiting(const Ledger& ledger) {
    const auto lines = waitingLines(ledger);
    return Waiting{.lines = lines.size(), .groups = partition(lines).size()};
}

std::optional<ReviewGroup> group(const Ledger& ledger, std::string_view id) {
    const auto bar = id.find('|');
    if (bar == std::string_view::npos)
        return std::nullopt;
    const std::string_view direction = id.substr(0, bar);
    const bool isIn = text::equalsIgnoringCase(direction, "in");
    if (!isIn && !text::equalsIgnoringCase(direction, "out"))
        return std::nullopt;
    const std::string_view key = id.substr(bar + 1);

    // Whether each distinct key matches is worked out once. Keys that differ
    // only in case are groups of their own, and the one the queue lists first
    // is the one meant.
    std::unordered_map<const std::string*, bool> matches;
    std::vector<WaitingLine> lines;
    for (const WaitingLine& line : waitingLines(ledger)) {
        if (line.isIn != isIn)
            continue;
        auto [it, fresh] = matches.try_emplace(line.key, false);
        if (fresh)
            it->second = text::equalsIgnoringCase(*line.key, key);
        if (it->second)
            lines.push_back(line);
    }
    auto found = groupsOf(lines, ledger);
    if (found.empty())
        return std::nullopt;
    return std::move(found.front());
}

std::vector<LedgerTransaction> stalePending(const Ledger& ledger, LocalDate today) {
    // The newest date each account's files reach, per batch, so a line can
    // leave out the batch that brought it.
    std::unordered_map<Uuid, std::vector<std::pair<Uuid, LocalDate>>> coverage;
    for (const auto& batch : ledger.batches) {
        if (batch.lastDate)
            coverage[batch.accountID].emplace_back(batch.id, *batch.lastDate);
    }
    std::vector<const LedgerTransaction*> stale;
    for (const auto& transaction : ledger.transactions) {
        if (!transaction.isActive() || transaction.status != TransactionStatus::pending)
            continue;
        bool isStale = transaction.date.daysUntil(today) > 14;
        if (!isStale) {
            const auto found = coverage.find(transaction.accountID);
            if (found != coverage.end()) {
                isStale =
                    std::any_of(found->second.begin(), found->second.end(), [&](const auto& batch) {
                        return batch.first != transaction.batchID &&
                               transaction.date.daysUntil(batch.second) > 5;
                    });
            }
        }
        if (isStale)
            stale.push_back(&transaction);
    }
    std::sort(stale.begin(), stale.end(), earlier);
    std::vector<LedgerTransaction> result;
    result.reserve(stale.size());
    for (const LedgerTransaction* transaction : stale)
        result.push_back(*transaction);
    return result;
}

std::string waitingText(const std::vector<ReviewGroup>& groups) {
    std::size_t lines = 0;
    for (const auto& group : groups)
        lines += group.transactionIDs.size();
    return waitingText(Waiting{.lines = lines, .groups = groups.size()});
}

std::string waitingText(Waiting waiting) {
    const auto [lines, groups] = waiting;
    return std::to_string(lines) + " transaction" + (lines == 1 ? "" : "s") + " in " +
           std::to_string(groups) + " group" + (groups == 1 ? "" : "s") + " need" +
           (lines == 1 ? "s" : "") + " you.";
}

}  // namespace ReviewQueue

}  // namespace copperwick
