#include "core/model/transaction_reader.h"

#include <array>
#include <cstdint>
#include <limits>
#include <string>

#include <boost/json/basic_parser_impl.hpp>

#include "core/model/enum_text.h"

namespace copperwick::detail {

namespace {

namespace json = boost::json;

// The flat fields, in the order they are written. The nested ones
// (suggestion, assignments, original details, revisions, splits) are left to
// the ordinary reader.
enum class Field {
    id,
    accountID,
    batchID,
    sourceLine,
    date,
    postedDate,
    amount,
    currency,
    rawDescription,
    bankMerchant,
    bankCategory,
    checkNumber,
    status,
    fingerprint,
    occurrence,
    kind,
    categoryID,
    merchantID,
    method,
    evidence,
    review,
    transferPairID,
    supersededBy,
    voided,
    note,
    cardIdentifier,
    entrySource,
    externalID,
    unknown,
};

constexpr std::array<std::string_view, 28> kNames{
    "id",     "accountID",      "batchID",        "sourceLine",     "date",         "postedDate",
    "amount", "currency",       "rawDescription", "bankMerchant",   "bankCategory", "checkNumber",
    "status", "fingerprint",    "occurrence",     "kind",           "categoryID",   "merchantID",
    "method", "evidence",       "review",         "transferPairID", "supersededBy", "voided",
    "note",   "cardIdentifier", "entrySource",    "externalID",
};

// Keys that must be there, as bits of Field.
constexpr uint64_t bit(Field f) {
    return uint64_t{1} << static_cast<int>(f);
}
constexpr uint64_t kRequired =
    bit(Field::id) | bit(Field::accountID) | bit(Field::sourceLine) | bit(Field::date) |
    bit(Field::amount) | bit(Field::currency) | bit(Field::rawDescription) | bit(Field::status) |
    bit(Field::fingerprint) | bit(Field::occurrence) | bit(Field::kind) | bit(Field::method) |
    bit(Field::evidence) | bit(Field::review) | bit(Field::voided) | bit(Field::note);

// The nested fields, which send the row to the ordinary reader.
constexpr std::array<std::string_view, 6> kNested{"suggestion",          "spendingAssignment",
                                                  "inheritedAssignment", "originalDetails",
                                                  "revisions",           "splits"};

Field fieldNamed(std::string_view key) {
    for (std::size_t i = 0; i < kNames.size(); ++i) {
        if (kNames[i].size() == key.size() && kNames[i] == key)
            return static_cast<Field>(i);
    }
    return Field::unknown;
}

class Handler {
  public:
    static constexpr std::size_t max_array_size = -1;
    static constexpr std::size_t max_object_size = -1;
    static constexpr std::size_t max_string_size = -1;
    static constexpr std::size_t max_key_size = -1;

    LedgerTransaction record;
    uint64_t seen = 0;

    bool on_document_begin(json::error_code&) { return true; }
    bool on_document_end(json::error_code&) { return true; }

    bool on_object_begin(json::error_code& ec) { return ++m_depth == 1 || decline(ec); }
    bool on_object_end(std::size_t, json::error_code& ec) {
        --m_depth;
        return m_depth > 0 || (seen & kRequired) == kRequired || decline(ec);
    }
    bool on_array_begin(json::error_code& ec) { return decline(ec); }
    bool on_array_end(std::size_t, json::error_code& ec) { return decline(ec); }

    bool on_key_part(json::string_view s, std::size_t, json::error_code&) {
        m_buffer.append(s.data(), s.size());
        return true;
    }
    bool on_key(json::string_view s, std::size_t, json::error_code& ec) {
        std::string_view key(s.data(), s.size());
        if (!m_buffer.empty()) {
            m_buffer.append(s.data(), s.size());
            key = m_buffer;
        }
        m_field = fieldNamed(key);
        if (m_field == Field::unknown) {
            for (const auto nested : kNested) {
                if (nested == key)
                    return decline(ec);
            }
        }
        m_buffer.clear();
        return true;
    }

    bool on_string_part(json::string_view s, std::size_t, json::error_code&) {
        m_buffer.append(s.data(), s.size());
        return true;
    }
    bool on_string(json::string_view s, std::size_t, json::error_code& ec) {
        std::string_view text(s.data(), s.size());
        if (!m_buffer.empty()) {
            m_buffer.append(s.data(), s.size());
            text = m_buffer;
        }
        const bool ok = takeString(text);
        m_buffer.clear();
        return ok || decline(ec);
    }

