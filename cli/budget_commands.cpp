// `copperwick budgets`, `copperwick budgets set CATEGORY AMOUNT` and
// `copperwick budgets goal [AMOUNT]`: the family's monthly category budgets
// and the household's monthly savings goal.

#include <memory>
#include <ostream>
#include <string>

#include <fmt/format.h>
#include <boost/json/array.hpp>
#include <boost/json/object.hpp>

#include "cli/commands.h"
#include "cli/runtime_session.h"
#include "core/model/ledger_lookup.h"
#include "core/model/money.h"
#include "core/operations/entry_error.h"
#include "core/operations/set_budget.h"
#include "core/operations/update_settings.h"

namespace copperwick::cli {

namespace {

void printGoal(CommandContext& context, const LedgerSettings& settings) {
    if (settings.monthlySavingsGoal)
        context.out << "Monthly savings goal: "
                    << Money::format(*settings.monthlySavingsGoal,
                                     settings.monthlySavingsGoalCurrency.value_or("USD"))
                    << '\n';
    else
        context.out << "No monthly savings goal.\n";
}

void runList(CommandContext& context) {
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const Ledger& ledger = runtime->ledger();
    const LedgerSettings& settings = *ledger.settings;
    if (context.json) {
        boost::json::array budgets;
        for (const auto& budget : ledger.budgets) {
            const LedgerCategory* category = ledger.category(budget.categoryID);
            if (!category)
                continue;
            budgets.push_back({{"id", budget.id.text()},
                               {"categoryID", budget.categoryID.text()},
                               {"categoryName", category->name},
                               {"monthlyAmount", budget.monthlyAmount}});
        }
        boost::json::object result{{"budgets", budgets}};
        if (settings.monthlySavingsGoal)
            result["monthlySavingsGoal"] = *settings.monthlySavingsGoal;
        if (settings.monthlySavingsGoalCurrency)
            result["monthlySavingsGoalCurrency"] = *settings.monthlySavingsGoalCurrency;
        printJSON(context, result);
        return;
    }
    std::vector<std::pair<std::string, int64_t>> lines;
    for (const auto& budget : ledger.budgets) {
        if (const LedgerCategory* category = ledger.category(budget.categoryID))
            lines.emplace_back(category->name, budget.monthlyAmount);
    }
    std::stable_sort(lines.begin(), lines.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    if (lines.empty())
        context.out << "No budgets yet. Set monthly amounts below.\n";
    for (const auto& [name, amount] : lines)
        context.out << fmt::format("{:<24}{:>16} a month\n", name, Money::format(amount));
    printGoal(context, settings);
}

struct SetOptions {
    std::string category;
    std::string amount;
};

void runSet(CommandContext& context, const SetOptions& options) {
    std::optional<int64_t> amount;
    try {
        amount = budgetEntered(options.amount);
    } catch (const EntryError& refusal) {
        context.err << refusal.what() << '\n';
        context.exitCode = kExitUsage;
        return;
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    const LedgerCategory* category = findCategory(runtime->ledger(), options.category);
    if (!category) {
        context.err << "There's no category called \u201C" << options.category << "\u201D.\n";
        context.exitCode = kExitFailure;
        return;
    }
    const Uuid categoryID = category->id;
    const std::string name = category->name;
    runtime->setErrorMessage(std::nullopt);
    runtime->apply([&](Ledger& copy) { return setBudget(copy, categoryID, amount); });
    if (reportFailedChange(*runtime, context))
        return;
    // What was kept rather than what was typed: a budget of zero is none.
    const auto kept = monthlyBudget(runtime->ledger(), categoryID);
    if (context.json) {
        boost::json::object result{{"categoryID", categoryID.text()}, {"categoryName", name}};
        if (kept)
            result["monthlyAmount"] = *kept;
        printJSON(context, result);
        return;
    }
    if (kept)
        context.out << name << ": " << Money::format(*kept) << " a month.\n";
    else
        context.out << name << ": no budget.\n";
}

void runGoal(CommandContext& context, const std::string& text) {
    std::optional<int64_t> goal;
    try {
        goal = savingsGoalEntered(text);
    } catch (const EntryError& refusal) {
        context.err << refusal.what() << '\n';
        context.exitCode = kExitUsage;
        return;
    }
    auto runtime = openRuntime(context);
    if (reportUnavailable(*runtime, context))
        return;
    runtime->setErrorMessage(std::nullopt);
    runtime->apply([&](Ledger& copy) { return setSavingsGoal(copy, goal); });
    if (reportFailedChange(*runtime, context))
        return;
    const LedgerSettings& settings = *runtime->ledger().settings;
    if (context.json) {
        boost::json::object result;
        if (settings.monthlySavingsGoal)
            result["monthlySavingsGoal"] = *settings.monthlySavingsGoal;
        if (settings.monthlySavingsGoalCurrency)
            result["monthlySavingsGoalCurrency"] = *settings.monthlySavingsGoalCurrency;
        printJSON(context, result);
        return;
    }
    printGoal(context, settings);
}

}  // namespace

void addBudgetCommands(CLI::App& app, CommandContext& context) {
    auto* budgets = app.add_subcommand(
        "budgets", "List the monthly category budgets and the savings goal, or set them");
    budgets->require_subcommand(0, 1);
    budgets->callback([&context, budgets] {
        if (budgets->get_subcommands().empty())
            runList(context);
    });

    auto* set = budgets->add_subcommand("set", "Set a category's monthly budget; 0 removes it");
    auto setOptions = std::make_shared<SetOptions>();
    set->add_option("CATEGORY", setOptions->category, "The category's name or id")->required();
    set->add_option("AMOUNT", setOptions->amount, "The monthly amount, such as 250.00")->required();
    set->callback([&context, setOptions] { runSet(context, *setOptions); });

    auto* goal = budgets->add_subcommand(
        "goal", "Set the household's monthly savings goal in the report currency; none clears it");
    auto goalText = std::make_shared<std::string>();
    goal->add_option("AMOUNT", *goalText, "The monthly amount, such as 500.00");
    goal->callback([&context, goalText] { runGoal(context, *goalText); });
}

}  // namespace copperwick::cli
