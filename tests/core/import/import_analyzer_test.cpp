#include "core/import/import_analyzer.h"

#include <map>
#include <sstream>

#include <gtest/gtest.h>

#include "core/import/builtin_profiles.h"
#include "core/model/text.h"
#include "tests/support/temp_folder.h"

namespace copperwick {
namespace {

FileAnalysis analyzeSample(const std::string& name, bool flipSigns = false) {
    const auto data = testing::readFile(std::filesystem::path(COPPERWICK_TEST_DATA) / "csv" / name);
    return ImportAnalyzer::analyze(name, data, builtInProfiles(), flipSigns);
}

FileAnalysis analyzeText(const std::string& text,
                         const std::vector<ImportProfile>& profiles = builtInProfiles(),
                         const std::string& name = "export.csv") {
    return ImportAnalyzer::analyze(name, text, profiles, false);
}

std::vector<std::string> reasons(const FileAnalysis& analysis) {
    std::vector<std::string> out;
    for (const auto& issue : analysis.issues)
        out.push_back(issue.reason);
    return out;
}

// A purchase of 23.50 (45.12 at Chase) and a refund of 10.00 (12.00) in each bank's own layout.
TEST(ImportAnalyzer, RecognisesEveryBuiltInLayoutWithItsSigns) {
    struct Case {
        std::string file;
        std::string layout;
        int64_t purchase;
        int64_t refund;
    };
    const std::vector<Case> cases{
        {"chase-checking.csv", "chase-checking", -4512, 1200},
        {"chase-card.csv", "chase-card", -2350, 1000},
        {"apple-card.csv", "apple-card", -2350, 1000},
        {"citi-card.csv", "citi-card", -2350, 1000},
        {"capital-one-card.csv", "capital-one-card", -2350, 1000},
        {"wells-fargo.csv", "wells-fargo", -2350, 1000},
        {"wells-fargo-classic.csv", "wells-fargo-classic", -2350, 1000},
        {"comenity.csv", "comenity-card", -2350, 1000},
        {"discover-card.csv", "discover-card", -2350, 1000},
        {"amex-card.csv", "amex-card", -2350, 1000},
        {"bank-of-america.csv", "bank-of-america", -2350, 1000},
        {"dcu-checking.csv", "dcu-checking", -2350, 1000},
        {"schwab-checking.csv", "schwab-checking", -2350, 1000},
        {"boi-statement-2026.csv", "bank-of-ireland", -2350, 1000},
        {"monzo.csv", "monzo", -2350, 1000},
        {"n26.csv", "n26-de", -2350, 1000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.file);
        const auto analysis = analyzeSample(c.file);
        ASSERT_TRUE(analysis.profile) << analysis.problem.value_or("");
        EXPECT_EQ(analysis.profile->id, c.layout);
        EXPECT_FALSE(analysis.problem) << *analysis.problem;
        ASSERT_EQ(analysis.rows.size(), 2u);
        EXPECT_EQ(analysis.rows[0].amount, c.purchase);
        EXPECT_EQ(analysis.rows[1].amount, c.refund);
        EXPECT_EQ(analysis.rows[0].date.month, 3);
    }
}

TEST(ImportAnalyzer, ReadsTheDetailsEachLayoutCarries) {
    const auto boa = analyzeSample("bank-of-america.csv");
    EXPECT_EQ(boa.skippedLines, 4);   // three summary lines and a blank ahead of the header
    EXPECT_TRUE(boa.issues.empty());  // the dated "Beginning balance" line is a summary
    EXPECT_EQ(boa.blankLines, 1);
    EXPECT_EQ(boa.accountedLines(), 8);

    const auto amex = analyzeSample("amex-card.csv");
    EXPECT_EQ(amex.rows[0].cardIdentifier(), "Cardholder: DANA SMITH");
    EXPECT_EQ(amex.typeHint, AccountType::creditCard);

    const auto capitalOne = analyzeSample("capital-one-card.csv");
    EXPECT_EQ(capitalOne.rows[0].cardIdentifier(), "Card ending 4421");
    EXPECT_EQ(capitalOne.digitHints, std::vector<std::string>{"4421"});
    EXPECT_EQ(capitalOne.dateLayout, DateLayout::yearMonthDay);

    const auto schwab = analyzeSample("schwab-checking.csv");
    EXPECT_EQ(schwab.rows[1].status, TransactionStatus::pending);
    EXPECT_EQ(schwab.currencyHint, "USD");

    const auto monzo = analyzeSample("monzo.csv");
    EXPECT_EQ(monzo.currencyHint, "GBP");
    EXPECT_EQ(monzo.rows[0].externalID(), "tx_0001");
    EXPECT_EQ(monzo.rows[0].date, *LocalDate::make(2026, 3, 9));

    const auto chase = analyzeSample("chase-checking.csv");
    EXPECT_EQ(chase.rows[0].fingerprint(), "2026-03-09|-4512|TRADER JOE S #552 PORTLAND OR");
    EXPECT_EQ(chase.rows[0].rawText(),
              "DEBIT,03/09/2026,\"TRADER JOE S #552 PORTLAND OR\",-45.12,DEBIT_CARD,1254.88,");
}

TEST(ImportAnalyzer, IrelandLayoutNeedsItsFileName) {
    const auto data = testing::readFile(std::filesystem::path(COPPERWICK_TEST_DATA) / "csv" /
                                        "boi-statement-2026.csv");
    const auto analysis = ImportAnalyzer::analyze("statement.csv", data, builtInProfiles(), false);
    EXPECT_FALSE(analysis.profile);

    // Chosen by hand, the same layout reads the file whatever its name.
    ImportProfile ireland;
    for (const auto& p : builtInProfiles()) {
        if (p.id == "bank-of-ireland")
            ireland = p;
    }
    EXPECT_EQ(ImportAnalyzer::analyze("statement.csv", data, ireland, false).rows.size(), 2u);
}

TEST(ImportAnalyzer, HeaderSearchLooksTwelveRecordsDeep) {
    const std::string header = "Date,Description,Amount,Status\n03/09/2026,X,-1.00,Posted\n";
    const auto atTwelve = analyzeText(std::string(10, '\n') + "Preamble\n" + header);
    ASSERT_TRUE(atTwelve.profile);
    EXPECT_EQ(atTwelve.skippedLines, 11);
    EXPECT_FALSE(analyzeText(std::string(12, '\n') + header).profile);
}

TEST(ImportAnalyzer, HeaderNamesMatchLooselyButNotInside) {
    EXPECT_TRUE(
        analyzeText("  date ,DESCRIPTION,Amount ,Status\n03/09/2026,X,-1.00,Posted\n").profile);
    const auto doubled =
        analyzeText("Transaction Date,Post  Date,Description,Amount\n03/09/2026,03/09/2026,X,1\n");
    EXPECT_FALSE(doubled.profile && doubled.profile->id == "chase-card");

    // A repeated column name: the first one counts.
    const auto repeated =
        analyzeText("Date,Description,Amount,Amount,Status\n03/09/2026,X,-1.00,-9.00,Posted\n");
    ASSERT_EQ(repeated.rows.size(), 1u);
    EXPECT_EQ(repeated.rows[0].amount, -100);
}

// A spreadsheet that padded its headers and dates with no-break spaces gave a
// file whose layout wasn't recognised and whose dates couldn't be read.
TEST(ImportAnalyzer, HeadersAndDatesAreTrimmedOfEveryKindOfSpace) {
    const std::string nbsp = "\u00A0";
    const std::string figureSpace = "\u2007";
    const std::string ideographic = "\u3000";
    const auto analysis = analyzeText(nbsp + "Date" + nbsp + ",\tDescription" + figureSpace +
                                      ",Amount" + ideographic + ",Status\n" + nbsp + "03/09/2026" +
                                      figureSpace + ",X,-1.00,Posted\n");
    ASSERT_TRUE(analysis.profile);
    ASSERT_TRUE(analysis.dateLayout);
    EXPECT_EQ(*analysis.dateLayout, DateLayout::monthDayYear);
    ASSERT_EQ(analysis.rows.size(), 1u) << ::testing::PrintToString(reasons(analysis));
    EXPECT_EQ(analysis.rows[0].date, (LocalDate{2026, 3, 9}));
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, nbsp + "3/9/2026" + ideographic),
              (LocalDate{2026, 3, 9}));
    // A line break is still damage, not padding; neither is a zero-width space white space.
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "3/9/2026\u2028"), std::nullopt);
    EXPECT_EQ(parseDate(DateLayout::monthDayYear, "\u200B3/9/2026"), std::nullopt);
}

