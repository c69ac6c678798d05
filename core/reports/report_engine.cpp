#include "core/reports/report_engine.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

#include "core/matching/merchant_keys.h"
#include "core/matching/merchant_text.h"
#include "core/model/checked.h"
#include "core/model/money.h"
#include "core/model/text.h"

namespace copperwick::ReportEngine {

namespace {

constexpr std::string_view kGiftsReceived = "gifts received";

// The id half of merchantIdentity, without the name: the name is worked out
// once per line rather than once per transaction.
std::string identityID(const LedgerTransaction& transaction, const Ledger& ledger) {
    if (transaction.merchantID && ledger.merchants.contains(*transaction.merchantID))
        return transaction.merchantID->text();
    return "key:" + MerchantKeys::of(transaction.rawDescription);
}

std::string identityName(const std::string& id, const LedgerTransaction& transaction,
                         const Ledger& ledger) {
    if (id.starts_with("key:"))
        return MerchantText::titleCase(std::string_view(id).substr(4));
    return ledger.merchants.find(*transaction.merchantID)->name;
}

using MerchantTable = std::unordered_map<std::string, MerchantLine>;

void addToMerchant(MerchantTable& table, const std::string& id,
                   const LedgerTransaction& transaction, const Ledger& ledger, int64_t amount) {
    auto [it, inserted] = table.try_emplace(id);
    MerchantLine& line = it->second;
    if (inserted) {
        line.id = id;
        line.name = identityName(id, transaction, ledger);
    }
    line.amount = checked::add(line.amount, amount);
    ++line.count;
    line.transactionIDs.push_back(transaction.id);
}

// Amount descending, then name: the order of every merchant table.
std::vector<MerchantLine> sortedLines(MerchantTable&& table) {
    std::vector<MerchantLine> lines;
    lines.reserve(table.size());
    for (auto& [id, line] : table)
        lines.push_back(std::move(line));
    std::sort(lines.begin(), lines.end(), [](const MerchantLine& a, const MerchantLine& b) {
        if (a.amount != b.amount)
            return a.amount > b.amount;
        if (a.name != b.name)
            return a.name < b.name;
        return a.id < b.id;
    });
    return lines;
}

struct CategoryAccumulator {
    int64_t amount = 0;
    int64_t refunds = 0;
    int64_t count = 0;
    std::vector<Uuid> transactionIDs;
    MerchantTable merchants;
};

std::string categoryKey(const std::optional<Uuid>& categoryID, const Ledger& ledger) {
    if (categoryID && ledger.category(categoryID))
        return categoryID->text();
    return std::string(CategoryLine::kUncategorizedID);
}

}  // namespace

MerchantIdentity merchantIdentity(const LedgerTransaction& transaction, const Ledger& ledger) {
    std::string id = identityID(transaction, ledger);
    std::string name = identityName(id, transaction, ledger);
    return {std::move(id), std::move(name)};
}

Report build(const Ledger& ledger, const ReportFilter& filter, LocalDate today) {
    Report report(filter);

    // Scope first, over all dates: a person's report names the accounts where
    // they have transactions at all, not only in this period.
    std::unordered_set<Uuid> scopedAccounts;
    std::vector<const LedgerTransaction*> inSpan;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.supersededBy || transaction.voided || !filter.includes(transaction, ledger))
            continue;
        scopedAccounts.insert(transaction.accountID);
        if (filter.span.start <= transaction.date && transaction.date <= filter.span.end)
            inSpan.push_back(&transaction);
    }
    std::vector<const Account*> accounts;
    for (const auto& account : ledger.accounts) {
        if (account.currency != filter.currency)
            continue;
        if (!filter.accountIDs.empty() && !filter.accountIDs.contains(account.id))
            continue;
        if (filter.wholeHousehold || scopedAccounts.contains(account.id))
            accounts.push_back(&account);
    }

    std::sort(inSpan.begin(), inSpan.end(), [](const auto* a, const auto* b) {
        if (a->date != b->date)
            return a->date < b->date;
        return a->id < b->id;
    });

    const std::vector<std::string> monthKeys = filter.span.monthKeys();
    report.months.reserve(monthKeys.size());
    for (const auto& key : monthKeys)
        report.months.push_back(MonthLine{.monthKey = key});
    const int64_t firstMonth = int64_t{filter.span.start.year} * 12 + filter.span.start.month;
    const auto monthOf = [&](LocalDate date) -> MonthLine& {
        return report
            .months[static_cast<std::size_t>(int64_t{date.year} * 12 + date.month - firstMonth)];
    };

    std::unordered_map<std::string, CategoryAccumulator> categories;
    MerchantTable incomeSources;
    MerchantTable spendingMerchants;

    for (const LedgerTransaction* transaction : inSpan) {
        const int64_t amount = transaction->amount;
        if (transaction->status == TransactionStatus::pending) {
            ++report.pendingCount;
            report.pendingTotal = checked::add(report.pendingTotal, amount);
            continue;
        }
        if (transaction->method == MatchMethod::ai &&
            transaction->review == ReviewState::automatic &&
            (transaction->kind == TransactionKind::expense ||
             transaction->kind == TransactionKind::income))
            report.aiFiledIDs.push_back(transaction->id);

        switch (transaction->kind) {
            case TransactionKind::unknown:
                ++report.unknownCount;
                report.unknownIDs.push_back(transaction->id);
                if (amount >= 1)
                    report.unknownIn = checked::add(report.unknownIn, amount);
                else
                    report.unknownOut = checked::add(report.unknownOut, amount);
                break;
            case TransactionKind::transfer:
                ++report.transferCount;
                if (amount < 0)
                    report.transferVolume = checked::sub(report.transferVolume, amount);
                break;
            case TransactionKind::income: {
                report.includedIDs.push_back(transaction->id);
                report.income = checked::add(report.income, amount);
                MonthLine& month = monthOf(transaction->date);
                month.income = checked::add(month.income, amount);
                const LedgerCategory* category = ledger.category(transaction->categoryID);
                if (category && text::lowercased(category->name) == kGiftsReceived)
                    report.giftsReceived = checked::add(report.giftsReceived, amount);
                addToMerchant(incomeSources, identityID(*transaction, ledger), *transaction, ledger,
                              amount);
                break;
            }
            case TransactionKind::expense: {
                const int64_t spend = checked::neg(amount);
                report.includedIDs.push_back(transaction->id);
                report.spending = checked::add(report.spending, spend);
                MonthLine& month = monthOf(transaction->date);
                month.spending = checked::add(month.spending, spend);
                if (amount >= 1)
                    report.refunds = checked::add(report.refunds, amount);

                // A split's parts carry the money out as negative amounts, so each
                // part takes its own amount off its category's piece of the spend.
                std::vector<std::pair<std::string, int64_t>> pieces;
                if (!transaction->splits || transaction->splits->empty()) {
                    pieces.emplace_back(categoryKey(transaction->categoryID, ledger), spend);
                } else {
                    for (const auto& split : *transaction->splits) {
                        auto key = categoryKey(split.categoryID, ledger);
                        auto it =
                            std::find_if(pieces.begin(), pieces.end(),
                                         [&](const auto& piece) { return piece.first == key; });
                        if (it == pieces.end())
                            pieces.emplace_back(std::move(key), checked::neg(split.amount));
                        else
                            it->second = checked::sub(it->second, split.amount);
                    }
                }
                const std::string merchantID = identityID(*transaction, ledger);
                for (const auto& [key, piece] : pieces) {
                    CategoryAccumulator& category = categories[key];
                    category.amount = checked::add(category.amount, piece);
                    if (piece < 0)
                        category.refunds = checked::sub(category.refunds, piece);
                    ++category.count;
                    category.transactionIDs.push_back(transaction->id);
                    addToMerchant(category.merchants, merchantID, *transaction, ledger, piece);
                }
                addToMerchant(spendingMerchants, merchantID, *transaction, ledger, spend);
                break;
            }
        }
    }

    for (auto& [key, accumulator] : categories) {
        CategoryLine line{.id = key,
                          .amount = accumulator.amount,
                          .refunds = accumulator.refunds,
                          .count = accumulator.count,
                          .merchants = sortedLines(std::move(accumulator.merchants)),
                          .transactionIDs = std::move(accumulator.transactionIDs)};
        const auto id = Uuid::parse(key);
        if (const LedgerCategory* category = id ? ledger.category(*id) : nullptr) {
            line.categoryID = category->id;
            line.name = category->name;
            line.colorIndex = category->colorIndex;
        } else {
            line.name = "Uncategorized";
            line.colorIndex = -1;
        }
        report.categories.push_back(std::move(line));
    }
    std::sort(report.categories.begin(), report.categories.end(),
              [](const CategoryLine& a, const CategoryLine& b) {
                  if (a.amount != b.amount)
                      return a.amount > b.amount;
                  if (a.name != b.name)
                      return a.name < b.name;
                  return a.id < b.id;
              });

    report.notes = dataNotes(ledger, filter, accounts, today, report.unknownCount, report.unknownIn,
                             report.unknownOut, report.pendingCount, report.pendingTotal);
    if (!report.aiFiledIDs.empty()) {
        int64_t total = 0;
        for (const auto& id : report.aiFiledIDs) {
            const int64_t amount = ledger.transactions.find(id)->amount;
            total = checked::add(total, amount < 0 ? checked::neg(amount) : amount);
        }
        const std::size_t count = report.aiFiledIDs.size();
        DataNote note{
            .id = "ai-filed",
            .severity = DataNote::Severity::info,
            .text = std::to_string(count) + " " +
                    (count == 1 ? "transaction was" : "transactions were") +
                    " filed by Local AI (" + Money::format(total, "USD") +
                    " in all) and you haven't checked them yet. They're counted; check them "
                    "in Review."};
        auto pending = std::find_if(report.notes.begin(), report.notes.end(),
                                    [](const DataNote& n) { return n.id == "pending"; });
        if (pending != report.notes.end())
            report.notes.insert(pending, std::move(note));
        else
            report.notes.insert(report.notes.begin() + (report.notes.empty() ? 0 : 1),
                                std::move(note));
    }

    report.scopeLabel = filter.scopeLabel(ledger);
    report.incomeSources = sortedLines(std::move(incomeSources));
    report.topMerchants = sortedLines(std::move(spendingMerchants));
    if (report.topMerchants.size() > Report::kTopMerchantCount)
        report.topMerchants.resize(Report::kTopMerchantCount);

    for (const Account* account : accounts)
        report.accountNames.push_back(account->name);
    std::sort(report.accountNames.begin(), report.accountNames.end());
    return report;
}

}  // namespace copperwick::ReportEngine
