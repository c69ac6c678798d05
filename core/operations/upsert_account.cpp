#include "core/operations/upsert_account.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "core/model/household_resolution.h"
#include "core/model/text.h"
#include "core/operations/currency_code.h"
#include "core/operations/entry_error.h"

namespace copperwick {

namespace {

bool ownersDiffer(const Account& old, const Account& updated) {
    return defaultAssignment(old) != defaultAssignment(updated) ||
           old.cardAssignments != updated.cardAssignments;
}

bool isFourDigits(std::string_view text) {
    return text.size() == 4 &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

}  // namespace

std::string accountNameEntered(std::string_view text) {
    std::string name(text::trimmed(text));
    if (name.empty())
        throw EntryError(EntryError::Case::name, "Enter the account's name.");
    return name;
}

std::optional<std::string> lastFourEntered(std::string_view text) {
    const std::string_view digits = text::trimmed(text);
    if (digits.empty())
        return std::nullopt;
    if (!isFourDigits(digits))
        throw EntryError(EntryError::Case::lastFour);
    return std::string(digits);
}

void setUsers(Account& account, std::vector<Uuid> userIDs, bool nobody) {
    account.isUnassigned = nobody && userIDs.empty();
    account.setUserIDs(std::move(userIDs));
}

Account accountEntered(const Ledger& ledger, Account account) {
    account.name = accountNameEntered(account.name);
    if (!isCurrencyCode(account.currency))
        throw EntryError(EntryError::Case::currency);
    if (account.last4 && !isFourDigits(*account.last4))
        throw EntryError(EntryError::Case::lastFour);
    for (const auto& id : account.userIDs()) {
        if (!ledger.person(id))
            throw EntryError(EntryError::Case::users);
    }
    return account;
}

LedgerDelta upsertAccount(Ledger& ledger, Account account) {
    LedgerDelta delta;
    std::optional<std::size_t> index;
    for (std::size_t i = 0; i < ledger.accounts.size(); ++i) {
        if (ledger.accounts[i].id == account.id) {
            index = i;
            break;
        }
    }

    const bool rederive = index && ownersDiffer(ledger.accounts[*index], account);
    if (index) {
        ledger.accounts.set(*index, account);
    } else {
        ledger.accounts.push_back(account);
    }

    if (rederive) {
        // Collected first: the map must not change while it is walked.
        std::vector<LedgerTransaction> changed;
        for (const auto& transaction : ledger.transactions) {
            if (transaction.accountID != account.id)
                continue;
            const auto inherited =
                defaultAssignment(ledger, account.id, transaction.cardIdentifier.optional());
            if (transaction.inheritedAssignment != inherited) {
                LedgerTransaction updated = transaction;
                updated.inheritedAssignment = inherited;
                changed.push_back(std::move(updated));
            }
        }
        for (auto& transaction : changed) {
            const Uuid id = transaction.id;
            ledger.transactions.set(id, std::move(transaction));
            delta.change(RecordKind::transaction, id);
        }
    }
    delta.change(RecordKind::account, account.id);
    return delta;
}

}  // namespace copperwick
