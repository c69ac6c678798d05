#include "app/rules/rules_page.h"

#include <algorithm>

#include "app/rules/row_delegates.h"
#include "core/matching/builtin_knowledge.h"
#include "core/matching/matcher.h"
#include "core/operations/classification.h"
#include "core/operations/merchants.h"
#include "core/operations/rules.h"
#include "tests/app/rules/rules_fixture.h"

namespace copperwick::testing {
namespace {

using app::MerchantEditorSheet;
using app::RuleEditorSheet;

class RulesPageTest : public RulesScreenTest {
  protected:
    // The rules' names as the list shows them, top to bottom.
    std::vector<std::string> listedRules() const {
        std::vector<std::string> names;
        auto* model = page->ruleList()->model();
        for (int row = 0; row < model->rowCount(); ++row)
            names.push_back(model->index(row, 0).data().toString().toStdString());
        return names;
    }

    // The rules' names in the order the ledger runs them.
    std::vector<std::string> runningOrder() const {
        std::vector<std::string> names;
        for (const auto& saved : orderedRules(ledger()))
            names.push_back(saved.name);
        return names;
    }

    std::vector<std::string> listedMerchants() const {
        std::vector<std::string> names;
        auto* model = page->merchantList()->model();
        for (int row = 0; row < model->rowCount(); ++row)
            names.push_back(model->index(row, 0).data().toString().toStdString());
        return names;
    }

    QRect rowRect(QListView* view, int row) const {
        return view->visualRect(view->model()->index(row, 0));
    }

    void clickSwitch(QListView* view, int row) {
        QTest::mouseClick(view->viewport(), Qt::LeftButton, {},
                          app::SwitchRowDelegate::switchRect(rowRect(view, row)).center());
    }

    void clickEdit(QListView* view, int row) {
        QTest::mouseClick(
            view->viewport(), Qt::LeftButton, {},
            app::SwitchRowDelegate::editRect(rowRect(view, row), view->font()).center());
    }

