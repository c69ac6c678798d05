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

}  // namespace copperwick
