#include "core/reports/report_engine.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

ReportFilter householdFilter(DateSpan span) {
    return ReportFilter(span, {}, {}, "USD", std::nullopt, false, false, PeopleMode::assigned);
}

const DateSpan kMarch{day(2026, 3, 1), day(2026, 3, 31)};
const LocalDate kToday = day(2026, 4, 15);

class ReportEngineTest : public ::testing::Test {
  protected:
    Uuid expense(std::string text, int64_t amount, std::string_view category = "Dining",
                 LocalDate date = day(2026, 3, 10)) {
        const Uuid id = builder.transaction(account, std::move(text), amount, date);
        builder.change(id, [&](LedgerTransaction& t) {
            t.kind = TransactionKind::expense;
            t.categoryID = builder.category(category);
        });
        return id;
    }
    Report build() {
        return ReportEngine::build(builder.ledger(), householdFilter(kMarch), kToday);
    }

    testing::LedgerBuilder builder;
    Uuid account = builder.account("Checking");
};

TEST(ReportEngine, EmptyLedgerHasZerosAndOneLinePerMonth) {
    testing::LedgerBuilder builder;
    const Report report = ReportEngine::build(
        builder.ledger(), householdFilter({day(2026, 1, 15), day(2026, 3, 2)}), kToday);
    EXPECT_EQ(report.income, 0);
    EXPECT_EQ(report.spending, 0);
    EXPECT_TRUE(report.categories.empty());
    EXPECT_TRUE(report.topMerchants.empty());
    ASSERT_EQ(report.months.size(), 3u);
    EXPECT_EQ(report.months[0].monthKey, "2026-01");
    EXPECT_EQ(report.months[2].monthKey, "2026-03");
    EXPECT_FALSE(report.savingsRateTenths());
    EXPECT_TRUE(report.isComplete());
    EXPECT_TRUE(report.notes.empty());
}

TEST_F(ReportEngineTest, RefundsNetIntoTheirCategoryAndARefundAloneSortsLast) {
    expense("BLUE BOTTLE", -10000);
    expense("BLUE BOTTLE", 3000);
    expense("REI RETURN", 2500, "Shopping");
    const Report report = build();
    EXPECT_EQ(report.spending, 4500);
    EXPECT_EQ(report.refunds, 5500);
    ASSERT_EQ(report.categories.size(), 2u);
    EXPECT_EQ(report.categories[0].name, "Dining");
    EXPECT_EQ(report.categories[0].amount, 7000);
    EXPECT_EQ(report.categories[0].refunds, 3000);
    EXPECT_EQ(report.categories[0].count, 2);
    EXPECT_EQ(report.categories[1].name, "Shopping");
    EXPECT_EQ(report.categories[1].amount, -2500);
    EXPECT_EQ(report.topMerchants.back().amount, -2500) << "a net refund stays, at the bottom";
}

TEST_F(ReportEngineTest, RefundFiledAsIncomeIsIncome) {
    expense("SHOP", -5000);
    const Uuid refund = builder.transaction(account, "SHOP REFUND", 2000, day(2026, 3, 11));
    builder.change(refund, [&](LedgerTransaction& t) {
        t.kind = TransactionKind::income;
        t.categoryID = builder.category("Refunds & Settlements");
    });
    const Report report = build();
    EXPECT_EQ(report.spending, 5000);
    EXPECT_EQ(report.income, 2000);
    EXPECT_EQ(report.refunds, 0);
}

TEST_F(ReportEngineTest, SplitsToOneCategoryMergeAndDanglingCategoriesAreUncategorized) {
    const Uuid split = expense("COSTCO", -10000);
    builder.change(split, [&](LedgerTransaction& t) {
        t.splits = std::vector<TransactionSplit>{
            {Uuid::random(), builder.category("Groceries"), -6000, ""},
            {Uuid::random(), builder.category("Groceries"), -4000, ""}};
    });
    const Uuid gone = expense("OLD SHOP", -700);
    builder.change(gone, [](LedgerTransaction& t) { t.categoryID = Uuid::random(); });
    const Report report = build();
    ASSERT_EQ(report.categories.size(), 2u);
    EXPECT_EQ(report.categories[0].name, "Groceries");
    EXPECT_EQ(report.categories[0].amount, 10000);
    EXPECT_EQ(report.categories[0].count, 1);
    EXPECT_EQ(report.categories[1].id, "uncategorized");
    EXPECT_EQ(report.categories[1].name, "Uncategorized");
    EXPECT_EQ(report.categories[1].colorIndex, -1);
    EXPECT_FALSE(report.categories[1].categoryID);
}