    bool on_number_part(json::string_view, json::error_code&) { return true; }
    bool on_int64(int64_t value, json::string_view, json::error_code& ec) {
        return takeInteger(value) || decline(ec);
    }
    bool on_uint64(uint64_t value, json::string_view, json::error_code& ec) {
        if (value > static_cast<uint64_t>(std::numeric_limits<int64_t>::max()))
            return m_field == Field::unknown || decline(ec);
        return takeInteger(static_cast<int64_t>(value)) || decline(ec);
    }
    bool on_double(double, json::string_view, json::error_code& ec) {
        return m_field == Field::unknown || decline(ec);
    }
    bool on_bool(bool value, json::error_code& ec) {
        if (m_field == Field::voided) {
            record.voided = value;
            return mark();
        }
        return m_field == Field::unknown || decline(ec);
    }
    bool on_null(json::error_code& ec) {
        // Null is absence: fine for an optional field, fatal for a required one.
        return m_field == Field::unknown || (kRequired & bit(m_field)) == 0 || decline(ec);
    }
    bool on_comment_part(json::string_view, json::error_code&) { return true; }
    bool on_comment(json::string_view, json::error_code&) { return true; }

  private:
    bool decline(json::error_code& ec) {
        ec = json::error::extra_data;  // any error stops the parser; the reason isn't ours to give
        return false;
    }
    bool mark() {
        seen |= bit(m_field);
        return true;
    }

    template <typename E>
    bool takeEnum(std::string_view text, E& out) {
        const auto value = enumFromRaw<E>(text);
        if (!value)
            return false;
        out = *value;
        return mark();
    }
    bool takeUuid(std::string_view text, Uuid& out) {
        const auto id = Uuid::parse(text);
        if (!id)
            return false;
        out = *id;
        return mark();
    }
    bool takeUuid(std::string_view text, std::optional<Uuid>& out) {
        Uuid id;
        if (!takeUuid(text, id))
            return false;
        out = id;
        return true;
    }
    bool takeDate(std::string_view text, LocalDate& out) {
        const auto date = LocalDate::fromISO(text);
        if (!date)
            return false;
        out = *date;
        return mark();
    }
    bool takeText(std::string_view text, std::string& out) {
        out.assign(text);
        return mark();
    }
    bool takeText(std::string_view text, std::optional<std::string>& out) {
        out.emplace(text);
        return mark();
    }

    bool takeString(std::string_view text) {
        switch (m_field) {
            case Field::id:
                return takeUuid(text, record.id);
            case Field::accountID:
                return takeUuid(text, record.accountID);
            case Field::batchID:
                return takeUuid(text, record.batchID);
            case Field::date:
                return takeDate(text, record.date);
            case Field::postedDate: {
                LocalDate date;
                if (!takeDate(text, date))
                    return false;
                record.postedDate = date;
                return true;
            }
            case Field::currency:
                return takeText(text, record.currency);
            case Field::rawDescription:
                return takeText(text, record.rawDescription);
            case Field::bankMerchant:
                return takeText(text, record.bankMerchant);
            case Field::bankCategory:
                return takeText(text, record.bankCategory);
            case Field::checkNumber:
                return takeText(text, record.checkNumber);
            case Field::status:
                return takeEnum(text, record.status);
            case Field::fingerprint:
                return takeText(text, record.fingerprint);
            case Field::kind:
                return takeEnum(text, record.kind);
            case Field::categoryID:
                return takeUuid(text, record.categoryID);
            case Field::merchantID:
                return takeUuid(text, record.merchantID);
            case Field::method:
                return takeEnum(text, record.method);
            case Field::evidence:
                return takeText(text, record.evidence);
            case Field::review:
                return takeEnum(text, record.review);
            case Field::transferPairID:
                return takeUuid(text, record.transferPairID);
            case Field::supersededBy:
                return takeUuid(text, record.supersededBy);
            case Field::note:
                return takeText(text, record.note);
            case Field::cardIdentifier:
                return takeText(text, record.cardIdentifier);
            case Field::entrySource: {
                TransactionEntrySource source{};
                if (!takeEnum(text, source))
                    return false;
                record.entrySource = source;
                return true;
            }
            case Field::externalID:
                return takeText(text, record.externalID);
            case Field::unknown:
                return true;
            default:
                return false;  // a string where a number or a boolean belongs
        }
    }

    bool takeInteger(int64_t value) {
        switch (m_field) {
            case Field::sourceLine:
                record.sourceLine = value;
                return mark();
            case Field::amount:
                record.amount = value;
                return mark();
            case Field::occurrence:
                record.occurrence = value;
                return mark();
            case Field::unknown:
                return true;
            default:
                return false;
        }
    }

    int m_depth = 0;
    Field m_field = Field::unknown;
    std::string m_buffer;
};

}  // namespace

std::optional<LedgerTransaction> readFlatTransaction(std::string_view text) {
    // One parser per thread, reset for each row: a load reads rows by the
    // hundred thousand, and the parser's own buffers are worth keeping.
    thread_local json::basic_parser<Handler> parser(json::parse_options{});
    parser.reset();
    parser.handler() = Handler();
    json::error_code ec;
    const auto used = parser.write_some(false, text.data(), text.size(), ec);
    auto& handler = parser.handler();
    if (ec || used != text.size() || (handler.seen & kRequired) != kRequired)
        return std::nullopt;
    return std::move(handler.record);
}

}  // namespace copperwick::detail
