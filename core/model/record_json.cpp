#include "core/model/record_json.h"

#include <charconv>
#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include <boost/json/monotonic_resource.hpp>
#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/static_resource.hpp>

#include "core/model/enum_text.h"
#include "core/model/transaction_reader.h"

namespace copperwick::record_json {

namespace json = boost::json;

namespace {

// Thrown by the readers below and caught once per record in fromJSON: a bad
// record is rare, and this keeps every field read a single line.
struct DecodeError {
    std::string message;
};

[[noreturn]] void fail(std::string message) {
    throw DecodeError{std::move(message)};
}

// ---- Reading ------------------------------------------------------------

void read(const json::value& v, std::string& out) {
    if (!v.is_string())
        fail("Expected a string");
    out.assign(v.get_string().data(), v.get_string().size());
}

void read(const json::value& v, bool& out) {
    if (!v.is_bool())
        fail("Expected a boolean");
    out = v.get_bool();
}

void read(const json::value& v, int64_t& out) {
    if (v.is_int64()) {
        out = v.get_int64();
    } else if (v.is_uint64() &&
               v.get_uint64() <= static_cast<uint64_t>(std::numeric_limits<int64_t>::max())) {
        out = static_cast<int64_t>(v.get_uint64());
    } else {
        fail("Expected an integer");
    }
}

void read(const json::value& v, int& out) {
    int64_t wide = 0;
    read(v, wide);
    if (wide < std::numeric_limits<int>::min() || wide > std::numeric_limits<int>::max()) {
        fail("Integer out of range");
    }
    out = static_cast<int>(wide);
}

void read(const json::value& v, Instant& out) {
    if (v.is_double()) {
        out.secondsSinceReference = v.get_double();
    } else if (v.is_int64()) {
        out.secondsSinceReference = static_cast<double>(v.get_int64());
    } else if (v.is_uint64()) {
        out.secondsSinceReference = static_cast<double>(v.get_uint64());
    } else {
        fail("Expected a number of seconds");
    }
}

void read(const json::value& v, Uuid& out) {
    if (!v.is_string())
        fail("Expected a UUID string");
    const auto& s = v.get_string();
    auto id = Uuid::parse(std::string_view(s.data(), s.size()));
    if (!id)
        fail("Invalid UUID " + std::string(s.data(), s.size()));
    out = *id;
}

void read(const json::value& v, LocalDate& out) {
    if (!v.is_string())
        fail("Expected a date string");
    const auto& s = v.get_string();
    auto date = LocalDate::fromISO(std::string_view(s.data(), s.size()));
    if (!date)
        fail("Invalid date " + std::string(s.data(), s.size()));
    out = *date;
}

template <typename E>
requires std::is_enum_v<E>
void read(const json::value& v, E& out) {
    if (!v.is_string())
        fail("Expected an enumeration string");
    const auto& s = v.get_string();
    auto value = enumFromRaw<E>(std::string_view(s.data(), s.size()));
    if (!value)
        fail("Unknown value " + std::string(s.data(), s.size()));
    out = *value;
}

template <typename T>
void read(const json::value& v, std::vector<T>& out);
template <typename T>
void read(const json::value& v, std::map<std::string, T>& out);
void read(const json::value& v, SpendingAssignment& out);
template <typename T>
requires(!std::is_enum_v<T>) void read(const json::value& v, T& out);

// Fields of one JSON object, read by name.
class Fields {
  public:
    explicit Fields(const json::value& v) {
        if (!v.is_object())
            fail("Expected an object");
        m_object = &v.get_object();
    }

    template <typename T>
    T required(std::string_view key) const {
        const json::value* v = present(key);
        if (!v)
            fail("Key not found: " + std::string(key));
        return readField<T>(key, *v);
    }

    template <typename T>
    std::optional<T> optional(std::string_view key) const {
        const json::value* v = present(key);
        if (!v)
            return std::nullopt;
        return readField<T>(key, *v);
    }

    template <typename T>
    T orDefault(std::string_view key, T fallback) const {
        auto value = optional<T>(key);
        return value ? std::move(*value) : std::move(fallback);
    }

  private:
    // Null counts as absent, like a missing key.
    // Records are read in the order they are written, so the next key in the
    // object is almost always the one asked for; only a miss pays for a search.
    const json::value* present(std::string_view key) const {
        const json::value* v = nullptr;
        if (m_next < m_object->size()) {
            const auto& entry = m_object->begin()[m_next];
            if (entry.key() == key) {
                v = &entry.value();
                ++m_next;
            }
        }
        if (!v)
            v = m_object->if_contains(key);
        return v && !v->is_null() ? v : nullptr;
    }

