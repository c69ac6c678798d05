// `copperwick payments [period and people options]`: what went through
// person-to-person payment services, as the Reports overview shows it, and
// the Zelle payments by person with how each was counted.

#include <memory>
#include <ostream>

#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/payment_panels.h"
#include "cli/report_json.h"
#include "cli/report_options.h"
#include "cli/runtime_session.h"

namespace copperwick::cli {

namespace {

void runPayments(CommandContext& context, const ReportOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const auto filter = reportFilter(options, ledger, runtime->today(), context);
    if (!filter)
        return;
    const ReportBundle bundle = runtime->buildReportBundle(*filter);
    reportNotes(*runtime, context);
    if (context.json) {
        printJSON(context, boost::json::object{{"filter", report_json::toJSON(bundle.filter)},
                                               {"scopeLabel", bundle.report().scopeLabel},
                                               {"payments", report_json::toJSON(bundle.payments)},
                                               {"zelle", report_json::toJSON(bundle.zelle)}});
        return;
    }
    std::ostream& out = context.out;
    out << filter->span.label() << " \u00B7 " << bundle.report().scopeLabel << "\n\n";
    if (!PaymentActivity::panelShown(ledger))
        out << "No payment services are selected. Choose them with `copperwick settings "
               "paymentServices`.\n";
    else
        printPaymentServices(out, ledger, bundle);
    out << '\n';
    printZelle(out, bundle);
    if (!bundle.zelle.household.isEmpty()) {
        out << '\n';
        printHouseholdMoney(out, bundle);
    }
}

}  // namespace

void addPaymentsCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand(
        "payments", "What went through Zelle, Venmo and other payment services, by person");
    auto options = std::make_shared<ReportOptions>();
    addReportOptions(*command, *options);
    command->callback([&context, options] { runPayments(context, *options); });
}

}  // namespace copperwick::cli
