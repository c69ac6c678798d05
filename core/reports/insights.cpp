#include "core/reports/insights.h"

#include <algorithm>
#include <unordered_map>

#include "core/model/checked.h"
#include "core/model/money.h"
#include "core/reports/report_engine.h"
#include "core/reports/transaction_walk.h"

namespace copperwick {

namespace {

struct CadenceRule {
    int64_t shortestGap;
    int64_t longestGap;
    int64_t activeWithinDays;
    int64_t perYear;
};

CadenceRule rule(Cadence cadence) {
    switch (cadence) {
        case Cadence::weekly:
            return {6, 8, 13, 52};
        case Cadence::monthly:
            return {26, 35, 48, 12};
        case Cadence::yearly:
            return {350, 380, 550, 1};
    }
    return {0, 0, 0, 0};
}

int64_t magnitude(const LedgerTransaction& transaction) {
    return checked::neg(transaction.amount);
}

}  // namespace

std::string_view label(Cadence cadence) {
    switch (cadence) {
        case Cadence::weekly:
            return "Weekly";
        case Cadence::monthly:
            return "Monthly";
        case Cadence::yearly:
            return "Yearly";
    }
    return "";
}

int64_t RecurringCharge::yearlyCost() const {
    return checked::mul(typicalAmount, rule(cadence).perYear);
}

RecurringTotal RecurringTotal::of(const std::vector<RecurringCharge>& charges) {
    int64_t yearly = 0;
    RecurringTotal total;
    for (const auto& charge : charges) {
        if (!charge.isActive)
            continue;
        yearly = checked::add(yearly, charge.yearlyCost());
        ++total.activeCount;
    }
    total.monthly = detail::roundedQuotient(yearly, 12);
    return total;
}

namespace Insights {

int64_t median(std::vector<int64_t> values) {
    if (values.empty())
        return 0;
    // Partial ordering is enough: unusual() takes a median for every charge.
    const std::size_t middle = values.size() / 2;
    const auto at = values.begin() + static_cast<std::ptrdiff_t>(middle);
    std::nth_element(values.begin(), at, values.end());
    if (values.size() % 2 == 1)
        return *at;
    const int64_t below = *std::max_element(values.begin(), at);
    return checked::add(below, *at) / 2;
}

std::optional<Cadence> cadenceFor(const std::vector<int64_t>& gaps) {
    if (gaps.empty())
        return std::nullopt;
    const auto n = static_cast<int64_t>(gaps.size());
    const int64_t needed = n <= 2 ? 2 : std::max<int64_t>(2, (2 * n + 2) / 3);
    for (const Cadence cadence : {Cadence::monthly, Cadence::weekly, Cadence::yearly}) {
        const CadenceRule band = rule(cadence);
        const auto inBand = std::count_if(gaps.begin(), gaps.end(), [&](int64_t gap) {
            return band.shortestGap <= gap && gap <= band.longestGap;
        });
        if (inBand >= needed)
            return cadence;
    }
    return std::nullopt;
}

std::vector<RecurringCharge> recurring(const Ledger& ledger, const ReportFilter& filter,
                                       LocalDate asOf) {
    return detail::recurring(detail::candidates(ledger, filter), ledger, asOf);
}

std::vector<UnusualCharge> unusual(const Ledger& ledger, const ReportFilter& filter) {
    return detail::unusual(detail::candidates(ledger, filter), ledger, filter);
}

namespace detail {

CandidateGroups candidates(const Ledger& ledger, const ReportFilter& filter) {
    // Refunds are never candidates, so they can't break a series.
    CandidateGroups groups;
    const auto all = TransactionWalk::addresses(ledger);
    for (std::size_t i = 0; i < all.size(); ++i) {
        TransactionWalk::readAhead(all, i);
        const LedgerTransaction& transaction = *all[i];
        if (!transaction.isActive() || transaction.status != TransactionStatus::posted ||
            transaction.kind != TransactionKind::expense || transaction.amount >= 0)
            continue;
        if (!filter.includes(transaction, ledger))
            continue;
        groups[ReportEngine::merchantIdentityID(transaction, ledger)].push_back(&transaction);
    }
    for (auto& [key, group] : groups) {
        std::sort(group.begin(), group.end(), [](const auto* a, const auto* b) {
            if (a->date != b->date)
                return a->date < b->date;
            return a->id < b->id;
        });
    }
    return groups;
}

std::vector<RecurringCharge> recurring(const CandidateGroups& groups, const Ledger& ledger,
                                       LocalDate asOf) {
    std::vector<RecurringCharge> charges;
    for (const auto& [key, all] : groups) {
        // Charges after asOf haven't happened yet as far as this list knows.
        const auto seen = std::upper_bound(
            all.begin(), all.end(), asOf,
            [](LocalDate date, const LedgerTransaction* t) { return date < t->date; });
        const std::vector<const LedgerTransaction*> group(all.begin(), seen);
        if (group.size() < 3)
            continue;
        const std::size_t recentCount = std::min<std::size_t>(group.size(), 12);
        const std::vector<const LedgerTransaction*> recent(group.end() - recentCount, group.end());
        std::vector<int64_t> gaps;
        for (std::size_t i = 1; i < recent.size(); ++i)
            gaps.push_back(recent[i - 1]->date.daysUntil(recent[i]->date));
        const auto cadence = cadenceFor(gaps);
        if (!cadence)
            continue;
        std::vector<int64_t> amounts;
        for (const auto* transaction : recent)
            amounts.push_back(magnitude(*transaction));
        const int64_t typical = median(std::vector<int64_t>(amounts.end() - 3, amounts.end()));
        // Only the last six charges must be steady; a price change long ago
        // leaves the series standing.
        const std::size_t steadyFrom = amounts.size() > 6 ? amounts.size() - 6 : 0;
        const bool steady = std::all_of(
            amounts.begin() + static_cast<std::ptrdiff_t>(steadyFrom), amounts.end(),
            [&](int64_t amount) {
                const int64_t difference = amount > typical ? amount - typical : typical - amount;
                return difference <= 300 || checked::mul(4, difference) <= typical;
            });
        if (!steady)
            continue;

        const LedgerTransaction& last = *recent.back();
        const LedgerTransaction& previous = *recent[recent.size() - 2];
        RecurringCharge charge{
            .id = key,
            .merchantName = ReportEngine::merchantIdentity(last, ledger).name,
            .cadence = *cadence,
            .typicalAmount = typical,
            .lastAmount = magnitude(last),
            .previousAmount = magnitude(previous),
            .lastDate = last.date,
            .count = static_cast<int64_t>(group.size()),
        };
        switch (*cadence) {
            case Cadence::weekly:
                charge.nextExpected = last.date.addingDays(7);
                break;
            case Cadence::monthly:
                charge.nextExpected = last.date.addingMonths(1);
                break;
            case Cadence::yearly:
                charge.nextExpected = last.date.addingDays(365);
                break;
        }
        charge.isActive = last.date.daysUntil(asOf) <= rule(*cadence).activeWithinDays;
        for (const auto* transaction : group)
            charge.transactionIDs.push_back(transaction->id);
        charges.push_back(std::move(charge));
    }
    std::sort(charges.begin(), charges.end(),
              [](const RecurringCharge& a, const RecurringCharge& b) {
                  if (a.isActive != b.isActive)
                      return a.isActive;
                  if (a.yearlyCost() != b.yearlyCost())
                      return a.yearlyCost() > b.yearlyCost();
                  if (a.merchantName != b.merchantName)
                      return a.merchantName < b.merchantName;
                  return a.id < b.id;
              });
    return charges;
}

std::vector<UnusualCharge> unusual(const CandidateGroups& groups, const Ledger& ledger,
                                   const ReportFilter& filter) {
    std::vector<UnusualCharge> found;
    for (const auto& entry : groups) {
        // Named apart, not bound: lambdas can't capture structured bindings everywhere.
        const auto& group = entry.second;
        // The group is in date order, so a charge's history is one run of it:
        // from the first charge inside the 180 days to the last one of an
        // earlier day.
        std::size_t historyStart = 0;
        std::size_t earlierDays = 0;
        // The magnitudes of group[historyStart, earlierDays), kept sorted as
        // the window slides, so that each charge's median costs no sort.
        std::vector<int64_t> window;
        const auto slide = [&](std::size_t& edge, bool entering) {
            const int64_t value = magnitude(*group[edge++]);
            const auto at = std::lower_bound(window.begin(), window.end(), value);
            if (entering)
                window.insert(at, value);
            else
                window.erase(at);
        };
        for (std::size_t i = 0; i < group.size(); ++i) {
            const LedgerTransaction& charge = *group[i];
            while (earlierDays < i && group[earlierDays]->date < charge.date)
                slide(earlierDays, true);
            if (!filter.span.contains(charge.date))
                continue;
            const LocalDate oldest = charge.date.addingDays(-180);
            while (historyStart < earlierDays && group[historyStart]->date <= oldest)
                slide(historyStart, false);
            const int64_t amount = magnitude(charge);
            if (window.size() >= 3) {
                const std::size_t middle = window.size() / 2;
                const int64_t usual = window.size() % 2 == 1
                                          ? window[middle]
                                          : checked::add(window[middle - 1], window[middle]) / 2;
                if (amount >= checked::mul(3, usual) && amount - usual >= 2500) {
                    const std::string name = ReportEngine::merchantIdentity(charge, ledger).name;
                    found.push_back(
                        {.transactionID = charge.id,
                         .merchantName = name,
                         .date = charge.date,
                         .amount = amount,
                         .usualAmount = usual,
                         .reason = "About " + std::to_string(amount / std::max<int64_t>(usual, 1)) +
                                   "\u00D7 your usual " + Money::format(usual, "USD") + " at " +
                                   name + "."});
                }
            } else if (earlierDays == 0 && amount >= 20000) {
                // Thin history is no evidence; only a merchant's very first
                // charge stands out on its own.
                const std::string name = ReportEngine::merchantIdentity(charge, ledger).name;
                found.push_back({.transactionID = charge.id,
                                 .merchantName = name,
                                 .date = charge.date,
                                 .amount = amount,
                                 .usualAmount = std::nullopt,
                                 .reason = "First charge at " + name + ", and a large one."});
            }
        }
    }
    std::sort(found.begin(), found.end(), [](const UnusualCharge& a, const UnusualCharge& b) {
        if (a.amount != b.amount)
            return a.amount > b.amount;
        return a.transactionID > b.transactionID;
    });
    return found;
}

}  // namespace detail

}  // namespace Insights

}  // namespace copperwick
