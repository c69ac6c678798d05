#pragma once

// The persisted undo record of one operation: full snapshots of what it
// changed and the ids of what it created, so that undo can put every record
// back exactly as it was.

#include <string>
#include <vector>

#include "core/model/ai_filing.h"
#include "core/model/instant.h"
#include "core/model/ledger_transaction.h"
#include "core/model/merchant.h"
#include "core/model/uuid.h"

namespace copperwick {

struct ChangeSet {
    Uuid id;
    Instant date;
    std::string label;  // what the Undo command shows
    std::vector<LedgerTransaction> before;
    std::vector<Merchant> merchantsBefore;
    std::vector<Uuid> createdMerchantIDs;
    std::vector<Uuid> createdRuleIDs;
    std::vector<std::string> createdAIFilingKeys;
    std::vector<AIFiling> aiFilingsBefore;
    std::vector<Uuid> createdTransactionIDs;

    friend bool operator==(const ChangeSet&, const ChangeSet&) = default;
};

}  // namespace copperwick
