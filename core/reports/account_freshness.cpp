#include "core/reports/account_freshness.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "core/model/date_text.h"

namespace copperwick {

std::vector<AccountFreshness> AccountFreshness::build(const Ledger& ledger, LocalDate today) {
    // A household has a handful of accounts and a history of many thousand
    // lines: one pass over the lines, finding each line's account in a short
    // list (the last one found first, as lines come in runs of one account),
    // costs less than hashing every line's account id.
    struct Seen {
        Uuid accountID;
        std::optional<Instant> lastImport;
        std::optional<LocalDate> latest;
        // Pending lines don't make an account current, but they do show it was imported.
        bool hasTransaction = false;
    };
    std::vector<Seen> seen;
    seen.reserve(ledger.accounts.size());
    for (const auto& account : ledger.accounts)
        seen.push_back(Seen{.accountID = account.id});
    std::size_t last = 0;
    const auto find = [&](const Uuid& accountID) -> Seen* {
        if (last < seen.size() && seen[last].accountID == accountID)
            return &seen[last];
        for (std::size_t i = 0; i < seen.size(); ++i) {
            if (seen[i].accountID == accountID) {
                last = i;
                return &seen[i];
            }
        }
        return nullptr;
    };
    for (const auto& batch : ledger.batches) {
        if (Seen* account = find(batch.accountID);
            account && (!account->lastImport || *account->lastImport < batch.importedAt))
            account->lastImport = batch.importedAt;
    }
    for (const auto& transaction : ledger.transactions) {
        if (!transaction.isActive())
            continue;
        Seen* account = find(transaction.accountID);
        if (!account)
            continue;
        account->hasTransaction = true;
        if (transaction.status == TransactionStatus::posted &&
            (!account->latest || *account->latest < transaction.date))
            account->latest = transaction.date;
    }

    std::vector<AccountFreshness> result;
    for (std::size_t i = 0; i < ledger.accounts.size(); ++i) {
        const Account& account = ledger.accounts[i];
        AccountFreshness line{.account = account};
        line.lastImportedAt = seen[i].lastImport;
        const bool hasTransaction = seen[i].hasTransaction;
        line.latestTransaction = seen[i].latest;
        if (account.upToDateThrough &&
            (!line.latestTransaction || *line.latestTransaction < *account.upToDateThrough))
            line.latestTransaction = account.upToDateThrough;

        if (account.type == AccountType::cash)
            line.state = State::manual;
        else if (account.rarelyUsed)
            line.state = State::rarelyUsed;
        else if (!line.lastImportedAt && !hasTransaction)
            line.state = State::neverImported;
        else if (!line.latestTransaction)
            line.state = State::mayNeedImport;
        else if (*line.latestTransaction >= today.addingDays(-31))
            line.state = State::recent;
        else
            line.state = State::mayNeedImport;
        result.push_back(std::move(line));
    }
    std::stable_sort(result.begin(), result.end(),
                     [](const AccountFreshness& a, const AccountFreshness& b) {
                         if (a.account.name != b.account.name)
                             return a.account.name < b.account.name;
                         return a.account.id < b.account.id;
                     });
    return result;
}

std::string AccountFreshness::importLine(const std::optional<std::string>& importedAt) const {
    std::string line = "Last import: " + (importedAt ? *importedAt : std::string("Never"));
    if (latestTransaction)
        line += " \u00B7 Latest transaction: " + DateText::medium(*latestTransaction);
    return line;
}

std::optional<std::string> AccountFreshness::confirmedLine() const {
    if (!account.upToDateThrough)
        return std::nullopt;
    return "You confirmed complete through " + DateText::medium(*account.upToDateThrough);
}

std::optional<MissingImports> MissingImports::find(const DateSpan& span, const Ledger& ledger,
                                                   LocalDate today) {
    const LocalDate end = std::min(span.end, today);
    if (end < span.start)
        return std::nullopt;
    const DateSpan month = DateSpan::month(end);
    // Long-abandoned accounts aren't missing; ones that stopped lately are.
    const LocalDate cutoff = month.start.addingMonths(-2);
    std::vector<std::string> names;
    for (const auto& line : AccountFreshness::build(ledger, today)) {
        if (line.state == AccountFreshness::State::manual ||
            line.state == AccountFreshness::State::neverImported ||
            line.state == AccountFreshness::State::rarelyUsed)
            continue;
        std::optional<LocalDate> effective = line.latestTransaction;
        if (line.account.upToDateThrough &&
            (!effective || *effective < *line.account.upToDateThrough))
            effective = line.account.upToDateThrough;
        if (effective && *effective < month.start && *effective >= cutoff)
            names.push_back(line.account.name);
    }
    if (names.empty())
        return std::nullopt;
    return MissingImports{
        .monthLabel = std::string(MonthNames::longName(end.month)) + " " + std::to_string(end.year),
        .accountNames = std::move(names)};
}

std::string MissingImports::message() const {
    std::string names;
    const std::size_t count = accountNames.size();
    for (std::size_t i = 0; i < count; ++i) {
        if (i > 0)
            names += i + 1 == count ? " and " : ", ";
        names += accountNames[i];
    }
    return monthLabel + " isn't imported yet for " + names + ", so its totals are missing " +
           (count == 1 ? "that account" : "those accounts") + ".";
}

std::string_view label(AccountFreshness::State state) {
    switch (state) {
        case AccountFreshness::State::manual:
            return "Tracked manually";
        case AccountFreshness::State::neverImported:
            return "No imports yet";
        case AccountFreshness::State::recent:
            return "Recent activity";
        case AccountFreshness::State::mayNeedImport:
            return "May need an import";
        case AccountFreshness::State::rarelyUsed:
            break;
    }
    return "Occasional use";
}

}  // namespace copperwick
