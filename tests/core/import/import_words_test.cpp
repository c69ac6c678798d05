#include "core/import/import_words.h"

#include <gtest/gtest.h>

namespace copperwick {
namespace {

TEST(ImportWords, HistoryCountsNameHeldAndSkippedRowsOnlyWhenThereAreSome) {
    ImportCounts counts{.totalRows = 10,
                        .imported = 6,
                        .duplicates = 0,
                        .replacedPending = 1,
                        .forcedDuplicates = 1};
    // Everything the import added: new rows, posted pending charges, forced rows.
    EXPECT_EQ(importCountsLine(counts), "8 added, 0 already saved");
    counts.heldDuplicates = 2;
    counts.errors = 1;
    EXPECT_EQ(importCountsLine(counts), "8 added, 0 already saved, 2 held back, 1 skipped rows");
}

TEST(ImportWords, WaitingFilesAreToldAsOneOrSeveral) {
    EXPECT_FALSE(blockedLine(0));
    EXPECT_EQ(blockedLine(1), "1 file needs a decision first (see above), or turn it off.");
    EXPECT_EQ(blockedLine(2), "2 files need a decision first (see above), or turn them off.");
}

}  // namespace
}  // namespace copperwick
