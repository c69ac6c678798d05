#include "core/operations/upsert_profile.h"

#include <string>
#include <utility>

namespace copperwick {

LedgerDelta upsertProfile(Ledger& ledger, ImportProfile profile) {
    // A built-in layout saved as taught (say, one proposed from a built-in
    // starting point) must not pretend to live in code.
    profile.isBuiltIn = false;
    LedgerDelta delta;
    delta.change(RecordKind::profile, profile.id);
    for (std::size_t i = 0; i < ledger.profiles.size(); ++i) {
        if (ledger.profiles[i].id == profile.id) {
            ledger.profiles.set(i, std::move(profile));
            return delta;
        }
    }
    ledger.profiles.push_back(std::move(profile));
    return delta;
}

}  // namespace copperwick
