#pragma once

// The transactions behind a report's figures, for the drill-downs that open
// from a figure: the spending, the income with or without gifts, one month.
// Each list is a slice of the report's own ids, in its date order, so a
// drill-down's net can't drift from the figure it opens from. Pure functions
// of finished reports; safe on any thread for a ledger nobody writes meanwhile.

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "core/model/ledger.h"
#include "core/reports/report.h"

namespace copperwick::FigureDrillDowns {

// The posted spending lines, refunds among them: minus their net is the
// report's spending.
[[nodiscard]] std::vector<Uuid> spending(const Report& report);

// The posted income lines; `gifts` chooses the gifts received alone, and
// otherwise they are left out, as the Income tile leaves them out.
[[nodiscard]] std::vector<Uuid> income(const Report& report, const Ledger& ledger, bool gifts);

// Every posted income line, gifts among them: their net is the report's income.
[[nodiscard]] std::vector<Uuid> allIncome(const Report& report);

// The category's lines in the report (pieces of split lines among them);
// none when the category spent nothing in the period.
[[nodiscard]] std::vector<Uuid> category(const Report& report, const Uuid& categoryID);

// The income and spending lines of one month ("YYYY-MM") of the report:
// their net is the month's income minus its spending.
[[nodiscard]] std::vector<Uuid> month(const Report& report, const Ledger& ledger,
                                      std::string_view monthKey);

// The signed sum of the lines' amounts; ids not in the ledger count nothing.
[[nodiscard]] int64_t net(const std::vector<Uuid>& ids, const Ledger& ledger);

// The signed sum of the lines' amounts in one category (none: the
// uncategorized lines), where a split line counts only its parts filed
// there, as the report counts them: minus it is the category's spending.
[[nodiscard]] int64_t categoryNet(const std::vector<Uuid>& ids, const Ledger& ledger,
                                  const std::optional<Uuid>& categoryID);

}  // namespace copperwick::FigureDrillDowns
