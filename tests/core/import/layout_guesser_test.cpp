#include "core/import/layout_guesser.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/import/builtin_profiles.h"
#include "core/import/import_analyzer.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

using Rows = std::vector<std::vector<std::string>>;

FileAnalysis analyzeSample(const std::string& name) {
    const auto data = testing::readFile(std::filesystem::path(COPPERWICK_TEST_DATA) / "csv" / name);
    return ImportAnalyzer::analyze(name, data, builtInProfiles(), false);
}

// The layout as one line: which column holds what and the sign.
std::string describe(const LayoutGuess& guess) {
    return "header " + std::to_string(guess.headerRow) + ", date " +
           std::to_string(guess.dateColumn) + ", description " +
           std::to_string(guess.descriptionColumn) + ", amount " +
           std::to_string(guess.amountColumn) + ", out " + std::to_string(guess.moneyOutColumn) +
           ", in " + std::to_string(guess.moneyInColumn) + ", posted " +
           std::to_string(guess.postedDateColumn) + ", status " +
           std::to_string(guess.statusColumn) +
           (guess.purchasesArePositive ? ", purchases positive" : "");
}

std::string describe(const LayoutGuesser::Outcome& outcome) {
    if (outcome.guess)
        return describe(*outcome.guess);
    std::string text;
    for (const auto& gap : outcome.gaps)
        text += (text.empty() ? "" : " / ") + gap;
    return text;
}

TEST(LayoutGuesser, TheDateOrderMustBeSettledByEveryRowAndNeverByOne) {
    // Day and month both under 13 in every row: either order reads them all.
    EXPECT_EQ(describe(LayoutGuesser::guess({{"Date", "Description", "Amount"},
                                             {"03/02/2026", "SHOP", "-1.00"},
                                             {"04/05/2026", "SHOP", "-2.00"}})),
              "The dates in this file could be read day first or month first, so Copperwick "
              "won't guess which.");
    // One row past the twelfth settles it for the rest.
    EXPECT_EQ(describe(LayoutGuesser::guess({{"Date", "Description", "Amount"},
                                             {"03/02/2026", "SHOP", "-1.00"},
                                             {"04/25/2026", "SHOP", "-2.00"}})),
              "header 1, date 1, description 2, amount 3, out 0, in 0, posted 0, status 0");
    // A single dated row never does, however plain it looks.
    EXPECT_EQ(describe(LayoutGuesser::guess(
                  {{"Date", "Description", "Amount"}, {"2026-03-25", "SHOP", "-1.00"}})),
              "Copperwick needs at least two dated rows to tell the order of the dates in this "
              "file.");
    // A date no order reads is no date column.
    EXPECT_EQ(describe(LayoutGuesser::guess({{"Date", "Description", "Amount"},
                                             {"03/25/2026", "SHOP", "-1.00"},
                                             {"25/03/2026", "SHOP", "-2.00"}})),
              "Copperwick couldn't find a date column in this file.");
}

TEST(LayoutGuesser, ABankFileIsMostlyMoneyOut) {
    const Rows card{{"Date", "Description", "Amount"},
                    {"03/14/2026", "GROCER", "54.10"},
                    {"03/15/2026", "CINEMA", "24.00"},
                    {"03/16/2026", "PAYMENT THANK YOU", "-100.00"}};
    EXPECT_TRUE(LayoutGuesser::guess(card).guess->purchasesArePositive);
    const Rows bank{{"Date", "Description", "Amount"},
                    {"03/14/2026", "GROCER", "-54.10"},
                    {"03/15/2026", "PAYROLL", "1500.00"},
                    {"03/16/2026", "CINEMA", "-24.00"}};
    EXPECT_FALSE(LayoutGuesser::guess(bank).guess->purchasesArePositive);
}

TEST(LayoutGuesser, NamesEachColumnItCouldNotFind) {
    EXPECT_EQ(describe(LayoutGuesser::guess({{"just", "some"}, {"words", "here"}})),
              "Copperwick couldn't find a date column in this file. / Copperwick couldn't find a "
              "description column in this file. / Copperwick couldn't find an amount column in "
              "this file.");
    EXPECT_EQ(describe(LayoutGuesser::guess({{"Date", "Description", "Balance"},
                                             {"03/14/2026", "GROCER", "54.10"},
                                             {"03/15/2026", "CINEMA", "30.10"}})),
              "Copperwick couldn't find an amount column in this file.");
    // Without a date among the names, the first row must itself be a row of data.
    EXPECT_EQ(describe(LayoutGuesser::guess({{"Posted On", "Narrative", "Sum"},
                                             {"2026-01-03", "CORNER COFFEE", "-4.50"},
                                             {"2026-01-14", "BOOK NOOK", "-18.25"}})),
              "Copperwick couldn't find a date column in this file. / Copperwick couldn't find "
              "an amount column in this file.");
}

