#include "cli/payment_panels.h"

#include <ostream>

#include <fmt/format.h>

#include "core/model/money.h"
#include "core/model/text.h"

namespace copperwick::cli {

namespace {

std::string joinedWords(const std::vector<std::string>& words) {
    std::string out;
    for (const auto& word : words)
        out += (out.empty() ? "" : "; ") + word;
    return out;
}

}  // namespace

void printPaymentServices(std::ostream& out, const Ledger& ledger, const ReportBundle& bundle) {
    if (!PaymentActivity::panelShown(ledger))
        return;
    const PaymentActivity& activity = bundle.payments;
    const std::string& currency = bundle.filter.currency;
    const auto money = [&](int64_t cents, bool showPlus = false) {
        return Money::format(cents, currency, false, showPlus);
    };
    out << "Payment services\n  Account activity \u00B7 " << bundle.report().scopeLabel << '\n';
    out << fmt::format("  {:<24}{:>16}\n  {:<24}{:>16}\n  {:<24}{:>16}\n", "Sent",
                       money(activity.sent), "Received", money(activity.received), "Net",
                       money(activity.net(), true));
    if (activity.lines.empty()) {
        out << "  No activity for the selected services in this period.\n";
    } else {
        out << fmt::format("  {:<32}{:<12}{:>14}{:>14}{:>14}\n", "Person or business", "Service",
                           "Sent", "Received", "Net");
        for (const auto& line : activity.panelLines()) {
            out << fmt::format("  {:<32}{:<12}{:>14}{:>14}{:>14}\n", line.name, name(line.service),
                               money(line.sent), money(line.received), money(line.net(), true));
        }
        if (const auto note = activity.allNamesNote())
            out << "  " << *note << '\n';
    }
    out << "  Net = received \u2212 sent. Display choices do not change how payments are filed "
           "or counted.\n";
}

void printHouseholdMoney(std::ostream& out, const ReportBundle& bundle) {
    const HouseholdMoney& household = bundle.zelle.household;
    if (!bundle.showsHouseholdMoney())
        return;
    const std::string& currency = bundle.filter.currency;
    out << "Money moved within the household\n";
    if (!household.sentIDs.empty())
        out << fmt::format("  {:<28}{:>16}  {} transactions\n", "Sent to the household",
                           Money::format(household.sent, currency), household.sentIDs.size());
    if (!household.receivedIDs.empty())
        out << fmt::format("  {:<28}{:>16}  {} transactions\n", "Received from the household",
                           Money::format(household.received, currency),
                           household.receivedIDs.size());
    out << "  Not counted as income or spending. Shown so these numbers line up with what "
           "happened in the accounts.\n";
}

void printZelle(std::ostream& out, const ReportBundle& bundle) {
    const ZelleSummary& zelle = bundle.zelle;
    const std::string& currency = bundle.filter.currency;
    out << "Zelle\n";
    if (zelle.lines.empty()) {
        out << "  No Zelle payments in this period.\n";
        return;
    }
    out << fmt::format("  {:<24}{:>16}  {:<24}{:>16}\n", "Sent",
                       Money::format(zelle.sent, currency), "Received",
                       Money::format(zelle.received, currency));
    for (const auto& line : zelle.lines) {
        out << fmt::format("  {:<32}{:>6}{:>14}{:>14}  {}\n", line.name,
                           fmt::format("{}\u00D7", line.count), Money::format(line.sent, currency),
                           Money::format(line.received, currency), joinedWords(line.howCounted));
    }
}

}  // namespace copperwick::cli
