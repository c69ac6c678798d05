#include "app/rules/rule_editor_sheet.h"

#include <algorithm>

#include "core/operations/rules.h"

#include "tests/app/rules/rules_fixture.h"

namespace copperwick::testing {
namespace {

using app::RuleEditorSheet;

class RuleEditorTest : public RulesScreenTest {
  protected:
    void SetUp() override {
        acme = {builder.transaction(checking, "ACME HARDWARE 1234", -2500),
                builder.transaction(checking, "ACME HARDWARE 5678", -4100)};
        other = builder.transaction(checking, "CORNER BAKERY", -800);
        open();
    }

    std::unique_ptr<RuleEditorSheet> editor(std::optional<Rule> draft = std::nullopt) {
        auto sheet = std::make_unique<RuleEditorSheet>(*bridge, std::move(draft), page);
        sheet->show();
        sheet->activateWindow();
        (void)QTest::qWaitForWindowActive(sheet.get());
        return sheet;
    }

    static void chooseCategory(RuleEditorSheet& sheet, std::string_view name) {
        QComboBox* box = sheet.categoryField();
        box->setCurrentIndex(
            box->findText(QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size()))));
    }

    static void chooseOutcome(RuleEditorSheet& sheet, TransactionKind kind) {
        sheet.outcomeField()->setCurrentIndex(
            sheet.outcomeField()->findData(static_cast<int>(kind)));
    }

    static bool previewSettled(const RuleEditorSheet& sheet) { return !sheet.isPreviewPending(); }

    std::vector<Uuid> acme;
    Uuid other;
};

// Every field but the bank text filled in: the blank pattern alone must keep
// Add Rule off, and spaces are no pattern.
TEST_F(RuleEditorTest, RefusesABlankPatternEvenWithEverythingElseFilled) {
    auto sheet = editor();
    EXPECT_EQ(sheet->windowTitle(), "New rule");
    EXPECT_EQ(sheet->saveButton()->text(), "Add Rule");
    EXPECT_FALSE(sheet->deleteButton()->isVisibleTo(sheet.get()));

    QTest::keyClicks(sheet->nameField(), "Hardware");
    sheet->accountField()->setCurrentIndex(1);
    sheet->directionField()->setCurrentIndex(2);
    QTest::keyClicks(sheet->minimumField(), "10");
    QTest::keyClicks(sheet->maximumField(), "100");
    QTest::keyClicks(sheet->merchantField(), "Acme");
    chooseCategory(*sheet, "Shopping");
    QTest::keyClicks(sheet->patternField(), "   ");
    EXPECT_FALSE(sheet->saveButton()->isEnabled());
    EXPECT_FALSE(sheet->canSave());

    // Enter on the form presses nothing while the default button is off.
    QTest::keyClick(sheet->patternField(), Qt::Key_Return);
    EXPECT_TRUE(ledger().rules.empty());

    QTest::keyClicks(sheet->patternField(), "ACME");
    EXPECT_TRUE(sheet->saveButton()->isEnabled());
}

TEST_F(RuleEditorTest, AnInvalidPatternIsRefusedUnderTheFieldAsItIsTyped) {
    auto sheet = editor();
    chooseCategory(*sheet, "Shopping");
    sheet->matchField()->setCurrentIndex(sheet->matchField()->findText("matches pattern"));
    QTest::keyClicks(sheet->patternField(), "(");
    EXPECT_TRUE(sheet->patternRefusal()->isVisibleTo(sheet.get()));
    EXPECT_EQ(sheet->patternRefusal()->label()->text(), "That pattern isn't valid.");
    QTest::keyClicks(sheet->patternField(), "[");
    EXPECT_EQ(sheet->patternRefusal()->label()->text(), "That pattern isn't valid.");
    EXPECT_FALSE(sheet->saveButton()->isEnabled());
    // An invalid pattern is never previewed.
    EXPECT_TRUE(waitUntil([&] { return previewSettled(*sheet); }));
    EXPECT_FALSE(sheet->shownPreview().has_value());

    // The same text is plain words to "contains".
    sheet->matchField()->setCurrentIndex(sheet->matchField()->findText("contains"));
    EXPECT_FALSE(sheet->patternRefusal()->isVisibleTo(sheet.get()));
    EXPECT_TRUE(sheet->saveButton()->isEnabled());
}

