#include "core/operations/update_settings.h"

namespace copperwick {

LedgerDelta updateSettings(Ledger& ledger, const std::function<void(LedgerSettings&)>& change) {
    ledger.settings.update(change);
    LedgerDelta delta;
    delta.change(RecordKind::settings, std::string(LedgerDelta::kSettingsID));
    return delta;
}

}  // namespace copperwick
