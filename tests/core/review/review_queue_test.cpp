#include "core/review/review_queue.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "core/matching/merchant_text.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;
using testing::LedgerBuilder;

class ReviewQueueTest : public ::testing::Test {
  protected:
    Ledger& ledger() { return builder.ledger(); }
    void suggest(const Uuid& id, Suggestion suggestion) {
        builder.change(id, [&](LedgerTransaction& t) {
            t.suggestion = suggestion;
            t.review = ReviewState::suggested;
        });
    }
    std::vector<std::string> ids(const std::vector<ReviewGroup>& groups) {
        std::vector<std::string> result;
        for (const auto& group : groups)
            result.push_back(group.id);
        return result;
    }

    // Three groups of four waiting lines: two texts sharing a key, money in
    // apart from money out, and a filed line left out.
    void addMixedQueue() {
        builder.transaction(checking, "BLUE BOTTLE COFFEE #12", -450, day(2026, 3, 2));
        builder.transaction(card, "BLUE BOTTLE COFFEE #97", -300, day(2026, 3, 4));
        builder.transaction(card, "BLUE BOTTLE COFFEE", 450, day(2026, 3, 3));
        builder.transaction(checking, "RENT", -100000, day(2026, 3, 1));
        const auto filed = builder.transaction(checking, "RENT", -100000, day(2026, 4, 1));
        builder.change(filed, [](LedgerTransaction& t) { t.review = ReviewState::automatic; });
    }

    LedgerBuilder builder;
    Uuid checking = builder.account("Joint Checking");
    Uuid card = builder.account("Card", AccountType::creditCard);
};

TEST_F(ReviewQueueTest, RefundsGroupApartFromPurchasesAndZeroCountsAsOut) {
    builder.transaction(checking, "BLUE BOTTLE COFFEE", -450, day(2026, 3, 2));
    builder.transaction(card, "BLUE BOTTLE COFFEE", 450, day(2026, 3, 3));
    builder.transaction(checking, "BLUE BOTTLE COFFEE", 0, day(2026, 3, 1));
    const auto groups = ReviewQueue::groups(ledger());
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_EQ(groups[0].id, "out|BLUE BOTTLE COFFEE") << "two lines come first";
    EXPECT_EQ(groups[0].transactionIDs.size(), 2u);
    EXPECT_FALSE(groups[0].isMoneyIn);
    EXPECT_EQ(groups[0].firstDate, day(2026, 3, 1));
    EXPECT_EQ(groups[0].lastDate, day(2026, 3, 2));
    EXPECT_EQ(groups[0].total, -450);
    EXPECT_EQ(groups[0].displayName, "Blue Bottle Coffee");
    EXPECT_EQ(groups[1].id, "in|BLUE BOTTLE COFFEE");
    EXPECT_TRUE(groups[1].isMoneyIn);
    EXPECT_EQ(groups[1].accountNames, std::vector<std::string>{"Card"});
}

