#pragma once

// The Review screen alone on a workspace of its own, with lines added to
// the ledger as an import would save them.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QApplication>

#include "app/review/review_page.h"
#include "core/import/builtin_profiles.h"
#include "core/import/import_analyzer.h"
#include "core/import/import_commit.h"
#include "core/import/import_planner.h"
#include "tests/app/app_fixture.h"

namespace copperwick::app::testing {

inline LocalDate day(int year, int month, int dayOfMonth) {
    return *LocalDate::make(year, month, dayOfMonth);
}

class ReviewScreenTest : public ::testing::Test {
  protected:
    ReviewScreenTest() {
        m_workspace.openRuntime();
        checking = addAccount("Joint Checking");
    }

    LedgerRuntime& runtime() { return *m_workspace.runtime; }
    const Ledger& ledger() { return runtime().ledger(); }

    Uuid addAccount(const std::string& name, AccountType type = AccountType::checking) {
        const Account account(Uuid::random(), name, type);
        change([&](Ledger& copy, LedgerDelta& delta) {
            copy.accounts.push_back(account);
            delta.change(RecordKind::account, account.id);
        });
        return account.id;
    }

    // A line waiting for review, saved as one change.
    Uuid addLine(const std::string& text, int64_t cents, LocalDate date = day(2026, 3, 2),
                 std::optional<Suggestion> suggestion = std::nullopt,
                 std::optional<Uuid> account = std::nullopt) {
        LedgerTransaction line{.id = Uuid::random(),
                               .accountID = account.value_or(checking),
                               .date = date,
                               .amount = cents,
                               .rawDescription = text};
        if (suggestion) {
            line.suggestion = suggestion;
            line.method = suggestion->source;
            line.review = ReviewState::suggested;
        }
        change([&](Ledger& copy, LedgerDelta& delta) {
            copy.transactions.set(line.id, line);
            delta.change(RecordKind::transaction, line.id);
        });
        return line.id;
    }

    // Imports a CSV file into the checking account as a person would, and
    // gives the new transactions' ids.
    std::vector<Uuid> importFile(const std::string& csv) {
        const Ledger before = ledger();
        const FileAnalysis analysis =
            ImportAnalyzer::analyze("checking.csv", csv, allProfiles(before), false);
        EXPECT_FALSE(analysis.problem) << *analysis.problem;
        const ImportPlan plan = ImportPlanner::plan(analysis, checking, before);
        const Instant now = runtime().now();
        EXPECT_TRUE(runtime()
                        .apply([&](Ledger& copy) {
                            return commitImport(copy, {{analysis, plan, {}}}, now).delta;
                        })
                        .saved);
        std::vector<Uuid> added;
        for (const auto& transaction : ledger().transactions) {
            if (!before.transaction(transaction.id))
                added.push_back(transaction.id);
        }
        return added;
    }

    Uuid categoryNamed(std::string_view name) { return ledger().categoryNamed(name)->id; }

    // The page, made and shown on first use so that a test sets the ledger up first.
    ReviewPage& page() {
        if (!m_page) {
            m_page = &m_workspace.showPage<ReviewPage>();
            settle();
        }
        return *m_page;
    }

    ReviewGroupCard* card(const std::string& groupID) { return page().card(groupID); }

    // Lets deferred deletions and layouts happen, as the event loop would.
    static void settle() {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QApplication::processEvents();
    }

    const LedgerTransaction& line(const Uuid& id) { return *ledger().transaction(id); }

    Uuid checking;

  private:
    template <typename F>
    void change(F&& edit) {
        const auto result = runtime().apply([&](Ledger& copy) {
            LedgerDelta delta;
            edit(copy, delta);
            return delta;
        });
        ASSERT_TRUE(result.saved) << result.message.value_or("");
    }

    copperwick::testing::AppWorkspace m_workspace;
    ReviewPage* m_page = nullptr;
};

}  // namespace copperwick::app::testing
