#pragma once

// The report values as JSON for `--json`: keys are the field names exactly,
// optional fields are left out when absent, and the derived figures a reader
// would otherwise work out (savings, remaining, changes) stand beside them.

#include <boost/json/value.hpp>

#include "core/reports/account_freshness.h"
#include "core/reports/report_bundle.h"

namespace copperwick::cli::report_json {

[[nodiscard]] boost::json::value toJSON(const ReportFilter& filter);
[[nodiscard]] boost::json::value toJSON(const Report& report);
[[nodiscard]] boost::json::value toJSON(const DataNote& note);
[[nodiscard]] boost::json::value toJSON(const ReportComparison& comparison);
[[nodiscard]] boost::json::value toJSON(const BudgetLine& line);
[[nodiscard]] boost::json::value toJSON(const RecurringCharge& charge);
[[nodiscard]] boost::json::value toJSON(const UnusualCharge& charge);
[[nodiscard]] boost::json::value toJSON(const PaymentActivity& activity);
[[nodiscard]] boost::json::value toJSON(const ZelleSummary& summary);
[[nodiscard]] boost::json::value toJSON(const ReportBundle& bundle);
[[nodiscard]] boost::json::value toJSON(const AccountFreshness& freshness);

}  // namespace copperwick::cli::report_json
