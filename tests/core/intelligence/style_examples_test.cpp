#include "core/intelligence/style_examples.h"

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

class StyleExamplesTest : public ::testing::Test {
  protected:
    Uuid decided(std::string text, std::string_view category, LocalDate date,
                 ReviewState review = ReviewState::confirmed,
                 MatchMethod method = MatchMethod::manual) {
        const Uuid id = builder.transaction(account, std::move(text), -1000, date);
        builder.change(id, [&](LedgerTransaction& t) {
            t.kind = TransactionKind::expense;
            t.categoryID = builder.category(category);
            t.review = review;
            t.method = method;
        });
        return id;
    }
    std::vector<std::string> examplesFor(std::string text, std::size_t limit = 6) {
        const Uuid id = builder.transaction(account, std::move(text), -2000, day(2026, 4, 1));
        return StyleExamples::examples(*builder.ledger().transaction(id), builder.ledger(), limit);
    }

    testing::LedgerBuilder builder;
    Uuid account = builder.account("Checking");
};

TEST_F(StyleExamplesTest, ThePersonsNewestDecisionOnAlikeKeys) {
    decided("COSTCO GAS 1234567", "Transportation", day(2026, 3, 1));
    decided("COSTCO GAS 7654321", "Groceries", day(2026, 2, 1));  // older, same key
    decided("COSTCO WHSE", "Groceries", day(2026, 3, 2));
    decided("SHELL OIL", "Transportation", day(2026, 3, 3));
    decided("COSTCO GASOLINE", "Transportation", day(2026, 3, 4), ReviewState::automatic,
            MatchMethod::builtInRule);  // nobody decided this one
    decided("COSTCO GAS STN", "Transportation", day(2026, 3, 5), ReviewState::automatic,
            MatchMethod::learned);
    const Merchant costco{.id = Uuid::random(), .name = "Costco"};
    builder.ledger().merchants.set(costco.id, costco);
    builder.change(decided("COSTCO WHOLESALE", "Groceries", day(2026, 3, 6)),
                   [&](LedgerTransaction& t) { t.merchantID = costco.id; });

    EXPECT_EQ(examplesFor("COSTCO GAS #0042"),
              (std::vector<std::string>{
                  "\u201cCOSTCO GAS #######\u201d \u2192 Costco Gas, Transportation",
                  "\u201cCOSTCO GAS STN\u201d \u2192 Costco Gas STN, Transportation",
                  "\u201cCOSTCO WHSE\u201d \u2192 Costco Whse, Groceries",
                  "\u201cCOSTCO WHOLESALE\u201d \u2192 Costco, Groceries",
              }));
    EXPECT_EQ(examplesFor("COSTCO GAS #0042", 1).size(), 1u);
}

TEST_F(StyleExamplesTest, ASharedBankCategoryLiftsAWeakMatch) {
    const Uuid shell = decided("SHELL OIL", "Transportation", day(2026, 3, 3));
    builder.change(shell,
                   [](LedgerTransaction& t) { t.bankCategory = std::string("gas  stations"); });
    const Uuid asked = builder.transaction(account, "CHEVRON 0042", -2000, day(2026, 4, 1));
    EXPECT_TRUE(
        StyleExamples::examples(*builder.ledger().transaction(asked), builder.ledger(), 6).empty());
    builder.change(asked,
                   [](LedgerTransaction& t) { t.bankCategory = std::string("Gas Stations"); });
    const auto lifted =
        StyleExamples::examples(*builder.ledger().transaction(asked), builder.ledger(), 6);
    EXPECT_EQ(lifted.size(), 1u)
        << "the same category after normalising, when the keys alone fall short";
}

}  // namespace
}  // namespace copperwick
