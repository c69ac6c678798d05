#include "core/import/import_planner.h"

#include <gtest/gtest.h>

#include "core/import/import_commit.h"
#include "core/operations/classification.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;
using testing::LedgerBuilder;
using Kind = RowDisposition::Kind;

struct RowSpec {
    LocalDate date;
    int64_t amount = 0;
    std::string description;
    TransactionStatus status = TransactionStatus::posted;
    std::optional<std::string> card;
    std::optional<std::string> externalID;
};

class ImportPlannerTest : public ::testing::Test {
  protected:
    // A file of the given rows, with occurrences numbered as the reader does.
    FileAnalysis file(const std::vector<RowSpec>& specs, std::string hash = "hash-1") {
        FileAnalysis analysis{.id = Uuid::random(), .fileName = "export.csv", .fileHash = hash};
        analysis.profile = ImportProfile{.id = "generic", .name = "Generic"};
        std::map<std::pair<std::string, std::optional<std::string>>, int64_t> seen;
        int64_t line = 2;
        for (const auto& spec : specs) {
            ParsedRow row;
            row.line = line++;
            row.date = spec.date;
            row.amount = spec.amount;
            row.status = spec.status;
            const auto raw = spec.description + "," + std::to_string(spec.amount);
            row.setTexts({.rawText = raw,
                          .description = spec.description,
                          .cardIdentifier = spec.card ? std::optional<std::string_view>(*spec.card)
                                                      : std::nullopt,
                          .externalID = spec.externalID
                                            ? std::optional<std::string_view>(*spec.externalID)
                                            : std::nullopt});
            row.occurrence = ++seen[{row.fingerprint(), spec.card}];
            analysis.rows.push_back(std::move(row));
        }
        return analysis;
    }

    // Imports the file as it plans, as a person pressing Import would.
    ImportPlan importFile(const FileAnalysis& analysis) {
        auto plan = ImportPlanner::plan(analysis, account, ledger());
        (void)commitImport(ledger(), {{analysis, plan, {}}}, Instant{});
        return plan;
    }

    std::vector<Kind> kinds(const ImportPlan& plan) {
        std::vector<Kind> result;
        for (const auto& row : plan.rows)
            result.push_back(row.disposition.kind);
        return result;
    }

    Ledger& ledger() { return builder.ledger(); }

    LedgerBuilder builder;
    Uuid account = builder.account("Card", AccountType::creditCard);
};

TEST_F(ImportPlannerTest, ReimportAddsNothingAndNamesThePreviousImport) {
    const auto analysis = file({{day(2026, 3, 1), -450, "BLUE BOTTLE"},
                                {day(2026, 3, 1), -450, "BLUE BOTTLE"},
                                {day(2026, 3, 2), -1200, "SAFEWAY"}});
    const auto first = importFile(analysis);
    EXPECT_EQ(first.newCount(), 3) << "two identical coffees on one day are both kept";
    EXPECT_FALSE(first.previousImport);

    const auto again = ImportPlanner::plan(analysis, account, ledger());
    EXPECT_EQ(kinds(again), std::vector(3, Kind::duplicate));
    ASSERT_TRUE(again.previousImport);
    EXPECT_EQ(again.previousImport->fileHash, "hash-1");
}

TEST_F(ImportPlannerTest, OverlapAddsOnlyTheNewLines) {
    (void)importFile(
        file({{day(2026, 3, 1), -450, "BLUE BOTTLE"}, {day(2026, 3, 2), -1200, "SAFEWAY"}}));
    const auto plan = ImportPlanner::plan(
        file({{day(2026, 3, 2), -1200, "SAFEWAY"}, {day(2026, 3, 3), -999, "TARGET"}}, "hash-2"),
        account, ledger());
    EXPECT_EQ(kinds(plan), (std::vector{Kind::duplicate, Kind::newRow}));
    EXPECT_EQ(plan.totals().moneyOut, -999);
    EXPECT_EQ(plan.firstDate(), day(2026, 3, 2));
}

