// The Cash and Settings screens on the demo workspace, held to what every
// screen is held to: nothing cut short or drawn over anything at the sizes
// a person gives the window, nothing wider than the screen, and Tab walking
// every control in reading order, each named by its words and taking Enter.

#include <gtest/gtest.h>

#include <QApplication>
#include <QPushButton>
#include <QScrollArea>

#include "app/shell/sections.h"
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

}  // namespace
}  // namespace copperwick::testing
