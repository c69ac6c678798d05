// The built screens by keyboard alone, as a person who can't use a mouse
// (or a screen reader's user) meets them: Tab walks each screen and sheet
// in the order it reads and reaches every control, every control is named
// by its own words, Enter and Space press buttons, Escape closes every
// sheet, and each screen's main road runs from the sidebar to the ledger
// without a click.

#include <algorithm>
#include <filesystem>

#include <gtest/gtest.h>

#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>

#include "app/import/import_page.h"
#include "app/review/review_page.h"
#include "app/rules/rules_page.h"
#include "app/shell/sections.h"
#include "tests/app/app_fixture.h"
#include "tests/app/screen_audit.h"

namespace copperwick::testing {
namespace {

class Keyboard : public ::testing::Test, protected AppWorkspace {
  protected:
    void open(bool demo = true) {
        openRuntime({.demo = demo});
        showWindow();
    }

    // The keyboard in the sidebar with `section` chosen, as after Ctrl+1…8.
    void startIn(AppSection section) {
        runtime->setSection(section);
        settleLocalAI();
        window->sidebar()->list()->setFocus(Qt::OtherFocusReason);
        QApplication::processEvents();
    }

    static void press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
        QWidget* focused = QApplication::focusWidget();
        ASSERT_NE(focused, nullptr);
        QTest::keyClick(focused, static_cast<Qt::Key>(key), modifiers);
    }

    // A sheet as a window manager gives it: active, with the keyboard.
    static void activate(QWidget* sheet) {
        ASSERT_NE(sheet, nullptr);
        sheet->activateWindow();
        ASSERT_TRUE(waitUntil([&] { return QApplication::activeWindow() == sheet; }));
    }

    static void type(const QString& text) { QTest::keyClicks(QApplication::focusWidget(), text); }

