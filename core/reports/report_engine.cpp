#include "core/reports/report_engine.h"

#include "core/reports/transaction_walk.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "core/matching/merchant_keys.h"
#include "core/matching/merchant_text.h"
#include "core/model/checked.h"
#include "core/model/chunk_summaries.h"
#include "core/model/money.h"
#include "core/model/text.h"
#include "core/reports/account_history.h"
#include "core/reports/transaction_walk.h"

namespace copperwick::ReportEngine {

namespace {

constexpr std::string_view kGiftsReceived = "gifts received";

using Transactions = SharedMap<Uuid, LedgerTransaction>;

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

// What a report reads of one active transaction. The records lie all over
// the heap and a report of all time reads every one twice (once to scope it,
// once in date order); these compact copies are read instead, and the record
// itself only for its splits or a people filter.
struct alignas(64) ReportLine {
    // What the pass in date order reads, in the first cache line.
    int64_t amount;
    Uuid id;
    std::optional<Uuid> categoryID;
    std::optional<Uuid> merchantID;
    TransactionKind kind;
    bool pending : 1;
    bool aiFiled : 1;  // filed by the model and not checked, whatever its kind
    bool hasSplits : 1;
    int32_t month;  // year * 12 + month
    // What scoping reads, and what few lines need.
    const std::string* key;  // of the bank text, as the key cache holds it, without a merchant id
    const LedgerTransaction* record;
    IDWords accountID;
    int64_t day;  // dateKey
    uint64_t idPrefix;
    LocalDate date;
};

struct ChunkLines {
    std::vector<ReportLine> lines;
};

// Held shared so that a report keeps its chunks' lines after the visit,
// whatever another thread's visit drops meanwhile.
using SharedChunkLines = std::shared_ptr<const ChunkLines>;

ChunkSummaries<Transactions, SharedChunkLines>& reportLines() {
    static ChunkSummaries<Transactions, SharedChunkLines> shared(
        [](const Transactions::ChunkTable& chunk) {
            auto summary = std::make_shared<ChunkLines>();
            summary->lines.reserve(chunk.size());
            for (const auto& [id, record] : chunk) {
                const LedgerTransaction& t = *record;
                if (!t.isActive())
                    continue;
                summary->lines.push_back(ReportLine{
                    .amount = t.amount,
                    .id = t.id,
                    .categoryID = t.categoryID,
                    .merchantID = t.merchantID,
                    .kind = t.kind,
                    .pending = t.status == TransactionStatus::pending,
                    .aiFiled = t.method == MatchMethod::ai && t.review == ReviewState::automatic,
                    .hasSplits = t.splits && !t.splits->empty(),
                    .month = static_cast<int32_t>(int64_t{t.date.year} * 12 + t.date.month),
                    .key = t.merchantID ? nullptr : &MerchantKeys::held(t.rawDescription),
                    .record = &t,
                    .accountID = idWords(t.accountID),
                    .day = dateKey(t.date),
                    .idPrefix = idPrefix(t.id),
                    .date = t.date});
            }
            return SharedChunkLines(std::move(summary));
        });
    return shared;
}

// Who a line was paid to, without building the id text or the name: those
// are made once per line of the report rather than once per transaction.
struct Payee {
    const Merchant* merchant = nullptr;
    const std::string* key = nullptr;  // the bank text's held key when there is no merchant
};

// Filed merchants by id, unfiled texts by key.
struct MerchantTable {
    std::unordered_map<const Merchant*, MerchantLine> filed;
    // Held keys: one address per key.
    std::unordered_map<const std::string*, MerchantLine> unfiled;

