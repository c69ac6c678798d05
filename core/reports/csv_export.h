#pragma once

// Transactions and report summaries as CSV text that a spreadsheet opens safely. Bank text that
// looks like a formula is defused with a leading apostrophe, while real
// negative amounts stay numbers. Pure functions giving text; whoever asked
// writes the file (as UTF-8).

#include <string>
#include <string_view>
#include <vector>

#include "core/model/ledger.h"
#include "core/reports/payment_activity.h"
#include "core/reports/report.h"

namespace copperwick::CSVExport {

// One cell: quoted when it holds a comma, a quote or a line break or has a
// space at either end; otherwise given an apostrophe when it would start a
// formula and isn't an amount.
[[nodiscard]] std::string quote(std::string_view text);

// One line of cells, without its line feed.
[[nodiscard]] std::string row(const std::vector<std::string>& cells);

// The named transactions (ids not in the ledger are passed over), by date
// then id, under a header of 19 columns. No line feed after the last line.
[[nodiscard]] std::string transactions(const std::vector<Uuid>& ids, const Ledger& ledger);

// A report in one file: its scope, the summary figures, categories with their
// merchants, income sources, payment services when there are any, and the
// notes. Amounts are plain decimals, so a spreadsheet reads them as numbers.
[[nodiscard]] std::string reportSummary(const Report& report, const PaymentActivity& payments);

}  // namespace copperwick::CSVExport
