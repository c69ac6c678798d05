// Times the desktop application as a person meets it: from a cold start on a
// large data folder to the first screen drawn, then each section's switch,
// first visit and again. Runs offscreen unless a display is asked for.
//
// Last, a card export of 10,000 lines imported through the Import screen's
// model, with the longest the window went without handling its events; a
// review decision, its undo, a built-in rule switched off the same way, and
// a transaction typed by hand.
//
//   app_timing [TRANSACTIONS]     (default 100,000)
//
// Prints one line per figure, in milliseconds.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <QApplication>
#include <QTimer>

#include "app/review/review_page.h"
#include "app/rules/rules_page.h"
#include "app/shell/main_window.h"
#include "app/shell/qt_main_queue.h"
#include "app/shell/sections.h"
#include "app/shell/skin_store.h"
#include "bench/ledger_generator.h"
#include "core/operations/manual_entry.h"
#include "core/review/review_decision.h"
#include "core/store/ledger_store.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"

namespace {

using Clock = std::chrono::steady_clock;

double millisecondsSince(Clock::time_point start) {
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// Lets the window handle what a switch queued, then draws it, as the screen
// would before a person sees the result.
void settleAndDraw(QWidget& window) {
    QCoreApplication::processEvents();
    (void)window.grab();
}

// A year of a Chase card's purchases, in the bank's own layout.
std::string cardExport(int rows) {
    std::string file = "Transaction Date,Post Date,Description,Category,Type,Amount,Memo\n";
    for (int i = 0; i < rows; ++i) {
        const int month = 1 + i % 12;
        const int day = 1 + (i / 12) % 28;
        char line[160];
        std::snprintf(line, sizeof line,
                      "%02d/%02d/2026,%02d/%02d/2026,SHOP %d #%d,Shopping,Sale,-%d.%02d,\n", month,
                      day, month, day, i % 97, i % 13, 1 + i % 300, i % 100);
        file += line;
    }
    return file;
}

// Runs the event loop until `done` holds; the longest gap between two turns
// of a 5 ms timer, which is how long a person's click would have waited.
double longestWaitUntil(const std::function<bool()>& done) {
    double longest = 0;
    auto last = Clock::now();
    QTimer ticker;
    ticker.setInterval(5);
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        longest = std::max(longest, millisecondsSince(last));
        last = Clock::now();
    });
    ticker.start();
    while (!done())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return std::max(longest, millisecondsSince(last));
}

}  // namespace

