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

namespace copperwick::cli {

namespace {

void runAccounts(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    if (context.json) {
        boost::json::array array;
        for (const auto& account : ledger.accounts)
            array.push_back(record_json::toJSON(account));
        printJSON(context, array);
        return;
    }
    if (ledger.accounts.empty()) {
        context.out << "No accounts yet.\n";
        return;
    }
    for (const auto& account : ledger.accounts) {
        context.out << fmt::format("{}  {}  {}{}  {}  {}\n", account.name, rawValue(account.type),
                                   account.currency,
                                   account.last4 ? "  \u2026" + *account.last4 : std::string(),
                                   usersLabel(ledger, account), account.id.text());
    }
}

void runPeople(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    if (context.json) {
        boost::json::array array;
        for (const auto& person : ledger.people)
            array.push_back(record_json::toJSON(person));
        printJSON(context, array);
        return;
    }
    if (ledger.people.empty()) {
        context.out << "No people yet.\n";
        return;
    }
    for (const auto& person : ledger.people) {
        std::string names;
        for (const auto& name : person.bankNames)
            names += (names.empty() ? "" : ", ") + name;
        context.out << fmt::format("{}  {}  {}\n", person.name, names, person.id.text());
    }
}

struct AssignOptions {
    std::vector<std::string> ids;
    std::string who;
};

void runAssign(CommandContext& context, const AssignOptions& options) {
    std::vector<Uuid> ids;
    for (const auto& text : options.ids) {
        const auto id = Uuid::parse(text::trimmed(text));
        if (!id) {
            context.err << "\u201C" << text << "\u201D isn't a transaction id.\n";
            context.exitCode = kExitUsage;
            return;
        }
        ids.push_back(*id);
    }
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
    std::optional<SpendingAssignment> chosen;
    const auto who = text::lowercased(options.who);
    if (who == "shared") {
        chosen = SpendingAssignment::shared();
    } else if (who == "unassigned") {
        chosen = SpendingAssignment::unassigned();
    } else if (who != "clear") {
        const Person* person = findPerson(ledger, options.who);
        if (!person) {
            context.err << "There's no person called \u201C" << options.who << "\u201D.\n";
            context.exitCode = kExitFailure;
            return;
        }
        chosen = SpendingAssignment::person(person->id);
    }

    runtime->setErrorMessage(std::nullopt);  // only this action's outcome counts here
    bool changed = false;
    runtime->apply([&](Ledger& copy) {
        auto delta = assignSpending(copy, chosen, ids, Instant::now());
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
    app.add_subcommand("accounts", "List the accounts")->callback([&context] {
        runAccounts(context);
    });
    app.add_subcommand("people", "List the people of the household")->callback([&context] {
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
