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

// European exports: semicolons, decimal commas, day-first and compact dates,
// month names, debit and credit columns and sign markers, read with no layout
// taught.
TEST(LayoutGuesser, ReadsEuropeanExports) {
    struct Case {
        const char* file;
        const char* line;
        std::vector<int64_t> amounts;
        std::vector<const char*> dates;
        const char* firstDescription;
    };
    const std::vector<Case> cases{
        {"sparkasse-camt.csv",
         "Layout worked out from the file: date in “Buchungstag”, description in "
         "“Beguenstigter/Zahlungspflichtiger”, amount in “Betrag”, amounts with decimal commas.",
         {-1250, 234567, -105800},
         {"2020-11-04", "2020-11-05", "2020-11-16"},
         "REWE Markt GmbH"},
        {"dkb-giro.csv",
         "Layout worked out from the file: date in “Buchungstag”, description in “Auftraggeber / "
         "Begünstigter”, amount in “Betrag (EUR)”, amounts with decimal commas.",
         {-1299, 123456, -420},
         {"2020-11-03", "2020-11-06", "2020-11-13"},
         "Netflix International B.V."},
        {"ing-nl.csv",
         "Layout worked out from the file: date in “Datum”, description in “Naam / Omschrijving”, "
         "amount in “Bedrag (EUR)” (money out marked “Af” in “Af Bij”), amounts with decimal "
         "commas.",
         {-2345, 215000, -410},
         {"2020-11-04", "2020-11-05", "2020-11-10"},
         "Albert Heijn 1234 AMSTERDAM"},
        {"banque-fr.csv",
         "Layout worked out from the file: date in “Date”, description in “Libellé”, money out "
         "in “Débit”, money in in “Crédit”, amounts with decimal commas.",
         {-2340, 215000, -6500},
         {"2020-11-04", "2020-11-05", "2020-11-17"},
         "CARTE 03/11 MONOPRIX PARIS"},
        {"volksbank-sh.csv",
         "Layout worked out from the file: date in “Buchungstag”, description in “Text”, amount "
         "in “Umsatz” (money out marked “S” in “S/H”), amounts with decimal commas.",
         {-2345, 215000, -85000},
         {"2020-11-02", "2020-11-05", "2020-11-18"},
         "EDEKA SAGT DANKE"},
        {"month-names.csv",
         "Layout worked out from the file: date in “Date”, description in “Description”, amount "
         "in “Amount”.",
         {-1250, 150000, -4000},
         {"2020-11-04", "2020-11-04", "2020-11-09"},
         "CORNER SHOP"},
        {"late-day-first.csv",
         "Layout worked out from the file: date in “Datum”, description in “Omschrijving”, "
         "amount in “Bedrag”, amounts with decimal commas.",
         {-350, -4510, -75000, 210000, -1295},
         {"2020-11-02", "2020-11-05", "2020-11-09", "2020-11-11", "2020-11-24"},
         "Bakkerij de Vries"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const auto analysis = analyzeSample(c.file);
        EXPECT_FALSE(analysis.problem) << *analysis.problem;
        EXPECT_TRUE(analysis.issues.empty()) << analysis.issues.at(0).reason;
        EXPECT_EQ(analysis.layoutWorkedOut, c.line);
        std::vector<int64_t> amounts;
        std::vector<std::string> dates;
        for (const auto& row : analysis.rows) {
            amounts.push_back(row.amount);
            dates.push_back(row.date.iso());
        }
        EXPECT_EQ(amounts, c.amounts);
        EXPECT_EQ(dates, std::vector<std::string>(c.dates.begin(), c.dates.end()));
        ASSERT_FALSE(analysis.rows.empty());
        EXPECT_EQ(analysis.rows[0].description(), c.firstDescription);
    }
    // The value date is the posting.
    EXPECT_EQ(analyzeSample("sparkasse-camt.csv").rows.at(0).postedDate->iso(), "2020-11-05");
    // The currency comes from a column of codes or from the amount's name.
    EXPECT_EQ(analyzeSample("sparkasse-camt.csv").currencyHint, "EUR");
    EXPECT_EQ(analyzeSample("ing-nl.csv").currencyHint, "EUR");
    EXPECT_EQ(analyzeSample("banque-fr.csv").currencyHint, std::nullopt);
    const auto euroSign = ImportAnalyzer::analyze(
        "umsaetze.csv",
        "Buchungsdatum;Verwendungszweck;Betrag (€)\n02.11.2023;Miete;-850,00\n"
        "20.11.2023;Lohn;2.100,00\n",
        builtInProfiles(), false);
    EXPECT_EQ(euroSign.currencyHint, "EUR");
    EXPECT_EQ(analyzeSample("dkb-giro.csv").skippedLines, 6);
}

// The style comes from the amounts themselves; where they read alike either
// way, the caller's fallback (a semicolon file's decimal comma) stands.
TEST(LayoutGuesser, TheNumberStyleIsTheOneThatReadsTheAmounts) {
    const auto styleOf = [](std::vector<std::string> amounts, NumberStyle undecided) {
        Rows rows{{"Date", "Description", "Amount"}};
        int day = 10;
        for (auto& amount : amounts)
            rows.push_back({"2026-03-" + std::to_string(day++), "SHOP", amount});
        const auto outcome = LayoutGuesser::guess(rows, undecided);
        return outcome.guess ? std::optional(outcome.guess->numberStyle) : std::nullopt;
    };
    const auto point = NumberStyle::decimalPoint;
    const auto comma = NumberStyle::decimalComma;
    EXPECT_EQ(styleOf({"-1.234,56", "-12,50"}, point), comma);
    EXPECT_EQ(styleOf({"-1,234.56", "-12.50"}, comma), point);
    // "1.234" reads only with a decimal comma, "1,000" only with a point.
    EXPECT_EQ(styleOf({"-1.234", "-12"}, point), comma);
    EXPECT_EQ(styleOf({"-1,000", "-12"}, comma), point);
    // One ambiguous value is decided by the others.
    EXPECT_EQ(styleOf({"-1.234", "-12,50", "-3,00"}, point), comma);
    EXPECT_EQ(styleOf({"-1,000", "-12.50", "-3.00"}, comma), point);
    // As many read one way as the other: the fallback decides.
    std::vector<std::string> tied{"-1.234", "-1,000"};
    tied.resize(10, "-12");
    EXPECT_EQ(styleOf(tied, comma), comma);
    EXPECT_EQ(styleOf(tied, point), point);
}

TEST(LayoutGuesser, ASemicolonBetweenFieldsSpeaksForADecimalComma) {
    // "1.250" reads only with a decimal comma, "2,100" only with a point, and
    // whole amounts either way.
    const auto file = [](char delimiter) {
        const std::string d(1, delimiter);
        std::string text = "Datum" + d + "Text" + d + "Betrag\n";
        text += "02.03.2026" + d + "Miete" + d + "\"-1.250\"\n";
        text += "20.03.2026" + d + "Lohn" + d + "\"-2,100\"\n";
        for (int day = 21; day <= 28; ++day)
            text += std::to_string(day) + ".03.2026" + d + "Laden" + d + "-12\n";
        return text;
    };
    const auto semicolons =
        ImportAnalyzer::analyze("kasse.csv", file(';'), builtInProfiles(), false);
    ASSERT_TRUE(semicolons.profile) << semicolons.layoutGaps.at(0);
    EXPECT_EQ(semicolons.profile->numberStyle, NumberStyle::decimalComma);
    EXPECT_EQ(semicolons.rows.at(0).amount, -125000);
    const auto commas = ImportAnalyzer::analyze("bank.csv", file(','), builtInProfiles(), false);
    ASSERT_TRUE(commas.profile) << commas.layoutGaps.at(0);
    EXPECT_EQ(commas.profile->numberStyle, std::nullopt);
    EXPECT_EQ(commas.rows.at(0).amount, -210000);
}

TEST(LayoutGuesser, AMonthNameSettlesTheOrderEvenInOneRow) {
    EXPECT_EQ(describe(LayoutGuesser::guess(
                  {{"Date", "Description", "Amount"}, {"04 Nov 2020", "SHOP", "-1.00"}})),
              "header 1, date 1, description 2, amount 3, out 0, in 0, posted 0, status 0");
}

// A day-first layout worked out from one month's file read the next month's
// file month first when every day in it happened to be under 13.
TEST(LayoutGuesser, ADayFirstOrderStaysWithTheLayout) {
    const auto first = analyzeSample("late-day-first.csv");
    ASSERT_TRUE(first.profile);
    EXPECT_EQ(first.profile->dateLayout, DateLayout::dayMonthYear);
    const auto next = ImportAnalyzer::analyze(
        "december.csv", "Datum;Omschrijving;Bedrag\n01.12.2020;Bakkerij;-1.234\n", {*first.profile},
        false);
    ASSERT_EQ(next.rows.size(), 1u);
    EXPECT_EQ(next.rows[0].date.iso(), "2020-12-01");
    EXPECT_EQ(next.rows[0].amount, -123400);
}

// A marker column names each row's direction, so a file of mostly deposits
// must not be read with its signs turned round.
TEST(LayoutGuesser, MarkedSignsAreNeverReversed) {
    const std::string data =
        "Buchungstag;Text;Umsatz;S/H\n01.11.2020;A;1,00;H\n02.11.2020;B;2,00;H\n"
        "03.11.2020;C;3,00;H\n04.11.2020;D;4,00;H\n05.11.2020;E;5,00;S\n13.11.2020;F;6,00;H\n";
    const auto analysis = ImportAnalyzer::analyze("sh.csv", data, builtInProfiles(), false);
    ASSERT_TRUE(analysis.profile) << analysis.layoutGaps.at(0);
    std::vector<int64_t> amounts;
    for (const auto& row : analysis.rows)
        amounts.push_back(row.amount);
    EXPECT_EQ(amounts, (std::vector<int64_t>{100, 200, 300, 400, -500, 600}));
}

}  // namespace
}  // namespace copperwick
