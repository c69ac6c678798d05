// Local AI on the Review screen: its bar over the groups, a group asked
// about alone, and what it filed by itself waiting for the person's look.

#include "app/review/review_page.h"

#include <gtest/gtest.h>

#include <QApplication>

#include "app/widgets/qt_text.h"
#include "core/review/review_queue.h"
#include "runtime/intelligence_prompts.h"
#include "runtime/on_device_model.h"
#include "tests/app/local_ai_fixture.h"
#include "tests/app/screen_audit.h"
#include "tests/support/ledger_builder.h"

namespace copperwick::testing {
namespace {

namespace json = boost::json;

class ReviewWithLocalAI : public ::testing::Test, protected LocalAIWorkspace {
  protected:
    void open(bool withServer = true) {
        LedgerBuilder builder;
        const Uuid card = builder.account("Visa", AccountType::creditCard);
        diner = {builder.transaction(card, "SQ *JOES DINER 4411", -2350, day(2026, 3, 2)),
                 builder.transaction(card, "SQ *JOES DINER 4411", -1875, day(2026, 3, 9))};
        openRuntime({.ledger = builder.ledger()});
        if (withServer)
            useServer();
        // Every bank text is Joe's Diner, as far as this model knows.
        server.onChat([](const json::object&) {
            return FakeModelServer::structured({{"merchant", "Joe's Diner"},
                                                {"category", "Dining"},
                                                {"kind", "expense"},
                                                {"reason", "A diner paid through Square."}});
        });
        page = &showPage<app::ReviewPage>();
        ASSERT_TRUE(waitUntil([&] { return bridge->modelStatus().known; }));
        settle();
    }

    static void settle() {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QApplication::processEvents();
    }

    bool runEnded() {
        const bool ended = waitUntil([&] { return !bridge->intelligence().isSuggesting(); });
        settle();
        return ended;
    }

    const LedgerTransaction& line(const Uuid& id) { return *runtime->ledger().transaction(id); }

