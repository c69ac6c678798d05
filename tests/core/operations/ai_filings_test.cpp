#include "core/operations/ai_filings.h"

#include <gtest/gtest.h>

#include "core/matching/merchant_keys.h"
#include "core/operations/change_history.h"
#include "core/operations/classification.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

constexpr Instant kNow{800'000'000};

class AIFilingsTest : public ::testing::Test {
  protected:
    Ledger& ledger() { return builder.ledger(); }
    const LedgerTransaction& get(const Uuid& id) { return *ledger().transaction(id); }

    AIFilingRequest request(std::string_view text, std::string merchant, std::string_view category,
                            std::vector<Uuid> ids = {}) {
        return AIFilingRequest{.ids = std::move(ids),
                               .key = MerchantKeys::of(text),
                               .merchantName = std::move(merchant),
                               .kind = TransactionKind::expense,
                               .categoryID = builder.category(category),
                               .reason = "A diner."};
    }

    // How each transaction stands: "method/review merchant, category".
    std::string state(const Uuid& id) {
        const LedgerTransaction& t = get(id);
        const Merchant* merchant = ledger().merchant(t.merchantID);
        const LedgerCategory* category = ledger().category(t.categoryID);
        return std::string(rawValue(t.method)) + "/" + std::string(rawValue(t.review)) + " " +
               (merchant ? merchant->name : "-") + ", " + (category ? category->name : "-");
    }

    testing::LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
};

TEST_F(AIFilingsTest, FilesWhatWaitsAndNothingAPersonDecided) {
    const Uuid waiting = builder.transaction(checking, "JOES DINER", -1200);
    const Uuid longer = builder.transaction(checking, "JOES DINER SEATTLE", -800);
    const Uuid suggested = builder.transaction(checking, "JOES DINER", -900);
    builder.change(suggested, [](LedgerTransaction& t) { t.review = ReviewState::suggested; });
    const Uuid mine = builder.transaction(checking, "JOES DINER", -1500);
    builder.change(mine, [&](LedgerTransaction& t) {
        t.kind = TransactionKind::expense;
        t.categoryID = builder.category("Groceries");
        t.method = MatchMethod::manual;
        t.review = ReviewState::confirmed;
    });
    const Uuid voided = builder.transaction(checking, "JOES DINER", -100);
    builder.change(voided, [](LedgerTransaction& t) { t.voided = true; });
    const Uuid other = builder.transaction(checking, "JOESPH PLUMBING", -5000);

    const LedgerDelta delta =
        fileByAI(ledger(), {request("JOES DINER", "Joe's Diner", "Dining", {waiting})}, kNow);

    EXPECT_EQ(state(waiting), "ai/automatic Joe's Diner, Dining");
    EXPECT_EQ(state(longer), "ai/automatic Joe's Diner, Dining") << "a longer text of the key";
    EXPECT_EQ(state(suggested), "ai/automatic Joe's Diner, Dining");
    EXPECT_EQ(state(mine), "manual/confirmed -, Groceries") << "a person's filing stays";
    EXPECT_EQ(state(voided), "none/unresolved -, -");
    EXPECT_EQ(state(other), "none/unresolved -, -");
    EXPECT_EQ(ledger().undoLabel(), "Filed by Local AI (3)");
    const AIFiling* filing = ledger().aiFilings.find("JOES DINER");
    ASSERT_NE(filing, nullptr);
    EXPECT_EQ(filing->date, kNow);
    EXPECT_EQ(filing->reason, "A diner.");
    EXPECT_TRUE(delta.changes(RecordKind::aiFiling));
    EXPECT_TRUE(delta.changes(RecordKind::change));
    EXPECT_EQ(ledger().aiFiledUnchecked().size(), 3u);
}

TEST_F(AIFilingsTest, UndoTakesBackTheWholeRun) {
    const Uuid a = builder.transaction(checking, "JOES DINER", -1200);
    const Uuid b = builder.transaction(checking, "KWIK STOP 22", -800);
    const Ledger before = ledger();
    (void)fileByAI(ledger(),
                   {request("JOES DINER", "Joe's Diner", "Dining"),
                    request("KWIK STOP", "Kwik Stop", "Transportation")},
                   kNow);
    ASSERT_EQ(state(b), "ai/automatic Kwik Stop, Transportation");
    ASSERT_EQ(ledger().merchants.size(), before.merchants.size() + 2);
    ASSERT_TRUE(undoLastChange(ledger()));
    EXPECT_EQ(ledger(), before) << state(a);
}

TEST_F(AIFilingsTest, ARejectedKeyIsNeverFiledAgain) {
    const Uuid first = builder.transaction(checking, "JOES DINER", -1200);
    (void)fileByAI(ledger(), {request("JOES DINER", "Joe's Diner", "Dining")}, kNow);
    // The person files it differently: the model's filing is turned down.
    (void)classify(ledger(),
                   Classification{.ids = {first},
                                  .merchantName = "Joe's Diner",
                                  .kind = TransactionKind::expense,
                                  .categoryID = builder.category("Groceries"),
                                  .remember = false,
                                  .label = "Classify"},
                   kNow);
    ASSERT_EQ(ledger().rejectedAIKeys(), std::set<std::string>{"JOES DINER"});

    const Uuid later = builder.transaction(checking, "JOES DINER", -700);
    const std::size_t steps = ledger().changes.size();
    const LedgerDelta delta =
        fileByAI(ledger(), {request("JOES DINER", "Joe's Diner", "Dining")}, kNow);
    EXPECT_TRUE(delta.isEmpty());
    EXPECT_EQ(ledger().changes.size(), steps) << "no step when nothing was stored";
    EXPECT_EQ(state(later), "none/unresolved -, -");
    EXPECT_TRUE(ledger().aiFilings.find("JOES DINER")->rejected);

    EXPECT_TRUE(fileByAI(ledger(), {{.key = ""}}, kNow).isEmpty()) << "a group without a key";
}

