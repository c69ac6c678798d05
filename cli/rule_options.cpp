#include "cli/rule_options.h"

#include <ostream>

#include "cli/commands.h"
#include "cli/ledger_lookup.h"
#include "core/model/money.h"
#include "core/model/text.h"
#include "core/operations/entry_error.h"
#include "core/operations/rules.h"

namespace copperwick::cli {

namespace {

std::optional<Rule> refuse(CommandContext& context, std::string_view message, int code) {
    context.err << message << '\n';
    context.exitCode = code;
    return std::nullopt;
}

}  // namespace

void addRuleOptions(CLI::App& command, RuleOptions& options) {
    command.add_option("--name", options.name, "What the rule is called");
    command.add_option("--match", options.match, "contains, startsWith, exact or regex")
        ->check(CLI::IsMember({"contains", "startsWith", "exact", "regex"}));
    command.add_option("--pattern", options.pattern, "The bank text to look for");
    command.add_option("--account", options.account, "Only this account (\"\" for any)");
    command.add_option("--direction", options.direction, "any, moneyIn or moneyOut")
        ->check(CLI::IsMember({"any", "moneyIn", "moneyOut"}));
    command.add_option("--min", options.minimum, "At least this amount (\"\" for none)");
    command.add_option("--max", options.maximum, "At most this amount (\"\" for none)");
    command.add_option("--merchant", options.merchant, "The merchant to file as (\"\" for none)");
    command.add_option("--kind", options.kind, "expense, income or transfer")
        ->check(CLI::IsMember({"expense", "income", "transfer"}));
    command.add_option("--category", options.category, "The category's name or id");
}

std::optional<Rule> editedRule(const Ledger& ledger, Rule rule, const RuleOptions& options,
                               CommandContext& context) {
    const Rule before = rule;
    if (options.name)
        rule.name = *options.name;
    if (options.match)
        rule.match = *enumFromRaw<TextMatch>(*options.match);
    if (options.pattern)
        rule.pattern = *options.pattern;
    if (options.direction)
        rule.direction = *enumFromRaw<AmountDirection>(*options.direction);
    if (options.account) {
        rule.accountIDs.clear();
        if (!text::trimmed(*options.account).empty()) {
            const Account* account = findAccount(ledger, *options.account);
            if (!account)
                return refuse(context,
                              "There's no account called \u201C" + *options.account + "\u201D.",
                              kExitFailure);
            rule.accountIDs.push_back(account->id);
        }
    }
    for (const auto& [text, field] : {std::pair{options.minimum, &Rule::minimumAmount},
                                      std::pair{options.maximum, &Rule::maximumAmount}}) {
        if (!text)
            continue;
        const auto amount = ruleAmountEntered(*text);
        if (!amount)
            return refuse(context, notAnAmountText(*text), kExitUsage);
        rule.*field = *amount;
    }
    if (options.merchant)
        rule.merchantName = *options.merchant;
    if (options.category) {
        const LedgerCategory* category = findCategory(ledger, *options.category);
        if (!category)
            return refuse(context,
                          "There's no category called \u201C" + *options.category + "\u201D.",
                          kExitFailure);
        rule.categoryID = category->id;
        if (!options.kind)
            rule.kind = filingKind(*category);
    }
    if (options.kind)
        rule.kind = *enumFromRaw<TransactionKind>(*options.kind);

    try {
        return ruleEntered(ledger, rule, &before);
    } catch (const EntryError& refusal) {
        // The name and the pattern are asked for by the options that give them.
        switch (refusal.kind()) {
            case EntryError::Case::name:
                return refuse(context, "Give the rule a name with --name.", kExitUsage);
            case EntryError::Case::pattern:
                return refuse(context, "Give the bank text to look for with --pattern.",
                              kExitUsage);
            default:
                return refuse(context, refusal.what(), kExitFailure);
        }
    }
}

}  // namespace copperwick::cli
