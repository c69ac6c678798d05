#pragma once

// The six finance lookups as the model sees them: a name, a description and
// named arguments with a guide each, all required, optional text passed as
// the empty string. The gateway turns these into the tool definitions of its
// request and hands each call's arguments back to `call`, which answers from
// a snapshot of the ledger and records the call in the question's log.
//
// Values: copyable, and callable from any thread at once, since the ledger
// they hold is never written and the log takes its own lock.

#include <memory>
#include <string>
#include <vector>

#include <boost/json/object.hpp>

#include "core/intelligence/tool_call_log.h"
#include "core/model/ledger.h"
#include "core/model/local_date.h"

namespace copperwick {

struct ToolParameter {
    enum class Type {
        string,
        integer,
    };

    std::string name;
    Type type = Type::string;
    std::string guide;  // shown to the model as the argument's description

    friend bool operator==(const ToolParameter&, const ToolParameter&) = default;
};

class AskTool {
  public:
    enum class Lookup {
        summary,
        category,
        merchant,
        compare,
        transactions,
        recurring,
    };

    AskTool(Lookup lookup, Ledger ledger, LocalDate today, std::shared_ptr<ToolCallLog> log);

    [[nodiscard]] Lookup lookup() const { return m_lookup; }
    // "spendingSummary", "categorySpending", …: what the model calls.
    [[nodiscard]] const std::string& name() const;
    [[nodiscard]] const std::string& description() const;
    // "Summary", "Category", …: what the log and a person see.
    [[nodiscard]] const std::string& label() const;
    // In the order the model is shown them.
    [[nodiscard]] const std::vector<ToolParameter>& parameters() const;

    // Answers the model's arguments and records the call. A missing or
    // mistyped argument reads as empty text or 0, so the model is told what
    // was wrong in words rather than the call failing. Never throws for
    // anything the model sent.
    [[nodiscard]] std::string call(const boost::json::object& arguments) const;

  private:
    Lookup m_lookup;
    Ledger m_ledger;
    LocalDate m_today;
    std::shared_ptr<ToolCallLog> m_log;
};

namespace AskTools {

// How many transactions findTransactions lists.
inline constexpr int64_t kTransactionLimit = 15;

// The six lookups in a fixed order, sharing one ledger snapshot and one log.
[[nodiscard]] std::vector<AskTool> all(const Ledger& ledger, LocalDate today,
                                       std::shared_ptr<ToolCallLog> log);

}  // namespace AskTools

}  // namespace copperwick
