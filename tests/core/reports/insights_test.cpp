#include "core/reports/insights.h"

#include <random>

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

ReportFilter householdFilter(DateSpan span) {
    return ReportFilter(span, {}, {}, "USD", std::nullopt, false, false, PeopleMode::assigned);
}

class InsightsTest : public ::testing::Test {
  protected:
    Uuid charge(const std::string& text, int64_t cents, LocalDate date) {
        const Uuid id = builder.transaction(account, text, -cents, date);
        builder.change(id, [](LedgerTransaction& t) { t.kind = TransactionKind::expense; });
        return id;
    }
    std::vector<RecurringCharge> recurring(LocalDate asOf) {
        return Insights::recurring(builder.ledger(),
                                   householdFilter({day(2026, 1, 1), day(2026, 1, 31)}), asOf);
    }
    std::vector<UnusualCharge> unusual(DateSpan span) {
        return Insights::unusual(builder.ledger(), householdFilter(span));
    }

    testing::LedgerBuilder builder;
    Uuid account = builder.account("Card", AccountType::creditCard);
};

TEST(Insights, CadenceNeedsTwoThirdsOfTheGapsAndMonthlyWinsATie) {
    EXPECT_EQ(Insights::cadenceFor({}), std::nullopt);
    EXPECT_EQ(Insights::cadenceFor({31, 30}), Cadence::monthly);
    EXPECT_EQ(Insights::cadenceFor({30, 7, 30}), Cadence::monthly);
    EXPECT_EQ(Insights::cadenceFor({30, 7, 8, 3}), std::nullopt);
    EXPECT_EQ(Insights::cadenceFor({7, 30}), std::nullopt);
    EXPECT_EQ(Insights::cadenceFor({7, 7, 30, 30}), std::nullopt) << "4 gaps need 3";
    EXPECT_EQ(Insights::cadenceFor({6, 8, 0}), Cadence::weekly) << "a same-day gap still counts";
    EXPECT_EQ(Insights::cadenceFor({350, 380}), Cadence::yearly);
    EXPECT_EQ(Insights::cadenceFor({25, 36}), std::nullopt) << "both band ends are inclusive";
    EXPECT_EQ(Insights::median({}), 0);
    EXPECT_EQ(Insights::median({5, 1, 3}), 3);
    EXPECT_EQ(Insights::median({1, 2, 4, 3}), 2) << "2.5 truncates";
}

TEST_F(InsightsTest, FindsGeneratedMonthlyWeeklyAndYearlyChargesAmongNoise) {
    std::mt19937 random(20260301);
    std::uniform_int_distribution<int> jitter(-2, 2);
    std::uniform_int_distribution<int64_t> cents(-150, 150);
    const LocalDate asOf = day(2026, 6, 30);
    // Eighteen months of a gym around the 3rd, a little off each time.
    for (int i = 0; i < 18; ++i)
        charge("GYM CLUB", 4500 + cents(random),
               day(2025, 1, 3).addingMonths(i).addingDays(jitter(random)));
    // A weekly box whose price rose four weeks ago and stayed.
    for (int i = 0; i < 20; ++i)
        charge("FARM BOX", i < 16 ? 2500 : 2800, asOf.addingDays(-7 * (19 - i) - 3));
    // A yearly domain renewal.
    for (int year = 2022; year <= 2025; ++year)
        charge("DOMAIN RENEWAL", 1500, day(year, 9, 1));
    // A streaming service cancelled last autumn.
    for (int i = 0; i < 6; ++i)
        charge("STREAMFLIX", 1599, day(2025, 4, 10).addingMonths(i));
    // One-off shopping that must not look like a schedule.
    for (int i = 0; i < 40; ++i)
        charge("SHOP " + std::to_string(i), 1000 + 37 * i, day(2025, 1, 1).addingDays(11 * i));
    // Monthly, but the price jumps around too much to call it a subscription.
    for (int i = 0; i < 6; ++i)
        charge("UTILITY CO", i % 2 ? 4000 : 9000, day(2026, 1, 15).addingMonths(i - 2));

    std::string found;
    for (const auto& line : recurring(asOf))
        found += line.merchantName + " " + std::string(rawValue(line.cadence)) +
                 (line.isActive ? "" : " stopped") + (line.priceChanged() ? " changed" : "") +
                 " x" + std::to_string(line.count) + "; ";
    // Active first by yearly cost (box 2800x52, gym ~4500x12, domain 1500), then stopped;
    // the gym's amounts wobble, so its last two differ.
    EXPECT_EQ(found,
              "Farm Box weekly x20; Gym Club monthly changed x18; Domain Renewal yearly x4; "
              "Streamflix monthly stopped x6; ");
    const auto lines = recurring(asOf);
    EXPECT_EQ(lines[0].typicalAmount, 2800);
    EXPECT_EQ(lines[0].nextExpected, lines[0].lastDate.addingDays(7));
    EXPECT_EQ(lines[2].nextExpected, day(2026, 9, 1));
    EXPECT_EQ(lines[0].transactionIDs.size(), 20u);

    // The week the price changed, the change shows.
    const auto weekOfChange = recurring(asOf.addingDays(-7 * 3 - 3));
    EXPECT_TRUE(weekOfChange[0].priceChanged());
    EXPECT_EQ(weekOfChange[0].merchantName, "Farm Box");
}