    template <typename T>
    static T readField(std::string_view key, const json::value& v) {
        T out{};
        try {
            read(v, out);
        } catch (DecodeError& error) {
            error.message = std::string(key) + ": " + error.message;
            throw;
        }
        return out;
    }

    const json::object* m_object = nullptr;
    mutable std::size_t m_next = 0;
};

template <typename T>
void read(const json::value& v, std::vector<T>& out) {
    if (!v.is_array())
        fail("Expected an array");
    const auto& array = v.get_array();
    out.clear();
    out.reserve(array.size());
    for (const auto& element : array) {
        T item{};
        read(element, item);
        out.push_back(std::move(item));
    }
}

template <typename T>
void read(const json::value& v, std::map<std::string, T>& out) {
    if (!v.is_object())
        fail("Expected an object");
    out.clear();
    for (const auto& [key, element] : v.get_object()) {
        T item{};
        read(element, item);
        out.insert_or_assign(std::string(key), std::move(item));
    }
}

void read(const json::value& v, SpendingAssignment& out) {
    if (!v.is_object())
        fail("Expected an assignment object");
    const auto& object = v.get_object();
    if (object.size() != 1)
        fail("An assignment has exactly one case");
    const auto& [key, payload] = *object.begin();
    if (!payload.is_object())
        fail("Expected an assignment payload object");
    if (key == "person") {
        out = SpendingAssignment::person(Fields(payload).required<Uuid>("_0"));
    } else if (key == "shared") {
        out = SpendingAssignment::shared();
    } else if (key == "unassigned") {
        out = SpendingAssignment::unassigned();
    } else {
        fail("Unknown assignment " + std::string(key));
    }
}

// Records are read through their own decode function, declared by type.
template <typename T>
T decodeObject(const Fields& f);

template <typename T>
requires(!std::is_enum_v<T>) void read(const json::value& v, T& out) {
    out = decodeObject<T>(Fields(v));
}

template <>
Suggestion decodeObject<Suggestion>(const Fields& f) {
    Suggestion s;
    s.merchantName = f.optional<std::string>("merchantName");
    s.categoryID = f.optional<Uuid>("categoryID");
    s.kind = f.required<TransactionKind>("kind");
    s.source = f.required<MatchMethod>("source");
    s.reason = f.required<std::string>("reason");
    return s;
}

template <>
TransactionDetails decodeObject<TransactionDetails>(const Fields& f) {
    return {f.required<LocalDate>("date"), f.required<int64_t>("amount"),
            f.required<std::string>("description")};
}

template <>
TransactionRevision decodeObject<TransactionRevision>(const Fields& f) {
    return {f.required<Uuid>("id"), f.required<Instant>("changedAt"),
            f.required<TransactionDetails>("before"), f.required<TransactionDetails>("after"),
            f.required<std::string>("reason")};
}

template <>
TransactionSplit decodeObject<TransactionSplit>(const Fields& f) {
    return {f.required<Uuid>("id"), f.required<Uuid>("categoryID"), f.required<int64_t>("amount"),
            f.required<std::string>("note")};
}

template <>
LedgerTransaction decodeObject<LedgerTransaction>(const Fields& f) {
    LedgerTransaction t;
    t.id = f.required<Uuid>("id");
    t.accountID = f.required<Uuid>("accountID");
    t.batchID = f.optional<Uuid>("batchID");
    t.sourceLine = f.required<int64_t>("sourceLine");
    t.date = f.required<LocalDate>("date");
    t.postedDate = f.optional<LocalDate>("postedDate");
    t.amount = f.required<int64_t>("amount");
    t.currency = f.required<std::string>("currency");
    t.rawDescription = f.required<std::string>("rawDescription");
    t.bankMerchant = f.optional<std::string>("bankMerchant");
    t.bankCategory = f.optional<std::string>("bankCategory");
    t.checkNumber = f.optional<std::string>("checkNumber");
    t.status = f.required<TransactionStatus>("status");
    t.fingerprint = f.required<std::string>("fingerprint");
    t.occurrence = f.required<int64_t>("occurrence");
    t.kind = f.required<TransactionKind>("kind");
    t.categoryID = f.optional<Uuid>("categoryID");
    t.merchantID = f.optional<Uuid>("merchantID");
    t.method = f.required<MatchMethod>("method");
    t.evidence = f.required<std::string>("evidence");
    t.review = f.required<ReviewState>("review");
    t.suggestion = f.optional<Suggestion>("suggestion");
    t.transferPairID = f.optional<Uuid>("transferPairID");
    t.supersededBy = f.optional<Uuid>("supersededBy");
    t.voided = f.required<bool>("voided");
    t.note = f.required<std::string>("note");
    t.spendingAssignment = f.optional<SpendingAssignment>("spendingAssignment");
    t.inheritedAssignment = f.optional<SpendingAssignment>("inheritedAssignment");
    t.cardIdentifier = f.optional<std::string>("cardIdentifier");
    t.entrySource = f.optional<TransactionEntrySource>("entrySource");
    t.originalDetails = f.optional<TransactionDetails>("originalDetails");
    t.revisions = f.optional<std::vector<TransactionRevision>>("revisions");
    t.splits = f.optional<std::vector<TransactionSplit>>("splits");
    t.externalID = f.optional<std::string>("externalID");
    return t;
}

template <>
Person decodeObject<Person>(const Fields& f) {
    return {f.required<Uuid>("id"), f.required<std::string>("name"),
            f.required<std::vector<std::string>>("bankNames"),
            f.optional<int64_t>("monthlyAllowance")};
}

template <>
Account decodeObject<Account>(const Fields& f) {
    Account a(f.required<Uuid>("id"), f.required<std::string>("name"),
              f.required<AccountType>("type"), f.optional<Uuid>("personID"),
              f.optional<std::vector<Uuid>>("userIDs"));
    a.currency = f.orDefault<std::string>("currency", "USD");
    a.last4 = f.optional<std::string>("last4");
    a.profileID = f.optional<std::string>("profileID");
    a.flipSigns = f.orDefault("flipSigns", false);
    a.isArchived = f.orDefault("isArchived", false);
    a.rarelyUsed = f.orDefault("rarelyUsed", false);
    a.upToDateThrough = f.optional<LocalDate>("upToDateThrough");
    a.historyStartsOn = f.optional<LocalDate>("historyStartsOn");
    a.isUnassigned = f.orDefault("isUnassigned", false);
    a.cardAssignments =
        f.orDefault<std::map<std::string, SpendingAssignment>>("cardAssignments", {});
    return a;
}

template <>
LedgerCategory decodeObject<LedgerCategory>(const Fields& f) {
    return {f.required<Uuid>("id"), f.required<std::string>("name"),
            f.required<CategoryGroup>("group"), f.required<int>("colorIndex")};
}

template <>
Merchant decodeObject<Merchant>(const Fields& f) {
    Merchant m;
    m.id = f.required<Uuid>("id");
    m.name = f.required<std::string>("name");
    m.categoryID = f.optional<Uuid>("categoryID");
    m.kind = f.optional<TransactionKind>("kind");
    m.keys = f.orDefault<std::vector<std::string>>("keys", {});
    m.nameLocked = f.orDefault("nameLocked", false);
    return m;
}

template <>
AIFiling decodeObject<AIFiling>(const Fields& f) {
    AIFiling a;
    a.key = f.required<std::string>("key");
    a.merchantName = f.optional<std::string>("merchantName");
    a.categoryID = f.optional<Uuid>("categoryID");
    a.kind = f.required<TransactionKind>("kind");
    a.reason = f.required<std::string>("reason");
    a.date = f.required<Instant>("date");
    a.rejected = f.required<bool>("rejected");
    return a;
}

template <>
Rule decodeObject<Rule>(const Fields& f) {
    Rule r;
    r.id = f.required<Uuid>("id");
    r.name = f.required<std::string>("name");
    r.isEnabled = f.required<bool>("isEnabled");
    r.match = f.required<TextMatch>("match");
    r.pattern = f.required<std::string>("pattern");
    r.accountIDs = f.required<std::vector<Uuid>>("accountIDs");
    r.direction = f.required<AmountDirection>("direction");
    r.minimumAmount = f.optional<int64_t>("minimumAmount");
    r.maximumAmount = f.optional<int64_t>("maximumAmount");
    r.merchantName = f.optional<std::string>("merchantName");
    r.kind = f.optional<TransactionKind>("kind");
    r.categoryID = f.optional<Uuid>("categoryID");
    r.createdAt = f.required<Instant>("createdAt");
    return r;
}

template <>
ImportCounts decodeObject<ImportCounts>(const Fields& f) {
    ImportCounts c;
    c.totalRows = f.required<int64_t>("totalRows");
    c.imported = f.required<int64_t>("imported");
    c.duplicates = f.required<int64_t>("duplicates");
    c.replacedPending = f.required<int64_t>("replacedPending");
    c.heldDuplicates = f.required<int64_t>("heldDuplicates");
    c.forcedDuplicates = f.required<int64_t>("forcedDuplicates");
    c.errors = f.required<int64_t>("errors");
    c.blank = f.required<int64_t>("blank");
    return c;
}

template <>
ImportBatch decodeObject<ImportBatch>(const Fields& f) {
    ImportBatch b;
    b.id = f.required<Uuid>("id");
    b.fileName = f.required<std::string>("fileName");
    b.fileHash = f.required<std::string>("fileHash");
    b.accountID = f.required<Uuid>("accountID");
    b.profileID = f.required<std::string>("profileID");
    b.importedAt = f.required<Instant>("importedAt");
    b.counts = f.required<ImportCounts>("counts");
    b.firstDate = f.optional<LocalDate>("firstDate");
    b.lastDate = f.optional<LocalDate>("lastDate");
    return b;
}

template <>
Budget decodeObject<Budget>(const Fields& f) {
    return {f.required<Uuid>("id"), f.required<Uuid>("categoryID"),
            f.required<int64_t>("monthlyAmount")};
}

template <>
ChangeSet decodeObject<ChangeSet>(const Fields& f) {
    ChangeSet c;
    c.id = f.required<Uuid>("id");
    c.date = f.required<Instant>("date");
    c.label = f.required<std::string>("label");
    c.before = f.orDefault<std::vector<LedgerTransaction>>("before", {});
    c.merchantsBefore = f.orDefault<std::vector<Merchant>>("merchantsBefore", {});
    c.createdMerchantIDs = f.orDefault<std::vector<Uuid>>("createdMerchantIDs", {});
    c.createdRuleIDs = f.orDefault<std::vector<Uuid>>("createdRuleIDs", {});
    c.createdAIFilingKeys = f.orDefault<std::vector<std::string>>("createdAIFilingKeys", {});
    c.aiFilingsBefore = f.orDefault<std::vector<AIFiling>>("aiFilingsBefore", {});
    c.createdTransactionIDs = f.orDefault<std::vector<Uuid>>("createdTransactionIDs", {});
    return c;
}

template <>
LedgerSettings decodeObject<LedgerSettings>(const Fields& f) {
    const LedgerSettings defaults;
    LedgerSettings s;
    s.timeZoneID = f.orDefault("timeZoneID", defaults.timeZoneID);
    s.keepSourceText = f.orDefault("keepSourceText", defaults.keepSourceText);
    s.disabledBuiltInRules = f.orDefault("disabledBuiltInRules", defaults.disabledBuiltInRules);
    s.reportCurrency = f.orDefault("reportCurrency", defaults.reportCurrency);
    s.ruleOrder = f.orDefault("ruleOrder", defaults.ruleOrder);
    s.dismissedNotes = f.orDefault("dismissedNotes", defaults.dismissedNotes);
    s.paymentServices = f.orDefault("paymentServices", defaults.paymentServices);
    s.monthlySavingsGoal = f.optional<int64_t>("monthlySavingsGoal");
    s.monthlySavingsGoalCurrency = f.optional<std::string>("monthlySavingsGoalCurrency");
    return s;
}

template <>
ImportProfile decodeObject<ImportProfile>(const Fields& f) {
    ImportProfile p;
    p.id = f.required<std::string>("id");
    p.name = f.required<std::string>("name");
    p.accountType = f.optional<AccountType>("accountType");
    p.hasHeader = f.required<bool>("hasHeader");
    p.requiredHeaders = f.required<std::vector<std::string>>("requiredHeaders");
    p.forbiddenHeaders = f.required<std::vector<std::string>>("forbiddenHeaders");
    p.headerlessColumns = f.required<std::vector<std::string>>("headerlessColumns");
    p.headerlessShape = f.required<HeaderlessShape>("headerlessShape");
    p.dateColumn = f.required<std::string>("dateColumn");
    p.postedDateColumn = f.optional<std::string>("postedDateColumn");
    p.descriptionColumn = f.required<std::string>("descriptionColumn");
    p.merchantColumn = f.optional<std::string>("merchantColumn");
    p.categoryColumn = f.optional<std::string>("categoryColumn");
    p.amountColumn = f.optional<std::string>("amountColumn");
    p.debitColumn = f.optional<std::string>("debitColumn");
    p.creditColumn = f.optional<std::string>("creditColumn");
    p.signConvention = f.required<SignConvention>("signConvention");
    p.statusColumn = f.optional<std::string>("statusColumn");
    p.pendingValues = f.required<std::vector<std::string>>("pendingValues");
    p.checkNumberColumn = f.optional<std::string>("checkNumberColumn");
    p.cardNumberColumn = f.optional<std::string>("cardNumberColumn");
    p.cardholderColumn = f.optional<std::string>("cardholderColumn");
    p.dateLayout = f.optional<DateLayout>("dateLayout");
    p.isBuiltIn = f.required<bool>("isBuiltIn");
    p.currencyColumn = f.optional<std::string>("currencyColumn");
    p.currency = f.optional<std::string>("currency");
    p.externalIDColumn = f.optional<std::string>("externalIDColumn");
    p.fileNameHints = f.optional<std::vector<std::string>>("fileNameHints");
    p.numberStyle = f.optional<NumberStyle>("numberStyle");
    p.signMarkerColumn = f.optional<std::string>("signMarkerColumn");
    p.moneyOutMarkers = f.optional<std::vector<std::string>>("moneyOutMarkers");
    return p;
}

template <>
DateSpan decodeObject<DateSpan>(const Fields& f) {
    // Stored spans are taken as they stand, not re-sorted.
    return DateSpan::unsorted(f.required<LocalDate>("start"), f.required<LocalDate>("end"));
}

// ---- Writing ------------------------------------------------------------

json::value valueOf(const std::string& v) {
    return json::value(v);
}
json::value valueOf(bool v) {
    return json::value(v);
}
json::value valueOf(int64_t v) {
    return json::value(v);
}
json::value valueOf(int v) {
    return json::value(static_cast<int64_t>(v));
}
template <typename E>
requires std::is_enum_v<E> json::value valueOf(E v) {
    const auto raw = rawValue(v);
    return json::value(json::string_view(raw.data(), raw.size()));
}
template <typename T>
requires(!std::is_enum_v<T>) json::value valueOf(const T& v) {
    return toJSON(v);
}
template <typename T>
json::value valueOf(const std::vector<T>& items) {
    json::array array;
    array.reserve(items.size());
    for (const auto& item : items)
        array.push_back(valueOf(item));
    return array;
}
template <typename T>
json::value valueOf(const std::map<std::string, T>& items) {
    json::object object;
    for (const auto& [key, item] : items)
        object.emplace(key, valueOf(item));
    return object;
}

// Builds one record's object; absent optionals leave no key behind.
class Writer {
  public:
    explicit Writer(std::size_t capacity) { m_object.reserve(capacity); }

