#include "core/reports/report_engine.h"

#include "core/reports/transaction_walk.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <unordered_set>

#include "core/matching/merchant_keys.h"
#include "core/matching/merchant_text.h"
#include "core/model/checked.h"
#include "core/model/money.h"
#include "core/model/text.h"
#include "core/reports/account_history.h"
#include "core/reports/transaction_walk.h"

namespace copperwick::ReportEngine {

namespace {

constexpr std::string_view kGiftsReceived = "gifts received";

// Who a line was paid to, without building the id text or the name: those
// are made once per line of the report rather than once per transaction.
struct Payee {
    const Merchant* merchant = nullptr;
    std::string key;  // the bank text's key when there is no merchant
};

Payee payeeOf(const LedgerTransaction& transaction, const Ledger& ledger) {
    if (transaction.merchantID) {
        if (const Merchant* merchant = ledger.merchants.find(*transaction.merchantID))
            return {merchant, {}};
    }
    return {nullptr, MerchantKeys::of(transaction.rawDescription)};
}

// Filed merchants by id, unfiled texts by key.
struct MerchantTable {
    std::unordered_map<const Merchant*, MerchantLine> filed;
    std::unordered_map<std::string, MerchantLine> unfiled;

    void add(const Payee& payee, const LedgerTransaction& transaction, int64_t amount) {
        MerchantLine* line;
        if (payee.merchant) {
            auto [it, inserted] = filed.try_emplace(payee.merchant);
            line = &it->second;
            if (inserted) {
                line->id = payee.merchant->id.text();
                line->name = payee.merchant->name;
            }
        } else {
            auto [it, inserted] = unfiled.try_emplace(payee.key);
            line = &it->second;
            if (inserted) {
                line->id = "key:" + payee.key;
                line->name = MerchantText::titleCase(payee.key);
            }
        }
        line->amount = checked::add(line->amount, amount);
        ++line->count;
        line->transactionIDs.push_back(transaction.id);
    }