TEST_F(InsightsTest, ThreeMonthlyChargesMakeASeriesAndTheLastSixMustBeSteady) {
    for (const auto& date : {day(2026, 1, 1), day(2026, 2, 1), day(2026, 3, 3)})
        charge("NETFLIX", 1599, date);
    auto lines = recurring(day(2026, 3, 10));
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].cadence, Cadence::monthly);
    EXPECT_EQ(lines[0].typicalAmount, 1599);
    EXPECT_EQ(lines[0].nextExpected, day(2026, 4, 3));
    EXPECT_TRUE(lines[0].isActive);
    EXPECT_FALSE(recurring(day(2026, 4, 21))[0].isActive) << "49 days after the last charge";
    EXPECT_TRUE(recurring(day(2026, 4, 20))[0].isActive) << "48 days";
    EXPECT_TRUE(recurring(day(2026, 2, 15)).empty()) << "later charges aren't seen yet";

    const auto series = [&](int64_t last) {
        testing::LedgerBuilder fresh;
        builder = std::move(fresh);
        account = builder.account("Card");
        charge("SPOTIFY", 1000, day(2026, 1, 1));
        charge("SPOTIFY", 1000, day(2026, 2, 1));
        charge("SPOTIFY", last, day(2026, 3, 1));
        return recurring(day(2026, 3, 5)).size();
    };
    EXPECT_EQ(series(1300), 1u);
    EXPECT_EQ(series(1301), 0u);

    const auto large = [&](int64_t odd) {
        testing::LedgerBuilder fresh;
        builder = std::move(fresh);
        account = builder.account("Card");
        for (int i = 0; i < 6; ++i)
            charge("INSURER", i == 2 ? odd : 10000, day(2025, 10, 5).addingMonths(i));
        return recurring(day(2026, 3, 10)).size();
    };
    EXPECT_EQ(large(12500), 1u);
    EXPECT_EQ(large(12501), 0u);
}

TEST_F(InsightsTest, EqualYearlyCostsSortByName) {
    for (int i = 0; i < 4; ++i) {
        charge("ZUMBA", 1200, day(2026, 1, 5).addingDays(7 * i));
        charge("ALPHA APP", 5200, day(2025, 11, 1).addingMonths(i));
    }
    const auto lines = recurring(day(2026, 2, 2));
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0].yearlyCost(), lines[1].yearlyCost());
    EXPECT_EQ(lines[0].merchantName, "Alpha App");
}

TEST_F(InsightsTest, UnusualChargesAgainstTheMerchantsOwnHistory) {
    const DateSpan march{day(2026, 3, 1), day(2026, 3, 31)};
    for (int i = 1; i <= 3; ++i)
        charge("CORNER CAFE", 2000, day(2026, 2, i));
    const Uuid high = charge("CORNER CAFE", 6000, day(2026, 3, 10));
    charge("CORNER CAFE", 5999, day(2026, 3, 9));
    auto found = unusual(march);
    ASSERT_EQ(found.size(), 1u) << "59.99 is under three times 20.00";
    EXPECT_EQ(found[0].transactionID, high);
    EXPECT_EQ(found[0].usualAmount, 2000);
    EXPECT_EQ(found[0].reason, "About 3\u00D7 your usual $20.00 at Corner Cafe.");

    for (int i = 1; i <= 3; ++i)
        charge("KIOSK", 500, day(2026, 2, i));
    charge("KIOSK", 2000, day(2026, 3, 2));  // four times, but only 15.00 more
    charge("FIRST BIG", 20000, day(2026, 3, 3));
    charge("FIRST SMALL", 19999, day(2026, 3, 3));
    charge("ONE PRIOR", 1000, day(2026, 3, 3));
    charge("ONE PRIOR", 50000, day(2026, 3, 4));
    found = unusual(march);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0].amount, 20000);
    EXPECT_EQ(found[0].reason, "First charge at First Big, and a large one.");
    EXPECT_FALSE(found[0].usualAmount);
}

TEST_F(InsightsTest, HistoryIsTheHundredAndEightyDaysBefore) {
    const LocalDate c = day(2026, 6, 30);
    const auto unusualWith = [&](LocalDate oldest) {
        testing::LedgerBuilder fresh;
        builder = std::move(fresh);
        account = builder.account("Card");
        charge("HARDWARE", 1000, oldest);
        charge("HARDWARE", 1000, c.addingDays(-20));
        charge("HARDWARE", 1000, c.addingDays(-10));
        for (int i = 0; i < 10; ++i)
            charge("HARDWARE", 1000, day(2024, 1, 1).addingDays(i));
        charge("HARDWARE", 90000, c);
        return unusual({c, c}).size();
    };
    EXPECT_EQ(unusualWith(c.addingDays(-179)), 1u) << "three priors: flagged";
    EXPECT_EQ(unusualWith(c.addingDays(-180)), 0u) << "two priors and older history: thin";
}

TEST(RecurringTotal, CountsOnlyChargesThatStillRunAsATwelfthOfTheirYear) {
    const std::vector<RecurringCharge> charges = {
        {.cadence = Cadence::monthly, .typicalAmount = 1599, .isActive = true},
        {.cadence = Cadence::yearly, .typicalAmount = 9900, .isActive = true},
        {.cadence = Cadence::monthly, .typicalAmount = 5000, .isActive = false},  // stopped
    };
    // (15.99 × 12 + 99.00) / 12 = 24.24 a month.
    EXPECT_EQ(RecurringTotal::of(charges), (RecurringTotal{.monthly = 2424, .activeCount = 2}));
    EXPECT_EQ(RecurringTotal::of({}), RecurringTotal{});
}

}  // namespace
}  // namespace copperwick
