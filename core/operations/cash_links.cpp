#include "core/operations/cash_links.h"

#include <algorithm>

namespace copperwick {

std::vector<const LedgerTransaction*> linkableBankLines(const Ledger& ledger,
                                                        const Uuid& bankAccountID,
                                                        int64_t walletAmount) {
    std::vector<const LedgerTransaction*> lines;
    if (walletAmount == 0)
        return lines;
    for (const LedgerTransaction& line : ledger.transactions) {
        if (line.accountID == bankAccountID && line.isActive() &&
            line.status == TransactionStatus::posted && !line.transferPairID &&
            line.amount == -walletAmount)
            lines.push_back(&line);
    }
    std::sort(lines.begin(), lines.end(), [](const auto* left, const auto* right) {
        if (left->date != right->date)
            return right->date < left->date;
        return left->id.text() < right->id.text();
    });
    return lines;
}

}  // namespace copperwick
