// The Ask screen as a person meets it: sample questions, the field, answer
// cards with their lookups, and what it says when Local AI can't be asked.

#include "app/ask/ask_page.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QTest>

#include "app/widgets/qt_text.h"
#include "runtime/intelligence_prompts.h"
#include "runtime/on_device_model.h"
#include "tests/app/local_ai_fixture.h"
#include "tests/app/screen_audit.h"
#include "tests/support/ledger_builder.h"

namespace copperwick::testing {
namespace {

namespace json = boost::json;

class AskScreen : public ::testing::Test, protected LocalAIWorkspace {
  protected:
    void open(bool withServer = true) {
        LedgerBuilder builder;
        for (const char* name : {"Robin", "Sam"})
            builder.ledger().people.push_back(Person{.id = Uuid::random(), .name = name});
        openRuntime({.ledger = builder.ledger()});
        if (withServer)
            useServer();
        page = &showPage<app::AskPage>();
        ASSERT_TRUE(waitUntil([&] { return bridge->modelStatus().known; }));
    }

    // The model looks up spending once, then answers with the lookup's own words.
    void answerFromTheLookup() {
        server.onChat([](const json::object& request) {
            const auto& last = lastMessage(request);
            if (last.at("role").as_string() == "user")
                return FakeModelServer::toolCall("spendingSummary",
                                                 {{"start", "2026-01"}, {"end", "2026-01"}});
            return FakeModelServer::text("Here is what I found. " +
                                         std::string(last.at("content").as_string()));
        });
    }

    app::AskPage* page = nullptr;
};

TEST_F(AskScreen, ASampleQuestionBecomesACardWithTheLookupsBehindIt) {
    open();
    answerFromTheLookup();
    const auto samples = page->sampleButtons();
    ASSERT_EQ(samples.size(), 5u);
    EXPECT_EQ(samples[4]->text(), "How much did Sam spend at Amazon this year?");
    EXPECT_TRUE(page->samples()->isVisible());

    samples[2]->click();
    EXPECT_TRUE(page->lookingUp()->isVisible()) << "the question shows while it is looked up";
    EXPECT_FALSE(page->samples()->isVisible());
    EXPECT_FALSE(page->askButton()->isEnabled()) << "one question at a time";
    ASSERT_TRUE(waitUntil([&] { return page->cards().size() == 1; }));
    EXPECT_FALSE(page->lookingUp()->isVisible());

    app::AnswerCard* card = page->cards().front();
    EXPECT_EQ(card->questionLabel()->text(), "What subscriptions do I have?");
    EXPECT_TRUE(card->textLabel()->text().startsWith("Here is what I found."));
    EXPECT_EQ(card->warning(), nullptr) << "every figure in it came from the lookup";
    ASSERT_NE(card->lookupsToggle(), nullptr);
    EXPECT_EQ(card->lookupsToggle()->text(), "How Copperwick worked this out (1 lookup)");
    EXPECT_FALSE(card->lookupsList()->isVisible());
    card->lookupsToggle()->setFocus();
    QTest::keyClick(card->lookupsToggle(), Qt::Key_Return);
    EXPECT_TRUE(card->lookupsList()->isVisible()) << "the fold opens by keyboard";
    EXPECT_TRUE(page->clearButton()->isVisible());
}

TEST_F(AskScreen, EveryControlIsNamedByItsWordsAndTabReadsTheScreenInOrder) {
    open();
    answerFromTheLookup();
    page->sampleButtons().front()->click();
    ASSERT_TRUE(waitUntil([&] { return page->cards().size() == 1; }));
    page->cards().front()->lookupsToggle()->click();
    QApplication::processEvents();
    EXPECT_EQ(misnamedControls(page).join(QLatin1Char('\n')), QString());
    const auto walk = tabWalk(page);
    EXPECT_EQ(unreached(walk, page).join(QLatin1Char('\n')), QString());
    EXPECT_EQ(outOfReadingOrder(walk, page).join(QLatin1Char('\n')), QString());
}

TEST_F(AskScreen, TypedQuestionsAreTrimmedAndAnAnswerWhoseFiguresDontHoldIsWarned) {
    open();
    server.onChat([](const json::object&) { return FakeModelServer::text("You spent $40.00."); });
    page->questionField()->setFocus();
    QTest::keyClicks(page->questionField(), QStringLiteral("   "));
    QTest::keyClick(page->questionField(), Qt::Key_Return);
    EXPECT_FALSE(page->lookingUp()->isVisible()) << "a question of spaces asks nothing";

    page->questionField()->clear();
    QTest::keyClicks(page->questionField(), QStringLiteral("  How much on coffee?  "));
    QTest::keyClick(page->questionField(), Qt::Key_Return);
    EXPECT_EQ(page->questionField()->text(), "");
    ASSERT_TRUE(waitUntil([&] { return page->cards().size() == 1; }));
    app::AnswerCard* card = page->cards().front();
    EXPECT_EQ(card->questionLabel()->text(), "How much on coffee?");
    ASSERT_NE(card->warning(), nullptr);
    EXPECT_TRUE(card->warning()->isVisible());
    EXPECT_EQ(card->lookupsToggle()->text(), "How Copperwick worked this out (0 lookups)");

    page->clearButton()->click();
    EXPECT_TRUE(waitUntil([&] { return page->cards().empty(); }));
    EXPECT_TRUE(page->samples()->isVisible()) << "an empty list offers the samples again";
}

TEST_F(AskScreen, WithoutAModelServerItSaysWhyAndOffersNothingToAsk) {
    open(/*withServer=*/false);
    EXPECT_TRUE(page->notice()->isVisible());
    EXPECT_EQ(page->noticeLabel()->text(), app::toQString(OnDeviceModelText::kNoAddress));
    EXPECT_FALSE(page->questionField()->isVisible());
    EXPECT_FALSE(page->samples()->isVisible());

    // A server started meanwhile is found by Check Again.
    useServer();
    QPushButton* again = nullptr;
    for (QPushButton* button : page->notice()->findChildren<QPushButton*>())
        if (button->text() == "Check Again")
            again = button;
    ASSERT_NE(again, nullptr);
    again->click();
    ASSERT_TRUE(waitUntil([&] { return !page->notice()->isVisible(); }));
    EXPECT_TRUE(page->questionField()->isVisible());
}

TEST_F(AskScreen, SwitchedOffItSaysSoAndHidesTheAnswers) {
    open();
    server.onChat([](const json::object&) { return FakeModelServer::text("Nothing stands out."); });
    page->sampleButtons().front()->click();
    ASSERT_TRUE(waitUntil([&] { return page->cards().size() == 1; }));
    runtime->defaults().set(preference_keys::aiEnabled, false);
    bridge->intelligenceSettingsChanged();
    EXPECT_EQ(page->noticeLabel()->text(), app::toQString(IntelligencePrompts::kTurnedOff));
    EXPECT_FALSE(page->cards().front()->isVisible());
    EXPECT_FALSE(page->questionField()->isVisible());
}

}  // namespace
}  // namespace copperwick::testing
