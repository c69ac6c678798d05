// The records around the transactions, as Settings keeps them: `people
// add|update|rename|delete`, `accounts add|update|archive|delete`,
// `categories [add|rename|delete]` and `settings [KEY VALUE]`. None of these
// is undoable; each is saved through the runtime like any change.

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
#include "core/model/money.h"
#include "core/model/payment_service.h"
#include "core/model/record_json.h"
#include "core/model/text.h"
#include "core/operations/currency_code.h"
#include "core/operations/entry_error.h"
#include "core/operations/household_assignment.h"
#include "core/operations/record_maintenance.h"
#include "core/operations/update_settings.h"
#include "core/operations/upsert_account.h"
#include "core/operations/upsert_category.h"

namespace copperwick::cli {

namespace {

struct MaintenanceOptions {
    std::string record;  // the person, account or category named
    std::string name;
    std::optional<std::string> newName;
    std::vector<std::string> bankNames;
    bool clearBankNames = false;
    std::optional<std::string> allowance;
    std::optional<std::string> type;
    std::optional<std::string> currency;
    std::optional<std::string> last4;
    std::vector<std::string> users;
    bool shared = false;
    bool nobody = false;
    std::optional<std::string> flipSigns;
    std::optional<std::string> rarelyUsed;
    std::vector<std::string> cards;
    std::vector<std::string> removeCards;
    bool restore = false;
    std::string group = "expense";
    std::string replacement;
    std::string key;
    std::string value;
};

bool refuse(CommandContext& context, const std::string& message) {
    context.err << message << '\n';
    // Every refusal is a failure of the command, worded for the person.
    context.exitCode = kExitFailure;
    return false;
}

// Runs one change and reports a failed save; true when it was saved.
bool save(CommandContext& context, LedgerRuntime& runtime,
          const std::function<LedgerDelta(Ledger&)>& change) {
    runtime.setErrorMessage(std::nullopt);
    runtime.apply(change);
    return !reportFailedChange(runtime, context);
}

std::optional<bool> onOff(std::string_view word) {
    if (word == "on")
        return true;
    if (word == "off")
        return false;
    return std::nullopt;
}

// ---- People -------------------------------------------------------------

void runPersonChange(CommandContext& context, const MaintenanceOptions& options, bool adding) {
    std::optional<int64_t> allowance;
    if (options.allowance) {
        try {
            allowance = allowanceEntered(*options.allowance);
        } catch (const EntryError& refusal) {
            return (void)refuse(context, refusal.what());
        }
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    Person person{Uuid::random(), options.name, {}};
    if (!adding) {
        const Person* existing = findPerson(runtime->ledger(), options.record);
        if (!existing)
            return (void)refuse(context, "There is no person called " + options.record + ".");
        person = *existing;
        if (options.newName)
            person.name = *options.newName;
    }
    if (options.clearBankNames)
        person.bankNames.clear();
    person.bankNames.insert(person.bankNames.end(), options.bankNames.begin(),
                            options.bankNames.end());
    if (options.allowance)
        person.monthlyAllowance = allowance;
    try {
        person = personEntered(std::move(person));
    } catch (const EntryError& refusal) {
        return (void)refuse(context, refusal.what());
    }
    if (!save(context, *runtime, [&](Ledger& ledger) { return upsertPerson(ledger, person); }))
        return;
    if (context.json)
        printJSON(context, record_json::toJSON(person));
    else
        context.out << (adding ? "Added " : "Saved ") << person.name << " (" << person.id.text()
                    << ").\n";
}

void runPersonDelete(CommandContext& context, const MaintenanceOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Person* person = findPerson(runtime->ledger(), options.record);
    if (!person)
        return (void)refuse(context, "There is no person called " + options.record + ".");
    const Person gone = *person;
    if (save(context, *runtime, [&](Ledger& ledger) { return deletePerson(ledger, gone.id); }))
        context.out << "Removed " << gone.name << ".\n";
}

// ---- Accounts -----------------------------------------------------------

// The account as the options leave it, or absent after a refusal. Each field
// is read by core's rule for it, in the order the form asks for them.
std::optional<Account> editedAccount(CommandContext& context, const Ledger& ledger, Account account,
                                     const MaintenanceOptions& options) {
    try {
        account.name = accountNameEntered(options.newName.value_or(account.name));
        if (options.type) {
            const auto type = enumFromRaw<AccountType>(*options.type);
            if (!type)
                return refuse(context, "There is no account type called " + *options.type + "."),
                       std::nullopt;
            account.type = *type;
        }
        if (options.currency)
            account.currency = currencyEntered(*options.currency);
        if (options.last4)
            account.last4 = lastFourEntered(*options.last4);
    } catch (const EntryError& refusal) {
        return refuse(context, refusal.what()), std::nullopt;
    }
    if (!options.users.empty() || options.shared || options.nobody) {
        std::vector<Uuid> users;
        for (const auto& name : options.users) {
            const Person* person = findPerson(ledger, name);
            if (!person)
                return refuse(context, "There is no person called " + name + "."), std::nullopt;
            users.push_back(person->id);
        }
        setUsers(account, std::move(users), options.nobody);
    }
    for (const auto& [flag, field] : {std::pair{&options.flipSigns, &account.flipSigns},
                                      std::pair{&options.rarelyUsed, &account.rarelyUsed}}) {
        if (!*flag)
            continue;
        const auto value = onOff(**flag);
        if (!value)
            return refuse(context, "Write on or off."), std::nullopt;
        *field = *value;
    }
    for (const auto& card : options.cards) {
        const auto equals = card.find('=');
        const auto owner = equals == std::string::npos
                               ? std::nullopt
                               : findOwner(ledger, std::string_view(card).substr(equals + 1));
        if (!owner || equals == 0)
            return refuse(context, "\u201C" + card +
                                       "\u201D isn't a card: write CARD=PERSON, CARD=shared or "
                                       "CARD=unassigned."),
                   std::nullopt;
        account.cardAssignments[card.substr(0, equals)] = *owner;
    }
    for (const auto& card : options.removeCards)
        account.cardAssignments.erase(card);
    try {
        return accountEntered(ledger, std::move(account));
    } catch (const EntryError& refusal) {
        return refuse(context, refusal.what()), std::nullopt;
    }
}

void printAccount(CommandContext& context, const Ledger& ledger, const Account& account,
                  std::string_view verb) {
    if (context.json)
        printJSON(context, record_json::toJSON(account));
    else
        context.out << verb << ' ' << account.name << " (" << account.id.text() << "), "
                    << usersLabel(ledger, account) << ".\n";
}

void runAccountChange(CommandContext& context, const MaintenanceOptions& options, bool adding) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    Account account;
    if (adding) {
        account = Account(Uuid::random(), options.name, AccountType::checking);
        account.currency = ledger.settings->reportCurrency;
    } else {
        const Account* existing = findAccount(ledger, options.record);
        if (!existing)
            return (void)refuse(context, "There is no account called " + options.record + ".");
        account = *existing;
    }
    const auto edited = editedAccount(context, ledger, std::move(account), options);
    if (!edited)
        return;
    if (!save(context, *runtime, [&](Ledger& copy) { return upsertAccount(copy, *edited); }))
        return;
    printAccount(context, runtime->ledger(), *edited, adding ? "Added" : "Saved");
}

void runAccountArchive(CommandContext& context, const MaintenanceOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Account* existing = findAccount(runtime->ledger(), options.record);
    if (!existing)
        return (void)refuse(context, "There is no account called " + options.record + ".");
    Account account = *existing;
    account.isArchived = !options.restore;
    if (save(context, *runtime, [&](Ledger& copy) { return upsertAccount(copy, account); }))
        printAccount(context, runtime->ledger(), account,
                     options.restore ? "Brought back" : "Archived");
}

void runAccountDelete(CommandContext& context, const MaintenanceOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Account* existing = findAccount(runtime->ledger(), options.record);
    if (!existing)
        return (void)refuse(context, "There is no account called " + options.record + ".");
    const Account account = *existing;
    if (Ledger trial = runtime->ledger(); !deleteAccount(trial, account.id))
        return (void)refuse(
            context, "This account has transactions. Undo its imports first, or archive it.");
    if (save(context, *runtime,
             [&](Ledger& copy) { return deleteAccount(copy, account.id).value_or(LedgerDelta()); }))
        context.out << "Removed " << account.name << ".\n";
}

// ---- Categories ---------------------------------------------------------

void runCategories(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    if (context.json) {
        boost::json::array list;
        for (const auto& category : ledger.categories)
            list.push_back(record_json::toJSON(category));
        printJSON(context, list);
        return;
    }
    for (const CategoryGroup group : {CategoryGroup::expense, CategoryGroup::income}) {
        context.out << (group == CategoryGroup::expense ? "Spending" : "Income") << '\n';
        for (const auto& category : ledger.categories) {
            if (category.group == group)
                context.out << "  " << category.name << "  " << category.id.text() << '\n';
        }
    }
}

void runCategoryChange(CommandContext& context, const MaintenanceOptions& options, bool adding) {
    const auto group = enumFromRaw<CategoryGroup>(options.group);
    if (!group)
        return (void)refuse(context, "A category's group is expense or income.");
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    LedgerCategory category;
    if (adding) {
        category = newCategory(ledger, options.name, *group);
    } else {
        const LedgerCategory* existing = findCategory(ledger, options.record);
        if (!existing)
            return (void)refuse(context, "There is no category called " + options.record + ".");
        category = *existing;
        category.name = options.newName.value_or("");
    }
    try {
        category = categoryEntered(ledger, std::move(category));
    } catch (const EntryError& refusal) {
        return (void)refuse(context, refusal.what());
    }
    if (save(context, *runtime, [&](Ledger& copy) { return upsertCategory(copy, category); }))
        context.out << (adding ? "Added " : "Renamed to ") << category.name << " ("
                    << category.id.text() << ").\n";
}

void runCategoryDelete(CommandContext& context, const MaintenanceOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const LedgerCategory* category = findCategory(ledger, options.record);
    if (!category)
        return (void)refuse(context, "There is no category called " + options.record + ".");
    std::optional<Uuid> replacement;
    if (!options.replacement.empty()) {
        const LedgerCategory* other = findCategory(ledger, options.replacement);
        if (!other || other->id == category->id)
            return (void)refuse(context,
                                "There is no other category called " + options.replacement + ".");
        replacement = other->id;
    }
    const LedgerCategory gone = *category;
    if (save(context, *runtime,
             [&](Ledger& copy) { return deleteCategory(copy, gone.id, replacement); }))
        context.out << "Removed " << gone.name << ".\n";
}

// ---- Settings -----------------------------------------------------------

boost::json::object settingsJSON(const LedgerSettings& settings) {
    return record_json::toJSON(settings).as_object();
}

void printSettings(CommandContext& context, const Ledger& ledger) {
    const LedgerSettings& settings = *ledger.settings;
    if (context.json)
        return printJSON(context, settingsJSON(settings));
    std::string services;
    for (const auto& service : settings.paymentServices)
        services += (services.empty() ? "" : ", ") + std::string(rawValue(service));
    context.out << "timeZoneID: " << settings.timeZoneID << '\n'
                << "reportCurrency: " << settings.reportCurrency << '\n'
                << "monthlySavingsGoal: "
                << (settings.monthlySavingsGoal
                        ? Money::format(
                              *settings.monthlySavingsGoal,
                              settings.monthlySavingsGoalCurrency.value_or(settings.reportCurrency))
                        : std::string("none"))
                << '\n'
                << "keepSourceText: " << (settings.keepSourceText ? "on" : "off") << '\n'
                << "paymentServices: " << (services.empty() ? "none" : services) << '\n';
}

void runSettings(CommandContext& context, const MaintenanceOptions& options) {
    // A goal given as nothing clears it; every other setting needs its value.
    if (!options.key.empty() && options.value.empty() && options.key != "monthlySavingsGoal")
        return (void)refuse(context, "Give the setting's new value after its name.");
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    if (options.key.empty())
        return printSettings(context, runtime->ledger());

    const std::string value(text::trimmed(options.value));
    std::function<void(LedgerSettings&)> change;
    try {
        if (options.key == "timeZoneID") {
            change = [zone = timeZoneEntered(value)](LedgerSettings& settings) {
                settings.timeZoneID = zone;
            };
        } else if (options.key == "reportCurrency") {
            change = [code = currencyEntered(value)](LedgerSettings& settings) {
                settings.reportCurrency = code;
            };
        } else if (options.key == "monthlySavingsGoal") {
            // A plain "0" has always cleared the goal here, as nothing does.
            const auto goal = savingsGoalEntered(value == "0" ? std::string() : value);
            if (save(context, *runtime,
                     [&](Ledger& ledger) { return setSavingsGoal(ledger, goal); }))
                printSettings(context, runtime->ledger());
            return;
        } else if (options.key == "keepSourceText") {
            const auto keep = onOff(value);
            if (!keep)
                return (void)refuse(context, "Write on or off.");
            runtime->setErrorMessage(std::nullopt);
            // Turning it off erases every raw line kept so far.
            runtime->setKeepSourceText(*keep);
            if (!reportFailedChange(*runtime, context))
                printSettings(context, runtime->ledger());
            return;
        } else if (options.key == "paymentServices") {
            change = [services = paymentServicesEntered(value)](LedgerSettings& settings) {
                settings.paymentServices = services;
            };
        } else {
            return (void)refuse(context,
                                "There is no setting called " + options.key +
                                    "; choose from timeZoneID, reportCurrency, "
                                    "monthlySavingsGoal, keepSourceText, paymentServices.");
        }
    } catch (const EntryError& refusal) {
        return (void)refuse(context, refusal.what());
    }
    if (save(context, *runtime, [&](Ledger& ledger) { return updateSettings(ledger, change); }))
        printSettings(context, runtime->ledger());
}

}  // namespace

void addMaintenanceCommands(CLI::App& app, CommandContext& context) {
    auto options = std::make_shared<MaintenanceOptions>();

    auto* people = app.get_subcommand("people");
    auto* addPerson = people->add_subcommand("add", "Add a person to the household");
    addPerson->add_option("NAME", options->name, "Their name")->required();
    addPerson->add_option("--bank-name", options->bankNames,
                          "A form of the name banks print (more than one allowed)");
    addPerson->add_option("--allowance", options->allowance, "A monthly personal allowance");
    addPerson->callback([&context, options] { runPersonChange(context, *options, true); });
    auto* updatePerson =
        people->add_subcommand("update", "Change a person's name, bank names or allowance");
    updatePerson->add_option("PERSON", options->record, "The person, by name or id")->required();
    updatePerson->add_option("--name", options->newName, "The new name");
    updatePerson->add_option("--bank-name", options->bankNames, "A bank name to add");
    updatePerson->add_flag("--clear-bank-names", options->clearBankNames,
                           "Forget the bank names first");
    updatePerson->add_option("--allowance", options->allowance, "Monthly allowance; \"\" clears");
    updatePerson->callback([&context, options] { runPersonChange(context, *options, false); });
    auto* renamePerson = people->add_subcommand("rename", "Rename a person");
    renamePerson->add_option("PERSON", options->record, "The person, by name or id")->required();
    renamePerson->add_option("NAME", options->newName, "The new name")->required();
    renamePerson->callback([&context, options] { runPersonChange(context, *options, false); });
    auto* deletePerson = people->add_subcommand("delete", "Remove a person from the household");
    deletePerson->add_option("PERSON", options->record, "The person, by name or id")->required();
    deletePerson->callback([&context, options] { runPersonDelete(context, *options); });

    auto* accounts = app.get_subcommand("accounts");
    const auto accountOptions = [&](CLI::App* command) {
        command->add_option("--type", options->type,
                            "checking, savings, creditCard, cash or other");
        command->add_option("--currency", options->currency, "Three letters, such as USD");
        command->add_option("--last4", options->last4, "The account's last four digits");
        command->add_option("--user", options->users, "Who uses it (more than one allowed)");
        command->add_flag("--shared", options->shared, "The household's, with no one user");
        command->add_flag("--nobody", options->nobody, "Nobody's: its spending is unassigned");
        command->add_option("--flip-signs", options->flipSigns,
                            "on when the bank writes purchases as positive amounts");
        command->add_option("--rarely-used", options->rarelyUsed, "on for an occasional account");
        command->add_option("--card", options->cards,
                            "CARD=PERSON, CARD=shared or CARD=unassigned");
    };
    auto* addAccount = accounts->add_subcommand("add", "Add an account");
    addAccount->add_option("NAME", options->name, "The account's name")->required();
    accountOptions(addAccount);
    addAccount->callback([&context, options] { runAccountChange(context, *options, true); });
    auto* updateAccount = accounts->add_subcommand("update", "Change an account");
    updateAccount->add_option("ACCOUNT", options->record, "The account, by name or id")->required();
    updateAccount->add_option("--name", options->newName, "The new name");
    accountOptions(updateAccount);
    updateAccount->add_option("--remove-card", options->removeCards, "Forget a card's owner");
    updateAccount->callback([&context, options] { runAccountChange(context, *options, false); });
    auto* archive = accounts->add_subcommand("archive", "Archive an account, or bring it back");
    archive->add_option("ACCOUNT", options->record, "The account, by name or id")->required();
    archive->add_flag("--restore", options->restore, "Bring an archived account back");
    archive->callback([&context, options] { runAccountArchive(context, *options); });
    auto* deleteAccountCommand =
        accounts->add_subcommand("delete", "Remove an account that has no transactions");
    deleteAccountCommand->add_option("ACCOUNT", options->record, "The account, by name or id")
        ->required();
    deleteAccountCommand->callback([&context, options] { runAccountDelete(context, *options); });

    auto* categories = app.add_subcommand("categories", "List, add, rename and remove categories");
    categories->require_subcommand(0, 1);
    categories->callback([&context, categories] {
        if (categories->get_subcommands().empty())
            runCategories(context);
    });
    auto* addCategory = categories->add_subcommand("add", "Add a category");
    addCategory->add_option("NAME", options->name, "Its name")->required();
    addCategory->add_option("--group", options->group, "expense (the default) or income");
    addCategory->callback([&context, options] { runCategoryChange(context, *options, true); });
    auto* renameCategory = categories->add_subcommand("rename", "Rename a category");
    renameCategory->add_option("CATEGORY", options->record, "The category, by name or id")
        ->required();
    renameCategory->add_option("NAME", options->newName, "The new name")->required();
    renameCategory->callback([&context, options] { runCategoryChange(context, *options, false); });
    auto* deleteCategoryCommand = categories->add_subcommand(
        "delete", "Remove a category; its transactions move to another, or go back to Review");
    deleteCategoryCommand->add_option("CATEGORY", options->record, "The category, by name or id")
        ->required();
    deleteCategoryCommand->add_option("--replace-with", options->replacement,
                                      "The category that takes its place");
    deleteCategoryCommand->callback([&context, options] { runCategoryDelete(context, *options); });

    auto* settings = app.add_subcommand("settings", "Show the ledger's settings, or change one");
    settings->add_option("KEY", options->key,
                         "timeZoneID, reportCurrency, monthlySavingsGoal, keepSourceText or "
                         "paymentServices");
    settings->add_option("VALUE", options->value, "The new value");
    settings->callback([&context, options] { runSettings(context, *options); });
}

}  // namespace copperwick::cli