// One group is looked up without grouping the whole queue; it must be the
// very group the queue lists, whatever spelling of its id was typed, and
// texts that differ but share a key belong to it together.
TEST_F(ReviewQueueTest, OneGroupLookedUpIsTheGroupTheQueueLists) {
    addMixedQueue();
    const auto groups = ReviewQueue::groups(ledger());
    ASSERT_EQ(groups.size(), 3u);
    for (const auto& listed : groups) {
        EXPECT_EQ(ReviewQueue::group(ledger(), listed.id), listed) << listed.id;
        std::string lower = listed.id;
        std::transform(lower.begin(), lower.end(), lower.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        EXPECT_EQ(ReviewQueue::group(ledger(), lower), listed) << lower;
    }
    EXPECT_EQ(ReviewQueue::group(ledger(), "in|RENT"), std::nullopt) << "no money came in";
    EXPECT_EQ(ReviewQueue::group(ledger(), "RENT"), std::nullopt);
    EXPECT_EQ(ReviewQueue::group(ledger(), "sideways|RENT"), std::nullopt);
}

// A decision's command counts what is left without making the groups; the
// count must be the one the Review screen shows from the groups themselves,
// with texts sharing a key in one group, money in and out apart, and filed
// lines left out.
TEST_F(ReviewQueueTest, WaitingCountIsTheCountOfTheGroups) {
    EXPECT_EQ(ReviewQueue::waiting(ledger()), ReviewQueue::Waiting{});
    addMixedQueue();

    const auto groups = ReviewQueue::groups(ledger());
    const auto waiting = ReviewQueue::waiting(ledger());
    EXPECT_EQ(waiting, (ReviewQueue::Waiting{.lines = 4, .groups = 3}));
    EXPECT_EQ(ReviewQueue::waitingText(waiting), ReviewQueue::waitingText(groups));
    EXPECT_EQ(ReviewQueue::waitingText(waiting), "4 transactions in 3 groups need you.");
    EXPECT_EQ(ReviewQueue::waitingText(ReviewQueue::Waiting{.lines = 1, .groups = 1}),
              "1 transaction in 1 group needs you.");
}

TEST_F(ReviewQueueTest, OnlyLiveWaitingLinesAreGrouped) {
    const auto filed = builder.transaction(checking, "RENT", -100);
    builder.change(filed, [](LedgerTransaction& t) { t.review = ReviewState::automatic; });
    const auto confirmed = builder.transaction(checking, "RENT", -100);
    builder.change(confirmed, [](LedgerTransaction& t) { t.review = ReviewState::confirmed; });
    const auto voided = builder.transaction(checking, "RENT", -100);
    builder.change(voided, [](LedgerTransaction& t) { t.voided = true; });
    const auto replaced = builder.transaction(checking, "RENT", -100);
    builder.change(replaced, [&](LedgerTransaction& t) { t.supersededBy = filed; });
    const auto waiting = builder.transaction(checking, "RENT", -100);
    const auto groups = ReviewQueue::groups(ledger());
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].transactionIDs, std::vector<Uuid>{waiting});
}

TEST_F(ReviewQueueTest, SuggestionOnlyWhenEveryLineAgrees) {
    const Suggestion dining{.merchantName = "Taqueria",
                            .categoryID = builder.category("Dining"),
                            .kind = TransactionKind::expense,
                            .source = MatchMethod::similar,
                            .reason = "Like Taqueria Sol."};
    const auto a = builder.transaction(checking, "TAQUERIA", -1000, day(2026, 3, 1));
    const auto b = builder.transaction(checking, "TAQUERIA", -1100, day(2026, 3, 2));
    const auto c = builder.transaction(checking, "TAQUERIA", -1200, day(2026, 3, 3));
    suggest(a, dining);
    suggest(b, dining);
    EXPECT_FALSE(ReviewQueue::groups(ledger())[0].suggestion) << "one line has none";

    suggest(c, dining);
    EXPECT_EQ(ReviewQueue::groups(ledger())[0].suggestion, dining);

    Suggestion otherReason = dining;
    otherReason.reason = "Something else.";
    suggest(c, otherReason);
    EXPECT_FALSE(ReviewQueue::groups(ledger())[0].suggestion) << "agreement is field by field";
}

TEST_F(ReviewQueueTest, MerchantAgreementIgnoresLinesWithoutOne) {
    const auto merchant = builder.merchant("Sol Taqueria");
    const auto a = builder.transaction(checking, "TAQUERIA SOL 12", -1000);
    builder.transaction(checking, "TAQUERIA SOL 12", -1000);
    builder.change(a, [&](LedgerTransaction& t) { t.merchantID = merchant; });
    auto groups = ReviewQueue::groups(ledger());
    ASSERT_EQ(groups.size(), 1u);
    EXPECT_EQ(groups[0].merchantID, merchant);
    EXPECT_EQ(groups[0].displayName, "Sol Taqueria");

    const auto other = builder.merchant("Other");
    const auto c = builder.transaction(checking, "TAQUERIA SOL 12", -1000);
    builder.change(c, [&](LedgerTransaction& t) { t.merchantID = other; });
    groups = ReviewQueue::groups(ledger());
    EXPECT_FALSE(groups[0].merchantID);
    EXPECT_EQ(groups[0].displayName, MerchantText::titleCase(groups[0].key));
}