TEST(ImportAnalyzer, MoreSpecificLayoutWinsAndTiesKeepTheEarlier) {
    ImportProfile taught{.id = "custom-1",
                         .name = "Mine",
                         .dateColumn = "Transaction Date",
                         .descriptionColumn = "Description"};
    taught.amountColumn = "Amount";
    taught.requiredHeaders = {"Transaction Date", "Post Date", "Description", "Amount", "Extra"};
    std::vector<ImportProfile> profiles{taught};
    for (const auto& p : builtInProfiles())
        profiles.push_back(p);
    const std::string chase =
        "Transaction Date,Post Date,Description,Amount,Extra\n03/09/2026,03/09/2026,X,-1.00,e\n";
    EXPECT_EQ(analyzeText(chase, profiles).profile->id, "custom-1");

    profiles[0].requiredHeaders = {"Transaction Date", "Post Date", "Description", "Amount"};
    EXPECT_EQ(analyzeText(chase, profiles).profile->id,
              "custom-1");  // equal counts: the earlier one

    // A clearing date rules out Chase but suits Apple Card.
    const auto apple = analyzeText(
        "Transaction Date,Clearing Date,Post Date,Description,Amount (USD),Amount\n"
        "03/09/2026,03/09/2026,03/09/2026,X,1.00,1.00\n");
    EXPECT_EQ(apple.profile->id, "apple-card");
}

