#pragma once

// A real runtime on a temporary data folder, a bridge and the Review page
// shown on it, with lines added to the ledger as an import would save them.

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <QApplication>

#include "app/review/review_page.h"
#include "app/shell/runtime_bridge.h"
#include "core/import/builtin_profiles.h"
#include "core/import/import_analyzer.h"
#include "core/import/import_commit.h"
#include "core/import/import_planner.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"
#include "tests/support/temp_folder.h"

namespace copperwick::app::testing {

inline LocalDate day(int year, int month, int dayOfMonth) {
    return *LocalDate::make(year, month, dayOfMonth);
}

class ReviewScreenTest : public ::testing::Test {
  protected:
    ReviewScreenTest() {
        RuntimeOptions options;
        options.dataFolder = m_folder.path() / "data";
        options.preferencesFolder = m_folder.path() / "preferences";
        m_runtime = std::make_unique<LedgerRuntime>(std::move(options));
        checking = addAccount("Joint Checking");
    }

    LedgerRuntime& runtime() { return *m_runtime; }
    const Ledger& ledger() { return m_runtime->ledger(); }

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
            m_bridge = std::make_unique<RuntimeBridge>(*m_runtime, m_importer);
            m_page = std::make_unique<ReviewPage>(*m_bridge);
            m_page->resize(900, 1400);
            m_page->show();
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
        const auto result = m_runtime->apply([&](Ledger& copy) {
            LedgerDelta delta;
            edit(copy, delta);
            return delta;
        });
        ASSERT_TRUE(result.saved) << result.message.value_or("");
    }

    copperwick::testing::TempFolder m_folder;
    std::unique_ptr<LedgerRuntime> m_runtime;
    ImportModel m_importer;
    std::unique_ptr<RuntimeBridge> m_bridge;
    std::unique_ptr<ReviewPage> m_page;
};

}  // namespace copperwick::app::testing
