// The Cash and Settings screens on the demo workspace, held to what every
// screen is held to: nothing cut short or drawn over anything at the sizes
// a person gives the window, nothing wider than the screen, and Tab walking
// every control in reading order, each named by its words and taking Enter.

#include <gtest/gtest.h>

#include <QApplication>
#include <QPushButton>
#include <QScrollArea>

#include "app/cash/cash_entry_sheet.h"
#include "app/cash/cash_page.h"
#include "app/cash/new_wallet_sheet.h"
#include "app/settings/account_sheet.h"
#include "app/settings/category_sheets.h"
#include "app/settings/person_sheet.h"
#include "app/settings/record_cards.h"
#include "app/settings/settings_page.h"
#include "app/shell/sections.h"
#include "core/operations/manual_entry.h"
#include "core/operations/record_maintenance.h"
#include "core/operations/upsert_category.h"
#include "tests/app/app_fixture.h"
#include "tests/app/screen_audit.h"

namespace copperwick::testing {
namespace {

constexpr AppSection kScreens[] = {AppSection::cash, AppSection::settings};

class CashAndSettingsAudit : public ::testing::Test, protected AppWorkspace {
  protected:
    CashAndSettingsAudit() {
        openRuntime({.demo = true});
        showWindow();
    }

    void resize(const QSize& size) {
        window->resize(size);
        QApplication::processEvents();
    }
};

TEST_F(CashAndSettingsAudit, NothingIsCutShortOrWiderThanTheScreenAtAnySize) {
    for (const AppSection section : kScreens) {
        runtime->setSection(section);
        settleLocalAI();
        for (const QSize size :
             {window->minimumSize(), QSize(1000, 700), QSize(1400, 900), QSize(1600, 1000)}) {
            resize(size);
            app::SectionPage* page = window->page(section);
            SCOPED_TRACE(std::string(app::sectionInfo(section).slug) + " at " +
                         std::to_string(size.width()));
            EXPECT_EQ(layoutFaults(page).join(QLatin1Char('\n')), QString());
            if (QScrollArea* area = page->scrollArea()) {
                EXPECT_LE(area->widget()->width(), area->viewport()->width());
            }
        }
    }
}

TEST_F(CashAndSettingsAudit, TabWalksEveryControlInReadingOrder) {
    for (const QSize size : {window->minimumSize(), QSize(1400, 900)}) {
        resize(size);
        // Rows made again after a save came last in the chain, after the
        // page's final card.
        if (size.width() == 1400) {
            ASSERT_TRUE(runtime
                            ->apply([](Ledger& copy) {
                                LedgerDelta delta = upsertPerson(
                                    copy, Person{.id = Uuid::random(), .name = "Robin"});
                                delta.merge(upsertCategory(
                                    copy, newCategory(copy, "Garden", CategoryGroup::expense)));
                                return delta;
                            })
                            .saved);
        }
        for (const AppSection section : kScreens) {
            runtime->setSection(section);
            window->sidebar()->list()->setFocus(Qt::OtherFocusReason);
            QApplication::processEvents();
            app::SectionPage* page = window->page(section);
            SCOPED_TRACE(std::string(app::sectionInfo(section).slug) + " at " +
                         std::to_string(size.width()));
            std::vector<QWidget*> walk = tabWalk(page);
            QStringList faults = unreached(walk, page);
            faults += outOfReadingOrder(walk, page);
            faults += misnamedControls(page);
            for (QWidget* control : reachableControls(page)) {
                if (auto* button = qobject_cast<QPushButton*>(control);
                    button && !button->autoDefault())
                    faults.append(describe(button) + QStringLiteral(" doesn't take Enter"));
            }
            EXPECT_EQ(faults.join(QLatin1Char('\n')), QString());
        }
    }
}

// Every sheet of the two screens: nothing cut short, Tab in reading order,
// each control named by its words, and Escape closing it with nothing done.
TEST_F(CashAndSettingsAudit, EverySheetIsWalkedInOrderAndEscapeClosesIt) {
    const auto audit = [&](QDialog* sheet, const char* name) {
        SCOPED_TRACE(name);
        sheet->activateWindow();
        ASSERT_TRUE(waitUntil([&] { return QApplication::activeWindow() == sheet; }));
        EXPECT_EQ(layoutFaults(sheet).join(QLatin1Char('\n')), QString());
        std::vector<QWidget*> walk = tabWalk(sheet);
        QStringList faults = unreached(walk, sheet);
        faults += outOfReadingOrder(walk, sheet);
        faults += misnamedControls(sheet);
        EXPECT_EQ(faults.join(QLatin1Char('\n')), QString());
        const int64_t revision = runtime->revision();
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
        EXPECT_TRUE(waitUntil([&] { return !sheet->isVisible(); }));
        EXPECT_EQ(runtime->revision(), revision);
    };
    runtime->setSection(AppSection::cash);
    auto* cash = qobject_cast<app::CashPage*>(window->page(AppSection::cash));
    app::CashEntrySheet* entry = cash->openCashEntry();
    audit(entry, "cash entry");
    entry = cash->openCashEntry();
    entry->kindField()->setCurrentIndex(
        entry->kindField()->findData(static_cast<int>(ManualEntryKind::withdrawal)));
    audit(entry, "cash withdrawal");
    audit(cash->openNewWallet(), "new wallet");

    runtime->setSection(AppSection::settings);
    auto* settings = qobject_cast<app::SettingsPage*>(window->page(AppSection::settings));
    const Ledger& ledger = runtime->ledger();
    const auto open = [&](QDialog* sheet) {
        sheet->setAttribute(Qt::WA_DeleteOnClose);
        sheet->open();
        return sheet;
    };
    audit(open(new app::PersonSheet(window->bridge(), ledger.people[0].id, settings)), "person");
    audit(open(new app::AccountSheet(window->bridge(), ledger.accounts[0].id, settings)),
          "account");
    audit(open(new app::AccountSheet(window->bridge(), std::nullopt, settings)), "new account");
    audit(open(new app::CategorySheet(window->bridge(), ledger.categories[0].id,
                                      CategoryGroup::expense, settings)),
          "category");
    audit(open(new app::DeleteCategorySheet(window->bridge(), ledger.categories[0].id, settings)),
          "delete category");
}

}  // namespace
}  // namespace copperwick::testing
