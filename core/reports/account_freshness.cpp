#include "core/reports/account_freshness.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "core/model/date_text.h"

namespace copperwick {

std::vector<AccountFreshness> AccountFreshness::build(const Ledger& ledger, LocalDate today) {
    std::unordered_map<Uuid, Instant> lastImport;
    for (const auto& batch : ledger.batches) {
        auto [it, inserted] = lastImport.try_emplace(batch.accountID, batch.importedAt);
        if (!inserted && it->second < batch.importedAt)
            it->second = batch.importedAt;
    }
    std::unordered_map<Uuid, LocalDate> latest;
    // Pending lines don't make an account current, but they do show it was imported.
    std::unordered_set<Uuid> withTransactions;
    for (const auto& transaction : ledger.transactions) {
        if (!transaction.isActive())
            continue;
        withTransactions.insert(transaction.accountID);
        if (transaction.status != TransactionStatus::posted)
            continue;
        auto [it, inserted] = latest.try_emplace(transaction.accountID, transaction.date);
        if (!inserted && it->second < transaction.date)
            it->second = transaction.date;
    }

    std::vector<AccountFreshness> result;
    for (const auto& account : ledger.accounts) {
        AccountFreshness line{.account = account};
        if (auto it = lastImport.find(account.id); it != lastImport.end())
            line.lastImportedAt = it->second;
        const bool hasTransaction = withTransactions.contains(account.id);
        if (auto it = latest.find(account.id); it != latest.end())
            line.latestTransaction = it->second;
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
