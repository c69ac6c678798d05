// `copperwick merchants ...`: the merchants Copperwick knows, what they file
// as, and tidying them. Not undoable steps, like the rule changes.

#include <memory>
#include <ostream>
#include <string>

#include <fmt/format.h>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/ledger_lookup.h"
#include "cli/runtime_session.h"
#include "core/model/record_json.h"
#include "core/operations/entry_error.h"
#include "core/operations/merchants.h"
#include "core/reports/merchant_summary.h"

namespace copperwick::cli {

namespace {

void printMerchant(CommandContext& context, const Ledger& ledger, const Merchant& merchant,
                   std::size_t count) {
    context.out << fmt::format("{}  {} transaction{}  {}  {}  {}\n", merchant.name, count,
                               count == 1 ? "" : "s", defaultFilingText(ledger, merchant),
                               recognizedText(merchant), merchant.id.text());
}

void runList(CommandContext& context, const std::string& search) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const auto merchants = merchantsMatching(ledger, search);
    auto counts = merchantTransactionCounts(ledger);
    if (context.json) {
        boost::json::array array;
        for (const Merchant* merchant : merchants) {
            auto object = record_json::toJSON(*merchant).as_object();
            object["transactionCount"] = counts[merchant->id];
            array.push_back(std::move(object));
        }
        printJSON(context, array);
        return;
    }
    if (merchants.empty()) {
        context.out << (search.empty()
                            ? "Merchants appear here as you import and review transactions.\n"
                            : "No merchant matches.\n");
        return;
    }
    for (const Merchant* merchant : merchants)
        printMerchant(context, ledger, *merchant, counts[merchant->id]);
}

const Merchant* requireMerchant(CommandContext& context, const Ledger& ledger,
                                const std::string& nameOrID) {
    const Merchant* merchant = findMerchant(ledger, nameOrID);
    if (!merchant) {
        context.err << "There's no merchant called \u201C" << nameOrID << "\u201D.\n";
        context.exitCode = kExitFailure;
    }
    return merchant;
}

// Runs one change through the runtime and shows where `shownID` stands.
void applyAndShow(CommandContext& context, LedgerRuntime& runtime, const Uuid& shownID,
                  const LedgerRuntime::Change& change) {
    runtime.setErrorMessage(std::nullopt);  // only this change's outcome counts here
    bool changed = false;
    runtime.apply([&](Ledger& copy) {
        auto delta = change(copy);
        changed = !delta.isEmpty();
        return delta;
    });
    if (reportFailedChange(runtime, context))
        return;
    const Ledger& ledger = runtime.ledger();
    const Merchant* merchant = ledger.merchant(shownID);
    if (context.json) {
        boost::json::object object{{"changed", changed}};
        if (merchant) {
            auto record = record_json::toJSON(*merchant).as_object();
            record["transactionCount"] = merchantTransactionCounts(ledger)[shownID];
            object["merchant"] = record;
        }
        printJSON(context, object);
        return;
    }
    if (!changed)
        context.out << "Nothing to change.\n";
    if (merchant)
        printMerchant(context, ledger, *merchant, merchantTransactionCounts(ledger)[shownID]);
}

struct RenameOptions {
    std::string id;
    std::string name;
};

void runRename(CommandContext& context, const RenameOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Merchant* merchant = requireMerchant(context, runtime->ledger(), options.id);
    if (!merchant)
        return;
    std::string name;
    try {
        name = merchantNameEntered(options.name);
    } catch (const EntryError& refusal) {
        context.err << refusal.what() << '\n';
        context.exitCode = kExitUsage;
        return;
    }
    const Uuid id = merchant->id;
    // A name another merchant has already means merging into that one.
    const Merchant* other = runtime->ledger().merchantNamed(name);
    const Uuid shown = other && other->id != id ? other->id : id;
    applyAndShow(context, *runtime, shown,
                 [&](Ledger& copy) { return renameMerchant(copy, id, name); });
}

struct MergeOptions {
    std::string id;
    std::string into;
};

void runMerge(CommandContext& context, const MergeOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Merchant* source = requireMerchant(context, runtime->ledger(), options.id);
    if (!source)
        return;
    const Merchant* target = requireMerchant(context, runtime->ledger(), options.into);
    if (!target)
        return;
    const Uuid from = source->id, into = target->id;
    applyAndShow(context, *runtime, into,
                 [&](Ledger& copy) { return mergeMerchants(copy, from, into); });
}

struct SetOptions {
    std::string id;
    std::optional<std::string> category;
    std::optional<std::string> kind;
    bool noApply = false;
};

void runSet(CommandContext& context, const SetOptions& options) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const Merchant* found = requireMerchant(context, ledger, options.id);
    if (!found)
        return;
    Merchant merchant = *found;
    const LedgerCategory* category = nullptr;
    if (options.category) {
        category = findCategory(ledger, *options.category);
        if (!category) {
            context.err << "There's no category called \u201C" << *options.category << "\u201D.\n";
            context.exitCode = kExitFailure;
            return;
        }
    }
    const std::string kind = options.kind.value_or(category ? "category" : "");
    if (!kind.empty()) {
        MerchantFiling filing{.kind = MerchantFiling::Kind::category};
        if (kind == "transfer")
            filing.kind = MerchantFiling::Kind::transfer;
        else if (kind == "none")
            filing.kind = MerchantFiling::Kind::none;
        else if (category)
            filing.categoryID = category->id;
        try {
            merchant = withFiling(ledger, std::move(merchant), filing);
        } catch (const EntryError& refusal) {
            context.err << refusal.what() << '\n';
            context.exitCode = kExitFailure;
            return;
        }
    }
    applyAndShow(context, *runtime, merchant.id,
                 [&](Ledger& copy) { return updateMerchant(copy, merchant, !options.noApply); });
}

