#include "core/import/qif_import.h"

#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "core/import/import_analyzer.h"
#include "core/model/enum_text.h"

namespace copperwick {
namespace {

constexpr std::string_view kDot = " \xC2\xB7 ";
constexpr std::string_view kAmbiguous =
    "Copperwick can't tell whether the dates in this file are day/month or month/day. Export it "
    "again with dates written as year-month-day.";
constexpr std::string_view kSeveralAccounts =
    "This QIF file holds the transactions of several accounts. Export one account at a time.";
constexpr std::string_view kInvestment =
    "Choose a QIF file of a checking, credit-card, cash or other account. Investment accounts "
    "are not supported.";

std::string readSample(std::string_view name) {
    std::ifstream in(std::string(COPPERWICK_TEST_DATA) + "/statements/" + std::string(name),
                     std::ios::binary);
    EXPECT_TRUE(in) << name;
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

FileAnalysis analyzeText(std::string_view text, bool flipSigns = false) {
    return QifImport::analyze("export.qif", text, text, flipSigns);
}

std::string describe(const FileAnalysis& analysis) {
    std::ostringstream out;
    if (analysis.problem)
        out << "problem: " << *analysis.problem << "\n";
    for (const auto& row : analysis.rows) {
        out << "row " << row.line << " " << row.date.iso() << " " << row.amount << " \""
            << row.description() << "\"";
        if (row.bankCategory())
            out << " category=" << *row.bankCategory();
        if (row.checkNumber())
            out << " check=" << *row.checkNumber();
        if (row.occurrence != 1)
            out << " occurrence=" << row.occurrence;
        out << "\n";
    }
    for (const auto& issue : analysis.issues)
        out << "issue " << issue.line << " " << issue.reason << "\n";
    return out.str();
}

std::string describeAccount(const FileAnalysis& analysis) {
    std::ostringstream out;
    out << (analysis.profile ? analysis.profile->id : "no profile") << " | "
        << (analysis.profile ? analysis.profile->name : "") << " | "
        << (analysis.typeHint ? rawValue(*analysis.typeHint) : "no type") << " | "
        << (analysis.dateLayout ? rawValue(*analysis.dateLayout) : "no dates") << " | "
        << analysis.currencyHint.value_or("no currency");
    return out.str();
}

TEST(QifImport, RecognizesByExtensionOrHeaderLine) {
    EXPECT_TRUE(QifImport::recognizes("export.QIF", "anything"));
    EXPECT_TRUE(QifImport::recognizes("export.txt", "\xEF\xBB\xBF!Type:Bank\nD1/1/24\n^"));
    EXPECT_TRUE(QifImport::recognizes("x", "  !type:CCard\r\n"));
    EXPECT_TRUE(QifImport::recognizes("x", "!Option:AutoSwitch\n!Account\n"));
    EXPECT_FALSE(QifImport::recognizes("export.csv", "Date,Amount\n!Type:Bank\n"));
}

TEST(QifImport, ReadsACheckingRegisterWithSplitsAndThousands) {
    const auto analysis = analyzeText(readSample("checking.qif"));
    EXPECT_EQ(describeAccount(analysis),
              "qif-bank | QIF checking | checking | monthDayYear | "
              "no currency");
    EXPECT_EQ(describe(analysis), "row 1 2024-12-31 -123456 \"LANDLORD LLC" + std::string(kDot) +
                                      "January rent\" category=Housing:Rent check=1042\n"
                                      "row 2 2025-01-05 250000 \"ACME CORP\" category=Salary\n"
                                      "row 3 2025-01-07 -10000 \"COSTCO\" category=Groceries\n"
                                      "row 4 2025-01-07 -10000 \"COSTCO\" category=Groceries "
                                      "occurrence=2\n");
    EXPECT_EQ(analysis.accountedLines(), 4);
    EXPECT_EQ(analysis.rows[2].rawText(),
              "D01/07/2025\nT-100.00\nPCOSTCO\nLGroceries\nSGroceries\nEfood\n$-60.00\n"
              "SHousehold\n$-40.00");
}

TEST(QifImport, DayAndMonthOrderIsTheWholeFilesNotOneDates) {
    // "03/02'25" alone could be March 2 or February 3; the 14th and the
    // 28th later in the file say the day comes first.
    const auto card = analyzeText(readSample("card_day_first.qif"));
    EXPECT_EQ(describeAccount(card),
              "qif-card | QIF credit card | creditCard | dayMonthYear | "
              "no currency");
    EXPECT_EQ(describe(card),
              "row 1 2025-02-03 -4510 \"TESCO STORES 2211\" category=Groceries\n"
              "row 2 2025-02-14 -999 \"SPOTIFY\" category=Entertainment\n"
              "row 3 2025-02-28 25000 \"PAYMENT RECEIVED\"\n");

    const auto ambiguous = analyzeText(readSample("ambiguous.qif"));
    EXPECT_EQ(ambiguous.problem, std::string(kAmbiguous));
    EXPECT_TRUE(ambiguous.rows.empty());

    // The same number twice reads alike either way, and year-first dates
    // carry their own order.
    EXPECT_EQ(
        describe(analyzeText("!Type:Bank\nD03/03/2025\nT-1\nPA\n^\nD2025-04-05\nT-2\nPB\n^\n")),
        "row 1 2025-03-03 -100 \"A\"\n"
        "row 2 2025-04-05 -200 \"B\"\n");
    EXPECT_EQ(analyzeText("!Type:Bank\nD13/01/2025\nT-1\nPA\n^\nD01/13/2025\nT-2\nPB\n^\n").problem,
              "The dates in this file are written both day/month and month/day. Export it again "
              "from your budgeting program.");
}

TEST(QifImport, ReadsTheDateFormsBudgetingProgramsWrite) {
    const std::string text =
        "!Type:Bank\nD12/31/2024\nT-1\nPA\n^\nD12/31'24\nT-2\nPB\n^\nD1/ 5/24\nT-3\nPC\n^\n"
        "D2024-12-30\nT-4\nPD\n^\nD 1/ 5' 4\nT-5\nPE\n^\nD12/31/99\nT-6\nPF\n^\nD12.15.2024\nT-7\n"
        "PG\n^\nD13/45/2024\nT-8\nPH\n^\nD\nT-9\nPI\n^\nD2/30/2024\nT-10\nPJ\n^\n";
    EXPECT_EQ(describe(analyzeText(text)),
              "row 1 2024-12-31 -100 \"A\"\n"
              "row 2 2024-12-31 -200 \"B\"\n"
              "row 3 2024-01-05 -300 \"C\"\n"
              "row 4 2024-12-30 -400 \"D\"\n"
              "row 5 2004-01-05 -500 \"E\"\n"
              "row 6 1999-12-31 -600 \"F\"\n"
              "row 7 2024-12-15 -700 \"G\"\n"
              "issue 8 Missing or invalid date.\n"
              "issue 9 Missing or invalid date.\n"
              "issue 10 Missing or invalid date.\n");
}

TEST(QifImport, AmountsReadWithTheFilesDecimalMark) {
    EXPECT_EQ(describe(analyzeText("!Type:Bank\nD1/20/2024\nT-1.234,56\nPA\n^\nD1/20/2024\nT12,5\n"
                                   "PB\n^\nD1/20/2024\nT-7\nPC\n^\nD1/20/2024\nT-2.000\nPD\n^\n")),
              "row 1 2024-01-20 -123456 \"A\"\n"
              "row 2 2024-01-20 1250 \"B\"\n"
              "row 3 2024-01-20 -700 \"C\"\n"
              "row 4 2024-01-20 -200000 \"D\"\n");
    // A comma before three digits is a thousands separator in either style.
    EXPECT_EQ(describe(analyzeText("!Type:Bank\nD1/20/2024\nT-1,234\nPA\n^\nD1/20/2024\nT5.5\nPB\n"
                                   "^\n")),
              "row 1 2024-01-20 -123400 \"A\"\n"
              "row 2 2024-01-20 550 \"B\"\n");
    EXPECT_EQ(describe(analyzeText("!Type:Bank\nD1/20/2024\nT-3.775\nPA\n^\nD1/20/2024\nT-3.7700\n"
                                   "PB\n^\nD1/20/2024\nTabc\nPC\n^\nD1/20/2024\nPD\n^\n")),
              "row 2 2024-01-20 -377 \"B\"\n"
              "issue 1 This amount has more decimals than cents.\n"
              "issue 3 Missing or invalid exact amount.\n"
              "issue 4 Missing or invalid exact amount.\n");
}

TEST(QifImport, DescriptionFallsBackToTheCheckNumber) {
    EXPECT_EQ(describe(analyzeText("!Type:Bank\nD1/20/2024\nT-1\nN301\n^\nD1/20/2024\nT-2\nMMEMO\n"
                                   "NATM\n^\nD1/20/2024\nT-3\nNEFT\n^\n")),
              "row 1 2024-01-20 -100 \"CHECK 301\" check=301\n"
              "row 2 2024-01-20 -200 \"MEMO\"\n"
              "issue 3 No payee or memo in this transaction.\n");
}

TEST(QifImport, OpeningBalanceZeroAndEmptyRecordsAreBlankLines) {
    const auto analysis = analyzeText(
        "!Type:Bank\nD1/1/2024\nT1,000.00\nPOpening Balance\nL[Checking]\n^\n^\nD1/20/2024\nT0.00\n"
        "PNOTHING\n^\nD1/3/2024\nT-1\nPOpening Balance\nLFees\n^\n");
    EXPECT_EQ(describe(analysis), "row 4 2024-01-03 -100 \"Opening Balance\" category=Fees\n");
    EXPECT_EQ(analysis.blankLines, 3);
    EXPECT_EQ(analysis.accountedLines(), 4);
}

TEST(QifImport, OneAccountsTransactionsAFile) {
    // Account lists around one register are fine; transactions of two are not.
    const std::string list =
        "!Option:AutoSwitch\n!Account\nNChecking\nTBank\n^\nNVisa\nTCCard\n^\n!Clear:AutoSwitch\n";
    const auto one = analyzeText(list +
                                 "!Account\nNVisa\nTCCard\n^\n!Type:CCard\nD1/20/2024\nT-1\n"
                                 "PA\n^\n");
    EXPECT_EQ(describeAccount(one),
              "qif-card | QIF credit card | creditCard | monthDayYear | "
              "no currency");
    EXPECT_EQ(one.rows.size(), 1u);

    const auto two = analyzeText(list +
                                 "!Account\nNChecking\n^\n!Type:Bank\nD1/20/2024\nT-1\nPA\n^\n"
                                 "!Account\nNVisa\n^\n!Type:CCard\nD1/20/2024\nT-1\nPB\n^\n");
    EXPECT_EQ(two.problem, std::string(kSeveralAccounts));
    EXPECT_TRUE(two.rows.empty());

    EXPECT_EQ(analyzeText("!Type:Invst\nD1/20/2024\nNBuy\nYACME\nT-100\n^\n").problem,
              std::string(kInvestment));
    EXPECT_EQ(analyzeText("!Type:Bank\nD1/20/2024\nT-1\nPA\n^\n!Account\nNBroker\n^\n!Type:Invst\n"
                          "D1/20/2024\nNBuy\n^\n")
                  .problem,
              std::string(kInvestment));
    EXPECT_EQ(analyzeText("Date,Amount\n1/20/2024,-1\n").problem,
              "This QIF file holds no account's transactions. Export a checking, credit-card, "
              "cash or other account from your budgeting program.");
    // Category and class lists are no accounts.
    EXPECT_FALSE(
        analyzeText("!Type:Cat\nNFood\nE\n^\n!Type:Bank\nD1/20/2024\nT-1\nPA\n^\n").problem);
    EXPECT_EQ(describeAccount(analyzeText("!Type:Cash\nD1/20/2024\nT-1\nPA\n^\n")),
              "qif-cash | QIF cash | other | monthDayYear | no currency");
    EXPECT_EQ(describeAccount(analyzeText("!Type:Oth L\n")),
              "qif-other | QIF other | other | yearMonthDay | no currency");
}

TEST(QifImport, FlipSignsAndFingerprintsMatchTheOtherReaders) {
    const auto analysis = analyzeText("!Type:Bank\nD1/20/2024\nT-12.34\nPCOFFEE\n^\n", true);
    ASSERT_EQ(analysis.rows.size(), 1u);
    EXPECT_EQ(analysis.rows[0].amount, 1234);
    EXPECT_EQ(analysis.rows[0].fingerprint(),
              ImportAnalyzer::fingerprint(analysis.rows[0].date, 1234, "COFFEE"));
    EXPECT_EQ(analysis.fileHash,
              ImportAnalyzer::sha256("!Type:Bank\nD1/20/2024\nT-12.34\nPCOFFEE\n^\n"));
}

}  // namespace
}  // namespace copperwick