    template <typename T>
    Writer& put(std::string_view key, const T& v) {
        m_object.emplace(key, valueOf(v));
        return *this;
    }
    template <typename T>
    Writer& put(std::string_view key, const std::optional<T>& v) {
        if (v)
            m_object.emplace(key, valueOf(*v));
        return *this;
    }
    template <typename T>
    Writer& put(std::string_view key, const HeapOptional<T>& v) {
        if (v)
            m_object.emplace(key, valueOf(*v));
        return *this;
    }
    json::value done() { return json::value(std::move(m_object)); }

  private:
    json::object m_object;
};

// Writes a record's text directly, byte for byte what serialising its tree
// gives. Transactions are nearly every row written and a change set may carry
// thousands of them; building a tree for each cost more than the save's own
// writes. Nested values are rare and still go through the tree.
class TextWriter {
  public:
    explicit TextWriter(std::string& out) : m_out(out) { m_out.push_back('{'); }
    void done() { m_out.push_back('}'); }

    template <typename T>
    TextWriter& put(std::string_view key, const T& v) {
        name(key);
        value(v);
        return *this;
    }
    template <typename T>
    TextWriter& put(std::string_view key, const std::optional<T>& v) {
        if (v)
            put(key, *v);
        return *this;
    }
    template <typename T>
    TextWriter& put(std::string_view key, const HeapOptional<T>& v) {
        if (v)
            put(key, *v);
        return *this;
    }

