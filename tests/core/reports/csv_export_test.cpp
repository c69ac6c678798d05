#include "core/reports/csv_export.h"

#include <gtest/gtest.h>

#include "core/operations/transaction_correction.h"
#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

using testing::day;

TEST(CSVExportTest, FormulasAreDefusedAndAmountsStayNumbers) {
    EXPECT_EQ(CSVExport::quote("=HYPERLINK(1)"), "\"'=HYPERLINK(1)\"");
    EXPECT_EQ(CSVExport::quote("=SUM(1)"), "\"'=SUM(1)\"");
    EXPECT_EQ(CSVExport::quote("+1"), "+1") << "an amount the program reads stays a number";
    EXPECT_EQ(CSVExport::quote("-12.50"), "-12.50");
    EXPECT_EQ(CSVExport::quote("-call bank"), "\"'-call bank\"");
    EXPECT_EQ(CSVExport::quote("@home"), "\"'@home\"");
    EXPECT_EQ(CSVExport::quote("=1,2"), "\"=1,2\"") << "quoting comes first, with no apostrophe";
    EXPECT_EQ(CSVExport::quote("say \"hi\""), "\"say \"\"hi\"\"\"");
    EXPECT_EQ(CSVExport::quote("trailing "), "\"trailing \"");
    EXPECT_EQ(CSVExport::quote(" leading"), "\" leading\"");
    EXPECT_EQ(CSVExport::quote("two\nlines"), "\"two\nlines\"");
    EXPECT_EQ(CSVExport::quote("\rreturn"), "\"'\rreturn\"")
        << "a return or tab at the start can start a formula too";
    EXPECT_EQ(CSVExport::quote("\t=SUM(1)"), "\"'\t=SUM(1)\"");
    EXPECT_EQ(CSVExport::quote("tab\t"), "\"tab\t\"");
    EXPECT_EQ(CSVExport::quote(""), "");
    EXPECT_EQ(CSVExport::row({"a", "", "b,c"}), "a,,\"b,c\"");
}

class CSVExportTransactionsTest : public ::testing::Test {
  protected:
    testing::LedgerBuilder builder;
    Uuid card = builder.account("Card", AccountType::creditCard);
};

TEST_F(CSVExportTransactionsTest, EmptyListIsTheHeaderAlone) {
    EXPECT_EQ(CSVExport::transactions({Uuid::random()}, builder.ledger()),
              "Date,Posted,Account,Owner,Description,Merchant,Kind,Category,Amount,Currency,"
              "Status,Matched by,Note,Source,Original date,Original amount,Original "
              "description,Split allocations,Corrections");
}

TEST_F(CSVExportTransactionsTest, LinesInAFixedOrderWithSplitsAndCorrections) {
    const auto dining = builder.category("Dining");
    const auto groceries = builder.category("Groceries");
    const auto later = builder.transaction(card, "=cmd|' /C calc'!A0", -2000, day(2026, 3, 3));
    const auto first = builder.transaction(card, "MARKET", -2000, day(2026, 3, 2));
    const auto second = builder.transaction(card, "MARKET", -500, day(2026, 3, 2));
    builder.change(later, [&](LedgerTransaction& t) {
        t.kind = TransactionKind::expense;
        t.categoryID = dining;
        t.splits = std::vector<TransactionSplit>{{Uuid::random(), dining, -1200, ""},
                                                 {Uuid::random(), groceries, -800, ""}};
    });
    (void)correctTransaction(builder.ledger(), first, day(2026, 3, 2), -2100, "MARKET",
                             "Tip left out", Instant::fromUnixSeconds(1773000000));

    const auto csv = CSVExport::transactions({later, second, first}, builder.ledger());
    const auto again = CSVExport::transactions({first, later, second}, builder.ledger());
    EXPECT_EQ(csv, again) << "one list exports alike whatever order it came in";
    EXPECT_NE(csv.back(), '\n') << "no line feed after the last line";

    std::vector<std::string> lines;
    std::size_t start = 0;
    for (std::size_t end; (end = csv.find('\n', start)) != std::string::npos; start = end + 1)
        lines.push_back(csv.substr(start, end - start));
    lines.push_back(csv.substr(start));
    ASSERT_EQ(lines.size(), 4u);
    const bool firstBeforeSecond = first < second;
    EXPECT_EQ(
        lines[firstBeforeSecond ? 1 : 2].find("2026-03-02,,Card,Shared household,MARKET,,Needs "
                                              "review,,-21.00,USD,posted,"),
        0u)
        << csv;
    EXPECT_NE(csv.find(",Bank import,2026-03-02,-20.00,MARKET,,2026-03-08T20:00:00Z: Tip left "
                       "out"),
              std::string::npos)
        << csv;
    EXPECT_NE(lines[3].find("\"'=cmd|' /C calc'!A0\""), std::string::npos) << lines[3];
    EXPECT_NE(lines[3].find(",Dining: -12.00; Groceries: -8.00,"), std::string::npos) << lines[3];
}

