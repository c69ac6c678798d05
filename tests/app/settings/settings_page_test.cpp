#include "app/settings/settings_page.h"

#include <filesystem>

#include <QApplication>
#include <QMenu>

#include <gtest/gtest.h>

#include "app/settings/account_sheet.h"
#include "app/settings/appearance_card.h"
#include "app/settings/budgets_card.h"
#include "app/settings/category_sheets.h"
#include "app/settings/data_card.h"
#include "app/settings/person_sheet.h"
#include "app/settings/record_cards.h"
#include "app/settings/report_settings_card.h"
#include "core/operations/report_notes.h"
#include "core/operations/set_budget.h"
#include "core/operations/upsert_category.h"
#include "runtime/skin_preference.h"
#include "tests/app/app_fixture.h"
#include "tests/app/screen_audit.h"
#include "tests/support/ledger_builder.h"

namespace copperwick::testing {
namespace {

class SettingsScreenTest : public ::testing::Test, protected AppWorkspace {
  protected:
    void open() {
        openRuntime({.ledger = builder.ledger()});
        // As the application makes it: one store, a child of the application.
        skins = std::make_unique<app::SkinStore>(runtime->defaults(), qApp);
        page = &showPage<app::SettingsPage>();
    }

    void TearDown() override {
        close();
        skins.reset();
    }

    [[nodiscard]] const Ledger& ledger() const { return runtime->ledger(); }

    template <typename Sheet>
    Sheet* openSheet() {
        Sheet* sheet = nullptr;
        EXPECT_TRUE(waitUntil([&] {
            sheet = page->findChild<Sheet*>();
            return sheet && sheet->isVisible();
        }));
        return sheet;
    }

