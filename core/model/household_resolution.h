#pragma once

// Whose spending a transaction is, as every report and screen reads it.
//
// Three layers decide, most specific first: what the person set on the
// transaction (`spendingAssignment`), what it inherited when the account's
// default was last applied (`inheritedAssignment`), and the default of its
// account and card. Both transaction fields are optional, so a changed default
// reaches every transaction nobody has set by hand. Missing accounts and people
// degrade to `unassigned`; nothing here fails. The operations that change these
// answers are in operations/household_assignment.h.
//
// Plain functions of a Ledger value, on the thread that owns it. Names and
// people are returned by pointer into the ledger, valid until it next changes.

#include <optional>
#include <string>
#include <vector>

#include "core/model/ledger.h"

namespace copperwick {

// The account's own default, by its number of users: one is that person, two
// or more the household, none the household unless the account is marked as
// belonging to nobody.
[[nodiscard]] SpendingAssignment defaultAssignment(const Account& account);

// The default of a card within an account: the card's own entry in
// `cardAssignments` (an exact key first, else the first key equal ignoring
// case), else the account's default. `unassigned` for a missing account.
[[nodiscard]] SpendingAssignment defaultAssignment(
    const Ledger& ledger, const Uuid& accountID, const std::optional<std::string>& cardIdentifier);

// The answer every report uses: hand-set, else inherited, else the default;
// a person who no longer exists gives `unassigned`.
[[nodiscard]] SpendingAssignment assignment(const Ledger& ledger,
                                            const LedgerTransaction& transaction);

// "Shared household", "Unassigned", or the person's name ("Unassigned" when
// the person is gone).
[[nodiscard]] std::string assignmentName(const Ledger& ledger,
                                         const SpendingAssignment& assignment);

// The names of the account's users that exist, joined by ", "; with none,
// "Unassigned" or "Household".
[[nodiscard]] std::string usersLabel(const Ledger& ledger, const Account& account);

// The people who use the transaction's card: the card's person, nobody for a
// card set to shared or unassigned, else the account's users in order.
// Missing people are left out; a missing account gives no one.
[[nodiscard]] std::vector<const Person*> cardUsers(const Ledger& ledger,
                                                   const LedgerTransaction& transaction);
[[nodiscard]] std::vector<std::string> cardUserNames(const Ledger& ledger,
                                                     const LedgerTransaction& transaction);

// Whether nobody has been told to use this card yet, so a screen should ask:
// the card's own entry is `unassigned`, or without one the account is
// marked as belonging to nobody.
[[nodiscard]] bool cardIsUndecided(const Ledger& ledger, const LedgerTransaction& transaction);

}  // namespace copperwick
