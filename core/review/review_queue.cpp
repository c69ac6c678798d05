#include "core/review/review_queue.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>
#include <unordered_map>

#include "core/matching/merchant_keys.h"
#include "core/matching/merchant_text.h"
#include "core/model/checked.h"

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

ReviewGroup makeGroup(std::string id, std::vector<const LedgerTransaction*>& lines,
                      const Ledger& ledger) {
    std::sort(lines.begin(), lines.end(), earlier);
    const LedgerTransaction& oldest = *lines.front();
    ReviewGroup group;
    group.id = std::move(id);
    group.key = MerchantKeys::of(oldest.rawDescription);
    group.example = lines.back()->rawDescription;

    std::vector<Suggestion> suggestions;
    bool everyLineSuggests = true;
    std::set<Uuid> merchantIDs;
    std::set<std::string> accountNames;
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
        if (const Account* account = ledger.account(line->accountID))
            accountNames.insert(account->name);
        group.transactionIDs.push_back(line->id);
        group.total = checked::add(group.total, line->amount);
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

}  // namespace

namespace ReviewQueue {

std::vector<ReviewGroup> groups(const Ledger& ledger) {
    std::vector<const LedgerTransaction*> waiting;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.needsReview())
            waiting.push_back(&transaction);
    }
    return makeGroups(waiting, ledger);
}

std::vector<ReviewGroup> makeGroups(const std::vector<const LedgerTransaction*>& transactions,
                                    const Ledger& ledger) {
    std::vector<const std::string*> descriptions;
    descriptions.reserve(transactions.size());
    for (const LedgerTransaction* transaction : transactions)
        descriptions.push_back(&transaction->rawDescription);
    std::vector<std::string> ids(transactions.size());
    MerchantKeys::visit(descriptions, [&](std::size_t i, std::string_view key) {
        ids[i] = (transactions[i]->amount > 0 ? "in|" : "out|") + std::string(key);
    });

    std::unordered_map<std::string, std::vector<const LedgerTransaction*>> byText;
    for (std::size_t i = 0; i < transactions.size(); ++i)
        byText[ids[i]].push_back(transactions[i]);

    std::vector<ReviewGroup> result;
    result.reserve(byText.size());
    for (auto& [id, lines] : byText)
        result.push_back(makeGroup(id, lines, ledger));
    std::sort(result.begin(), result.end(), [](const ReviewGroup& a, const ReviewGroup& b) {
        if (a.transactionIDs.size() != b.transactionIDs.size())
            return a.transactionIDs.size() > b.transactionIDs.size();
        const int64_t aTotal = magnitude(a.total), bTotal = magnitude(b.total);
        if (aTotal != bTotal)
            return aTotal > bTotal;
        return a.id < b.id;
    });
    return result;
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
    return std::to_string(lines) + " transaction" + (lines == 1 ? "" : "s") + " in " +
           std::to_string(groups.size()) + " group" + (groups.size() == 1 ? "" : "s") + " need" +
           (lines == 1 ? "s" : "") + " you.";
}

}  // namespace ReviewQueue

}  // namespace copperwick
