#include "core/reports/payment_lines.h"

#include "core/model/chunk_summaries.h"
#include "core/reports/payment_service_detection.h"

namespace copperwick::PaymentLines {

namespace {

using Transactions = SharedMap<Uuid, LedgerTransaction>;

struct Line {
    const LedgerTransaction* transaction;
    bool mayNameService;
};

ChunkSummaries<Transactions, std::vector<Line>>& lines() {
    static ChunkSummaries<Transactions, std::vector<Line>> shared(
        [](const Transactions::ChunkTable& chunk) {
            std::vector<Line> found;
            for (const auto& entry : chunk) {
                const LedgerTransaction& transaction = *entry.second;
                const bool service = !surelyNamesNoService(transaction.rawDescription);
                if (service || transaction.kind == TransactionKind::transfer)
                    found.push_back({&transaction, service});
            }
            return found;
        });
    return shared;
}

}  // namespace

std::vector<const LedgerTransaction*> candidates(const Ledger& ledger, bool withTransfers) {
    std::vector<const LedgerTransaction*> found;
    lines().each(ledger.transactions, [&](const std::vector<Line>& chunk) {
        for (const Line& line : chunk) {
            if (line.mayNameService || withTransfers)
                found.push_back(line.transaction);
        }
    });
    return found;
}

}  // namespace copperwick::PaymentLines
