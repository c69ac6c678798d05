#pragma once

// The one place where planned rows become ledger transactions, and the one
// way to take a whole import back out again. Both change the given ledger
// and return what changed; the caller saves it. Neither fails.
//
// An import is undone by undoImport, never through the undo history: the
// commit records no change set, and undoing it drops from the history every
// step that speaks of the transactions it removes.

#include <set>
#include <utility>
#include <vector>

#include "core/import/file_analysis.h"
#include "core/import/import_planner.h"
#include "core/model/import_batch.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// The analysis is the caller's, read during the commit: a file of a hundred
// thousand rows is worth not copying.
struct ImportCommitItem {
    const FileAnalysis& analysis;
    ImportPlan plan;
    std::set<int64_t> forcedLines;  // held rows the person imports all the same
};

struct ImportCommitResult {
    LedgerDelta delta;
    std::vector<ImportBatch> batches;
};

// How many of the plan's rows a commit saves: the new ones, those that
// replace a pending charge, and the held ones named in `forcedLines`.
[[nodiscard]] int64_t rowsToSave(const ImportPlan& plan, const std::set<int64_t>& forcedLines);

// Works through the items in order, then files everything new in one
// rematch (which also pairs transfers). An item the session should already
// have refused (no account, a cash wallet, no layout, another currency) is
// passed over without a word, and so is one with no row to save: an import
// that brings nothing leaves no import record behind.
[[nodiscard]] ImportCommitResult commitImport(Ledger& ledger,
                                              const std::vector<ImportCommitItem>& items,
                                              Instant importedAt);

// Removes the batch's transactions (and a cash wallet's side paired with
// them), brings back the pending charges they had replaced, and forgets
// their source lines.
[[nodiscard]] LedgerDelta undoImport(Ledger& ledger, const Uuid& batchID);

}  // namespace copperwick
