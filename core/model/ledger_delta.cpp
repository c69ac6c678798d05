#include "core/model/ledger_delta.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace copperwick {

RecordID::RecordID(std::string text) {
    if (const auto id = Uuid::parse(text); id && id->text() == text) {
        m_uuid = *id;
        m_isUuid = true;
    } else {
        m_text = std::move(text);
    }
}

std::vector<RecordID> RecordIDs::sorted() const {
    // Nearly every set is all UUIDs, a large import's 100,000 of them among
    // them: sorting the 16-byte values and making the ids afterwards moves a
    // fraction of what sorting the ids themselves would.
    std::vector<Uuid> uuids;
    uuids.reserve(m_ids.size());
    for (const auto& id : m_ids) {
        const auto uuid = id.uuid();
        if (!uuid)
            break;
        uuids.push_back(*uuid);
    }
    if (uuids.size() == m_ids.size()) {
        std::sort(uuids.begin(), uuids.end());
        return {uuids.begin(), uuids.end()};
    }
    std::vector<RecordID> ids(m_ids.begin(), m_ids.end());
    std::sort(ids.begin(), ids.end());
    return ids;
}

std::vector<std::string> RecordIDs::texts() const {
    std::vector<std::string> texts;
    texts.reserve(m_ids.size());
    for (const auto& id : sorted())
        texts.push_back(id.text());
    return texts;
}

void LedgerDelta::change(RecordKind kind, RecordID id) {
    if (auto it = deleted.find(kind); it != deleted.end())
        it->second.erase(id);
    changed[kind].insert(std::move(id));
}

void LedgerDelta::remove(RecordKind kind, RecordID id) {
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

void LedgerDelta::merge(LedgerDelta&& later) {
    // The ids move across as they are: an import's rematch names every one
    // of its hundred thousand lines again, and copying each id text costs
    // more than the matching that produced it.
    const auto fold = [](auto& into, auto& outOf, auto& from) {
        for (auto& [kind, ids] : from) {
            if (ids.empty())
                continue;
            if (const auto it = outOf.find(kind); it != outOf.end() && !it->second.empty()) {
                for (const auto& id : ids)
                    it->second.erase(id);
            }
            auto& target = into[kind];
            if (target.empty())
                target = std::move(ids);
            else
                target.merge(ids);
        }
    };
    fold(changed, deleted, later.changed);
    fold(deleted, changed, later.deleted);
    if (sourceLines.empty()) {
        sourceLines = std::move(later.sourceLines);
    } else {
        sourceLines.insert(sourceLines.end(), std::make_move_iterator(later.sourceLines.begin()),
                           std::make_move_iterator(later.sourceLines.end()));
    }
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
