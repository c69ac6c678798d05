#include "core/matching/transfer_pairing.h"

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;
using testing::LedgerBuilder;

class TransferPairingTest : public ::testing::Test {
  protected:
    const LedgerTransaction& get(const Uuid& id) { return *builder.ledger().transaction(id); }
    LedgerDelta pair() { return pairTransfers(builder.ledger()); }

    LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
    Uuid savings = builder.account("Savings", AccountType::savings);
    Uuid card = builder.account("Card", AccountType::creditCard);
};

TEST_F(TransferPairingTest, CardPaymentPairsBothSides) {
    const auto out = builder.transaction(checking, "ONLINE PAYMENT", -10000, day(2026, 3, 4));
    const auto in = builder.transaction(card, "PAYMENT THANK YOU", 10000, day(2026, 3, 9));
    const auto delta = pair();
    EXPECT_EQ(get(out).transferPairID, in);
    EXPECT_EQ(get(in).transferPairID, out);
    for (const auto& id : {out, in}) {
        EXPECT_EQ(get(id).kind, TransactionKind::transfer);
        EXPECT_EQ(get(id).method, MatchMethod::transferPair);
        EXPECT_EQ(get(id).review, ReviewState::automatic);
    }
    EXPECT_EQ(get(out).evidence, "Matches $100.00 in Card on Mar 9.");
    EXPECT_EQ(get(in).evidence, "Matches \u2212$100.00 in Checking on Mar 4.");
    EXPECT_EQ(delta.changed.at(RecordKind::transaction).size(), 2u);
    EXPECT_TRUE(pair().isEmpty()) << "a second run must change nothing";
}

TEST_F(TransferPairingTest, WindowIsFiveDaysEitherWay) {
    const auto out = builder.transaction(checking, "TRANSFER", -2500, day(2026, 3, 10));
    const auto near = builder.transaction(savings, "DEPOSIT", 2500, day(2026, 3, 5));
    const auto far = builder.transaction(card, "DEPOSIT", 3300, day(2026, 3, 16));
    builder.transaction(checking, "TRANSFER", -3300, day(2026, 3, 10));
    (void)pair();
    EXPECT_EQ(get(out).transferPairID, near);
    EXPECT_FALSE(get(far).transferPairID);
}

TEST_F(TransferPairingTest, NeverWithinOneAccountOrWithoutAMarker) {
    const auto out = builder.transaction(checking, "TRANSFER", -900, day(2026, 3, 1));
    builder.transaction(checking, "TRANSFER", 900, day(2026, 3, 1));
    const auto plainOut = builder.transaction(checking, "GROCERIES", -700, day(2026, 3, 1));
    builder.transaction(savings, "REFUND", 700, day(2026, 3, 1));
    EXPECT_TRUE(pair().isEmpty());
    EXPECT_FALSE(get(out).transferPairID);
    EXPECT_FALSE(get(plainOut).transferPairID);
}

TEST_F(TransferPairingTest, EqualDistanceIsAmbiguous) {
    const auto out = builder.transaction(checking, "XFER", -5000, day(2026, 3, 10));
    const auto a = builder.transaction(savings, "XFER", 5000, day(2026, 3, 8));
    const auto b = builder.transaction(card, "XFER", 5000, day(2026, 3, 12));
    EXPECT_TRUE(pair().isEmpty());
    EXPECT_FALSE(get(out).transferPairID);

    // Two debits and one credit: the earlier debit takes it only when the
    // credit is strictly closest to it; the later one then finds it used.
    const auto first = builder.transaction(checking, "XFER", -800, day(2026, 4, 1));
    const auto second = builder.transaction(savings, "XFER", -800, day(2026, 4, 1));
    const auto credit = builder.transaction(card, "XFER", 800, day(2026, 4, 2));
    (void)pair();
    EXPECT_EQ(get(credit).transferPairID, std::min(first, second));
    EXPECT_FALSE(get(a).transferPairID);
    EXPECT_FALSE(get(b).transferPairID);
}

