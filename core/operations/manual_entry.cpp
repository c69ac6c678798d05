#include "core/operations/manual_entry.h"

#include <algorithm>

#include "core/model/checked.h"
#include "core/model/household_resolution.h"
#include "core/model/money.h"
#include "core/model/text.h"
#include "core/operations/change_history.h"
#include "core/operations/upsert_account.h"
#include "core/operations/upsert_category.h"

namespace copperwick {

namespace {

constexpr std::string_view kGiftsReceived = "Gifts received";

// A line typed by hand, as every entry starts: posted, confirmed, and with a
// fingerprint no bank line can ever have.
LedgerTransaction handEntered(const Account& account, LocalDate date, int64_t amount,
                              std::string description) {
    return LedgerTransaction{.id = Uuid::random(),
                             .accountID = account.id,
                             .sourceLine = 0,
                             .date = date,
                             .amount = amount,
                             .currency = account.currency,
                             .rawDescription = std::move(description),
                             .status = TransactionStatus::posted,
                             .fingerprint = "manual:" + Uuid::random().text(),
                             .occurrence = 1,
                             .method = MatchMethod::manual,
                             .review = ReviewState::confirmed,
                             .inheritedAssignment = defaultAssignment(account)};
}

void checkEntry(const Ledger& ledger, const ManualTransaction& entry, const Account* account) {
    if (!account || account->isArchived)
        throw EntryError(EntryError::Case::account);
    if (!isEnterableAmount(entry.amount))
        throw EntryError(EntryError::Case::amount);
    if (text::trimmed(entry.description).empty())
        throw EntryError(EntryError::Case::description);
    if (entry.openingBalance) {
        const bool hasOne = std::any_of(
            ledger.transactions.begin(), ledger.transactions.end(), [&](const auto& transaction) {
                return transaction.accountID == account->id && transaction.isActive() &&
                       transaction.entrySource == TransactionEntrySource::openingBalance;
            });
        if (entry.amount < 1 || account->type != AccountType::cash || hasOne)
            throw EntryError(EntryError::Case::unavailable);
        return;
    }
    const LedgerCategory* category = ledger.category(entry.categoryID);
    const bool agrees =
        category &&
        ((entry.kind == TransactionKind::income && category->group == CategoryGroup::income &&
          entry.amount >= 1) ||
         (entry.kind == TransactionKind::expense && category->group == CategoryGroup::expense));
    if (!agrees)
        throw EntryError(EntryError::Case::category);
}

Uuid giftsCategory(Ledger& ledger, LedgerDelta& delta) {
    for (const auto& category : ledger.categories) {
        if (category.group == CategoryGroup::income &&
            text::equalsIgnoringCase(category.name, kGiftsReceived))
            return category.id;
    }
    const LedgerCategory gifts =
        newCategory(ledger, std::string(kGiftsReceived), CategoryGroup::income);
    delta.merge(upsertCategory(ledger, gifts));
    return gifts.id;
}

}  // namespace

LedgerDelta addManualTransaction(Ledger& ledger, const ManualTransaction& entry, Instant now) {
    const Account* account = ledger.account(entry.accountID);
    checkEntry(ledger, entry, account);

    const Ledger original = ledger;
    LedgerTransaction transaction = handEntered(*account, entry.date, entry.amount,
                                                std::string(text::trimmed(entry.description)));
    transaction.note = entry.note;
    if (entry.openingBalance) {
        transaction.entrySource = TransactionEntrySource::openingBalance;
        // Counted in the wallet's balance, never as income.
        transaction.kind = TransactionKind::transfer;
        transaction.evidence = "Cash already on hand when tracking started; not income.";
    } else {
        transaction.entrySource = TransactionEntrySource::manual;
        transaction.kind = entry.kind;
        transaction.categoryID = entry.categoryID;
        transaction.evidence = "Manually entered by you.";
    }
    LedgerDelta delta;
    delta.change(RecordKind::transaction, transaction.id);
    ledger.transactions.set(transaction.id, std::move(transaction));
    const auto label = entry.openingBalance ? "Add opening cash" : "Add manual transaction";
    delta.merge(record(ledger, changeSetFor(original, delta, label, now)));
    return delta;
}

LedgerDelta moveCash(Ledger& ledger, const Uuid& walletID, const Uuid& bankAccountID,
                     LocalDate date, int64_t amount,
                     const std::optional<Uuid>& existingBankTransactionID, Instant now) {
    const Account* wallet = ledger.account(walletID);
    const Account* bank = ledger.account(bankAccountID);
    if (!wallet || wallet->type != AccountType::cash || wallet->isArchived || !bank ||
        bank->type == AccountType::cash || bank->isArchived || bank->currency != wallet->currency)
        throw EntryError(EntryError::Case::account);
    if (!isEnterableAmount(amount))
        throw EntryError(EntryError::Case::amount);
    const LedgerTransaction* existing = nullptr;
    if (existingBankTransactionID) {
        existing = ledger.transaction(*existingBankTransactionID);
        if (!existing || existing->accountID != bank->id || !existing->isActive() ||
            existing->status != TransactionStatus::posted || existing->transferPairID ||
            existing->amount != -amount)
            throw EntryError(EntryError::Case::transfer);
    }

    const Ledger original = ledger;
    const bool intoWallet = amount > 0;
    LedgerTransaction bankLeg =
        existing
            ? *existing
            : handEntered(*bank, date, -amount, intoWallet ? "Cash withdrawal" : "Cash deposit");
    if (!existing)
        bankLeg.entrySource = TransactionEntrySource::manual;
    LedgerTransaction walletLeg = handEntered(
        *wallet, date, amount, (intoWallet ? "Cash from " : "Cash deposited into ") + bank->name);
    walletLeg.entrySource = TransactionEntrySource::manual;

    const auto link = [](LedgerTransaction& leg, const Uuid& partner, std::string evidence) {
        leg.kind = TransactionKind::transfer;
        leg.categoryID.reset();
        leg.method = MatchMethod::manual;
        leg.review = ReviewState::confirmed;
        leg.suggestion.reset();
        leg.transferPairID = partner;
        leg.evidence = std::move(evidence);
    };
    link(bankLeg, walletLeg.id,
         "Linked to cash wallet " + wallet->name + "; not income or spending.");
    link(walletLeg, bankLeg.id, "Linked to " + bank->name + "; not income or spending.");

    LedgerDelta delta;
    delta.change(RecordKind::transaction, bankLeg.id);
    delta.change(RecordKind::transaction, walletLeg.id);
    ledger.transactions.set(bankLeg.id, std::move(bankLeg));
    ledger.transactions.set(walletLeg.id, std::move(walletLeg));
    delta.merge(record(ledger, changeSetFor(original, delta, "Move cash", now)));
    return delta;
}

int64_t cashBalance(const Ledger& ledger, const Uuid& accountID,
                    const std::optional<LocalDate>& through) {
    int64_t balance = 0;
    for (const auto& transaction : ledger.transactions) {
        if (transaction.accountID != accountID || !transaction.isActive())
            continue;
        if (through && transaction.date > *through)
            continue;
        balance = checked::add(balance, transaction.amount);
    }
    return balance;
}

std::string_view label(ManualEntryKind kind) {
    switch (kind) {
        case ManualEntryKind::spending:
            return "Cash spent";
        case ManualEntryKind::income:
            return "Cash received";
        case ManualEntryKind::gift:
            return "Gift received";
        case ManualEntryKind::refund:
            return "Refund or reimbursement";
        case ManualEntryKind::withdrawal:
            return "Withdrawal into cash";
        case ManualEntryKind::deposit:
            return "Deposit cash into bank";
    }
    return {};
}

LedgerDelta enterCash(Ledger& ledger, const CashEntry& entry, Instant now) {
    // An amount past the limit is refused later, in its turn among the checks.
    const int64_t negated = isEnterableAmount(entry.amount) ? -entry.amount : entry.amount;
    ManualTransaction manual{.accountID = entry.walletID,
                             .date = entry.date,
                             .amount = entry.amount,
                             .description = entry.description,
                             .categoryID = entry.categoryID};
    switch (entry.kind) {
        case ManualEntryKind::spending:
            manual.amount = negated;
            manual.kind = TransactionKind::expense;
            return addManualTransaction(ledger, manual, now);
        case ManualEntryKind::income:
            manual.kind = TransactionKind::income;
            return addManualTransaction(ledger, manual, now);
        case ManualEntryKind::refund:
            manual.kind = TransactionKind::expense;
            return addManualTransaction(ledger, manual, now);
        case ManualEntryKind::gift: {
            // Refused entries must change nothing, the new category included.
            Ledger copy = ledger;
            LedgerDelta delta;
            manual.kind = TransactionKind::income;
            manual.categoryID = giftsCategory(copy, delta);
            delta.merge(addManualTransaction(copy, manual, now));
            ledger = std::move(copy);
            return delta;
        }
        case ManualEntryKind::withdrawal:
        case ManualEntryKind::deposit: {
            if (!entry.bankAccountID)
                throw EntryError(EntryError::Case::account);
            const int64_t amount =
                entry.kind == ManualEntryKind::withdrawal ? entry.amount : negated;
            return moveCash(ledger, entry.walletID, *entry.bankAccountID, entry.date, amount,
                            entry.bankTransactionID, now);
        }
    }
    return {};
}

FormEntry entryFormEntered(std::string_view date, std::string_view amount, bool positive) {
    const auto parsedDate = LocalDate::fromISO(date);
    const auto parsedAmount = Money::parseCents(amount);
    if (!parsedDate || !parsedAmount || (positive && *parsedAmount <= 0))
        throw EntryError(EntryError::Case::entryForm);
    return {*parsedDate, *parsedAmount};
}

WalletForm walletFormEntered(std::string_view name, std::string_view openingCash,
                             std::string_view date) {
    WalletForm form{.name = std::string(text::trimmed(name))};
    const auto opening =
        openingCash.empty() ? std::optional<int64_t>(0) : Money::parseCents(openingCash);
    if (!date.empty())
        form.date = LocalDate::fromISO(date);
    if (form.name.empty() || !opening || *opening < 0 || (!date.empty() && !form.date))
        throw EntryError(EntryError::Case::walletForm);
    form.openingCash = *opening;
    return form;
}

LedgerDelta addWallet(Ledger& ledger, Account wallet, int64_t openingCash, LocalDate date,
                      Instant now) {
    wallet.type = AccountType::cash;
    // Worked on a copy, so that a refused opening balance leaves no wallet behind.
    Ledger working = ledger;
    LedgerDelta delta = upsertAccount(working, wallet);
    if (openingCash > 0) {
        delta.merge(addManualTransaction(working,
                                         ManualTransaction{.accountID = wallet.id,
                                                           .date = date,
                                                           .amount = openingCash,
                                                           .description = "Opening cash",
                                                           .openingBalance = true},
                                         now));
    }
    ledger = std::move(working);
    return delta;
}

}  // namespace copperwick
