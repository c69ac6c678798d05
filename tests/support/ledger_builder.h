#pragma once

// Small ledgers for tests: a starter ledger with accounts, merchants and
// transactions added in one line each.

#include <cstdint>
#include <optional>
#include <string>

#include "core/model/ledger.h"

namespace copperwick::testing {

inline LocalDate day(int year, int month, int dayOfMonth) {
    return *LocalDate::make(year, month, dayOfMonth);
}

class LedgerBuilder {
  public:
    LedgerBuilder() : m_ledger(Ledger::starter()) {}

    Uuid account(std::string name, AccountType type = AccountType::checking) {
        Account account(Uuid::random(), std::move(name), type);
        m_ledger.accounts.push_back(account);
        return account.id;
    }

    Uuid merchant(std::string name, std::optional<std::string> categoryName = std::nullopt,
                  std::vector<std::string> keys = {}) {
        Merchant merchant{.id = Uuid::random(), .name = std::move(name), .keys = std::move(keys)};
        if (categoryName)
            merchant.categoryID = category(*categoryName);
        m_ledger.merchants.set(merchant.id, merchant);
        return merchant.id;
    }

    Uuid transaction(const Uuid& accountID, std::string description, int64_t amount,
                     LocalDate date = day(2026, 3, 2)) {
        LedgerTransaction transaction{.id = Uuid::random(),
                                      .accountID = accountID,
                                      .date = date,
                                      .amount = amount,
                                      .rawDescription = std::move(description)};
        m_ledger.transactions.set(transaction.id, transaction);
        return transaction.id;
    }

    template <typename F>
    void change(const Uuid& transactionID, F&& edit) {
        m_ledger.transactions.update(transactionID, std::forward<F>(edit));
    }

    [[nodiscard]] Uuid category(std::string_view name) const {
        return m_ledger.categoryNamed(name)->id;
    }

    Ledger& ledger() { return m_ledger; }

  private:
    Ledger m_ledger;
};

}  // namespace copperwick::testing
