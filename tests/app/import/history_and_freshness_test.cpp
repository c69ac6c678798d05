// The two lists under the cards: taking an import back out from the
// history, and answering for an account in the freshness list.

#include <QMenu>
#include <QMessageBox>

#include "app/import/recent_imports_section.h"
#include "core/model/date_text.h"
#include "tests/app/import/import_screen_fixture.h"

namespace copperwick::testing {
namespace {

class ImportHistory : public ImportScreenTest {
  protected:
    void importSample() {
        drop({sample("chase-checking.csv")});
        pressImport();
        ASSERT_EQ(runtime->ledger().transactions.size(), 24u);
    }
    // Clicks the "Undo Import" button painted on the history's row.
    void clickUndo(int row) {
        app::ImportHistoryView* view = page->history()->view();
        const QRect rect = view->visualRect(view->model()->index(row, 0));
        const QRect button = app::ImportHistoryDelegate::buttonRect(rect, view->fontMetrics());
        QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, button.center());
    }
    QPushButton* confirmationButton(const QString& text) {
        QMessageBox* box = page->history()->confirmation();
        if (!box)
            return nullptr;
        for (QAbstractButton* button : box->buttons()) {
            if (button->text() == text)
                return qobject_cast<QPushButton*>(button);
        }
        return nullptr;
    }
};

TEST_F(ImportHistory, ListsEachImportNewestFirstWithItsCounts) {
    EXPECT_TRUE(page->history()->emptyLabel()->isVisibleTo(page));
    EXPECT_EQ(page->history()->emptyLabel()->text(), "Nothing has been imported yet.");
    importSample();
    drop({sample("chase-card.csv")});
    pressImport();

    const auto* model = page->history()->model();
    ASSERT_EQ(model->rowCount(), 2);
    EXPECT_EQ(model->data(model->index(0), Qt::DisplayRole), "chase-card.csv");
    EXPECT_EQ(model->data(model->index(0), app::ImportHistoryModel::kAccountRole),
              "Chase credit card");
    EXPECT_EQ(model->data(model->index(1), Qt::DisplayRole), "chase-checking.csv");
    EXPECT_EQ(model->data(model->index(1), app::ImportHistoryModel::kCountsRole),
              "24 added, 0 already saved");
    EXPECT_FALSE(page->history()->emptyLabel()->isVisibleTo(page));
}

TEST_F(ImportHistory, UndoImportAsksThenRemovesTheRowsAndSaysSo) {
    importSample();
    clickUndo(0);
    QMessageBox* box = page->history()->confirmation();
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), "Undo this import?");
    EXPECT_EQ(box->informativeText(),
              "Everything imported from chase-checking.csv is removed, including any changes you "
              "made to those transactions. Pending charges it replaced come back.");
    QPushButton* remove = confirmationButton("Remove 24 transactions");
    ASSERT_NE(remove, nullptr);
    QTest::mouseClick(remove, Qt::LeftButton);

    EXPECT_EQ(runtime->ledger().transactions.size(), 0u);
    EXPECT_EQ(runtime->ledger().batches.size(), 0u);
    EXPECT_EQ(runtime->statusMessage(), "Removed the import of chase-checking.csv.");
    EXPECT_EQ(page->history()->model()->rowCount(), 0);
    EXPECT_TRUE(page->history()->emptyLabel()->isVisibleTo(page));
}

TEST_F(ImportHistory, EscapeOrEnterOnTheQuestionKeepsTheImport) {
    importSample();
    // Enter on the history's row asks, as the button does.
    page->history()->view()->setFocus();
    page->history()->view()->setCurrentIndex(page->history()->model()->index(0));
    QTest::keyClick(page->history()->view(), Qt::Key_Return);
    ASSERT_NE(page->history()->confirmation(), nullptr);
    QTest::keyClick(page->history()->confirmation(), Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return page->history()->confirmation() == nullptr; }));

    // The question's default answer is the harmless one.
    clickUndo(0);
    ASSERT_NE(page->history()->confirmation(), nullptr);
    QTest::keyClick(page->history()->confirmation(), Qt::Key_Return);
    EXPECT_TRUE(waitUntil([&] { return page->history()->confirmation() == nullptr; }));
    EXPECT_EQ(runtime->ledger().transactions.size(), 24u);
    EXPECT_EQ(page->history()->model()->rowCount(), 1);
}

using AccountFreshnessList = ImportHistory;

TEST_F(AccountFreshnessList, ConfirmingAnAccountCurrentRecordsToday) {
    importSample();
    const QString name = "Chase checking or savings";
    QToolButton* status = page->freshness()->statusButton(name);
    ASSERT_NE(status, nullptr);
    QMenu* menu = status->menu();
    ASSERT_NE(menu, nullptr);
    QStringList answers;
    for (QAction* action : menu->actions())
        answers.append(action->text());
    EXPECT_EQ(answers, (QStringList{"I've Checked — Current Through Today",
                                    "Used Only Occasionally", "Show in Transactions"}));

    menu->actions()[0]->trigger();
    const Account& account = runtime->ledger().accounts[0];
    EXPECT_EQ(account.upToDateThrough, runtime->today());
    QTest::qWait(1);
    const QStringList rows = page->freshness()->rowTexts();
    ASSERT_EQ(rows.size(), 1);
    EXPECT_TRUE(rows[0].contains(QString::fromStdString("You confirmed complete through " +
                                                        DateText::medium(runtime->today()))))
        << rows[0].toStdString();
    EXPECT_TRUE(rows[0].endsWith("Recent activity")) << rows[0].toStdString();
}

TEST_F(AccountFreshnessList, OccasionalAndShowInTransactions) {
    importSample();
    const QString name = "Chase checking or savings";
    page->freshness()->statusButton(name)->menu()->actions()[1]->trigger();
    EXPECT_TRUE(runtime->ledger().accounts[0].rarelyUsed);
    QTest::qWait(1);
    EXPECT_EQ(page->freshness()->statusButton(name)->text(), "Occasional use");

    page->freshness()->statusButton(name)->menu()->actions()[2]->trigger();
    EXPECT_EQ(runtime->section(), AppSection::transactions);
    ASSERT_TRUE(runtime->transactionsFocus());
    EXPECT_EQ(runtime->transactionsFocus()->title, name.toStdString());
    EXPECT_EQ(runtime->transactionsFocus()->ids.size(), 24u);
}

}  // namespace
}  // namespace copperwick::testing