void runPrune(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    runtime->setErrorMessage(std::nullopt);
    std::size_t removed = 0;
    runtime->apply([&](Ledger& copy) {
        auto delta = pruneUnusedMerchants(copy);
        const auto found = delta.deleted.find(RecordKind::merchant);
        removed = found == delta.deleted.end() ? 0 : found->second.size();
        return delta;
    });
    if (reportFailedChange(*runtime, context))
        return;
    if (context.json) {
        printJSON(context, boost::json::object{{"removed", removed}});
        return;
    }
    context.out << fmt::format("Removed {} unused merchant{}.\n", removed, removed == 1 ? "" : "s");
}

}  // namespace

void addMerchantsCommands(CLI::App& app, CommandContext& context) {
    auto* merchants =
        app.add_subcommand("merchants", "List the merchants, or rename, merge, set or prune them");
    auto search = std::make_shared<std::string>();
    merchants->add_option("--search", *search, "Only merchants whose name holds this text");
    merchants->callback([&context, merchants, search] {
        if (merchants->get_subcommands().empty())
            runList(context, *search);
    });

    auto renameOptions = std::make_shared<RenameOptions>();
    auto* rename = merchants->add_subcommand(
        "rename", "Rename a merchant; another merchant's name merges the two");
    rename->add_option("ID", renameOptions->id, "The merchant's id or name")->required();
    rename->add_option("NAME", renameOptions->name, "The new name")->required();
    rename->callback([&context, renameOptions] { runRename(context, *renameOptions); });

    auto mergeOptions = std::make_shared<MergeOptions>();
    auto* merge = merchants->add_subcommand(
        "merge", "Merge a merchant into another: its bank texts and transactions move");
    merge->add_option("ID", mergeOptions->id, "The merchant that goes")->required();
    merge->add_option("INTO_ID", mergeOptions->into, "The merchant that stays")->required();
    merge->callback([&context, mergeOptions] { runMerge(context, *mergeOptions); });

    auto setOptions = std::make_shared<SetOptions>();
    auto* set = merchants->add_subcommand(
        "set", "Set what a merchant's transactions always file as, unless set by hand");
    set->add_option("ID", setOptions->id, "The merchant's id or name")->required();
    set->add_option("--category", setOptions->category, "The category's name or id");
    set->add_option("--kind", setOptions->kind, "expense, income, transfer, or none for no default")
        ->check(CLI::IsMember({"expense", "income", "transfer", "none"}));
    set->add_flag("--no-apply", setOptions->noApply, "Leave the transactions as they are");
    set->callback([&context, setOptions] { runSet(context, *setOptions); });

    merchants->add_subcommand("prune", "Remove merchants nothing uses and nobody taught")
        ->callback([&context] { runPrune(context); });
}

}  // namespace copperwick::cli
