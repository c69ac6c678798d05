// Local AI's summary over the Reports tabs: bullets kept only where their
// figures stand in the facts they cite, or the words of why there are none.

#include "app/reports/reports_page.h"

#include <sstream>

#include <gtest/gtest.h>

#include "app/widgets/qt_text.h"
#include "runtime/intelligence_prompts.h"
#include "runtime/on_device_model.h"
#include "tests/app/local_ai_fixture.h"
#include "tests/support/ledger_builder.h"

namespace copperwick::testing {
namespace {

namespace json = boost::json;

// The facts of a summary's prompt, "F1: …" a line: (id, text).
std::vector<std::pair<std::string, std::string>> factsAsked(const json::object& request) {
    std::vector<std::pair<std::string, std::string>> facts;
    std::istringstream lines(FakeModelServer::said(request, "user"));
    for (std::string line; std::getline(lines, line);) {
        const auto colon = line.find(": ");
        if (line.rfind('F', 0) == 0 && colon != std::string::npos)
            facts.emplace_back(line.substr(0, colon), line.substr(colon + 2));
    }
    return facts;
}

json::object bullet(const std::string& text, const std::string& factID) {
    return {{"text", text}, {"factIDs", json::array{json::string(factID)}}};
}

class ReportsWithLocalAI : public ::testing::Test, protected LocalAIWorkspace {
  protected:
    void open(bool withServer = true) {
        LedgerBuilder builder;
        const Uuid checking = builder.account("Joint Checking");
        const LocalDate month =
            LocalDate::today(*builder.ledger().settings->timeZone(), Instant::now()).firstOfMonth();
        for (const auto& [text, cents] :
             {std::pair{"FRESH MARKET", -12345}, {"CAFE LUNA", -4550}, {"ACME PAYROLL", 250000}}) {
            const Uuid id = builder.transaction(checking, text, cents, month);
            builder.change(id, [&](LedgerTransaction& line) {
                line.kind = cents > 0 ? TransactionKind::income : TransactionKind::expense;
                line.categoryID = builder.category(cents > 0        ? "Salary"
                                                   : text[0] == 'F' ? "Groceries"
                                                                    : "Dining");
                line.review = ReviewState::confirmed;
                line.method = MatchMethod::manual;
            });
        }
        openRuntime({.ledger = builder.ledger()});
        if (withServer)
            useServer();
    }

    app::ReportsPage& page() {
        if (!m_page)
            m_page = &showPage<app::ReportsPage>();
        return *m_page;
    }

    bool written() {
        return waitUntil([&] {
            return !page().narrativeCard()->writingLabel()->isVisible() &&
                   bridge->intelligence().writingNarrative().empty();
        });
    }

    app::ReportsPage* m_page = nullptr;
};

TEST_F(ReportsWithLocalAI, OnlyBulletsWhoseFiguresStandInTheirFactsAreShown) {
    open();
    std::string kept;
    server.onChat([&kept](const json::object& request) {
        const auto facts = factsAsked(request);
        kept = facts.at(0).second;
        return FakeModelServer::structured(
            {{"bullets", json::array{bullet(facts[0].second, facts[0].first),
                                     bullet("Spending rose by $9,999.00.", facts[0].first)}}});
    });
    ASSERT_TRUE(page().narrativeCard()->isVisible());
    ASSERT_TRUE(written());
    EXPECT_EQ(page().narrativeCard()->bulletTexts(), QStringList{app::toQString(kept)});
    EXPECT_TRUE(page().narrativeCard()->checkedLabel()->isVisible());
    EXPECT_FALSE(page().narrativeCard()->failureLabel()->isVisible());
    EXPECT_EQ(server.chats().size(), 1u);

    // Another period is summed up afresh; coming back asks nothing again.
    page().periodBox()->setCurrentIndex(static_cast<int>(PeriodChoice::lastMonth));
    ASSERT_TRUE(written());
    EXPECT_EQ(server.chats().size(), 2u);
    page().periodBox()->setCurrentIndex(static_cast<int>(PeriodChoice::thisMonth));
    ASSERT_TRUE(written());
    EXPECT_EQ(server.chats().size(), 2u);
}

TEST_F(ReportsWithLocalAI, ASummaryThatDoesntHoldSaysSoAndCanBeAskedAgain) {
    open();
    server.onChat([](const json::object& request) {
        return FakeModelServer::structured(
            {{"bullets",
              json::array{bullet("You saved $1,000,000.00.", factsAsked(request).at(0).first)}}});
    });
    ASSERT_TRUE(written());
    app::NarrativeCard* card = page().narrativeCard();
    EXPECT_TRUE(card->bulletTexts().isEmpty());
    EXPECT_EQ(card->failureLabel()->text(),
              app::toQString(IntelligencePrompts::kSummaryDidntMatch));
    ASSERT_TRUE(card->tryAgainButton()->isVisible());
    card->tryAgainButton()->click();
    ASSERT_TRUE(written());
    EXPECT_EQ(server.chats().size(), 2u);
}

TEST_F(ReportsWithLocalAI, WithoutAModelTheReasonStandsAndSwitchedOffNothingDoes) {
    open(/*withServer=*/false);
    ASSERT_TRUE(written());
    EXPECT_EQ(page().narrativeCard()->failureLabel()->text(),
              app::toQString(OnDeviceModelText::kNoAddress));
    runtime->defaults().set(preference_keys::aiEnabled, false);
    bridge->intelligenceSettingsChanged();
    EXPECT_FALSE(page().narrativeCard()->isVisible());
}

}  // namespace
}  // namespace copperwick::testing
