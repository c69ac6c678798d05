#include "core/store/store_error.h"

namespace copperwick {

StoreError StoreError::open(std::string detail) {
    const std::string description = "Copperwick couldn't open its data file: " + detail;
    return StoreError(Case::open, std::move(detail), 0, description);
}

StoreError StoreError::sql(std::string detail) {
    const std::string description = "Copperwick couldn't save: " + detail;
    return StoreError(Case::sql, std::move(detail), 0, description);
}

StoreError StoreError::newerVersion(int version) {
    return StoreError(Case::newerVersion, {}, version,
                      "This data was saved by a newer Copperwick (format " +
                          std::to_string(version) + "). Install the newer app to open it.");
}

StoreError StoreError::changedElsewhere() {
    return StoreError(Case::changedElsewhere, {}, 0,
                      "Another program changed Copperwick's data while this change was being "
                      "saved, so it wasn't saved. Try it again.");
}

StoreError StoreError::busy() {
    return StoreError(Case::busy, {}, 0,
                      "Copperwick couldn't save because another program kept its data file busy. "
                      "Try it again in a moment.");
}

}  // namespace copperwick
