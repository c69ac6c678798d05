#include "core/operations/classification.h"

#include <gtest/gtest.h>

#include "core/operations/change_history.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/refusal.h"

namespace copperwick {
namespace {

using testing::day;
using testing::LedgerBuilder;

constexpr Instant kNow{800'000'000};

class ClassificationTest : public ::testing::Test {
  protected:
    Ledger& ledger() { return builder.ledger(); }
    const LedgerTransaction& get(const Uuid& id) { return *ledger().transaction(id); }
    LedgerDelta decide(std::vector<Uuid> ids, std::optional<std::string> merchant,
                       TransactionKind kind, std::optional<std::string> category,
                       bool remember = true) {
        return classify(
            ledger(),
            Classification{
                .ids = std::move(ids),
                .merchantName = std::move(merchant),
                .kind = kind,
                .categoryID = category ? std::optional(builder.category(*category)) : std::nullopt,
                .remember = remember,
                .label = "Classify"},
            kNow);
    }

    LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
    Uuid savings = builder.account("Savings", AccountType::savings);
};

TEST_F(ClassificationTest, WithoutRememberOnlyTheChosenChange) {
    const auto a = builder.transaction(checking, "BLUE BOTTLE", -500);
    const auto b = builder.transaction(checking, "BLUE BOTTLE", -600);
    (void)decide({a}, "Blue Bottle", TransactionKind::expense, "Dining", false);

    EXPECT_EQ(get(a).review, ReviewState::confirmed);
    EXPECT_EQ(get(a).method, MatchMethod::manual);
    EXPECT_EQ(get(a).evidence, "Set by you.");
    EXPECT_EQ(get(b).review, ReviewState::unresolved);
    const Merchant* merchant = ledger().merchantNamed("blue bottle");
    ASSERT_NE(merchant, nullptr);
    EXPECT_TRUE(merchant->keys.empty());
    EXPECT_FALSE(merchant->nameLocked) << "the bank text gives this name by itself";
    EXPECT_EQ(get(a).merchantID, merchant->id);
    EXPECT_EQ(ledger().undoLabel(), "Classify");
}

TEST_F(ClassificationTest, TypedNameIsLocked) {
    const auto a = builder.transaction(checking, "BLUE BOTTLE", -500);
    (void)decide({a}, "  My Coffee\t", TransactionKind::expense, "Dining", false);
    EXPECT_TRUE(ledger().merchantNamed("My Coffee")->nameLocked);
}

TEST_F(ClassificationTest, RememberSpreadsByKeyAndWordPrefix) {
    const auto chosen = builder.transaction(checking, "BLUE BOTTLE", -500);
    const auto longer = builder.transaction(checking, "BLUE BOTTLE COFFEE", -700);
    const auto plural = builder.transaction(checking, "BLUE BOTTLES", -800);
    const auto confirmed = builder.transaction(checking, "BLUE BOTTLE", -900);
    builder.change(confirmed, [&](LedgerTransaction& t) {
        t.review = ReviewState::confirmed;
        t.kind = TransactionKind::expense;
        t.categoryID = builder.category("Pets");
    });

    (void)decide({chosen}, "Blue Bottle", TransactionKind::expense, "Dining");
    const Merchant* merchant = ledger().merchantNamed("Blue Bottle");
    EXPECT_EQ(merchant->keys, std::vector<std::string>{"BLUE BOTTLE"});
    EXPECT_EQ(merchant->categoryID, builder.category("Dining"));
    EXPECT_FALSE(merchant->kind);

    EXPECT_EQ(get(longer).merchantID, merchant->id);
    EXPECT_EQ(get(longer).categoryID, builder.category("Dining"));
    EXPECT_EQ(get(longer).method, MatchMethod::learned);
    EXPECT_EQ(get(longer).review, ReviewState::automatic);
    EXPECT_NE(get(plural).merchantID, merchant->id);
    EXPECT_EQ(get(confirmed).categoryID, builder.category("Pets"));
}

TEST_F(ClassificationTest, RememberTakesTheKeyFromAnotherMerchant) {
    const auto old = builder.merchant("Old Name", "Pets", {"ACME", "OTHER"});
    const auto automatic = builder.transaction(checking, "ACME", -100);
    const auto confirmed = builder.transaction(checking, "ACME", -200);
    (void)rematch(ledger());
    ASSERT_EQ(get(automatic).merchantID, old);
    builder.change(confirmed, [](LedgerTransaction& t) { t.review = ReviewState::confirmed; });

    const auto chosen = builder.transaction(checking, "ACME", -300);
    (void)decide({chosen}, "Acme Corp", TransactionKind::expense, "Shopping");
    EXPECT_EQ(ledger().merchant(old)->keys, std::vector<std::string>{"OTHER"});
    const auto acme = ledger().merchantNamed("Acme Corp")->id;
    EXPECT_EQ(get(automatic).merchantID, acme);
    EXPECT_EQ(get(automatic).categoryID, builder.category("Shopping"));
    EXPECT_EQ(get(confirmed).merchantID, old);

    // One undo puts every merchant and transaction back.
    ASSERT_TRUE(undoLastChange(ledger()));
    EXPECT_EQ(ledger().merchant(old)->keys, (std::vector<std::string>{"ACME", "OTHER"}));
    EXPECT_EQ(get(automatic).merchantID, old);
    EXPECT_EQ(ledger().merchantNamed("Acme Corp"), nullptr);
}

TEST_F(ClassificationTest, SplitsSurviveOnlyAnUnchangedClassification) {
    const auto id = builder.transaction(checking, "COSTCO", -10000);
    builder.change(id, [&](LedgerTransaction& t) {
        t.kind = TransactionKind::expense;
        t.categoryID = builder.category("Groceries");
        t.splits = std::vector<TransactionSplit>{TransactionSplit{}};
    });
    (void)decide({id}, "Costco", TransactionKind::expense, "Groceries", false);
    EXPECT_TRUE(get(id).splits);
    (void)decide({id}, "Costco", TransactionKind::expense, "Shopping", false);
    EXPECT_FALSE(get(id).splits);
}

TEST_F(ClassificationTest, PairsBreakUnlessTheDecisionIsATransfer) {
    const auto out = builder.transaction(checking, "ONLINE TRANSFER", -5000, day(2026, 3, 1));
    const auto in = builder.transaction(savings, "DEPOSIT", 5000, day(2026, 3, 1));
    (void)rematch(ledger());
    ASSERT_EQ(get(out).transferPairID, in);

    (void)decide({out}, std::nullopt, TransactionKind::transfer, std::nullopt, false);
    EXPECT_EQ(get(out).transferPairID, in);
    EXPECT_EQ(get(out).review, ReviewState::confirmed);

    (void)decide({out}, std::nullopt, TransactionKind::expense, "Other Spending", false);
    EXPECT_FALSE(get(out).transferPairID);
    EXPECT_FALSE(get(in).transferPairID);
    EXPECT_EQ(get(in).review, ReviewState::unresolved);
}

TEST_F(ClassificationTest, CorrectingAModelFilingWithdrawsItEverywhere) {
    ledger().aiFilings.set("CORNER DELI", AIFiling{.key = "CORNER DELI",
                                                   .categoryID = builder.category("Dining"),
                                                   .kind = TransactionKind::expense,
                                                   .reason = "Sandwiches"});
    const auto a = builder.transaction(checking, "CORNER DELI", -900);
    const auto b = builder.transaction(checking, "CORNER DELI OAKLAND", -1100);
    (void)rematch(ledger());
    ASSERT_EQ(get(b).method, MatchMethod::ai);

    // Approving it as it stands rejects nothing.
    (void)decide({a}, std::nullopt, TransactionKind::expense, "Dining", false);
    EXPECT_FALSE(ledger().aiFilings.find("CORNER DELI")->rejected);
    EXPECT_EQ(get(b).method, MatchMethod::ai);

    builder.change(a, [](LedgerTransaction& t) {
        t.method = MatchMethod::ai;
        t.review = ReviewState::automatic;
    });
    (void)decide({a}, std::nullopt, TransactionKind::expense, "Groceries", false);
    EXPECT_TRUE(ledger().aiFilings.find("CORNER DELI")->rejected);
    EXPECT_NE(get(b).method, MatchMethod::ai);
    EXPECT_EQ(get(b).review, ReviewState::unresolved);

    ASSERT_TRUE(undoLastChange(ledger()));
    EXPECT_FALSE(ledger().aiFilings.find("CORNER DELI")->rejected);
    EXPECT_EQ(get(b).method, MatchMethod::ai);
}

TEST_F(ClassificationTest, ResetHandsTheTransactionBackToMatching) {
    builder.merchant("Blue Bottle", "Dining", {"BLUE BOTTLE"});
    const auto id = builder.transaction(checking, "BLUE BOTTLE", -500);
    (void)decide({id}, std::nullopt, TransactionKind::expense, "Pets", false);
    ASSERT_EQ(get(id).review, ReviewState::confirmed);
    EXPECT_TRUE(rematch(ledger()).isEmpty()) << "a confirmed line is never rematched";

    (void)resetToAutomatic(ledger(), {id}, kNow);
    EXPECT_EQ(get(id).review, ReviewState::automatic);
    EXPECT_EQ(get(id).method, MatchMethod::learned);
    EXPECT_EQ(get(id).categoryID, builder.category("Dining"));
    EXPECT_EQ(ledger().undoLabel(), "Reset to automatic");
}

TEST_F(ClassificationTest, ApproveGroupsBySuggestion) {
    const auto a = builder.transaction(checking, "STARBUCKZ", -500);
    const auto b = builder.transaction(checking, "STARBUCKZ", -700);
    const auto c = builder.transaction(checking, "QX", -900);
    builder.change(c, [](LedgerTransaction& t) { t.bankCategory = "Groceries"; });
    (void)rematch(ledger());
    ASSERT_EQ(get(a).review, ReviewState::suggested);
    ASSERT_EQ(get(c).review, ReviewState::suggested);
    const auto before = ledger().changes.size();

    (void)approveSuggestions(ledger(), {a, b, c}, true, kNow);
    EXPECT_EQ(ledger().changes.size(), before + 2);
    EXPECT_EQ(ledger().undoLabel(), "Approve suggestion");
    for (const auto& id : {a, b, c})
        EXPECT_EQ(get(id).review, ReviewState::confirmed);
    EXPECT_EQ(get(a).merchantID, ledger().merchantNamed("Starbucks")->id);
    EXPECT_EQ(get(c).categoryID, builder.category("Groceries"));
}

TEST_F(ClassificationTest, SuggestionsOnlyForWaitingLines) {
    const auto waiting = builder.transaction(checking, "QQQ", -100);
    const auto confirmed = builder.transaction(checking, "QQQ", -100);
    builder.change(confirmed, [](LedgerTransaction& t) { t.review = ReviewState::confirmed; });
    const Suggestion suggestion{.merchantName = "Q Shop",
                                .kind = TransactionKind::expense,
                                .source = MatchMethod::ai,
                                .reason = "Looks like a shop"};
    const auto delta =
        setSuggestion(ledger(), suggestion, "Local AI suggests Q Shop.", {waiting, confirmed});
    EXPECT_EQ(delta.changed.at(RecordKind::transaction).size(), 1u);
    EXPECT_EQ(get(waiting).review, ReviewState::suggested);
    EXPECT_EQ(get(waiting).method, MatchMethod::ai);
    EXPECT_FALSE(get(confirmed).suggestion);
    EXPECT_TRUE(ledger().changes.empty());

    // A rematch that finds nothing leaves the model's suggestion waiting.
    (void)rematch(ledger());
    EXPECT_EQ(get(waiting).suggestion, suggestion);
    EXPECT_EQ(get(waiting).review, ReviewState::suggested);
}

TEST_F(ClassificationTest, VoidAndNoteAreUndoableStepsOnlyWhenSomethingChanges) {
    const auto out = builder.transaction(checking, "ONLINE TRANSFER", -5000, day(2026, 3, 1));
    const auto in = builder.transaction(savings, "DEPOSIT", 5000, day(2026, 3, 1));
    (void)rematch(ledger());

    EXPECT_TRUE(setVoided(ledger(), {out}, false, "Restore", kNow).isEmpty());
    EXPECT_TRUE(ledger().changes.empty());
    (void)setVoided(ledger(), {out}, true, "Remove", kNow);
    EXPECT_TRUE(get(out).voided);
    EXPECT_FALSE(get(in).transferPairID);
    EXPECT_EQ(get(in).review, ReviewState::unresolved);
    EXPECT_EQ(ledger().undoLabel(), "Remove");

    EXPECT_TRUE(setNote(ledger(), "", in, kNow).isEmpty());
    (void)setNote(ledger(), "birthday", in, kNow);
    EXPECT_EQ(ledger().undoLabel(), "Edit transaction note");
    ASSERT_TRUE(undoLastChange(ledger()));
    EXPECT_EQ(get(in).note, "");
    ASSERT_TRUE(undoLastChange(ledger()));
    EXPECT_FALSE(get(out).voided);
    EXPECT_EQ(get(out).transferPairID, in);
    EXPECT_EQ(get(in).transferPairID, out);
}

// A paired transfer whose text came to look like a merchant the person taught
// kept its pairing, so the suggestion never reached Review.
TEST_F(ClassificationTest, ASuggestionTakesThePlaceOfAPairOnlyTheTextCanExplain) {
    const auto out = builder.transaction(checking, "ZANZIBAR TEAHOUS", -4200, day(2026, 3, 1));
    const auto in = builder.transaction(savings, "QQQ", 4200, day(2026, 3, 2));
    // Paired back when a rule still filed the debit as a transfer.
    for (const auto& [side, partner] : {std::pair{out, in}, std::pair{in, out}}) {
        builder.change(side, [&](LedgerTransaction& t) {
            t.kind = TransactionKind::transfer;
            t.method = MatchMethod::transferPair;
            t.review = ReviewState::automatic;
            t.transferPairID = partner;
        });
    }
    builder.merchant("Zanzibar Teahouse", "Shopping", {"ZANZIBAR TEAHOUSE"});

    (void)rematch(ledger());
    EXPECT_EQ(get(out).review, ReviewState::suggested);
    ASSERT_TRUE(get(out).suggestion);
    EXPECT_EQ(get(out).suggestion->merchantName, "Zanzibar Teahouse");
    EXPECT_FALSE(get(out).transferPairID);
    EXPECT_FALSE(get(in).transferPairID) << "nothing marks either side as a transfer any more";
    EXPECT_EQ(get(in).evidence, "Its matching transfer was removed.");
}

TEST_F(ClassificationTest, UnresolvedPairSurvivesFullRematch) {
    const auto out = builder.transaction(checking, "ZZZ XFER", -4200, day(2026, 3, 1));
    const auto in = builder.transaction(savings, "ZZZ", 4200, day(2026, 3, 2));
    (void)rematch(ledger());
    ASSERT_EQ(get(in).transferPairID, out);
    EXPECT_TRUE(rematch(ledger()).isEmpty());
    EXPECT_EQ(get(in).method, MatchMethod::transferPair);
}

TEST_F(ClassificationTest, SpendingAndIncomeNeedACategoryOfTheLedger) {
    const auto check = [&](TransactionKind kind, std::optional<Uuid> categoryID) {
        return testing::refusal(
            [&] { checkClassification(ledger(), {.kind = kind, .categoryID = categoryID}); });
    };
    constexpr std::string_view kWords = "Choose a category that matches spending or income.";
    EXPECT_EQ(check(TransactionKind::expense, std::nullopt), kWords);
    EXPECT_EQ(check(TransactionKind::income, Uuid::random()), kWords) << "a category gone";
    EXPECT_EQ(check(TransactionKind::expense, builder.category("Dining")), "accepted");
    EXPECT_EQ(check(TransactionKind::transfer, std::nullopt), "accepted");
    EXPECT_EQ(check(TransactionKind::unknown, std::nullopt), "accepted");
}

TEST_F(ClassificationTest, FilingTextNamesMerchantCategoryAndKind) {
    const auto id = builder.transaction(checking, "BLUE BOTTLE", -500);
    EXPECT_EQ(filingText(ledger(), get(id)), "Needs review");
    (void)decide({id}, "Blue Bottle", TransactionKind::expense, "Dining");
    EXPECT_EQ(filingText(ledger(), get(id)), "Blue Bottle, Dining, Spending");
    EXPECT_EQ(filingText(ledger(), std::string(), std::nullopt, TransactionKind::transfer),
              "Transfer")
        << "an empty merchant name is left out";
    EXPECT_EQ(suggestionHeading({.source = MatchMethod::ai}), "Local AI suggests");
    EXPECT_EQ(suggestionHeading({.source = MatchMethod::similar}), "Suggested");
}

}  // namespace
}  // namespace copperwick
