#include "core/operations/change_history.h"

#include <gtest/gtest.h>

#include "core/operations/classification.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::LedgerBuilder;

constexpr Instant kNow{800'000'000};

TEST(ChangeHistoryTest, HistoryKeepsTheLastFifty) {
    Ledger ledger = Ledger::starter();
    std::vector<Uuid> ids;
    for (int i = 0; i < 51; ++i) {
        ChangeSet changeSet{.id = Uuid::random(), .label = "Step " + std::to_string(i)};
        ids.push_back(changeSet.id);
        const auto delta = record(ledger, std::move(changeSet));
        EXPECT_TRUE(delta.changed.at(RecordKind::change).contains(ids.back().text()));
        if (i < 50)
            EXPECT_FALSE(delta.deleted.contains(RecordKind::change));
        else
            EXPECT_EQ(delta.deleted.at(RecordKind::change).texts(),
                      std::vector{ids.front().text()});
    }
    EXPECT_EQ(ledger.changes.size(), 50u);
    EXPECT_EQ(ledger.changes.front().id, ids[1]);
    EXPECT_EQ(ledger.undoLabel(), "Step 50");
}

TEST(ChangeHistoryTest, NothingToUndo) {
    Ledger ledger = Ledger::starter();
    EXPECT_FALSE(undoLastChange(ledger));
    EXPECT_FALSE(ledger.undoLabel());
}

TEST(ChangeHistoryTest, OneUndoRestoresAHundredTransactions) {
    LedgerBuilder builder;
    const auto account = builder.account("Checking");
    std::vector<Uuid> ids;
    for (int i = 0; i < 100; ++i)
        ids.push_back(builder.transaction(account, "SHOP " + std::to_string(i), -100 - i));
    Ledger& ledger = builder.ledger();
    (void)rematch(ledger);
    const Ledger before = ledger;

    (void)classify(ledger,
                   Classification{.ids = ids,
                                  .merchantName = "Shop",
                                  .kind = TransactionKind::expense,
                                  .categoryID = builder.category("Shopping"),
                                  .remember = true,
                                  .label = "Review Shop"},
                   kNow);
    ASSERT_EQ(ledger.changes.size(), 1u);
    const auto delta = undoLastChange(ledger);
    ASSERT_TRUE(delta);
    EXPECT_TRUE(ledger.changes.empty());
    EXPECT_EQ(delta->changed.at(RecordKind::transaction).size(), 100u);
    EXPECT_TRUE(delta->deleted.at(RecordKind::merchant).size() == 1u);
    EXPECT_TRUE(ledger.transactions == before.transactions);
    EXPECT_TRUE(ledger.merchants == before.merchants);
}

TEST(ChangeHistoryTest, MerchantPutToUseLaterStays) {
    LedgerBuilder builder;
    const auto account = builder.account("Checking");
    const auto first = builder.transaction(account, "NEW PLACE", -100);
    const auto second = builder.transaction(account, "ELSEWHERE", -200);
    Ledger& ledger = builder.ledger();
    const auto decide = [&](const Uuid& id, const std::string& label) {
        (void)classify(ledger,
                       Classification{.ids = {id},
                                      .merchantName = "New Place",
                                      .kind = TransactionKind::expense,
                                      .categoryID = builder.category("Dining"),
                                      .label = label},
                       kNow);
    };
    decide(first, "First");
    decide(second, "Second");
    const auto merchant = ledger.merchantNamed("New Place")->id;

    // The first operation created the merchant; the second still uses it.
    ledger.changes.erase(1);
    ASSERT_TRUE(undoLastChange(ledger));
    EXPECT_NE(ledger.merchant(merchant), nullptr);
    EXPECT_FALSE(ledger.transaction(first)->merchantID);
    EXPECT_EQ(ledger.transaction(second)->merchantID, merchant);
}

TEST(ChangeHistoryTest, UndoRemovesCreatedRecordsAndRules) {
    LedgerBuilder builder;
    const auto account = builder.account("Checking");
    Ledger& ledger = builder.ledger();
    const Rule rule{.id = Uuid::random(), .name = "Made", .pattern = "X"};
    const LedgerTransaction created{.id = Uuid::random(), .accountID = account};
    ledger.rules.push_back(rule);
    ledger.settings.update([&](LedgerSettings& s) { s.ruleOrder = {rule.id}; });
    ledger.transactions.set(created.id, created);
    ledger.aiFilings.set("K", AIFiling{.key = "K"});
    (void)record(ledger, ChangeSet{.id = Uuid::random(),
                                   .createdRuleIDs = {rule.id},
                                   .createdAIFilingKeys = {"K"},
                                   .createdTransactionIDs = {created.id}});

    const auto delta = undoLastChange(ledger);
    ASSERT_TRUE(delta);
    EXPECT_TRUE(ledger.rules.empty());
    EXPECT_TRUE(ledger.settings->ruleOrder.empty());
    EXPECT_TRUE(ledger.transactions.empty());
    EXPECT_TRUE(ledger.aiFilings.empty());
    EXPECT_TRUE(delta->deleted.at(RecordKind::rule).contains(rule.id.text()));
    EXPECT_TRUE(delta->changed.at(RecordKind::settings).contains("settings"));
    EXPECT_TRUE(delta->deleted.at(RecordKind::transaction).contains(created.id.text()));
}

TEST(ChangeHistoryTest, ChangeSetHoldsEachRecordOnceAsItWas) {
    LedgerBuilder builder;
    const auto account = builder.account("Checking");
    const auto id = builder.transaction(account, "A", -100);
    const auto merchant = builder.merchant("M");
    const Ledger original = builder.ledger();
    Ledger& ledger = builder.ledger();
    ledger.transactions.update(id, [](LedgerTransaction& t) { t.note = "x"; });
    ledger.merchants.update(merchant, [](Merchant& m) { m.name = "N"; });
    const Merchant made{.id = Uuid::random(), .name = "Made"};
    ledger.merchants.set(made.id, made);
    LedgerDelta delta;
    delta.change(RecordKind::transaction, id);
    delta.change(RecordKind::merchant, merchant);
    delta.change(RecordKind::merchant, made.id);

    const auto changeSet = changeSetFor(original, delta, "Label", kNow);
    EXPECT_EQ(changeSet.before, std::vector{*original.transaction(id)});
    EXPECT_EQ(changeSet.merchantsBefore, std::vector{*original.merchant(merchant)});
    EXPECT_EQ(changeSet.createdMerchantIDs, std::vector{made.id});
    EXPECT_EQ(changeSet.label, "Label");
}

}  // namespace
}  // namespace copperwick
