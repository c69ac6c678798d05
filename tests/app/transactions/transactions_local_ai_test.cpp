// Local AI in a transaction's details: "What is this charge?" and, for a
// line it filed by itself, "Looks Right".

#include "app/transactions/transactions_page.h"

#include <gtest/gtest.h>

#include <QApplication>

#include "app/widgets/qt_text.h"
#include "core/matching/merchant_keys.h"
#include "core/operations/ai_filings.h"
#include "runtime/intelligence_prompts.h"
#include "tests/app/local_ai_fixture.h"
#include "tests/support/ledger_builder.h"

namespace copperwick::testing {
namespace {

namespace json = boost::json;

class TransactionDetailsWithLocalAI : public ::testing::Test, protected LocalAIWorkspace {
  protected:
    TransactionDetailsWithLocalAI() {
        LedgerBuilder builder;
        const Uuid card = builder.account("Visa", AccountType::creditCard);
        // Dated today, so that the table's first period shows it.
        charge = builder.transaction(
            card, "SQ *JOES DINER 4411", -2350,
            LocalDate::today(*builder.ledger().settings->timeZone(), Instant::now()));
        openRuntime({.ledger = builder.ledger()});
        useServer();
        explainWith("A diner that takes cards through Square. Check your receipt if unsure.",
                    "high");
        page = &showPage<app::TransactionsPage>();
        EXPECT_TRUE(waitUntil([&] { return !page->model()->isReading(); }));
        page->selectLines({charge});
        settle();
    }

    void explainWith(std::string text, std::string confidence) {
        server.onChat([text, confidence](const json::object&) {
            return FakeModelServer::structured({{"explanation", text}, {"confidence", confidence}});
        });
    }

    app::ChargeQuestion* question() { return page->inspector()->chargeQuestion(); }

    static void settle() {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QApplication::processEvents();
    }

    bool answered() {
        return waitUntil([&] { return bridge->intelligence().explaining().empty(); });
    }

    Uuid charge;
    app::TransactionsPage* page = nullptr;
};

TEST_F(TransactionDetailsWithLocalAI, WhatIsThisChargeAnswersAndSaysHowFarToTrustIt) {
    ASSERT_NE(question(), nullptr);
    QPushButton* ask = question()->askButton();
    EXPECT_EQ(ask->text(), "Ask Local AI");
    ask->click();
    EXPECT_TRUE(question()->shownText().contains("Local AI is looking at this charge"));
    EXPECT_FALSE(ask->isEnabled());
    ASSERT_TRUE(answered());
    QString shown = question()->shownText();
    EXPECT_TRUE(shown.contains("A diner that takes cards through Square.")) << shown.toStdString();
    EXPECT_TRUE(shown.contains(app::toQString(app::ChargeQuestion::kAnsweredHere)));
    EXPECT_FALSE(shown.contains(app::toQString(app::ChargeQuestion::kNotOnThisCharge)));
    EXPECT_FALSE(shown.contains(app::toQString(IntelligencePrompts::kNotSure)));
    EXPECT_EQ(ask->text(), "Ask Again");

    // An amount that isn't on the charge: care, and not sure, however sure it says it is.
    explainWith("Probably a $99.00 yearly plan.", "high");
    ask->click();
    ASSERT_TRUE(answered());
    shown = question()->shownText();
    EXPECT_TRUE(shown.contains(app::toQString(app::ChargeQuestion::kNotOnThisCharge)));
    EXPECT_TRUE(shown.contains(app::toQString(IntelligencePrompts::kNotSure)));
}

TEST_F(TransactionDetailsWithLocalAI, SwitchedOffTheQuestionSaysSo) {
    runtime->defaults().set(preference_keys::aiEnabled, false);
    bridge->intelligenceSettingsChanged();
    EXPECT_TRUE(question()->shownText().contains(app::toQString(IntelligencePrompts::kTurnedOff)));
    EXPECT_FALSE(question()->askButton()->isVisible());
}

TEST_F(TransactionDetailsWithLocalAI, LooksRightKeepsALineLocalAIFiled) {
    EXPECT_EQ(page->inspector()->looksRightButton(), nullptr) << "nobody filed it yet";
    const Instant now = runtime->now();
    ASSERT_TRUE(runtime
                    ->apply([&](Ledger& ledger) {
                        return fileByAI(ledger,
                                        {{.ids = {charge},
                                          .key = MerchantKeys::of("SQ *JOES DINER 4411"),
                                          .merchantName = "Joe's Diner",
                                          .kind = TransactionKind::expense,
                                          .categoryID = ledger.categoryNamed("Dining")->id,
                                          .reason = "A diner."}},
                                        now);
                    })
                    .saved);
    settle();
    ASSERT_EQ(runtime->ledger().transaction(charge)->method, MatchMethod::ai);
    QPushButton* looksRight = page->inspector()->looksRightButton();
    ASSERT_NE(looksRight, nullptr);
    EXPECT_TRUE(page->inspector()->shownText().contains(
        "Keeps this filing and teaches Copperwick. To change it, edit above."));
    looksRight->click();
    settle();
    EXPECT_EQ(runtime->ledger().transaction(charge)->review, ReviewState::confirmed);
    EXPECT_EQ(page->inspector()->looksRightButton(), nullptr);
}

}  // namespace
}  // namespace copperwick::testing
