// `copperwick report [period and people options] [--tab TAB] [--summary]`:
// the Reports screen as text, tab by tab, with the key facts and Local AI's
// checked summary of them when asked, ending with the notes on what the
// numbers leave out. `--json` gives the whole report bundle.

#include <memory>
#include <ostream>
#include <string>

#include <fmt/format.h>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/payment_panels.h"
#include "cli/report_json.h"
#include "cli/report_options.h"
#include "cli/runtime_session.h"
#include "core/model/date_text.h"
#include "core/model/money.h"
#include "core/reports/household_context.h"
#include "core/reports/report_engine.h"
#include "core/reports/report_facts.h"
#include "core/reports/twelve_month_trend.h"
#include "runtime/intelligence_controller.h"

namespace copperwick::cli {

namespace {

constexpr std::string_view kTabs[] = {"overview", "categories", "merchants", "trends",
                                      "income",   "budgets",    "recurring"};

struct ReportCommandOptions {
    ReportOptions filter;
    std::string tab;
    bool summary = false;
};

std::string money(int64_t cents, const std::string& currency = "USD", bool showPlus = false) {
    return Money::format(cents, currency, false, showPlus);
}

void row(std::ostream& out, std::string_view label, const std::string& figure,
         std::string_view caption = {}) {
    out << fmt::format("  {:<24}{:>16}", label, figure);
    if (!caption.empty())
        out << "  " << caption;
    out << '\n';
}

// For a scope short of the whole household: how its spending compares with
// everyone's, over the same days.
void printHouseholdContext(std::ostream& out, const HouseholdContext& context) {
    out << "\nHousehold context\n  ";
    if (context.shareTenths)
        out << Money::percentText(*context.shareTenths) << " of household spending\n";
    else
        out << "No household spending in this period\n";
    out << "  " << context.scopeLabel << ": " << money(context.scopeSpending)
        << " \u00B7 Whole household: " << money(context.householdSpending) << '\n';
    if (context.familyBudgets)
        out << "  Family category budgets: " << money(*context.familyBudgets)
            << "\n  Whole household spending includes all people, shared, and unassigned "
               "transactions.\n";
}

void printOverview(std::ostream& out, const Ledger& ledger, const ReportBundle& bundle,
                   LocalDate today) {
    const Report& report = bundle.report();
    const std::string& currency = report.filter.currency;
    out << "Overview\n";
    if (report.isEmpty())
        out << "  Choose another period or import a bank file.\n";
    row(out, "Income", money(report.incomeWithoutGifts(), currency),
        std::to_string(report.incomeSources.size()) + " sources");
    if (report.showsGiftsReceived())
        row(out, "Gifts received", money(report.giftsReceived, currency),
            "Counted in net cash flow");
    const auto change = bundle.comparison.spendingChangeTenths();
    row(out, "Spending", money(report.spending, currency),
        change ? Money::percentText(*change, true) + " vs previous period"
               : std::string("No earlier period to compare"));
    const auto share = report.savingsRateTenths();
    row(out, "Net cash flow", money(report.savings(), currency),
        share ? Money::percentText(*share) + " of income" : std::string("No income recorded"));
    if (const auto& allowance = bundle.allowance) {
        row(out, "Spending allowance", money(allowance->allowance), "For the selected period");
        row(out, "Allowance left", money(allowance->left), allowance->personName);
    }
    if (const auto& goal = bundle.savingsGoal) {
        out << "\n"
            << goal->title() << (goal->isReached() ? " \u2713" : "") << "\n  "
            << money(goal->saved, goal->currency) << " of " << money(goal->target, goal->currency)
            << "\n  " << SavingsGoal::kCaption << '\n';
    }
    if (const auto context = HouseholdContext::build(ledger, report, today))
        printHouseholdContext(out, *context);
    if (bundle.showsHouseholdMoney()) {
        out << '\n';
        printHouseholdMoney(out, bundle);
    }
    if (PaymentActivity::panelShown(ledger)) {
        out << '\n';
        printPaymentServices(out, ledger, bundle);
    }
}

void printCategories(std::ostream& out, const ReportBundle& bundle) {
    const Report& report = bundle.report();
    const std::string& currency = report.filter.currency;
    out << "Spending by category\n";
    out << "  Compared with " << bundle.comparison.previous.filter.span.label() << '\n';
    if (bundle.comparison.categoryChanges.empty()) {
        out << "  No spending in this period.\n";
        return;
    }
    out << fmt::format("  {:<24}{:>16}{:>16}  {}\n", "Category", "This period", "Before", "Change");
    for (const auto& line : bundle.comparison.categoryChanges) {
        const auto tenths = line.changeTenths();
        out << fmt::format("  {:<24}{:>16}{:>16}  {}{}\n", line.name, money(line.current, currency),
                           money(line.previous, currency), money(line.change(), currency, true),
                           tenths ? " (" + Money::percentText(*tenths, true) + ")" : "");
    }
}

void printMerchants(std::ostream& out, const Report& report) {
    out << "Where the money went\n"
           "  Top 15 merchants by spending, after refunds. Payment services such as PayPal are "
           "shown as the business behind them when the bank text says.\n";
    if (report.topMerchants.empty()) {
        out << "  No spending in this period.\n";
        return;
    }
    for (const auto& line : report.topMerchants)
        row(out, line.name, money(line.amount, report.filter.currency),
            std::to_string(line.count) + (line.count == 1 ? " transaction" : " transactions"));
}

void printTrends(std::ostream& out, const Ledger& ledger, const Report& report, LocalDate today) {
    const TwelveMonthTrend trend = TwelveMonthTrend::build(ledger, report.filter, today);
    const std::string& currency = report.filter.currency;
    out << "Twelve months to " << DateText::monthLabel(trend.lastMonth.monthKey())
        << "\nBy month\n";
    out << fmt::format("  {:<10}{:>16}{:>16}{:>16}\n", "Month", "Income", "Spending", "Saved");
    for (const auto& month : trend.months) {
        out << fmt::format("  {:<10}{:>16}{:>16}{:>16}\n", DateText::monthLabel(month.monthKey),
                           money(month.income, currency), money(month.spending, currency),
                           money(month.net(), currency));
    }
    out << "  Average monthly spending over these 12 months: "
        << money(trend.averageSpending, currency)
        << ". Months before your first import show as zero.\n";
}

void printIncome(std::ostream& out, const Report& report) {
    out << "Income sources\n";
    if (report.incomeSources.empty()) {
        out << "  No income in this period. Paychecks are recognized automatically; other "
               "deposits wait in Review until you say what they are.\n";
        return;
    }
    for (const auto& line : report.incomeSources)
        row(out, line.name, money(line.amount, report.filter.currency));
    row(out, "Total income", money(report.income, report.filter.currency));
}

void printBudgets(std::ostream& out, const ReportBundle& bundle) {
    if (!bundle.filter.wholeHousehold) {
        out << "Household category budgets\n  Choose Whole household to compare family category "
               "budgets with the family's spending. Personal allowances appear in the Overview "
               "for each person.\n";
        return;
    }
    out << "Budget vs actual\n";
    if (const auto note = BudgetReport::periodNote(bundle.filter.span))
        out << "  " << *note << '\n';
    if (bundle.budgets.empty()) {
        out << "  No budgets yet. Set monthly amounts below.\n";
        return;
    }
    for (const auto& line : bundle.budgets)
        out << fmt::format("  {:<24}{}\n", line.name, line.summary());
}

void printRecurring(std::ostream& out, const ReportBundle& bundle) {
    out << "Recurring charges\n";
    if (bundle.recurring.empty()) {
        out << "  None found yet. A charge counts as recurring after at least three similar "
               "charges on a regular schedule.\n";
    } else {
        const RecurringTotal total = RecurringTotal::of(bundle.recurring);
        out << "  About " << money(total.monthly) << " a month across " << total.activeCount
            << '\n';
        for (const auto& charge : bundle.recurring) {
            std::string caption = std::string(label(charge.cadence));
            if (charge.isActive)
                caption += ", next " + DateText::medium(charge.nextExpected);
            else
                caption += ", Stopped " + DateText::medium(charge.lastDate);
            if (charge.priceChanged())
                caption += ", was " + money(charge.previousAmount);
            row(out, charge.merchantName, money(charge.typicalAmount), caption);
        }
        out << "  Found by arithmetic on your transactions (no AI): regular gaps between charges "
               "and steady amounts.\n";
    }
    out << "\nUnusual this period\n";
    if (bundle.unusual.empty()) {
        out << "  Nothing stands out: no charge was at least three times its merchant's usual "
               "amount, and no first-time charge was over $200.\n";
        return;
    }
    for (const auto& charge : bundle.unusual)
        out << "  " << DateText::medium(charge.date) << "  " << charge.merchantName << "  "
            << money(charge.amount) << "  " << charge.reason << '\n';
}

void printNotes(std::ostream& out, const Report& report) {
    out << "About these numbers\n";
    if (report.notes.empty()) {
        out << "  Nothing to add: every account is imported through this period.\n";
        return;
    }
    for (const auto& note : report.notes) {
        out << "  " << (note.severity == DataNote::Severity::warning ? "! " : "\u00B7 ")
            << note.text;
        if (note.acknowledgement)
            out << "  [" << note.id << "]";
        out << '\n';
    }
}

// Local AI's bullets about the report's key facts, each kept only when its
// figures are in the facts it cites; or why there are none.
struct Narrative {
    std::vector<ReportFact> facts;
    std::vector<GroundedBullet> bullets;
    std::optional<std::string> failure;
};

Narrative writeNarrative(LedgerRuntime& runtime, const ReportBundle& bundle) {
    Narrative narrative;
    narrative.facts = ReportFacts::build(bundle.comparison, bundle.recurring, bundle.unusual);
    IntelligenceController intelligence(runtime);
    const auto key = IntelligenceController::narrativeKey(bundle.filter, runtime.revision());
    intelligence.writeNarrative(key, narrative.facts);
    intelligence.wait();
    if (const auto found = intelligence.narratives().find(key);
        found != intelligence.narratives().end())
        narrative.bullets = found->second;
    if (const auto found = intelligence.narrativeFailures().find(key);
        found != intelligence.narrativeFailures().end())
        narrative.failure = found->second;
    return narrative;
}

void printNarrative(std::ostream& out, const Narrative& narrative) {
    out << "Key facts\n";
    for (const auto& fact : narrative.facts)
        out << "  " << fact.id << ": " << fact.text << '\n';
    out << "\nSummary by Local AI\n";
    if (narrative.failure) {
        out << "  " << *narrative.failure << '\n';
        return;
    }
    // Every bullet shown has had each of its figures found in the facts it cites.
    for (const auto& bullet : narrative.bullets) {
        std::string cited;
        for (const auto& fact : bullet.facts)
            cited += (cited.empty() ? "" : ", ") + fact.id;
        out << "  \u2713 " << bullet.text << " [" << cited << "]\n";
    }
}

boost::json::object narrativeJSON(const Narrative& narrative) {
    boost::json::array facts;
    for (const auto& fact : narrative.facts) {
        boost::json::array ids;
        for (const auto& id : fact.transactionIDs)
            ids.push_back(boost::json::string(id.text()));
        facts.push_back(
            boost::json::object{{"id", fact.id}, {"text", fact.text}, {"transactionIDs", ids}});
    }
    boost::json::array bullets;
    for (const auto& bullet : narrative.bullets) {
        boost::json::array factIDs;
        for (const auto& fact : bullet.facts)
            factIDs.push_back(boost::json::string(fact.id));
        bullets.push_back(
            boost::json::object{{"id", bullet.id}, {"text", bullet.text}, {"factIDs", factIDs}});
    }
    return {{"facts", facts},
            {"narrative", bullets},
            {"narrativeFailure", narrative.failure ? boost::json::value(*narrative.failure)
                                                   : boost::json::value(nullptr)}};
}

void runReport(CommandContext& context, const ReportCommandOptions& options) {
    if (!options.tab.empty() &&
        std::find(std::begin(kTabs), std::end(kTabs), options.tab) == std::end(kTabs)) {
        context.err << "\u201C" << options.tab
                    << "\u201D isn't a tab. Use overview, categories, merchants, trends, "
                       "income, budgets or recurring.\n";
        context.exitCode = kExitUsage;
        return;
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const LocalDate today = runtime->today();
    const auto filter = reportFilter(options.filter, ledger, today, context);
    if (!filter)
        return;
    const ReportBundle bundle = runtime->buildReportBundle(*filter);
    reportNotes(*runtime, context);
    std::optional<Narrative> narrative;
    if (options.summary)
        narrative = writeNarrative(*runtime, bundle);
    if (context.json) {
        auto json = report_json::toJSON(bundle);
        if (narrative) {
            for (auto& [key, value] : narrativeJSON(*narrative))
                json.as_object()[key] = std::move(value);
        }
        printJSON(context, json);
        return;
    }
    const Report& report = bundle.report();
    std::ostream& out = context.out;
    out << report.filter.span.label() << " \u00B7 " << report.scopeLabel << " \u00B7 "
        << report.filter.currency << "\n\n";
    const auto shows = [&](std::string_view tab) {
        return options.tab.empty() || options.tab == tab;
    };
    if (shows("overview")) {
        printOverview(out, ledger, bundle, today);
        out << '\n';
    }
    if (shows("categories")) {
        printCategories(out, bundle);
        out << '\n';
    }
    if (shows("merchants")) {
        printMerchants(out, report);
        out << '\n';
    }
    if (shows("trends")) {
        printTrends(out, ledger, report, today);
        out << '\n';
    }
    if (shows("income")) {
        printIncome(out, report);
        out << '\n';
    }
    if (shows("budgets")) {
        printBudgets(out, bundle);
        out << '\n';
    }
    if (shows("recurring")) {
        printRecurring(out, bundle);
        out << '\n';
    }
    if (narrative) {
        printNarrative(out, *narrative);
        out << '\n';
    }
    printNotes(out, report);
}

}  // namespace

void addReportCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand(
        "report",
        "Income, spending, categories, merchants, budgets and recurring charges for a "
        "period");
    auto options = std::make_shared<ReportCommandOptions>();
    addReportOptions(*command, options->filter);
    command
        ->add_option("--tab", options->tab,
                     "Only one part: overview, categories, merchants, trends, income, budgets or "
                     "recurring")
        ->type_name("TAB");
    command->add_flag("--summary", options->summary,
                      "Add the key facts and Local AI's summary of them, each of its figures "
                      "checked against the facts");
    command->callback([&context, options] { runReport(context, *options); });
}

}  // namespace copperwick::cli
