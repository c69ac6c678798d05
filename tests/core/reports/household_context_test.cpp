#include "core/reports/household_context.h"

#include <gtest/gtest.h>

#include "core/operations/set_budget.h"
#include "core/reports/report_engine.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

class HouseholdContextTest : public ::testing::Test {
  protected:
    HouseholdContextTest() {
        ledger().people.push_back(ana);
        ledger().accounts.update(0, [&](Account& account) { account.setUserIDs({ana.id}); });
    }
    void spend(const Uuid& account, int64_t amount, LocalDate date) {
        const Uuid id = builder.transaction(account, "SHOP", amount, date);
        builder.change(id, [&](LedgerTransaction& t) {
            t.kind = TransactionKind::expense;
            t.categoryID = builder.category("Dining");
        });
    }
    Report report(DateSpan span, std::set<Uuid> people) {
        return ReportEngine::build(ledger(),
                                   ReportFilter(span, std::move(people), {}, "USD", std::nullopt,
                                                false, false, PeopleMode::assigned),
                                   kToday);
    }
    Ledger& ledger() { return builder.ledger(); }

    static constexpr LocalDate kToday{2026, 5, 15};
    testing::LedgerBuilder builder;
    Uuid anas = builder.account("Ana's card", AccountType::creditCard);
    Uuid joint = builder.account("Joint");
    Person ana{Uuid::random(), "Ana", {}};
    DateSpan march{day(2026, 3, 1), day(2026, 3, 31)};
};

TEST_F(HouseholdContextTest, HouseholdContextSetsAPersonBesideEveryone) {
    spend(anas, -2500, day(2026, 3, 4));
    spend(joint, -7500, day(2026, 3, 9));
    EXPECT_EQ(HouseholdContext::build(ledger(), report(march, {}), kToday), std::nullopt)
        << "the whole household has no context of its own";

    auto context = HouseholdContext::build(ledger(), report(march, {ana.id}), kToday);
    ASSERT_TRUE(context);
    EXPECT_EQ(context->scopeLabel, "Ana");
    EXPECT_EQ(context->scopeSpending, 2500);
    EXPECT_EQ(context->householdSpending, 10000);
    EXPECT_EQ(context->shareTenths, 250);
    EXPECT_EQ(context->familyBudgets, std::nullopt) << "no budget yet";

    (void)setBudget(ledger(), builder.category("Dining"), 40000);
    context = HouseholdContext::build(ledger(), report(march, {ana.id}), kToday);
    EXPECT_EQ(context->familyBudgets, 40000);
    const DateSpan tenDays{day(2026, 3, 1), day(2026, 3, 10)};
    EXPECT_EQ(HouseholdContext::build(ledger(), report(tenDays, {ana.id}), kToday)->familyBudgets,
              std::nullopt)
        << "only whole months tell the family's budgets";
}

}  // namespace
}  // namespace copperwick