TEST_F(ImportPlannerTest, ALineIsFoundByItsFileEvenAfterItsDateWasChangedOrFarFromTheFile) {
    const auto march =
        file({{day(2026, 3, 1), -450, "BLUE BOTTLE"},
              {day(2026, 3, 2), -1200, "SAFEWAY"},
              {day(2026, 3, 9), -2000, "CORNER BISTRO", TransactionStatus::pending}});
    (void)importFile(march);
    // A person moves the coffee to another year; the file still holds it.
    std::optional<Uuid> coffee;
    for (const auto& t : ledger().transactions) {
        if (t.rawDescription == "BLUE BOTTLE")
            coffee = t.id;
    }
    ASSERT_TRUE(coffee);
    ledger().transactions.update(*coffee,
                                 [](LedgerTransaction& edited) { edited.date = day(2019, 7, 4); });
    const auto again = ImportPlanner::plan(march, account, ledger());
    EXPECT_EQ(kinds(again), std::vector(3, Kind::duplicate));

    // A later file: the pending charge, a full week before its first row,
    // still posts; the coffee that was moved away is new to it.
    const auto april = ImportPlanner::plan(
        file({{day(2026, 3, 16), -2000, "CORNER BISTRO"}, {day(2026, 3, 17), -450, "BLUE BOTTLE"}},
             "hash-2"),
        account, ledger());
    EXPECT_EQ(kinds(april), (std::vector{Kind::replacesPending, Kind::newRow}));
}

TEST_F(ImportPlannerTest, SecondIdenticalLineMeetsOnlyAClaimedTwin) {
    (void)importFile(file({{day(2026, 3, 1), -450, "BLUE BOTTLE"}}));
    const auto plan = ImportPlanner::plan(
        file({{day(2026, 3, 1), -450, "BLUE BOTTLE"}, {day(2026, 3, 1), -450, "BLUE BOTTLE"}},
             "hash-2"),
        account, ledger());
    EXPECT_EQ(kinds(plan), (std::vector{Kind::duplicate, Kind::newRow}));
}

TEST_F(ImportPlannerTest, VoidedLinesComeBack) {
    (void)importFile(file({{day(2026, 3, 1), -450, "BLUE BOTTLE"}}));
    const auto id = ledger().transactions.begin()->id;
    ledger().transactions.update(id, [](LedgerTransaction& t) { t.voided = true; });
    const auto plan =
        ImportPlanner::plan(file({{day(2026, 3, 1), -450, "BLUE BOTTLE"}}), account, ledger());
    EXPECT_EQ(kinds(plan), std::vector{Kind::newRow});
}

TEST_F(ImportPlannerTest, PendingChargePostsWithATip) {
    (void)importFile(file({{day(2026, 3, 1), -2000, "CORNER BISTRO", TransactionStatus::pending}}));
    const auto pendingID = ledger().transactions.begin()->id;

    const auto tipped = ImportPlanner::plan(
        file({{day(2026, 3, 8), -2400, "CORNER BISTRO OAKLAND"}}, "hash-2"), account, ledger());
    EXPECT_EQ(tipped.rows[0].disposition, (RowDisposition{Kind::replacesPending, pendingID}));

    const auto tooMuch = ImportPlanner::plan(
        file({{day(2026, 3, 8), -2601, "CORNER BISTRO OAKLAND"}}, "hash-2"), account, ledger());
    EXPECT_EQ(kinds(tooMuch), std::vector{Kind::newRow});

    const auto early = ImportPlanner::plan(
        file({{day(2026, 2, 27), -2000, "CORNER BISTRO"}}, "hash-2"), account, ledger());
    EXPECT_NE(early.rows[0].disposition.kind, Kind::replacesPending);
}