TEST_F(RuleEditorTest, OnlySpendingAndIncomeAskForACategory) {
    auto sheet = editor();
    QTest::keyClicks(sheet->patternField(), "ONLINE TRANSFER");
    EXPECT_FALSE(sheet->saveButton()->isEnabled());

    chooseOutcome(*sheet, TransactionKind::transfer);
    EXPECT_FALSE(sheet->categoryField()->isEnabled());
    EXPECT_TRUE(sheet->saveButton()->isEnabled());

    // Income offers income's categories only, and needs one of them.
    chooseOutcome(*sheet, TransactionKind::income);
    EXPECT_FALSE(sheet->saveButton()->isEnabled());
    EXPECT_EQ(sheet->categoryField()->findText("Dining"), -1);
    chooseCategory(*sheet, "Salary");
    EXPECT_TRUE(sheet->saveButton()->isEnabled());

    chooseOutcome(*sheet, TransactionKind::transfer);
    sheet->saveButton()->click();
    ASSERT_EQ(ledger().rules.size(), 1u);
    EXPECT_EQ(ledger().rules[0].kind, TransactionKind::transfer);
    EXPECT_FALSE(ledger().rules[0].categoryID.has_value());
}

// The keyboard road: type the bank text, pick the category with the arrow
// key, and Enter adds the rule, which files what it matches at once.
TEST_F(RuleEditorTest, AddRuleFilesTheMatchingTransactionsByKeyboard) {
    auto sheet = editor();
    QTest::keyClicks(sheet->patternField(), "acme hardware");
    sheet->categoryField()->setFocus();
    QTest::keyClick(sheet->categoryField(), Qt::Key_Down);
    ASSERT_TRUE(sheet->categoryField()->currentIndex() >= 0);
    const QString category = sheet->categoryField()->currentText();

    ASSERT_TRUE(waitUntil([&] { return previewSettled(*sheet); }));
    ASSERT_TRUE(sheet->shownPreview().has_value());
    EXPECT_EQ(sheet->shownPreview()->matchingIDs.size(), 2u);
    EXPECT_EQ(sheet->shownPreview()->changingIDs.size(), 2u);
    EXPECT_EQ(sheet->previewLabel()->text(),
              "Matches 2 transactions; 2 would change; 0 you set by hand stay as they are.");

    QTest::keyClick(sheet->patternField(), Qt::Key_Return);
    EXPECT_EQ(sheet->result(), QDialog::Accepted);
    ASSERT_EQ(ledger().rules.size(), 1u);
    const Rule& saved = ledger().rules[0];
    // A rule left unnamed is called by what it looks for.
    EXPECT_EQ(saved.name, "acme hardware");
    EXPECT_EQ(saved.pattern, "acme hardware");
    for (const Uuid& id : acme) {
        const LedgerTransaction* line = ledger().transaction(id);
        EXPECT_EQ(line->method, MatchMethod::userRule);
        EXPECT_EQ(ledger().category(line->categoryID)->name, category.toStdString());
    }
    EXPECT_NE(ledger().transaction(other)->method, MatchMethod::userRule);
    EXPECT_EQ(ledger().settings->ruleOrder, std::vector<Uuid>{saved.id});
}

