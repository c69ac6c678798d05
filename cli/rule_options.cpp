#include "cli/rule_options.h"

#include <ostream>

#include "cli/commands.h"
#include "cli/ledger_lookup.h"
#include "core/matching/rule_pattern.h"
#include "core/model/text.h"
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
        rule.name = std::string(text::trimmed(*options.name));
    if (options.match)
        rule.match = *enumFromRaw<TextMatch>(*options.match);
    if (options.pattern)
        rule.pattern = std::string(text::trimmed(*options.pattern));
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
    if (options.merchant) {
        const auto name = std::string(text::trimmed(*options.merchant));
        rule.merchantName = name.empty() ? std::nullopt : std::optional(name);
    }
    const LedgerCategory* category = nullptr;
    if (options.category) {
        category = findCategory(ledger, *options.category);
        if (!category)
            return refuse(context,
                          "There's no category called \u201C" + *options.category + "\u201D.",
                          kExitFailure);
        rule.categoryID = category->id;
        if (!options.kind)
            rule.kind = category->group == CategoryGroup::income ? TransactionKind::income
                                                                 : TransactionKind::expense;
    }
    if (options.kind)
        rule.kind = *enumFromRaw<TransactionKind>(*options.kind);
    if (rule.kind == TransactionKind::transfer)
        rule.categoryID.reset();

    if (rule.name.empty())
        return refuse(context, "Give the rule a name with --name.", kExitUsage);
    if (rule.pattern.empty())
        return refuse(context, "Give the bank text to look for with --pattern.", kExitUsage);
    if (rule.match == TextMatch::regex) {
        const auto verdict = RulePattern::check(rule.pattern);
        if (verdict == RulePattern::Verdict::invalid)
            return refuse(context, RulePattern::kInvalidText, kExitFailure);
        // A saved rule that is too slow can still be renamed or switched
        // without mending its pattern first; it is marked where it is listed.
        const bool patternChanged = rule.pattern != before.pattern || rule.match != before.match;
        if (verdict == RulePattern::Verdict::tooSlow && patternChanged)
            return refuse(context, RulePattern::kTooSlowText, kExitFailure);
    }
    // Spending and income are filed under a category. A rule may instead name
    // only a merchant and leave the filing to what is known of that merchant;
    // one that would file nothing at all is asked for a category.
    const bool needsCategory = rule.kind == TransactionKind::expense ||
                               rule.kind == TransactionKind::income || !rule.hasOutcome();
    if (needsCategory && !ledger.category(rule.categoryID))
        return refuse(context, "Choose a category that matches spending or income.", kExitFailure);
    return rule;
}

}  // namespace copperwick::cli