TEST(ImportAnalyzer, SplitColumnsIgnoreTheirOwnSigns) {
    const std::string head = "Status,Date,Description,Debit,Credit\n";
    const auto read = [&](const std::string& debit, const std::string& credit) {
        return analyzeText(head + "Cleared,03/09/2026,X," + debit + "," + credit + "\n");
    };
    EXPECT_EQ(read("0.00", "15.00").rows.at(0).amount, 1500);
    EXPECT_EQ(read("-15.00", "").rows.at(0).amount, -1500);
    EXPECT_EQ(read("0.00", "0.00").rows.at(0).amount, 0);
    EXPECT_EQ(reasons(read("5.00", "6.00")),
              std::vector<std::string>{
                  "Both Debit and Credit are filled in, so the direction is unclear."});
    EXPECT_EQ(reasons(read("", "")), std::vector<std::string>{"No amount in this row."});
    EXPECT_EQ(reasons(read("1.234", "")),
              std::vector<std::string>{"The debit “1.234” isn't an exact dollar amount."});
}

TEST(ImportAnalyzer, RowProblemsAreToldInOrder) {
    const auto analysis = analyzeText(
        "Date,Description,Amount,Status\n"
        ",TOTAL,,\n"
        "03/09/2026,NO AMOUNT,,Posted\n"
        "31/31/2026,BAD DATE,-1.00,Posted\n"
        "03/09/2026,,-1.00,Posted\n"
        "03/09/2026,BAD AMOUNT,12.345,Posted\n"
        " , , , \n"
        "03/09/2026,GOOD,-1.00,Posted\n");
    EXPECT_EQ(
        reasons(analysis),
        (std::vector<std::string>{
            "No amount in this row.", "The date “31/31/2026” isn't a date Copperwick can read.",
            "No description in this row.", "The amount “12.345” isn't an exact dollar amount."}));
    EXPECT_EQ(analysis.blankLines, 2);  // the TOTAL line and the blank one
    ASSERT_EQ(analysis.rows.size(), 1u);
    EXPECT_EQ(analysis.rows[0].line, 8);
    EXPECT_EQ(analysis.accountedLines(), 8);
}

