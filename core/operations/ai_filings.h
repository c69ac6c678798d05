#pragma once

// What the local model may do to the ledger by itself, and how a person
// takes it over. A filing the model is sure of is kept apart as an AIFiling
// for its merchant key and reaches transactions only through the matcher,
// and only those nobody has filed: a person's own decisions, rules and
// learned merchants all come first, and a filing the person once turned
// down is never made again. Each run is one undoable step.
//
// Functions of a ledger value on the thread that owns it, like every other
// operation; missing ids are passed over.

#include <optional>
#include <string>
#include <vector>

#include "core/model/instant.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// One review group the model filed: the key its filing is stored under and
// what it said.
struct AIFilingRequest {
    std::vector<Uuid> ids;
    std::string key;
    std::optional<std::string> merchantName;
    TransactionKind kind = TransactionKind::unknown;
    std::optional<Uuid> categoryID;
    std::string reason;

    friend bool operator==(const AIFilingRequest&, const AIFilingRequest&) = default;
};

// Stores each request's filing under its key, unless the person rejected a
// filing for that key before, and files through the matcher every waiting
// transaction whose key the stored ones cover. One undoable step, "Filed by
// Local AI (n)", taking back the filings, the transactions and the
// merchants the run made; nothing at all when no filing was stored.
[[nodiscard]] LedgerDelta fileByAI(Ledger& ledger, const std::vector<AIFilingRequest>& requests,
                                   Instant now);

// "Looks right": the model's filing of these transactions becomes the
// person's own, remembered for the merchant, one undoable step per filing.
// Transactions the model didn't file, or a person has seen since, are
// passed over.
[[nodiscard]] LedgerDelta confirmAIFiled(Ledger& ledger, const std::vector<Uuid>& ids, Instant now);

struct MerchantRename {
    Uuid id;
    std::string name;

    friend bool operator==(const MerchantRename&, const MerchantRename&) = default;
};

// Gives merchants the tidier names found for them, one undoable step,
// "Tidy merchant names (n)". A name a person set stays; so does one whose
// new name another merchant already goes by.
[[nodiscard]] LedgerDelta tidyMerchantNames(Ledger& ledger,
                                            const std::vector<MerchantRename>& renames,
                                            Instant now);

}  // namespace copperwick
