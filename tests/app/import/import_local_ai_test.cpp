// Local AI on the Import screen: a file no layout fits, read by the model
// when the person asks, or as it arrives when its switch says so, and the
// card telling how that went.

#include "app/import/import_page.h"

#include <gtest/gtest.h>

#include <QApplication>

#include "app/import/import_file_card.h"
#include "tests/app/local_ai_fixture.h"
#include "tests/support/temp_folder.h"

namespace copperwick::testing {
namespace {

namespace json = boost::json;

class ImportWithLocalAI : public ::testing::Test, protected LocalAIWorkspace {
  protected:
    ImportWithLocalAI() {
        openRuntime();
        useServer();
        server.onChat([this](const json::object&) {
            return FakeModelServer::structured(layoutDraft(amountColumn));
        });
        page = &showPage<app::ImportPage>();
    }

    app::ImportFileCard* drop() {
        const auto file = temp / ("odd-" + std::to_string(++dropped) + ".csv");
        writeFile(file, std::string(kOddFile));
        importer.add({file}, *runtime);
        importer.waitForAnalyses(*runtime);
        QApplication::processEvents();
        return page->cards().back();
    }

    bool settled() {
        const bool done = waitUntil([&] { return !bridge->intelligence().isBusy(); });
        QApplication::processEvents();
        return done;
    }

    int amountColumn = 3;
    int dropped = 0;
    app::ImportPage* page = nullptr;
};

TEST_F(ImportWithLocalAI, AskLocalAIReadsTheColumnsAndSaysHowItWent) {
    runtime->defaults().set(preference_keys::aiSetUpLayouts, false);
    app::ImportFileCard* card = drop();
    EXPECT_EQ(card->layoutLabel()->text(), "Layout not recognized");
    ASSERT_TRUE(card->askLocalAIButton()->isVisible());
    EXPECT_TRUE(server.chats().empty()) << "nobody asked yet";

    card->askLocalAIButton()->click();
    QApplication::processEvents();
    ASSERT_TRUE(card->layoutHelp()->isVisible());
    EXPECT_EQ(card->layoutHelpLabel()->text(),
              "Local AI is working out this file's columns, on this computer\u2026");
    EXPECT_TRUE(card->chooseMyselfButton()->isVisible());
    ASSERT_TRUE(settled());
    EXPECT_EQ(card->layoutLabel()->text(), "Layout: Odd Bank");
    EXPECT_EQ(card->layoutHelpLabel()->text(),
              "Local AI set up this layout and Copperwick read 6 rows with it.");
    EXPECT_FALSE(card->chooseMyselfButton()->isVisible());
    EXPECT_FALSE(card->chooseColumnsButton()->isVisible());

    // A reading that doesn't fit leaves the file for the person's own columns.
    amountColumn = 9;
    app::ImportFileCard* second = drop();
    second->askLocalAIButton()->click();
    ASSERT_TRUE(settled());
    EXPECT_EQ(second->layoutHelpLabel()->text(),
              "Local AI's reading of the columns didn't fit this file.");
    EXPECT_TRUE(second->chooseColumnsButton()->isVisible());
    EXPECT_EQ(second->layoutLabel()->text(), "Layout not recognized");
}

TEST_F(ImportWithLocalAI, AFileNoLayoutFitsIsReadAsItArrivesWhileTheSwitchesAllow) {
    app::ImportFileCard* card = drop();
    ASSERT_TRUE(settled());
    EXPECT_EQ(card->layoutLabel()->text(), "Layout: Odd Bank");
    EXPECT_EQ(server.chats().size(), 1u);

    runtime->defaults().set(preference_keys::aiEnabled, false);
    bridge->intelligenceSettingsChanged();
    app::ImportFileCard* off = drop();
    ASSERT_TRUE(settled());
    EXPECT_EQ(server.chats().size(), 1u);
    EXPECT_FALSE(off->askLocalAIButton()->isVisible()) << "switched off, it isn't offered";
    EXPECT_TRUE(off->chooseColumnsButton()->isVisible());
}

}  // namespace
}  // namespace copperwick::testing