// A checking download that opened with a dated "Beginning balance" line and
// closed with totals was refused whole for rows that hold no transaction.
TEST(ImportAnalyzer, BalanceAndTotalLinesAreSummariesNotProblems) {
    const auto analysis = analyzeText(
        "Date,Description,Amount,Running Bal.\n"
        "03/01/2026,Beginning balance as of 03/01/2026,,\"1,000.00\"\n"
        "03/02/2026,TOTAL WINE & MORE,-30.00,970.00\n"
        "03/03/2026,NEW BALANCE ATHLETICS,,970.00\n"
        ",Total debits,-30.00,\n"
        ",,,\n"
        "03/31/2026,Ending Balance:,,970.00\n");
    EXPECT_EQ(reasons(analysis), std::vector<std::string>{"No amount in this row."});
    EXPECT_EQ(analysis.issues.at(0).line, 4);  // a shop's name is no summary
    EXPECT_EQ(analysis.blankLines, 4);
    ASSERT_EQ(analysis.rows.size(), 1u);
    EXPECT_EQ(analysis.rows[0].description(), "TOTAL WINE & MORE");
    EXPECT_EQ(analysis.accountedLines(), 7);

    for (const char* summary : {"Total", "TOTALS:", "Grand total", "Opening balance",
                                "Balance brought forward", "Total for March 2026"})
        EXPECT_TRUE(ImportAnalyzer::isSummaryText(summary)) << summary;
    for (const char* shop :
         {"TOTAL WINE", "BALANCE FITNESS", "TOTALLY FRESH", "NEW BALANCE ATHLETICS"})
        EXPECT_FALSE(ImportAnalyzer::isSummaryText(shop)) << shop;
}

TEST(ImportAnalyzer, FlippedSignsChangeTheFingerprint) {
    const auto plain = analyzeSample("chase-card.csv");
    const auto flipped = analyzeSample("chase-card.csv", true);
    EXPECT_EQ(flipped.rows[0].amount, 2350);
    EXPECT_NE(flipped.rows[0].fingerprint(), plain.rows[0].fingerprint());
}

TEST(ImportAnalyzer, OccurrencesCountPerCard) {
    const auto analysis = analyzeText(
        "Date,Description,Card Member,Amount\n"
        "03/09/2026,COFFEE,DANA,4.00\n"
        "03/09/2026,COFFEE,SAM,4.00\n"
        "03/09/2026,COFFEE,DANA,4.00\n");
    ASSERT_EQ(analysis.rows.size(), 3u);
    EXPECT_EQ(analysis.rows[0].occurrence, 1);
    EXPECT_EQ(analysis.rows[1].occurrence, 1);
    EXPECT_EQ(analysis.rows[2].occurrence, 2);
}

TEST(ImportAnalyzer, CurrencyColumnRules) {
    const std::string head = "Transaction ID,Date,Type,Name,Amount,Currency,Local amount\n";
    const auto analysis = analyzeText(head +
                                      "t1,09/03/2026,Card,A,-1.00,usd,-1.00\n"
                                      "t2,09/03/2026,Card,B,-1.00,US$,-1.00\n"
                                      "t3,09/03/2026,Card,C,-1.00,EUR,-1.00\n"
                                      "t4,09/03/2026,Card,D,-1.00,USD,-1.00\n");
    EXPECT_EQ(analysis.currencyHint, "USD");
    EXPECT_EQ(reasons(analysis), (std::vector<std::string>{"No valid currency for this row.",
                                                           "Currency differs from earlier rows."}));
    EXPECT_EQ(analysis.problem,
              "This file contains multiple account currencies. Export one currency at a time.");
    EXPECT_EQ(analysis.rows.size(), 2u);
}

