#pragma once

// The one description of what a report covers: which days, which accounts,
// which currency and which people. Every figure of the program is asked for
// through a ReportFilter, and every part that counts money decides membership
// through the same `includes`, so a person's figure can't differ between a
// screen, an export and an answer from the model.
//
// A plain copyable value, equal and hashable field by field so that it can key
// cached reports; safe on any thread. `includes` never looks at dates,
// voided or superseded flags, status or kind: comparing a transaction's date
// with `span` and dropping inactive lines is the caller's part.

#include <cstddef>
#include <optional>
#include <set>
#include <string>

#include "core/model/date_span.h"
#include "core/model/enum_text.h"
#include "core/model/ledger.h"

namespace copperwick {

// How a person is tied to a transaction.
enum class PeopleMode {
    assigned,  // what the household assignment gives them
    cards,     // what was spent on the cards they use
};

template <>
struct EnumTraits<PeopleMode> {
    static constexpr std::array<std::pair<PeopleMode, std::string_view>, 2> cases{{
        {PeopleMode::assigned, "assigned"},
        {PeopleMode::cards, "cards"},
    }};
};

struct ReportFilter {
    DateSpan span;              // both ends inclusive
    std::set<Uuid> personIDs;   // empty when nobody is chosen
    std::set<Uuid> accountIDs;  // empty means every account
    std::string currency;       // one report never mixes currencies
    bool wholeHousehold;        // people play no part in the scope
    bool includeShared;         // shared transactions count
    bool includeUnassigned;     // transactions that belong to nobody yet count
    PeopleMode peopleMode;

    // Without `wholeHousehold`, it is true exactly when no person is chosen.
    // An explicit false with nobody chosen stays false: such a filter lets in
    // only what `includeShared` and `includeUnassigned` allow.
    ReportFilter(DateSpan span, std::set<Uuid> personIDs, std::set<Uuid> accountIDs,
                 std::string currency, std::optional<bool> wholeHousehold, bool includeShared,
                 bool includeUnassigned, PeopleMode peopleMode);

    // A copy over other days; comparison periods are made with it.
    [[nodiscard]] ReportFilter withSpan(DateSpan other) const;

    // Whether the transaction's account and people are in scope. A transaction
    // whose account is gone is in no report.
    [[nodiscard]] bool includes(const LedgerTransaction& transaction, const Ledger& ledger) const;

    // Whether the account is in scope, by currency and `accountIDs` alone.
    [[nodiscard]] bool includes(const Account& account) const;

    // The people scope in words: "Whole household", "Ana + Shared household",
    // "Ana + Ben (their cards)", "No people selected".
    [[nodiscard]] std::string scopeLabel(const Ledger& ledger) const;

    friend bool operator==(const ReportFilter&, const ReportFilter&) = default;
};

}  // namespace copperwick

template <>
struct std::hash<copperwick::ReportFilter> {
    std::size_t operator()(const copperwick::ReportFilter& filter) const noexcept;
};