int main(int argc, char** argv) {
    using namespace copperwick;
    const std::size_t transactions = argc > 1 ? std::stoul(argv[1]) : 100'000;
    if (!std::getenv("QT_QPA_PLATFORM"))
        setenv("QT_QPA_PLATFORM", "offscreen", 1);

    const auto folder = std::filesystem::temp_directory_path() / "copperwick-app-timing";
    std::filesystem::remove_all(folder);
    {
        LedgerStore store(folder / "data" / "Copperwick.sqlite");
        store.saveAll(bench::generateLedger({.transactions = transactions}));
    }
    setenv("XDG_CONFIG_HOME", (folder / "config").c_str(), 1);
    setenv("XDG_DATA_HOME", (folder / "share").c_str(), 1);

    const auto start = Clock::now();
    QApplication application(argc, argv);
    RuntimeOptions options{.dataFolder = folder / "data", .preferencesFolder = folder / "config"};
    options.mainQueue = std::make_shared<app::QtMainQueue>(&application);
    LedgerRuntime runtime(std::move(options));
    const double opened = millisecondsSince(start);
    ImportModel importer;
    app::SkinStore skins(runtime.defaults(), &application);
    skins.applyAppearance();
    app::MainWindow window(runtime, importer);
    window.resize(1200, 800);
    window.show();
    settleAndDraw(window);
    const double firstScreen = millisecondsSince(start);

    std::printf("transactions: %zu\n", runtime.ledger().transactions.size());
    std::printf("data file opened: %.1f ms\n", opened);
    std::printf("first screen drawn: %.1f ms\n", firstScreen);
    for (const char* visit : {"first visit", "again"}) {
        for (const auto& info : app::kSections) {
            const auto section = info.section;
            const auto switchStart = Clock::now();
            runtime.setSection(section);
            settleAndDraw(window);
            std::printf("switch to %s (%s): %.1f ms\n", std::string(info.label).c_str(), visit,
                        millisecondsSince(switchStart));
        }
    }

    constexpr int kRows = 10'000;
    const auto exportFile = folder / "Chase card activity.csv";
    std::ofstream(exportFile, std::ios::binary) << cardExport(kRows);
    runtime.setSection(AppSection::importFiles);
    settleAndDraw(window);
    const auto importStart = Clock::now();
    importer.add({exportFile}, runtime);
    const double analysisWait = longestWaitUntil([&] { return importer.pendingAnalyses() == 0; });
    const double analysed = millisecondsSince(importStart);
    if (importer.readyFiles().empty() && !importer.files().empty()) {
        // The generated ledger has accounts of every kind; a card is chosen as a person would.
        for (const auto& account : runtime.ledger().accounts) {
            if (account.type == AccountType::creditCard) {
                importer.setChoice(ImportFile::AccountChoice::existing(account.id),
                                   importer.files().front().id, runtime);
                break;
            }
        }
    }
    const auto commitStart = Clock::now();
    importer.startCommit(runtime, {});
    const double commitWait = longestWaitUntil([&] { return !importer.isCommitting(); });
    settleAndDraw(window);
    std::printf(
        "import %d rows: analysed in %.1f ms (window waited at most %.1f ms), "
        "saved and shown in %.1f ms (window waited at most %.1f ms): %s\n",
        kRows, analysed, analysisWait, millisecondsSince(commitStart), commitWait,
        importer.lastResult().value_or(runtime.errorMessage().value_or("nothing")).c_str());

    // One review decision, as the Review screen saves it: the window waits
    // for the save and for every screen that redraws after it.
    runtime.setSection(AppSection::review);
    settleAndDraw(window);
    const app::ReviewSnapshot queue = app::readReviewQueue(runtime.ledger(), runtime.today());
    for (const ReviewGroup& group : queue.groups) {
        ReviewDecision decision = ReviewDecisions::initial(runtime.ledger(), group);
        if (decision.kind == TransactionKind::expense && !decision.categoryID) {
            for (const auto& category : runtime.ledger().categories) {
                if (category.group == CategoryGroup::expense) {
                    decision.categoryID = category.id;
                    break;
                }
            }
        }
        if (ReviewDecisions::refusal(runtime.ledger(), group, decision))
            continue;
        // As the card saves it on a history this long: beside the window.
        const auto decideStart = Clock::now();
        std::optional<ApplyResult> result;
        runtime.applyInBackground(
            [&group, decision, now = runtime.now()](Ledger& copy) -> std::optional<LedgerDelta> {
                return ReviewDecisions::decide(copy, group, decision, now);
            },
            [&result](ApplyResult done) { result = std::move(done); });
        const double decisionWait = longestWaitUntil([&] { return result.has_value(); });
        settleAndDraw(window);
        std::printf(
            "review decision on %zu lines: saved and shown in %.1f ms (window waited at "
            "most %.1f ms)%s\n",
            group.transactionIDs.size(), millisecondsSince(decideStart), decisionWait,
            result->saved ? "" : " (not saved)");
        break;
    }

    // Undo (Ctrl+Z) of that decision, as Edit › Undo makes it on a long history.
    const auto undoStart = Clock::now();
    std::optional<bool> undone;
    runtime.undoLastChangeForScreen([&undone](bool result) { undone = result; });
    const double undoWait = longestWaitUntil([&] { return undone.has_value(); });
    settleAndDraw(window);
    std::printf("undo of the decision: %.1f ms (window waited at most %.1f ms)%s\n",
                millisecondsSince(undoStart), undoWait, *undone ? "" : " (nothing undone)");

    // A built-in rule switched off on the Rules screen, which files every
    // line again, and the merchants' counts read again after it.
    runtime.setSection(AppSection::rules);
    settleAndDraw(window);
    auto* rules = qobject_cast<app::RulesPage*>(window.page(AppSection::rules));
    QAbstractItemModel* builtIns = rules->builtInList()->model();
    const auto switchStart = Clock::now();
    builtIns->setData(builtIns->index(0, 0), Qt::Unchecked, Qt::CheckStateRole);
    const double switchWait = longestWaitUntil(
        [&] { return !runtime.isChangingInBackground() && !rules->merchantReading().isReading(); });
    settleAndDraw(window);
    std::printf(
        "built-in rule switched off: saved and shown in %.1f ms (window waited at most "
        "%.1f ms)\n",
        millisecondsSince(switchStart), switchWait);

    // A transaction typed by hand on the Transactions screen's sheet: its
    // safety copy and its save, both beside the window.
    const Ledger& live = runtime.ledger();
    const auto spending =
        std::find_if(live.categories.begin(), live.categories.end(),
                     [](const auto& c) { return c.group == CategoryGroup::expense; });
    copperwick::ManualTransaction entry{.accountID = live.accounts.front().id,
                                        .date = runtime.today(),
                                        .amount = -1250,
                                        .description = "Farmers market",
                                        .categoryID = spending != live.categories.end()
                                                          ? std::optional(spending->id)
                                                          : std::nullopt};
    const auto entryStart = Clock::now();
    std::optional<ApplyResult> entered;
    runtime.commitEntryForScreen(
        [entry, now = runtime.now()](Ledger& ledger) {
            return copperwick::addManualTransaction(ledger, entry, now);
        },
        [&entered](ApplyResult result) { entered = std::move(result); });
    const double entryWait = longestWaitUntil([&] { return entered.has_value(); });
    settleAndDraw(window);
    std::printf(
        "transaction typed by hand: backed up and saved in %.1f ms (window waited at most "
        "%.1f ms)%s\n",
        millisecondsSince(entryStart), entryWait, entered->saved ? "" : " (not saved)");
    std::filesystem::remove_all(folder);
    return 0;
}
