// The built screens as they stand in the window on the demo workspace, from
// the window's smallest size to a wide one: nothing cut short, nothing drawn
// over anything else, and the message bars never over a screen.

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include <QApplication>
#include <QScrollArea>

#include "app/import/import_page.h"
#include "app/review/review_page.h"
#include "app/shell/sections.h"
#include "app/widgets/page_header.h"
#include "tests/app/app_fixture.h"
#include "tests/app/screen_audit.h"

namespace copperwick::testing {
namespace {

class ScreenLayout : public ::testing::Test, protected AppWorkspace {
  protected:
    ScreenLayout() {
        openRuntime({.demo = true});
        showWindow();
    }

    // The sizes a person can give the window, smallest first.
    [[nodiscard]] std::vector<QSize> sizes() const {
        const QSize smallest = window->minimumSize();
        return {smallest,
                {smallest.width() + 137, smallest.height() + 60},
                {1024, 700},
                {1280, 800},
                {1600, 1000}};
    }

    void resize(const QSize& size) {
        window->resize(size);
        QApplication::processEvents();
    }
};

// Every screen at every size, with each of its parts in view in turn.
TEST_F(ScreenLayout, NothingIsCutShortOrDrawnOverAnythingAtAnySize) {
    // A bank file's card too, with its figures and its new account's fields,
    // and a payment to a person, whose card asks what it was for.
    importer.add({std::filesystem::path(COPPERWICK_SAMPLES) / "chase-checking.csv"}, *runtime);
    importer.waitForAnalyses(*runtime);
    addWaitingLine("Zelle payment to Robin Sample", -4500);
    for (const AppSection section : kBuiltScreens) {
        runtime->setSection(section);
        if (section == AppSection::review) {
            const auto cards = qobject_cast<app::ReviewPage*>(window->page(section))->cards();
            ASSERT_TRUE(std::any_of(cards.begin(), cards.end(),
                                    [](auto* card) { return card->asksPurpose(); }));
        }
        settleLocalAI();
        for (const QSize& size : sizes()) {
            resize(size);
            app::SectionPage* page = window->page(section);
            SCOPED_TRACE(std::string(app::sectionInfo(section).slug) + " at " +
                         std::to_string(size.width()) + "\u00D7" + std::to_string(size.height()));
            EXPECT_EQ(layoutFaults(page).join(QLatin1Char('\n')), QString());
            // Nothing wider than the screen: what is cut off at the right
            // can't be scrolled to.
            if (QScrollArea* area = page->scrollArea()) {
                EXPECT_LE(area->widget()->width(), area->viewport()->width());
            }
        }
    }
}

// The drop area's explanatory line was given the width of its hint and the
// height of the card's whole width, and lost its third line.
TEST_F(ScreenLayout, TheDropAreasLineWrapsInFullAtEveryWidth) {
    runtime->setSection(AppSection::importFiles);
    auto* page = qobject_cast<app::ImportPage*>(window->page(AppSection::importFiles));
    QLabel* line = nullptr;
    for (QLabel* label : page->dropArea()->findChildren<QLabel*>()) {
        if (label->wordWrap())
            line = label;
    }
    ASSERT_NE(line, nullptr);
    for (int width = window->minimumWidth(); width <= 1600; width += 23) {
        resize({width, 800});
        SCOPED_TRACE(width);
        EXPECT_GE(line->height(), line->heightForWidth(line->width()));
        const QRect buttons = page->dropArea()->chooseFilesButton()->geometry();
        EXPECT_LE(line->geometry().bottom(), buttons.top());
        EXPECT_TRUE(page->dropArea()->rect().contains(line->geometry()));
    }
}

// A status laid over the top of the window covered the Rules & Merchants
// screen's title for as long as it stood.
TEST_F(ScreenLayout, MessageBarsPushEveryScreenDownRatherThanCoverIt) {
    resize(window->minimumSize());
    runtime->setErrorMessage("Copperwick couldn't save: disk I/O error");
    runtime->setStatusMessage("Undone.");
    QApplication::processEvents();
    const auto* bars = window->messageBars();
    for (const auto& info : app::kSections) {
        runtime->setSection(info.section);
        QApplication::processEvents();
        app::SectionPage* page = window->page(info.section);
        auto* header = page->findChild<app::PageHeader*>();
        ASSERT_NE(header, nullptr) << info.slug;
        const QRect title(header->titleLabel()->mapTo(window.get(), QPoint()),
                          header->titleLabel()->size());
        for (const app::MessageBar* bar : {bars->errorBar(), bars->statusBar()}) {
            ASSERT_TRUE(bar->isVisible());
            const QRect shown(bar->mapTo(window.get(), QPoint()), bar->size());
            EXPECT_FALSE(shown.intersects(title)) << info.slug << ": " << bar->text().toStdString();
        }
        EXPECT_TRUE(window->rect().contains(title)) << info.slug;
    }
    // Once they go, the screen has its room back.
    const int top = window->page(AppSection::rules)->mapTo(window.get(), QPoint()).y();
    runtime->setErrorMessage(std::nullopt);
    runtime->setStatusMessage(std::nullopt);
    QApplication::processEvents();
    EXPECT_LT(window->page(AppSection::rules)->mapTo(window.get(), QPoint()).y(), top);
}

}  // namespace
}  // namespace copperwick::testing