TEST(ImportAnalyzer, WholeFileProblems) {
    EXPECT_EQ(analyzeText("").problem, "This file is empty.");
    EXPECT_EQ(analyzeText(std::string("\x81\x8D", 2)).problem,
              "This file isn't readable text. Export it from your bank as CSV.");
    const auto blank = analyzeText("\n\n  \n");
    EXPECT_EQ(blank.problem,
              "Copperwick doesn't recognize this layout yet. Choose which columns hold the date, "
              "description and "
              "amount.");
    EXPECT_TRUE(blank.headers.empty());
    const auto unknown = analyzeText("\nWhen,What,How much\n1,2,3\n");
    EXPECT_EQ(unknown.headers, (std::vector<std::string>{"When", "What", "How much"}));

    const auto dates = analyzeText("Date,Description,Amount,Status\nsoon,X,-1.00,Posted\n");
    EXPECT_EQ(dates.problem, "The dates in this file aren't in a format Copperwick can read.");

    ImportProfile missing{
        .id = "custom-x", .name = "Mine", .dateColumn = "Date", .descriptionColumn = "Memo"};
    missing.amountColumn = "Amount";
    missing.requiredHeaders = {"Date", "Amount"};
    EXPECT_EQ(analyzeText("Date,Amount\n03/09/2026,1.00\n", {missing}).problem,
              "The layout “Mine” is missing a date, description or amount column.");
}

TEST(ImportAnalyzer, SameBytesGiveTheSameAnalysisButTheID) {
    auto first = analyzeSample("chase-card.csv");
    auto second = analyzeSample("chase-card.csv");
    EXPECT_NE(first.id, second.id);
    second.id = first.id;
    EXPECT_EQ(first.rows, second.rows);
    EXPECT_EQ(first.fileHash, second.fileHash);
    EXPECT_EQ(first.fileHash.size(), 64u);
}