TEST_F(AIFilingsTest, ConfirmingMakesTheFilingThePersonsOwn) {
    const Uuid a = builder.transaction(checking, "JOES DINER", -1200);
    const Uuid b = builder.transaction(checking, "JOES DINER 5", -800);
    const Uuid c = builder.transaction(checking, "KWIK STOP", -500);
    const Uuid handmade = builder.transaction(checking, "CORNER", -300);
    (void)fileByAI(ledger(),
                   {request("JOES DINER", "Joe's Diner", "Dining"),
                    request("KWIK STOP", "Kwik Stop", "Transportation")},
                   kNow);
    const std::size_t steps = ledger().changes.size();

    (void)confirmAIFiled(ledger(), {a, b, handmade, Uuid::random()}, kNow);
    EXPECT_EQ(state(a), "manual/confirmed Joe's Diner, Dining");
    EXPECT_EQ(state(b), "manual/confirmed Joe's Diner, Dining");
    EXPECT_EQ(state(c), "ai/automatic Kwik Stop, Transportation") << "not asked about";
    EXPECT_EQ(state(handmade), "none/unresolved -, -");
    EXPECT_EQ(ledger().changes.size(), steps + 1);
    EXPECT_EQ(ledger().undoLabel(), "Keep Local AI filing");
    EXPECT_FALSE(ledger().aiFilings.find("JOES DINER")->rejected);
    const Merchant* diner = ledger().merchantNamed("Joe's Diner");
    ASSERT_NE(diner, nullptr);
    EXPECT_NE(std::find(diner->keys.begin(), diner->keys.end(), "JOES DINER"), diner->keys.end())
        << "learned, so the next import files it as the person's own";

    const Uuid next = builder.transaction(checking, "JOES DINER", -400);
    (void)rematch(ledger(), std::vector<Uuid>{next});
    EXPECT_EQ(state(next), "learned/automatic Joe's Diner, Dining");
}

// A filing whose category was deleted afterwards was kept by "Looks right"
// as a disagreement with the model, and the filing turned into a rejection.
TEST_F(AIFilingsTest, ConfirmingAfterTheCategoryWentIsNoRejection) {
    const LedgerCategory pets{.id = Uuid::random(), .name = "Dog Care"};
    ledger().categories.push_back(pets);
    const Uuid a = builder.transaction(checking, "HAPPY PAWS", -1200);
    auto filing = request("HAPPY PAWS", "Happy Paws", "Dining");
    filing.categoryID = pets.id;
    (void)fileByAI(ledger(), {filing}, kNow);
    ledger().categories.eraseIf([&](const LedgerCategory& c) { return c.id == pets.id; });
    (void)rematch(ledger(), std::vector<Uuid>{a});
    ASSERT_EQ(state(a), "ai/automatic Happy Paws, -");

    (void)confirmAIFiled(ledger(), {a}, kNow);
    EXPECT_EQ(state(a), "manual/confirmed Happy Paws, -");
    EXPECT_TRUE(ledger().rejectedAIKeys().empty());
}

TEST_F(AIFilingsTest, TidyingRenamesOnlyWhatNobodyNamed) {
    const Uuid raw = builder.merchant("JOES DINER");
    const Uuid locked = builder.merchant("MY PLACE");
    ledger().merchants.update(locked, [](Merchant& m) { m.nameLocked = true; });
    const Uuid taken = builder.merchant("KWIK STOP 22");
    builder.merchant("Kwik Stop");
    const Uuid same = builder.merchant("Already Fine");
    const Ledger before = ledger();

    const LedgerDelta delta = tidyMerchantNames(ledger(),
                                                {{raw, "Joe's Diner"},
                                                 {locked, "My Place"},
                                                 {taken, "kwik stop"},
                                                 {same, "Already Fine"},
                                                 {Uuid::random(), "Nobody"}},
                                                kNow);
    EXPECT_EQ(ledger().merchant(raw)->name, "Joe's Diner");
    EXPECT_EQ(ledger().merchant(locked)->name, "MY PLACE");
    EXPECT_EQ(ledger().merchant(taken)->name, "KWIK STOP 22") << "another merchant's name";
    EXPECT_EQ(ledger().undoLabel(), "Tidy merchant names (1)");
    EXPECT_TRUE(delta.changes(RecordKind::merchant));
    ASSERT_TRUE(undoLastChange(ledger()));
    EXPECT_EQ(ledger(), before);

    EXPECT_TRUE(tidyMerchantNames(ledger(), {{same, "Already Fine"}}, kNow).isEmpty());
    EXPECT_EQ(ledger().changes.size(), before.changes.size()) << "no step when nothing changed";
}

}  // namespace
}  // namespace copperwick
