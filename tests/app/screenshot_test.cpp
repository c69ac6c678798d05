// Pictures of the built screens on the demo workspace, in the light and the
// dark form of the default skin, at 1280 by 800 and at the window's smallest
// size, then every Reports tab, a line chosen in Transactions, a question
// answered on the Ask screen and the sheets, for a person to look at:
// written only when COPPERWICK_SCREENSHOT_DIR names a folder. Local AI is a
// fake model server on this computer that answers from the program's own
// words. The README's pictures are the 1280 by 800 ones. Settings' Updates
// card has pictures of its own, in a build that checks for updates.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include <QApplication>
#include <QDir>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>

#include "app/ask/ask_page.h"
#include "app/cash/cash_entry_sheet.h"
#include "app/cash/cash_page.h"
#include "app/import/import_page.h"
#include "app/reports/pdf_export_sheet.h"
#include "app/reports/reports_page.h"
#include "app/review/review_page.h"
#include "app/rules/rules_page.h"
#include "app/settings/account_sheet.h"
#include "app/settings/settings_page.h"
#include "app/settings/updates_card.h"
#include "app/shell/main_window.h"
#include "app/shell/qt_main_queue.h"
#include "app/shell/skin_store.h"
#include "app/shell/update_service.h"
#include "app/transactions/transactions_page.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"
#include "runtime/on_device_model.h"
#include "runtime/preferences.h"
#include "tests/support/fake_model_server.h"
#include "tests/support/model_test_support.h"
#include "tests/support/temp_folder.h"
#include "tests/support/update_feed_server.h"

