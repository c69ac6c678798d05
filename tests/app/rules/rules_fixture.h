#pragma once

// The Rules & Merchants screen on a runtime of its own: a ledger written to a
// temporary data folder first, preferences beside it, work from other
// threads coming back through Qt's event loop, and the page shown in an
// active window so that its keys work as they do for a person. The shared
// application tests' waitUntil turns the event loop.

#include <filesystem>
#include <memory>

#include <QApplication>
#include <QTest>

#include <gtest/gtest.h>

#include "app/rules/rules_page.h"
#include "app/shell/qt_main_queue.h"
#include "app/shell/runtime_bridge.h"
#include "core/store/ledger_store.h"
#include "runtime/data_folders.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"
#include "tests/app/app_fixture.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/temp_folder.h"

namespace copperwick::testing {

class RulesScreenTest : public ::testing::Test {
  protected:
    ~RulesScreenTest() override {
        // The page and the bridge observe the runtime; they go first.
        page.reset();
        bridge.reset();
    }

    // Writes the builder's ledger as the data file, then opens the runtime
    // on it and shows the page. Work of other threads comes back through the
    // event loop, or through `queue` when a test hands results over itself.
    void open(std::shared_ptr<MainQueue> queue = nullptr) {
        const auto folder = temp / "Copperwick";
        std::filesystem::create_directories(folder);
        {
            LedgerStore store(data_folders::dataFile(folder));
            store.saveAll(builder.ledger());
        }
        RuntimeOptions options;
        options.dataFolder = folder;
        options.preferencesFolder = temp / "config";
        options.mainQueue = queue ? std::move(queue) : std::make_shared<app::QtMainQueue>(qApp);
        runtime = std::make_unique<LedgerRuntime>(options);
        bridge = std::make_unique<app::RuntimeBridge>(*runtime, importer);
        page = std::make_unique<app::RulesPage>(*bridge);
        page->resize(900, 1400);
        page->show();
        page->activateWindow();
        (void)QTest::qWaitForWindowActive(page.get());
    }

    [[nodiscard]] const Ledger& ledger() const { return runtime->ledger(); }

    Rule rule(std::string name, std::string pattern, std::string_view category = "Dining") {
        return Rule{.id = Uuid::random(),
                    .name = std::move(name),
                    .pattern = std::move(pattern),
                    .kind = TransactionKind::expense,
                    .categoryID = builder.category(category),
                    .createdAt = Instant{1000.0 + static_cast<double>(++m_rules)}};
    }

    // The sheet the page has open, as its type.
    template <typename Sheet>
    Sheet* sheet() const {
        return qobject_cast<Sheet*>(page->openSheet());
    }

    TempFolder temp;
    LedgerBuilder builder;
    Uuid checking = builder.account("Everyday Checking");
    std::unique_ptr<LedgerRuntime> runtime;
    ImportModel importer;
    std::unique_ptr<app::RuntimeBridge> bridge;
    std::unique_ptr<app::RulesPage> page;

  private:
    int m_rules = 0;
};

}  // namespace copperwick::testing