TEST_F(ImportPlannerTest, TwoPendingCandidatesReplaceNeither) {
    (void)importFile(file({{day(2026, 3, 1), -2000, "CORNER BISTRO", TransactionStatus::pending},
                           {day(2026, 3, 2), -2000, "CORNER BISTRO", TransactionStatus::pending}}));
    const auto plan = ImportPlanner::plan(
        file({{day(2026, 3, 4), -2200, "CORNER BISTRO"}}, "hash-2"), account, ledger());
    EXPECT_EQ(kinds(plan), std::vector{Kind::newRow});
}

TEST_F(ImportPlannerTest, PossibleDuplicatesStayWithinTheFilesOwnDates) {
    (void)importFile(file(
        {{day(2026, 3, 9), -4500, "HARDWARE STORE"}, {day(2026, 3, 12), -777, "GARDEN CENTER"}}));
    const auto plan = ImportPlanner::plan(file({{day(2026, 3, 10), -4500, "HARDWARE STORE #2"},
                                                {day(2026, 3, 13), -777, "SOMETHING ELSE"}},
                                               "hash-2"),
                                          account, ledger());
    // 9 March lies before the file's first date, though only a day away.
    EXPECT_EQ(plan.rows[0].disposition.kind, Kind::newRow);
    // Same amount a day apart within the span, but the texts differ.
    EXPECT_EQ(plan.rows[1].disposition.kind, Kind::newRow);

    const auto near = ImportPlanner::plan(
        file({{day(2026, 3, 11), -777, "GARDEN CENTRE"}, {day(2026, 3, 14), -100, "X"}}, "hash-3"),
        account, ledger());
    EXPECT_EQ(near.rows[0].disposition.kind, Kind::possibleDuplicate);
    EXPECT_EQ(near.possibleDuplicates().size(), 1u);
}

TEST_F(ImportPlannerTest, ExternalIDs) {
    (void)importFile(file({{day(2026, 3, 1), -500, "SHOP", {}, {}, "FIT-1"}}));
    const auto changed = ImportPlanner::plan(
        file({{day(2026, 3, 1), -650, "SHOP", {}, {}, "FIT-1"}}, "hash-2"), account, ledger());
    EXPECT_EQ(changed.rows[0].disposition.kind, Kind::possibleDuplicate);
}

TEST_F(ImportPlannerTest, CardsMustAgreeInTheExactPass) {
    (void)importFile(file({{day(2026, 3, 1), -500, "SHOP", {}, std::string("Card ending 1111")}}));
    const auto other = ImportPlanner::plan(
        file({{day(2026, 3, 1), -500, "SHOP", {}, std::string("Card ending 2222")}}, "hash-2"),
        account, ledger());
    EXPECT_EQ(other.rows[0].disposition.kind, Kind::newRow);
    const auto sameFileNoCard =
        ImportPlanner::plan(file({{day(2026, 3, 1), -500, "SHOP"}}), account, ledger());
    EXPECT_EQ(sameFileNoCard.rows[0].disposition.kind, Kind::duplicate);
    const auto otherFileNoCard =
        ImportPlanner::plan(file({{day(2026, 3, 1), -500, "SHOP"}}, "hash-9"), account, ledger());
    EXPECT_EQ(otherFileNoCard.rows[0].disposition.kind, Kind::possibleDuplicate);
}