TEST(LayoutGuesser, ReadsTheShapesOfCommonExports) {
    struct Case {
        const char* file;
        const char* line;  // what the person is told
        std::vector<int64_t> amounts;
        const char* firstDate;
    };
    const std::vector<Case> cases{
        {"apple-card-export.csv",
         "Layout worked out from the file: date in “Transaction Date”, description in "
         "“Description”, amount in “Amount(USD)” (purchases are positive).",
         {-825, -5410, 20000, -2400},
         "2026-03-02"},
        {"amex-extended.csv",
         "Layout worked out from the file: date in “Date”, description in “Description”, "
         "amount in “Amount” (purchases are positive).",
         {-650, 15000, -4217},
         "2026-03-05"},
        {"schwab-export.csv",
         "Layout worked out from the file: date in “Date”, description in “Description”, money "
         "out in “Withdrawal (-)”, money in in “Deposit (+)”.",
         {-1250, 150000, -10000},
         "2026-03-02"},
        {"generic-amount.csv",
         "Layout worked out from the file: date in “Date”, description in “Description”, "
         "amount in “Amount”.",
         {-1250, 150000, -4000},
         "2026-03-02"},
        {"generic-payee.csv",
         "Layout worked out from the file: date in “Date”, description in “Payee”, amount in "
         "“Amount”.",
         {-1250, 150000, -4000},
         "2026-03-02"},
        {"headerless-export.csv",
         "Layout worked out from the file: date in “Column 1”, description in “Column 2”, "
         "amount in “Column 3”.",
         {-1250, 150000, -4000},
         "2026-03-02"},
        {"paypal-activity.csv",
         "Layout worked out from the file: date in “Date”, description in “Name”, amount in "
         "“Net”.",
         {-1840, 3854, -2500},
         "2026-03-02"},
        {"venmo-statement.csv",
         "Layout worked out from the file: date in “Datetime”, description in “Note”, amount "
         "in “Amount (total)”.",
         {-1200, 500, -3025},
         "2026-03-02"},
        {"credit-union-cr.csv",
         "Layout worked out from the file: date in “Posting Date”, description in “Transaction "
         "Description”, amount in “Amount”.",
         {-1250, 150000, -4000},
         "2026-03-02"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const auto analysis = analyzeSample(c.file);
        EXPECT_FALSE(analysis.problem) << *analysis.problem;
        EXPECT_TRUE(analysis.issues.empty()) << analysis.issues.at(0).reason;
        ASSERT_TRUE(analysis.profile);
        EXPECT_TRUE(analysis.profile->id.starts_with("custom-"));
        EXPECT_EQ(analysis.layoutWorkedOut, c.line);
        std::vector<int64_t> amounts;
        for (const auto& row : analysis.rows)
            amounts.push_back(row.amount);
        EXPECT_EQ(amounts, c.amounts);
        ASSERT_FALSE(analysis.rows.empty());
        EXPECT_EQ(analysis.rows[0].date.iso(), c.firstDate);
    }
}

TEST(LayoutGuesser, ReadsWhatTheColumnsAroundTheMoneySay) {
    const auto apple = analyzeSample("apple-card-export.csv");
    EXPECT_EQ(apple.rows.at(0).postedDate->iso(), "2026-03-03");
    const auto paypal = analyzeSample("paypal-activity.csv");
    EXPECT_EQ(paypal.rows.at(2).status, TransactionStatus::pending);
    const auto venmo = analyzeSample("venmo-statement.csv");
    EXPECT_EQ(venmo.skippedLines, 2);
    EXPECT_EQ(venmo.blankLines, 2);  // the opening and closing balance lines
    const auto amex = analyzeSample("amex-extended.csv");
    EXPECT_EQ(amex.rows.at(0).line, 2);
    EXPECT_EQ(amex.rows.at(1).line, 7);  // after five lines of details and address
    const auto schwab = analyzeSample("schwab-export.csv");
    EXPECT_EQ(schwab.blankLines, 1);  // the totals line
    EXPECT_EQ(analyzeSample("generic-payee.csv").dateLayout, DateLayout::dayMonthYear);
}

TEST(LayoutGuesser, TheSameBanksFilesGetTheSameLayout) {
    const auto first = analyzeSample("generic-amount.csv");
    const auto again = ImportAnalyzer::analyze(
        "other-name.csv",
        "Date,Description,Amount\n04/02/2026,BAKERY,-3.00\n04/20/2026,BAKERY,-4.00\n",
        builtInProfiles(), false);
    ASSERT_TRUE(first.profile && again.profile);
    EXPECT_EQ(first.profile->id, again.profile->id);
    EXPECT_EQ(first.profile->requiredHeaders, again.profile->requiredHeaders);
    // A layout chosen by hand is used as it is, never worked out anew.
    const auto chosen = ImportAnalyzer::analyze("x.csv", "just,some\nwords,here\n",
                                                builtInProfiles().front(), false);
    EXPECT_FALSE(chosen.layoutWorkedOut);
    EXPECT_TRUE(chosen.layoutGaps.empty());
}

}  // namespace
}  // namespace copperwick
