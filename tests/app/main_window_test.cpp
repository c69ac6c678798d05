#include "app/shell/main_window.h"

#include <QDropEvent>
#include <QMimeData>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

#include "app/shell/app_options.h"
#include "app/shell/sections.h"
#include "app/widgets/qt_text.h"
#include "core/operations/classification.h"
#include "tests/app/app_fixture.h"

namespace copperwick {
namespace {

using app::sectionIndex;
using testing::AppFixture;
using testing::waitUntil;

// Adds one transaction to the live ledger through the runtime and returns its id.
Uuid addTransaction(LedgerRuntime& runtime, const std::function<void(LedgerTransaction&)>& edit) {
    const Uuid id = Uuid::random();
    runtime.apply([&](Ledger& ledger) {
        if (ledger.accounts.empty())
            ledger.accounts.push_back(Account(Uuid::random(), "Checking", AccountType::checking));
        LedgerTransaction transaction{.id = id,
                                      .accountID = ledger.accounts[0].id,
                                      .date = *LocalDate::make(2026, 3, 2),
                                      .amount = -1250,
                                      .rawDescription = "CORNER SHOP " + id.text().substr(0, 6)};
        edit(transaction);
        ledger.transactions.set(id, transaction);
        LedgerDelta delta;
        delta.change(RecordKind::account, ledger.accounts[0].id);
        delta.change(RecordKind::transaction, id);
        return delta;
    });
    return id;
}

// Drags `data` over the window and lets go, as Qt delivers it: the drop
// goes only to a widget that accepted the drag's entry. Whether it did.
bool drop(QWidget& window, const QMimeData& data) {
    const QPoint where(window.width() / 2, window.height() / 2);
    QDragEnterEvent enter(where, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &enter);
    if (!enter.isAccepted())
        return false;
    QDropEvent dropped(where, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &dropped);
    return dropped.isAccepted();
}

TEST(MainWindow, SectionKeysFollowTheSectionNotTheRow) {
    // Keys given by the sidebar's rows would open Cash, the fifth row, on
    // Ctrl+5, and nothing at all on Ctrl+8.
    AppFixture f;
    QTest::keyClick(f.window.get(), Qt::Key_8, Qt::ControlModifier);
    EXPECT_EQ(f.runtime->section(), AppSection::cash);
    EXPECT_EQ(f.window->pages()->currentWidget(), f.window->page(AppSection::cash));
    EXPECT_EQ(f.window->sidebar()->list()->currentRow(), 4);

    QTest::keyClick(f.window.get(), Qt::Key_5, Qt::ControlModifier);
    EXPECT_EQ(f.runtime->section(), AppSection::ask);
    EXPECT_EQ(f.window->pages()->currentWidget(), f.window->page(AppSection::ask));
    EXPECT_EQ(f.window->sidebar()->list()->currentRow(), 5);

    // Ctrl+, is Settings as well as Ctrl+7.
    QTest::keyClick(f.window.get(), Qt::Key_Comma, Qt::ControlModifier);
    EXPECT_EQ(f.runtime->section(), AppSection::settings);
}

TEST(MainWindow, SidebarAndRuntimeFollowEachOther) {
    // A row chosen by assistive technology (which clears the selection, then
    // selects the row) snapped back to the old row, and Review never opened.
    AppFixture f;
    QListWidget* list = f.window->sidebar()->list();
    list->setFocus();
    list->setCurrentRow(sectionIndex(AppSection::review));
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_EQ(f.runtime->section(), AppSection::transactions);
    EXPECT_EQ(f.window->pages()->currentWidget(), f.window->page(AppSection::transactions));

    f.runtime->setSection(AppSection::rules);
    EXPECT_EQ(list->currentRow(), sectionIndex(AppSection::rules));
    EXPECT_TRUE(list->item(sectionIndex(AppSection::rules))->isSelected());
    EXPECT_EQ(f.window->pages()->currentWidget(), f.window->page(AppSection::rules));

    // Assistive technology unselecting the chosen row can't leave none chosen.
    list->item(sectionIndex(AppSection::rules))->setSelected(false);
    EXPECT_TRUE(
        waitUntil([&] { return list->item(sectionIndex(AppSection::rules))->isSelected(); }));
    EXPECT_EQ(f.runtime->section(), AppSection::rules);

    // It chooses a row by clearing the selection and selecting the row; the
    // old row's mark coming back in between must not win.
    list->clearSelection();
    list->selectionModel()->select(list->model()->index(sectionIndex(AppSection::cash), 0),
                                   QItemSelectionModel::Select);
    QTest::qWait(20);
    EXPECT_EQ(f.runtime->section(), AppSection::cash);
    EXPECT_EQ(list->selectedItems().size(), 1);
    EXPECT_EQ(f.window->pages()->currentWidget(), f.window->page(AppSection::cash));

    for (int row = 0; row < list->count(); ++row)
        EXPECT_EQ(list->item(row)->text(), app::toQString(app::kSections[row].label));
}

TEST(MainWindow, ReviewCountAddsUncheckedModelFilings) {
    // The count left out what the local model filed unchecked, and showed "0"
    // when nothing waited.
    AppFixture f;
    EXPECT_EQ(f.window->sidebar()->reviewBadge(), "");

    for (const auto state :
         {ReviewState::unresolved, ReviewState::suggested, ReviewState::unresolved})
        addTransaction(*f.runtime, [&](LedgerTransaction& t) { t.review = state; });
    for (int i = 0; i < 2; ++i) {
        addTransaction(*f.runtime, [](LedgerTransaction& t) {
            t.method = MatchMethod::ai;
            t.review = ReviewState::automatic;
        });
    }
    // Neither a voided line nor one set by hand waits.
    addTransaction(*f.runtime, [](LedgerTransaction& t) { t.voided = true; });
    addTransaction(*f.runtime, [](LedgerTransaction& t) { t.review = ReviewState::confirmed; });
    EXPECT_EQ(f.window->sidebar()->reviewBadge(), "5");
}

TEST(MainWindow, ErrorAndStatusStandAsTwoBars) {
    // One bar for both messages meant the status hid the error until the
    // status cleared, and dismissing it dismissed the error too.
    AppFixture f;
    f.window->setStatusLifetime(std::chrono::milliseconds(200));
    f.runtime->setErrorMessage("Copperwick couldn't save: disk I/O error");
    f.runtime->setStatusMessage("Backed up to Copperwick-manual.sqlite.");
    app::MessageBar* error = f.window->messageBars()->errorBar();
    app::MessageBar* status = f.window->messageBars()->statusBar();
    ASSERT_TRUE(error->isVisible());
    ASSERT_TRUE(status->isVisible());
    EXPECT_LT(error->mapTo(f.window.get(), QPoint()).y(),
              status->mapTo(f.window.get(), QPoint()).y());
    EXPECT_EQ(error->text(), "Copperwick couldn't save: disk I/O error");
    EXPECT_EQ(status->text(), "Backed up to Copperwick-manual.sqlite.");

    QTest::mouseClick(error->dismissButton(), Qt::LeftButton);
    EXPECT_FALSE(f.runtime->errorMessage());
    EXPECT_FALSE(error->isVisible());
    EXPECT_EQ(f.runtime->statusMessage(), "Backed up to Copperwick-manual.sqlite.");
    EXPECT_TRUE(status->isVisible());

    // An error stays until dismissed; only the status clears itself.
    f.runtime->setErrorMessage("Copperwick couldn't save: disk I/O error");
    ASSERT_TRUE(waitUntil([&] { return !f.runtime->statusMessage(); }));
    QTest::qWait(300);
    EXPECT_TRUE(f.runtime->errorMessage());
    EXPECT_TRUE(error->isVisible());
    EXPECT_FALSE(status->isVisible());

    f.runtime->setStatusMessage("Undone.");
    QTest::mouseClick(status->dismissButton(), Qt::LeftButton);
    EXPECT_FALSE(f.runtime->statusMessage());
    EXPECT_TRUE(f.runtime->errorMessage());
}

TEST(MainWindow, SecondStatusLivesItsFullTimeFromItsOwnArrival) {
    // The first message's timer cleared the second one early, when it came
    // in the middle of the first one's time.
    AppFixture f;
    const auto lifetime = std::chrono::milliseconds(1000);
    f.window->setStatusLifetime(lifetime);
    f.runtime->setStatusMessage("Saved Report.pdf");
    QTest::qWait(600);
    f.runtime->setStatusMessage("Undone.");
    QElapsedTimer sinceSecond;
    sinceSecond.start();
    QTest::qWait(600);
    EXPECT_EQ(f.runtime->statusMessage(), "Undone.") << "cleared by the first message's time";
    ASSERT_TRUE(waitUntil([&] { return !f.runtime->statusMessage(); }));
    EXPECT_GE(sinceSecond.elapsed(), lifetime.count() - 5);
}

TEST(MainWindow, UndoTitleFollowsTheLastChange) {
    // A label with "&" lost it to a keyboard mnemonic in the menu title.
    AppFixture f;
    QAction* undo = f.window->menus()->undoAction();
    EXPECT_EQ(undo->text(), "Undo Last Change");
    EXPECT_FALSE(undo->isEnabled());

    const Uuid id = addTransaction(*f.runtime, [](LedgerTransaction&) {});
    f.runtime->apply([&](Ledger& ledger) {
        return setVoided(ledger, {id}, true, "Remove AT&T charge", Instant::now());
    });
    EXPECT_EQ(undo->text(), "Undo Remove AT&&T charge");
    EXPECT_TRUE(undo->isEnabled());

    QTest::keyClick(f.window.get(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(f.runtime->ledger().transaction(id)->voided);
    EXPECT_EQ(f.runtime->statusMessage(), "Undone.");
    EXPECT_EQ(f.window->messageBars()->statusBar()->text(), "Undone.");
    EXPECT_EQ(undo->text(), "Undo Last Change");
    EXPECT_FALSE(undo->isEnabled());
}

TEST(MainWindow, DroppedFilesGoToImport) {
    // Files dropped on a screen other than Import were read, but the window
    // stayed where it was and the cards went unseen.
    AppFixture f;
    f.runtime->setSection(AppSection::reports);

    // Something that isn't a local file is no import.
    QMimeData web;
    web.setUrls({QUrl(QStringLiteral("https://example.com/statement.csv"))});
    EXPECT_FALSE(drop(*f.window, web));
    EXPECT_EQ(f.runtime->section(), AppSection::reports);
    EXPECT_EQ(f.importer.pendingAnalyses() + f.importer.files().size(), 0u);

    QMimeData files;
    files.setUrls(
        {QUrl::fromLocalFile(QStringLiteral(COPPERWICK_TEST_DATA "/csv/chase-card.csv"))});
    EXPECT_TRUE(drop(*f.window, files));
    EXPECT_EQ(f.runtime->section(), AppSection::importFiles);
    EXPECT_EQ(f.window->pages()->currentWidget(), f.window->page(AppSection::importFiles));
    // The analysis runs on its own thread; the window takes it in.
    ASSERT_TRUE(waitUntil([&] { return f.importer.files().size() == 1; }));
    EXPECT_EQ(f.importer.files()[0].url.filename(), "chase-card.csv");
    EXPECT_EQ(f.importer.pendingAnalyses(), 0);
}

TEST(MainWindow, FilesFromTheFileManagerOpenInImport) {
    // The desktop entry hands the files a person opened with Copperwick to
    // the program's arguments; they must land on the Import screen as cards,
    // named wherever they were, with nothing saved yet.
    AppFixture f;
    f.runtime->setSection(AppSection::reports);
    const QString statement = QStringLiteral(COPPERWICK_TEST_DATA "/ofx/savings.qfx");
    const app::AppOptions options =
        app::parseAppOptions({QStringLiteral("copperwick-app"), QStringLiteral("--data-dir"),
                              QString::fromStdString(f.runtime->dataFolder().string()), statement});
    ASSERT_EQ(options.files.size(), 1u);
    EXPECT_EQ(options.files[0], std::filesystem::path(statement.toStdString()));
    EXPECT_EQ(options.dataDir, f.runtime->dataFolder());

    const int64_t revision = f.runtime->revision();
    app::openFilesToImport(options, *f.runtime, f.importer);
    EXPECT_EQ(f.window->pages()->currentWidget(), f.window->page(AppSection::importFiles));
    ASSERT_TRUE(waitUntil([&] { return f.importer.files().size() == 1; }));
    EXPECT_EQ(f.importer.files()[0].url.filename(), "savings.qfx");
    EXPECT_GT(f.importer.files()[0].analysis.rows.size(), 0u);
    EXPECT_EQ(f.runtime->revision(), revision);

    // Started with no file, the window stays where it was.
    f.runtime->setSection(AppSection::reports);
    app::openFilesToImport(app::parseAppOptions({QStringLiteral("copperwick-app")}), *f.runtime,
                           f.importer);
    EXPECT_EQ(f.runtime->section(), AppSection::reports);
}

}  // namespace
}  // namespace copperwick
