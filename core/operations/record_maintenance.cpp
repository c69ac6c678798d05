#include "core/operations/record_maintenance.h"

#include <algorithm>

#include "core/model/money.h"
#include "core/model/text.h"
#include "core/operations/classification.h"
#include "core/operations/entry_error.h"

namespace copperwick {

namespace {

// Rewrites `field` where it names `from`; true when it did.
bool replaceReference(std::optional<Uuid>& field, const Uuid& from, const std::optional<Uuid>& to) {
    if (field != from)
        return false;
    field = to;
    return true;
}

}  // namespace

std::optional<int64_t> allowanceEntered(std::string_view text) {
    if (text::trimmedSpaces(text).empty())
        return std::nullopt;
    const auto allowance = Money::parseCents(text);
    if (!allowance || *allowance < 0)
        throw EntryError(EntryError::Case::allowance);
    return allowance;
}

Person personEntered(Person person) {
    person.name = std::string(text::trimmed(person.name));
    if (person.name.empty())
        throw EntryError(EntryError::Case::name, "Enter the person's name.");
    std::vector<std::string> bankNames;
    for (const auto& bankName : person.bankNames) {
        if (!text::trimmed(bankName).empty())
            bankNames.emplace_back(text::trimmed(bankName));
    }
    person.bankNames = std::move(bankNames);
    if (person.monthlyAllowance && *person.monthlyAllowance < 0)
        throw EntryError(EntryError::Case::allowance);
    return person;
}

LedgerDelta upsertPerson(Ledger& ledger, Person person) {
    LedgerDelta delta;
    delta.change(RecordKind::person, person.id);
    bool replaced = false;
    for (std::size_t i = 0; i < ledger.people.size() && !replaced; ++i) {
        if (ledger.people[i].id == person.id) {
            ledger.people.set(i, person);
            replaced = true;
        }
    }
    if (!replaced)
        ledger.people.push_back(std::move(person));
    delta.merge(rematch(ledger));
    return delta;
}

LedgerDelta deletePerson(Ledger& ledger, Uuid id) {
    LedgerDelta delta;
    for (std::size_t i = 0; i < ledger.people.size(); ++i) {
        if (ledger.people[i].id == id) {
            ledger.people.erase(i);
            delta.remove(RecordKind::person, id);
            break;
        }
    }
    for (std::size_t i = 0; i < ledger.accounts.size(); ++i) {
        Account account = ledger.accounts[i];
        std::vector<Uuid> users = account.userIDs();
        std::erase(users, id);
        // Through the setter, so that a sole remaining user becomes personID.
        account.setUserIDs(std::move(users));
        std::erase_if(account.cardAssignments, [&](const auto& entry) {
            return entry.second.isPerson() && entry.second.personID() == id;
        });
        if (account != ledger.accounts[i]) {
            delta.change(RecordKind::account, account.id);
            ledger.accounts.set(i, std::move(account));
        }
    }
    const auto namesPerson = [&](const std::optional<SpendingAssignment>& assignment) {
        return assignment && assignment->isPerson() && assignment->personID() == id;
    };
    std::vector<Uuid> assigned;
    for (const auto& transaction : ledger.transactions) {
        if (namesPerson(transaction.spendingAssignment) ||
            namesPerson(transaction.inheritedAssignment))
            assigned.push_back(transaction.id);
    }
    for (const auto& transactionID : assigned) {
        ledger.transactions.update(transactionID, [&](LedgerTransaction& transaction) {
            if (namesPerson(transaction.spendingAssignment))
                transaction.spendingAssignment = SpendingAssignment::unassigned();
            if (namesPerson(transaction.inheritedAssignment))
                transaction.inheritedAssignment = SpendingAssignment::unassigned();
        });
        delta.change(RecordKind::transaction, transactionID);
    }
    delta.merge(rematch(ledger));
    return delta;
}

std::optional<LedgerDelta> deleteAccount(Ledger& ledger, Uuid id) {
    const bool inUse = std::any_of(
        ledger.transactions.begin(), ledger.transactions.end(),
        [&](const LedgerTransaction& transaction) { return transaction.accountID == id; });
    if (inUse)
        return std::nullopt;
    LedgerDelta delta;
    for (std::size_t i = 0; i < ledger.accounts.size(); ++i) {
        if (ledger.accounts[i].id == id) {
            ledger.accounts.erase(i);
            delta.remove(RecordKind::account, id);
            break;
        }
    }
    // Rules keep the id: one that names no account simply never matches.
    return delta;
}

LedgerDelta deleteCategory(Ledger& ledger, Uuid id, const std::optional<Uuid>& replacementID) {
    // The category itself can't stand in for itself.
    const LedgerCategory* replacement =
        replacementID == id ? nullptr : ledger.category(replacementID);
    const std::optional<Uuid> target =
        replacement ? std::optional<Uuid>(replacement->id) : std::nullopt;
    const bool spendingTarget = replacement && replacement->group == CategoryGroup::expense;
    const TransactionKind targetKind = replacement && replacement->group == CategoryGroup::income
                                           ? TransactionKind::income
                                           : TransactionKind::expense;
    LedgerDelta delta;

    std::vector<Uuid> touched;
    for (const auto& transaction : ledger.transactions) {
        const bool splitNames =
            transaction.splits &&
            std::any_of(transaction.splits->begin(), transaction.splits->end(),
                        [&](const TransactionSplit& part) { return part.categoryID == id; });
        if (splitNames || transaction.categoryID == id)
            touched.push_back(transaction.id);
    }
    for (const auto& transactionID : touched) {
        ledger.transactions.update(transactionID, [&](LedgerTransaction& transaction) {
            if (transaction.splits) {
                // A part can't stand without a spending category.
                const bool names = std::any_of(
                    transaction.splits->begin(), transaction.splits->end(),
                    [&](const TransactionSplit& part) { return part.categoryID == id; });
                if (names && spendingTarget) {
                    for (auto& part : *transaction.splits) {
                        if (part.categoryID == id)
                            part.categoryID = *target;
                    }
                } else if (names) {
                    transaction.splits.reset();
                }
            }
            if (transaction.categoryID == id) {
                transaction.categoryID = target;
                if (target) {
                    transaction.kind = targetKind;
                } else {
                    // Back to Review.
                    transaction.kind = TransactionKind::unknown;
                    transaction.review = ReviewState::unresolved;
                    transaction.method = MatchMethod::none;
                }
            }
        });
        delta.change(RecordKind::transaction, transactionID);
    }
    for (std::size_t i = 0; i < ledger.rules.size(); ++i) {
        Rule rule = ledger.rules[i];
        if (replaceReference(rule.categoryID, id, target)) {
            delta.change(RecordKind::rule, rule.id);
            ledger.rules.set(i, std::move(rule));
        }
    }
    std::vector<Uuid> merchants;
    for (const auto& merchant : ledger.merchants) {
        if (merchant.categoryID == id)
            merchants.push_back(merchant.id);
    }
    for (const auto& merchantID : merchants) {
        ledger.merchants.update(merchantID,
                                [&](Merchant& merchant) { merchant.categoryID = target; });
        delta.change(RecordKind::merchant, merchantID);
    }
    // A budget doesn't move to the replacement.
    for (std::size_t i = ledger.budgets.size(); i-- > 0;) {
        if (ledger.budgets[i].categoryID == id) {
            delta.remove(RecordKind::budget, ledger.budgets[i].id);
            ledger.budgets.erase(i);
        }
    }
    for (std::size_t i = 0; i < ledger.categories.size(); ++i) {
        if (ledger.categories[i].id == id) {
            ledger.categories.erase(i);
            delta.remove(RecordKind::category, id);
            break;
        }
    }
    delta.merge(rematch(ledger));
    return delta;
}

}  // namespace copperwick
