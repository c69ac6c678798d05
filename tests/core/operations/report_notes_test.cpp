#include "core/operations/report_notes.h"

#include <gtest/gtest.h>

#include "core/operations/set_budget.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/refusal.h"

namespace copperwick {
namespace {

using testing::day;

TEST(SetBudget, ZeroAndNegativeRemoveAndAChangeKeepsTheId) {
    testing::LedgerBuilder builder;
    Ledger& ledger = builder.ledger();
    const Uuid dining = builder.category("Dining");
    EXPECT_TRUE(setBudget(ledger, dining, 0).isEmpty()) << "nothing to remove";
    const LedgerDelta created = setBudget(ledger, dining, 100);
    ASSERT_EQ(ledger.budgets.size(), 1u);
    const Uuid id = ledger.budgets[0].id;
    EXPECT_TRUE(created.changed.at(RecordKind::budget).contains(id.text()));
    (void)setBudget(ledger, dining, 200);
    ASSERT_EQ(ledger.budgets.size(), 1u);
    EXPECT_EQ(ledger.budgets[0].id, id);
    EXPECT_EQ(ledger.budgets[0].monthlyAmount, 200);
    const LedgerDelta removed = setBudget(ledger, dining, -5);
    EXPECT_TRUE(ledger.budgets.empty());
    EXPECT_TRUE(removed.deleted.at(RecordKind::budget).contains(id.text()));
    (void)setBudget(ledger, dining, 100);
    (void)setBudget(ledger, dining, std::nullopt);
    EXPECT_TRUE(ledger.budgets.empty());
}

TEST(ReportNotes, AnswersAreStoredOnceAndNeverMoveBack) {
    testing::LedgerBuilder builder;
    Ledger& ledger = builder.ledger();
    const Uuid card = builder.account("Card");
    (void)acknowledge(ledger, {DataNote::UpToDate{card, day(2026, 3, 31)}});
    (void)acknowledge(ledger, {DataNote::UpToDate{card, day(2026, 2, 28)}});
    EXPECT_EQ(ledger.account(card)->upToDateThrough, day(2026, 3, 31));
    (void)acknowledge(ledger, {DataNote::Dismiss{"partial|2026-03-31"}});
    const LedgerDelta again = acknowledge(ledger, {DataNote::Dismiss{"partial|2026-03-31"}});
    EXPECT_TRUE(again.isEmpty());
    EXPECT_EQ(ledger.settings->dismissedNotes.size(), 1u);
    EXPECT_TRUE(acknowledge(ledger, {DataNote::RarelyUsed{Uuid::random()}}).isEmpty())
        << "a missing account is passed over";
    (void)acknowledge(ledger,
                      {DataNote::HistoryStart{card, day(2026, 1, 8)}, DataNote::RarelyUsed{card}});
    EXPECT_EQ(acknowledgedNoteCount(ledger), 2);

    const LedgerDelta cleared = showAllReportNotes(ledger);
    EXPECT_TRUE(cleared.changes(RecordKind::account));
    EXPECT_TRUE(cleared.changes(RecordKind::settings));
    const Account& after = *ledger.account(card);
    EXPECT_FALSE(after.rarelyUsed || after.upToDateThrough || after.historyStartsOn);
    EXPECT_EQ(acknowledgedNoteCount(ledger), 0);
    EXPECT_TRUE(showAllReportNotes(ledger).isEmpty());
}

// "Mark all" stopped at the first note without an answer, such as the count
// of lines waiting for review, and answered none.
TEST(ReportNotes, MarkAllAnswersEveryNoteThatHasAnAnswer) {
    const Uuid account = Uuid::random();
    const std::vector<DataNote> notes = {
        {.id = "unknown", .severity = DataNote::Severity::warning, .text = "2 waiting"},
        {.id = "late-A",
         .severity = DataNote::Severity::warning,
         .text = "late",
         .acknowledgement = DataNote::UpToDate{account, day(2026, 3, 31)}},
        {.id = "partial",
         .severity = DataNote::Severity::info,
         .text = "not over",
         .acknowledgement = DataNote::Dismiss{"partial|2026-03-31"}},
    };
    EXPECT_EQ(noteAnswers(notes, std::nullopt)->size(), 2u);
    EXPECT_EQ(noteAnswers(notes, "partial"),
              (std::vector<DataNote::Acknowledgement>{DataNote::Dismiss{"partial|2026-03-31"}}));
    EXPECT_EQ(noteAnswers(notes, "nothing-like-it"), std::nullopt);
    EXPECT_EQ(testing::refusal([&] { return noteAnswers(notes, "unknown"); }),
              "The note \u201Cunknown\u201D can't be set aside; it goes when its cause does.");
}

}  // namespace
}  // namespace copperwick