// On a long history the save looks again at every line beside the window:
// the sheet stays open, closed to the keyboard, until the rule is saved.
TEST_F(RuleEditorTest, OnALongHistoryTheSheetWaitsForItsSave) {
    RuleEditorSheet* sheet = page->openRuleEditor();
    ASSERT_NE(sheet, nullptr);
    sheet->setSaveInBackgroundFrom(0);
    QTest::keyClicks(sheet->patternField(), "acme hardware");
    chooseCategory(*sheet, "Dining");
    sheet->saveButton()->click();

    EXPECT_FALSE(sheet->isEnabled());
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_TRUE(ledger().rules.empty()) << "nothing is live until it is saved";

    runtime->mainQueue()->runUntil([&] { return !runtime->isChangingInBackground(); });
    EXPECT_TRUE(waitUntil([&] { return page->openSheet() == nullptr; }));
    ASSERT_EQ(ledger().rules.size(), 1u);
    for (const Uuid& id : acme)
        EXPECT_EQ(ledger().transaction(id)->method, MatchMethod::userRule);
}

// A rule that runs behind another one is told which rule takes its lines.
TEST_F(RuleEditorTest, PreviewNamesTheEarlierRuleThatTakesTheLines) {
    builder.ledger().rules.push_back(rule("Hardware stores", "HARDWARE"));
    close();
    open();

    auto sheet = editor();
    QTest::keyClicks(sheet->patternField(), "ACME");
    chooseCategory(*sheet, "Shopping");
    ASSERT_TRUE(waitUntil([&] { return previewSettled(*sheet) && sheet->shownPreview(); }));
    EXPECT_EQ(sheet->previewLabel()->text(),
              "Matches 2 transactions; 0 would change; 0 you set by hand stay as they are.\n"
              "Taken first by \u201CHardware stores\u201D: 2");
}

// A preview of what was typed before comes back after the person typed on:
// it is dropped, and only the preview of the fields as they stand is shown.
TEST_F(RuleEditorTest, APreviewOfEarlierTypingIsDropped) {
    builder.transaction(checking, "CORNER BAKERY", -900);
    builder.transaction(checking, "CORNER BAKERY", -1200);
    close();
    auto queue = std::make_shared<PlainQueue>();
    open(queue);

    auto sheet = editor();
    int shown = 0;
    QObject::connect(sheet.get(), &RuleEditorSheet::previewShown, [&] { ++shown; });
    QTest::keyClicks(sheet->patternField(), "ACME");
    // The preview of "ACME" is worked out, and its result waits in the queue.
    QTest::qWait(RuleEditorSheet::kPreviewDelayMilliseconds + 100);
    sheet->patternField()->setText("CORNER BAKERY");
    QTest::qWait(RuleEditorSheet::kPreviewDelayMilliseconds + 100);

    std::size_t delivered = 0;
    ASSERT_TRUE(waitUntil([&] {
        delivered += queue->runPending();
        return delivered == 2;
    }));
    EXPECT_EQ(shown, 1);
    ASSERT_TRUE(sheet->shownPreview().has_value());
    EXPECT_EQ(sheet->shownPreview()->matchingIDs.size(), 3u) << "the bakery's lines, not Acme's";
    EXPECT_FALSE(sheet->isPreviewPending());
}

TEST_F(RuleEditorTest, EscapeCancelsWithoutSaving) {
    auto sheet = editor();
    QTest::keyClicks(sheet->patternField(), "ACME");
    chooseCategory(*sheet, "Shopping");
    ASSERT_TRUE(sheet->saveButton()->isEnabled());
    QTest::keyClick(sheet->patternField(), Qt::Key_Escape);
    EXPECT_EQ(sheet->result(), QDialog::Rejected);
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_TRUE(ledger().rules.empty());
    EXPECT_NE(ledger().transaction(acme[0])->method, MatchMethod::userRule);
}

