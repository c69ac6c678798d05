#include "core/operations/rules.h"

#include <algorithm>

#include "core/matching/matcher.h"
#include "core/matching/rule_pattern.h"
#include "core/model/money.h"
#include "core/model/text.h"
#include "core/operations/classification.h"
#include "core/operations/entry_error.h"

namespace copperwick {

namespace {

LedgerDelta settingsChange() {
    LedgerDelta delta;
    delta.change(RecordKind::settings, std::string(LedgerDelta::kSettingsID));
    return delta;
}

void rematchAllIf(bool applyNow, Ledger& ledger, LedgerDelta& delta) {
    if (applyNow)
        delta.merge(rematch(ledger));
}

}  // namespace

Rule ruleEntered(const Ledger& ledger, Rule draft, const Rule* saved) {
    draft.name = std::string(text::trimmed(draft.name));
    draft.pattern = std::string(text::trimmed(draft.pattern));
    if (draft.merchantName) {
        const auto merchant = std::string(text::trimmed(*draft.merchantName));
        draft.merchantName = merchant.empty() ? std::nullopt : std::optional(merchant);
    }
    if (draft.kind == TransactionKind::transfer)
        draft.categoryID.reset();

    if (draft.name.empty())
        throw EntryError(EntryError::Case::name, "Give the rule a name.");
    if (draft.pattern.empty())
        throw EntryError(EntryError::Case::pattern);
    if (draft.match == TextMatch::regex) {
        const auto verdict = RulePattern::check(draft.pattern);
        if (verdict == RulePattern::Verdict::invalid)
            throw EntryError(EntryError::Case::invalidPattern,
                             std::string(RulePattern::kInvalidText));
        // A saved rule that is too slow can still be renamed or switched
        // without mending its pattern first; it is marked where it is listed.
        const bool patternChanged =
            !saved || draft.pattern != saved->pattern || draft.match != saved->match;
        if (verdict == RulePattern::Verdict::tooSlow && patternChanged)
            throw EntryError(EntryError::Case::invalidPattern,
                             std::string(RulePattern::kTooSlowText));
    }
    // Spending and income are filed under a category. A rule may instead name
    // only a merchant and leave the filing to what is known of that merchant;
    // one that would file nothing at all is asked for a category.
    const bool needsCategory = draft.kind == TransactionKind::expense ||
                               draft.kind == TransactionKind::income || !draft.hasOutcome();
    if (needsCategory && !ledger.category(draft.categoryID))
        throw EntryError(EntryError::Case::category);
    return draft;
}

std::string describeRule(const Ledger& ledger, const Rule& rule) {
    std::string text =
        "Text " + std::string(label(rule.match)) + " \u201C" + rule.pattern + "\u201D";
    if (rule.direction != AmountDirection::any)
        text += ", " + std::string(label(rule.direction));
    for (const auto& id : rule.accountIDs) {
        if (const Account* account = ledger.account(id))
            text += ", " + account->name;
    }
    if (rule.minimumAmount)
        text += ", at least " + Money::format(*rule.minimumAmount);
    if (rule.maximumAmount)
        text += ", at most " + Money::format(*rule.maximumAmount);
    std::string outcome;
    const auto add = [&](std::string_view part) {
        outcome += (outcome.empty() ? "" : ", ") + std::string(part);
    };
    if (rule.merchantName)
        add(*rule.merchantName);
    if (const LedgerCategory* category = ledger.category(rule.categoryID))
        add(category->name);
    if (rule.kind)
        add(label(*rule.kind));
    text += " \u2192 " + (outcome.empty() ? std::string("nothing") : outcome);
    if (rule.match == TextMatch::regex &&
        RulePattern::check(rule.pattern) == RulePattern::Verdict::tooSlow)
        text += " (too slow to match, so it files nothing)";
    return text;
}

LedgerDelta addRule(Ledger& ledger, const Rule& rule, bool atTop, bool applyNow) {
    std::vector<Uuid> order;
    for (const Rule& existing : orderedRules(ledger)) {
        if (existing.id != rule.id)
            order.push_back(existing.id);
    }
    ledger.rules.push_back(rule);
    order.insert(atTop ? order.begin() : order.end(), rule.id);
    ledger.settings.update([&](LedgerSettings& settings) { settings.ruleOrder = order; });

    LedgerDelta delta;
    delta.change(RecordKind::rule, rule.id);
    delta.merge(settingsChange());
    rematchAllIf(applyNow, ledger, delta);
    return delta;
}

LedgerDelta updateRule(Ledger& ledger, const Rule& rule, bool applyNow) {
    for (std::size_t i = 0; i < ledger.rules.size(); ++i) {
        if (ledger.rules[i].id != rule.id)
            continue;
        ledger.rules.set(i, rule);
        LedgerDelta delta;
        delta.change(RecordKind::rule, rule.id);
        rematchAllIf(applyNow, ledger, delta);
        return delta;
    }
    return {};
}

LedgerDelta deleteRule(Ledger& ledger, Uuid id, bool applyNow) {
    ledger.rules.eraseIf([&](const Rule& rule) { return rule.id == id; });
    ledger.settings.update([&](LedgerSettings& settings) { std::erase(settings.ruleOrder, id); });
    LedgerDelta delta;
    delta.remove(RecordKind::rule, id);
    delta.merge(settingsChange());
    rematchAllIf(applyNow, ledger, delta);
    return delta;
}

LedgerDelta setRuleOrder(Ledger& ledger, const std::vector<Uuid>& ids, bool applyNow) {
    ledger.settings.update([&](LedgerSettings& settings) { settings.ruleOrder = ids; });
    LedgerDelta delta = settingsChange();
    rematchAllIf(applyNow, ledger, delta);
    return delta;
}

LedgerDelta setBuiltInRule(Ledger& ledger, const std::string& id, bool enabled) {
    ledger.settings.update([&](LedgerSettings& settings) {
        std::erase(settings.disabledBuiltInRules, id);
        if (!enabled)
            settings.disabledBuiltInRules.push_back(id);
    });
    LedgerDelta delta = settingsChange();
    rematchAllIf(true, ledger, delta);
    return delta;
}

std::optional<std::optional<int64_t>> ruleAmountEntered(std::string_view text) {
    if (text::trimmed(text).empty())
        return std::optional<int64_t>();
    const auto cents = Money::parseCents(text);
    if (!cents)
        return std::nullopt;
    return std::optional<int64_t>(*cents < 0 ? -*cents : *cents);
}

std::string notAnAmountText(std::string_view text) {
    return "\u201C" + std::string(text) + "\u201D isn't an amount.";
}

}  // namespace copperwick
