// The Import screen driven as a person drives it: files dropped and chosen,
// cards decided on, the bar's words, the Import button, and what the ledger
// holds afterwards.

#include <QLineEdit>
#include <QSignalSpy>

#include "core/import/import_words.h"
#include "tests/app/import/import_screen_fixture.h"

namespace copperwick::testing {
namespace {

constexpr const char* kChaseHeader =
    "Details,Posting Date,Description,Amount,Type,Balance,Check or Slip #\n";

using ImportPage = ImportScreenTest;

TEST_F(ImportPage, DroppedFilesGetOneCardEachInTheOrderDropped) {
    drop({sample("chase-card.csv"), sample("chase-checking.csv")});
    ASSERT_EQ(page->cards().size(), 2u);
    EXPECT_EQ(page->cards()[0]->fileName(), "chase-card.csv");
    EXPECT_EQ(page->cards()[1]->fileName(), "chase-checking.csv");
    EXPECT_EQ(page->cards()[1]->layoutLabel()->text(), "Layout: Chase checking or savings");
    EXPECT_TRUE(page->pendingTexts().isEmpty());

    // The same file again, dropped or chosen, adds no card.
    drop({sample("chase-checking.csv")});
    chosenFiles = {sample("chase-card.csv")};
    QTest::mouseClick(page->dropArea()->chooseFilesButton(), Qt::LeftButton);
    EXPECT_TRUE(waitUntil([&] { return importer.pendingAnalyses() == 0; }));
    EXPECT_EQ(page->cards().size(), 2u);
    EXPECT_EQ(importer.files().size(), 2u);
}

TEST_F(ImportPage, FileStillBeingReadShowsAsReading) {
    importer.add({sample("chase-checking.csv")}, *runtime);
    // Read on another thread, it is back only through the event loop.
    EXPECT_EQ(page->pendingTexts(), QStringList{"Reading chase-checking.csv…"});
    EXPECT_TRUE(page->cards().empty());
    EXPECT_TRUE(waitUntil([&] { return page->cards().size() == 1; }));
    EXPECT_TRUE(page->pendingTexts().isEmpty());
}

TEST_F(ImportPage, CtrlOOpensTheChooserOnceAndTakesTheRequestBack) {
    chosenFiles = {sample("chase-checking.csv")};
    window->menus()->importFilesAction()->trigger();
    EXPECT_FALSE(importer.requestFilePicker());
    EXPECT_TRUE(waitUntil([&] { return page->cards().size() == 1; }));
    QTest::qWait(20);
    EXPECT_EQ(chooserOpened, 1);
}

TEST_F(ImportPage, UndecidedCardBlocksAndTheBarSaysSo) {
    drop({sample("chase-checking.csv")});
    auto* shown = card("chase-checking.csv");
    ASSERT_NE(shown, nullptr);
    pick(shown->accountPicker(), "Choose");
    EXPECT_EQ(shown->blockerText(), "Choose which account this file belongs to.");
    EXPECT_EQ(blockedText(), "1 file needs a decision first (see above), or turn it off.");
    EXPECT_EQ(readyText(), "0 transactions ready from 0 files");
    EXPECT_FALSE(page->importBar()->importButton()->isEnabled());

    // Turned off, it no longer holds anything up.
    QTest::mouseClick(shown->includeBox(), Qt::LeftButton);
    EXPECT_FALSE(fileOf(shown).include);
    EXPECT_EQ(blockedText(), "");
}

TEST_F(ImportPage, UntickingIncludeTakesTheFileOutOfTheCount) {
    drop({sample("chase-checking.csv"), sample("chase-card.csv")});
    EXPECT_EQ(readyText(), "56 transactions ready from 2 files");
    auto* shown = card("chase-card.csv");
    shown->includeBox()->setFocus();
    QTest::keyClick(shown->includeBox(), Qt::Key_Space);
    EXPECT_EQ(readyText(), "24 transactions ready from 1 file");
    QTest::keyClick(shown->includeBox(), Qt::Key_Space);
    EXPECT_EQ(readyText(), "56 transactions ready from 2 files");
}

TEST_F(ImportPage, ClearingTheNewAccountsNameBlocks) {
    drop({sample("chase-checking.csv")});
    auto* shown = card("chase-checking.csv");
    pick(shown->accountPicker(), "New account");
    ASSERT_TRUE(shown->nameField()->isVisible());
    shown->nameField()->setFocus();
    shown->nameField()->selectAll();
    QTest::keyClick(shown->nameField(), Qt::Key_Backspace);
    EXPECT_EQ(shown->blockerText(), "Give the new account a name.");
    EXPECT_EQ(blockedText(), "1 file needs a decision first (see above), or turn it off.");

    // Each key reaches the model while the field keeps its focus and text.
    QTest::keyClicks(shown->nameField(), "Joint checking");
    EXPECT_TRUE(shown->nameField()->hasFocus());
    EXPECT_EQ(shown->nameField()->text(), "Joint checking");
    EXPECT_EQ(fileOf(shown).draft.name, "Joint checking");
    EXPECT_EQ(shown->blockerText(), "");

    pressImport();
    ASSERT_EQ(runtime->ledger().accounts.size(), 1u);
    EXPECT_EQ(runtime->ledger().accounts[0].name, "Joint checking");
}

TEST_F(ImportPage, ImportFromTheKeyboardSavesAndSaysHowMany) {
    drop({sample("chase-checking.csv")});
    auto* shown = card("chase-checking.csv");
    EXPECT_EQ(shown->summary()->figure("New"), "24");
    EXPECT_EQ(shown->summary()->figure("Money in"), "$18,900.00");
    EXPECT_EQ(shown->summary()->figure("Dates"), "Aug 1, 2026 – Oct 25, 2026");

    // From the card's last control, Tab reaches Import before anything else.
    shown->flipBox()->setFocus();
    QPushButton* button = page->importBar()->importButton();
    for (int presses = 0; presses < 12 && QApplication::focusWidget() != button; ++presses)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    ASSERT_EQ(QApplication::focusWidget(), button);
    QTest::keyClick(button, Qt::Key_Space);
    waitForImport();

    EXPECT_EQ(runtime->ledger().transactions.size(), 24u);
    ASSERT_EQ(runtime->ledger().batches.size(), 1u);
    EXPECT_TRUE(page->cards().empty());
    EXPECT_TRUE(page->lastResultLabel()->isVisible());
    EXPECT_EQ(page->lastResultLabel()->text(), "Imported 24 transactions from 1 file.");
    EXPECT_FALSE(page->importBar()->isVisible());
}

TEST_F(ImportPage, TheWindowGoesOnWhileTheImportSaves) {
    drop({sample("chase-checking.csv")});
    QPushButton* button = page->importBar()->importButton();
    ASSERT_TRUE(button->isEnabled());
    // Clicked without turning the event loop: what the window shows before
    // the import's work comes back to it.
    button->click();
    EXPECT_TRUE(importer.isCommitting());
    EXPECT_FALSE(button->isEnabled()) << "a second Import must not start beside the first";
    EXPECT_TRUE(runtime->ledger().transactions.empty()) << "live only once saved";
    EXPECT_EQ(page->cards().size(), 1u);

    waitForImport();
    EXPECT_EQ(runtime->ledger().transactions.size(), 24u);
    EXPECT_TRUE(page->cards().empty());
    EXPECT_EQ(page->lastResultLabel()->text(), "Imported 24 transactions from 1 file.");
}

TEST_F(ImportPage, ReimportedFileSaysWhenAndAddsNothing) {
    drop({sample("chase-checking.csv")});
    pressImport();
    drop({sample("chase-checking.csv")});
    auto* shown = card("chase-checking.csv");
    ASSERT_NE(shown, nullptr);
    // The account it went to is found again by its layout.
    EXPECT_EQ(fileOf(shown).choice.kind, ImportFile::AccountChoice::Kind::existing);
    EXPECT_EQ(shown->summary()->figure("Already saved"), "24");
    EXPECT_EQ(shown->summary()->figure("New"), "0");
    EXPECT_EQ(readyText(), "0 transactions ready from 1 file");
}

TEST_F(ImportPage, HeldRowShowsWhatItResemblesAndItsToggleForcesIt) {
    drop({write("march.csv", std::string(kChaseHeader) +
                                 "DEBIT,03/05/2026,TRADER JOE S #552,-92.18,DEBIT_CARD,1,\n")});
    pressImport();
    drop({write("march-again.csv",
                std::string(kChaseHeader) +
                    "DEBIT,03/05/2026,TRADER JOES PORTLAND OR,-92.18,DEBIT_CARD,1,\n")});
    auto* shown = card("march-again.csv");
    ASSERT_NE(shown, nullptr);
    QListWidget* held = shown->summary()->heldList();
    ASSERT_TRUE(held->isVisibleTo(shown));
    ASSERT_EQ(held->count(), 1);
    EXPECT_EQ(held->item(0)->text(),
              "Mar 5, 2026 · TRADER JOES PORTLAND OR · −$92.18\n"
              "Looks like Mar 5, 2026 · TRADER JOE S #552 · −$92.18");
    EXPECT_EQ(readyText(), "0 transactions ready from 1 file");

    held->setFocus();
    held->setCurrentRow(0);
    QTest::keyClick(held, Qt::Key_Space);
    EXPECT_EQ(fileOf(shown).forcedLines, std::set<int64_t>{2});
    EXPECT_EQ(readyText(), "1 transactions ready from 1 file");
    pressImport();
    EXPECT_EQ(runtime->ledger().transactions.size(), 2u);
    EXPECT_EQ(runtime->ledger().batches[1].counts.forcedDuplicates, 1);
}

TEST_F(ImportPage, UnreadableRowsBlockUntilThePersonSkipsThem) {
    drop({write("broken.csv", std::string(kChaseHeader) +
                                  "DEBIT,03/05/2026,COFFEE,-4.50,DEBIT_CARD,1,\n"
                                  "DEBIT,not a date,TEA,-3.00,DEBIT_CARD,1,\n")});
    auto* shown = card("broken.csv");
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->blockerText(),
              "Some rows couldn't be read. Fix the file, or choose to skip those rows.");
    QListWidget* issues = shown->summary()->issueList();
    ASSERT_EQ(issues->count(), 1);
    EXPECT_TRUE(issues->item(0)->text().startsWith("Line 3: "));
    EXPECT_TRUE(issues->item(0)->text().endsWith("DEBIT,not a date,TEA,-3.00,DEBIT_CARD,1,"));