  private:
    void name(std::string_view key) {  // our own keys: plain ASCII, nothing to escape
        if (m_out.back() != '{')
            m_out.push_back(',');
        m_out.push_back('"');
        m_out.append(key);
        m_out.append("\":");
    }
    void value(std::string_view text) {
        static constexpr char kHex[] = "0123456789abcdef";
        m_out.push_back('"');
        for (const char c : text) {
            const auto byte = static_cast<unsigned char>(c);
            if (c == '"' || c == '\\') {
                m_out.push_back('\\');
                m_out.push_back(c);
            } else if (byte >= 0x20) {
                m_out.push_back(c);
            } else {
                m_out.push_back('\\');
                switch (c) {
                    case '\b':
                        m_out.push_back('b');
                        break;
                    case '\t':
                        m_out.push_back('t');
                        break;
                    case '\n':
                        m_out.push_back('n');
                        break;
                    case '\f':
                        m_out.push_back('f');
                        break;
                    case '\r':
                        m_out.push_back('r');
                        break;
                    default:
                        m_out.append("u00");
                        m_out.push_back(kHex[byte >> 4]);
                        m_out.push_back(kHex[byte & 15]);
                }
            }
        }
        m_out.push_back('"');
    }
    void value(const std::string& text) { value(std::string_view(text)); }
    void value(const Uuid& id) {  // nothing in it to escape
        m_out.push_back('"');
        id.appendText(m_out);
        m_out.push_back('"');
    }
    void value(const LocalDate& date) { value(date.iso()); }
    void value(bool flag) { m_out.append(flag ? "true" : "false"); }
    void value(int64_t number) {
        char digits[24];
        const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        m_out.append(digits, end);
    }
    template <typename E>
    requires std::is_enum_v<E>
    void value(E v) { value(rawValue(v)); }
    template <typename T>
    requires(!std::is_enum_v<T>) void value(const T& nested) {
        m_out.append(json::serialize(valueOf(nested)));
    }
    // A change set's snapshots are written directly too.
    void value(const std::vector<LedgerTransaction>& transactions);

