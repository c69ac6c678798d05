#include "app/review/review_page.h"

#include <algorithm>

#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include "app/widgets/qt_text.h"
#include "core/operations/classification.h"
#include "tests/app/review/review_fixture.h"

namespace copperwick::app {
namespace {

using testing::day;
using testing::ReviewScreenTest;

Suggestion suggestion(std::optional<std::string> merchant, std::optional<Uuid> categoryID,
                      TransactionKind kind, std::string reason = "Looks like it.") {
    return {.merchantName = std::move(merchant),
            .categoryID = categoryID,
            .kind = kind,
            .source = MatchMethod::similar,
            .reason = std::move(reason)};
}

int indexOfCategory(QComboBox* box, std::string_view name) {
    return box->findText(toQString(name));
}

TEST_F(ReviewScreenTest, CountShowsOnlyWhileSomethingWaits) {
    EXPECT_TRUE(page().caughtUpPanel()->isVisible());
    EXPECT_FALSE(page().countLabel()->isVisible());

    addLine("BLUE BOTTLE COFFEE", -450, day(2026, 3, 1));
    addLine("BLUE BOTTLE COFFEE", -520, day(2026, 3, 8));
    addLine("MOBILE DEPOSIT REF 0021", 15000);
    settle();
    EXPECT_FALSE(page().caughtUpPanel()->isVisible());
    ASSERT_TRUE(page().countLabel()->isVisible());
    EXPECT_EQ(page().countLabel()->text(), "3 transactions in 2 groups need you.");

    const auto groups = page().groups();
    for (const auto& group : groups) {
        ReviewGroupCard* card = this->card(group.id);
        ASSERT_NE(card, nullptr);
        ASSERT_NE(card->kindBox(), nullptr);
        card->kindBox()->setCurrentIndex(card->kindBox()->findText("Transfer"));
        ASSERT_TRUE(card->saveButton()->isEnabled()) << group.displayName;
        card->saveButton()->click();
        settle();
    }
    EXPECT_TRUE(page().caughtUpPanel()->isVisible());
    EXPECT_FALSE(page().countLabel()->isVisible());
    EXPECT_EQ(ledger().reviewCount(), 0u);
}

TEST_F(ReviewScreenTest, CaughtUpButtonsChooseTheirSections) {
    const auto buttons = page().caughtUpPanel()->findChildren<QPushButton*>();
    const auto named = [&](const QString& text) {
        const auto found = std::find_if(buttons.begin(), buttons.end(),
                                        [&](QPushButton* b) { return b->text() == text; });
        return found == buttons.end() ? nullptr : *found;
    };
    ASSERT_NE(named("View Reports"), nullptr);
    ASSERT_NE(named("Import Files"), nullptr);
    named("View Reports")->click();
    EXPECT_EQ(runtime().section(), AppSection::reports);
    named("Import Files")->click();
    EXPECT_EQ(runtime().section(), AppSection::importFiles);
}

TEST_F(ReviewScreenTest, TransferSuggestionSavesWithoutCategory) {
    const Uuid id = addLine("ONLINE TRANSFER TO SAVINGS 4411", -50000, day(2026, 3, 2),
                            suggestion(std::nullopt, std::nullopt, TransactionKind::transfer));
    ReviewGroupCard* card = page().cards().front();
    EXPECT_TRUE(card->suggestionBanner()->isVisible());
    EXPECT_EQ(card->kindBox()->currentText(), "Transfer");
    EXPECT_FALSE(card->categoryBox()->isEnabled());
    ASSERT_TRUE(card->saveButton()->isEnabled()) << card->refusalText().toStdString();
    card->saveButton()->click();
    EXPECT_EQ(line(id).kind, TransactionKind::transfer);
    EXPECT_EQ(line(id).review, ReviewState::confirmed);
    EXPECT_FALSE(line(id).categoryID);
}

TEST_F(ReviewScreenTest, SpendingWaitsForACategoryOfItsOwnGroup) {
    const Uuid id = addLine("CORNER HARDWARE 0412", -2599);
    ReviewGroupCard* card = page().cards().front();
    EXPECT_EQ(card->kindBox()->currentText(), "Spending");
    EXPECT_EQ(card->categoryBox()->currentIndex(), -1);
    EXPECT_EQ(card->categoryBox()->placeholderText(), "Choose");
    EXPECT_FALSE(card->saveButton()->isEnabled());
    EXPECT_EQ(card->refusalText(), "Choose a category that matches spending or income.");
    // Spending offers spending's categories only.
    EXPECT_EQ(indexOfCategory(card->categoryBox(), "Salary"), -1);

    card->categoryBox()->setCurrentIndex(indexOfCategory(card->categoryBox(), "Shopping"));
    EXPECT_TRUE(card->saveButton()->isEnabled());
    // Income lets the spending category go, and Save waits again.
    card->kindBox()->setCurrentIndex(card->kindBox()->findText("Income"));
    EXPECT_FALSE(card->saveButton()->isEnabled());
    card->kindBox()->setCurrentIndex(card->kindBox()->findText("Spending"));
    card->categoryBox()->setCurrentIndex(indexOfCategory(card->categoryBox(), "Shopping"));

    // A merchant is needed for spending; blanking it holds Save back.
    QTest::keyClick(card->merchantField(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(card->merchantField(), Qt::Key_Backspace);
    EXPECT_FALSE(card->saveButton()->isEnabled());
    EXPECT_EQ(card->refusalText(), "Enter the merchant's name.");
    QTest::keyClicks(card->merchantField(), "Corner Hardware");
    ASSERT_TRUE(card->saveButton()->isEnabled());
    card->saveButton()->click();
    EXPECT_EQ(line(id).categoryID, categoryNamed("Shopping"));
    EXPECT_EQ(ledger().merchant(line(id).merchantID)->name, "Corner Hardware");
}

TEST_F(ReviewScreenTest, SaveFilesTheWholeGroupAndRemembersForLaterImports) {
    const std::vector<Uuid> ids{addLine("BLUE BOTTLE COFFEE", -450, day(2026, 3, 1)),
                                addLine("BLUE BOTTLE COFFEE", -520, day(2026, 3, 8)),
                                addLine("BLUE BOTTLE COFFEE", -610, day(2026, 3, 15))};
    ReviewGroupCard* card = page().cards().front();
    ASSERT_EQ(card->group().transactionIDs.size(), 3u);
    EXPECT_TRUE(card->rememberBox()->isChecked());
    EXPECT_EQ(card->rememberNote()->text().toStdString(), ReviewGroupCard::kRememberOn);
    card->categoryBox()->setCurrentIndex(indexOfCategory(card->categoryBox(), "Dining"));
    card->saveButton()->click();

    for (const Uuid& id : ids) {
        EXPECT_EQ(line(id).review, ReviewState::confirmed);
        EXPECT_EQ(line(id).categoryID, categoryNamed("Dining"));
    }
    EXPECT_EQ(ledger().undoLabel(), "Review Blue Bottle Coffee");
    const Merchant* merchant = ledger().merchantNamed("Blue Bottle Coffee");
    ASSERT_NE(merchant, nullptr);
    EXPECT_EQ(merchant->keys, std::vector<std::string>{"BLUE BOTTLE COFFEE"});

    const auto imported = importFile(
        "Details,Posting Date,Description,Amount,Type,Balance,Check or Slip #\n"
        "DEBIT,03/22/2026,BLUE BOTTLE COFFEE,-4.75,DEBIT_CARD,1000.00,\n");
    ASSERT_EQ(imported.size(), 1u);
    EXPECT_EQ(line(imported[0]).review, ReviewState::automatic);
    EXPECT_EQ(line(imported[0]).categoryID, categoryNamed("Dining"));
    settle();
    EXPECT_TRUE(page().caughtUpPanel()->isVisible());
}

TEST_F(ReviewScreenTest, ADecisionOnALongHistorySavesBesideTheWindow) {
    const std::vector<Uuid> ids{addLine("BLUE BOTTLE COFFEE", -450, day(2026, 3, 1)),
                                addLine("BLUE BOTTLE COFFEE", -520, day(2026, 3, 8))};
    ReviewGroupCard* card = page().cards().front();
    card->setSaveInBackgroundFrom(0);
    card->categoryBox()->setCurrentIndex(indexOfCategory(card->categoryBox(), "Dining"));
    card->saveButton()->click();
    // The card waits for its save; the ledger shown is the one on disk.
    EXPECT_FALSE(card->isEnabled());
    EXPECT_NE(line(ids[0]).review, ReviewState::confirmed);

    runtime().mainQueue()->runUntil([&] { return !runtime().isChangingInBackground(); });
    settle();
    for (const Uuid& id : ids) {
        EXPECT_EQ(line(id).review, ReviewState::confirmed);
        EXPECT_EQ(line(id).categoryID, categoryNamed("Dining"));
    }
    EXPECT_EQ(ledger().undoLabel(), "Review Blue Bottle Coffee");
    EXPECT_TRUE(page().caughtUpPanel()->isVisible());
}

TEST_F(ReviewScreenTest, WithRememberOffOnlyTheseTransactionsChange) {
    const Uuid waiting = addLine("BLUE BOTTLE COFFEE", -450);
    ReviewGroupCard* card = page().cards().front();
    card->rememberBox()->click();
    EXPECT_EQ(card->rememberNote()->text(), "Only these transactions change.");
    card->categoryBox()->setCurrentIndex(indexOfCategory(card->categoryBox(), "Dining"));
    card->saveButton()->click();
    EXPECT_EQ(line(waiting).categoryID, categoryNamed("Dining"));
    EXPECT_TRUE(ledger().merchantNamed("Blue Bottle Coffee")->keys.empty());

    const auto imported = importFile(
        "Details,Posting Date,Description,Amount,Type,Balance,Check or Slip #\n"
        "DEBIT,03/22/2026,BLUE BOTTLE COFFEE,-4.75,DEBIT_CARD,1000.00,\n");
    ASSERT_EQ(imported.size(), 1u);
    EXPECT_TRUE(line(imported[0]).needsReview());
}

TEST_F(ReviewScreenTest, PaymentToAPersonAsksWhatItWasFor) {
    const Uuid gift = addLine("Zelle payment to Jamie Doe", -2000);
    ReviewGroupCard* card = page().cards().front();
    ASSERT_TRUE(card->asksPurpose());
    EXPECT_EQ(card->merchantField(), nullptr);
    ASSERT_TRUE(card->purposeEditor()->isVisible());
    EXPECT_FALSE(card->saveButton()->isEnabled());
    EXPECT_EQ(card->refusalText(), "Choose what this was for.");
    // Money out is asked about with money out's answers only.
    EXPECT_NE(card->purposeButton(ZelleChoice::giftSent), nullptr);
    EXPECT_EQ(card->purposeButton(ZelleChoice::giftReceived), nullptr);

    // Bought something needs a spending category.
    card->purposeButton(ZelleChoice::spending)->click();
    EXPECT_TRUE(card->categoryBox()->isVisible());
    EXPECT_FALSE(card->saveButton()->isEnabled());
    card->categoryBox()->setCurrentIndex(indexOfCategory(card->categoryBox(), "Dining"));
    EXPECT_TRUE(card->saveButton()->isEnabled());

    // A gift brings its own category.
    card->purposeButton(ZelleChoice::giftSent)->click();
    EXPECT_FALSE(card->categoryBox()->isVisible());
    ASSERT_TRUE(card->saveButton()->isEnabled());
    card->saveButton()->click();
    EXPECT_EQ(line(gift).kind, TransactionKind::expense);
    const LedgerCategory* category = ledger().category(line(gift).categoryID);
    ASSERT_NE(category, nullptr);
    EXPECT_EQ(category->name, "Gifts & Donations");
}

TEST_F(ReviewScreenTest, PayPalGoesThroughTheStandardEditor) {
    addLine("PAYPAL *DEMO NEIGHBORHOOD CLUB", -6000);
    ReviewGroupCard* card = page().cards().front();
    EXPECT_FALSE(card->asksPurpose());
    EXPECT_NE(card->merchantField(), nullptr);
}

TEST_F(ReviewScreenTest, ApproveFilesBySuggestion) {
    const Uuid dining = categoryNamed("Dining");
    const Uuid id = addLine("SQ *DEMO COFFEE RSTRS", -640, day(2026, 3, 2),
                            suggestion("Demo Coffee Roasters", dining, TransactionKind::expense,
                                       "Looks like Demo Coffee Roasters (86% similar)."));
    ReviewGroupCard* card = page().cards().front();
    ASSERT_TRUE(card->suggestionBanner()->isVisible());
    const auto texts = [&] {
        QStringList all;
        for (const QLabel* label : card->suggestionBanner()->findChildren<QLabel*>())
            all << label->text();
        return all;
    }();
    EXPECT_TRUE(texts.contains("Suggested"));
    EXPECT_TRUE(texts.contains("Demo Coffee Roasters, Dining, Spending"));
    EXPECT_TRUE(texts.contains("Looks like Demo Coffee Roasters (86% similar)."));

    card->approveButton()->click();
    EXPECT_EQ(line(id).review, ReviewState::confirmed);
    EXPECT_EQ(line(id).categoryID, dining);
    EXPECT_EQ(ledger().merchant(line(id).merchantID)->name, "Demo Coffee Roasters");
    EXPECT_EQ(ledger().undoLabel(), "Approve suggestion");
}

TEST_F(ReviewScreenTest, ShowTransactionsFocusesTheGroup) {
    const Uuid first = addLine("CORNER HARDWARE 0412", -2599, day(2026, 3, 1));
    const Uuid second = addLine("CORNER HARDWARE 0412", -1200, day(2026, 3, 9));
    page().cards().front()->showTransactionsButton()->click();
    EXPECT_EQ(runtime().section(), AppSection::transactions);
    ASSERT_TRUE(runtime().transactionsFocus());
    EXPECT_EQ(runtime().transactionsFocus()->title, "Corner Hardware");
    EXPECT_EQ(runtime().transactionsFocus()->ids, (std::set<Uuid>{first, second}));
}

TEST_F(ReviewScreenTest, RemoveVoidsAStalePendingLine) {
    LedgerTransaction pending{.id = Uuid::random(),
                              .accountID = checking,
                              .date = runtime().today().addingDays(-20),
                              .amount = -20000,
                              .rawDescription = "MARRIOTT HOTELS AUTH",
                              .status = TransactionStatus::pending};
    pending.review = ReviewState::automatic;
    ASSERT_TRUE(runtime()
                    .apply([&](Ledger& copy) {
                        copy.transactions.set(pending.id, pending);
                        LedgerDelta delta;
                        delta.change(RecordKind::transaction, pending.id);
                        return delta;
                    })
                    .saved);
    StalePendingSection* section = page().stalePendingSection();
    ASSERT_TRUE(section->isVisible());
    QPushButton* remove = section->removeButton(pending.id);
    ASSERT_NE(remove, nullptr);
    remove->click();
    settle();
    EXPECT_TRUE(line(pending.id).voided);
    EXPECT_EQ(ledger().undoLabel(), "Remove pending charge");
    EXPECT_FALSE(section->isVisible());
}

TEST_F(ReviewScreenTest, DecidingOneGroupKeepsWhatIsChosenOnTheOthers) {
    addLine("CORNER HARDWARE 0412", -2599, day(2026, 3, 1));
    addLine("CORNER HARDWARE 0412", -1200, day(2026, 3, 9));
    addLine("NEIGHBORHOOD BAKERY", -850);
    ReviewGroupCard* hardware = card("out|CORNER HARDWARE");
    ReviewGroupCard* bakery = card("out|NEIGHBORHOOD BAKERY");
    ASSERT_NE(hardware, nullptr);
    ASSERT_NE(bakery, nullptr);
    bakery->categoryBox()->setCurrentIndex(indexOfCategory(bakery->categoryBox(), "Groceries"));
    bakery->rememberBox()->click();

    hardware->categoryBox()->setCurrentIndex(indexOfCategory(hardware->categoryBox(), "Shopping"));
    hardware->saveButton()->click();
    settle();
    EXPECT_EQ(card("out|CORNER HARDWARE"), nullptr);
    ASSERT_EQ(card("out|NEIGHBORHOOD BAKERY"), bakery);
    EXPECT_EQ(bakery->categoryBox()->currentText(), "Groceries");
    EXPECT_FALSE(bakery->rememberBox()->isChecked());
    EXPECT_EQ(page().cards().size(), 1u);
}

TEST_F(ReviewScreenTest, CardsAreMadeABatchAtATime) {
    const auto total = ReviewPage::kCardsAtOnce + 12;
    const std::vector<std::string> places{"ALPINE", "BIRCH",  "CEDAR", "DELTA",
                                          "EMBER",  "FALCON", "GARNET"};
    const std::vector<std::string> trades{"BAKERY", "CINEMA",  "DINER",
                                          "GARAGE", "LAUNDRY", "TAILOR"};
    ASSERT_EQ(places.size() * trades.size(), total);
    runtime().apply([&](Ledger& copy) {
        LedgerDelta delta;
        for (std::size_t i = 0; i < total; ++i) {
            LedgerTransaction line{
                .id = Uuid::random(),
                .accountID = checking,
                .date = day(2026, 3, 2),
                .amount = -100 - static_cast<int64_t>(i),
                .rawDescription = places[i / trades.size()] + " " + trades[i % trades.size()]};
            copy.transactions.set(line.id, line);
            delta.change(RecordKind::transaction, line.id);
        }
        return delta;
    });
    EXPECT_EQ(page().groups().size(), total);
    EXPECT_EQ(page().cards().size(), ReviewPage::kCardsAtOnce);
    ASSERT_TRUE(page().showMoreButton()->isVisible());
    page().showMoreButton()->click();
    EXPECT_EQ(page().cards().size(), total);
    EXPECT_FALSE(page().showMoreButton()->isVisible());
}

TEST_F(ReviewScreenTest, KeyboardTabsToTheCategoryChoosesWithArrowsAndSavesWithEnter) {
    const Uuid id = addLine("CORNER HARDWARE 0412", -2599);
    addLine("NEIGHBORHOOD BAKERY", -850);
    ReviewGroupCard* card = this->card("out|CORNER HARDWARE");
    page().activateWindow();
    card->merchantField()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), card->categoryBox());
    QTest::keyClick(card->categoryBox(), Qt::Key_Down);
    QTest::keyClick(card->categoryBox(), Qt::Key_Down);
    const QString chosen = card->categoryBox()->currentText();
    ASSERT_FALSE(chosen.isEmpty());
    QTest::keyClick(card->categoryBox(), Qt::Key_Return);
    EXPECT_EQ(line(id).review, ReviewState::confirmed);
    EXPECT_EQ(ledger().category(line(id).categoryID)->name, chosen.toStdString());

    // The keyboard goes on to the next group rather than getting lost.
    settle();
    ReviewGroupCard* next = this->card("out|NEIGHBORHOOD BAKERY");
    ASSERT_NE(next, nullptr);
    EXPECT_EQ(QApplication::focusWidget(), next->merchantField());
}

// A decided group stayed on screen until the background reading of a large
// ledger came back, and a second press of Save filed it twice.
TEST_F(ReviewScreenTest, ALargeLedgerIsReadInTheBackgroundAndADecidedGroupGoesAtOnce) {
    addLine("CORNER HARDWARE 0412", -2599);
    addLine("NEIGHBORHOOD BAKERY", -850);
    page().setReadInBackgroundFrom(0);
    page().refresh();
    ASSERT_TRUE(page().isReading());
    runtime().mainQueue()->runUntil([&] { return !page().isReading(); });
    ASSERT_EQ(page().cards().size(), 2u);

    ReviewGroupCard* bakery = card("out|NEIGHBORHOOD BAKERY");
    bakery->categoryBox()->setCurrentIndex(indexOfCategory(bakery->categoryBox(), "Groceries"));
    bakery->saveButton()->click();
    EXPECT_TRUE(page().isReading());
    EXPECT_EQ(card("out|NEIGHBORHOOD BAKERY"), nullptr);
    EXPECT_EQ(page().countLabel()->text(), "1 transaction in 1 group needs you.");
    runtime().mainQueue()->runUntil([&] { return !page().isReading(); });
    settle();
    EXPECT_EQ(page().cards().size(), 1u);
    EXPECT_EQ(ledger().changes.size(), 1u);
}

TEST_F(ReviewScreenTest, ReviewRuleOpensTheEditorOnTheSuggestedRule) {
    const Uuid shopping = categoryNamed("Shopping");
    for (const auto& text : {"ACME HARDWARE 1234", "ACME HARDWARE 5678"}) {
        const Uuid id = addLine(text, -1500);
        runtime().apply([&](Ledger& copy) {
            Classification decision{.ids = {id},
                                    .merchantName = std::nullopt,
                                    .kind = TransactionKind::expense,
                                    .categoryID = shopping,
                                    .remember = false,
                                    .label = "Classify"};
            return classify(copy, decision, runtime().now());
        });
    }
    RuleSuggestionsSection* rules = page().ruleSuggestionsSection();
    ASSERT_TRUE(rules->isVisible());
    ASSERT_EQ(rules->suggestions().size(), 1u);
    EXPECT_EQ(rules->rowTexts(0),
              (QStringList{"Text contains \u201CACME HARDWARE\u201D \u2192 Shopping, Spending",
                           "Based on 2 corrections \u00B7 would match 2 transactions"}));
    rules->reviewButton(0)->click();
    ASSERT_TRUE(page().ruleDraft());
    RuleEditorSheet* editor = page().ruleEditor();
    ASSERT_NE(editor, nullptr);
    EXPECT_FALSE(editor->isEditing());
    EXPECT_EQ(editor->patternField()->text(), "ACME HARDWARE");
    EXPECT_EQ(editor->categoryField()->currentText(), "Shopping");
    ASSERT_TRUE(editor->canSave());
    editor->saveButton()->click();
    settle();
    ASSERT_EQ(ledger().rules.size(), 1u);
    EXPECT_EQ(ledger().rules.front().pattern, "ACME HARDWARE");
    EXPECT_FALSE(page().ruleDraft());
    EXPECT_FALSE(rules->isVisible()) << "a rule with that pattern is no longer suggested";
}

}  // namespace
}  // namespace copperwick::app
