#pragma once

// The Rules & Merchants screen alone on a workspace of its own, opened on a
// ledger the test builds first.

#include <memory>

#include <gtest/gtest.h>

#include "app/rules/rules_page.h"
#include "tests/app/app_fixture.h"
#include "tests/support/ledger_builder.h"

namespace copperwick::testing {

class RulesScreenTest : public ::testing::Test, protected AppWorkspace {
  protected:
    // Opens the runtime on the builder's ledger and shows the page. Work of
    // other threads comes back through the event loop, or through `queue`
    // when a test hands results over itself.
    void open(std::shared_ptr<MainQueue> queue = nullptr) {
        openRuntime({.ledger = builder.ledger(), .queue = std::move(queue)});
        page = &showPage<app::RulesPage>();
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

    LedgerBuilder builder;
    Uuid checking = builder.account("Everyday Checking");
    app::RulesPage* page = nullptr;

  private:
    int m_rules = 0;
};

}  // namespace copperwick::testing
