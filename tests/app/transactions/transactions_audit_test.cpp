// The Transactions screen and its sheets in the whole window on the demo
// workspace, walked as a person with a keyboard and a screen reader meets
// them, at the window's smallest size and a roomy one.

#include <algorithm>

#include <QPushButton>

#include "app/shell/main_window.h"
#include "app/transactions/correction_sheet.h"
#include "app/transactions/manual_entry_sheet.h"
#include "app/transactions/split_sheet.h"
#include "app/transactions/transactions_page.h"
#include "tests/app/app_fixture.h"
#include "tests/app/screen_audit.h"

namespace copperwick::testing {
namespace {

class TransactionsAudit : public ::testing::Test, protected AppWorkspace {
  protected:
    void SetUp() override {
        openRuntime({.demo = true});
        showWindow(AppSection::transactions);
        page = qobject_cast<app::TransactionsPage*>(window->page(AppSection::transactions));
        ASSERT_NE(page, nullptr);
        ASSERT_TRUE(waitUntil([&] { return !page->model()->isReading(); }));
    }

    // What is out of reading order, never reached, misnamed, deaf to Enter
    // or cut short under `root`.
    static QString audit(QWidget* root) {
        const std::vector<QWidget*> walk = tabWalk(root);
        QStringList faults = unreached(walk, root);
        faults += outOfReadingOrder(walk, root);
        faults += misnamedControls(root);
        faults += layoutFaults(root);
        for (QWidget* control : reachableControls(root)) {
            if (auto* button = qobject_cast<QPushButton*>(control);
                button && !button->autoDefault())
                faults.append(describe(button) + QStringLiteral(" doesn't take Enter"));
        }
        return faults.join(QLatin1Char('\n'));
    }

    template <typename Sheet>
    Sheet* shownSheet() {
        Sheet* found = nullptr;
        waitUntil([&] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                if (auto* sheet = qobject_cast<Sheet*>(widget); sheet && sheet->isVisible())
                    found = sheet;
            }
            return found != nullptr;
        });
        if (found) {
            found->activateWindow();
            waitUntil([&] { return QApplication::activeWindow() == found; });
        }
        return found;
    }

    template <typename Sheet>
    void auditAndEscape(const char* name) {
        Sheet* sheet = shownSheet<Sheet>();
        ASSERT_NE(sheet, nullptr) << name;
        EXPECT_EQ(audit(sheet), QString()) << name;
        const std::size_t changes = runtime->ledger().changes.size();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        EXPECT_TRUE(waitUntil([&] {
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                if (qobject_cast<Sheet*>(widget) && widget->isVisible())
                    return false;
            }
            return true;
        })) << name;
        EXPECT_EQ(runtime->ledger().changes.size(), changes) << name;
    }

    app::TransactionsPage* page = nullptr;
};

TEST_F(TransactionsAudit, TheScreenIsWalkedInOrderNamedByItsWordsAndNothingIsCutShort) {
    // A spending line chosen, so that the inspector shows every section.
    const auto& ids = page->model()->ids();
    const auto spending = std::find_if(ids.begin(), ids.end(), [&](const Uuid& id) {
        const LedgerTransaction* line = runtime->ledger().transaction(id);
        return line->kind == TransactionKind::expense && line->amount < 0;
    });
    ASSERT_NE(spending, ids.end());
    page->selectLines({*spending});
    for (const QSize size : {QSize(1000, 700), QSize(1400, 900)}) {
        window->resize(size);
        QApplication::processEvents();
        SCOPED_TRACE(std::to_string(size.width()));
        EXPECT_EQ(audit(page), QString());
    }
}

TEST_F(TransactionsAudit, EverySheetIsWalkedInOrderAndEscapeKeepsNothing) {
    const auto& ids = page->model()->ids();
    const auto spending = std::find_if(ids.begin(), ids.end(), [&](const Uuid& id) {
        const LedgerTransaction* line = runtime->ledger().transaction(id);
        return line->kind == TransactionKind::expense && line->amount < 0 &&
               line->status == TransactionStatus::posted && !line->transferPairID;
    });
    ASSERT_NE(spending, ids.end());
    page->selectLines({*spending});

    page->addButton()->click();
    auditAndEscape<app::ManualEntrySheet>("manual entry");
    EXPECT_EQ(runtime->entryEditorCount(), 0);
    page->inspector()->correctButton()->click();
    auditAndEscape<app::CorrectionSheet>("correction");
    page->inspector()->splitButton()->click();
    auditAndEscape<app::SplitSheet>("split");
}

}  // namespace
}  // namespace copperwick::testing
