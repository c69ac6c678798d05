#pragma once

// What one operation changed, by record id: the store writes exactly these
// records, taking their content from the ledger at the moment of the save.
//
// An id is the text the store keys records by: an upper-case UUID, a layout's
// own id, a filing's key, or "settings". For one kind an id stands in at most
// one of `changed` and `deleted`; the last word wins.

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/enum_text.h"
#include "core/model/uuid.h"

namespace copperwick {

// The kinds of record in the data file, in the order a save visits them.
enum class RecordKind {
    person,
    account,
    category,
    merchant,
    rule,
    transaction,
    batch,
    budget,
    change,
    profile,
    aiFiling,
    settings,
};

template <>
struct EnumTraits<RecordKind> {
    static constexpr std::array<std::pair<RecordKind, std::string_view>, 12> cases{{
        {RecordKind::person, "person"},
        {RecordKind::account, "account"},
        {RecordKind::category, "category"},
        {RecordKind::merchant, "merchant"},
        {RecordKind::rule, "rule"},
        {RecordKind::transaction, "transaction"},
        {RecordKind::batch, "batch"},
        {RecordKind::budget, "budget"},
        {RecordKind::change, "change"},
        {RecordKind::profile, "profile"},
        {RecordKind::aiFiling, "aiFiling"},
        {RecordKind::settings, "settings"},
    }};
};

// One raw line of an imported file, kept beside the records.
struct SourceLine {
    Uuid batchID;
    int64_t line = 0;
    std::string text;

    friend bool operator==(const SourceLine&, const SourceLine&) = default;
};

struct LedgerDelta {
    static constexpr std::string_view kSettingsID = "settings";

    std::map<RecordKind, std::set<std::string>> changed;
    std::map<RecordKind, std::set<std::string>> deleted;
    std::vector<SourceLine> sourceLines;
    std::vector<Uuid> deletedSourceBatches;

    void change(RecordKind kind, std::string id);
    void change(RecordKind kind, const Uuid& id) { change(kind, id.text()); }
    // `delete` in the data file's sense; the word itself is taken in C++.
    void remove(RecordKind kind, std::string id);
    void remove(RecordKind kind, const Uuid& id) { remove(kind, id.text()); }

    // Folds a later delta into this one: its word on an id wins.
    void merge(const LedgerDelta& later);
    void merge(LedgerDelta&& later);

    [[nodiscard]] bool isEmpty() const;
    [[nodiscard]] bool changes(RecordKind kind) const;

    friend bool operator==(const LedgerDelta&, const LedgerDelta&) = default;
};

}  // namespace copperwick