TEST_F(ReportEngineTest, MerchantIdentityFallsBackToTheBankTextKey) {
    const Uuid filed = expense("BLUE BOTTLE COFFEE 123", -500);
    const Uuid merchant = builder.merchant("Blue Bottle");
    builder.change(filed, [&](LedgerTransaction& t) { t.merchantID = merchant; });
    const Uuid dangling = expense("TRADER JOE S #552", -600);
    builder.change(dangling, [](LedgerTransaction& t) { t.merchantID = Uuid::random(); });
    const Ledger& ledger = builder.ledger();
    const auto identity = ReportEngine::merchantIdentity(*ledger.transaction(filed), ledger);
    EXPECT_EQ(identity.id, merchant.text());
    EXPECT_EQ(identity.name, "Blue Bottle");
    const auto fallback = ReportEngine::merchantIdentity(*ledger.transaction(dangling), ledger);
    EXPECT_TRUE(fallback.id.starts_with("key:TRADER JOE")) << fallback.id;
    EXPECT_TRUE(fallback.name.starts_with("Trader Joe")) << fallback.name;
}

TEST_F(ReportEngineTest, OnlyFifteenMerchantsAndTiesSortByName) {
    for (int i = 0; i < 16; ++i)
        expense("SHOP " + std::string(1, static_cast<char>('A' + i)) + "X", -100 * (20 - i));
    expense("ZED", -500);
    expense("ABE", -500);
    const Report report = build();
    ASSERT_EQ(report.topMerchants.size(), 15u);
    EXPECT_EQ(report.topMerchants[0].amount, 2000);
    EXPECT_EQ(report.topMerchants[14].amount, 600);
    int64_t total = 0;
    for (const auto& line : report.topMerchants)
        total += line.amount;
    EXPECT_LT(total, report.spending) << "the money of dropped merchants stays in spending";

    testing::LedgerBuilder tie;
    const Uuid checking = tie.account("Checking");
    for (const char* text : {"ZED", "ABE"}) {
        const Uuid id = tie.transaction(checking, text, -500, day(2026, 3, 3));
        tie.change(id, [](LedgerTransaction& t) { t.kind = TransactionKind::expense; });
    }
    const Report tied = ReportEngine::build(tie.ledger(), householdFilter(kMarch), kToday);
    EXPECT_EQ(tied.topMerchants[0].name, "Abe");
    EXPECT_EQ(tied.topMerchants[1].name, "Zed");
}

TEST_F(ReportEngineTest, PendingVoidedAndSupersededLinesStayOutOfTheFigures) {
    const Uuid pending = expense("PENDING SHOP", -900);
    builder.change(pending, [](LedgerTransaction& t) { t.status = TransactionStatus::pending; });
    const Uuid voided = expense("VOID", -800);
    builder.change(voided, [](LedgerTransaction& t) {
        t.voided = true;
        t.status = TransactionStatus::pending;
    });
    const Uuid replaced = expense("OLD", -700);
    builder.change(replaced, [&](LedgerTransaction& t) { t.supersededBy = pending; });
    const Report report = build();
    EXPECT_EQ(report.spending, 0);
    EXPECT_EQ(report.pendingCount, 1);
    EXPECT_EQ(report.pendingTotal, -900);
    EXPECT_FALSE(report.isComplete());
    EXPECT_TRUE(report.includedIDs.empty());
}

TEST_F(ReportEngineTest, ModelFilingsOfUnknownKindAreNotCountedAsFiled) {
    const Uuid unknown = builder.transaction(account, "MYSTERY", -100, day(2026, 3, 5));
    builder.change(unknown, [](LedgerTransaction& t) {
        t.method = MatchMethod::ai;
        t.review = ReviewState::automatic;
    });
    const Uuid filed = expense("CAFE", -250);
    builder.change(filed, [](LedgerTransaction& t) {
        t.method = MatchMethod::ai;
        t.review = ReviewState::automatic;
    });
    const Report report = build();
    EXPECT_EQ(report.aiFiledIDs, std::vector<Uuid>{filed});
    // With no pending note the model's note follows the first one.
    ASSERT_GE(report.notes.size(), 2u);
    EXPECT_EQ(report.notes[0].id, "unknown");
    EXPECT_EQ(report.notes[1].id, "ai-filed");
    EXPECT_EQ(report.notes[1].text,
              "1 transaction was filed by Local AI ($2.50 in all) and you haven't checked them "
              "yet. They're counted; check them in Review.");
}

