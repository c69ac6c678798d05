#pragma once

// What one operation changed, by record id: the store writes exactly these
// records, taking their content from the ledger at the moment of the save.
//
// An id is what the store keys records by: a UUID, a layout's own id, a
// filing's key, or "settings". For one kind an id stands in at most
// one of `changed` and `deleted`; the last word wins.

#include <cstdint>
#include <initializer_list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
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

// A record's key in the data file. Most records are keyed by a UUID, held as
// its sixteen bytes: an import names a hundred thousand of them, and their
// texts would cost an allocation and a long comparison apiece. A text that is
// a canonical UUID is held as one, so both spellings are the same key.
class RecordID {
  public:
    RecordID(const Uuid& id) : m_uuid(id), m_isUuid(true) {}  // NOLINT: a UUID is a record id
    RecordID(std::string text);                               // NOLINT: so is a key's text
    RecordID(std::string_view text) : RecordID(std::string(text)) {}  // NOLINT
    RecordID(const char* text) : RecordID(std::string(text)) {}       // NOLINT

    [[nodiscard]] std::string text() const { return m_isUuid ? m_uuid.text() : m_text; }
    // The UUID it is, if it is one.
    [[nodiscard]] std::optional<Uuid> uuid() const {
        return m_isUuid ? std::optional<Uuid>(m_uuid) : std::nullopt;
    }

    friend bool operator==(const RecordID&, const RecordID&) = default;
    // The order of the texts, which for two UUIDs is the order of their bytes.
    friend bool operator<(const RecordID& a, const RecordID& b) {
        if (a.m_isUuid && b.m_isUuid)
            return a.m_uuid < b.m_uuid;
        return a.text() < b.text();
    }
    [[nodiscard]] std::size_t hash() const {
        return m_isUuid ? std::hash<Uuid>{}(m_uuid) : std::hash<std::string>{}(m_text);
    }

  private:
    Uuid m_uuid;
    std::string m_text;  // when it isn't a UUID
    bool m_isUuid = false;
};

}  // namespace copperwick

template <>
struct std::hash<copperwick::RecordID> {
    std::size_t operator()(const copperwick::RecordID& id) const noexcept { return id.hash(); }
};

namespace copperwick {

// The ids of one kind that a delta names. Kept unordered while an operation
// adds to it; whoever needs an order, the store above all, asks for `sorted`.
class RecordIDs {
  public:
    using Set = std::unordered_set<RecordID>;
    using const_iterator = Set::const_iterator;

    RecordIDs() = default;
    RecordIDs(std::initializer_list<RecordID> ids) : m_ids(ids) {}

    bool insert(RecordID id) { return m_ids.insert(std::move(id)).second; }
    std::size_t erase(const RecordID& id) { return m_ids.erase(id); }
    void merge(RecordIDs& other) { m_ids.merge(other.m_ids); }
    void reserve(std::size_t count) { m_ids.reserve(count); }

    [[nodiscard]] bool contains(const RecordID& id) const { return m_ids.contains(id); }
    [[nodiscard]] std::size_t size() const { return m_ids.size(); }
    [[nodiscard]] bool empty() const { return m_ids.empty(); }
    [[nodiscard]] const_iterator begin() const { return m_ids.begin(); }
    [[nodiscard]] const_iterator end() const { return m_ids.end(); }

    // In the order of their texts.
    [[nodiscard]] std::vector<RecordID> sorted() const;
    [[nodiscard]] std::vector<std::string> texts() const;

    friend bool operator==(const RecordIDs&, const RecordIDs&) = default;

  private:
    Set m_ids;
};

struct LedgerDelta {
    static constexpr std::string_view kSettingsID = "settings";

    std::map<RecordKind, RecordIDs> changed;
    std::map<RecordKind, RecordIDs> deleted;
    std::vector<SourceLine> sourceLines;
    std::vector<Uuid> deletedSourceBatches;

    void change(RecordKind kind, RecordID id);
    // `delete` in the data file's sense; the word itself is taken in C++.
    void remove(RecordKind kind, RecordID id);

    // Folds a later delta into this one: its word on an id wins.
    void merge(const LedgerDelta& later);
    void merge(LedgerDelta&& later);

    [[nodiscard]] bool isEmpty() const;
    [[nodiscard]] bool changes(RecordKind kind) const;

    friend bool operator==(const LedgerDelta&, const LedgerDelta&) = default;
};

}  // namespace copperwick
