#include "core/presentation/pdf_report_content.h"

#include <gtest/gtest.h>

#include "core/reports/report_engine.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;
using Allocation = PDFReportContent::Allocation;

class PDFReportContentTest : public ::testing::Test {
  protected:
    Uuid person(std::string name) {
        const Person added{.id = Uuid::random(), .name = std::move(name)};
        builder.ledger().people.push_back(added);
        return added.id;
    }
    Uuid account(std::string name, std::vector<Uuid> users, bool nobodys = false) {
        const Uuid id = builder.account(std::move(name));
        auto& accounts = builder.ledger().accounts;
        for (std::size_t i = 0; i < accounts.size(); ++i) {
            if (accounts[i].id == id)
                accounts.update(i, [&](Account& account) {
                    account.setUserIDs(users);
                    account.isUnassigned = nobodys;
                });
        }
        return id;
    }
    Uuid line(const Uuid& account, int64_t amount, TransactionKind kind = TransactionKind::expense,
              std::optional<Uuid> merchant = std::nullopt) {
        const Uuid id = builder.transaction(account, "SHOP", amount, day(2026, 3, 5));
        builder.change(id, [&](LedgerTransaction& t) {
            t.kind = kind;
            t.merchantID = merchant;
        });
        return id;
    }
    PDFReportContent content() {
        const ReportFilter march({day(2026, 3, 1), day(2026, 3, 31)}, {}, {}, "USD", std::nullopt,
                                 false, false, PeopleMode::assigned);
        return PDFReportContent(ReportEngine::build(builder.ledger(), march, day(2026, 4, 2)),
                                builder.ledger(), {"A fact."}, false, {}, Instant{});
    }

    testing::LedgerBuilder builder;
};

TEST_F(PDFReportContentTest, SpendingIsAllocatedToWhoseItIs) {
    const Uuid ana = person("Ana");
    const Uuid ben = person("Ben");
    const Uuid anasCard = account("Ana's card", {ana});
    const Uuid bensCard = account("Ben's card", {ben});
    const Uuid joint = account("Joint", {ana, ben});
    line(bensCard, -4000);
    line(anasCard, -2500);
    line(anasCard, 500);  // a refund nets into her spending
    line(joint, -10000);
    line(joint, 250000, TransactionKind::income);
    line(joint, -99999, TransactionKind::transfer);
    EXPECT_EQ(content().allocation,
              (std::vector<Allocation>{{"Ana", 2000}, {"Ben", 4000}, {"Shared household", 10000}}))
        << "people in the household's order, then shared; income and transfers aren't spending";
}

TEST_F(PDFReportContentTest, OwnersWithNothingSpentAreLeftOut) {
    const Uuid ana = person("Ana");
    const Uuid anasCard = account("Ana's card", {ana});
    const Uuid nobodys = account("Found card", {}, true);
    EXPECT_TRUE(content().allocation.empty()) << "no spending, no lines";

    line(anasCard, -3000);
    line(anasCard, 3000);  // fully refunded
    line(nobodys, -700);
    EXPECT_EQ(content().allocation, (std::vector<Allocation>{{"Unassigned", 700}}));
}

TEST_F(PDFReportContentTest, MerchantRecordsWearTheirBadges) {
    const Uuid checking = account("Checking", {});
    const Uuid shop = builder.merchant("Corner Shop", "Groceries");
    line(checking, -1200, TransactionKind::expense, shop);
    line(checking, -800);  // known by its bank text only
    const PDFReportContent made = content();
    ASSERT_EQ(made.merchantIcons.size(), 1u);
    EXPECT_EQ(made.merchantIcons.at(shop).initials, "CS");
    EXPECT_EQ(made.summary, std::vector<std::string>{"A fact."});
}

TEST_F(PDFReportContentTest, TheSavingsGoalNeedsItsCurrencyAndWholeMonths) {
    const Uuid checking = account("Checking", {});
    line(checking, 500000, TransactionKind::income);
    line(checking, -200000);
    EXPECT_FALSE(content().savingsGoal);
    builder.ledger().settings.update([](LedgerSettings& settings) {
        settings.monthlySavingsGoal = 250000;
        settings.monthlySavingsGoalCurrency = "USD";
    });
    const auto goal = content().savingsGoal;
    ASSERT_TRUE(goal);
    EXPECT_EQ(goal->saved, 300000);
    EXPECT_EQ(goal->target, 250000);
    EXPECT_EQ(goal->title(), "Savings goal reached");
}

TEST(PDFReportStyle, NamesAndDetails) {
    EXPECT_EQ(name(PDFReportStyle::signature), "Signature");
    EXPECT_EQ(name(PDFReportStyle::everyday), "Everyday");
    EXPECT_EQ(name(PDFReportStyle::precision), "Precision");
    EXPECT_EQ(styleDetail(PDFReportStyle::precision),
              "Crisp tables, numbered sections, and a formal statement layout.");
    EXPECT_EQ(enumFromRaw<PDFReportStyle>("everyday"), PDFReportStyle::everyday);
    EXPECT_EQ(enumFromRaw<PDFReportStyle>("Everyday"), std::nullopt);
}

}  // namespace
}  // namespace copperwick
