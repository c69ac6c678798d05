#include "cli/transaction_query.h"

#include "core/model/text.h"

namespace copperwick::cli {

namespace {

std::string nameOrEmpty(const auto* record) {
    return record ? record->name : std::string();
}

// The bank text, merchant, category or note holds the search.
bool matchesSearch(const Ledger& ledger, const LedgerTransaction& transaction,
                   std::string_view loweredSearch) {
    const auto haystack = text::lowercased(
        transaction.rawDescription + "\n" + nameOrEmpty(ledger.merchant(transaction.merchantID)) +
        "\n" + nameOrEmpty(ledger.category(transaction.categoryID)) + "\n" + transaction.note);
    return haystack.find(loweredSearch) != std::string::npos;
}

}  // namespace

std::vector<const LedgerTransaction*> TransactionQuery::select(const Ledger& ledger) const {
    const std::string lowered = text::lowercased(search);
    std::vector<const LedgerTransaction*> lines;
    for (const LedgerTransaction* transaction : ledger.activeTransactions()) {
        if ((accountID && transaction->accountID != *accountID) ||
            (from && transaction->date < *from) || (to && transaction->date > *to) ||
            (review && !transaction->needsReview()))
            continue;
        if (report &&
            (!report->span.contains(transaction->date) || !report->includes(*transaction, ledger)))
            continue;
        if (!lowered.empty() && !matchesSearch(ledger, *transaction, lowered))
            continue;
        lines.push_back(transaction);
    }
    return lines;
}

}  // namespace copperwick::cli
