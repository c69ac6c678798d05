#pragma once

// What importing one analysed file into one account would do, line by line,
// before anything is saved.
//
// Bank files overlap: they are exported again, cover the same weeks again,
// and pending lines come back posted under new text, a new date and a
// changed amount. Planning makes re-importing add nothing twice while two
// honest identical purchases on one day are both kept. A plan belongs to one
// analysis and one account and is remade whenever either changes.

#include <cstdint>
#include <optional>
#include <vector>

#include "core/import/file_analysis.h"
#include "core/model/enum_text.h"
#include "core/model/ledger.h"

namespace copperwick {

// What becomes of one row. `match` names the existing transaction for every
// kind but `newRow`.
struct RowDisposition {
    enum class Kind {
        duplicate,          // already saved: skipped
        replacesPending,    // the posted form of a pending charge, which it replaces
        possibleDuplicate,  // looks like a saved one: held back unless forced
        newRow,             // imported
    };
    Kind kind = Kind::newRow;
    std::optional<Uuid> match;

    friend bool operator==(const RowDisposition&, const RowDisposition&) = default;
};

template <>
struct EnumTraits<RowDisposition::Kind> {
    static constexpr std::array<std::pair<RowDisposition::Kind, std::string_view>, 4> cases{{
        {RowDisposition::Kind::duplicate, "duplicate"},
        {RowDisposition::Kind::replacesPending, "replacesPending"},
        {RowDisposition::Kind::possibleDuplicate, "possibleDuplicate"},
        {RowDisposition::Kind::newRow, "new"},
    }};
};

// What becomes of the row, as the plan's preview says it beside the row:
// "already saved", "replaces pending", "held for you", "new".
[[nodiscard]] std::string_view label(RowDisposition::Kind kind);

struct PlannedRow {
    ParsedRow row;
    RowDisposition disposition;

    friend bool operator==(const PlannedRow&, const PlannedRow&) = default;
};

struct ImportPlan {
    struct Totals {
        int64_t moneyIn = 0;
        int64_t moneyOut = 0;  // negative
    };

    Uuid analysisID;
    Uuid accountID;
    std::vector<PlannedRow> rows;  // one per parsed row, in file order
    std::vector<RowIssue> issues;
    int64_t blankLines = 0;
    int64_t skippedLines = 0;
    // An earlier import of the very same bytes into this account.
    std::optional<ImportBatch> previousImport;

    [[nodiscard]] std::vector<const PlannedRow*> newRows() const;
    [[nodiscard]] int64_t newCount() const;
    [[nodiscard]] int64_t duplicateCount() const;
    [[nodiscard]] int64_t replacesPendingCount() const;
    [[nodiscard]] std::vector<const PlannedRow*> possibleDuplicates() const;
    // Of the rows that would be saved (new or replacing a pending charge).
    [[nodiscard]] Totals totals() const;
    // Over every row, whatever becomes of it.
    [[nodiscard]] std::optional<LocalDate> firstDate() const;
    [[nodiscard]] std::optional<LocalDate> lastDate() const;
};

namespace ImportPlanner {

// A pure function of its arguments; never fails. An account with no
// transactions gives every row `newRow`.
[[nodiscard]] ImportPlan plan(const FileAnalysis& analysis, const Uuid& accountID,
                              const Ledger& ledger);

}  // namespace ImportPlanner

}  // namespace copperwick
