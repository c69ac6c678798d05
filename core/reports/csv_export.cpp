#include "core/reports/csv_export.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "core/model/household_resolution.h"
#include "core/model/money.h"

namespace copperwick::CSVExport {

namespace {

// A change's moment as ISO 8601 in UTC, to the second: "2026-03-09T14:15:00Z".
std::string utcText(Instant instant) {
    const auto seconds = static_cast<int64_t>(std::floor(instant.unixSeconds()));
    const int64_t days = seconds >= 0 ? seconds / 86400 : -((-seconds + 86399) / 86400);
    const int64_t inDay = seconds - days * 86400;
    return fmt::format("{}T{:02}:{:02}:{:02}Z", LocalDate::fromDayNumber(days).iso(), inDay / 3600,
                       inDay / 60 % 60, inDay % 60);
}

template <typename T, typename Text>
std::string joined(const std::vector<T>& items, Text&& text) {
    std::string out;
    for (const auto& item : items) {
        if (!out.empty())
            out += "; ";
        out += text(item);
    }
    return out;
}

}  // namespace

std::string quote(std::string_view text) {
    // A carriage return ends a line for spreadsheets as a line feed does, and
    // a tab at either end is trimmed like a space.
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    const bool needsQuotes = text.find_first_of(",\"\n\r") != std::string_view::npos ||
                             (!text.empty() && (isBlank(text.front()) || isBlank(text.back())));
    if (needsQuotes) {
        std::string quoted = "\"";
        // Some spreadsheets start a formula after a leading tab or return too.
        if (text.front() == '\t' || text.front() == '\r')
            quoted += '\'';
        for (const char c : text) {
            if (c == '"')
                quoted += '"';
            quoted += c;
        }
        return quoted + '"';
    }
    if (!text.empty() && std::string_view("=+-@").find(text.front()) != std::string_view::npos &&
        !Money::parseCents(text))
        return "\"'" + std::string(text) + "\"";
    return std::string(text);
}

std::string row(const std::vector<std::string>& cells) {
    std::string line;
    for (std::size_t i = 0; i < cells.size(); ++i) {
        if (i > 0)
            line += ',';
        line += quote(cells[i]);
    }
    return line;
}

std::string transactions(const std::vector<Uuid>& ids, const Ledger& ledger) {
    std::vector<const LedgerTransaction*> lines;
    for (const auto& id : ids) {
        if (const LedgerTransaction* transaction = ledger.transaction(id))
            lines.push_back(transaction);
    }
    // Uuid order is its text's order.
    std::sort(lines.begin(), lines.end(), [](const auto* a, const auto* b) {
        return a->date != b->date ? a->date < b->date : a->id < b->id;
    });
    lines.erase(std::unique(lines.begin(), lines.end()), lines.end());

    std::string text =
        row({"Date", "Posted", "Account", "Owner", "Description", "Merchant", "Kind", "Category",
             "Amount", "Currency", "Status", "Matched by", "Note", "Source", "Original date",
             "Original amount", "Original description", "Split allocations", "Corrections"});
    for (const LedgerTransaction* t : lines) {
        const Account* account = ledger.account(t->accountID);
        const Merchant* merchant = ledger.merchant(t->merchantID);
        const LedgerCategory* category = ledger.category(t->categoryID);
        const auto& original = t->originalDetails;
        const std::string splits =
            t->splits ? joined(*t->splits,
                               [&](const TransactionSplit& part) {
                                   const LedgerCategory* named = ledger.category(part.categoryID);
                                   return (named ? named->name : std::string("Uncategorized")) +
                                          ": " + Money::decimalString(part.amount);
                               })
                      : std::string();
        const std::string corrections =
            t->revisions ? joined(*t->revisions,
                                  [](const TransactionRevision& revision) {
                                      return utcText(revision.changedAt) + ": " + revision.reason;
                                  })
                         : std::string();
        text += '\n';
        text += row({t->date.iso(), t->postedDate ? t->postedDate->iso() : std::string(),
                     account ? account->name : std::string(),
                     assignmentName(ledger, assignment(ledger, *t)), t->rawDescription,
                     merchant ? merchant->name : std::string(), std::string(label(t->kind)),
                     category ? category->name : std::string(), Money::decimalString(t->amount),
                     t->currency, std::string(rawValue(t->status)), std::string(label(t->method)),
                     t->note, t->isManualEntry() ? "Manual" : "Bank import",
                     original ? original->date.iso() : std::string(),
                     original ? Money::decimalString(original->amount) : std::string(),
                     original ? original->description : std::string(), splits, corrections});
    }
    return text;
}

std::string reportSummary(const Report& report, const PaymentActivity& payments) {
    using Money::decimalString;
    std::vector<std::string> lines;
    const auto add = [&lines](std::vector<std::string> cells) { lines.push_back(row(cells)); };
    const DateSpan& span = report.filter.span;
    add({"Copperwick report", span.label()});
    add({"From", span.start.iso(), "To", span.end.iso()});
    add({"Accounts", joined(report.accountNames, [](const std::string& name) { return name; })});
    add({"Currency", report.filter.currency});
    add({"People", report.scopeLabel});

    add({});
    add({"Summary", "Amount"});
    add({"Income", decimalString(report.income)});
    add({"Spending (after refunds)", decimalString(report.spending)});
    add({"Refunds", decimalString(report.refunds)});
    add({"Savings", decimalString(report.savings())});
    add({"Transfers between accounts (not counted)", decimalString(report.transferVolume)});
    add({"Needs review: money in (not counted)", decimalString(report.unknownIn)});
    add({"Needs review: money out (not counted)", decimalString(report.unknownOut)});
    add({"Pending (not counted)", decimalString(report.pendingTotal)});

    add({});
    add({"Category", "Merchant", "Spent", "Transactions"});
    for (const auto& category : report.categories) {
        add({category.name, "", decimalString(category.amount), std::to_string(category.count)});
        for (const auto& merchant : category.merchants)
            add({category.name, merchant.name, decimalString(merchant.amount),
                 std::to_string(merchant.count)});
    }

    add({});
    add({"Income source", "Received", "Transactions"});
    for (const auto& source : report.incomeSources)
        add({source.name, decimalString(source.amount), std::to_string(source.count)});

    if (!payments.lines.empty()) {
        add({});
        add({"Payment services (account flows, not additional income or spending)"});
        add({"Service", "Person or business", "Sent", "Received", "Net"});
        for (const auto& line : payments.lines)
            add({std::string(name(line.service)), line.name, decimalString(line.sent),
                 decimalString(line.received), decimalString(line.net())});
    }

    if (!report.notes.empty()) {
        add({});
        add({"Notes"});
        for (const auto& note : report.notes)
            add({note.text});
    }

    std::string text;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (i > 0)
            text += '\n';
        text += lines[i];
    }
    return text;
}

}  // namespace copperwick::CSVExport
