// `copperwick transaction ID note TEXT|void|restore|reset`: the changes a
// person makes to one transaction from its row, each one undoable step.

#include <memory>
#include <ostream>
#include <string>

#include <fmt/format.h>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/runtime_session.h"
#include "core/model/money.h"
#include "core/model/record_json.h"
#include "core/operations/classification.h"

namespace copperwick::cli {

namespace {

struct TransactionOptions {
    std::string id;
    std::string action;
    std::vector<std::string> text;
};

// One line a person recognises: date, bank text, amount, and how it stands.
std::string summary(const Ledger& ledger, const LedgerTransaction& transaction) {
    std::string line = fmt::format(
        "{}  {}  {}  {}", transaction.date.iso(), transaction.rawDescription,
        Money::format(transaction.amount, transaction.currency), label(transaction.kind));
    if (const LedgerCategory* category = ledger.category(transaction.categoryID))
        line += ", " + category->name;
    if (const Merchant* merchant = ledger.merchant(transaction.merchantID))
        line += ", " + merchant->name;
    if (transaction.voided)
        line += " (removed)";
    line += "\n" + transaction.evidence;
    if (!transaction.note.empty())
        line += "\nNote: " + transaction.note;
    return line;
}

LedgerDelta change(Ledger& ledger, const TransactionOptions& options, const Uuid& id, Instant now) {
    if (options.action == "note") {
        std::string note;
        for (const auto& word : options.text)
            note += (note.empty() ? "" : " ") + word;
        return setNote(ledger, note, id, now);
    }
    if (options.action == "void")
        return setVoided(ledger, {id}, true, "Remove", now);
    if (options.action == "restore")
        return setVoided(ledger, {id}, false, "Restore", now);
    return resetToAutomatic(ledger, {id}, now);
}

void runTransaction(CommandContext& context, const TransactionOptions& options) {
    const auto id = Uuid::parse(options.id);
    if (options.action == "note" && options.text.empty()) {
        context.err << "Give the note's text after \u201Cnote\u201D; \"\" clears it.\n";
        context.exitCode = kExitUsage;
        return;
    }
    if (options.action != "note" && !options.text.empty()) {
        context.err << "\u201C" << options.action << "\u201D takes nothing after it.\n";
        context.exitCode = kExitUsage;
        return;
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    if (!id || !runtime->ledger().transaction(*id)) {
        context.err << "There's no transaction with the id " << options.id << ".\n";
        context.exitCode = kExitFailure;
        return;
    }

    runtime->setErrorMessage(std::nullopt);  // only this action's outcome counts here
    const Instant now = Instant::now();
    bool changed = false;
    runtime->apply([&](Ledger& ledger) {
        LedgerDelta delta = change(ledger, options, *id, now);
        changed = !delta.isEmpty();
        return delta;
    });
    if (reportFailedChange(*runtime, context))
        return;

    const LedgerTransaction& transaction = *runtime->ledger().transaction(*id);
    if (context.json) {
        printJSON(context, boost::json::object{{"changed", changed},
                                               {"transaction", record_json::toJSON(transaction)}});
        return;
    }
    if (!changed)
        context.out << "Nothing to change.\n";
    context.out << summary(runtime->ledger(), transaction) << '\n';
}

}  // namespace

void addTransactionCommand(CLI::App& app, CommandContext& context) {
    auto* command = app.add_subcommand(
        "transaction",
        "Change one transaction: its note, remove or restore it, or hand it back "
        "to automatic matching");
    auto options = std::make_shared<TransactionOptions>();
    command->add_option("ID", options->id, "The transaction's id")->required();
    command->add_option("ACTION", options->action, "note TEXT, void, restore or reset")
        ->required()
        ->check(CLI::IsMember({"note", "void", "restore", "reset"}));
    command->add_option("TEXT", options->text, "The note, for \u201Cnote\u201D");
    command->callback([&context, options] { runTransaction(context, *options); });
}

}  // namespace copperwick::cli
