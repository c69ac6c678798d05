#pragma once

// What went through person-to-person payment services: per person or
// business and per service, how much was sent and received and how each
// payment was counted. A neutral account of activity that stands beside the
// budget and never feeds a report's figures. Pure; safe on any thread.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "core/model/ledger.h"
#include "core/model/payment_service.h"
#include "core/reports/report_filter.h"

namespace copperwick {

struct PaymentActivityLine {
    std::string id;  // "<service id>:<merchant identity id>", unique in one activity
    std::string name;
    PaymentService service = PaymentService::zelle;
    int64_t sent = 0;      // magnitudes of the money out
    int64_t received = 0;  // money in, zero amounts included
    std::vector<Uuid> transactionIDs;
    std::vector<std::string> howCounted;  // distinct treatments, ascending

    [[nodiscard]] int64_t net() const;

    friend bool operator==(const PaymentActivityLine&, const PaymentActivityLine&) = default;
};

struct PaymentActivity {
    std::vector<PaymentActivityLine> lines;  // biggest volume first, ties by id
    int64_t sent = 0;
    int64_t received = 0;
    std::vector<Uuid> transactionIDs;  // the lines' ids, in line order

    [[nodiscard]] int64_t net() const;

    // The Overview shows the panel whenever the settings track a service,
    // with or without activity.
    [[nodiscard]] static bool panelShown(const Ledger& ledger);

    // The Overview's panel lists the biggest lines only; the rest are one
    // click away, in Transactions.
    static constexpr std::size_t kPanelLines = 12;

    // The lines the panel lists: the first kPanelLines, in line order.
    [[nodiscard]] std::span<const PaymentActivityLine> panelLines() const;

    // "Use Show in Transactions to see all 13 names." under a panel that
    // leaves lines out; absent when it lists them all.
    [[nodiscard]] std::optional<std::string> allNamesNote() const;

    // Payments of every kind, transfers and unreviewed ones too, for the
    // services the settings track. With none tracked, there is no activity.
    [[nodiscard]] static PaymentActivity build(const Ledger& ledger, const ReportFilter& filter);

    friend bool operator==(const PaymentActivity&, const PaymentActivity&) = default;
};

}  // namespace copperwick
