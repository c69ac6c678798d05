#pragma once

// Zelle payments by person, and the money moved between members of the
// household. Such a move is a transfer, so it is neither income nor spending,
// but it is shown so that the figures line up with the accounts. Pure
// functions of the ledger and the filter; safe on any thread.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/ledger.h"
#include "core/reports/report_filter.h"

namespace copperwick {

struct ZelleLine {
    std::string id;  // the merchant identity's id
    std::string name;
    int64_t received = 0;
    int64_t sent = 0;
    int64_t count = 0;
    std::vector<std::string> howCounted;  // distinct treatments, ascending
    std::vector<Uuid> transactionIDs;     // by date, ties by id

    friend bool operator==(const ZelleLine&, const ZelleLine&) = default;
};

struct HouseholdMoney {
    int64_t sent = 0;
    int64_t received = 0;
    std::vector<Uuid> sentIDs;
    std::vector<Uuid> receivedIDs;

    [[nodiscard]] bool isEmpty() const { return sentIDs.empty() && receivedIDs.empty(); }

    friend bool operator==(const HouseholdMoney&, const HouseholdMoney&) = default;
};

struct ZelleSummary {
    std::vector<ZelleLine> lines;
    int64_t received = 0;
    int64_t sent = 0;
    std::vector<Uuid> transactionIDs;
    HouseholdMoney household;

    friend bool operator==(const ZelleSummary&, const ZelleSummary&) = default;
};

namespace ZelleActivity {

inline constexpr std::string_view kGiftsReceivedCategory = "Gifts received";
inline constexpr std::string_view kPayingEachOtherCategory = "Paying each other";

// Every posted, active Zelle payment of the filter's span and scope by
// person, biggest volume first, and the household's money beside them.
// Unlike the service activity it doesn't read the settings' service list.
[[nodiscard]] ZelleSummary build(const Ledger& ledger, const ReportFilter& filter);

// Narrower than detecting the service: the payment-service reading of the
// text must say Zelle. "BANK ZELLEPAY 123" is Zelle activity, but not here.
[[nodiscard]] bool isZelle(std::string_view text);

// The names the household's people go by at their banks, normalized; names
// under four characters are left out, since they'd match too much.
[[nodiscard]] std::vector<std::string> householdPhrases(const Ledger& ledger);

[[nodiscard]] bool matchesHousehold(const LedgerTransaction& transaction,
                                    const std::vector<std::string>& phrases);

// How the payment was counted, in words: "Spending: Dining", "Gift received",
// "Household, not counted", "Needs review".
[[nodiscard]] std::string treatment(const LedgerTransaction& transaction, const Ledger& ledger,
                                    bool isHouseholdMoney);

// The tests a payment must pass to count in either activity: posted, active,
// inside the span and in scope.
[[nodiscard]] bool counts(const LedgerTransaction& transaction, const Ledger& ledger,
                          const ReportFilter& filter);

}  // namespace ZelleActivity

}  // namespace copperwick
