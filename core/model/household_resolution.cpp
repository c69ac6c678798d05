#include "core/model/household_resolution.h"

#include "core/model/text.h"

namespace copperwick {

namespace {

constexpr std::string_view kUnassigned = "Unassigned";

// The card's own entry. An exact key wins over one that differs only in case,
// since the bank may print the same card both ways and the person may have
// set both; among keys that differ only in case the smallest key wins, so
// the answer never depends on the order they were set in.
std::optional<SpendingAssignment> cardOverride(const Account& account,
                                               const std::optional<std::string>& cardIdentifier) {
    if (!cardIdentifier)
        return std::nullopt;
    if (const auto exact = account.cardAssignments.find(*cardIdentifier);
        exact != account.cardAssignments.end())
        return exact->second;
    for (const auto& [key, value] : account.cardAssignments) {
        if (text::equalsIgnoringCase(key, *cardIdentifier))
            return value;
    }
    return std::nullopt;
}

SpendingAssignment defaultOf(const Account* account,
                             const std::optional<std::string>& cardIdentifier) {
    if (!account)
        return SpendingAssignment::unassigned();
    if (auto card = cardOverride(*account, cardIdentifier))
        return *card;
    return defaultAssignment(*account);
}

}  // namespace

SpendingAssignment defaultAssignment(const Account& account) {
    const auto& users = account.userIDs();
    if (users.size() == 1)
        return SpendingAssignment::person(users.front());
    if (users.empty() && account.isUnassigned)
        return SpendingAssignment::unassigned();
    return SpendingAssignment::shared();
}

SpendingAssignment defaultAssignment(const Ledger& ledger, const Uuid& accountID,
                                     const std::optional<std::string>& cardIdentifier) {
    return defaultOf(ledger.account(accountID), cardIdentifier);
}

SpendingAssignment assignment(const Ledger& ledger, const LedgerTransaction& transaction) {
    SpendingAssignment result;
    if (transaction.spendingAssignment)
        result = *transaction.spendingAssignment;
    else if (transaction.inheritedAssignment)
        result = *transaction.inheritedAssignment;
    else
        result =
            defaultAssignment(ledger, transaction.accountID, transaction.cardIdentifier.optional());
    // The field keeps a deleted person's id; only the answer lets go of it.
    if (result.isPerson() && !ledger.person(result.personID()))
        return SpendingAssignment::unassigned();
    return result;
}

std::string assignmentName(const Ledger& ledger, const SpendingAssignment& assignment) {
    switch (assignment.kind()) {
        case SpendingAssignment::Case::person:
            if (const Person* person = ledger.person(assignment.personID()))
                return person->name;
            return std::string(kUnassigned);
        case SpendingAssignment::Case::shared:
            return "Shared household";
        case SpendingAssignment::Case::unassigned:
            return std::string(kUnassigned);
    }
    return std::string(kUnassigned);
}

std::string usersLabel(const Ledger& ledger, const Account& account) {
    std::string label;
    for (const auto& id : account.userIDs()) {
        const Person* person = ledger.person(id);
        if (!person)
            continue;
        if (!label.empty())
            label += ", ";
        label += person->name;
    }
    if (!label.empty())
        return label;
    return account.isUnassigned ? std::string(kUnassigned) : "Household";
}

std::vector<const Person*> cardUsers(const Ledger& ledger, const LedgerTransaction& transaction) {
    std::vector<const Person*> users;
    const Account* account = ledger.account(transaction.accountID);
    if (!account)
        return users;
    if (const auto card = cardOverride(*account, transaction.cardIdentifier.optional())) {
        if (card->isPerson()) {
            if (const Person* person = ledger.person(card->personID()))
                users.push_back(person);
        }
        return users;
    }
    for (const auto& id : account->userIDs()) {
        if (const Person* person = ledger.person(id))
            users.push_back(person);
    }
    return users;
}

std::vector<std::string> cardUserNames(const Ledger& ledger, const LedgerTransaction& transaction) {
    std::vector<std::string> names;
    for (const Person* person : cardUsers(ledger, transaction))
        names.push_back(person->name);
    return names;
}

bool cardIsUndecided(const Ledger& ledger, const LedgerTransaction& transaction) {
    const Account* account = ledger.account(transaction.accountID);
    if (!account)
        return false;
    if (const auto card = cardOverride(*account, transaction.cardIdentifier.optional()))
        return card->kind() == SpendingAssignment::Case::unassigned;
    return account->isUnassigned;
}

}  // namespace copperwick
