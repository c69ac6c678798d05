#pragma once
// The person's own rules and the switches on the built-in ones.
//
// Rules run in the order kept in the settings, first match wins; a rule
// missing from that order still runs, behind the listed ones (orderedRules in
// core/matching/matcher.h). None of these is an undoable step: the rule
// editor shows a change's reach before it is made. With `applyNow` the
// matcher runs again over every transaction it may still change. Functions on
// the thread that owns the ledger value.
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"

namespace copperwick {

// The rule as the rule editor lets it be saved. The name, pattern and
// merchant are trimmed, a blank merchant is none, and a transfer files under
// no category. Throws EntryError, in this order: no name (name); no bank text
// to look for (pattern); a regular expression that doesn't compile, or that
// is too slow to use unless it is `saved`'s own unchanged pattern
// (invalidPattern, in RulePattern's words); no category for spending or
// income, or for a rule that would file nothing else (category). `saved` is
// the rule as it stands before the edit, absent for a new one.
[[nodiscard]] Rule ruleEntered(const Ledger& ledger, Rule draft, const Rule* saved);

// A rule as its row reads: the text it looks for, "Money in only" or
// "Money out only", its accounts' names, its amounts, then what it files:
// "Text contains “ACME”, Money out only, Joint Checking → Acme, Dining,
// Spending". A pattern too slow to use says that it files nothing.
[[nodiscard]] std::string describeRule(const Ledger& ledger, const Rule& rule);

// Also writes the complete running order back, which mends a stale one.
[[nodiscard]] LedgerDelta addRule(Ledger& ledger, const Rule& rule, bool atTop, bool applyNow);

// An unknown id changes nothing, and nothing is matched again.
[[nodiscard]] LedgerDelta updateRule(Ledger& ledger, const Rule& rule, bool applyNow);

[[nodiscard]] LedgerDelta deleteRule(Ledger& ledger, Uuid id, bool applyNow);

// Takes `ids` as given; rules left out run after them.
[[nodiscard]] LedgerDelta setRuleOrder(Ledger& ledger, const std::vector<Uuid>& ids, bool applyNow);

// A switch always takes effect at once.
[[nodiscard]] LedgerDelta setBuiltInRule(Ledger& ledger, const std::string& id, bool enabled);

// A rule's "At least" or "At most" as typed: blank is no limit, else an
// amount as a bank prints it, of which the rule keeps the size. Absent when
// the text isn't an amount; notAnAmountText words that refusal.
[[nodiscard]] std::optional<std::optional<int64_t>> ruleAmountEntered(std::string_view text);
// "“12.3.4” isn't an amount."
[[nodiscard]] std::string notAnAmountText(std::string_view text);

}  // namespace copperwick