TEST(ImportAnalyzer, DigitHintsAreRunsOfExactlyFour) {
    EXPECT_EQ(ImportAnalyzer::digitHints("Statement_1234_2024.csv"),
              (std::vector<std::string>{"1234", "2024"}));
    EXPECT_TRUE(ImportAnalyzer::digitHints("123456.csv").empty());
    EXPECT_EQ(ImportAnalyzer::digitHints("1234-1234.1999.csv"),
              (std::vector<std::string>{"1234", "1999"}));
    EXPECT_EQ(ImportAnalyzer::sha256(""),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(ImportAnalyzer, AccountSuggestions) {
    FileAnalysis analysis = analyzeSample("capital-one-card.csv");
    EXPECT_TRUE(std::holds_alternative<AccountSuggestion::None>(
        ImportAnalyzer::suggestAccount(FileAnalysis{}, {}).value));

    const auto proposal =
        std::get<AccountSuggestion::New>(ImportAnalyzer::suggestAccount(analysis, {}).value);
    EXPECT_EQ(proposal.name, "Capital One credit card \u2022\u20224421");
    EXPECT_EQ(proposal.type, AccountType::creditCard);

    Account card(Uuid::random(), "Card", AccountType::creditCard);
    card.profileID = "capital-one-card";
    card.last4 = "4421";
    Account other = card;
    other.id = Uuid::random();
    other.last4 = "9999";
    const auto byDigits = std::get<AccountSuggestion::Existing>(
        ImportAnalyzer::suggestAccount(analysis, {card, other}).value);
    EXPECT_EQ(byDigits.accountID, card.id);
    EXPECT_EQ(byDigits.reason, "matched the card ending 4421");

    other.last4.reset();
    card.last4.reset();
    EXPECT_TRUE(std::holds_alternative<AccountSuggestion::Choose>(
        ImportAnalyzer::suggestAccount(analysis, {card, other}).value));
    const auto only = std::get<AccountSuggestion::Existing>(
        ImportAnalyzer::suggestAccount(analysis, {card}).value);
    EXPECT_EQ(only.reason, "the only Capital One credit card account");

    const auto wells = analyzeSample("wells-fargo.csv");
    EXPECT_EQ(
        std::get<AccountSuggestion::New>(ImportAnalyzer::suggestAccount(wells, {}).value).name,
        "Wells Fargo checking");
}

// The layout, the counts, the rows and the issues as one string, so that two
// analyses compare at once.
std::string describe(const FileAnalysis& analysis) {
    std::ostringstream out;
    out << (analysis.profile ? analysis.profile->id : "no layout") << ", skipped "
        << analysis.skippedLines << ", blank " << analysis.blankLines << ", dates "
        << (analysis.dateLayout ? rawValue(*analysis.dateLayout) : "none") << '\n';
    for (const auto& row : analysis.rows) {
        out << row.line << ' ' << row.date << ' ' << row.amount << " \"" << row.description()
            << "\" #" << row.occurrence;
        if (const auto card = row.cardIdentifier())
            out << " [" << *card << ']';
        out << " {" << row.rawText() << "}\n";
    }
    for (const auto& issue : analysis.issues)
        out << issue.line << ' ' << issue.reason << " {" << issue.rawText << "}\n";
    return out.str();
}

// What streaming the rows must agree with: the whole text read as one list of
// records and handed to the list-based detect and parse.
std::string describeFromAllRecords(const std::string& text) {
    const auto records = CSVReader::parse(text, CSVReader::detectDelimiter(text));
    FileAnalysis analysis;
    if (const auto layout = ImportAnalyzer::detect(records, builtInProfiles(), "export.csv"))
        ImportAnalyzer::parse(records, *layout, analysis, false);
    return describe(analysis);
}

const std::string kChaseHeader =
    "Transaction Date,Post Date,Description,Category,Type,Amount,Memo\n";

std::string chaseRow(int i) {
    return "03/09/2026,03/10/2026,SHOP " + std::to_string(i) + ",Shopping,Sale,-1.00,\n";
}

TEST(ImportAnalyzerStreaming, MultiLineRecordAroundTheEndOfTheHeaderWindow) {
    // The header search sees twelve records; the record that crosses from
    // line 12 to line 13 and its neighbours must be read once each, with
    // every later line number two higher.
    for (const int at : {10, 11, 12, 13}) {
        SCOPED_TRACE(at);
        std::string text = kChaseHeader;
        for (int i = 1; i <= 15; ++i) {
            text += i == at ? "03/09/2026,03/10/2026,\"LINE ONE\nLINE TWO\r\nLINE THREE\",Shopping,"
                              "Sale,-2.00,\n"
                            : chaseRow(i);
        }
        const auto analysis = analyzeText(text);
        EXPECT_EQ(describe(analysis), describeFromAllRecords(text));
        ASSERT_EQ(analysis.rows.size(), 15u);
        const auto& multi = analysis.rows[static_cast<std::size_t>(at - 1)];
        EXPECT_EQ(multi.line, at + 1);
        EXPECT_EQ(multi.description(), "LINE ONE LINE TWO LINE THREE");
        EXPECT_EQ(multi.rawText(),
                  "03/09/2026,03/10/2026,\"LINE ONE LINE TWO LINE THREE\",Shopping,Sale,-2.00,");
        EXPECT_EQ(analysis.rows[static_cast<std::size_t>(at)].line, at + 4);
        EXPECT_EQ(analysis.rows.back().line, 18);
        EXPECT_EQ(analysis.accountedLines(), 16);
    }
}

TEST(ImportAnalyzerStreaming, LineEndingsDontChangeWhatIsRead) {
    std::string text = kChaseHeader + "\n";
    for (int i = 1; i <= 20; ++i)
        text += i % 7 == 0 ? "03/09/2026,03/10/2026,\"TWO\nLINES\",Shopping,Sale,-2.00,\n"
                           : chaseRow(i);
    const auto lf = describe(analyzeText(text));
    EXPECT_EQ(lf, describeFromAllRecords(text));
    std::string crlf, cr;
    for (const char c : text) {
        crlf += c == '\n' ? "\r\n" : std::string(1, c);
        cr += c == '\n' ? '\r' : c;
    }
    EXPECT_EQ(describe(analyzeText(crlf)), lf);
    EXPECT_EQ(describe(analyzeText(cr)), lf);
}

TEST(ImportAnalyzerStreaming, HeaderLateInTheWindowCountsRecordsNotLines) {
    // Eleven records of preamble, the first of them three lines long, put the
    // header on line 14 but still inside the twelve-record window.
    std::string preamble = "\"Statement for\nDANA SMITH\nAccount 1234\"\n";
    for (int i = 1; i <= 10; ++i)
        preamble += "Preamble " + std::to_string(i) + "\n";
    const std::string text = preamble + kChaseHeader + chaseRow(1) + "\n" + chaseRow(2);
    const auto analysis = analyzeText(text);
    ASSERT_TRUE(analysis.profile);
    EXPECT_EQ(analysis.profile->id, "chase-card");
    EXPECT_EQ(analysis.skippedLines, 11);
    ASSERT_EQ(analysis.rows.size(), 2u);
    EXPECT_EQ(analysis.rows[0].line, 15);
    EXPECT_EQ(analysis.rows[1].line, 17);
    EXPECT_EQ(analysis.blankLines, 1);
    EXPECT_EQ(analysis.accountedLines(), 15);
    EXPECT_EQ(describe(analysis), describeFromAllRecords(text));

    const auto tooLate = analyzeText(preamble + "One more\n" + kChaseHeader + chaseRow(1));
    EXPECT_FALSE(tooLate.profile);
    EXPECT_EQ(tooLate.headers, std::vector<std::string>{"Statement for\nDANA SMITH\nAccount 1234"});
}

TEST(ImportAnalyzerStreaming, BlankLinesAreCountedWhereverTheyStand) {
    std::string text = "\n  \n" + kChaseHeader;
    int blanks = 0;
    for (int i = 1; i <= 40; ++i) {
        text += chaseRow(i);
        if (i % 6 == 0) {
            text += i % 12 == 0 ? "\t \n" : ",,,\n";
            ++blanks;
        }
    }
    text += "\n\n";
    blanks += 2;  // the last break ends the second of these; no record follows it
    const auto analysis = analyzeText(text);
    EXPECT_EQ(analysis.skippedLines, 2);
    EXPECT_EQ(analysis.blankLines, blanks);
    EXPECT_EQ(analysis.rows.size(), 40u);
    EXPECT_EQ(analysis.accountedLines(), static_cast<int64_t>(CSVReader::parse(text, U',').size()));
    EXPECT_EQ(describe(analysis), describeFromAllRecords(text));
}

TEST(ImportAnalyzerStreaming, HeaderlessRowsAfterALongRunOfBlankLines) {
    // Detection needs the first records with content, not the first twelve.
    std::string text(20, '\n');
    for (int i = 1; i <= 10; ++i) {
        text += "03/" + std::to_string(10 + i) + "/2026,-" + std::to_string(i) + ".00,*,,SHOP " +
                std::to_string(i) + "\n";
        if (i == 3)
            text += "\n";
    }
    const auto analysis = analyzeText(text);
    ASSERT_TRUE(analysis.profile);
    EXPECT_EQ(analysis.profile->id, "wells-fargo-classic");
    EXPECT_EQ(analysis.blankLines, 21);
    ASSERT_EQ(analysis.rows.size(), 10u);
    EXPECT_EQ(analysis.rows[0].line, 21);
    EXPECT_EQ(analysis.rows[3].line, 25);
    ASSERT_EQ(analysis.sampleRecords.size(), 8u);
    EXPECT_EQ(analysis.sampleRecords[3].back(), "SHOP 4");
    EXPECT_EQ(describe(analysis), describeFromAllRecords(text));
}

TEST(ImportAnalyzerStreaming, DateSamplesReachPastTheHeadButStopAtTwoHundred) {
    // Ambiguous dates read both ways; one day past 12 decides, if it is among
    // the first 200 samples. A blank line is no sample.
    const auto analysis = [](int ambiguous) {
        std::string text = "Date,Description,Amount,Running Bal.\n";
        for (int i = 1; i <= ambiguous; ++i)
            text += i == 50 ? "\n03/04/2026,A,1.00,0\n" : "03/04/2026,A,1.00,0\n";
        return analyzeText(text + "25/03/2026,B,1.00,0\n");
    };
    EXPECT_EQ(analysis(15).dateLayout, DateLayout::dayMonthYear);
    EXPECT_EQ(analysis(199).dateLayout, DateLayout::dayMonthYear);
    const auto past = analysis(200);
    EXPECT_EQ(past.dateLayout, DateLayout::monthDayYear);
    EXPECT_EQ(reasons(past),
              std::vector<std::string>{"The date “25/03/2026” isn't a date Copperwick can read."});
}

TEST(ImportAnalyzer, OccurrencesFollowTheWholeKeyOverManyRows) {
    // Descriptions and cardholders that differ only in case or spacing make
    // one key; there are enough keys that the counter's table has to grow.
    const char* const descriptions[] = {"COFFEE", "coffee ", "TEA", "A|card:b", "a|CARD:B"};
    const char* const members[] = {"DANA", "dana", "SAM", ""};
    std::string text = "Date,Description,Card Member,Account #,Amount\n";
    for (int i = 0; i < 400; ++i) {
        text += "03/0" + std::to_string(1 + i % 2) + "/2026," + descriptions[i % 5] + "," +
                members[i / 8 % 4] + ",-1,4.5" + std::to_string(i % 8) + "\n";
    }
    const auto analysis = analyzeText(text);
    ASSERT_EQ(analysis.rows.size(), 400u);
    std::map<std::string, int64_t> seen;
    for (const auto& row : analysis.rows) {
        const std::string key =
            row.fingerprint() + "|card:" + text::lowercased(row.cardIdentifier().value_or(""));
        EXPECT_EQ(row.occurrence, ++seen[key]) << row.line << " " << key;
    }
    EXPECT_GT(seen.size(), 16u);
    EXPECT_LT(seen.size(), 100u) << "the rows must repeat keys for the test to mean anything";

    // Whenever the table grows, the row that made it grow is still counted
    // against the keys before it.
    std::string distinct = "Date,Description,Card Member,Account #,Amount\n";
    for (int keys = 1; keys <= 70; ++keys) {
        distinct += "03/09/2026,SHOP " + std::to_string(keys) + ",DANA,-1,1.00\n";
        const auto repeated = analyzeText(distinct + "03/09/2026,SHOP 1,Dana,-1,1.00\n");
        ASSERT_EQ(repeated.rows.size(), static_cast<std::size_t>(keys) + 1);
        EXPECT_EQ(repeated.rows.back().occurrence, 2) << "after " << keys << " keys";
    }
}

TEST(AccountTypeMarkers, OneKindOfMarkerDecides) {
    EXPECT_EQ(AccountTypeMarkers::guess({"Payment Thank You - Web", "COFFEE"}),
              AccountType::creditCard);
    EXPECT_EQ(AccountTypeMarkers::guess({"ATM WITHDRAWAL 1234", "COFFEE"}), AccountType::checking);
    EXPECT_FALSE(AccountTypeMarkers::guess({"AUTOPAY PAYMENT", "PAYROLL ACME"}));
    EXPECT_FALSE(AccountTypeMarkers::guess({"ATMOSPHERE CAFE"}));
}

}  // namespace
}  // namespace copperwick
