#pragma once

// Transactions typed by hand: spending and income the bank never saw, the
// cash already in a wallet when tracking started, and cash moved between a
// wallet and a bank account as one transfer with two legs. Every check comes
// before any change, so a refused entry (an EntryError) leaves the ledger as
// it was. Each entry is one undoable step.

#include <optional>
#include <string>
#include <string_view>

#include "core/model/instant.h"
#include "core/model/ledger.h"
#include "core/model/ledger_delta.h"
#include "core/operations/entry_error.h"

namespace copperwick {

struct ManualTransaction {
    Uuid accountID;
    LocalDate date;
    int64_t amount = 0;  // cents, signed as the account sees it
    std::string description;
    TransactionKind kind = TransactionKind::expense;
    std::optional<Uuid> categoryID;
    std::string note;
    bool openingBalance = false;
};

[[nodiscard]] LedgerDelta addManualTransaction(Ledger& ledger, const ManualTransaction& entry,
                                               Instant now);
// The kind an entry takes when the person chooses none: money out is
// spending, money in is income.
[[nodiscard]] constexpr TransactionKind kindForAmount(int64_t amount) {
    return amount < 0 ? TransactionKind::expense : TransactionKind::income;
}

// `amount` is seen from the wallet: above zero cash came in from the bank (a
// withdrawal), below zero it went into the bank (a deposit). A named bank
// transaction, such as an imported "ATM WITHDRAWAL", becomes the bank leg
// instead of a new line that would count the money twice.
[[nodiscard]] LedgerDelta moveCash(Ledger& ledger, const Uuid& walletID, const Uuid& bankAccountID,
                                   LocalDate date, int64_t amount,
                                   const std::optional<Uuid>& existingBankTransactionID,
                                   Instant now);

// The sum over the account's active transactions, through a day when given.
[[nodiscard]] int64_t cashBalance(const Ledger& ledger, const Uuid& accountID,
                                  const std::optional<LocalDate>& through = std::nullopt);

// What the cash entry sheet offers; the person always types a positive amount.
enum class ManualEntryKind { spending, income, gift, refund, withdrawal, deposit };

[[nodiscard]] std::string_view label(ManualEntryKind kind);

struct CashEntry {
    ManualEntryKind kind = ManualEntryKind::spending;
    Uuid walletID;
    LocalDate date;
    int64_t amount = 0;  // positive, as typed
    std::string description;
    std::optional<Uuid> categoryID;     // spending, income and refunds
    std::optional<Uuid> bankAccountID;  // withdrawals and deposits
    std::optional<Uuid> bankTransactionID;
};

// What the entry sheets check before anything is called: a date (YYYY-MM-DD)
// and an amount as typed, the amount above zero where the sheet asks for a
// positive one. Throws EntryError (entryForm) otherwise.
struct FormEntry {
    LocalDate date;
    int64_t amount = 0;
};
[[nodiscard]] FormEntry entryFormEntered(std::string_view date, std::string_view amount,
                                         bool positive);

// The new wallet sheet: a name, the cash in it now (blank is none) and the
// day tracking starts (blank leaves `date` absent, for today). Throws
// EntryError (walletForm) for a blank name, a date that can't be read or
// opening cash below zero.
struct WalletForm {
    std::string name;
    int64_t openingCash = 0;
    std::optional<LocalDate> date;
};
[[nodiscard]] WalletForm walletFormEntered(std::string_view name, std::string_view openingCash,
                                           std::string_view date);

// A new account kept as a cash wallet, and the cash already in it as its
// opening balance on `date` when there is any. The wallet itself is no undo
// step; its opening balance is. A refused opening balance keeps no wallet.
[[nodiscard]] LedgerDelta addWallet(Ledger& ledger, Account wallet, int64_t openingCash,
                                    LocalDate date, Instant now);

// One entry of the sheet, mapped onto the operations above. A gift goes to
// "Gifts received", which is made when the ledger has no such category.
[[nodiscard]] LedgerDelta enterCash(Ledger& ledger, const CashEntry& entry, Instant now);

}  // namespace copperwick
