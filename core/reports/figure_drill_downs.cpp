#include "core/reports/figure_drill_downs.h"

#include <unordered_set>

#include "core/model/checked.h"
#include "core/model/text.h"

namespace copperwick::FigureDrillDowns {

namespace {

// The name the report engine counts gifts received under, compared lowercased.
constexpr std::string_view kGiftsReceived = "gifts received";

template <typename Keep>
std::vector<Uuid> includedWhere(const Report& report, Keep keep) {
    std::vector<Uuid> ids;
    for (const Uuid& id : report.includedIDs) {
        if (keep(id))
            ids.push_back(id);
    }
    return ids;
}

}  // namespace

std::vector<Uuid> spending(const Report& report) {
    std::unordered_set<Uuid> spent;
    for (const auto& line : report.categories)
        spent.insert(line.transactionIDs.begin(), line.transactionIDs.end());
    return includedWhere(report, [&](const Uuid& id) { return spent.contains(id); });
}

std::vector<Uuid> income(const Report& report, const Ledger& ledger, bool gifts) {
    std::unordered_set<Uuid> received;
    for (const auto& line : report.incomeSources)
        received.insert(line.transactionIDs.begin(), line.transactionIDs.end());
    return includedWhere(report, [&](const Uuid& id) {
        if (!received.contains(id))
            return false;
        const LedgerTransaction* line = ledger.transaction(id);
        const LedgerCategory* category =
            line && line->categoryID ? ledger.category(*line->categoryID) : nullptr;
        const bool isGift = category && text::lowercased(category->name) == kGiftsReceived;
        return isGift == gifts;
    });
}

std::vector<Uuid> allIncome(const Report& report) {
    std::unordered_set<Uuid> received;
    for (const auto& line : report.incomeSources)
        received.insert(line.transactionIDs.begin(), line.transactionIDs.end());
    return includedWhere(report, [&](const Uuid& id) { return received.contains(id); });
}

std::vector<Uuid> category(const Report& report, const Uuid& categoryID) {
    for (const auto& line : report.categories) {
        if (line.categoryID == categoryID)
            return line.transactionIDs;
    }
    return {};
}

std::vector<Uuid> month(const Report& report, const Ledger& ledger, std::string_view monthKey) {
    return includedWhere(report, [&](const Uuid& id) {
        const LedgerTransaction* line = ledger.transaction(id);
        return line && line->date.monthKey() == monthKey;
    });
}

int64_t net(const std::vector<Uuid>& ids, const Ledger& ledger) {
    int64_t sum = 0;
    for (const Uuid& id : ids) {
        if (const LedgerTransaction* line = ledger.transaction(id))
            sum = checked::add(sum, line->amount);
    }
    return sum;
}

int64_t categoryNet(const std::vector<Uuid>& ids, const Ledger& ledger,
                    const std::optional<Uuid>& categoryID) {
    // A part filed under a category the ledger no longer has is
    // uncategorized, as the report files it.
    const auto filedHere = [&](const Uuid& partCategory) {
        const LedgerCategory* category = ledger.category(partCategory);
        return categoryID ? category && category->id == *categoryID : !category;
    };
    int64_t sum = 0;
    for (const Uuid& id : ids) {
        const LedgerTransaction* line = ledger.transaction(id);
        if (!line)
            continue;
        if (!line->splits || line->splits->empty()) {
            sum = checked::add(sum, line->amount);
            continue;
        }
        for (const TransactionSplit& part : *line->splits) {
            if (filedHere(part.categoryID))
                sum = checked::add(sum, part.amount);
        }
    }
    return sum;
}

}  // namespace copperwick::FigureDrillDowns
