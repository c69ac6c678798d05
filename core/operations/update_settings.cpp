#include "core/operations/update_settings.h"

#include <algorithm>
#include <memory>

#include <unicode/timezone.h>

#include "core/model/money.h"
#include "core/model/text.h"
#include "core/operations/currency_code.h"
#include "core/operations/entry_error.h"

namespace copperwick {

namespace {

void checkSavingsGoal(const std::optional<int64_t>& goal) {
    if (goal && (*goal < 1 || *goal > kLargestSavingsGoal))
        throw EntryError(EntryError::Case::savingsGoal);
}

bool isKnownTimeZone(std::string_view id) {
    const std::unique_ptr<icu::TimeZone> zone(
        icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(
            icu::StringPiece(id.data(), static_cast<int32_t>(id.size())))));
    return zone && *zone != icu::TimeZone::getUnknown();
}

}  // namespace

LedgerDelta updateSettings(Ledger& ledger, const std::function<void(LedgerSettings&)>& change) {
    const LedgerSettings& before = *ledger.settings;
    LedgerSettings after = before;
    change(after);
    if (after.timeZoneID != before.timeZoneID && !isKnownTimeZone(after.timeZoneID))
        throw EntryError(EntryError::Case::timeZone);
    if (after.reportCurrency != before.reportCurrency && !isCurrencyCode(after.reportCurrency))
        throw EntryError(EntryError::Case::currency);
    if (after.monthlySavingsGoal != before.monthlySavingsGoal)
        checkSavingsGoal(after.monthlySavingsGoal);
    ledger.settings.update([&](LedgerSettings& settings) { settings = std::move(after); });
    LedgerDelta delta;
    delta.change(RecordKind::settings, std::string(LedgerDelta::kSettingsID));
    return delta;
}

std::string timeZoneEntered(std::string_view text) {
    std::string id(text::trimmed(text));
    if (!isKnownTimeZone(id))
        throw EntryError(EntryError::Case::timeZone, "There is no time zone called " + id + ".");
    return id;
}

std::vector<PaymentService> paymentServicesEntered(std::string_view text) {
    std::vector<PaymentService> services;
    for (const auto word : text::splitDroppingEmpty(text, ",")) {
        const auto trimmed = std::string(text::trimmed(word));
        if (trimmed.empty() || trimmed == "none")
            continue;
        const auto service = enumFromRaw<PaymentService>(trimmed);
        if (!service)
            throw EntryError(EntryError::Case::paymentService,
                             "There is no payment service called " + trimmed +
                                 "; choose from zelle, venmo, cashApp, paypal, appleCash.");
        if (std::find(services.begin(), services.end(), *service) == services.end())
            services.push_back(*service);
    }
    std::sort(services.begin(), services.end());
    return services;
}

std::optional<int64_t> savingsGoalEntered(std::string_view text) {
    if (text::trimmedSpaces(text).empty())
        return std::nullopt;
    const auto goal = Money::parseCents(text);
    if (!goal)
        throw EntryError(EntryError::Case::savingsGoal);
    checkSavingsGoal(goal);
    return goal;
}

LedgerDelta setSavingsGoal(Ledger& ledger, std::optional<int64_t> goal) {
    checkSavingsGoal(goal);
    return updateSettings(ledger, [&](LedgerSettings& settings) {
        settings.monthlySavingsGoal = goal;
        settings.monthlySavingsGoalCurrency = settings.reportCurrency;
    });
}

}  // namespace copperwick
