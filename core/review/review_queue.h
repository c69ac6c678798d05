#pragma once
// What waits for a person's decision, gathered so that one decision covers
// every line with the same bank text.
//
// Pure functions of a Ledger value: they change nothing and run wherever the
// caller holds a copy. Decisions on a group go through classify().
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/ledger.h"
#include "core/model/local_date.h"

namespace copperwick {

// The lines of one direction of money sharing one merchant key. A value.
struct ReviewGroup {
    std::string id;  // "in|" or "out|" and the key
    std::string key;
    std::string displayName;
    std::string example;               // the newest line's bank text
    std::vector<Uuid> transactionIDs;  // oldest first
    int64_t total = 0;
    LocalDate firstDate;
    LocalDate lastDate;
    bool isMoneyIn = false;
    std::optional<Suggestion> suggestion;   // only when every line offers the same one
    std::optional<Uuid> merchantID;         // only when the lines with a merchant agree
    std::vector<std::string> accountNames;  // sorted

    friend bool operator==(const ReviewGroup&, const ReviewGroup&) = default;
};

namespace ReviewQueue {

// Every live line that is suggested or unresolved, grouped, in the order a
// person should decide them: most lines first, then most money.
[[nodiscard]] std::vector<ReviewGroup> groups(const Ledger& ledger);

// The group of `groups` with this id, in any case, or absent when nothing
// waiting has it; it costs one look at each waiting line, not the grouping
// of all of them.
[[nodiscard]] std::optional<ReviewGroup> group(const Ledger& ledger, std::string_view id);

// The same grouping for any given lines.
[[nodiscard]] std::vector<ReviewGroup> makeGroups(
    const std::vector<const LedgerTransaction*>& transactions, const Ledger& ledger);

// Pending lines that no longer look real: over two weeks old, or missing
// from a newer file of their account. Oldest first.
[[nodiscard]] std::vector<LedgerTransaction> stalePending(const Ledger& ledger, LocalDate today);

// How many lines wait and in how many of `groups`' groups, without making
// the groups: a command that has just decided one needs only the count.
struct Waiting {
    std::size_t lines = 0;
    std::size_t groups = 0;

    friend bool operator==(const Waiting&, const Waiting&) = default;
};
[[nodiscard]] Waiting waiting(const Ledger& ledger);

// What waits, counted as the top of the Review screen says it: "3
// transactions in 2 groups need you." or "1 transaction in 1 group needs you."
[[nodiscard]] std::string waitingText(const std::vector<ReviewGroup>& groups);
[[nodiscard]] std::string waitingText(Waiting waiting);

}  // namespace ReviewQueue

}  // namespace copperwick