    std::vector<Uuid> diner;
    app::ReviewPage* page = nullptr;
};

TEST_F(ReviewWithLocalAI, WhatItFilesWaitsUnderItsHeadingUntilLooksRightKeepsIt) {
    open();
    app::IntelligenceBar* bar = page->intelligenceBar();
    ASSERT_TRUE(bar->isVisible());
    EXPECT_EQ(bar->textLabel()->text(), app::toQString(app::IntelligenceBar::kFileText));
    ASSERT_TRUE(bar->startButton()->isVisible());
    EXPECT_EQ(bar->startButton()->text(), "File with Local AI");

    bar->startButton()->click();
    ASSERT_TRUE(runEnded());
    for (const Uuid& id : diner) {
        EXPECT_EQ(line(id).method, MatchMethod::ai);
        EXPECT_EQ(line(id).review, ReviewState::automatic);
    }
    EXPECT_EQ(runtime->statusMessage(),
              "Local AI filed 2 transactions. They're marked so you can check them in Review, and "
              "Undo reverses the whole run.");

    app::AIFiledSection* filed = page->aiFiledSection();
    ASSERT_TRUE(filed->isVisible());
    ASSERT_EQ(filed->groups().size(), 1u);
    EXPECT_EQ(filed->titleLabel()->text(), "Filed by Local AI");
    EXPECT_EQ(misnamedControls(page).join(QLatin1Char('\n')), QString());
    const auto walk = tabWalk(page);
    EXPECT_EQ(unreached(walk, page).join(QLatin1Char('\n')), QString());
    EXPECT_EQ(outOfReadingOrder(walk, page).join(QLatin1Char('\n')), QString());
    QPushButton* looksRight = filed->looksRightButton(filed->groups()[0].id);
    ASSERT_NE(looksRight, nullptr);
    looksRight->click();
    settle();
    for (const Uuid& id : diner)
        EXPECT_EQ(line(id).review, ReviewState::confirmed);
    EXPECT_FALSE(filed->isVisible()) << "nothing is left to check";
    EXPECT_EQ(runtime->ledger().undoLabel(), "Keep Local AI filing");
}

TEST_F(ReviewWithLocalAI, ChangingWhatItFiledTellsItNeverToFileThatTextAgain) {
    open();
    page->intelligenceBar()->startButton()->click();
    ASSERT_TRUE(runEnded());
    app::AIFiledSection* filed = page->aiFiledSection();
    ASSERT_EQ(filed->groups().size(), 1u);
    const ReviewGroup group = filed->groups()[0];
    filed->changeButton(group.id)->click();
    settle();
    app::ReviewGroupCard* card = filed->editor();
    ASSERT_NE(card, nullptr);
    card->merchantField()->setText(QStringLiteral("Joe's Place"));
    Q_EMIT card->merchantField()->textEdited(card->merchantField()->text());
    card->categoryBox()->setCurrentIndex(card->categoryBox()->findText("Groceries"));
    ASSERT_TRUE(card->saveButton()->isEnabled()) << card->refusalText().toStdString();
    card->saveButton()->click();
    settle();
    for (const Uuid& id : diner)
        EXPECT_EQ(line(id).review, ReviewState::confirmed);
    EXPECT_TRUE(runtime->ledger().rejectedAIKeys().contains(group.key));
    EXPECT_FALSE(filed->isVisible());
}

TEST_F(ReviewWithLocalAI, AGroupAskedAboutAloneGetsASuggestionToApprove) {
    open();
    app::ReviewGroupCard* card = page->cards().front();
    QPushButton* ask = card->askLocalAIButton();
    ASSERT_TRUE(ask->isVisible());
    EXPECT_EQ(ask->text(), "Ask Local AI about this group");
    ask->click();
    ASSERT_TRUE(runEnded());
    // Asked about by hand, the group is only suggested for, never filed.
    EXPECT_EQ(line(diner[0]).review, ReviewState::suggested);
    card = page->cards().front();
    ASSERT_TRUE(card->suggestionBanner()->isVisible());
    EXPECT_EQ(card->suggestionTitle()->text(), "Local AI suggests");
    card->approveButton()->click();
    settle();
    EXPECT_EQ(line(diner[0]).review, ReviewState::confirmed);
    EXPECT_EQ(runtime->ledger().merchant(line(diner[0]).merchantID)->name, "Joe's Diner");
}

TEST_F(ReviewWithLocalAI, AGroupLocalAICantPlaceSaysSoOnItsCard) {
    open();
    server.onChat([](const json::object&) {
        return FakeModelServer::structured(
            {{"merchant", "unknown"}, {"category", ""}, {"kind", "unknown"}, {"reason", ""}});
    });
    app::ReviewGroupCard* card = page->cards().front();
    card->askLocalAIButton()->click();
    ASSERT_TRUE(runEnded());
    ASSERT_TRUE(card->askNote()->isVisible());
    EXPECT_EQ(card->askNote()->text(), "Local AI had no suggestion for this group.");
    // Other news of Local AI leaves the card's answer standing.
    bridge->intelligenceSettingsChanged();
    EXPECT_TRUE(card->askNote()->isVisible());
    EXPECT_EQ(line(diner[0]).review, ReviewState::unresolved);
}

TEST_F(ReviewWithLocalAI, OffOrWithoutAModelItOffersNoButton) {
    open(/*withServer=*/false);
    app::IntelligenceBar* bar = page->intelligenceBar();
    EXPECT_FALSE(bar->startButton()->isVisible());
    EXPECT_EQ(bar->reasonLabel()->text(), app::toQString(OnDeviceModelText::kNoAddress));
    EXPECT_TRUE(page->cards().front()->askLocalAIButton()->isVisible());

    runtime->defaults().set(preference_keys::aiEnabled, false);
    bridge->intelligenceSettingsChanged();
    EXPECT_EQ(bar->textLabel()->text(), app::toQString(IntelligencePrompts::kTurnedOff));
    EXPECT_FALSE(bar->startButton()->isVisible());
    EXPECT_FALSE(page->cards().front()->askLocalAIButton()->isVisible());
}

}  // namespace
}  // namespace copperwick::testing