TEST_F(ReviewQueueTest, OrderIsCountThenMoneyThenId) {
    builder.transaction(checking, "ALPHA SHOP", -500);
    builder.transaction(checking, "BETA SHOP", -900);
    builder.transaction(checking, "BETA SHOP", 500, day(2026, 3, 4));
    builder.transaction(checking, "GAMMA SHOP", 900);
    builder.transaction(checking, "DELTA SHOP", -100);
    builder.transaction(checking, "DELTA SHOP", -100);
    EXPECT_EQ(ids(ReviewQueue::groups(ledger())),
              (std::vector<std::string>{"out|DELTA SHOP", "in|GAMMA SHOP", "out|BETA SHOP",
                                        "in|BETA SHOP", "out|ALPHA SHOP"}));
}

TEST_F(ReviewQueueTest, ExampleIsTheNewestLineAndIdsBreakDateTies) {
    const auto first = builder.transaction(checking, "ACME STORE", -100, day(2026, 3, 2));
    const auto second = builder.transaction(checking, "ACME STORE", -100, day(2026, 3, 2));
    const auto newest = builder.transaction(checking, "acme   store", -100, day(2026, 3, 5));
    builder.transaction(checking, "ACME STORE", -100, day(2026, 3, 9));
    const auto groups = ReviewQueue::makeGroups(
        {ledger().transaction(newest), ledger().transaction(first), ledger().transaction(second)},
        ledger());
    ASSERT_EQ(groups.size(), 1u);
    const auto [low, high] = std::minmax(first, second);
    EXPECT_EQ(groups[0].transactionIDs, (std::vector<Uuid>{low, high, newest}));
    EXPECT_EQ(groups[0].example, "acme   store");
    EXPECT_EQ(groups[0].key, "ACME STORE");
}

class StalePendingTest : public ReviewQueueTest {
  protected:
    Uuid pending(LocalDate date, std::optional<Uuid> batch = std::nullopt) {
        const auto id = builder.transaction(card, "PENDING CAFE", -300, date);
        builder.change(id, [&](LedgerTransaction& t) {
            t.status = TransactionStatus::pending;
            t.batchID = batch;
        });
        return id;
    }
    Uuid batch(const Uuid& account, std::optional<LocalDate> lastDate) {
        ImportBatch added{.id = Uuid::random(), .accountID = account, .lastDate = lastDate};
        ledger().batches.push_back(added);
        return added.id;
    }
    std::vector<Uuid> stale(LocalDate today) {
        std::vector<Uuid> result;
        for (const auto& t : ReviewQueue::stalePending(ledger(), today))
            result.push_back(t.id);
        return result;
    }
};

TEST_F(StalePendingTest, ANewerFileMoreThanFiveDaysOnContradictsTheLine) {
    const auto own = batch(card, day(2026, 3, 20));
    const auto line = pending(day(2026, 3, 10), own);
    EXPECT_TRUE(stale(day(2026, 3, 10)).empty()) << "its own file says nothing";
    batch(checking, day(2026, 3, 30));
    batch(card, std::nullopt);
    EXPECT_TRUE(stale(day(2026, 3, 10)).empty()) << "other accounts and undated files neither";
    const auto fiveDays = batch(card, day(2026, 3, 15));
    EXPECT_TRUE(stale(day(2026, 3, 10)).empty());
    ledger().batches.eraseIf([&](const ImportBatch& b) { return b.id == fiveDays; });
    batch(card, day(2026, 3, 16));
    EXPECT_EQ(stale(day(2026, 3, 10)), std::vector<Uuid>{line});
}

TEST_F(StalePendingTest, AgeCountsAfterFourteenDays) {
    const auto line = pending(day(2026, 2, 20));
    EXPECT_TRUE(stale(day(2026, 3, 6)).empty()) << "exactly 14 days";
    EXPECT_EQ(stale(day(2026, 3, 7)), std::vector<Uuid>{line});
}

TEST_F(StalePendingTest, VoidedNeverAndFiledStillCount) {
    const auto voided = pending(day(2026, 1, 1));
    builder.change(voided, [](LedgerTransaction& t) { t.voided = true; });
    const auto filed = pending(day(2026, 1, 2));
    builder.change(filed, [](LedgerTransaction& t) { t.review = ReviewState::automatic; });
    const auto older = pending(day(2025, 12, 31));
    EXPECT_EQ(stale(day(2026, 3, 1)), (std::vector<Uuid>{older, filed}));
}

}  // namespace
}  // namespace copperwick