namespace copperwick::app {
namespace {

struct Shot {
    AppSection section;
    const char* name;
};

constexpr Shot kShots[] = {{AppSection::importFiles, "import"},
                           {AppSection::review, "review"},
                           {AppSection::transactions, "transactions"},
                           {AppSection::reports, "reports"},
                           {AppSection::cash, "cash"},
                           {AppSection::ask, "ask"},
                           {AppSection::rules, "rules"},
                           {AppSection::settings, "settings"}};

// The area a screen scrolls in: the largest one on it.
// A model that knows a few of the demo's bank texts, reads the columns of
// an odd bank file, explains a charge, summarises a report by copying its
// first three facts word for word, and answers a question with what one
// lookup of the recurring charges says.
// Saves a picture of `widget` as FOLDER/NAME.png, once what it shows has settled.
void saveShot(QWidget* widget, const QString& folder, const QString& name) {
    QApplication::processEvents();
    EXPECT_TRUE(widget->grab().save(QDir(folder).filePath(name + ".png"))) << name.toStdString();
}

// Turns the light or dark appearance on and gives its name for the pictures.
QString showIn(copperwick::app::SkinStore& skins, bool dark) {
    using namespace copperwick;
    SkinPreference preference = skins.preference();
    preference.appearance = dark ? AppearanceMode::dark : AppearanceMode::light;
    skins.update(preference);
    skins.applyAppearance();
    return dark ? QStringLiteral("dark") : QStringLiteral("light");
}

void answerAsAModelWould(copperwick::testing::FakeModelServer& server) {
    namespace json = boost::json;
    using copperwick::testing::FakeModelServer;
    server.onChat([](const json::object& request) {
        const std::string system = FakeModelServer::said(request, "system");
        const std::string user = FakeModelServer::said(request, "user");
        if (system == OnDeviceModelText::kWriteNarrative) {
            std::istringstream lines(user);
            json::array bullets;
            for (std::string line; std::getline(lines, line) && bullets.size() < 3;) {
                const auto colon = line.find(": ");
                if (line.rfind('F', 0) == 0 && colon != std::string::npos)
                    bullets.push_back(json::object{
                        {"text", line.substr(colon + 2)},
                        {"factIDs", json::array{json::string(line.substr(0, colon))}}});
            }
            return FakeModelServer::structured({{"bullets", bullets}});
        }
        if (system == OnDeviceModelText::kGuessMerchant) {
            const bool market = user.find("DEMO MARKET") != std::string::npos;
            return FakeModelServer::structured({{"merchant", market ? "Demo Market" : "unknown"},
                                                {"category", market ? "Groceries" : ""},
                                                {"kind", market ? "expense" : "unknown"},
                                                {"reason", "A grocery store paid by debit card."}});
        }
        if (system == OnDeviceModelText::kProposeLayout)
            return FakeModelServer::structured(copperwick::testing::layoutDraft(3));
        if (system == OnDeviceModelText::kExplain)
            return FakeModelServer::structured(
                {{"explanation",
                  "Most likely a purchase at the business named in the bank's text; the number "
                  "after it is usually the store's. If it looks unfamiliar, check your receipts or "
                  "your bank's app."},
                 {"confidence", "high"}});
        const auto& last = request.at("messages").as_array().back().as_object();
        if (last.at("role").as_string() == "user")
            return FakeModelServer::toolCall("recurringCharges", {{"person", "everyone"}});
        return FakeModelServer::text("Here is what Copperwick found. " +
                                     std::string(last.at("content").as_string()));
    });
}

QScrollArea* scrollingArea(QWidget* page) {
    QScrollArea* largest = nullptr;
    for (auto* area : page->findChildren<QScrollArea*>()) {
        if (area->isVisible() && (!largest || area->height() > largest->height()))
            largest = area;
    }
    return largest;
}

TEST(Screenshots, BuiltScreensInLightAndDarkAtBothSizes) {
    const QString folder = qEnvironmentVariable("COPPERWICK_SCREENSHOT_DIR");
    if (folder.isEmpty())
        GTEST_SKIP() << "COPPERWICK_SCREENSHOT_DIR names no folder";
    copperwick::testing::TempFolder preferences;
    copperwick::testing::FakeModelServer server;
    answerAsAModelWould(server);
    // A demo reads the model server's address from the person's own preferences.
    Preferences(Preferences::liveFile(preferences.path()))
        .set(preference_keys::aiEndpoint, server.endpoint());
    RuntimeOptions options;
    options.demo = true;
    options.preferencesFolder = preferences.path();
    // Work of other threads comes back through the event loop, as in the application.
    options.mainQueue = std::make_shared<QtMainQueue>(qApp);
    LedgerRuntime runtime(std::move(options));
    ImportModel importer;
    // A child of the application, as main() makes it, where Settings finds it.
    SkinStore skins(runtime.defaults(), qApp);
    const auto save = [&](QWidget* widget, const QString& name) { saveShot(widget, folder, name); };

    for (const bool dark : {false, true}) {
        const QString form = showIn(skins, dark);
        MainWindow window(runtime, importer);
        window.show();
        for (const Shot& shot : kShots) {
            runtime.setSection(shot.section);
            const QString name = QString::fromLatin1(shot.name) + QLatin1Char('-') + form;
            window.resize(1280, 800);
            save(&window, name);
            // The end of the screen, where it scrolls.
            if (QScrollArea* area = scrollingArea(window.page(shot.section))) {
                QScrollBar* bar = area->verticalScrollBar();
                bar->setValue(bar->maximum());
                save(&window, name + QStringLiteral("-end"));
                bar->setValue(0);
            }
            window.resize(window.minimumSize());
            save(&window, name + QStringLiteral("-smallest"));
            // A status standing over the screen, as after an undo.
            runtime.setStatusMessage("Undone.");
            save(&window, name + QStringLiteral("-smallest-status"));
            runtime.setStatusMessage(std::nullopt);
        }
        // A bank file's card on the Import screen, at both sizes.
        runtime.setSection(AppSection::importFiles);
        importer.add({std::filesystem::path(COPPERWICK_SAMPLES) / "chase-checking.csv"}, runtime);
        importer.waitForAnalyses(runtime);
        window.resize(1280, 800);
        save(&window, QStringLiteral("import-") + form + QStringLiteral("-file"));
        window.resize(window.minimumSize());
        save(&window, QStringLiteral("import-") + form + QStringLiteral("-file-smallest"));
        importer.clear();

        // Every Reports tab over three months, and a figure's drill-down.
        window.resize(1280, 800);
        runtime.setSection(AppSection::reports);
        auto* reports = qobject_cast<ReportsPage*>(window.page(AppSection::reports));
        ASSERT_NE(reports, nullptr);
        reports->periodBox()->setCurrentIndex(static_cast<int>(PeriodChoice::last3Months));
        for (int wait = 0; wait < 500 && reports->isBuilding(); ++wait)
            QTest::qWait(10);
        for (ReportTab tab : kReportTabs) {
            reports->setTab(tab);
            save(&window, QStringLiteral("reports-") + tabLabel(tab).toLower() + QLatin1Char('-') +
                              form + QStringLiteral("-tab"));
        }
        reports->setTab(ReportTab::overview);
        reports->tile(QStringLiteral("Spending"))->click();
        save(reports->drillDownSheet(), QStringLiteral("sheet-drilldown-") + form);
        reports->drillDownSheet()->reject();
        PDFExportSheet* pdfSheet = reports->exportPDF();
        ASSERT_NE(pdfSheet, nullptr);
        save(pdfSheet, QStringLiteral("sheet-pdf-") + form);
        pdfSheet->reject();

        // A spending line chosen in Transactions, with its details.
        runtime.setSection(AppSection::transactions);
        auto* transactions = qobject_cast<TransactionsPage*>(window.page(AppSection::transactions));
        ASSERT_NE(transactions, nullptr);
        for (int wait = 0; wait < 500 && transactions->model()->isReading(); ++wait)
            QTest::qWait(10);
        const auto& ids = transactions->model()->ids();
        const auto spending = std::find_if(ids.begin(), ids.end(), [&](const Uuid& id) {
            return runtime.ledger().transaction(id)->kind == TransactionKind::expense;
        });
        if (spending != ids.end())
            transactions->selectLines({*spending});
        save(&window, QStringLiteral("transactions-") + form + QStringLiteral("-chosen"));
        // The same line asked about: "What is this charge?" answered.
        if (auto* question = transactions->inspector()->chargeQuestion()) {
            question->askButton()->click();
            for (int wait = 0; wait < 500 && !window.bridge().intelligence().explaining().empty();
                 ++wait)
                QTest::qWait(10);
            transactions->inspector()->ensureWidgetVisible(question);
            save(&window, QStringLiteral("transactions-") + form + QStringLiteral("-explained"));
        }

        // Review once Local AI has filed what it was sure of, at the section
        // that waits for the person's look; Undo then takes the run back.
        runtime.setSection(AppSection::review);
        auto* review = qobject_cast<ReviewPage*>(window.page(AppSection::review));
        ASSERT_NE(review, nullptr);
        review->intelligenceBar()->startButton()->click();
        for (int wait = 0; wait < 1000 && window.bridge().intelligence().isSuggesting(); ++wait)
            QTest::qWait(10);
        QApplication::processEvents();
        review->scrollArea()->ensureWidgetVisible(review->aiFiledSection(), 0, 0);
        save(&window, QStringLiteral("review-") + form + QStringLiteral("-filed"));
        runtime.undoLastChange();
        runtime.setStatusMessage(std::nullopt);

        // A question answered on the Ask screen with its lookups open, and
        // the same screen with the model server not answering.
        runtime.setSection(AppSection::ask);
        auto* ask = qobject_cast<AskPage*>(window.page(AppSection::ask));
        ASSERT_NE(ask, nullptr);
        for (int wait = 0; wait < 500 && !window.bridge().modelStatus().isAvailable(); ++wait)
            QTest::qWait(10);
        ask->sampleButtons().at(2)->click();
        for (int wait = 0; wait < 1000 && ask->cards().empty(); ++wait)
            QTest::qWait(10);
        ASSERT_FALSE(ask->cards().empty());
        ask->cards().back()->lookupsToggle()->click();
        save(&window, QStringLiteral("ask-") + form + QStringLiteral("-answered"));
        window.resize(window.minimumSize());
        save(&window, QStringLiteral("ask-") + form + QStringLiteral("-answered-smallest"));
        window.resize(1280, 800);
        server.onModels([](const boost::json::object&) {
            return copperwick::testing::FakeModelServer::Reply{.status = 500};
        });
        window.bridge().checkModel();
        for (int wait = 0; wait < 500 && !ask->notice()->isVisible(); ++wait)
            QTest::qWait(10);
        save(&window, QStringLiteral("ask-") + form + QStringLiteral("-unavailable"));
        server.onModels({});
        window.bridge().checkModel();
        for (int wait = 0; wait < 500 && ask->notice()->isVisible(); ++wait)
            QTest::qWait(10);
        window.bridge().intelligence().clearAnswers();

        // The sheets, each as it opens.
        runtime.setSection(AppSection::cash);
        CashEntrySheet* cashEntry =
            qobject_cast<CashPage*>(window.page(AppSection::cash))->openCashEntry();
        ASSERT_NE(cashEntry, nullptr);
        // A deposit, which asks for the bank side too.
        cashEntry->kindField()->setCurrentIndex(5);
        save(cashEntry, QStringLiteral("sheet-cash-") + form);
        cashEntry->reject();
        {
            AccountSheet account(window.bridge(), runtime.ledger().accounts[0].id, &window);
            account.show();
            save(&account, QStringLiteral("sheet-account-") + form);
        }
        runtime.setSection(AppSection::rules);
        auto* rules = qobject_cast<RulesPage*>(window.page(AppSection::rules));
        ASSERT_NE(rules, nullptr);
        RuleEditorSheet* ruleEditor = rules->openRuleEditor();
        ASSERT_NE(ruleEditor, nullptr);
        QTest::keyClicks(ruleEditor->patternField(), QStringLiteral("DEMO COFFEE"));
        ruleEditor->minimumField()->setText(QStringLiteral("ten"));
        for (int wait = 0; wait < 500 && ruleEditor->isPreviewPending(); ++wait)
            QTest::qWait(10);
        save(ruleEditor, QStringLiteral("sheet-rule-") + form);
        ruleEditor->reject();
        MerchantEditorSheet* merchantEditor =
            rules->openMerchantEditor((*runtime.ledger().merchants.begin()).id);
        ASSERT_NE(merchantEditor, nullptr);
        save(merchantEditor, QStringLiteral("sheet-merchant-") + form);
        merchantEditor->reject();
        runtime.setSection(AppSection::importFiles);
        auto* import = qobject_cast<ImportPage*>(window.page(AppSection::importFiles));
        import->showLayouts();
        save(import->layoutsSheet(), QStringLiteral("sheet-layouts-") + form);
        import->layoutsSheet()->reject();
        // A file no layout fits, read by Local AI as it arrives.
        const auto odd = preferences.path() / "odd-bank.csv";
        copperwick::testing::writeFile(odd,
                                       "Booked;Text;Sum;Left\n2026-03-01;COFFEE SHOP;-4.50;100.00\n"
                                       "2026-03-02;GROCER;-30.10;69.90\n"
                                       "2026-03-03;PAYROLL;1000.00;1069.90\n");
        importer.add({odd}, runtime);
        importer.waitForAnalyses(runtime);
        for (int wait = 0; wait < 500 && window.bridge().intelligence().isBusy(); ++wait)
            QTest::qWait(10);
        save(&window, QStringLiteral("import-") + form + QStringLiteral("-local-ai"));
        importer.clear();
        const auto unknown = preferences.path() / "credit-union.csv";
        copperwick::testing::writeFile(unknown,
                                       "Posted On,Narrative,Sum\n2026-01-03,CORNER COFFEE,-4.50\n");
        importer.add({unknown}, runtime);
        importer.waitForAnalyses(runtime);
        importer.setMappingFileID(import->cards().back()->fileID());
        QApplication::processEvents();
        ASSERT_NE(import->mappingSheet(), nullptr);
        save(import->mappingSheet(), QStringLiteral("sheet-columns-") + form);
        import->mappingSheet()->reject();
        importer.clear();
        QApplication::processEvents();
    }
}

// Settings' Updates card in a build that checks for updates, on a live
// workspace: a version downloaded and waiting while an entry editor is open,
// then the question once the program is idle, in the light and the dark form.
TEST(Screenshots, TheUpdatesCardInLightAndDark) {
    const QString folder = qEnvironmentVariable("COPPERWICK_SCREENSHOT_DIR");
    if (folder.isEmpty())
        GTEST_SKIP() << "COPPERWICK_SCREENSHOT_DIR names no folder";
    using namespace std::chrono_literals;
    copperwick::testing::TempFolder workspace;
    copperwick::testing::UpdateFeedServer server;
    copperwick::testing::TestSigningKey key;
    const std::string package = "!<arch>\na newer Copperwick\n";
    server.serve("/copperwick.deb", package);
    server.serveFeed(copperwick::testing::feedXML({{.version = "0.2.0",
                                                    .url = server.url("/copperwick.deb"),
                                                    .length = package.size(),
                                                    .signature = key.sign(package)}}));
    RuntimeOptions options;
    options.dataFolder = workspace / "Copperwick";
    options.preferencesFolder = workspace / "config";
    options.mainQueue = std::make_shared<QtMainQueue>(qApp);
    LedgerRuntime runtime(std::move(options));
    runtime.defaults().set(preference_keys::automaticallyChecksForUpdates, true);
    ImportModel importer;
    SkinStore skins(runtime.defaults(), qApp);
    auto clock = std::make_shared<copperwick::testing::ManualAlarmClock>();
    UpdateService updates(
        runtime,
        UpdateConfiguration{
            .feed = server.feedURL(), .publicKey = key.publicKey(), .runningVersion = "0.1.0"},
        qApp, clock);
    updates.controller().start();
    for (int wait = 0; wait < 500 && updates.controller().isBusy(); ++wait)
        QTest::qWait(10);
    const auto save = [&](QWidget* widget, const QString& name) { saveShot(widget, folder, name); };
    for (const bool dark : {false, true}) {
        const QString form = showIn(skins, dark);
        MainWindow window(runtime, importer);
        window.resize(1280, 800);
        window.show();
        runtime.setSection(AppSection::settings);
        auto* settings = qobject_cast<SettingsPage*>(window.page(AppSection::settings));
        ASSERT_NE(settings, nullptr);
        // Found, not yet downloaded: downloads are off.
        save(settings->updates(), QStringLiteral("settings-updates-") + form);
        runtime.setEntryEditorCount(1);
        updates.controller().checkNow();
        for (int wait = 0; wait < 500 && !updates.controller().heldBy(); ++wait)
            QTest::qWait(10);
        save(settings->updates(),
             QStringLiteral("settings-updates-") + form + QStringLiteral("-waiting"));
        if (QScrollArea* area = scrollingArea(settings)) {
            area->verticalScrollBar()->setValue(area->verticalScrollBar()->maximum());
            save(&window, QStringLiteral("settings-") + form + QStringLiteral("-updates"));
        }
        runtime.setEntryEditorCount(0);
        clock->advance(std::chrono::duration_cast<std::chrono::milliseconds>(
            UpdateInstallPolicy::retryInterval));
        ASSERT_NE(updates.question(), nullptr);
        save(updates.question(), QStringLiteral("sheet-update-") + form);
        updates.question()->reject();
    }
}

}  // namespace
}  // namespace copperwick::app
