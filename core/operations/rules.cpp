#include "core/operations/rules.h"

#include <algorithm>

#include "core/matching/matcher.h"
#include "core/operations/classification.h"

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

}  // namespace copperwick