    shown->summary()->skipProblemRowsBox()->setFocus();
    QTest::keyClick(shown->summary()->skipProblemRowsBox(), Qt::Key_Space);
    EXPECT_TRUE(fileOf(shown).skipProblemRows);
    EXPECT_EQ(shown->blockerText(), "");
    pressImport();
    EXPECT_EQ(runtime->ledger().transactions.size(), 1u);
}

TEST_F(ImportPage, RemoveAndClearEmptyTheListWithoutTouchingTheLedger) {
    drop({sample("chase-checking.csv"), sample("chase-card.csv")});
    auto* shown = card("chase-card.csv");
    EXPECT_EQ(shown->removeButton()->accessibleName(), "Remove this file from the list");
    QTest::mouseClick(shown->removeButton(), Qt::LeftButton);
    QTest::qWait(1);
    ASSERT_EQ(page->cards().size(), 1u);
    EXPECT_EQ(page->cards()[0]->fileName(), "chase-checking.csv");

    QTest::mouseClick(page->clearButton(), Qt::LeftButton);
    EXPECT_TRUE(page->cards().empty());
    EXPECT_FALSE(page->importBar()->isVisible());
    EXPECT_EQ(runtime->ledger().transactions.size(), 0u);
}

// The self-check of the packaged application on its demo workspace.
class ImportPageOnDemo : public ImportScreenTest {
  protected:
    ImportPageOnDemo() : ImportScreenTest(true) {}
};

TEST_F(ImportPageOnDemo, SelfCheckImportsTheSampleIntoADemoAccount) {
    runtime->setSection(AppSection::importFiles);
    const auto before = runtime->ledger().transactions.size();
    const auto checks = page->selfChecks();
    ASSERT_EQ(checks.size(), 1u);
    const app::SelfCheckOutcome outcome = checks[0].run();
    EXPECT_TRUE(outcome.ok) << outcome.detail;
    EXPECT_EQ(runtime->ledger().transactions.size(), before + 24);
    EXPECT_EQ(page->history()->model()->data(page->history()->model()->index(0), Qt::DisplayRole),
              "chase-checking.csv");
}

}  // namespace
}  // namespace copperwick::testing
