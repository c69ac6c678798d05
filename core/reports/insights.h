#pragma once

// Charges that repeat on a schedule, and single charges that stand out against
// their merchant's own history, found by arithmetic alone. Pure functions of
// the ledger and a filter; they read raw transactions rather than a Report
// because they need history from before the period.

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "core/model/enum_text.h"
#include "core/model/ledger.h"
#include "core/reports/report_filter.h"

namespace copperwick {

enum class Cadence {
    weekly,
    monthly,
    yearly,
};

template <>
struct EnumTraits<Cadence> {
    static constexpr std::array<std::pair<Cadence, std::string_view>, 3> cases{{
        {Cadence::weekly, "weekly"},
        {Cadence::monthly, "monthly"},
        {Cadence::yearly, "yearly"},
    }};
};

// "Weekly", "Monthly", "Yearly".
[[nodiscard]] std::string_view label(Cadence cadence);

struct RecurringCharge {
    std::string id;  // the merchant identity's id
    std::string merchantName;
    Cadence cadence = Cadence::monthly;
    int64_t typicalAmount = 0;  // positive cents
    int64_t lastAmount = 0;
    int64_t previousAmount = 0;
    LocalDate lastDate;
    LocalDate nextExpected;
    int64_t count = 0;
    bool isActive = false;
    std::vector<Uuid> transactionIDs;  // the whole series, in date order

    // Compares the last two charges alone: a price that moved one charge ago
    // and stayed reads as unchanged again.
    [[nodiscard]] bool priceChanged() const { return lastAmount != previousAmount; }
    // The typical amount times the charges a year of this cadence holds.
    [[nodiscard]] int64_t yearlyCost() const;

    friend bool operator==(const RecurringCharge&, const RecurringCharge&) = default;
};

struct UnusualCharge {
    Uuid transactionID;
    std::string merchantName;
    LocalDate date;
    int64_t amount = 0;  // positive cents
    std::optional<int64_t> usualAmount;
    std::string reason;  // ready to show

    friend bool operator==(const UnusualCharge&, const UnusualCharge&) = default;
};

// What the recurring charges that still run come to: "About $84.00 a month
// across 5".
struct RecurringTotal {
    int64_t monthly = 0;  // a twelfth of their yearly cost, rounded
    int64_t activeCount = 0;

    [[nodiscard]] static RecurringTotal of(const std::vector<RecurringCharge>& charges);

    friend bool operator==(const RecurringTotal&, const RecurringTotal&) = default;
};

namespace Insights {

// Every series of at least three similar charges on a regular schedule up
// to `asOf`, whatever the filter's span: active first, dearest first.
[[nodiscard]] std::vector<RecurringCharge> recurring(const Ledger& ledger,
                                                     const ReportFilter& filter, LocalDate asOf);

// Charges in the filter's span of at least three times the merchant's usual
// amount, and first-ever charges of $200 or more: largest first.
[[nodiscard]] std::vector<UnusualCharge> unusual(const Ledger& ledger, const ReportFilter& filter);

// The schedule that about two thirds of the gaps (in days) agree on; monthly
// wins a tie.
[[nodiscard]] std::optional<Cadence> cadenceFor(const std::vector<int64_t>& gaps);

// The middle value, or the truncated mean of the two middle ones; 0 when empty.
[[nodiscard]] int64_t median(std::vector<int64_t> values);

namespace detail {

// Posted charges in the filter's scope, grouped by merchant identity, each
// group in date order. Computed once when one caller wants both lists.
using CandidateGroups = std::unordered_map<std::string, std::vector<const LedgerTransaction*>>;
[[nodiscard]] CandidateGroups candidates(const Ledger& ledger, const ReportFilter& filter);
[[nodiscard]] std::vector<RecurringCharge> recurring(const CandidateGroups& groups,
                                                     const Ledger& ledger, LocalDate asOf);
[[nodiscard]] std::vector<UnusualCharge> unusual(const CandidateGroups& groups,
                                                 const Ledger& ledger, const ReportFilter& filter);

}  // namespace detail

}  // namespace Insights

}  // namespace copperwick
