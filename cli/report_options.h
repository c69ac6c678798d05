#pragma once

// The period and people options that every report-shaped command shares
// (`report`, `notes`), and the ReportFilter they describe.

#include <optional>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "cli/command_line.h"
#include "core/model/ledger.h"
#include "core/reports/report_filter.h"

namespace copperwick::cli {

struct ReportOptions {
    std::string period;
    std::string from;
    std::string to;
    std::vector<std::string> people;
    bool household = false;
    std::string peopleMode;
    bool includeShared = false;
    bool includeUnassigned = false;
    std::string currency;
};

void addReportOptions(CLI::App& command, ReportOptions& options);

// The filter the options describe on `today`; this month for the whole
// household in the report currency when nothing is chosen. Absent, with the
// reason printed and the exit code set, when an option can't be read.
[[nodiscard]] std::optional<ReportFilter> reportFilter(const ReportOptions& options,
                                                       const Ledger& ledger, LocalDate today,
                                                       CommandContext& context);

}  // namespace copperwick::cli
