#include "core/model/ledger_delta.h"

#include <algorithm>

namespace copperwick {

void LedgerDelta::change(RecordKind kind, std::string id) {
    if (auto it = deleted.find(kind); it != deleted.end())
        it->second.erase(id);
    changed[kind].insert(std::move(id));
}

void LedgerDelta::remove(RecordKind kind, std::string id) {
    if (auto it = changed.find(kind); it != changed.end())
        it->second.erase(id);
    deleted[kind].insert(std::move(id));
}

void LedgerDelta::merge(const LedgerDelta& later) {
    for (const auto& [kind, ids] : later.changed) {
        for (const auto& id : ids)
            change(kind, id);
    }
    for (const auto& [kind, ids] : later.deleted) {
        for (const auto& id : ids)
            remove(kind, id);
    }
    sourceLines.insert(sourceLines.end(), later.sourceLines.begin(), later.sourceLines.end());
    deletedSourceBatches.insert(deletedSourceBatches.end(), later.deletedSourceBatches.begin(),
                                later.deletedSourceBatches.end());
}

bool LedgerDelta::isEmpty() const {
    const auto none = [](const auto& byKind) {
        return std::all_of(byKind.begin(), byKind.end(),
                           [](const auto& entry) { return entry.second.empty(); });
    };
    return none(changed) && none(deleted) && sourceLines.empty() && deletedSourceBatches.empty();
}

bool LedgerDelta::changes(RecordKind kind) const {
    const auto it = changed.find(kind);
    return it != changed.end() && !it->second.empty();
}

}  // namespace copperwick
