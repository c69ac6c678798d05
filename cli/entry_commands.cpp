// `copperwick add` and `copperwick cash ...`: transactions typed by hand,
// cash wallets, and cash moved between a wallet and a bank account. Each
// entry goes through the runtime's entry road: a safety backup, then the save;
// a refused entry says why in the person's words and changes nothing.

#include <memory>
#include <ostream>
#include <string>

#include <fmt/format.h>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/ledger_lookup.h"
#include "cli/runtime_session.h"
#include "core/model/money.h"
#include "core/model/record_json.h"
#include "core/operations/manual_entry.h"

namespace copperwick::cli {

namespace {

struct EntryOptions {
    std::string account;
    std::string date;
    std::string amount;
    std::string description;
    std::string kind;
    std::string category;
    std::string note;
    bool openingBalance = false;
    // Cash sheet: the wallet and, for moves, the bank side.
    std::string wallet;
    std::string bankAccount;
    std::string bankTransaction;
    // New wallets.
    std::string name;
    std::string person;
    std::string through;
};

bool refuse(CommandContext& context, const std::string& message) {
    context.err << message << '\n';
    // Every refusal is a failure of the command, worded for the person.
    context.exitCode = kExitFailure;
    return false;
}

// The form's own check, before anything is called.
bool readDateAndAmount(CommandContext& context, const EntryOptions& options, LocalDate& date,
                       int64_t& amount, bool positive) {
    try {
        const FormEntry entry = entryFormEntered(options.date, options.amount, positive);
        date = entry.date;
        amount = entry.amount;
    } catch (const EntryError& refusal) {
        return refuse(context, refusal.what());
    }
    return true;
}

// Runs one entry and prints the transactions it made or changed.
void commit(CommandContext& context, LedgerRuntime& runtime,
            const std::function<LedgerDelta(Ledger&)>& entry) {
    runtime.setErrorMessage(std::nullopt);
    LedgerDelta made;
    (void)runtime.commitEntry([&](Ledger& ledger) {
        made = entry(ledger);
        return made;
    });
    if (reportFailedChange(runtime, context))
        return;
    const Ledger& ledger = runtime.ledger();
    boost::json::array transactions;
    if (const auto it = made.changed.find(RecordKind::transaction); it != made.changed.end()) {
        for (const auto& id : it->second.sorted()) {
            const LedgerTransaction* transaction = ledger.transaction(id.uuid());
            if (!transaction)
                continue;
            if (context.json) {
                transactions.push_back(record_json::toJSON(*transaction));
                continue;
            }
            const Account* account = ledger.account(transaction->accountID);
            context.out << fmt::format("{}  {}  {}  {}  {}\n", transaction->date.iso(),
                                       account ? account->name : std::string("Unknown account"),
                                       transaction->rawDescription,
                                       Money::format(transaction->amount, transaction->currency),
                                       transaction->id.text());
        }
    }
    if (context.json)
        printJSON(context, boost::json::object{{"transactions", std::move(transactions)}});
}

void runAdd(CommandContext& context, const EntryOptions& options) {
    LocalDate date;
    int64_t amount = 0;
    if (!readDateAndAmount(context, options, date, amount, false))
        return;
    std::optional<TransactionKind> kind;
    if (!options.kind.empty()) {
        kind = enumFromRaw<TransactionKind>(options.kind);
        if (!kind)
            return (void)refuse(context, "There is no kind called " + options.kind + ".");
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const Account* account = findAccount(ledger, options.account);
    if (!account)
        return (void)refuse(context, "There is no account called " + options.account + ".");
    std::optional<Uuid> categoryID;
    if (!options.category.empty()) {
        const LedgerCategory* category = findCategory(ledger, options.category);
        if (!category)
            return (void)refuse(context, "There is no category called " + options.category + ".");
        categoryID = category->id;
    }
    const ManualTransaction entry{.accountID = account->id,
                                  .date = date,
                                  .amount = amount,
                                  .description = options.description,
                                  .kind = kind.value_or(kindForAmount(amount)),
                                  .categoryID = categoryID,
                                  .note = options.note,
                                  .openingBalance = options.openingBalance};
    const Instant now = runtime->now();
    commit(context, *runtime, [&](Ledger& copy) { return addManualTransaction(copy, entry, now); });
}

const Account* findWallet(const Ledger& ledger, std::string_view nameOrID) {
    const Account* account = findAccount(ledger, nameOrID);
    return account && account->type == AccountType::cash ? account : nullptr;
}

void runWallets(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    boost::json::array wallets;
    bool any = false;
    for (const auto& account : ledger.accounts) {
        if (account.type != AccountType::cash)
            continue;
        any = true;
        const int64_t balance = cashBalance(ledger, account.id);
        if (context.json) {
            wallets.push_back(boost::json::object{{"id", account.id.text()},
                                                  {"name", account.name},
                                                  {"currency", account.currency},
                                                  {"balance", balance},
                                                  {"isArchived", account.isArchived}});
        } else {
            context.out << fmt::format("{}  {}{}  {}\n", account.name,
                                       Money::format(balance, account.currency),
                                       account.isArchived ? "  (archived)" : "", account.id.text());
        }
    }
    if (context.json)
        printJSON(context, wallets);
    else if (!any)
        context.out << "No cash wallets yet. Add one with \u201Ccopperwick cash add-wallet "
                       "NAME\u201D.\n";
}

void runAddWallet(CommandContext& context, const EntryOptions& options) {
    WalletForm form;
    try {
        form = walletFormEntered(options.name, options.amount, options.date);
    } catch (const EntryError& refusal) {
        return (void)refuse(context, refusal.what());
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Instant now = runtime->now();
    const LocalDate date =
        form.date.value_or(LocalDate::today(*runtime->ledger().settings->timeZone(), now));
    std::optional<Uuid> personID;
    if (!options.person.empty()) {
        const Person* person = findPerson(runtime->ledger(), options.person);
        if (!person)
            return (void)refuse(context, "There is no person called " + options.person + ".");
        personID = person->id;
    }
    Account wallet(Uuid::random(), form.name, AccountType::cash, personID);
    wallet.currency = runtime->ledger().settings->reportCurrency;
    commit(context, *runtime,
           [&](Ledger& copy) { return addWallet(copy, wallet, form.openingCash, date, now); });
    if (context.exitCode == 0 && !context.json)
        context.out << "Added the wallet " << form.name << " (" << wallet.id.text() << ").\n";
}

void runBalance(CommandContext& context, const EntryOptions& options) {
    std::optional<LocalDate> through;
    if (!options.through.empty()) {
        through = LocalDate::fromISO(options.through);
        if (!through)
            return (void)refuse(context, "\u201C" + options.through +
                                             "\u201D isn't a date; write it as YYYY-MM-DD.");
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Account* wallet = findWallet(runtime->ledger(), options.wallet);
    if (!wallet)
        return (void)refuse(context, "There is no cash wallet called " + options.wallet + ".");
    const int64_t balance = cashBalance(runtime->ledger(), wallet->id, through);
    if (context.json) {
        printJSON(context,
                  boost::json::object{{"wallet", wallet->id.text()},
                                      {"balance", balance},
                                      {"through", through ? boost::json::value(through->iso())
                                                          : boost::json::value(nullptr)}});
        return;
    }
    context.out << wallet->name << ": " << Money::format(balance, wallet->currency);
    if (through)
        context.out << " through " << through->iso();
    context.out << '\n';
}

void runCashEntry(CommandContext& context, ManualEntryKind kind, const EntryOptions& options) {
    LocalDate date;
    int64_t amount = 0;
    if (!readDateAndAmount(context, options, date, amount, true))
        return;
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const Account* wallet = findWallet(ledger, options.wallet);
    if (!wallet)
        return (void)refuse(context, "There is no cash wallet called " + options.wallet + ".");
    CashEntry entry{.kind = kind,
                    .walletID = wallet->id,
                    .date = date,
                    .amount = amount,
                    .description = options.description.empty() ? std::string(label(kind))
                                                               : options.description};
    if (!options.category.empty()) {
        const LedgerCategory* category = findCategory(ledger, options.category);
        if (!category)
            return (void)refuse(context, "There is no category called " + options.category + ".");
        entry.categoryID = category->id;
    }
    const bool moves = kind == ManualEntryKind::withdrawal || kind == ManualEntryKind::deposit;
    if (moves) {
        const Account* bank = findAccount(ledger, options.bankAccount);
        if (!bank)
            return (void)refuse(context, "Name the bank account with --bank-account.");
        entry.bankAccountID = bank->id;
        if (!options.bankTransaction.empty()) {
            entry.bankTransactionID = Uuid::parse(options.bankTransaction);
            if (!entry.bankTransactionID)
                return (void)refuse(
                    context, "There's no transaction with the id " + options.bankTransaction + ".");
        }
    }
    const Instant now = runtime->now();
    commit(context, *runtime, [&](Ledger& copy) { return enterCash(copy, entry, now); });
}

}  // namespace

void addEntryCommands(CLI::App& app, CommandContext& context) {
    auto options = std::make_shared<EntryOptions>();

    auto* add = app.add_subcommand("add", "Add a transaction by hand");
    add->add_option("--account", options->account, "The account, by name or id")->required();
    add->add_option("--date", options->date, "YYYY-MM-DD")->required();
    add->add_option("--amount", options->amount, "Signed: money out is negative")->required();
    add->add_option("--description", options->description, "Who or what")->required();
    add->add_option("--kind", options->kind, "expense or income")
        ->check(CLI::IsMember({"expense", "income", "transfer", "unknown"}));
    add->add_option("--category", options->category, "The category, by name or id");
    add->add_option("--note", options->note, "A note of your own");
    add->add_flag("--opening-balance", options->openingBalance,
                  "Cash already in a wallet when tracking started");
    add->callback([&context, options] { runAdd(context, *options); });

    auto* cash = app.add_subcommand("cash", "Cash wallets: list, add, enter cash, balances");
    cash->require_subcommand(0, 1);
    cash->callback([&context, cash] {
        if (cash->get_subcommands().empty())
            runWallets(context);
    });

    auto* wallet = cash->add_subcommand("add-wallet", "Add a cash wallet");
    wallet->add_option("NAME", options->name, "The wallet's name")->required();
    wallet->add_option("--person", options->person, "Whose wallet it is");
    wallet->add_option("--opening-cash", options->amount, "Cash in it now");
    wallet->add_option("--date", options->date, "Since when (YYYY-MM-DD); today by default");
    wallet->callback([&context, options] { runAddWallet(context, *options); });

    auto* balance = cash->add_subcommand("balance", "A wallet's balance");
    balance->add_option("WALLET", options->wallet, "The wallet, by name or id")->required();
    balance->add_option("--through", options->through, "Up to and including this day");
    balance->callback([&context, options] { runBalance(context, *options); });

    const std::pair<ManualEntryKind, const char*> kinds[] = {
        {ManualEntryKind::spending, "spending"},
        {ManualEntryKind::income, "income"},
        {ManualEntryKind::gift, "gift"},
        {ManualEntryKind::refund, "refund"},
        {ManualEntryKind::withdrawal, "withdrawal"},
        {ManualEntryKind::deposit, "deposit"}};
    for (const auto& [kind, name] : kinds) {
        auto* entry = cash->add_subcommand(name, std::string(label(kind)));
        entry->add_option("--wallet", options->wallet, "The wallet, by name or id")->required();
        entry->add_option("--amount", options->amount, "A positive amount")->required();
        entry->add_option("--date", options->date, "YYYY-MM-DD")->required();
        entry->add_option("--description", options->description, "Who or what");
        entry->add_option("--category", options->category, "The category, by name or id");
        entry->add_option("--bank-account", options->bankAccount,
                          "Withdrawals and deposits: the bank account");
        entry->add_option("--bank-transaction", options->bankTransaction,
                          "Withdrawals and deposits: the bank's own line for this move");
        entry->callback(
            [&context, options, kind = kind] { runCashEntry(context, kind, *options); });
    }
}

}  // namespace copperwick::cli