// Reports keep compact copies of unchanged transactions between calls: an
// edit, in place or in a copy, shows in the next report of that ledger and in
// no other.
TEST_F(ReportEngineTest, EditsShowInTheNextReportOfThatLedgerOnly) {
    const Uuid coffee = expense("BLUE BOTTLE", -1000);
    const Uuid lunch = expense("LARDO", -2000);
    const Report before = build();
    EXPECT_EQ(before.spending, 3000);

    Ledger copy = builder.ledger();
    copy.transactions.update(coffee, [](LedgerTransaction& t) { t.amount = -1500; });
    EXPECT_EQ(ReportEngine::build(copy, householdFilter(kMarch), kToday).spending, 3500);
    EXPECT_EQ(build(), before) << "the original is untouched by its copy's edit";

    builder.change(lunch, [](LedgerTransaction& t) { t.kind = TransactionKind::transfer; });
    const Uuid merchant = builder.merchant("Blue Bottle Coffee");
    builder.change(coffee, [&](LedgerTransaction& t) { t.merchantID = merchant; });
    const Report after = build();
    EXPECT_EQ(after.spending, 1000);
    EXPECT_EQ(after.transferCount, 1);
    ASSERT_EQ(after.topMerchants.size(), 1u);
    EXPECT_EQ(after.topMerchants[0].id, merchant.text());
    EXPECT_EQ(after.topMerchants[0].name, "Blue Bottle Coffee");

    (void)builder.ledger().merchants.erase(merchant);
    const std::string fallback = build().topMerchants.at(0).id;
    EXPECT_TRUE(fallback.starts_with("key:BLUE BOTTLE")) << fallback;
}

TEST_F(ReportEngineTest, LinesOfAGoneMerchantGroupWithUnfiledLinesOfTheirText) {
    const Uuid dangling = expense("TRADER JOE S #552", -600);
    builder.change(dangling, [](LedgerTransaction& t) { t.merchantID = Uuid::random(); });
    const Uuid unfiled = expense("TRADER JOE S #552", -400, "Groceries");
    const Report report = build();
    ASSERT_EQ(report.topMerchants.size(), 1u);
    EXPECT_EQ(report.topMerchants[0].amount, 1000);
    EXPECT_EQ(report.topMerchants[0].count, 2);
    EXPECT_EQ(report.topMerchants[0].transactionIDs.size(), 2u);
    ASSERT_EQ(report.categories.size(), 2u);
    EXPECT_EQ(report.categories[0].merchants[0].id, report.topMerchants[0].id);
    EXPECT_EQ(report.categories[1].merchants[0].transactionIDs, std::vector<Uuid>{unfiled});
}

// Lines are counted out by day and each day's lines sorted by id; dates
// centuries apart take the plain sort. Both give date order, ties by id.
TEST(ReportEngine, IncludedLinesRunInDateOrderThenByID) {
    const auto check = [](const std::vector<LocalDate>& dates, DateSpan span) {
        testing::LedgerBuilder builder;
        const Uuid account = builder.account("Checking");
        std::vector<std::pair<LocalDate, Uuid>> expected;
        for (const LocalDate date : dates) {
            const Uuid id = builder.transaction(account, "SHOP", -100, date);
            builder.change(id, [](LedgerTransaction& t) { t.kind = TransactionKind::expense; });
            expected.emplace_back(date, id);
        }
        std::sort(expected.begin(), expected.end());
        std::vector<Uuid> ids;
        for (const auto& entry : expected)
            ids.push_back(entry.second);
        const Report report = ReportEngine::build(builder.ledger(), householdFilter(span), kToday);
        EXPECT_EQ(report.includedIDs, ids);
        EXPECT_EQ(report.categories.at(0).transactionIDs, ids);
        EXPECT_EQ(report.topMerchants.at(0).transactionIDs, ids);
    };
    std::vector<LocalDate> month;
    for (int i = 0; i < 40; ++i)
        month.push_back(day(2026, 3, i % 3 == 0 ? 31 : 1 + i % 5));
    check(month, kMarch);
    check({day(2200, 12, 31), day(1900, 1, 1), day(2026, 3, 5), day(1900, 1, 1)},
          {day(1900, 1, 1), day(2200, 12, 31)});
}

TEST(ReportEngine, SavingsRateRoundsHalvesAwayFromZero) {
    const auto rate = [](int64_t income, int64_t spending) {
        Report report(householdFilter(kMarch));
        report.income = income;
        report.spending = spending;
        return report.savingsRateTenths();
    };
    EXPECT_EQ(rate(100000, 87654), 123) << "12.346% is 123 tenths";
    EXPECT_EQ(rate(100000, 87604), 124) << "12.396%";
    EXPECT_EQ(rate(100000, 120050), -201);
    EXPECT_EQ(rate(0, 500), std::nullopt);
    EXPECT_EQ(rate(2000, 1999), 1) << "0.5 tenths rounds up";
    EXPECT_EQ(rate(2000, 2001), -1) << "and down for a loss";
}

}  // namespace
}  // namespace copperwick
