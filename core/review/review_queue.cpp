#include "core/review/review_queue.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <string_view>
#include <unordered_map>

#include "core/matching/merchant_keys.h"
#include "core/matching/merchant_text.h"
#include "core/model/checked.h"
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

// Every waiting line of the ledger.
std::vector<const LedgerTransaction*> waitingLines(const Ledger& ledger) {
    std::vector<const LedgerTransaction*> waiting;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.needsReview())
            waiting.push_back(&transaction);
    }
    return waiting;
}

// The lines of each group by the group's id, in the order the groups were met.
std::vector<std::pair<std::string, std::vector<const LedgerTransaction*>>> partition(
    const std::vector<const LedgerTransaction*>& transactions) {
    // Far fewer texts than lines: each distinct text is keyed once, and the
    // lines of a text go to its group by number.
    std::unordered_map<std::string_view, std::size_t> textNumbers;
    std::vector<const std::string*> texts;
    std::vector<std::size_t> textOf(transactions.size());
    for (std::size_t i = 0; i < transactions.size(); ++i) {
        const std::string& text = transactions[i]->rawDescription;
        const auto [it, fresh] = textNumbers.try_emplace(text, texts.size());
        if (fresh)
            texts.push_back(&text);
        textOf[i] = it->second;
    }
    std::vector<std::string> keys(texts.size());
    MerchantKeys::visit(texts, [&](std::size_t i, std::string_view key) { keys[i] = key; });

    constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    std::vector<std::array<std::size_t, 2>> groupOf(texts.size(), {kNone, kNone});
    std::unordered_map<std::string, std::size_t> groupNumbers;
    std::vector<std::pair<std::string, std::vector<const LedgerTransaction*>>> byID;
    for (std::size_t i = 0; i < transactions.size(); ++i) {
        const bool isIn = transactions[i]->amount > 0;
        std::size_t& group = groupOf[textOf[i]][isIn ? 1 : 0];
        if (group == kNone) {
            std::string id = (isIn ? "in|" : "out|") + keys[textOf[i]];
            const auto [it, fresh] = groupNumbers.try_emplace(id, byID.size());
            if (fresh)
                byID.emplace_back(std::move(id), std::vector<const LedgerTransaction*>{});
            group = it->second;
        }
        byID[group].second.push_back(transactions[i]);
    }
    return byID;
}

}  // namespace

namespace ReviewQueue {

std::vector<ReviewGroup> groups(const Ledger& ledger) {
    return makeGroups(waitingLines(ledger), ledger);
}

std::vector<ReviewGroup> makeGroups(const std::vector<const LedgerTransaction*>& transactions,
                                    const Ledger& ledger) {
    std::vector<ReviewGroup> result;
    auto byID = partition(transactions);
    result.reserve(byID.size());
    for (auto& [id, lines] : byID)
        result.push_back(makeGroup(std::move(id), lines, ledger));
    std::sort(result.begin(), result.end(), listedBefore);
    return result;
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

    // Which of the keys that match each distinct text has, worked out once per
    // text. Keys that differ only in case are groups of their own, and the one
    // the queue lists first is the one meant.
    constexpr std::size_t kNone = static_cast<std::size_t>(-1);
    std::unordered_map<std::string_view, std::size_t> keyNumbers;
    std::vector<std::pair<std::string, std::vector<const LedgerTransaction*>>> matching;
    for (const auto& transaction : ledger.transactions) {
        if (!transaction.needsReview() || (transaction.amount > 0) != isIn)
            continue;
        auto [it, fresh] = keyNumbers.try_emplace(transaction.rawDescription, kNone);
        if (fresh) {
            std::string own = MerchantKeys::of(it->first);
            if (text::equalsIgnoringCase(own, key)) {
                const auto same =
                    std::find_if(matching.begin(), matching.end(),
                                 [&](const auto& entry) { return entry.first == own; });
                it->second = static_cast<std::size_t>(same - matching.begin());
                if (same == matching.end())
                    matching.emplace_back(std::move(own), std::vector<const LedgerTransaction*>{});
            }
        }
        if (it->second != kNone)
            matching[it->second].second.push_back(&transaction);
    }
    std::vector<ReviewGroup> found;
    for (auto& [own, lines] : matching)
        found.push_back(makeGroup((isIn ? "in|" : "out|") + own, lines, ledger));
    if (found.empty())
        return std::nullopt;
    return *std::min_element(found.begin(), found.end(), listedBefore);
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
