// The notes under every report. The account notes look at each account's
// whole history, not just the period, because the question they answer is
// whether the files behind the period are complete.

#include <algorithm>
#include <unordered_map>

#include "core/model/checked.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/reports/account_history.h"
#include "core/reports/report_engine.h"

namespace copperwick::ReportEngine {

namespace {

// A dismissed note stays away only for the period end it was dismissed for.
std::string partialKey(LocalDate end) {
    return "partial|" + end.iso();
}

int64_t magnitude(int64_t amount) {
    return amount < 0 ? checked::neg(amount) : amount;
}

std::string sharedNoteText(const ReportFilter& filter) {
    if (filter.peopleMode == PeopleMode::cards) {
        return filter.includeShared
                   ? "Everything on the cards these people use is included, plus household cards "
                     "nobody in particular uses."
                   : "Everything on the cards these people use is included. A card used by "
                     "several of them is counted once.";
    }
    return filter.includeShared ? "Shared household spending is included in this selection."
                                : "Shared household spending is excluded from this selection.";
}

}  // namespace

bool usuallyQuiet(const std::set<LocalDate>& dates, int64_t missingDays) {
    if (dates.size() < 2)
        return false;
    const int64_t span = dates.begin()->daysUntil(*dates.rbegin());
    const int64_t averageGap = span / static_cast<int64_t>(dates.size() - 1);
    return 2 * averageGap >= missingDays;
}

std::vector<DataNote> dataNotes(const Ledger& ledger, const ReportFilter& filter,
                                const std::vector<const Account*>& accounts, LocalDate today,
                                int64_t unknownCount, int64_t unknownIn, int64_t unknownOut,
                                int64_t pendingCount, int64_t pendingTotal) {
    detail::AccountHistories histories;
    for (const Account* account : accounts) {
        if (detail::isJudgedByItsFiles(*account))
            histories[account->id];
    }
    if (!histories.empty()) {
        for (const auto& transaction : ledger.transactions) {
            if (!transaction.isActive())
                continue;
            if (auto it = histories.find(transaction.accountID); it != histories.end())
                it->second.add(transaction.date);
        }
    }
    return detail::dataNotes(ledger, filter, accounts, histories, today, unknownCount, unknownIn,
                             unknownOut, pendingCount, pendingTotal);
}

namespace detail {

std::vector<DataNote> dataNotes(const Ledger& ledger, const ReportFilter& filter,
                                const std::vector<const Account*>& accounts,
                                const AccountHistories& histories, LocalDate today,
                                int64_t unknownCount, int64_t unknownIn, int64_t unknownOut,
                                int64_t pendingCount, int64_t pendingTotal) {
    std::vector<DataNote> notes;
    if (unknownCount >= 1) {
        notes.push_back(
            {.id = "unknown",
             .severity = DataNote::Severity::warning,
             .text = std::to_string(unknownCount) + " " +
                     (unknownCount == 1 ? "transaction still needs" : "transactions still need") +
                     " review (" + Money::format(magnitude(unknownOut), "USD") + " out, " +
                     Money::format(unknownIn, "USD") +
                     " in). They aren't in the income or spending totals yet."});
    }
    if (pendingCount >= 1) {
        notes.push_back({.id = "pending",
                         .severity = DataNote::Severity::info,
                         .text = std::to_string(pendingCount) + " " +
                                 (pendingCount == 1 ? "pending charge" : "pending charges") + " (" +
                                 Money::format(pendingTotal, "USD") +
                                 ") will count once they post."});
    }

    const LocalDate start = filter.span.start;
    const LocalDate end = std::min(filter.span.end, today);

    std::vector<const Account*> sorted;
    for (const Account* account : accounts) {
        if (isJudgedByItsFiles(*account))
            sorted.push_back(account);
    }
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](const Account* a, const Account* b) { return a->name < b->name; });

    for (const Account* account : sorted) {
        const auto found = histories.find(account->id);
        if (found == histories.end() || found->second.dates.empty())
            continue;
        const AccountHistory& history = found->second;
        const LocalDate first = history.first;
        const LocalDate last = history.last;
        const std::string uuid = account->id.text();
        const bool overlaps = last >= start && first <= filter.span.end;
        if (overlaps) {
            const LocalDate effectiveLast =
                account->upToDateThrough ? std::max(last, *account->upToDateThrough) : last;
            if (effectiveLast < end.addingDays(-6)) {
                const int64_t missingDays = last.daysUntil(end);
                DataNote note{.id = "late-" + uuid,
                              .acknowledgement = DataNote::UpToDate{account->id, end}};
                const std::set<LocalDate> dates(history.dates.begin(), history.dates.end());
                if (usuallyQuiet(dates, missingDays)) {
                    note.severity = DataNote::Severity::info;
                    note.text = account->name + " has nothing after " + DateText::medium(last) +
                                ". It's only used now and then, so that's probably right.";
                } else {
                    note.severity = DataNote::Severity::warning;
                    note.text = account->name + " has nothing after " + DateText::medium(last) +
                                ". Import a newer file if this report should run to " +
                                DateText::medium(end) + ".";
                }
                notes.push_back(std::move(note));
            }
            if (account->historyStartsOn != first && first > start.addingDays(6)) {
                notes.push_back({.id = "early-" + uuid,
                                 .severity = DataNote::Severity::info,
                                 .text = account->name + " starts on " + DateText::medium(first) +
                                         ", after this period begins.",
                                 .acknowledgement = DataNote::HistoryStart{account->id, first}});
            }
        } else if ((last < start && last >= start.addingDays(-62)) ||
                   (first > filter.span.end && first <= filter.span.end.addingDays(62))) {
            // Data that stops shortly before the period or starts shortly after
            // it means a missing file; further away, the account wasn't in use.
            notes.push_back({.id = "nodata-" + uuid,
                             .severity = DataNote::Severity::warning,
                             .text = account->name +
                                     " has no transactions in this period. Import its file if it "
                                     "should be included.",
                             .acknowledgement = DataNote::RarelyUsed{account->id}});
        }
    }

    std::vector<std::string> otherCurrencies;
    for (const auto& account : ledger.accounts) {
        if (account.currency != filter.currency && !account.isArchived)
            otherCurrencies.push_back(account.name);
    }
    if (!otherCurrencies.empty()) {
        std::sort(otherCurrencies.begin(), otherCurrencies.end());
        std::string names;
        for (const auto& name : otherCurrencies)
            names += (names.empty() ? "" : ", ") + name;
        notes.push_back({.id = "currency",
                         .severity = DataNote::Severity::info,
                         .text = "Accounts in other currencies aren't added in: " + names + "."});
    }

    if (!filter.wholeHousehold) {
        notes.push_back(
            {.id = "shared", .severity = DataNote::Severity::info, .text = sharedNoteText(filter)});
    }

    const std::string key = partialKey(filter.span.end);
    const auto& dismissed = ledger.settings->dismissedNotes;
    if (today < filter.span.end &&
        std::find(dismissed.begin(), dismissed.end(), key) == dismissed.end()) {
        notes.push_back({.id = "partial",
                         .severity = DataNote::Severity::info,
                         .text = "This period isn't over yet (it runs to " +
                                 DateText::medium(filter.span.end) + ").",
                         .acknowledgement = DataNote::Dismiss{key}});
    }
    return notes;
}

}  // namespace detail

}  // namespace copperwick::ReportEngine
