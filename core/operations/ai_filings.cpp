#include "core/operations/ai_filings.h"

#include <algorithm>
#include <map>

#include "core/matching/merchant_key_index.h"
#include "core/matching/merchant_keys.h"
#include "core/model/text.h"
#include "core/operations/change_history.h"
#include "core/operations/classification.h"

namespace copperwick {

LedgerDelta fileByAI(Ledger& ledger, const std::vector<AIFilingRequest>& requests, Instant now) {
    const Ledger original = ledger;
    LedgerDelta delta;
    std::vector<std::string> written;
    for (const auto& request : requests) {
        if (request.key.empty())
            continue;
        // A person's earlier "no" always wins.
        if (const AIFiling* existing = ledger.aiFilings.find(request.key);
            existing && existing->rejected)
            continue;
        ledger.aiFilings.set(request.key, AIFiling{.key = request.key,
                                                   .merchantName = request.merchantName,
                                                   .categoryID = request.categoryID,
                                                   .kind = request.kind,
                                                   .reason = request.reason,
                                                   .date = now,
                                                   .rejected = false});
        delta.change(RecordKind::aiFiling, request.key);
        if (std::find(written.begin(), written.end(), request.key) == written.end())
            written.push_back(request.key);
    }
    if (written.empty())
        return {};

    std::vector<Uuid> waiting;
    for (const LedgerTransaction* transaction :
         MerchantKeyIndex::covered(ledger.transactions, written)) {
        if (transaction->isActive() && isWaiting(transaction->review))
            waiting.push_back(transaction->id);
    }
    delta.merge(rematch(ledger, waiting));
    const auto filed = std::count_if(waiting.begin(), waiting.end(), [&](const Uuid& id) {
        const LedgerTransaction* transaction = ledger.transaction(id);
        return transaction && transaction->method == MatchMethod::ai;
    });
    delta.merge(record(
        ledger,
        changeSetFor(original, delta, "Filed by Local AI (" + std::to_string(filed) + ")", now)));
    return delta;
}

LedgerDelta confirmAIFiled(Ledger& ledger, const std::vector<Uuid>& ids, Instant now) {
    // By filing key, in key order, so that the steps come out the same way
    // every time.
    std::map<std::string, std::vector<Uuid>> byFiling;
    for (const auto& id : ids) {
        const LedgerTransaction* transaction = ledger.transaction(id);
        if (!transaction || transaction->method != MatchMethod::ai ||
            transaction->review != ReviewState::automatic)
            continue;
        if (auto key = ledger.aiFilingKey(MerchantKeys::of(transaction->rawDescription))) {
            auto& members = byFiling[std::move(*key)];
            if (std::find(members.begin(), members.end(), id) == members.end())
                members.push_back(id);
        }
    }
    LedgerDelta delta;
    for (const auto& [key, members] : byFiling) {
        const AIFiling* filing = ledger.aiFilings.find(key);
        if (!filing)
            continue;
        std::optional<std::string> merchantName;
        if (filing->merchantName && !text::trimmed(*filing->merchantName).empty())
            merchantName = filing->merchantName;
        // A category deleted since filed nothing; asking for it now would
        // read as the person disagreeing with the model.
        std::optional<Uuid> categoryID;
        if (ledger.category(filing->categoryID))
            categoryID = filing->categoryID;
        delta.merge(classify(ledger,
                             Classification{.ids = members,
                                            .merchantName = std::move(merchantName),
                                            .kind = filing->kind,
                                            .categoryID = categoryID,
                                            .remember = true,
                                            .label = "Keep Local AI filing"},
                             now));
    }
    return delta;
}

LedgerDelta tidyMerchantNames(Ledger& ledger, const std::vector<MerchantRename>& renames,
                              Instant now) {
    const Ledger original = ledger;
    LedgerDelta delta;
    std::size_t count = 0;
    for (const auto& rename : renames) {
        const Merchant* merchant = ledger.merchant(rename.id);
        if (!merchant || merchant->nameLocked || merchant->name == rename.name ||
            text::trimmed(rename.name).empty())
            continue;
        // Two merchants of one name couldn't be told apart.
        if (const Merchant* namesake = ledger.merchantNamed(rename.name);
            namesake && namesake->id != rename.id)
            continue;
        ledger.merchants.update(rename.id, [&](Merchant& m) { m.name = rename.name; });
        delta.change(RecordKind::merchant, rename.id);
        ++count;
    }
    if (count == 0)
        return {};
    delta.merge(record(
        ledger,
        changeSetFor(original, delta, "Tidy merchant names (" + std::to_string(count) + ")", now)));
    return delta;
}

}  // namespace copperwick
