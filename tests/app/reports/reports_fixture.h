#pragma once

// The Reports screen alone on a workspace of its own, over a small
// household: two people, a checking account and a card, and a few months
// of income and spending in the starter categories, dated from today.

#include <string>

#include <gtest/gtest.h>

#include "app/reports/reports_page.h"
#include "core/operations/set_budget.h"
#include "tests/app/app_fixture.h"

namespace copperwick::app::testing {

class ReportsScreenTest : public ::testing::Test {
  protected:
    void SetUp() override { m_workspace.openRuntime(); }

    LedgerRuntime& runtime() { return *m_workspace.runtime; }
    const Ledger& ledger() { return runtime().ledger(); }
    ReportsPage& page() {
        if (!m_page)
            m_page = &m_workspace.showPage<ReportsPage>();
        return *m_page;
    }

    void change(const std::function<void(Ledger&, LedgerDelta&)>& edit) {
        const bool saved = runtime()
                               .apply([&](Ledger& copy) {
                                   LedgerDelta delta;
                                   edit(copy, delta);
                                   return delta;
                               })
                               .saved;
        ASSERT_TRUE(saved);
    }

    Uuid addPerson(const std::string& name) {
        Person person{.id = Uuid::random(), .name = name, .bankNames = {}, .monthlyAllowance = {}};
        change([&](Ledger& copy, LedgerDelta& delta) {
            copy.people.push_back(person);
            delta.change(RecordKind::person, person.id);
        });
        return person.id;
    }

    Uuid addAccount(const std::string& name, AccountType type = AccountType::checking,
                    std::optional<Uuid> person = std::nullopt) {
        const Account account(Uuid::random(), name, type, person);
        change([&](Ledger& copy, LedgerDelta& delta) {
            copy.accounts.push_back(account);
            delta.change(RecordKind::account, account.id);
        });
        return account.id;
    }

    Uuid categoryID(const std::string& name) { return ledger().categoryNamed(name)->id; }

    // A posted, filed line.
    Uuid addLine(Uuid account, LocalDate date, int64_t cents, const std::string& text,
                 TransactionKind kind, std::optional<std::string> category = std::nullopt,
                 std::optional<SpendingAssignment> owner = std::nullopt) {
        LedgerTransaction line{.id = Uuid::random(),
                               .accountID = account,
                               .date = date,
                               .amount = cents,
                               .rawDescription = text};
        line.kind = kind;
        line.review = ReviewState::confirmed;
        line.method = MatchMethod::manual;
        if (category)
            line.categoryID = categoryID(*category);
        line.spendingAssignment = owner;
        change([&](Ledger& copy, LedgerDelta& delta) {
            copy.transactions.set(line.id, line);
            delta.change(RecordKind::transaction, line.id);
        });
        return line.id;
    }

    // Two people, two accounts, three months of paychecks, groceries,
    // dining and a streaming charge, and this month's too.
    void fillHousehold() {
        ana = addPerson("Ana");
        ben = addPerson("Ben");
        checking = addAccount("Joint Checking");
        card = addAccount("Ben's Card", AccountType::creditCard, ben);
        const LocalDate month = runtime().today().firstOfMonth();
        for (int back = 0; back <= 3; ++back) {
            const LocalDate first = month.addingMonths(-back);
            addLine(checking, first.addingDays(1), 250000, "ACME PAYROLL", TransactionKind::income,
                    "Salary", SpendingAssignment::person(ana));
            addLine(checking, first.addingDays(2), -12345 - back * 100, "FRESH MARKET",
                    TransactionKind::expense, "Groceries", SpendingAssignment::shared());
            addLine(card, first.addingDays(3), -4550, "CAFE LUNA", TransactionKind::expense,
                    "Dining", SpendingAssignment::person(ben));
            addLine(card, first.addingDays(4), -1599, "STREAMFLIX", TransactionKind::expense,
                    "Subscriptions", SpendingAssignment::person(ben));
        }
        // A refund that nets against the groceries.
        addLine(checking, month.addingMonths(-1).addingDays(9), 2000, "FRESH MARKET REFUND",
                TransactionKind::expense, "Groceries", SpendingAssignment::shared());
    }

    void choosePeriod(PeriodChoice choice) {
        page().periodBox()->setCurrentIndex(static_cast<int>(choice));
    }

    copperwick::testing::AppWorkspace m_workspace;
    ReportsPage* m_page = nullptr;
    Uuid ana, ben, checking, card;
};

}  // namespace copperwick::app::testing