    std::string& m_out;
};

// The keys of a transaction and of a change set, in their stored order, for
// the tree and for the direct text alike.
template <typename W>
void putFields(W& w, const LedgerTransaction& t) {
    w.put("id", t.id)
        .put("accountID", t.accountID)
        .put("batchID", t.batchID)
        .put("sourceLine", t.sourceLine)
        .put("date", t.date)
        .put("postedDate", t.postedDate)
        .put("amount", t.amount)
        .put("currency", t.currency)
        .put("rawDescription", t.rawDescription)
        .put("bankMerchant", t.bankMerchant)
        .put("bankCategory", t.bankCategory)
        .put("checkNumber", t.checkNumber)
        .put("status", t.status)
        .put("fingerprint", t.fingerprint)
        .put("occurrence", t.occurrence)
        .put("kind", t.kind)
        .put("categoryID", t.categoryID)
        .put("merchantID", t.merchantID)
        .put("method", t.method)
        .put("evidence", t.evidence)
        .put("review", t.review)
        .put("suggestion", t.suggestion)
        .put("transferPairID", t.transferPairID)
        .put("supersededBy", t.supersededBy)
        .put("voided", t.voided)
        .put("note", t.note)
        .put("spendingAssignment", t.spendingAssignment)
        .put("inheritedAssignment", t.inheritedAssignment)
        .put("cardIdentifier", t.cardIdentifier)
        .put("entrySource", t.entrySource)
        .put("originalDetails", t.originalDetails)
        .put("revisions", t.revisions)
        .put("splits", t.splits)
        .put("externalID", t.externalID);
}

template <typename W>
void putFields(W& w, const ChangeSet& c) {
    w.put("id", c.id)
        .put("date", c.date)
        .put("label", c.label)
        .put("before", c.before)
        .put("merchantsBefore", c.merchantsBefore)
        .put("createdMerchantIDs", c.createdMerchantIDs)
        .put("createdRuleIDs", c.createdRuleIDs)
        .put("createdAIFilingKeys", c.createdAIFilingKeys)
        .put("aiFilingsBefore", c.aiFilingsBefore)
        .put("createdTransactionIDs", c.createdTransactionIDs);
}

template <typename T>
void writeText(const T& record, std::string& out) {
    TextWriter writer(out);
    putFields(writer, record);
    writer.done();
}

void TextWriter::value(const std::vector<LedgerTransaction>& transactions) {
    m_out.push_back('[');
    for (std::size_t i = 0; i < transactions.size(); ++i) {
        if (i > 0)
            m_out.push_back(',');
        writeText(transactions[i], m_out);
    }
    m_out.push_back(']');
}

template <typename T>
Decoded<T> decodeValue(const json::value& v) {
    try {
        T out{};
        read(v, out);
        return {std::move(out), {}};
    } catch (const DecodeError& error) {
        return {std::nullopt, error.message};
    }
}

}  // namespace

json::value toJSON(const Uuid& value) {
    return json::value(value.text());
}
json::value toJSON(const LocalDate& value) {
    return json::value(value.iso());
}
json::value toJSON(const Instant& value) {
    return json::value(value.secondsSinceReference);
}

json::value toJSON(const DateSpan& value) {
    return Writer(2).put("start", value.start).put("end", value.end).done();
}

json::value toJSON(const SpendingAssignment& value) {
    json::object object;
    switch (value.kind()) {
        case SpendingAssignment::Case::person:
            object.emplace("person", json::object{{"_0", value.personID().text()}});
            break;
        case SpendingAssignment::Case::shared:
            object.emplace("shared", json::object{});
            break;
        case SpendingAssignment::Case::unassigned:
            object.emplace("unassigned", json::object{});
            break;
    }
    return object;
}

json::value toJSON(const Suggestion& value) {
    return Writer(5)
        .put("merchantName", value.merchantName)
        .put("categoryID", value.categoryID)
        .put("kind", value.kind)
        .put("source", value.source)
        .put("reason", value.reason)
        .done();
}

json::value toJSON(const TransactionDetails& value) {
    return Writer(3)
        .put("date", value.date)
        .put("amount", value.amount)
        .put("description", value.description)
        .done();
}

json::value toJSON(const TransactionRevision& value) {
    return Writer(5)
        .put("id", value.id)
        .put("changedAt", value.changedAt)
        .put("before", value.before)
        .put("after", value.after)
        .put("reason", value.reason)
        .done();
}

json::value toJSON(const TransactionSplit& value) {
    return Writer(4)
        .put("id", value.id)
        .put("categoryID", value.categoryID)
        .put("amount", value.amount)
        .put("note", value.note)
        .done();
}

json::value toJSON(const LedgerTransaction& t) {
    Writer writer(34);
    putFields(writer, t);
    return writer.done();
}

json::value toJSON(const Person& p) {
    return Writer(4)
        .put("id", p.id)
        .put("name", p.name)
        .put("bankNames", p.bankNames)
        .put("monthlyAllowance", p.monthlyAllowance)
        .done();
}

json::value toJSON(const Account& a) {
    return Writer(15)
        .put("id", a.id)
        .put("name", a.name)
        .put("personID", a.personID())
        .put("type", a.type)
        .put("currency", a.currency)
        .put("last4", a.last4)
        .put("profileID", a.profileID)
        .put("flipSigns", a.flipSigns)
        .put("isArchived", a.isArchived)
        .put("rarelyUsed", a.rarelyUsed)
        .put("upToDateThrough", a.upToDateThrough)
        .put("historyStartsOn", a.historyStartsOn)
        .put("isUnassigned", a.isUnassigned)
        .put("cardAssignments", a.cardAssignments)
        .put("userIDs", a.userIDs())
        .done();
}

json::value toJSON(const LedgerCategory& c) {
    return Writer(4)
        .put("id", c.id)
        .put("name", c.name)
        .put("group", c.group)
        .put("colorIndex", c.colorIndex)
        .done();
}

json::value toJSON(const Merchant& m) {
    return Writer(6)
        .put("id", m.id)
        .put("name", m.name)
        .put("categoryID", m.categoryID)
        .put("kind", m.kind)
        .put("keys", m.keys)
        .put("nameLocked", m.nameLocked)
        .done();
}

json::value toJSON(const AIFiling& a) {
    return Writer(7)
        .put("key", a.key)
        .put("merchantName", a.merchantName)
        .put("categoryID", a.categoryID)
        .put("kind", a.kind)
        .put("reason", a.reason)
        .put("date", a.date)
        .put("rejected", a.rejected)
        .done();
}

json::value toJSON(const Rule& r) {
    return Writer(13)
        .put("id", r.id)
        .put("name", r.name)
        .put("isEnabled", r.isEnabled)
        .put("match", r.match)
        .put("pattern", r.pattern)
        .put("accountIDs", r.accountIDs)
        .put("direction", r.direction)
        .put("minimumAmount", r.minimumAmount)
        .put("maximumAmount", r.maximumAmount)
        .put("merchantName", r.merchantName)
        .put("kind", r.kind)
        .put("categoryID", r.categoryID)
        .put("createdAt", r.createdAt)
        .done();
}

json::value toJSON(const ImportCounts& c) {
    return Writer(8)
        .put("totalRows", c.totalRows)
        .put("imported", c.imported)
        .put("duplicates", c.duplicates)
        .put("replacedPending", c.replacedPending)
        .put("heldDuplicates", c.heldDuplicates)
        .put("forcedDuplicates", c.forcedDuplicates)
        .put("errors", c.errors)
        .put("blank", c.blank)
        .done();
}

json::value toJSON(const ImportBatch& b) {
    return Writer(9)
        .put("id", b.id)
        .put("fileName", b.fileName)
        .put("fileHash", b.fileHash)
        .put("accountID", b.accountID)
        .put("profileID", b.profileID)
        .put("importedAt", b.importedAt)
        .put("counts", b.counts)
        .put("firstDate", b.firstDate)
        .put("lastDate", b.lastDate)
        .done();
}

json::value toJSON(const Budget& b) {
    return Writer(3)
        .put("id", b.id)
        .put("categoryID", b.categoryID)
        .put("monthlyAmount", b.monthlyAmount)
        .done();
}

json::value toJSON(const ChangeSet& c) {
    Writer writer(10);
    putFields(writer, c);
    return writer.done();
}

json::value toJSON(const LedgerSettings& s) {
    return Writer(9)
        .put("timeZoneID", s.timeZoneID)
        .put("keepSourceText", s.keepSourceText)
        .put("disabledBuiltInRules", s.disabledBuiltInRules)
        .put("reportCurrency", s.reportCurrency)
        .put("ruleOrder", s.ruleOrder)
        .put("dismissedNotes", s.dismissedNotes)
        .put("paymentServices", s.paymentServices)
        .put("monthlySavingsGoal", s.monthlySavingsGoal)
        .put("monthlySavingsGoalCurrency", s.monthlySavingsGoalCurrency)
        .done();
}

json::value toJSON(const ImportProfile& p) {
    return Writer(31)
        .put("id", p.id)
        .put("name", p.name)
        .put("accountType", p.accountType)
        .put("hasHeader", p.hasHeader)
        .put("requiredHeaders", p.requiredHeaders)
        .put("forbiddenHeaders", p.forbiddenHeaders)
        .put("headerlessColumns", p.headerlessColumns)
        .put("headerlessShape", p.headerlessShape)
        .put("dateColumn", p.dateColumn)
        .put("postedDateColumn", p.postedDateColumn)
        .put("descriptionColumn", p.descriptionColumn)
        .put("merchantColumn", p.merchantColumn)
        .put("categoryColumn", p.categoryColumn)
        .put("amountColumn", p.amountColumn)
        .put("debitColumn", p.debitColumn)
        .put("creditColumn", p.creditColumn)
        .put("signConvention", p.signConvention)
        .put("statusColumn", p.statusColumn)
        .put("pendingValues", p.pendingValues)
        .put("checkNumberColumn", p.checkNumberColumn)
        .put("cardNumberColumn", p.cardNumberColumn)
        .put("cardholderColumn", p.cardholderColumn)
        .put("dateLayout", p.dateLayout)
        .put("isBuiltIn", p.isBuiltIn)
        .put("currencyColumn", p.currencyColumn)
        .put("currency", p.currency)
        .put("externalIDColumn", p.externalIDColumn)
        .put("fileNameHints", p.fileNameHints)
        .put("numberStyle", p.numberStyle)
        .put("signMarkerColumn", p.signMarkerColumn)
        .put("moneyOutMarkers", p.moneyOutMarkers)
        .done();
}

template <typename T>
Decoded<T> fromJSON(const json::value& v) {
    return decodeValue<T>(v);
}

template <typename T>
std::string encode(const T& record) {
    if constexpr (std::is_same_v<T, LedgerTransaction> || std::is_same_v<T, ChangeSet>) {
        std::string text;
        text.reserve(512);
        writeText(record, text);
        return text;
    } else {
        return json::serialize(toJSON(record));
    }
}

template <typename T>
Decoded<T> decode(std::string_view text) {
    if constexpr (std::is_same_v<T, LedgerTransaction>) {
        if (auto flat = detail::readFlatTransaction(text))
            return {std::move(*flat), {}};
    }
    // Records are small; parse into a stack buffer and spill to the heap only
    // for the rare large one (a change set with many snapshots).
    unsigned char buffer[8192];
    json::monotonic_resource resource(buffer, sizeof(buffer));
    json::error_code ec;
    json::value parsed = json::parse(json::string_view(text.data(), text.size()), ec, &resource);
    if (ec)
        return {std::nullopt, "Not valid JSON: " + ec.message()};
    return decodeValue<T>(parsed);
}

#define COPPERWICK_RECORD_JSON(T)                        \
    template Decoded<T> fromJSON<T>(const json::value&); \
    template std::string encode<T>(const T&);            \
    template Decoded<T> decode<T>(std::string_view);

COPPERWICK_RECORD_JSON(LedgerTransaction)
COPPERWICK_RECORD_JSON(Suggestion)
COPPERWICK_RECORD_JSON(Person)
COPPERWICK_RECORD_JSON(Account)
COPPERWICK_RECORD_JSON(LedgerCategory)
COPPERWICK_RECORD_JSON(Merchant)
COPPERWICK_RECORD_JSON(AIFiling)
COPPERWICK_RECORD_JSON(Rule)
COPPERWICK_RECORD_JSON(ImportCounts)
COPPERWICK_RECORD_JSON(ImportBatch)
COPPERWICK_RECORD_JSON(Budget)
COPPERWICK_RECORD_JSON(ChangeSet)
COPPERWICK_RECORD_JSON(LedgerSettings)
COPPERWICK_RECORD_JSON(ImportProfile)
COPPERWICK_RECORD_JSON(SpendingAssignment)
COPPERWICK_RECORD_JSON(TransactionDetails)
COPPERWICK_RECORD_JSON(TransactionRevision)
COPPERWICK_RECORD_JSON(TransactionSplit)
COPPERWICK_RECORD_JSON(DateSpan)

#undef COPPERWICK_RECORD_JSON

}  // namespace copperwick::record_json