TEST_F(RuleEditorTest, AnAmountThatIsntOneIsRefusedInTheWordsOfTheRuleList) {
    auto sheet = editor();
    QTest::keyClicks(sheet->patternField(), "ACME");
    chooseCategory(*sheet, "Shopping");
    QTest::keyClicks(sheet->minimumField(), "12.3.4");
    EXPECT_FALSE(sheet->saveButton()->isEnabled());
    const auto refusals = sheet->findChildren<app::RefusalLine*>();
    const auto shown = std::count_if(refusals.begin(), refusals.end(), [&](app::RefusalLine* line) {
        return line->isVisibleTo(sheet.get()) &&
               line->label()->text() == "\u201C12.3.4\u201D isn't an amount.";
    });
    EXPECT_EQ(shown, 1);

    sheet->minimumField()->setText("$30.00");
    ASSERT_TRUE(sheet->saveButton()->isEnabled());
    sheet->saveButton()->click();
    ASSERT_EQ(ledger().rules.size(), 1u);
    EXPECT_EQ(ledger().rules[0].minimumAmount, 3000);
    // Only the larger purchase reaches the rule's floor.
    EXPECT_EQ(ledger().transaction(acme[1])->method, MatchMethod::userRule);
    EXPECT_NE(ledger().transaction(acme[0])->method, MatchMethod::userRule);
}

TEST_F(RuleEditorTest, EditingShowsTheSavedRuleAndSavesOrDeletesIt) {
    Rule saved = rule("Hardware", "ACME HARDWARE", "Shopping");
    saved.accountIDs = {checking};
    saved.direction = AmountDirection::moneyOut;
    saved.maximumAmount = 5000;
    ASSERT_TRUE(
        runtime->apply([&](Ledger& copy) { return addRule(copy, saved, false, true); }).saved);

    {
        auto sheet = editor(saved);
        EXPECT_EQ(sheet->windowTitle(), "Edit rule");
        EXPECT_EQ(sheet->saveButton()->text(), "Save");
        EXPECT_TRUE(sheet->deleteButton()->isVisibleTo(sheet.get()));
        EXPECT_EQ(sheet->nameField()->text(), "Hardware");
        EXPECT_EQ(sheet->accountField()->currentText(), "Everyday Checking");
        EXPECT_EQ(sheet->directionField()->currentText(), "Money out only");
        EXPECT_EQ(sheet->maximumField()->text(), "$50.00");
        EXPECT_EQ(sheet->categoryField()->currentText(), "Shopping");

        sheet->nameField()->setText("Tools");
        chooseCategory(*sheet, "Housing");
        sheet->saveButton()->click();
        ASSERT_EQ(ledger().rules.size(), 1u);
        EXPECT_EQ(ledger().rules[0].name, "Tools");
        EXPECT_EQ(ledger().rules[0].id, saved.id);
        EXPECT_EQ(ledger().category(ledger().transaction(acme[0])->categoryID)->name, "Housing");
    }

    auto sheet = editor(ledger().rules[0]);
    sheet->deleteButton()->click();
    EXPECT_EQ(sheet->result(), QDialog::Accepted);
    EXPECT_TRUE(ledger().rules.empty());
    EXPECT_TRUE(ledger().settings->ruleOrder.empty());
    // What the rule filed is matched again without it.
    EXPECT_NE(ledger().transaction(acme[0])->method, MatchMethod::userRule);
}

// A suggested rule from Review arrives as a draft with an id of its own: it
// is a new rule, with the suggestion's fields.
TEST_F(RuleEditorTest, ADraftThatIsntSavedOpensAsANewRule) {
    Rule draft = rule("Acme Hardware \u2192 Shopping", "ACME HARDWARE", "Shopping");
    auto sheet = editor(draft);
    EXPECT_EQ(sheet->windowTitle(), "New rule");
    EXPECT_EQ(sheet->patternField()->text(), "ACME HARDWARE");
    EXPECT_EQ(sheet->categoryField()->currentText(), "Shopping");
    sheet->saveButton()->click();
    ASSERT_EQ(ledger().rules.size(), 1u);
    EXPECT_EQ(ledger().rules[0].id, draft.id);
}

}  // namespace
}  // namespace copperwick::testing