    // Presses Tab until `wanted` has the keyboard; whether it came.
    static bool tabTo(const QWidget* wanted, int most = 300) {
        for (int presses = 0; presses < most; ++presses) {
            if (QApplication::focusWidget() == wanted)
                return true;
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        return QApplication::focusWidget() == wanted;
    }

    template <typename Page>
    Page* page(AppSection section) const {
        return qobject_cast<Page*>(window->page(section));
    }

    // Walks `root` with Tab and says what is out of order, never reached,
    // misnamed or deaf to Enter.
    static QString audit(QWidget* root, const std::vector<const QWidget*>& outOfFlow = {}) {
        std::vector<QWidget*> walk = tabWalk(root);
        QStringList faults = unreached(walk, root);
        std::erase_if(walk, [&](const QWidget* control) {
            return std::any_of(outOfFlow.begin(), outOfFlow.end(), [&](const QWidget* apart) {
                return apart == control || apart->isAncestorOf(control);
            });
        });
        faults += outOfReadingOrder(walk, root);
        faults += misnamedControls(root);
        for (QWidget* control : reachableControls(root)) {
            if (auto* button = qobject_cast<QPushButton*>(control);
                button && !button->autoDefault())
                faults.append(describe(button) + QStringLiteral(" doesn't take Enter"));
        }
        return faults.join(QLatin1Char('\n'));
    }
};

TEST_F(Keyboard, EachScreenIsWalkedInReadingOrderAndNamedByItsWords) {
    open();
    // A payment to a person too: its card asks what it was for.
    addWaitingLine("Zelle payment to Robin Sample", -4500);
    for (const QSize size : {window->minimumSize(), QSize(1280, 800)}) {
        window->resize(size);
        for (const AppSection section : kBuiltScreens) {
            startIn(section);
            app::SectionPage* shown = window->page(section);
            SCOPED_TRACE(std::string(app::sectionInfo(section).slug) + " at " +
                         std::to_string(size.width()));
            // The import bar stands for the files above it: Tab reaches
            // Import right after the last file, wherever the bar is drawn.
            std::vector<const QWidget*> apart;
            if (auto* import = qobject_cast<app::ImportPage*>(shown))
                apart.push_back(import->importBar());
            EXPECT_EQ(audit(shown, apart), QString());
        }
    }
}

TEST_F(Keyboard, EverySheetIsWalkedInReadingOrderNamedByItsWordsAndEscapeCloses) {
    open();
    const auto closesOnEscape = [&](QDialog* sheet) {
        EXPECT_EQ(layoutFaults(sheet).join(QLatin1Char('\n')), QString())
            << describe(sheet).toStdString();
        const std::size_t changes = runtime->ledger().changes.size();
        press(Qt::Key_Escape);
        EXPECT_TRUE(waitUntil([&] { return !sheet->isVisible(); }));
        EXPECT_EQ(runtime->ledger().changes.size(), changes);
    };

    startIn(AppSection::rules);
    auto* rules = page<app::RulesPage>(AppSection::rules);
    app::RuleEditorSheet* ruleEditor = rules->openRuleEditor();
    activate(ruleEditor);
    EXPECT_EQ(audit(ruleEditor), QString()) << "rule editor";
    closesOnEscape(ruleEditor);

    app::MerchantEditorSheet* merchantEditor =
        rules->openMerchantEditor((*runtime->ledger().merchants.begin()).id);
    activate(merchantEditor);
    EXPECT_EQ(audit(merchantEditor), QString()) << "merchant editor";
    closesOnEscape(merchantEditor);

    startIn(AppSection::importFiles);
    auto* import = page<app::ImportPage>(AppSection::importFiles);
    import->showLayouts();
    activate(import->layoutsSheet());
    EXPECT_EQ(audit(import->layoutsSheet()), QString()) << "bank file layouts";
    closesOnEscape(import->layoutsSheet());

    const auto unknown = temp / "credit-union.csv";
    writeFile(unknown, "Posted On,Narrative,Sum\n2026-01-03,CORNER COFFEE,-4.50\n");
    importer.add({unknown}, *runtime);
    importer.waitForAnalyses(*runtime);
    ASSERT_FALSE(import->cards().empty());
    importer.setMappingFileID(import->cards().back()->fileID());
    ASSERT_TRUE(waitUntil([&] { return import->mappingSheet() != nullptr; }));
    activate(import->mappingSheet());
    EXPECT_EQ(audit(import->mappingSheet()), QString()) << "choose columns";
    closesOnEscape(import->mappingSheet());
}

// Review: from the sidebar into the screen, on to a group that waits for a
// category, one chosen with the arrows, and Enter files the whole group.
TEST_F(Keyboard, ReviewFilesAGroupFromTheSidebar) {
    open();
    startIn(AppSection::review);
    auto* review = page<app::ReviewPage>(AppSection::review);
    const auto cards = review->cards();
    const auto waiting = std::find_if(cards.begin(), cards.end(), [](app::ReviewGroupCard* card) {
        return card->categoryBox()->isEnabled() && card->categoryBox()->currentIndex() < 0;
    });
    ASSERT_NE(waiting, cards.end());
    app::ReviewGroupCard* card = *waiting;
    const ReviewGroup group = card->group();

    ASSERT_TRUE(tabTo(card->categoryBox()));
    press(Qt::Key_Down);
    const QString chosen = card->categoryBox()->currentText();
    ASSERT_FALSE(chosen.isEmpty());
    press(Qt::Key_Return);

    const Ledger& ledger = runtime->ledger();
    for (const Uuid& id : group.transactionIDs) {
        const LedgerTransaction* line = ledger.transaction(id);
        ASSERT_NE(line, nullptr);
        EXPECT_EQ(line->review, ReviewState::confirmed);
        EXPECT_EQ(ledger.category(line->categoryID)->name, chosen.toStdString());
    }
    EXPECT_EQ(review->card(group.id), nullptr);
}

// Rules & Merchants: "New Rule" from the sidebar, the pattern typed, a
// category chosen, and Enter adds the rule, which files the lines it
// matches; a second one left with Escape leaves nothing behind.
TEST_F(Keyboard, RulesAddsARuleFromTheSidebarAndEscapeKeepsNothing) {
    open();
    startIn(AppSection::rules);
    auto* rules = page<app::RulesPage>(AppSection::rules);
    ASSERT_TRUE(tabTo(rules->newRuleButton()));
    press(Qt::Key_Return);
    auto* sheet = qobject_cast<app::RuleEditorSheet*>(rules->openSheet());
    activate(sheet);
    EXPECT_EQ(QApplication::focusWidget(), sheet->patternField());
    type(QStringLiteral("DEMO COFFEE"));
    ASSERT_TRUE(tabTo(sheet->categoryField()));
    while (sheet->categoryField()->currentText() != QStringLiteral("Dining")) {
        const int before = sheet->categoryField()->currentIndex();
        press(Qt::Key_Down);
        ASSERT_NE(sheet->categoryField()->currentIndex(), before) << "no Dining to choose";
    }
    ASSERT_TRUE(waitUntil([&] { return !sheet->isPreviewPending(); }));
    press(Qt::Key_Return);

    ASSERT_EQ(runtime->ledger().rules.size(), 1u);
    const Rule saved = runtime->ledger().rules.front();
    EXPECT_EQ(saved.pattern, "DEMO COFFEE");
    std::size_t filed = 0;
    for (const auto& line : runtime->ledger().transactions) {
        if (line.method == MatchMethod::userRule) {
            EXPECT_EQ(runtime->ledger().category(line.categoryID)->name, "Dining");
            ++filed;
        }
    }
    EXPECT_GT(filed, 0u);
    EXPECT_EQ(rules->ruleModel()->rowCount(), 1);

    // The keyboard is back on "New Rule"; Space opens the editor again.
    activate(window.get());
    EXPECT_EQ(QApplication::focusWidget(), rules->newRuleButton());
    const std::size_t changes = runtime->ledger().changes.size();
    press(Qt::Key_Space);
    sheet = qobject_cast<app::RuleEditorSheet*>(rules->openSheet());
    activate(sheet);
    type(QStringLiteral("CORNER BAKERY"));
    press(Qt::Key_Escape);
    EXPECT_TRUE(waitUntil([&] { return rules->openSheet() == nullptr; }));
    EXPECT_EQ(runtime->ledger().rules.size(), 1u);
    EXPECT_EQ(runtime->ledger().changes.size(), changes);
}

// Enter on a sheet's Cancel pressed the sheet's default button instead,
// and saved what the person meant to throw away.
TEST_F(Keyboard, EnterOnCancelCancels) {
    open();
    startIn(AppSection::rules);
    auto* rules = page<app::RulesPage>(AppSection::rules);
    const std::size_t changes = runtime->ledger().changes.size();

    app::RuleEditorSheet* ruleEditor = rules->openRuleEditor();
    activate(ruleEditor);
    type(QStringLiteral("DEMO COFFEE"));
    ruleEditor->categoryField()->setCurrentIndex(0);
    ASSERT_TRUE(ruleEditor->saveButton()->isEnabled());
    ASSERT_TRUE(tabTo(ruleEditor->cancelButton()));
    press(Qt::Key_Return);
    EXPECT_TRUE(waitUntil([&] { return rules->openSheet() == nullptr; }));
    EXPECT_TRUE(runtime->ledger().rules.empty());

    const Merchant merchant = *runtime->ledger().merchants.begin();
    app::MerchantEditorSheet* merchantEditor = rules->openMerchantEditor(merchant.id);
    activate(merchantEditor);
    type(QStringLiteral(" Renamed"));
    ASSERT_TRUE(merchantEditor->saveButton()->isEnabled());
    ASSERT_TRUE(tabTo(merchantEditor->cancelButton()));
    press(Qt::Key_Return);
    EXPECT_TRUE(waitUntil([&] { return rules->openSheet() == nullptr; }));
    EXPECT_EQ(runtime->ledger().merchant(merchant.id)->name, merchant.name);
    EXPECT_EQ(runtime->ledger().changes.size(), changes);
}

// Import: "Choose Files" from the sidebar, and Import once the file is read.
TEST_F(Keyboard, ImportBringsAFileInFromTheSidebar) {
    open(false);
    auto* import = page<app::ImportPage>(AppSection::importFiles);
    app::FilePanels panels;
    panels.openBankFiles = [](QWidget*) {
        return std::vector{std::filesystem::path(COPPERWICK_SAMPLES) / "chase-checking.csv"};
    };
    import->setFilePanels(panels);
    startIn(AppSection::importFiles);

    ASSERT_TRUE(tabTo(import->dropArea()->chooseFilesButton()));
    press(Qt::Key_Return);
    ASSERT_TRUE(waitUntil([&] { return !import->cards().empty() && !importer.isBusy(); }));
    QPushButton* button = import->importBar()->importButton();
    ASSERT_TRUE(waitUntil([&] { return button->isEnabled(); }));
    ASSERT_TRUE(tabTo(button));
    press(Qt::Key_Return);

    ASSERT_TRUE(waitUntil([&] { return runtime->ledger().batches.size() == 1; }));
    EXPECT_EQ(runtime->ledger().transactions.size(), 24u);
    EXPECT_EQ(runtime->ledger().batches.front().fileName, "chase-checking.csv");
}

// The menus open from the keyboard, and the Go menu takes the person to a
// section with the arrows and Enter.
TEST_F(Keyboard, MenusOpenFromTheKeyboard) {
    open();
    startIn(AppSection::importFiles);
    press(Qt::Key_G, Qt::AltModifier);
    ASSERT_TRUE(waitUntil([] { return QApplication::activePopupWidget() != nullptr; }));
    auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    const QString wanted = QStringLiteral("Rules && Merchants");
    for (int presses = 0; presses < 10; ++presses) {
        if (menu->activeAction() && menu->activeAction()->text() == wanted)
            break;
        QTest::keyClick(menu, Qt::Key_Down);
    }
    ASSERT_NE(menu->activeAction(), nullptr);
    ASSERT_EQ(menu->activeAction()->text(), wanted);
    QTest::keyClick(menu, Qt::Key_Return);
    EXPECT_TRUE(waitUntil([&] { return runtime->section() == AppSection::rules; }));
    EXPECT_EQ(window->pages()->currentWidget(), window->page(AppSection::rules));
}

}  // namespace
}  // namespace copperwick::testing