    // Amount descending, then name: the order of every merchant table.
    [[nodiscard]] std::vector<MerchantLine> sorted() && {
        std::vector<MerchantLine> lines;
        lines.reserve(filed.size() + unfiled.size());
        for (auto& [merchant, line] : filed)
            lines.push_back(std::move(line));
        for (auto& [key, line] : unfiled)
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
};

struct CategoryAccumulator {
    int64_t amount = 0;
    int64_t refunds = 0;
    int64_t count = 0;
    std::vector<Uuid> transactionIDs;
    MerchantTable merchants;
};

constexpr std::size_t kReadAhead = TransactionWalk::kReadAhead;

// An id as two machine words, for cheap equality.
using IDWords = std::pair<uint64_t, uint64_t>;
IDWords idWords(const Uuid& id) {
    IDWords words;
    std::memcpy(&words.first, id.bytes().data(), 8);
    std::memcpy(&words.second, id.bytes().data() + 8, 8);
    return words;
}

// Orders like the date itself, without working out a day number.
int64_t dateKey(LocalDate date) {
    return (int64_t{date.year} * 16 + date.month) * 32 + date.day;
}

// The first eight bytes of an id as a number, so that most ties on a date
// are broken without reading the whole id.
uint64_t idPrefix(const Uuid& id) {
    uint64_t prefix = 0;
    for (int i = 0; i < 8; ++i)
        prefix = (prefix << 8) | id.bytes()[static_cast<std::size_t>(i)];
    return prefix;
}

}  // namespace

MerchantIdentity merchantIdentity(const LedgerTransaction& transaction, const Ledger& ledger) {
    Payee payee = payeeOf(transaction, ledger);
    if (payee.merchant)
        return {payee.merchant->id.text(), payee.merchant->name};
    return {"key:" + payee.key, MerchantText::titleCase(payee.key)};
}

std::string merchantIdentityID(const LedgerTransaction& transaction, const Ledger& ledger) {
    Payee payee = payeeOf(transaction, ledger);
    return payee.merchant ? payee.merchant->id.text() : "key:" + payee.key;
}

Report build(const Ledger& ledger, const ReportFilter& filter, LocalDate today) {
    Report report(filter);

    // One walk over the ledger: the scope over all dates (a person's report
    // names the accounts where they have transactions at all, not only in
    // this period), the period, and the dates the data notes judge each
    // account's files by (all of the account's lines, whoever they belong to).
    detail::AccountHistories histories;
    for (const auto& account : ledger.accounts) {
        if (filter.includes(account) && detail::isJudgedByItsFiles(account))
            histories[account.id];
    }
    // A household has a handful of accounts: a short array compared as two
    // words beats a hash lookup for every transaction.
    struct AccountSlot {
        IDWords id;
        const Account* account;
        bool included;
        bool scoped = false;
        detail::AccountHistory* history = nullptr;
    };
    std::vector<AccountSlot> slots;
    for (const auto& account : ledger.accounts) {
        if (std::any_of(slots.begin(), slots.end(),
                        [&](const AccountSlot& slot) { return slot.account->id == account.id; }))
            continue;  // the first of a duplicated id is the one Ledger::account finds
        auto history = histories.find(account.id);
        slots.push_back({idWords(account.id), &account, filter.includes(account), false,
                         history == histories.end() ? nullptr : &history->second});
    }

    // Bound by memory latency: see TransactionWalk.
    const auto all = TransactionWalk::addresses(ledger);
    std::vector<const LedgerTransaction*> inSpan;
    for (std::size_t i = 0; i < all.size(); ++i) {
        TransactionWalk::readAhead(all, i);
        const LedgerTransaction& transaction = *all[i];
        if (transaction.supersededBy || transaction.voided)
            continue;
        const IDWords accountID = idWords(transaction.accountID);
        auto slot = std::find_if(slots.begin(), slots.end(),
                                 [&](const AccountSlot& s) { return s.id == accountID; });
        if (slot == slots.end())
            continue;  // its account is gone: in no report
        if (slot->history)
            slot->history->add(transaction.date);
        if (!slot->included)
            continue;
        if (!filter.wholeHousehold && !filter.includes(transaction, ledger))
            continue;
        slot->scoped = true;
        if (filter.span.start <= transaction.date && transaction.date <= filter.span.end)
            inSpan.push_back(&transaction);
    }
    std::vector<const Account*> accounts;
    for (const auto& account : ledger.accounts) {
        if (account.currency != filter.currency)
            continue;
        if (!filter.accountIDs.empty() && !filter.accountIDs.contains(account.id))
            continue;
        const auto slot = std::find_if(slots.begin(), slots.end(), [&](const AccountSlot& s) {
            return s.account->id == account.id;
        });
        if (filter.wholeHousehold || slot->scoped)
            accounts.push_back(&account);
    }

    // Sorted on a compact key, so that most comparisons don't leave the array.
    struct Ordered {
        int64_t day;
        uint64_t idPrefix;
        const LedgerTransaction* transaction;
    };
    std::vector<Ordered> ordered;
    ordered.reserve(inSpan.size());
    for (const LedgerTransaction* transaction : inSpan)
        ordered.push_back({dateKey(transaction->date), idPrefix(transaction->id), transaction});
    std::sort(ordered.begin(), ordered.end(), [](const Ordered& a, const Ordered& b) {
        if (a.day != b.day)
            return a.day < b.day;
        if (a.idPrefix != b.idPrefix)
            return a.idPrefix < b.idPrefix;
        return a.transaction->id < b.transaction->id;
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

    std::unordered_map<Uuid, const LedgerCategory*> categoryIndex;
    for (const auto& category : ledger.categories)
        categoryIndex.try_emplace(category.id, &category);
    const auto categoryOf = [&](const std::optional<Uuid>& id) -> const LedgerCategory* {
        if (!id)
            return nullptr;
        const auto it = categoryIndex.find(*id);
        return it == categoryIndex.end() ? nullptr : it->second;
    };

    // Keyed by the category, or by nullptr for "uncategorized".
    std::unordered_map<const LedgerCategory*, CategoryAccumulator> categories;
    MerchantTable incomeSources;
    MerchantTable spendingMerchants;
    std::vector<std::pair<const LedgerCategory*, int64_t>> pieces;

    for (std::size_t i = 0; i < ordered.size(); ++i) {
        if (i + kReadAhead < ordered.size()) {
            const LedgerTransaction* next = ordered[i + kReadAhead].transaction;
            __builtin_prefetch(&next->amount);
            __builtin_prefetch(&next->rawDescription);
            __builtin_prefetch(&next->categoryID);
            __builtin_prefetch(&next->splits);
        }
        const LedgerTransaction* transaction = ordered[i].transaction;
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
                const LedgerCategory* category = categoryOf(transaction->categoryID);
                if (category && text::lowercased(category->name) == kGiftsReceived)
                    report.giftsReceived = checked::add(report.giftsReceived, amount);
                incomeSources.add(payeeOf(*transaction, ledger), *transaction, amount);
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

                // A split's parts carry the money out as negative amounts, so
                // each part takes its own amount off its category's piece.
                pieces.clear();
                if (!transaction->splits || transaction->splits->empty()) {
                    pieces.emplace_back(categoryOf(transaction->categoryID), spend);
                } else {
                    for (const auto& split : *transaction->splits) {
                        const LedgerCategory* category = categoryOf(split.categoryID);
                        auto it = std::find_if(pieces.begin(), pieces.end(),
                                               [&](const auto& p) { return p.first == category; });
                        if (it == pieces.end())
                            pieces.emplace_back(category, checked::neg(split.amount));
                        else
                            it->second = checked::sub(it->second, split.amount);
                    }
                }
                const Payee payee = payeeOf(*transaction, ledger);
                for (const auto& [category, piece] : pieces) {
                    CategoryAccumulator& line = categories[category];
                    line.amount = checked::add(line.amount, piece);
                    if (piece < 0)
                        line.refunds = checked::sub(line.refunds, piece);
                    ++line.count;
                    line.transactionIDs.push_back(transaction->id);
                    line.merchants.add(payee, *transaction, piece);
                }
                spendingMerchants.add(payee, *transaction, spend);
                break;
            }
        }
    }

    for (auto& [category, accumulator] : categories) {
        CategoryLine line{.amount = accumulator.amount,
                          .refunds = accumulator.refunds,
                          .count = accumulator.count,
                          .merchants = std::move(accumulator.merchants).sorted(),
                          .transactionIDs = std::move(accumulator.transactionIDs)};
        if (category) {
            line.id = category->id.text();
            line.categoryID = category->id;
            line.name = category->name;
            line.colorIndex = category->colorIndex;
        } else {
            line.id = std::string(CategoryLine::kUncategorizedID);
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

    report.notes = detail::dataNotes(ledger, filter, accounts, histories, today,
                                     report.unknownCount, report.unknownIn, report.unknownOut,
                                     report.pendingCount, report.pendingTotal);
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
    report.incomeSources = std::move(incomeSources).sorted();
    report.topMerchants = std::move(spendingMerchants).sorted();
    if (report.topMerchants.size() > Report::kTopMerchantCount)
        report.topMerchants.resize(Report::kTopMerchantCount);

    for (const Account* account : accounts)
        report.accountNames.push_back(account->name);
    std::sort(report.accountNames.begin(), report.accountNames.end());
    return report;
}

}  // namespace copperwick::ReportEngine
