#pragma once

// The one settings record of a data file: everything about the data that
// isn't a per-machine switch. Every field has a default, so an empty stored
// object is a valid settings record.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <unicode/timezone.h>

#include "core/model/payment_service.h"
#include "core/model/uuid.h"

namespace copperwick {

struct LedgerSettings {
    static constexpr std::string_view kDefaultTimeZoneID = "America/Los_Angeles";

    std::string timeZoneID{kDefaultTimeZoneID};
    bool keepSourceText = true;
    std::vector<std::string> disabledBuiltInRules;
    std::string reportCurrency = "USD";
    std::vector<Uuid> ruleOrder;
    std::vector<std::string> dismissedNotes;
    std::vector<PaymentService> paymentServices{PaymentService::zelle};
    std::optional<int64_t> monthlySavingsGoal;
    std::optional<std::string> monthlySavingsGoalCurrency;

    // The zone "today" is taken in. An unknown identifier falls back to Los
    // Angeles, and failing that to the machine's own zone.
    [[nodiscard]] std::unique_ptr<icu::TimeZone> timeZone() const;

    friend bool operator==(const LedgerSettings&, const LedgerSettings&) = default;
};

}  // namespace copperwick
