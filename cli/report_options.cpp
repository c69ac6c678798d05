#include "cli/report_options.h"

#include <algorithm>
#include <ostream>

#include "cli/commands.h"
#include "cli/ledger_lookup.h"
#include "core/operations/currency_code.h"
#include "core/operations/entry_error.h"
#include "core/reports/period_choice.h"

namespace copperwick::cli {

void addReportOptions(CLI::App& command, ReportOptions& options) {
    command
        .add_option("--period", options.period,
                    "thisMonth, lastMonth, last3Months, yearToDate, lastYear, last12Months or "
                    "allTime (default thisMonth)")
        ->type_name("PERIOD");
    command.add_option("--from", options.from, "First day of a custom period (YYYY-MM-DD)");
    command.add_option("--to", options.to, "Last day of a custom period (YYYY-MM-DD)");
    command.add_option("--people", options.people, "Only these people (names or ids)")
        ->delimiter(',')
        ->type_name("NAME,...");
    command.add_flag("--household", options.household, "The whole household (the default)");
    command
        .add_option("--people-mode", options.peopleMode,
                    "assigned: spending assigned to them; cards: everything on their cards")
        ->type_name("assigned|cards");
    command.add_flag("--include-shared", options.includeShared, "Count shared spending too");
    command.add_flag("--include-unassigned", options.includeUnassigned,
                     "Count spending that belongs to nobody yet");
    command.add_option("--currency", options.currency,
                       "Report in this currency (default: the ledger's report currency)");
}

std::optional<ReportFilter> reportFilter(const ReportOptions& options, const Ledger& ledger,
                                         LocalDate today, CommandContext& context) {
    const auto usage = [&](const std::string& message) -> std::optional<ReportFilter> {
        context.err << message << '\n';
        context.exitCode = kExitUsage;
        return std::nullopt;
    };

    PeriodChoice choice = PeriodChoice::thisMonth;
    if (!options.period.empty()) {
        const auto named = enumFromRaw<PeriodChoice>(options.period);
        if (!named || *named == PeriodChoice::custom)
            return usage("\u201C" + options.period +
                         "\u201D isn't a period. Use thisMonth, "
                         "lastMonth, last3Months, yearToDate, lastYear, last12Months or allTime.");
        choice = *named;
    }
    LocalDate customStart = today, customEnd = today;
    if (!options.from.empty() || !options.to.empty()) {
        if (!options.period.empty())
            return usage("Choose either --period or --from and --to, not both.");
        if (options.from.empty() || options.to.empty())
            return usage("A custom period needs both --from and --to.");
        const auto from = LocalDate::fromISO(options.from);
        const auto to = LocalDate::fromISO(options.to);
        if (!from || !to)
            return usage("Dates are written YYYY-MM-DD, such as 2026-03-01.");
        choice = PeriodChoice::custom;
        customStart = *from;
        customEnd = *to;
    }
    const DateSpan span = copperwick::span(choice, ledger, today, customStart, customEnd);

    if (options.household && !options.people.empty())
        return usage("Choose either --people or --household, not both.");
    std::set<Uuid> personIDs;
    for (const auto& name : options.people) {
        const Person* person = findPerson(ledger, name);
        if (!person) {
            context.err << "There's no person called \u201C" << name << "\u201D.\n";
            context.exitCode = kExitFailure;
            return std::nullopt;
        }
        personIDs.insert(person->id);
    }
    PeopleMode mode = PeopleMode::assigned;
    if (!options.peopleMode.empty()) {
        const auto named = enumFromRaw<PeopleMode>(options.peopleMode);
        if (!named)
            return usage("--people-mode is assigned or cards.");
        mode = *named;
    }
    std::string currency = ledger.settings->reportCurrency;
    if (!options.currency.empty()) {
        try {
            currency = currencyEntered(options.currency);
        } catch (const EntryError& refusal) {
            return usage(refusal.what());
        }
    }
    return ReportFilter(span, std::move(personIDs), {}, currency, std::nullopt,
                        options.includeShared, options.includeUnassigned, mode);
}

}  // namespace copperwick::cli
