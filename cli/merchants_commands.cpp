// `copperwick merchants ...`: the merchants Copperwick knows, what they file
// as, and tidying them. Not undoable steps, like the rule changes.

#include <algorithm>
#include <memory>
#include <ostream>
#include <string>
#include <unordered_map>
#include <vector>

#include <fmt/format.h>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/ledger_lookup.h"
#include "cli/runtime_session.h"
#include "core/model/record_json.h"
#include "core/model/text.h"
#include "core/operations/merchants.h"

namespace copperwick::cli {

namespace {

std::string filingText(const Ledger& ledger, const Merchant& merchant) {
    if (merchant.kind == TransactionKind::transfer)
        return "always a transfer";
    if (const LedgerCategory* category = ledger.category(merchant.categoryID))
        return "always " + category->name;
    return "no default";
}

std::string keysText(const Merchant& merchant) {
    if (merchant.keys.empty())
        return "no bank text yet";
    return fmt::format("recognizes {} bank text{}", merchant.keys.size(),
                       merchant.keys.size() == 1 ? "" : "s");
}

void printMerchant(CommandContext& context, const Ledger& ledger, const Merchant& merchant,
                   std::size_t count) {
    context.out << fmt::format("{}  {} transaction{}  {}  {}  {}\n", merchant.name, count,
                               count == 1 ? "" : "s", filingText(ledger, merchant),
                               keysText(merchant), merchant.id.text());
}

std::unordered_map<Uuid, std::size_t> transactionCounts(const Ledger& ledger) {
    std::unordered_map<Uuid, std::size_t> counts;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.isActive() && transaction.merchantID)
            ++counts[*transaction.merchantID];
    }
    return counts;
}

void runList(CommandContext& context, const std::string& search) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const auto wanted = text::lowercased(search);
    std::vector<const Merchant*> merchants;
    for (const auto& merchant : ledger.merchants) {
        if (text::lowercased(merchant.name).find(wanted) != std::string::npos)
            merchants.push_back(&merchant);
    }
    std::sort(merchants.begin(), merchants.end(), [](const Merchant* a, const Merchant* b) {
        const auto left = text::lowercased(a->name), right = text::lowercased(b->name);
        return left != right ? left < right : a->id < b->id;
    });
    auto counts = transactionCounts(ledger);
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
            record["transactionCount"] = transactionCounts(ledger)[shownID];
            object["merchant"] = record;
        }
        printJSON(context, object);
        return;
    }
    if (!changed)
        context.out << "Nothing to change.\n";
    if (merchant)
        printMerchant(context, ledger, *merchant, transactionCounts(ledger)[shownID]);
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
    if (text::trimmedSpaces(options.name).empty()) {
        context.err << "Give the merchant a name.\n";
        context.exitCode = kExitUsage;
        return;
    }
    const Uuid id = merchant->id;
    // A name another merchant has already means merging into that one.
    const Merchant* other = runtime->ledger().merchantNamed(text::trimmedSpaces(options.name));
    const Uuid shown = other && other->id != id ? other->id : id;
    applyAndShow(context, *runtime, shown,
                 [&](Ledger& copy) { return renameMerchant(copy, id, options.name); });
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
    if (kind == "transfer") {
        merchant.kind = TransactionKind::transfer;
        merchant.categoryID.reset();
    } else if (kind == "none") {
        merchant.kind.reset();
        merchant.categoryID.reset();
    } else if (!kind.empty()) {
        if (!category) {
            context.err << "Choose a category that matches spending or income.\n";
            context.exitCode = kExitFailure;
            return;
        }
        // The kind follows the category's group, as a remembered decision leaves it.
        merchant.kind.reset();
        merchant.categoryID = category->id;
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
