#pragma once

// The persisted JSON form of the ledger's records.
//
// The format, as every build must read and write it:
// - Keys are the field names exactly. An optional field that is absent has no
//   key; it is never written as null. Reading treats null as absent.
// - Unknown keys are ignored, so an older build reads newer records as long
//   as no required key has gone.
// - A missing required key, a value of the wrong type, an enumeration text
//   that isn't known, or a date that isn't a valid "YYYY-MM-DD" makes the whole
//   record unreadable: decoding gives no value and says why (the store counts
//   such records and keeps them as they are).
// - A UUID is written in canonical upper case and read in any case. An instant
//   is a number of seconds since 2001-01-01 00:00:00 UTC. Money and every
//   integer are plain JSON integers.
// - SpendingAssignment is {"person":{"_0":"UUID"}}, {"shared":{}} or
//   {"unassigned":{}}.
//
// Pure functions, safe on any thread.

#include <optional>
#include <string>
#include <string_view>

#include <boost/json/fwd.hpp>
#include <boost/json/object.hpp>
#include <boost/json/value.hpp>

#include "core/model/account.h"
#include "core/model/ai_filing.h"
#include "core/model/budget.h"
#include "core/model/change_set.h"
#include "core/model/date_span.h"
#include "core/model/import_batch.h"
#include "core/model/import_profile.h"
#include "core/model/ledger_category.h"
#include "core/model/ledger_settings.h"
#include "core/model/ledger_transaction.h"
#include "core/model/merchant.h"
#include "core/model/person.h"
#include "core/model/rule.h"

namespace copperwick {

// The outcome of reading one record: the value, or why it is unreadable.
template <typename T>
struct Decoded {
    std::optional<T> value;
    std::string error;

    explicit operator bool() const { return value.has_value(); }
};

namespace record_json {

// Encoding: one JSON value per record or nested value.
[[nodiscard]] boost::json::value toJSON(const LedgerTransaction& value);
[[nodiscard]] boost::json::value toJSON(const Suggestion& value);
[[nodiscard]] boost::json::value toJSON(const Person& value);
[[nodiscard]] boost::json::value toJSON(const Account& value);
[[nodiscard]] boost::json::value toJSON(const LedgerCategory& value);
[[nodiscard]] boost::json::value toJSON(const Merchant& value);
[[nodiscard]] boost::json::value toJSON(const AIFiling& value);
[[nodiscard]] boost::json::value toJSON(const Rule& value);
[[nodiscard]] boost::json::value toJSON(const ImportCounts& value);
[[nodiscard]] boost::json::value toJSON(const ImportBatch& value);
[[nodiscard]] boost::json::value toJSON(const Budget& value);
[[nodiscard]] boost::json::value toJSON(const ChangeSet& value);
[[nodiscard]] boost::json::value toJSON(const LedgerSettings& value);
[[nodiscard]] boost::json::value toJSON(const ImportProfile& value);
[[nodiscard]] boost::json::value toJSON(const SpendingAssignment& value);
[[nodiscard]] boost::json::value toJSON(const TransactionDetails& value);
[[nodiscard]] boost::json::value toJSON(const TransactionRevision& value);
[[nodiscard]] boost::json::value toJSON(const TransactionSplit& value);
[[nodiscard]] boost::json::value toJSON(const DateSpan& value);
[[nodiscard]] boost::json::value toJSON(const LocalDate& value);
[[nodiscard]] boost::json::value toJSON(const Uuid& value);
[[nodiscard]] boost::json::value toJSON(const Instant& value);

// Decoding from a parsed value. T is any type toJSON takes.
template <typename T>
[[nodiscard]] Decoded<T> fromJSON(const boost::json::value& json);

// Compact UTF-8 text of a record, as the store keeps it.
template <typename T>
[[nodiscard]] std::string encode(const T& record);

// Parses and decodes stored text; text that isn't JSON is unreadable too.
template <typename T>
[[nodiscard]] Decoded<T> decode(std::string_view text);

}  // namespace record_json
}  // namespace copperwick