    const Rule* savedRule(std::string_view name) const {
        const auto& rules = ledger().rules;
        const auto found = std::find_if(rules.begin(), rules.end(),
                                        [&](const Rule& saved) { return saved.name == name; });
        return found == rules.end() ? nullptr : &*found;
    }
};

TEST_F(RulesPageTest, WithNothingTaughtItSaysHowToTeach) {
    open();
    EXPECT_TRUE(page->noRulesLabel()->isVisible());
    EXPECT_FALSE(page->ruleList()->isVisible());
    EXPECT_EQ(page->noRulesLabel()->text(),
              "No rules yet. Make one here, or approve a suggested rule in Review. Corrections "
              "with \u201CRemember\u201D also teach Copperwick without a rule.");
    EXPECT_TRUE(page->noMerchantsLabel()->isVisible());
    EXPECT_EQ(page->builtInList()->model()->rowCount(),
              static_cast<int>(BuiltInKnowledge::rules().size()));

    // "New Rule" opens the editor, and the rule it adds takes the empty text's place.
    page->newRuleButton()->click();
    auto* sheet = this->sheet<RuleEditorSheet>();
    ASSERT_NE(sheet, nullptr);
    QTest::keyClicks(sheet->patternField(), "CORNER BAKERY");
    sheet->categoryField()->setCurrentIndex(0);
    sheet->saveButton()->click();
    EXPECT_EQ(listedRules(), std::vector<std::string>{"CORNER BAKERY"});
    EXPECT_FALSE(page->noRulesLabel()->isVisible());
    EXPECT_TRUE(page->ruleList()->isVisible());
}

// The keyboard moves the chosen rule, the ledger's running order follows,
// and the moved rule stays chosen for the next step.
TEST_F(RulesPageTest, AltArrowsMoveTheChosenRuleAndTheLedgerOrderFollows) {
    for (const char* name : {"First", "Second", "Third"})
        builder.ledger().rules.push_back(rule(name, name));
    open();
    ASSERT_EQ(listedRules(), (std::vector<std::string>{"First", "Second", "Third"}));

    page->ruleList()->setFocus();
    page->ruleList()->setCurrentIndex(page->ruleList()->model()->index(0, 0));
    QTest::keyClick(page->ruleList(), Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(runningOrder(), (std::vector<std::string>{"Second", "First", "Third"}));
    EXPECT_EQ(listedRules(), runningOrder());
    QTest::keyClick(page->ruleList(), Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(runningOrder(), (std::vector<std::string>{"Second", "Third", "First"}));
    EXPECT_EQ(page->ruleList()->currentIndex().row(), 2);
    EXPECT_FALSE(page->moveDownButton()->isEnabled());

    // At the top a further step up changes nothing.
    page->ruleList()->setCurrentIndex(page->ruleList()->model()->index(0, 0));
    QTest::keyClick(page->ruleList(), Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(runningOrder(), (std::vector<std::string>{"Second", "Third", "First"}));

    page->ruleList()->setCurrentIndex(page->ruleList()->model()->index(2, 0));
    page->moveUpButton()->click();
    EXPECT_EQ(runningOrder(), (std::vector<std::string>{"Second", "First", "Third"}));
    EXPECT_EQ(listedRules(), runningOrder());
}

// A dropped row reaches the model as a move of one row (as QListView drops
// within itself); the order is saved and matching runs again at once.
TEST_F(RulesPageTest, ADroppedRuleRunsInItsNewPlace) {
    const Uuid line = builder.transaction(checking, "ACME HARDWARE 1234", -2500);
    builder.ledger().rules.push_back(rule("Hardware", "HARDWARE", "Shopping"));
    builder.ledger().rules.push_back(rule("Acme", "ACME", "Housing"));
    open();
    ASSERT_EQ(ledger().category(ledger().transaction(line)->categoryID), nullptr);
    ASSERT_TRUE(runtime->apply([](Ledger& copy) { return rematch(copy); }).saved);
    ASSERT_EQ(ledger().category(ledger().transaction(line)->categoryID)->name, "Shopping");

    auto* model = page->ruleList()->model();
    ASSERT_TRUE(model->moveRow({}, 1, {}, 0));
    EXPECT_EQ(runningOrder(), (std::vector<std::string>{"Acme", "Hardware"}));
    EXPECT_EQ(listedRules(), runningOrder());
    EXPECT_EQ(ledger().category(ledger().transaction(line)->categoryID)->name, "Housing");
}

TEST_F(RulesPageTest, ARulesSwitchTurnsItOffAndOnInTheLedger) {
    builder.ledger().rules.push_back(rule("Bakery", "BAKERY"));
    const Uuid line = builder.transaction(checking, "CORNER BAKERY", -800);
    open();
    ASSERT_TRUE(runtime->apply([](Ledger& copy) { return rematch(copy); }).saved);
    ASSERT_EQ(ledger().transaction(line)->method, MatchMethod::userRule);

    clickSwitch(page->ruleList(), 0);
    EXPECT_FALSE(savedRule("Bakery")->isEnabled);
    EXPECT_NE(ledger().transaction(line)->method, MatchMethod::userRule);
    EXPECT_EQ(
        page->ruleList()->model()->index(0, 0).data(Qt::CheckStateRole).value<Qt::CheckState>(),
        Qt::Unchecked);

    // Space on the chosen row is the same switch.
    page->ruleList()->setFocus();
    page->ruleList()->setCurrentIndex(page->ruleList()->model()->index(0, 0));
    QTest::keyClick(page->ruleList(), Qt::Key_Space);
    EXPECT_TRUE(savedRule("Bakery")->isEnabled);
    EXPECT_EQ(ledger().transaction(line)->method, MatchMethod::userRule);
}

TEST_F(RulesPageTest, EnterOrEditOpensTheSavedRule) {
    builder.ledger().rules.push_back(rule("Bakery", "BAKERY"));
    open();
    clickEdit(page->ruleList(), 0);
    auto* sheet = this->sheet<RuleEditorSheet>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(sheet->isEditing());
    EXPECT_EQ(sheet->patternField()->text(), "BAKERY");
    QTest::keyClick(sheet, Qt::Key_Escape);
    ASSERT_TRUE(waitUntil([&] { return page->openSheet() == nullptr; }));

    page->ruleList()->setFocus();
    page->ruleList()->setCurrentIndex(page->ruleList()->model()->index(0, 0));
    QTest::keyClick(page->ruleList(), Qt::Key_Return);
    sheet = this->sheet<RuleEditorSheet>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->nameField()->text(), "Bakery");
}

TEST_F(RulesPageTest, ABuiltInSwitchTurnsThatRuleOffForEveryLine) {
    const Uuid pay = builder.transaction(checking, "ACME CORP PAYROLL", 250000);
    open();
    ASSERT_TRUE(runtime->apply([](Ledger& copy) { return rematch(copy); }).saved);
    ASSERT_EQ(ledger().transaction(pay)->method, MatchMethod::builtInRule);

    const auto& rules = BuiltInKnowledge::rules();
    const int row = static_cast<int>(
        std::find_if(rules.begin(), rules.end(),
                     [](const BuiltInRule& builtIn) { return builtIn.id == "payroll"; }) -
        rules.begin());
    EXPECT_EQ(page->builtInList()->model()->index(row, 0).data().toString(), "Paycheck");
    EXPECT_EQ(page->builtInList()->model()->index(row, 0).data(app::kDescriptionRole).toString(),
              "Money in only, Checking account, Savings \u2192 Income, Salary");

    clickSwitch(page->builtInList(), row);
    EXPECT_EQ(ledger().settings->disabledBuiltInRules, std::vector<std::string>{"payroll"});
    EXPECT_NE(ledger().transaction(pay)->method, MatchMethod::builtInRule);
    EXPECT_EQ(page->builtInList()
                  ->model()
                  ->index(row, 0)
                  .data(Qt::CheckStateRole)
                  .value<Qt::CheckState>(),
              Qt::Unchecked);

    clickSwitch(page->builtInList(), row);
    EXPECT_TRUE(ledger().settings->disabledBuiltInRules.empty());
    EXPECT_EQ(ledger().transaction(pay)->method, MatchMethod::builtInRule);
}

TEST_F(RulesPageTest, TheSearchNarrowsTheMerchantsInAnyCase) {
    builder.merchant("Blue Bottle Coffee");
    builder.merchant("Philz Coffee");
    builder.merchant("Safeway");
    open();
    EXPECT_EQ(listedMerchants(),
              (std::vector<std::string>{"Blue Bottle Coffee", "Philz Coffee", "Safeway"}));
    QTest::keyClicks(page->merchantSearch(), "COFF");
    EXPECT_EQ(listedMerchants(), (std::vector<std::string>{"Blue Bottle Coffee", "Philz Coffee"}));

    // A rename elsewhere is found, or dropped, by the search as it stands.
    const Uuid safeway = ledger().merchantNamed("Safeway")->id;
    ASSERT_TRUE(
        runtime->apply([&](Ledger& copy) { return renameMerchant(copy, safeway, "Coffee Corner"); })
            .saved);
    EXPECT_EQ(listedMerchants(),
              (std::vector<std::string>{"Blue Bottle Coffee", "Coffee Corner", "Philz Coffee"}));

    page->merchantSearch()->clear();
    EXPECT_EQ(listedMerchants().size(), 3u);
}

// The row of a merchant says what it files and what it knows, in core's words.
TEST_F(RulesPageTest, AMerchantRowSaysWhatItFilesAndRecognizes) {
    const Uuid bakery = builder.merchant("Corner Bakery", "Dining", {"CORNER BAKERY"});
    builder.change(builder.transaction(checking, "CORNER BAKERY", -800),
                   [&](LedgerTransaction& line) { line.merchantID = bakery; });
    open();
    const QModelIndex row = page->merchantList()->model()->index(0, 0);
    EXPECT_EQ(row.data(Qt::AccessibleTextRole).toString(),
              "Corner Bakery, 1 transaction, always Dining, recognizes 1 bank text");

    // Enter on the row opens its editor.
    page->merchantList()->setFocus();
    page->merchantList()->setCurrentIndex(row);
    QTest::keyClick(page->merchantList(), Qt::Key_Return);
    auto* sheet = this->sheet<MerchantEditorSheet>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->merchantID(), bakery);
    EXPECT_EQ(sheet->nameField()->text(), "Corner Bakery");
}

TEST_F(RulesPageTest, ForgettingTheLastKeyKeepsTheMerchantUntilUnusedOnesAreRemoved) {
    const Uuid kept = builder.merchant("Corner Bakery", std::nullopt, {"CORNER BAKERY"});
    const Uuid used = builder.merchant("Safeway");
    builder.change(builder.transaction(checking, "SAFEWAY 1234", -4000),
                   [&](LedgerTransaction& line) { line.merchantID = used; });
    open();

    ASSERT_NE(page->openMerchantEditor(kept), nullptr);
    auto* sheet = this->sheet<MerchantEditorSheet>();
    EXPECT_EQ(sheet->windowTitle(), "Edit merchant");
    ASSERT_EQ(sheet->forgetButtons().size(), 1u);
    EXPECT_FALSE(sheet->noKeysLabel()->isVisibleTo(sheet));
    QTest::mouseClick(sheet->forgetButtons()[0], Qt::LeftButton);
    EXPECT_TRUE(sheet->forgetButtons().empty());
    EXPECT_TRUE(sheet->noKeysLabel()->isVisibleTo(sheet));
    EXPECT_EQ(sheet->noKeysLabel()->text(),
              "None yet. Choose \u201CRemember\u201D when you file one of its transactions.");
    // Nothing is forgotten until the sheet is saved.
    EXPECT_EQ(ledger().merchant(kept)->keys.size(), 1u);
    sheet->saveButton()->click();

    ASSERT_NE(ledger().merchant(kept), nullptr);
    EXPECT_TRUE(ledger().merchant(kept)->keys.empty());
    EXPECT_EQ(listedMerchants(), (std::vector<std::string>{"Corner Bakery", "Safeway"}));

    page->removeUnusedButton()->click();
    EXPECT_EQ(ledger().merchant(kept), nullptr);
    EXPECT_NE(ledger().merchant(used), nullptr);
    EXPECT_EQ(listedMerchants(), std::vector<std::string>{"Safeway"});
}

// A long history: the switch shows at once, the ledger follows once the
// rematch is saved beside the window, and the merchants' counts that follow
// are read there too.
TEST_F(RulesPageTest, OnALongHistoryASwitchAndTheCountsFollowFromBesideTheWindow) {
    builder.ledger().rules.push_back(rule("Bakery", "BAKERY"));
    const Uuid bakery = builder.merchant("Corner Bakery");
    const Uuid cafe = builder.merchant("Bakery Cafe");
    const Uuid line = builder.transaction(checking, "CORNER BAKERY", -800);
    // Filed by hand, so that no rematch moves it.
    builder.change(builder.transaction(checking, "CORNER BAKERY CAFE", -650),
                   [&](LedgerTransaction& changed) {
                       changed.merchantID = bakery;
                       changed.method = MatchMethod::manual;
                       changed.review = ReviewState::confirmed;
                   });
    open();
    ASSERT_TRUE(runtime->apply([](Ledger& copy) { return rematch(copy); }).saved);
    page->setSaveInBackgroundFrom(0);
    page->merchantReading().setInBackgroundFrom(0);

    clickSwitch(page->ruleList(), 0);
    EXPECT_TRUE(runtime->isChangingInBackground());
    EXPECT_EQ(
        page->ruleList()->model()->index(0, 0).data(Qt::CheckStateRole).value<Qt::CheckState>(),
        Qt::Unchecked);
    EXPECT_TRUE(savedRule("Bakery")->isEnabled) << "the ledger waits for the save";

    runtime->mainQueue()->runUntil([&] { return !runtime->isChangingInBackground(); });
    EXPECT_FALSE(savedRule("Bakery")->isEnabled);
    EXPECT_NE(ledger().transaction(line)->method, MatchMethod::userRule);

    // A merge moves the line's count once the rows are read again.
    ASSERT_TRUE(
        runtime->apply([&](Ledger& copy) { return mergeMerchants(copy, bakery, cafe); }).saved);
    EXPECT_TRUE(page->merchantReading().isReading());
    EXPECT_TRUE(waitUntil([&] { return !page->merchantReading().isReading(); }));
    EXPECT_EQ(listedMerchants(), std::vector<std::string>{"Bakery Cafe"});
    const QModelIndex row = page->merchantList()->model()->index(0, 0);
    EXPECT_EQ(row.data(app::MerchantListModel::CountRole).toString(), "1 transaction");
}

TEST_F(RulesPageTest, MergeMovesTheTransactionsToTheChosenMerchant) {
    const Uuid source = builder.merchant("Safeway Store", std::nullopt, {"SAFEWAY STORE"});
    const Uuid target = builder.merchant("Safeway", "Groceries");
    const Uuid line = builder.transaction(checking, "SAFEWAY STORE 88", -4000);
    builder.change(line, [&](LedgerTransaction& changed) { changed.merchantID = source; });
    open();

    ASSERT_NE(page->openMerchantEditor(source), nullptr);
    auto* sheet = this->sheet<MerchantEditorSheet>();
    EXPECT_FALSE(sheet->mergeButton()->isEnabled());
    EXPECT_EQ(sheet->mergeField()->currentIndex(), -1);
    sheet->mergeField()->setCurrentIndex(sheet->mergeField()->findText("Safeway"));
    ASSERT_TRUE(sheet->mergeButton()->isEnabled());
    sheet->mergeButton()->click();

    EXPECT_EQ(ledger().merchant(source), nullptr);
    EXPECT_EQ(ledger().transaction(line)->merchantID, target);
    EXPECT_EQ(ledger().merchant(target)->keys, std::vector<std::string>{"SAFEWAY STORE"});
    EXPECT_EQ(listedMerchants(), std::vector<std::string>{"Safeway"});
    EXPECT_TRUE(waitUntil([&] { return page->openSheet() == nullptr; }));
}

TEST_F(RulesPageTest, SavingAMerchantRenamesItAndFilesItsLinesTheNewWay) {
    const Uuid merchant = builder.merchant("Corner Bakery", "Dining", {"CORNER BAKERY"});
    const Uuid line = builder.transaction(checking, "CORNER BAKERY", -800);
    open();
    ASSERT_TRUE(runtime->apply([](Ledger& copy) { return rematch(copy); }).saved);
    ASSERT_EQ(ledger().category(ledger().transaction(line)->categoryID)->name, "Dining");

    ASSERT_NE(page->openMerchantEditor(merchant), nullptr);
    auto* sheet = this->sheet<MerchantEditorSheet>();
    EXPECT_EQ(sheet->filingField()->currentText(), "Spending");
    EXPECT_EQ(sheet->categoryField()->currentText(), "Dining");
    sheet->nameField()->setText("  The Bakery ");
    sheet->filingField()->setCurrentIndex(sheet->filingField()->findText("Transfer"));
    EXPECT_FALSE(sheet->categoryField()->isEnabled());
    sheet->saveButton()->click();

    const Merchant* saved = ledger().merchant(merchant);
    ASSERT_NE(saved, nullptr);
    EXPECT_EQ(saved->name, "The Bakery");
    EXPECT_TRUE(saved->nameLocked);
    EXPECT_EQ(saved->kind, TransactionKind::transfer);
    EXPECT_EQ(ledger().transaction(line)->kind, TransactionKind::transfer);
    EXPECT_EQ(listedMerchants(), std::vector<std::string>{"The Bakery"});
}

TEST_F(RulesPageTest, AMerchantSheetRefusesABlankNameAndEscapeKeepsEverything) {
    const Uuid merchant = builder.merchant("Corner Bakery", "Dining", {"CORNER BAKERY"});
    open();
    ASSERT_NE(page->openMerchantEditor(merchant), nullptr);
    auto* sheet = this->sheet<MerchantEditorSheet>();
    sheet->nameField()->setText(" \t");
    EXPECT_FALSE(sheet->saveButton()->isEnabled());
    const auto refusals = sheet->findChildren<app::RefusalLine*>();
    const auto said = [&](const QString& words) {
        return std::any_of(refusals.begin(), refusals.end(), [&](app::RefusalLine* line) {
            return line->isVisibleTo(sheet) && line->label()->text() == words;
        });
    };
    EXPECT_TRUE(said("Give the merchant a name."));
    sheet->nameField()->setText("Bakery");
    sheet->filingField()->setCurrentIndex(sheet->filingField()->findText("Income"));
    // Income asks for one of income's categories.
    EXPECT_FALSE(sheet->saveButton()->isEnabled());
    EXPECT_FALSE(said("Give the merchant a name."));
    EXPECT_TRUE(said("Choose a category that matches spending or income."));
    QTest::mouseClick(sheet->forgetButtons()[0], Qt::LeftButton);
    QTest::keyClick(sheet, Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return page->openSheet() == nullptr; }));
    EXPECT_EQ(ledger().merchant(merchant)->name, "Corner Bakery");
    EXPECT_EQ(ledger().merchant(merchant)->keys.size(), 1u);
}

}  // namespace
}  // namespace copperwick::testing