    LedgerBuilder builder;
    Uuid checking = builder.account("Everyday Checking");
    Uuid spare = builder.account("Old Savings", AccountType::savings);
    std::unique_ptr<app::SkinStore> skins;
    app::SettingsPage* page = nullptr;
};

TEST_F(SettingsScreenTest, AnAccountWithTransactionsIsRefusedDeletionAndStays) {
    builder.transaction(checking, "COFFEE", -450);
    open();
    page->accounts()->editButton(checking)->click();
    auto* sheet = openSheet<app::AccountSheet>();
    ASSERT_NE(sheet, nullptr);
    sheet->deleteButton()->click();
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(sheet->refusalLine()->label()->text(),
              "This account has transactions. Undo its imports first, or archive it.");
    EXPECT_NE(ledger().account(checking), nullptr);
    sheet->reject();

    // Each field of the sheet is held to its rule as it is typed.
    page->accounts()->editButton(spare)->click();
    auto* edit = openSheet<app::AccountSheet>();
    ASSERT_NE(edit, nullptr);
    edit->lastFourField()->clear();
    QTest::keyClicks(edit->lastFourField(), "12a4");
    edit->currencyField()->clear();
    QTest::keyClicks(edit->currencyField(), "EURO");
    edit->saveButton()->click();
    EXPECT_TRUE(edit->isVisible());
    EXPECT_EQ(edit->findChildren<app::RefusalLine*>().size(), 5u);
    QStringList shown;
    for (auto* line : edit->findChildren<app::RefusalLine*>()) {
        if (!line->isHidden())
            shown << line->label()->text();
    }
    EXPECT_EQ(shown, QStringList({"A currency is three letters, such as USD.",
                                  "The last four are four digits."}));
    edit->currencyField()->clear();
    QTest::keyClicks(edit->currencyField(), "eur");
    edit->lastFourField()->clear();
    QTest::keyClicks(edit->lastFourField(), "1234");
    edit->occasionalBox()->setChecked(true);
    edit->saveButton()->click();
    ASSERT_TRUE(waitUntil([&] { return ledger().account(spare)->currency == "EUR"; }));
    EXPECT_EQ(ledger().account(spare)->last4, "1234");
    EXPECT_TRUE(ledger().account(spare)->rarelyUsed);
}

TEST_F(SettingsScreenTest, DeletingACategoryWithAReplacementMovesItsLinesAndDropsItsBudget) {
    const Uuid dining = builder.category("Dining");
    const Uuid groceries = builder.category("Groceries");
    std::vector<Uuid> lines;
    for (const int64_t amount : {-1200, -3400}) {
        const Uuid id = builder.transaction(checking, "NEIGHBORHOOD BISTRO", amount);
        builder.change(id, [&](LedgerTransaction& line) {
            line.categoryID = dining;
            line.kind = TransactionKind::expense;
            line.review = ReviewState::confirmed;
            line.method = MatchMethod::manual;
        });
        lines.push_back(id);
    }
    (void)setBudget(builder.ledger(), dining, 30000);
    open();

    page->categories()->rowButton(dining, QStringLiteral("Delete\u2026"))->click();
    auto* sheet = openSheet<app::DeleteCategorySheet>();
    ASSERT_NE(sheet, nullptr);
    sheet->replacementField()->setCurrentIndex(
        sheet->replacementField()->findText(QStringLiteral("Groceries")));
    sheet->deleteButton()->click();
    ASSERT_TRUE(waitUntil([&] { return ledger().category(dining) == nullptr; }));
    for (const Uuid& id : lines)
        EXPECT_EQ(ledger().transaction(id)->categoryID, groceries);
    EXPECT_FALSE(monthlyBudget(ledger(), dining).has_value());
    EXPECT_EQ(page->categories()->rowButton(dining, QStringLiteral("Delete\u2026")), nullptr);
    EXPECT_EQ(page->budgets()->budgetField(dining), nullptr);
}

TEST_F(SettingsScreenTest, ACategoryNameAnotherHasIsRefusedUnderTheField) {
    open();
    page->categories()->addButton()->click();
    auto* sheet = openSheet<app::CategorySheet>();
    ASSERT_NE(sheet, nullptr);
    QTest::keyClicks(sheet->nameField(), "dining");
    sheet->saveButton()->click();
    EXPECT_TRUE(sheet->isVisible());
    const auto refusals = sheet->findChildren<app::RefusalLine*>();
    ASSERT_EQ(refusals.size(), 1u);
    EXPECT_FALSE(refusals[0]->isHidden());
    const std::size_t before = ledger().categories.size();
    sheet->nameField()->clear();
    QTest::keyClicks(sheet->nameField(), "Garden");
    QTest::keyClick(sheet->nameField(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return ledger().categories.size() == before + 1; }));
    EXPECT_NE(ledger().categoryNamed("Garden"), nullptr);
}

// A restore replaced the data file with nothing kept of it, so a wrong pick
// of backup lost everything since.
TEST_F(SettingsScreenTest, ARestoreKeepsTheFileItReplacedAndABackupOfIt) {
    open();
    app::DataCard* data = page->data();
    const std::size_t before = data->backups().size();
    data->backUpNowButton()->click();
    ASSERT_EQ(data->backups().size(), before + 1);
    int manual = -1;
    for (std::size_t index = 0; index < data->backups().size(); ++index) {
        if (data->backups()[index].reason == "manual")
            manual = static_cast<int>(index);
    }
    ASSERT_GE(manual, 0);
    ASSERT_TRUE(runtime
                    ->apply([](Ledger& copy) {
                        return upsertCategory(copy,
                                              newCategory(copy, "Garden", CategoryGroup::expense));
                    })
                    .saved);

    data->backupList()->setCurrentItem(data->backupList()->topLevelItem(manual));
    ASSERT_TRUE(data->restoreButton()->isEnabled());
    data->restoreChosen(true);
    EXPECT_EQ(ledger().categoryNamed("Garden"), nullptr) << "the backup's data is live";
    EXPECT_TRUE(std::filesystem::exists(runtime->dataFolder() / "Copperwick.replaced.sqlite"));
    ASSERT_EQ(data->backups().size(), before + 2);
    const bool keptBeforeRestore =
        std::any_of(data->backups().begin(), data->backups().end(),
                    [](const auto& backup) { return backup.reason == "before restore"; });
    EXPECT_TRUE(keptBeforeRestore);
    EXPECT_EQ(data->backupList()->topLevelItemCount(), static_cast<int>(before + 2));
}

TEST_F(SettingsScreenTest, ASkinChosenAppliesAtOnceAndIsKept) {
    open();
    app::AppearanceCard* appearance = page->appearance();
    EXPECT_EQ(&page->skins(), skins.get()) << "the page uses the application's store";
    appearance->modeButton(AppearanceMode::light)->click();
    appearance->skinButton(Skin::wisteria)->click();
    EXPECT_EQ(QApplication::palette().color(QPalette::Link),
              app::SkinStore::qtPalette(Skin::wisteria, false).color(QPalette::Link));
    const SkinPreference kept = SkinPreference::load(runtime->defaults());
    EXPECT_EQ(kept.skin, Skin::wisteria);
    EXPECT_EQ(kept.appearance, AppearanceMode::light);

    appearance->modeButton(AppearanceMode::dark)->click();
    EXPECT_EQ(QApplication::palette().color(QPalette::Window),
              app::SkinStore::qtPalette(Skin::wisteria, true).color(QPalette::Window));
    // The next start reads what was chosen.
    app::SkinStore next(runtime->defaults());
    EXPECT_EQ(next.preference().skin, Skin::wisteria);
    EXPECT_EQ(next.preference().appearance, AppearanceMode::dark);
}

TEST_F(SettingsScreenTest, SettingsFieldsAreHeldToCoresRulesWithTheWordsUnderThem) {
    const Uuid dining = builder.category("Dining");
    open();
    app::ReportSettingsCard* reports = page->reportSettings();
    reports->currencyField()->setFocus();
    reports->currencyField()->clear();
    QTest::keyClicks(reports->currencyField(), "EURO");
    QTest::keyClick(reports->currencyField(), Qt::Key_Return);
    EXPECT_EQ(reports->currencyRefusal()->label()->text(),
              "A currency is three letters, such as USD.");
    EXPECT_EQ(ledger().settings->reportCurrency, "USD");
    reports->currencyField()->clear();
    QTest::keyClicks(reports->currencyField(), "eur");
    QTest::keyClick(reports->currencyField(), Qt::Key_Return);
    EXPECT_EQ(ledger().settings->reportCurrency, "EUR");
    EXPECT_TRUE(reports->currencyRefusal()->isHidden());

    reports->timeZoneField()->clear();
    QTest::keyClicks(reports->timeZoneField(), "Mars/Olympus");
    QTest::keyClick(reports->timeZoneField(), Qt::Key_Return);
    EXPECT_FALSE(reports->timeZoneRefusal()->isHidden());
    EXPECT_EQ(ledger().settings->timeZoneID, "America/Los_Angeles");

    app::BudgetsCard* budgets = page->budgets();
    QLineEdit* budget = budgets->budgetField(dining);
    ASSERT_NE(budget, nullptr);
    QTest::keyClicks(budget, "abc");
    QTest::keyClick(budget, Qt::Key_Return);
    EXPECT_EQ(runtime->errorMessage(),
              "\u201C"
              "abc\u201D isn't an amount. Use a number like 250 or 250.00.");
    budget->clear();
    QTest::keyClicks(budget, "250");
    QTest::keyClick(budget, Qt::Key_Return);
    EXPECT_EQ(monthlyBudget(ledger(), dining), 25000);
    EXPECT_EQ(budget->text(), "250.00");

    QTest::keyClicks(budgets->goalField(), "900000000.01");
    budgets->saveGoalButton()->click();
    EXPECT_EQ(budgets->goalRefusal()->label()->text(),
              "Enter a positive monthly goal, or leave it empty.");
    EXPECT_FALSE(ledger().settings->monthlySavingsGoal.has_value());
    budgets->goalField()->clear();
    QTest::keyClicks(budgets->goalField(), "900000000.00");
    budgets->saveGoalButton()->click();
    EXPECT_EQ(ledger().settings->monthlySavingsGoal, 90'000'000'000);
    EXPECT_EQ(ledger().settings->monthlySavingsGoalCurrency, "EUR");
}

// A card given to one person in the account sheet: that card's lines follow
// the person, the account's other lines and a line set by hand stay.
TEST_F(SettingsScreenTest, ACardGivenToAPersonReachesThatCardsLinesAlone) {
    const Uuid robin = Uuid::random();
    builder.ledger().people.push_back(Person{.id = robin, .name = "Robin"});
    const Uuid onCard = builder.transaction(checking, "HARDWARE STORE", -2500);
    const Uuid byHand = builder.transaction(checking, "BOOKSHOP", -1500);
    const Uuid noCard = builder.transaction(checking, "RENT", -90000);
    builder.change(onCard, [](LedgerTransaction& line) { line.cardIdentifier = "1234"; });
    builder.change(byHand, [](LedgerTransaction& line) {
        line.cardIdentifier = "1234";
        line.spendingAssignment = SpendingAssignment::shared();
    });
    open();
    page->accounts()->editButton(checking)->click();
    auto* sheet = openSheet<app::AccountSheet>();
    ASSERT_NE(sheet, nullptr);
    QComboBox* card = sheet->cardField("1234");
    ASSERT_NE(card, nullptr);
    card->setCurrentIndex(card->findText("Robin"));
    sheet->saveButton()->click();
    ASSERT_TRUE(waitUntil([&] { return !sheet->isVisible(); }));
    EXPECT_EQ(ledger().account(checking)->cardAssignments.at("1234"),
              SpendingAssignment::person(robin));
    EXPECT_EQ(ledger().transaction(onCard)->inheritedAssignment, SpendingAssignment::person(robin));
    EXPECT_EQ(ledger().transaction(byHand)->spendingAssignment, SpendingAssignment::shared());
    EXPECT_NE(ledger().transaction(noCard)->inheritedAssignment, SpendingAssignment::person(robin));
}

TEST_F(SettingsScreenTest, PaymentServicesAreKeptInTheirOwnOrderAndShowAllBringsNotesBack) {
    open();
    app::ReportSettingsCard* reports = page->reportSettings();
    EXPECT_EQ(reports->servicesButton()->text(), "Services \u00B7 1 selected");
    QMenu* menu = reports->servicesButton()->menu();
    const auto action = [&](const QString& text) {
        for (QAction* each : menu->actions()) {
            if (each->text() == text)
                return each;
        }
        return static_cast<QAction*>(nullptr);
    };
    action("Venmo")->trigger();
    action("Cash App")->trigger();
    action("Zelle")->trigger();
    EXPECT_EQ(ledger().settings->paymentServices,
              (std::vector<PaymentService>{PaymentService::venmo, PaymentService::cashApp}));
    EXPECT_EQ(reports->servicesButton()->text(), "Services \u00B7 2 selected");
    action("Clear All")->trigger();
    EXPECT_TRUE(ledger().settings->paymentServices.empty());
    action("Select All")->trigger();
    EXPECT_EQ(ledger().settings->paymentServices.size(), 5u);

    EXPECT_FALSE(reports->showAllNotesButton()->isEnabled());
    ASSERT_TRUE(runtime
                    ->apply([&](Ledger& copy) {
                        return acknowledge(copy, {DataNote::RarelyUsed{.accountID = spare}});
                    })
                    .saved);
    ASSERT_TRUE(reports->showAllNotesButton()->isEnabled());
    reports->showAllNotesButton()->click();
    EXPECT_FALSE(ledger().account(spare)->rarelyUsed);
    EXPECT_FALSE(reports->showAllNotesButton()->isEnabled());
}

TEST_F(SettingsScreenTest, APersonIsKeptWithTheNamesBanksPrintAndARefusedAllowanceStays) {
    open();
    page->people()->addButton()->click();
    auto* sheet = openSheet<app::PersonSheet>();
    ASSERT_NE(sheet, nullptr);
    QTest::keyClicks(sheet->nameField(), "  Robin  ");
    QTest::keyClicks(sheet->bankNamesField(), "ROBIN SAMPLE, , R SAMPLE");
    QTest::keyClicks(sheet->allowanceField(), "-20");
    sheet->saveButton()->click();
    EXPECT_TRUE(sheet->isVisible());
    EXPECT_EQ(runtime->errorMessage(), "Enter a positive monthly allowance, or leave it empty.");
    EXPECT_TRUE(ledger().people.empty());
    sheet->allowanceField()->clear();
    QTest::keyClicks(sheet->allowanceField(), "150");
    QTest::keyClick(sheet->allowanceField(), Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return ledger().people.size() == 1; }));
    const Person& robin = ledger().people[0];
    EXPECT_EQ(robin.name, "Robin");
    EXPECT_EQ(robin.bankNames, (std::vector<std::string>{"ROBIN SAMPLE", "R SAMPLE"}));
    EXPECT_EQ(robin.monthlyAllowance, 15000);
}

TEST_F(SettingsScreenTest, EveryControlIsNamedByItsWords) {
    open();
    EXPECT_EQ(misnamedControls(page), QStringList());
}

}  // namespace
}  // namespace copperwick::testing
