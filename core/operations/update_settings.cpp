#include "core/operations/update_settings.h"

#include "core/model/money.h"
#include "core/model/text.h"
#include "core/operations/entry_error.h"

namespace copperwick {

namespace {

void checkSavingsGoal(const std::optional<int64_t>& goal) {
    if (goal && (*goal < 1 || *goal > kLargestSavingsGoal))
        throw EntryError(EntryError::Case::savingsGoal);
}

}  // namespace

LedgerDelta updateSettings(Ledger& ledger, const std::function<void(LedgerSettings&)>& change) {
    ledger.settings.update(change);
    LedgerDelta delta;
    delta.change(RecordKind::settings, std::string(LedgerDelta::kSettingsID));
    return delta;
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