TEST_F(ImportPlannerTest, CommitKeepsAConfirmedFilingAndUndoBringsThePendingBack) {
    (void)importFile(file({{day(2026, 3, 1), -2000, "CORNER BISTRO", TransactionStatus::pending}}));
    const auto pendingID = ledger().transactions.begin()->id;
    const auto dining = builder.category("Dining");
    ledger().transactions.update(pendingID, [&](LedgerTransaction& t) {
        t.kind = TransactionKind::expense;
        t.categoryID = dining;
        t.review = ReviewState::confirmed;
        t.method = MatchMethod::manual;
        t.note = "date night";
    });

    const auto posted = file({{day(2026, 3, 3), -2300, "CORNER BISTRO"}}, "hash-2");
    const auto plan = ImportPlanner::plan(posted, account, ledger());
    auto [delta, batches] = commitImport(ledger(), {{posted, plan, {}}}, Instant{});
    ASSERT_EQ(batches.size(), 1u);
    EXPECT_EQ(batches[0].counts.replacedPending, 1);
    EXPECT_EQ(ledger().transaction(pendingID)->supersededBy.has_value(), true);
    const auto& postedLine = *ledger().transaction(ledger().transaction(pendingID)->supersededBy);
    EXPECT_EQ(postedLine.categoryID, dining);
    EXPECT_EQ(postedLine.review, ReviewState::confirmed);
    EXPECT_EQ(postedLine.note, "date night");
    EXPECT_EQ(delta.sourceLines.size(), 1u);

    const auto undo = undoImport(ledger(), batches[0].id);
    EXPECT_FALSE(ledger().transaction(pendingID)->supersededBy);
    EXPECT_EQ(ledger().transactions.size(), 1u);
    EXPECT_EQ(undo.deletedSourceBatches, std::vector{batches[0].id});
}

TEST_F(ImportPlannerTest, UndoingAnImportForgetsDecisionsAboutItsLinesOnly) {
    (void)importFile(file({{day(2026, 3, 1), -450, "BLUE BOTTLE COFFEE"}}));
    const auto kept = ledger().transactions.begin()->id;
    const auto second = file({{day(2026, 3, 2), -520, "LARDO"}}, "hash-2");
    const auto plan = ImportPlanner::plan(second, account, ledger());
    auto [delta, batches] = commitImport(ledger(), {{second, plan, {}}}, Instant{});
    ASSERT_EQ(batches.size(), 1u);
    Uuid removed;
    for (const auto& transaction : ledger().transactions) {
        if (transaction.id != kept)
            removed = transaction.id;
    }
    const auto dining = builder.category("Dining");
    const auto decide = [&](const Uuid& id, const std::string& label) {
        (void)classify(ledger(),
                       Classification{.ids = {id},
                                      .kind = TransactionKind::expense,
                                      .categoryID = dining,
                                      .label = label},
                       Instant{});
    };
    decide(kept, "Review Blue Bottle");
    decide(removed, "Review Lardo");
    ASSERT_EQ(ledger().changes.size(), 2u);

    const auto undo = undoImport(ledger(), batches[0].id);
    EXPECT_EQ(ledger().transaction(removed), nullptr);
    // Undo must never reach for a line that isn't there.
    ASSERT_EQ(ledger().changes.size(), 1u);
    EXPECT_EQ(ledger().changes[0].label, "Review Blue Bottle");
    EXPECT_TRUE(undo.deleted.contains(RecordKind::change));
    EXPECT_EQ(ledger().transaction(kept)->review, ReviewState::confirmed);
}

TEST_F(ImportPlannerTest, ForcedAndHeldRowsAreCounted) {
    (void)importFile(
        file({{day(2026, 3, 12), -777, "GARDEN CENTER"}, {day(2026, 3, 13), -100, "SHOP"}}));
    const auto analysis = file({{day(2026, 3, 11), -777, "GARDEN CENTRE"},
                                {day(2026, 3, 13), -100, "SHOP"},
                                {day(2026, 3, 14), -50, "X"}},
                               "hash-2");
    const auto plan = ImportPlanner::plan(analysis, account, ledger());
    ASSERT_EQ(kinds(plan), (std::vector{Kind::possibleDuplicate, Kind::duplicate, Kind::newRow}));
    // Forcing applies to held rows only: the duplicate stays a duplicate.
    const auto [delta, batches] = commitImport(
        ledger(), {{analysis, plan, {plan.rows[0].row.line, plan.rows[1].row.line}}}, Instant{});
    const auto& counts = batches[0].counts;
    EXPECT_EQ(counts.forcedDuplicates, 1);
    EXPECT_EQ(counts.duplicates, 1);
    EXPECT_EQ(counts.imported, 1);
    EXPECT_EQ(counts.heldDuplicates, 0);
    EXPECT_EQ(counts.totalRows, 3);
}

}  // namespace
}  // namespace copperwick
