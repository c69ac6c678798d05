#pragma once

// One committed import file, with what became of its rows.

#include <cstdint>
#include <optional>
#include <string>

#include "core/model/instant.h"
#include "core/model/local_date.h"
#include "core/model/uuid.h"

namespace copperwick {

struct ImportCounts {
    int64_t totalRows = 0;
    int64_t imported = 0;
    int64_t duplicates = 0;
    int64_t replacedPending = 0;
    int64_t heldDuplicates = 0;
    int64_t forcedDuplicates = 0;
    int64_t errors = 0;
    int64_t blank = 0;

    friend bool operator==(const ImportCounts&, const ImportCounts&) = default;
};

struct ImportBatch {
    Uuid id;
    std::string fileName;
    std::string fileHash;
    Uuid accountID;
    std::string profileID;
    Instant importedAt;
    ImportCounts counts;
    std::optional<LocalDate> firstDate;
    std::optional<LocalDate> lastDate;

    friend bool operator==(const ImportBatch&, const ImportBatch&) = default;
};

}  // namespace copperwick
