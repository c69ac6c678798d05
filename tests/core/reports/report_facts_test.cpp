#include "core/reports/report_facts.h"

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

ReportComparison marchAgainstFebruary() {
    const ReportFilter march({day(2026, 3, 1), day(2026, 3, 31)}, {}, {}, "USD", std::nullopt,
                             false, false, PeopleMode::assigned);
    ReportComparison comparison{Report(march), Report(march.withSpan(march.span.previous())), {}};
    return comparison;
}

RecurringCharge charge(std::string name, Cadence cadence, int64_t typical, bool active,
                       int64_t previous, int64_t last) {
    RecurringCharge c;
    c.id = name;
    c.merchantName = std::move(name);
    c.cadence = cadence;
    c.typicalAmount = typical;
    c.isActive = active;
    c.previousAmount = previous;
    c.lastAmount = last;
    c.transactionIDs = {Uuid::random(), Uuid::random(), Uuid::random()};
    return c;
}

TEST(ReportFacts, TotalsAgainstThePeriodBefore) {
    ReportComparison comparison = marchAgainstFebruary();
    comparison.current.spending = 150000;
    comparison.previous.spending = 100000;
    comparison.current.income = 200000;
    comparison.previous.income = 200000;
    const auto facts = ReportFacts::build(comparison, {}, {});
    ASSERT_EQ(facts.size(), 3u);
    EXPECT_EQ(facts[0].id, "F1");
    EXPECT_EQ(facts[0].text,
              "Spending in March 2026 was $1,500.00, compared with $1,000.00 in February 2026 "
              "(+50.0%).");
    EXPECT_EQ(facts[1].text,
              "Income in March 2026 was $2,000.00, compared with $2,000.00 in February 2026 "
              "(no change).");
    EXPECT_EQ(facts[2].id, "F3");
    EXPECT_EQ(facts[2].text, "Savings in March 2026 were $500.00, 25.0% of income.");

    comparison.current.income = 0;
    comparison.previous.income = 0;
    const auto noIncome = ReportFacts::build(comparison, {}, {});
    EXPECT_EQ(noIncome[1].text,
              "Income in March 2026 was $0.00, compared with $0.00 in February 2026.")
        << "no change can be worked out from nothing";
    EXPECT_EQ(noIncome[2].text,
              "Savings in March 2026 were \u2212$1,500.00 (no income recorded, so no savings "
              "rate).");
}

TEST(ReportFacts, CategoriesThatMovedAndWhereIncomeCameFrom) {
    ReportComparison comparison = marchAgainstFebruary();
    const Uuid groceries = Uuid::random();
    comparison.current.categories = {{.id = "g",
                                      .name = "Groceries",
                                      .amount = 40000,
                                      .count = 12,
                                      .transactionIDs = {groceries}}};
    comparison.categoryChanges = {
        {"g", "Groceries", 40000, 30000}, {"d", "Dining", 0, 25000}, {"t", "Travel", 5000, 5000}};
    comparison.current.incomeSources = {{"m", "Acme Payroll", 300000, 2, {}}};
    const auto texts = ReportFacts::texts(ReportFacts::build(comparison, {}, {}));
    const std::vector<std::string> expected{
        "Spending on Groceries in March 2026 was $400.00 across 12 transactions.",
        "Groceries rose by $100.00 (from $300.00 to $400.00), +33.3%.",
        "Dining fell by $250.00 (from $250.00 to $0.00), \u2212100.0%.",
        "Acme Payroll received $3,000.00 over 2 transactions.",
    };
    EXPECT_EQ(std::vector<std::string>(texts.begin() + 3, texts.end()), expected);
    const auto facts = ReportFacts::build(comparison, {}, {});
    EXPECT_EQ(facts[4].transactionIDs, std::vector<Uuid>{groceries})
        << "a change opens the current period's lines";
}

TEST(ReportFacts, RecurringChargesCountEachChargeTruncatedByItself) {
    const std::vector<RecurringCharge> recurring{
        charge("Gym", Cadence::weekly, 1000, true, 1000, 1000),       // 4333
        charge("Domain", Cadence::yearly, 1299, true, 1299, 1299),    // 108
        charge("Stream A", Cadence::monthly, 500, true, 400, 500),    // 500
        charge("Stream B", Cadence::monthly, 600, true, 500, 600),    // 600
        charge("Stream C", Cadence::monthly, 700, true, 600, 700),    // 700
        charge("Stream D", Cadence::monthly, 800, true, 700, 800),    // 800, a fourth change
        charge("Old paper", Cadence::monthly, 900, false, 800, 900),  // stopped
    };
    const auto facts = ReportFacts::build(marchAgainstFebruary(), recurring, {});
    const auto texts = ReportFacts::texts(facts);
    const std::vector<std::string> expected{
        "The monthly charge from Stream A changed from $4.00 to $5.00.",
        "The monthly charge from Stream B changed from $5.00 to $6.00.",
        "The monthly charge from Stream C changed from $6.00 to $7.00.",
        "There are 6 active recurring charges, about $70.41 a month in total.",
    };
    EXPECT_EQ(std::vector<std::string>(texts.begin() + 3, texts.end()), expected);
    EXPECT_EQ(facts[3].transactionIDs,
              (std::vector<Uuid>{recurring[2].transactionIDs[1], recurring[2].transactionIDs[2]}));
}

TEST(ReportFacts, UnusualChargesAndWhatWaitsForReview) {
    ReportComparison comparison = marchAgainstFebruary();
    comparison.current.unknownCount = 4;
    const Uuid unusualID = Uuid::random();
    const std::vector<UnusualCharge> unusual{{unusualID, "Big Store", day(2026, 3, 9), 45000,
                                              std::nullopt, "First charge from this merchant."}};
    const auto facts = ReportFacts::build(comparison, {}, unusual);
    ASSERT_EQ(facts.size(), 5u);
    EXPECT_EQ(facts[3].text,
              "On Mar 9, 2026, Big Store charged $450.00. First charge from this merchant.");
    EXPECT_EQ(facts[3].transactionIDs, std::vector<Uuid>{unusualID});
    EXPECT_EQ(facts[4].text,
              "4 transactions still need review and are not included in these totals.");
    EXPECT_EQ(facts[4].id, "F5");
}

}  // namespace
}  // namespace copperwick