TEST_F(TransferPairingTest, OwnFilingsAndProtectedLinesAreRespected) {
    const auto out = builder.transaction(checking, "MOVE", -4000, day(2026, 3, 1));
    builder.change(out, [](LedgerTransaction& t) {
        t.kind = TransactionKind::transfer;
        t.method = MatchMethod::manual;
        t.review = ReviewState::confirmed;
        t.evidence = "Set by you.";
    });
    const auto in = builder.transaction(savings, "CREDIT", 4000, day(2026, 3, 2));
    const auto confirmedUnknown = builder.transaction(savings, "TRANSFER", 1500);
    builder.change(confirmedUnknown,
                   [](LedgerTransaction& t) { t.review = ReviewState::confirmed; });
    builder.transaction(checking, "TRANSFER", -1500);
    const auto opening = builder.transaction(savings, "TRANSFER", 2000);
    builder.change(opening, [](LedgerTransaction& t) {
        t.entrySource = TransactionEntrySource::openingBalance;
    });
    builder.transaction(checking, "TRANSFER", -2000);

    (void)pair();
    EXPECT_EQ(get(out).transferPairID, in);
    EXPECT_EQ(get(out).review, ReviewState::confirmed);
    EXPECT_EQ(get(out).evidence, "Set by you.");
    EXPECT_EQ(get(in).method, MatchMethod::transferPair);
    EXPECT_FALSE(get(confirmedUnknown).transferPairID);
    EXPECT_FALSE(get(opening).transferPairID);
}

TEST_F(TransferPairingTest, BrokenLinksAreDropped) {
    const auto out = builder.transaction(checking, "TRANSFER TO SAV", -6000, day(2026, 3, 1));
    const auto in = builder.transaction(savings, "TRANSFER FROM CHK", 6000, day(2026, 3, 1));
    builder.change(out, [](LedgerTransaction& t) {
        t.kind = TransactionKind::transfer;
        t.method = MatchMethod::builtInRule;
        t.review = ReviewState::automatic;
    });
    (void)pair();
    ASSERT_EQ(get(in).transferPairID, out);

    builder.change(out, [](LedgerTransaction& t) { t.voided = true; });
    (void)pair();
    EXPECT_FALSE(get(in).transferPairID);
    EXPECT_EQ(get(in).kind, TransactionKind::unknown);
    EXPECT_EQ(get(in).review, ReviewState::unresolved);
    EXPECT_EQ(get(in).evidence, "Its matching transfer was removed.");
    // The voided side kept its own filing and only lost the link.
    EXPECT_FALSE(get(out).transferPairID);
    EXPECT_EQ(get(out).method, MatchMethod::builtInRule);
}

TEST_F(TransferPairingTest, GeneratedLedgerSettlesInOneRun) {
    const Uuid accounts[] = {checking, savings, card};
    for (int i = 0; i < 3000; ++i) {
        const auto from = accounts[i % 3];
        const auto to = accounts[(i + 1 + i / 3 % 2) % 3];
        const auto amount = 100 + (i * 37) % 400;
        const auto date = day(2025, 1, 1).addingDays(i % 300);
        builder.transaction(from, i % 4 ? "ONLINE TRANSFER" : "COFFEE", -amount, date);
        builder.transaction(to, i % 5 ? "DEPOSIT" : "REFUND", amount, date.addingDays(i % 7));
    }
    const auto first = pair();
    EXPECT_FALSE(first.isEmpty());
    EXPECT_TRUE(pair().isEmpty());
    for (const auto& transaction : builder.ledger().transactions) {
        if (!transaction.transferPairID)
            continue;
        const auto& partner = get(*transaction.transferPairID);
        EXPECT_EQ(partner.transferPairID, transaction.id);
        EXPECT_EQ(partner.amount, -transaction.amount);
        EXPECT_NE(partner.accountID, transaction.accountID);
    }
}

}  // namespace
}  // namespace copperwick
