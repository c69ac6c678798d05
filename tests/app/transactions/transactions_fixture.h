#pragma once

// The Transactions screen alone on a workspace of its own, with lines added
// to the ledger as an import or a person would save them.

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QApplication>

#include "app/transactions/transactions_page.h"
#include "tests/app/app_fixture.h"

namespace copperwick::testing {

inline LocalDate day(int year, int month, int dayOfMonth) {
    return *LocalDate::make(year, month, dayOfMonth);
}

class TransactionsScreenTest : public ::testing::Test {
  protected:
    void openWorkspace(bool demo = false) {
        workspace.openRuntime({.demo = demo});
        if (!demo)
            checking = addAccount("Joint Checking");
    }

    LedgerRuntime& runtime() { return *workspace.runtime; }
    const Ledger& ledger() { return runtime().ledger(); }

    Uuid addAccount(const std::string& name) {
        const Account account(Uuid::random(), name, AccountType::checking);
        change([&](Ledger& copy, LedgerDelta& delta) {
            copy.accounts.push_back(account);
            delta.change(RecordKind::account, account.id);
        });
        return account.id;
    }

    // A line as an import saves it before matching: waiting for review.
    Uuid addLine(const std::string& text, int64_t cents, LocalDate date = day(2026, 3, 2),
                 std::optional<Uuid> account = std::nullopt) {
        LedgerTransaction line{.id = Uuid::random(),
                               .accountID = account.value_or(checking),
                               .date = date,
                               .amount = cents,
                               .rawDescription = text};
        change([&](Ledger& copy, LedgerDelta& delta) {
            copy.transactions.set(line.id, line);
            delta.change(RecordKind::transaction, line.id);
        });
        return line.id;
    }

    template <typename F>
    void change(F&& edit) {
        const auto result = runtime().apply([&](Ledger& copy) {
            LedgerDelta delta;
            edit(copy, delta);
            return delta;
        });
        ASSERT_TRUE(result.saved) << result.message.value_or("");
    }

    Uuid categoryNamed(std::string_view name) { return ledger().categoryNamed(name)->id; }

    // The page, made and shown on first use so that a test sets the ledger up first.
    app::TransactionsPage& page() {
        if (!m_page) {
            m_page = &workspace.showPage<app::TransactionsPage>();
            m_page->resize(1300, 900);
            settle();
        }
        return *m_page;
    }

    // The ids the table shows, top to bottom, once its reading is in.
    std::vector<Uuid> shownIds() {
        EXPECT_TRUE(waitUntil([&] { return !page().model()->isReading(); }));
        return page().model()->ids();
    }

    void chooseFilter(const QString& words) {
        QComboBox* box = page().filterBox();
        const int index = box->findText(words);
        ASSERT_GE(index, 0) << words.toStdString();
        box->setCurrentIndex(index);
    }

    // The sheet of type `Sheet` the screen opened, once it shows.
    template <typename Sheet>
    Sheet* openedSheet() {
        Sheet* found = nullptr;
        waitUntil([&] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                if (auto* sheet = qobject_cast<Sheet*>(widget); sheet && sheet->isVisible())
                    found = sheet;
            }
            return found != nullptr;
        });
        if (found) {
            found->activateWindow();
            waitUntil([&] { return QApplication::activeWindow() == found; });
        }
        return found;
    }

    // Whether no sheet of type `Sheet` shows any more.
    template <typename Sheet>
    static bool openedSheetGone() {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* sheet = qobject_cast<Sheet*>(widget); sheet && sheet->isVisible())
                return false;
        }
        return true;
    }

    static void settle() {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QApplication::processEvents();
    }

    const LedgerTransaction& line(const Uuid& id) { return *ledger().transaction(id); }

    AppWorkspace workspace;
    Uuid checking;

  private:
    app::TransactionsPage* m_page = nullptr;
};

}  // namespace copperwick::testing
