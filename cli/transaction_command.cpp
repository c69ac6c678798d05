// `copperwick transaction ID ...`: one transaction as the inspector shows it,
// and the changes a person makes to it (note, remove, restore, reset,
// correct, split), each one undoable step.

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
#include "core/operations/household_assignment.h"
#include "core/operations/transaction_correction.h"
#include "runtime/instant_text.h"

namespace copperwick::cli {

namespace {

struct TransactionOptions {
    std::string id;
    std::string action;
    std::vector<std::string> text;
    // For "correct": what changes, and why.
    std::optional<std::string> date;
    std::optional<std::string> amount;
    std::optional<std::string> description;
    std::optional<std::string> reason;
};

// Entries typed by hand go through the safety backup; a refusal is worded for
// the person and changes nothing.
bool isEntry(const std::string& action) {
    return action == "correct" || action == "split";
}

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

LedgerDelta change(Ledger& ledger, const TransactionOptions& options, const Uuid& id,
                   const std::vector<TransactionSplit>& parts, Instant now) {
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
    if (options.action == "split")
        return splitTransaction(ledger, id, parts, now);
    if (options.action == "correct") {
        const LedgerTransaction& current = *ledger.transaction(id);
        return correctTransaction(
            ledger, id, options.date ? *LocalDate::fromISO(*options.date) : current.date,
            options.amount ? *Money::parseCents(*options.amount) : current.amount,
            options.description.value_or(current.rawDescription), options.reason.value_or(""), now);
    }
    return resetToAutomatic(ledger, {id}, now);
}

void printDetails(std::ostream& out, LedgerRuntime& runtime, const LedgerTransaction& t) {
    const Ledger& ledger = runtime.ledger();
    const Account* account = ledger.account(t.accountID);
    out << summary(ledger, t) << '\n';
    out << "Account: " << (account ? account->name : std::string("Unknown account")) << '\n';
    out << "Status: " << rawValue(t.status);
    if (t.postedDate)
        out << ", posted " << t.postedDate->iso();
    out << '\n';
    out << "Review: " << rawValue(t.review) << " (" << rawValue(t.method) << ")\n";
    if (t.suggestion) {
        out << "Suggestion: " << label(t.suggestion->kind);
        if (const LedgerCategory* category = ledger.category(t.suggestion->categoryID))
            out << ", " << category->name;
        if (t.suggestion->merchantName)
            out << ", " << *t.suggestion->merchantName;
        out << " \u2014 " << t.suggestion->reason << '\n';
    }
    out << "Whose: " << assignmentName(ledger, assignment(ledger, t)) << '\n';
    if (t.bankMerchant)
        out << "Bank's merchant: " << *t.bankMerchant << '\n';
    if (t.bankCategory)
        out << "Bank's category: " << *t.bankCategory << '\n';
    if (t.checkNumber)
        out << "Check number: " << *t.checkNumber << '\n';
    if (t.cardIdentifier)
        out << "Card: " << *t.cardIdentifier << '\n';
    if (t.transferPairID) {
        if (const LedgerTransaction* partner = ledger.transaction(t.transferPairID)) {
            const Account* other = ledger.account(partner->accountID);
            out << "Paired with: " << partner->date.iso() << "  " << partner->rawDescription << "  "
                << Money::format(partner->amount, partner->currency) << " in "
                << (other ? other->name : std::string("another account")) << '\n';
        }
    }
    if (t.splits) {
        out << "Split:\n";
        for (const auto& part : *t.splits) {
            const LedgerCategory* category = ledger.category(part.categoryID);
            out << "  " << (category ? category->name : std::string("Uncategorized")) << "  "
                << Money::format(part.amount, t.currency);
            if (!part.note.empty())
                out << "  " << part.note;
            out << '\n';
        }
    }
    if (t.originalDetails) {
        out << "The bank's version: " << t.originalDetails->date.iso() << "  "
            << t.originalDetails->description << "  "
            << Money::format(t.originalDetails->amount, t.currency) << '\n';
    }
    if (t.revisions) {
        out << "Corrections:\n";
        for (const auto& revision : *t.revisions) {
            out << "  " << abbreviatedDateTime(revision.changedAt) << ": "
                << revision.before.date.iso() << "  " << revision.before.description << "  "
                << Money::format(revision.before.amount, t.currency) << " \u2192 "
                << revision.after.date.iso() << "  " << revision.after.description << "  "
                << Money::format(revision.after.amount, t.currency) << " (" << revision.reason
                << ")\n";
        }
    }
    if (const auto line = runtime.sourceLine(t))
        out << "Line " << t.sourceLine << " of the bank file: " << *line << '\n';
}

// What the typed options say, checked before the data file is opened.
bool usable(CommandContext& context, const TransactionOptions& options) {
    const auto refuse = [&](const std::string& message) {
        context.err << message << '\n';
        context.exitCode = kExitUsage;
        return false;
    };
    if (options.action == "note" && options.text.empty())
        return refuse("Give the note's text after \u201Cnote\u201D; \"\" clears it.");
    if (options.action != "note" && options.action != "split" && !options.text.empty())
        return refuse("\u201C" + options.action + "\u201D takes nothing after it.");
    const bool correcting = options.action == "correct";
    if (!correcting && (options.date || options.amount || options.description || options.reason))
        return refuse("--date, --amount, --description and --reason go with \u201Ccorrect\u201D.");
    if (correcting && options.date && !LocalDate::fromISO(*options.date))
        return refuse("\u201C" + *options.date + "\u201D isn't a date; write it as YYYY-MM-DD.");
    if (correcting && options.amount && !Money::parseCents(*options.amount))
        return refuse("\u201C" + *options.amount + "\u201D isn't an amount.");
    return true;
}

void runTransaction(CommandContext& context, const TransactionOptions& options) {
    if (!usable(context, options))
        return;
    const auto id = Uuid::parse(options.id);
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    if (!id || !runtime->ledger().transaction(*id)) {
        context.err << "There's no transaction with the id " << options.id << ".\n";
        context.exitCode = kExitFailure;
        return;
    }
    if (options.action == "show") {
        const LedgerTransaction& transaction = *runtime->ledger().transaction(*id);
        if (context.json) {
            boost::json::object object{{"transaction", record_json::toJSON(transaction)}};
            const auto line = runtime->sourceLine(transaction);
            object["sourceText"] = line ? boost::json::value(*line) : boost::json::value(nullptr);
            object["assignment"] =
                assignmentName(runtime->ledger(), assignment(runtime->ledger(), transaction));
            printJSON(context, object);
        } else {
            printDetails(context.out, *runtime, transaction);
        }
        return;
    }
    std::vector<TransactionSplit> parts;
    if (options.action == "split") {
        try {
            parts = splitPartsEntered(runtime->ledger(), *id, options.text);
        } catch (const EntryError& refusal) {
            context.err << refusal.what() << '\n';
            context.exitCode = kExitUsage;
            return;
        }
    }

    runtime->setErrorMessage(std::nullopt);  // only this action's outcome counts here
    const Instant now = runtime->now();
    bool changed = false;
    const auto run = [&](Ledger& ledger) {
        LedgerDelta delta = change(ledger, options, *id, parts, now);
        changed = !delta.isEmpty();
        return delta;
    };
    if (isEntry(options.action))
        (void)runtime->commitEntry(run);
    else
        runtime->apply(run);
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
        "Show one transaction, or change it: its note, remove or restore it, hand it back to "
        "automatic matching, correct what the bank got wrong, or split it between categories");
    auto options = std::make_shared<TransactionOptions>();
    command->add_option("ID", options->id, "The transaction's id")->required();
    command
        ->add_option("ACTION", options->action,
                     "show, note TEXT, void, restore, reset, correct, or split CATEGORY=AMOUNT...")
        ->required()
        ->check(CLI::IsMember({"show", "note", "void", "restore", "reset", "correct", "split"}));
    command->add_option("TEXT", options->text,
                        "The note, for \u201Cnote\u201D; the parts, for \u201Csplit\u201D");
    command->add_option("--date", options->date, "Correct: the right date (YYYY-MM-DD)");
    command->add_option("--amount", options->amount, "Correct: the right amount");
    command->add_option("--description", options->description, "Correct: the right description");
    command->add_option("--reason", options->reason, "Correct: why (required)");
    command->callback([&context, options] { runTransaction(context, *options); });
}

}  // namespace copperwick::cli
