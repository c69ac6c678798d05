#include "core/operations/cash_links.h"

#include <algorithm>

#include "core/model/checked.h"

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

std::map<Uuid, int64_t> walletBalances(const Ledger& ledger) {
    std::map<Uuid, int64_t> balances;
    for (const Account& account : ledger.accounts) {
        if (account.type == AccountType::cash)
            balances[account.id] = 0;
    }
    if (balances.empty())
        return balances;
    for (const LedgerTransaction& line : ledger.transactions) {
        if (!line.isActive())
            continue;
        if (const auto found = balances.find(line.accountID); found != balances.end())
            found->second = checked::add(found->second, line.amount);
    }
    return balances;
}

}  // namespace copperwick
