// `copperwick accounts`, `copperwick people`, and `copperwick assign --ids
// ID,... PERSON|shared|unassigned|clear`: the household, and whose spending
// a line is.

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <fmt/format.h>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/ledger_lookup.h"
#include "cli/runtime_session.h"
#include "core/model/record_json.h"
#include "core/model/text.h"
#include "core/operations/household_assignment.h"
#include "core/operations/report_notes.h"

namespace copperwick::cli {

namespace {

// Prints one kind of record of the ledger: the stored records as JSON, or a
// line each, or `emptyText` when there are none.
template <typename T, typename Line>
void listRecords(CommandContext& context, const SharedVector<T> Ledger::*records,
                 std::string_view emptyText, Line&& line) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const SharedVector<T>& list = ledger.*records;
    if (context.json) {
        boost::json::array array;
        for (const auto& record : list)
            array.push_back(record_json::toJSON(record));
        printJSON(context, array);
        return;
    }
    if (list.empty()) {
        context.out << emptyText << '\n';
        return;
    }
    for (const auto& record : list)
        context.out << line(ledger, record) << '\n';
}

void runAccounts(CommandContext& context) {
    listRecords(context, &Ledger::accounts, "No accounts yet.",
                [](const Ledger& ledger, const Account& account) {
                    return fmt::format("{}  {}  {}{}  {}  {}", account.name, rawValue(account.type),
                                       account.currency,
                                       account.last4 ? "  \u2026" + *account.last4 : std::string(),
                                       usersLabel(ledger, account), account.id.text());
                });
}

void runPeople(CommandContext& context) {
    listRecords(context, &Ledger::people, "No people yet.",
                [](const Ledger&, const Person& person) {
                    std::string names;
                    for (const auto& name : person.bankNames)
                        names += (names.empty() ? "" : ", ") + name;
                    return fmt::format("{}  {}  {}", person.name, names, person.id.text());
                });
}

// The account answers of the report notes: imports are complete through
// today, or the account is quiet on purpose.
void runMarkAccount(CommandContext& context, const std::string& nameOrID, bool current) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Account* account = findAccount(runtime->ledger(), nameOrID);
    if (!account) {
        context.err << "There's no account called \u201C" << nameOrID << "\u201D.\n";
        context.exitCode = kExitFailure;
        return;
    }
    const Uuid id = account->id;
    const DataNote::Acknowledgement answer =
        current ? DataNote::Acknowledgement(DataNote::UpToDate{id, runtime->today()})
                : DataNote::Acknowledgement(DataNote::RarelyUsed{id});
    runtime->setErrorMessage(std::nullopt);
    runtime->apply([&](Ledger& copy) { return acknowledge(copy, {answer}); });
    if (reportFailedChange(*runtime, context))
        return;
    const Account& after = *runtime->ledger().account(id);
    if (context.json) {
        printJSON(context, record_json::toJSON(after));
        return;
    }
    if (current)
        context.out << after.name << " is complete through " << after.upToDateThrough->iso()
                    << ".\n";
    else
        context.out << after.name << " is used only occasionally.\n";
}

struct AssignOptions {
    std::vector<std::string> ids;
    std::string who;
};

void runAssign(CommandContext& context, const AssignOptions& options) {
    const auto listed = readTransactionIDs(context, options.ids);
    if (!listed)
        return;
    const std::vector<Uuid>& ids = *listed;
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    for (const auto& id : ids) {
        if (!ledger.transaction(id)) {
            context.err << "There's no transaction with the id " << id.text() << ".\n";
            context.exitCode = kExitFailure;
            return;
        }
    }
    // "clear" takes the hand-chosen owner away: the lines follow their default.
    std::optional<SpendingAssignment> chosen;
    if (text::lowercased(options.who) != "clear") {
        chosen = findOwner(ledger, options.who);
        if (!chosen) {
            context.err << "There's no person called \u201C" << options.who << "\u201D.\n";
            context.exitCode = kExitFailure;
            return;
        }
    }

    runtime->setErrorMessage(std::nullopt);  // only this action's outcome counts here
    bool changed = false;
    runtime->apply([&](Ledger& copy) {
        auto delta = assignSpending(copy, chosen, ids, runtime->now());
        changed = !delta.isEmpty();
        return delta;
    });
    if (reportFailedChange(*runtime, context))
        return;
    const Ledger& after = runtime->ledger();
    if (context.json) {
        boost::json::array lines;
        for (const auto& id : ids) {
            const LedgerTransaction& transaction = *after.transaction(id);
            lines.push_back(
                {{"id", id.text()},
                 {"assignment", record_json::toJSON(assignment(after, transaction))},
                 {"assignmentName", assignmentName(after, assignment(after, transaction))}});
        }
        printJSON(context, boost::json::object{{"changed", changed}, {"transactions", lines}});
        return;
    }
    if (!changed)
        context.out << "Nothing to change.\n";
    for (const auto& id : ids) {
        const LedgerTransaction& transaction = *after.transaction(id);
        context.out << fmt::format("{}  {}  {}\n", transaction.date.iso(),
                                   transaction.rawDescription,
                                   assignmentName(after, assignment(after, transaction)));
    }
}

}  // namespace

void addHouseholdCommands(CLI::App& app, CommandContext& context) {
    // Listing is what either does without a subcommand of its own.
    auto* accounts = app.add_subcommand("accounts", "List the accounts, or change one");
    accounts->require_subcommand(0, 1);
    accounts->callback([&context, accounts] {
        if (accounts->get_subcommands().empty())
            runAccounts(context);
    });
    for (const bool current : {true, false}) {
        auto* mark = accounts->add_subcommand(
            current ? "mark-current" : "mark-occasional",
            current ? "Say the account's imports are complete through today"
                    : "Say the account is used only now and then");
        auto name = std::make_shared<std::string>();
        mark->add_option("ACCOUNT", *name, "The account's name or id")->required();
        mark->callback([&context, name, current] { runMarkAccount(context, *name, current); });
    }
    auto* people = app.add_subcommand("people", "List the people of the household, or change one");
    people->require_subcommand(0, 1);
    people->callback([&context, people] {
        if (people->get_subcommands().empty())
            runPeople(context);
    });

    auto* assign = app.add_subcommand(
        "assign",
        "Say whose spending transactions are: a person, shared, unassigned, or clear "
        "to follow the account again");
    auto options = std::make_shared<AssignOptions>();
    assign->add_option("--ids", options->ids, "The transactions' ids, separated by commas")
        ->required()
        ->delimiter(',');
    assign->add_option("WHO", options->who, "A person's name or id, shared, unassigned or clear")
        ->required();
    assign->callback([&context, options] { runAssign(context, *options); });
}

}  // namespace copperwick::cli
