#include "core/operations/merchants.h"

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"
#include "tests/support/refusal.h"

namespace copperwick {
namespace {

using testing::LedgerBuilder;

class MerchantsTest : public ::testing::Test {
  protected:
    Ledger& ledger() { return builder.ledger(); }
    const Merchant* merchant(const Uuid& id) { return ledger().merchant(id); }

    LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
};

TEST_F(MerchantsTest, RenamingToAnotherMerchantsNameInAnyCaseMerges) {
    const auto source = builder.merchant("Blue Bottle Cafe", "Dining", {"BLUE BOTTLE", "BB CAFE"});
    const auto target = builder.merchant("Blue Bottle", std::nullopt, {"BB CAFE"});
    const auto line = builder.transaction(checking, "BLUE BOTTLE", -500);
    builder.change(line, [&](LedgerTransaction& t) {
        t.merchantID = source;
        t.review = ReviewState::confirmed;
        t.evidence = "Set by you.";
    });

    const auto delta = renameMerchant(ledger(), source, "  blue BOTTLE\t");
    EXPECT_EQ(merchant(source), nullptr);
    EXPECT_EQ(merchant(target)->name, "Blue Bottle");
    EXPECT_EQ(merchant(target)->keys, (std::vector<std::string>{"BB CAFE", "BLUE BOTTLE"}));
    EXPECT_EQ(merchant(target)->categoryID, builder.category("Dining"))
        << "a target without a filing takes the source's";
    EXPECT_EQ(ledger().transaction(line)->merchantID, target);
    EXPECT_EQ(ledger().transaction(line)->review, ReviewState::confirmed);
    EXPECT_EQ(ledger().transaction(line)->evidence, "Set by you.");
    EXPECT_TRUE(delta.deleted.at(RecordKind::merchant).contains(source.text()));
    EXPECT_TRUE(delta.changed.at(RecordKind::transaction).contains(line.text()));
}

TEST_F(MerchantsTest, RenamingToOwnNameInOtherCaseLocksIt) {
    const auto id = builder.merchant("blue bottle");
    const auto delta = renameMerchant(ledger(), id, "Blue Bottle");
    EXPECT_EQ(merchant(id)->name, "Blue Bottle");
    EXPECT_TRUE(merchant(id)->nameLocked);
    EXPECT_TRUE(delta.changes(RecordKind::merchant));

    EXPECT_TRUE(renameMerchant(ledger(), id, " \t ").isEmpty());
    EXPECT_TRUE(renameMerchant(ledger(), Uuid::random(), "X").isEmpty());
}

TEST_F(MerchantsTest, MergeKeepsTheTargetsFilingAndRefusesItself) {
    const auto source = builder.merchant("A", "Dining");
    const auto target = builder.merchant("B", "Groceries");
    EXPECT_TRUE(mergeMerchants(ledger(), source, source).isEmpty());
    EXPECT_TRUE(mergeMerchants(ledger(), source, Uuid::random()).isEmpty());
    EXPECT_NE(merchant(source), nullptr);

    (void)mergeMerchants(ledger(), source, target);
    EXPECT_EQ(merchant(target)->categoryID, builder.category("Groceries"));
}

TEST_F(MerchantsTest, PruneKeepsTaughtAndUsedMerchants) {
    const auto taught = builder.merchant("Taught", std::nullopt, {"TAUGHT"});
    const auto filed = builder.merchant("Filed", "Dining");
    const auto nameOnly = builder.merchant("Name only");
    const auto usedByVoided = builder.merchant("Used");
    const auto line = builder.transaction(checking, "USED", -100);
    builder.change(line, [&](LedgerTransaction& t) {
        t.merchantID = usedByVoided;
        t.voided = true;
    });
    const auto delta = pruneUnusedMerchants(ledger());
    EXPECT_NE(merchant(taught), nullptr);
    EXPECT_NE(merchant(filed), nullptr);
    EXPECT_NE(merchant(usedByVoided), nullptr) << "any state counts as use";
    EXPECT_EQ(merchant(nameOnly), nullptr);
    EXPECT_EQ(delta.deleted.at(RecordKind::merchant).texts(),
              std::vector<std::string>{nameOnly.text()});
}

TEST_F(MerchantsTest, UpdateWithApplyNowFilesTheKeysLines) {
    const auto line = builder.transaction(checking, "CORNER DELI", -800);
    const Merchant deli{.id = Uuid::random(),
                        .name = "Corner Deli",
                        .categoryID = builder.category("Dining"),
                        .keys = {"CORNER DELI"}};
    const auto delta = updateMerchant(ledger(), deli, true);
    EXPECT_EQ(*merchant(deli.id), deli);
    EXPECT_EQ(ledger().transaction(line)->merchantID, deli.id);
    EXPECT_EQ(ledger().transaction(line)->categoryID, builder.category("Dining"));
    EXPECT_TRUE(delta.changes(RecordKind::transaction));
}

TEST_F(MerchantsTest, WithFilingSetsWhatTheMerchantAlwaysFilesAs) {
    Merchant acme{.id = Uuid::random(), .name = "Acme", .kind = TransactionKind::income};
    const Uuid dining = builder.category("Dining");
    const Merchant filed =
        withFiling(ledger(), acme, {.kind = MerchantFiling::Kind::category, .categoryID = dining});
    EXPECT_EQ(filed.categoryID, dining);
    EXPECT_EQ(filed.kind, std::nullopt) << "spending or income follows the category's group";
    const Merchant transfer =
        withFiling(ledger(), filed, {.kind = MerchantFiling::Kind::transfer, .categoryID = dining});
    EXPECT_EQ(transfer.kind, TransactionKind::transfer);
    EXPECT_EQ(transfer.categoryID, std::nullopt) << "a transfer has no category";
    EXPECT_EQ(withFiling(ledger(), transfer, {}).kind, std::nullopt);
    EXPECT_EQ(testing::refusal([&] {
                  return withFiling(ledger(), acme, {.kind = MerchantFiling::Kind::category});
              }),
              "Choose a category that matches spending or income.");
    EXPECT_EQ(testing::refusal([] { return merchantNameEntered(" \t "); }),
              "Give the merchant a name.");
    EXPECT_EQ(merchantNameEntered(" Acme Hardware "), "Acme Hardware");
}

}  // namespace
}  // namespace copperwick