TEST_F(CSVExportTransactionsTest, ASplitWhoseCategoryIsGoneSaysUncategorized) {
    const auto line = builder.transaction(card, "STORE", -1000);
    builder.change(line, [&](LedgerTransaction& t) {
        t.kind = TransactionKind::expense;
        t.splits =
            std::vector<TransactionSplit>{{Uuid::random(), Uuid::random(), -600, ""},
                                          {Uuid::random(), builder.category("Dining"), -400, ""}};
    });
    EXPECT_NE(CSVExport::transactions({line}, builder.ledger())
                  .find("Uncategorized: -6.00; Dining: -4.00"),
              std::string::npos);
}

TEST(CSVExportSummaryTest, EverySectionInOrderWithPlainAmounts) {
    const DateSpan march(day(2026, 3, 1), day(2026, 3, 31));
    Report report(
        ReportFilter(march, {}, {}, "USD", std::nullopt, false, false, PeopleMode::assigned));
    report.scopeLabel = "Whole household";
    report.accountNames = {"Checking", "Card, joint"};
    report.income = 500000;
    report.spending = 123456;
    report.refunds = 1000;
    report.transferVolume = 20000;
    report.unknownIn = 500;
    report.unknownOut = -700;
    report.pendingTotal = -4200;
    report.categories = {
        CategoryLine{.id = "c",
                     .name = "Dining",
                     .amount = 4550,
                     .count = 3,
                     .merchants = {MerchantLine{.name = "=Cafe", .amount = 4550, .count = 3}}}};
    report.incomeSources = {MerchantLine{.name = "Acme", .amount = 500000, .count = 2}};
    report.notes = {DataNote{.text = "-note"}};
    PaymentActivity payments;
    payments.lines = {PaymentActivityLine{.id = "venmo:x",
                                          .name = "Jo",
                                          .service = PaymentService::venmo,
                                          .sent = 1000,
                                          .received = 250}};

    EXPECT_EQ(CSVExport::reportSummary(report, payments),
              "Copperwick report,March 2026\n"
              "From,2026-03-01,To,2026-03-31\n"
              "Accounts,\"Checking; Card, joint\"\n"
              "Currency,USD\n"
              "People,Whole household\n"
              "\n"
              "Summary,Amount\n"
              "Income,5000.00\n"
              "Spending (after refunds),1234.56\n"
              "Refunds,10.00\n"
              "Savings,3765.44\n"
              "Transfers between accounts (not counted),200.00\n"
              "Needs review: money in (not counted),5.00\n"
              "Needs review: money out (not counted),-7.00\n"
              "Pending (not counted),-42.00\n"
              "\n"
              "Category,Merchant,Spent,Transactions\n"
              "Dining,,45.50,3\n"
              "Dining,\"'=Cafe\",45.50,3\n"
              "\n"
              "Income source,Received,Transactions\n"
              "Acme,5000.00,2\n"
              "\n"
              "\"Payment services (account flows, not additional income or spending)\"\n"
              "Service,Person or business,Sent,Received,Net\n"
              "Venmo,Jo,10.00,2.50,-7.50\n"
              "\n"
              "Notes\n"
              "\"'-note\"");
}

TEST(CSVExportSummaryTest, NoPaymentsAndNoNotesLeaveTheirSectionsOut) {
    const DateSpan march(day(2026, 3, 1), day(2026, 3, 31));
    const Report report(
        ReportFilter(march, {}, {}, "USD", std::nullopt, false, false, PeopleMode::assigned));
    const auto text = CSVExport::reportSummary(report, PaymentActivity{});
    EXPECT_EQ(text.find("Payment services"), std::string::npos);
    EXPECT_EQ(text.find("Notes"), std::string::npos);
    EXPECT_TRUE(text.ends_with("Income source,Received,Transactions")) << text;
}

}  // namespace
}  // namespace copperwick