    void add(const Payee& payee, const Uuid& transactionID, int64_t amount) {
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
                line->id = "key:";
                line->id += *payee.key;
                line->name = MerchantText::titleCase(*payee.key);
            }
        }
        line->amount = checked::add(line->amount, amount);
        ++line->count;
        line->transactionIDs.push_back(transactionID);
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

// A line to be put in date order, with its keys beside it so that sorting
// stays in one array.
struct Keyed {
    int64_t day;
    uint64_t idPrefix;
    const ReportLine* line;
};

// Lines in date order, ties by id: counted out by day, then each day's few
// lines sorted, which is much cheaper than one sort of them all. A span of
// days far wider than the lines falls back to the plain sort.
std::vector<const ReportLine*> inDateOrder(std::vector<Keyed> keyed) {
    const auto before = [](const Keyed& a, const Keyed& b) {
        if (a.day != b.day)
            return a.day < b.day;
        if (a.idPrefix != b.idPrefix)
            return a.idPrefix < b.idPrefix;
        return a.line->id < b.line->id;
    };
    const auto lines = [](const std::vector<Keyed>& sorted) {
        std::vector<const ReportLine*> result;
        result.reserve(sorted.size());
        for (const Keyed& entry : sorted)
            result.push_back(entry.line);
        return result;
    };
    if (keyed.size() < 2)
        return lines(keyed);
    int64_t first = keyed.front().day;
    int64_t last = first;
    for (const Keyed& entry : keyed) {
        first = std::min(first, entry.day);
        last = std::max(last, entry.day);
    }
    const auto width = static_cast<uint64_t>(last - first) + 1;
    if (width > 4 * keyed.size() + 65536) {
        std::sort(keyed.begin(), keyed.end(), before);
        return lines(keyed);
    }
    std::vector<uint32_t> starts(width + 1, 0);
    for (const Keyed& entry : keyed)
        ++starts[static_cast<std::size_t>(entry.day - first) + 1];
    for (std::size_t d = 1; d <= width; ++d)
        starts[d] += starts[d - 1];
    std::vector<Keyed> byDay(keyed.size());
    std::vector<uint32_t> next(starts.begin(), starts.end() - 1);
    for (const Keyed& entry : keyed)
        byDay[next[static_cast<std::size_t>(entry.day - first)]++] = entry;
    for (std::size_t d = 0; d < width; ++d) {
        if (starts[d + 1] - starts[d] > 1)
            std::sort(byDay.begin() + starts[d], byDay.begin() + starts[d + 1], before);
    }
    return lines(byDay);
}

const Merchant* filedMerchant(const LedgerTransaction& transaction, const Ledger& ledger) {
    return transaction.merchantID ? ledger.merchants.find(*transaction.merchantID) : nullptr;
}

}  // namespace

MerchantIdentity merchantIdentity(const LedgerTransaction& transaction, const Ledger& ledger) {
    if (const Merchant* merchant = filedMerchant(transaction, ledger))
        return {merchant->id.text(), merchant->name};
    const std::string key = MerchantKeys::of(transaction.rawDescription);
    return {"key:" + key, MerchantText::titleCase(key)};
}

std::string merchantIdentityID(const LedgerTransaction& transaction, const Ledger& ledger) {
    if (const Merchant* merchant = filedMerchant(transaction, ledger))
        return merchant->id.text();
    return "key:" + MerchantKeys::of(transaction.rawDescription);
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

    // The lines are held until the report is done: see reportLines.
    std::vector<SharedChunkLines> held;
    held.reserve(Transactions::chunkCount());
    reportLines().each(ledger.transactions,
                       [&](const SharedChunkLines& chunk) { held.push_back(chunk); });
    std::vector<Keyed> inSpan;
    for (const SharedChunkLines& chunk : held) {
        for (const ReportLine& line : chunk->lines) {
            auto slot = std::find_if(slots.begin(), slots.end(),
                                     [&](const AccountSlot& s) { return s.id == line.accountID; });
            if (slot == slots.end())
                continue;  // its account is gone: in no report
            if (slot->history)
                slot->history->add(line.date);
            if (!slot->included)
                continue;
            if (!filter.wholeHousehold && !filter.includes(*line.record, ledger))
                continue;
            slot->scoped = true;
            if (filter.span.start <= line.date && line.date <= filter.span.end)
                inSpan.push_back({line.day, line.idPrefix, &line});
        }
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
    const std::vector<const ReportLine*> ordered = inDateOrder(std::move(inSpan));

    const std::vector<std::string> monthKeys = filter.span.monthKeys();
    report.months.reserve(monthKeys.size());
    for (const auto& key : monthKeys)
        report.months.push_back(MonthLine{.monthKey = key});
    const int64_t firstMonth = int64_t{filter.span.start.year} * 12 + filter.span.start.month;
    const auto monthOf = [&](const ReportLine& line) -> MonthLine& {
        return report.months[static_cast<std::size_t>(line.month - firstMonth)];
    };

    // A category's gift test lowercases its name: done once per category.
    struct CategoryEntry {
        const LedgerCategory* category;
        bool isGifts;
    };
    std::unordered_map<Uuid, CategoryEntry> categoryIndex;
    for (const auto& category : ledger.categories) {
        categoryIndex.try_emplace(
            category.id,
            CategoryEntry{&category, text::lowercased(category.name) == kGiftsReceived});
    }
    const auto categoryEntryOf = [&](const std::optional<Uuid>& id) -> const CategoryEntry* {
        if (!id)
            return nullptr;
        const auto it = categoryIndex.find(*id);
        return it == categoryIndex.end() ? nullptr : &it->second;
    };
    const auto categoryOf = [&](const std::optional<Uuid>& id) -> const LedgerCategory* {
        const CategoryEntry* entry = categoryEntryOf(id);
        return entry ? entry->category : nullptr;
    };

    // A household files its lines under a few hundred merchants: each id is
    // looked up in the ledger once.
    std::unordered_map<Uuid, const Merchant*> merchantIndex;
    const auto payeeOf = [&](const ReportLine& line) -> Payee {
        if (line.key)
            return {nullptr, line.key};
        auto [it, inserted] = merchantIndex.try_emplace(*line.merchantID, nullptr);
        if (inserted)
            it->second = ledger.merchants.find(*line.merchantID);
        if (it->second)
            return {it->second, nullptr};
        // The merchant is gone: the line is paid to its bank text's key.
        return {nullptr, &MerchantKeys::held(line.record->rawDescription)};
    };

    // Keyed by the category, or by nullptr for "uncategorized".
    std::unordered_map<const LedgerCategory*, CategoryAccumulator> categories;
    MerchantTable incomeSources;
    MerchantTable spendingMerchants;
    std::vector<std::pair<const LedgerCategory*, int64_t>> pieces;
    int64_t aiFiledTotal = 0;

    for (std::size_t i = 0; i < ordered.size(); ++i) {
        if (i + kReadAhead < ordered.size()) {
            const ReportLine* next = ordered[i + kReadAhead];
            __builtin_prefetch(next);
            __builtin_prefetch(&next->key);
        }
        const ReportLine& line = *ordered[i];
        const int64_t amount = line.amount;
        if (line.pending) {
            ++report.pendingCount;
            report.pendingTotal = checked::add(report.pendingTotal, amount);
            continue;
        }
        if (line.aiFiled &&
            (line.kind == TransactionKind::expense || line.kind == TransactionKind::income)) {
            report.aiFiledIDs.push_back(line.id);
            aiFiledTotal = checked::add(aiFiledTotal, amount < 0 ? checked::neg(amount) : amount);
        }

        switch (line.kind) {
            case TransactionKind::unknown:
                ++report.unknownCount;
                report.unknownIDs.push_back(line.id);
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
                report.includedIDs.push_back(line.id);
                report.income = checked::add(report.income, amount);
                MonthLine& month = monthOf(line);
                month.income = checked::add(month.income, amount);
                const CategoryEntry* category = categoryEntryOf(line.categoryID);
                if (category && category->isGifts)
                    report.giftsReceived = checked::add(report.giftsReceived, amount);
                incomeSources.add(payeeOf(line), line.id, amount);
                break;
            }
            case TransactionKind::expense: {
                const int64_t spend = checked::neg(amount);
                report.includedIDs.push_back(line.id);
                report.spending = checked::add(report.spending, spend);
                MonthLine& month = monthOf(line);
                month.spending = checked::add(month.spending, spend);
                if (amount >= 1)
                    report.refunds = checked::add(report.refunds, amount);

                // A split's parts carry the money out as negative amounts, so
                // each part takes its own amount off its category's piece.
                pieces.clear();
                if (!line.hasSplits) {
                    pieces.emplace_back(categoryOf(line.categoryID), spend);
                } else {
                    for (const auto& split : *line.record->splits) {
                        const LedgerCategory* category = categoryOf(split.categoryID);
                        auto it = std::find_if(pieces.begin(), pieces.end(),
                                               [&](const auto& p) { return p.first == category; });
                        if (it == pieces.end())
                            pieces.emplace_back(category, checked::neg(split.amount));
                        else
                            it->second = checked::sub(it->second, split.amount);
                    }
                }
                const Payee payee = payeeOf(line);
                for (const auto& [category, piece] : pieces) {
                    CategoryAccumulator& accumulator = categories[category];
                    accumulator.amount = checked::add(accumulator.amount, piece);
                    if (piece < 0)
                        accumulator.refunds = checked::sub(accumulator.refunds, piece);
                    ++accumulator.count;
                    accumulator.transactionIDs.push_back(line.id);
                    accumulator.merchants.add(payee, line.id, piece);
                }
                spendingMerchants.add(payee, line.id, spend);
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
        const int64_t total = aiFiledTotal;
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
