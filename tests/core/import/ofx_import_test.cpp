#include "core/import/ofx_import.h"

#include <chrono>
#include <fstream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <unicode/regex.h>
#include <unicode/unistr.h>

#include "core/import/import_analyzer.h"
#include "core/model/enum_text.h"

namespace copperwick {
namespace {

constexpr std::string_view kDot = " \xC2\xB7 ";
constexpr std::string_view kStatementCount =
    "Choose an OFX/QFX file containing exactly one checking, savings or credit-card statement. "
    "Investment statements are not supported.";
constexpr std::string_view kDocumentType =
    "OFX files with document types or external entities are not supported.";
constexpr std::string_view kNoCurrency = "This statement has no valid currency.";
constexpr std::string_view kIncomplete =
    "This statement contains an incomplete transaction. Export it again from your bank.";

std::string readSample(std::string_view name) {
    std::ifstream in(std::string(COPPERWICK_TEST_DATA) + "/ofx/" + std::string(name),
                     std::ios::binary);
    EXPECT_TRUE(in) << name;
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

FileAnalysis analyzeText(std::string_view text, bool flipSigns = false) {
    return OFXImport::analyze("statement.ofx", text, text, flipSigns);
}

FileAnalysis analyzeSample(std::string_view name) {
    const std::string text = readSample(name);
    return OFXImport::analyze(name, text, text, false);
}

// Tag-only statements in the shape banks export, around the given transactions.
std::string bankStatement(std::string_view transactions, std::string_view accountType = "CHECKING",
                          std::string_view currency = "USD") {
    return "OFXHEADER:100\nDATA:OFXSGML\n\n<OFX>\n<BANKMSGSRSV1><STMTTRNRS>\n<STMTRS>\n<CURDEF>" +
           std::string(currency) + "\n<BANKACCTFROM>\n<BANKID>121000248\n<ACCTID>987654321\n" +
           (accountType.empty() ? std::string() : "<ACCTTYPE>" + std::string(accountType) + "\n") +
           "</BANKACCTFROM>\n<BANKTRANLIST>\n" + std::string(transactions) +
           "</BANKTRANLIST>\n</STMTRS>\n</STMTTRNRS></BANKMSGSRSV1>\n</OFX>\n";
}

std::string cardStatement(std::string_view transactions) {
    return "<OFX><CREDITCARDMSGSRSV1><CCSTMTTRNRS><CCSTMTRS><CURDEF>USD</CURDEF>"
           "<CCACCTFROM><ACCTID>4111111111111111</ACCTID></CCACCTFROM><BANKTRANLIST>" +
           std::string(transactions) +
           "</BANKTRANLIST></CCSTMTRS></CCSTMTTRNRS></CREDITCARDMSGSRSV1></OFX>";
}

std::string transaction(std::string_view posted, std::string_view amount, std::string_view name,
                        std::string_view memo = "", std::string_view fitid = "") {
    std::string out = "<STMTTRN>\n<TRNTYPE>OTHER\n";
    if (!posted.empty())
        out += "<DTPOSTED>" + std::string(posted) + "\n";
    if (!amount.empty())
        out += "<TRNAMT>" + std::string(amount) + "\n";
    if (!fitid.empty())
        out += "<FITID>" + std::string(fitid) + "\n";
    if (!name.empty())
        out += "<NAME>" + std::string(name) + "\n";
    if (!memo.empty())
        out += "<MEMO>" + std::string(memo) + "\n";
    return out + "</STMTTRN>\n";
}

// One line per row and issue, so a failure shows the whole outcome at once.
std::string describe(const FileAnalysis& analysis) {
    std::ostringstream out;
    if (analysis.problem)
        out << "problem: " << *analysis.problem << "\n";
    for (const auto& row : analysis.rows) {
        out << "row " << row.line << " " << row.date.iso() << " " << row.amount << " \""
            << row.description() << "\"";
        if (row.externalID())
            out << " id=" << *row.externalID();
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
        << analysis.currencyHint.value_or("no currency") << " | ";
    for (const auto& hint : analysis.digitHints)
        out << hint;
    return out.str();
}

TEST(OFXImport, RecognizesByExtensionOrOFXTagOnly) {
    struct Case {
        std::string_view fileName;
        std::string_view text;
        bool recognized;
    };
    const Case cases[] = {
        {"statement.ofx", "Date,Amount\n", true},
        {"STATEMENT.QFX", "", true},
        {"Statement.Ofx", "", true},
        {"export.csv", "junk\n<OFX>\n<SIGNONMSGSRSV1>", true},
        {"export.csv", "<ofx attr=\"1\">", true},
        {"export.csv", "<Ofx\n>", true},
        {"export.csv", "OFXHEADER:100\n<OFXHEADER:100", false},
        {"export.csv", "<OFXX>", false},
        {"export.csv", "OFX>", false},
        {"ofx.csv", "Date,Amount\n", false},
        {"statement.ofx.csv", "Date,Amount\n", false},
        {"statement", "Date,Amount\n", false},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(OFXImport::recognizes(c.fileName, c.text), c.recognized)
            << c.fileName << " / " << c.text;
    }
}

TEST(OFXImport, ReadsTagOnlyCheckingStatementWithCRLF) {
    const auto analysis = analyzeSample("checking_tag_only.ofx");
    EXPECT_EQ(describeAccount(analysis), "ofx-bank | OFX/QFX checking | checking | USD | 7723");
    EXPECT_EQ(describe(analysis),
              "row 1 2024-03-01 215000 \"ACME CORP PAYROLL" + std::string(kDot) +
                  "DIRECT DEP PPD\" id=202403010001\n"
                  "row 2 2024-03-05 -12000 \"CHECK 1042\" id=202403050002 "
                  "check=1042\n"
                  "row 3 2024-03-08 -5423 \"GREEN GROCER #12\" id=202403080003\n"
                  "row 4 2024-03-15 -6000 \"ATM WITHDRAWAL" +
                  std::string(kDot) + "MAIN ST & 5TH AVE\" id=202403150004\n");
}

TEST(OFXImport, ReadsXMLCardStatementWithEntities) {
    const auto analysis = analyzeSample("card_xml.ofx");
    EXPECT_EQ(describeAccount(analysis),
              "ofx-card | OFX/QFX credit card | creditCard | USD | 4821");
    EXPECT_EQ(describe(analysis),
              "row 1 2024-02-03 -1234 \"Joe's Diner" + std::string(kDot) +
                  "PORTLAND OR\" id=2469216403400012345678\n"
                  "row 2 2024-02-11 -3871 \"BARNES & NOBLE #2817\" id=2469216404200087654321\n"
                  "row 3 2024-02-20 25000 \"ONLINE PAYMENT, THANK YOU\" id=7400000000000000000220\n"
                  "row 4 2024-02-29 599 \"STREAMFLIX.COM" +
                  std::string(kDot) + "REFUND \"PREMIUM\" PLAN\" id=2469216406000011112222\n");
}

TEST(OFXImport, ReadsSavingsQFXWrittenOnFewLines) {
    const auto analysis = analyzeSample("savings.qfx");
    EXPECT_EQ(describeAccount(analysis), "ofx-bank | OFX/QFX savings | savings | USD | 5531");
    EXPECT_EQ(describe(analysis), "row 1 2023-12-04 50000 \"TRANSFER FROM CHK 7723" +
                                      std::string(kDot) + "ONLINE TRANSFER\" id=SAV20231204A\n" +
                                      "row 2 2023-12-18 -20000 \"TRANSFER TO CHK 7723" +
                                      std::string(kDot) + "ONLINE TRANSFER\" id=SAV20231218A\n" +
                                      "row 3 2023-12-31 317 \"INTEREST PAID\" id=SAV20231231I\n");
}

TEST(OFXImport, RepeatedFITIDIsAnIssueWhileTwinPurchasesCountOccurrences) {
    const auto analysis = analyzeSample("repeated_fitid.ofx");
    EXPECT_EQ(describeAccount(analysis), "ofx-bank | OFX/QFX checking | checking | USD | 1893");
    EXPECT_EQ(describe(analysis),
              "row 1 2024-05-02 -475 \"CORNER COFFEE\" id=90000000001\n"
              "row 2 2024-05-02 -475 \"CORNER COFFEE\" id=90000000002 occurrence=2\n"
              "row 4 2024-05-06 -8210 \"CITY WATER UTILITY" +
                  std::string(kDot) +
                  "AUTOPAY\"\n"
                  "issue 3 Repeated transaction ID in this statement; check this row before "
                  "importing.\n");
    ASSERT_EQ(analysis.issues.size(), 1u);
    EXPECT_NE(analysis.issues[0].rawText.find("<FITID>90000000002"), std::string::npos);
}

TEST(OFXImport, FillsTheAnalysisLikeTheCSVPath) {
    // The hash is of the bytes, not of the decoded text: a BOM makes them differ.
    const std::string text = bankStatement(transaction("20240102", "-1.00", "X"));
    const std::string data = "\xEF\xBB\xBF" + text;
    const auto analysis = OFXImport::analyze("Checking_1234.ofx", data, text, false);
    EXPECT_EQ(analysis.fileName, "Checking_1234.ofx");
    EXPECT_EQ(analysis.fileHash, ImportAnalyzer::sha256(data));
    EXPECT_FALSE(analysis.id.isNil());
    EXPECT_NE(analysis.id, OFXImport::analyze("Checking_1234.ofx", data, text, false).id);
    EXPECT_EQ(analysis.delimiter, ",");
    EXPECT_EQ(analysis.dateLayout, DateLayout::yearMonthDay);
    EXPECT_TRUE(analysis.headers.empty());
    EXPECT_TRUE(analysis.sampleRecords.empty());
    EXPECT_EQ(analysis.skippedLines, 0);
    EXPECT_EQ(analysis.blankLines, 0);
    // The ACCTID's digits, never the file name's.
    EXPECT_EQ(analysis.digitHints, std::vector<std::string>{"4321"});
    // A headerless profile, so every block is accounted for as a row or an issue.
    EXPECT_EQ(analysis.accountedLines(), 1);

    ASSERT_TRUE(analysis.profile);
    const ImportProfile& profile = *analysis.profile;
    EXPECT_FALSE(profile.hasHeader);
    EXPECT_EQ(profile.dateColumn, "DTPOSTED");
    EXPECT_EQ(profile.descriptionColumn, "NAME");
    EXPECT_EQ(profile.amountColumn, "TRNAMT");
    EXPECT_EQ(profile.signConvention, SignConvention::positiveIsMoneyIn);
    EXPECT_EQ(profile.dateLayout, DateLayout::yearMonthDay);
    EXPECT_TRUE(profile.isBuiltIn);
    EXPECT_FALSE(profile.fileNameHints);
    EXPECT_FALSE(profile.currency);
    EXPECT_TRUE(profile.requiredHeaders.empty());

    ASSERT_EQ(analysis.rows.size(), 1u);
    const ParsedRow& row = analysis.rows[0];
    EXPECT_EQ(row.postedDate, row.date);
    EXPECT_EQ(row.status, TransactionStatus::posted);
    EXPECT_FALSE(row.bankMerchant());
    EXPECT_FALSE(row.bankCategory());
    EXPECT_FALSE(row.cardIdentifier());
    EXPECT_EQ(row.fingerprint(), ImportAnalyzer::fingerprint(row.date, -100, "X"));
}

TEST(OFXImport, RefusesDocumentTypesAndEntitiesInAnyCase) {
    const std::string statement = bankStatement(transaction("20240102", "-1.00", "X"));
    for (std::string_view declaration :
         {"<!DOCTYPE OFX SYSTEM \"ofx.dtd\">\n", "<!doctype ofx>\n", "<!DocType ofx>\n",
          "<!ENTITY xxe SYSTEM \"file:///etc/passwd\">\n", "<!entity a \"b\">\n"}) {
        const auto analysis = analyzeText(std::string(declaration) + statement);
        EXPECT_EQ(analysis.problem, std::string(kDocumentType)) << declaration;
        EXPECT_TRUE(analysis.rows.empty());
        EXPECT_FALSE(analysis.profile);
    }
    // Only the declarations themselves: the words alone are harmless.
    EXPECT_FALSE(
        analyzeText(bankStatement(transaction("20240102", "-1.00", "DOCTYPE ENTITY"))).problem);
}

TEST(OFXImport, RefusesAnythingButExactlyOneBankOrCardStatement) {
    const std::string bank = bankStatement(transaction("20240102", "-1.00", "X"));
    const std::string card = cardStatement(transaction("20240102", "-1.00", "X"));
    const std::string investment =
        "<OFX><INVSTMTMSGSRSV1><INVSTMTTRNRS><INVSTMTRS><CURDEF>USD"
        "<INVTRANLIST><BUYSTOCK><INVBUY><UNITS>10</INVBUY></BUYSTOCK></INVTRANLIST>"
        "</INVSTMTRS></INVSTMTTRNRS></INVSTMTMSGSRSV1></OFX>";
    const auto secondAccount = [&](const std::string& statement) {
        const auto at = statement.find("</STMTTRNRS>");
        return statement.substr(0, at) + statement.substr(statement.find("<STMTRS>"));
    };
    const struct {
        std::string_view what;
        std::string text;
    } cases[] = {
        {"no statement", "<OFX><SIGNONMSGSRSV1></SIGNONMSGSRSV1></OFX>"},
        {"investment", investment},
        {"two bank accounts", secondAccount(bank)},
        {"bank and card", bank + card},
        {"two cards", card + card},
        {"unclosed statement", "<OFX><STMTRS><CURDEF>USD" + transaction("20240102", "1", "X")},
    };
    for (const auto& c : cases) {
        const auto analysis = analyzeText(c.text);
        EXPECT_EQ(analysis.problem, std::string(kStatementCount)) << c.what;
        EXPECT_TRUE(analysis.rows.empty()) << c.what;
        EXPECT_FALSE(analysis.profile) << c.what;
        EXPECT_FALSE(analysis.typeHint) << c.what;
    }
}

TEST(OFXImport, NeedsAThreeLetterCurrency) {
    const std::string rows = transaction("20240102", "-1.00", "X");
    for (std::string_view currency : {"US", "USDX", "US1", "U$D", "\xC3\x9CSD"}) {
        const auto analysis = analyzeText(bankStatement(rows, "CHECKING", currency));
        EXPECT_EQ(analysis.problem, std::string(kNoCurrency)) << currency;
        EXPECT_TRUE(analysis.rows.empty());
        EXPECT_FALSE(analysis.currencyHint);
        EXPECT_FALSE(analysis.typeHint);
    }
    const auto lowercase = analyzeText(bankStatement(rows, "CHECKING", " eur "));
    EXPECT_EQ(lowercase.currencyHint, "EUR");
    EXPECT_FALSE(lowercase.problem);
}

TEST(OFXImport, OnlySavingsMakesABankStatementSavings) {
    const std::string rows = transaction("20240102", "-1.00", "X");
    const struct {
        std::string_view accountType;
        std::string_view expected;
    } cases[] = {
        {"SAVINGS", "ofx-bank | OFX/QFX savings | savings"},
        {"savings", "ofx-bank | OFX/QFX savings | savings"},
        {"CHECKING", "ofx-bank | OFX/QFX checking | checking"},
        {"MONEYMRKT", "ofx-bank | OFX/QFX checking | checking"},
        {"CREDITLINE", "ofx-bank | OFX/QFX checking | checking"},
        {"SAVINGS2", "ofx-bank | OFX/QFX checking | checking"},
        {"", "ofx-bank | OFX/QFX checking | checking"},
    };
    for (const auto& c : cases) {
        EXPECT_TRUE(describeAccount(analyzeText(bankStatement(rows, c.accountType)))
                        .starts_with(c.expected))
            << c.accountType;
    }
    // A card statement is a card whatever ACCTTYPE text it carries.
    EXPECT_TRUE(describeAccount(analyzeText(cardStatement("<ACCTTYPE>SAVINGS" + rows)))
                    .starts_with("ofx-card | OFX/QFX credit card | creditCard"));
}

TEST(OFXImport, DigitHintIsTheLastFourDigitsOfTheAccountID) {
    const struct {
        std::string_view accountID;
        std::vector<std::string> hints;
    } cases[] = {
        {"XXXXXXXXXXXX4821", {"4821"}},
        {"12-34", {"1234"}},
        {"9876543210", {"3210"}},
        {"123", {}},
        {"ABCD", {}},
    };
    for (const auto& c : cases) {
        const std::string text = "<OFX><STMTRS><CURDEF>USD<BANKACCTFROM><ACCTID>" +
                                 std::string(c.accountID) +
                                 "</BANKACCTFROM><BANKTRANLIST></BANKTRANLIST></STMTRS></OFX>";
        EXPECT_EQ(analyzeText(text).digitHints, c.hints) << c.accountID;
    }
}

TEST(OFXImport, PostingDateIsTheFirstEightDigitsWithNoZoneShift) {
    const std::string rows =
        transaction("20240315120000.000[-5:EST]", "-1.00", "A") +
        transaction("20241231235959[+14:LINT]", "-1.00", "B") +
        transaction("202403101200", "-1.00", "C") + transaction("20240229", "-1.00", "D") +
        transaction("20230229", "-1.00", "E") + transaction("20241315", "-1.00", "F") +
        transaction("2024031", "-1.00", "G") + transaction("2024-03-15", "-1.00", "H") +
        transaction("", "-1.00", "I") + transaction("18991231", "-1.00", "J");
    EXPECT_EQ(describe(analyzeText(bankStatement(rows))),
              "row 1 2024-03-15 -100 \"A\"\n"
              "row 2 2024-12-31 -100 \"B\"\n"
              "row 3 2024-03-10 -100 \"C\"\n"
              "row 4 2024-02-29 -100 \"D\"\n"
              "issue 5 Missing or invalid posting date.\n"
              "issue 6 Missing or invalid posting date.\n"
              "issue 7 Missing or invalid posting date.\n"
              "issue 8 Missing or invalid posting date.\n"
              "issue 9 Missing or invalid posting date.\n"
              "issue 10 Missing or invalid posting date.\n");
}

TEST(OFXImport, AmountIsTakenWithOFXsOwnSign) {
    {
        // Tag-only form: the value ends at the line break, not at the next tag.
        const auto analysis = analyzeText(cardStatement(
            "<STMTTRN><DTPOSTED>20240102<TRNAMT>-12.34\r\n<NAME>CARD BUY</STMTTRN>"
            "<STMTTRN><DTPOSTED>20240102<TRNAMT>-5.00\n<NAME>CARD BUY 2</STMTTRN>"
            "<STMTTRN><DTPOSTED>20240102<TRNAMT>+40.00</TRNAMT><NAME>REFUND</STMTTRN>"));
        EXPECT_EQ(describe(analysis),
                  "row 1 2024-01-02 -1234 \"CARD BUY\"\n"
                  "row 2 2024-01-02 -500 \"CARD BUY 2\"\n"
                  "row 3 2024-01-02 4000 \"REFUND\"\n");
    }
    {
        const std::string rows = transaction("20240102", "", "NO AMOUNT") +
                                 transaction("20240102", "1.234,56", "BOTH MARKS") +
                                 transaction("20240102", "12,3,4", "TWO COMMAS") +
                                 transaction("20240102", "<", "EMPTY") +
                                 transaction("20240102", "1e3", "EXPONENT");
        EXPECT_EQ(describe(analyzeText(bankStatement(rows))),
                  "issue 1 Missing or invalid exact transaction amount.\n"
                  "issue 2 Missing or invalid exact transaction amount.\n"
                  "issue 3 Missing or invalid exact transaction amount.\n"
                  "issue 4 Missing or invalid exact transaction amount.\n"
                  "issue 5 Missing or invalid exact transaction amount.\n");
    }
}

TEST(OFXImport, FlipSignsNegatesAmountAndFingerprint) {
    const std::string text = cardStatement(transaction("20240102", "-12.34", "COFFEE") +
                                           transaction("20240103", "50.00", "PAYMENT"));
    const auto plain = analyzeText(text, false);
    const auto flipped = analyzeText(text, true);
    ASSERT_EQ(plain.rows.size(), 2u);
    ASSERT_EQ(flipped.rows.size(), 2u);
    EXPECT_EQ(flipped.rows[0].amount, 1234);
    EXPECT_EQ(flipped.rows[1].amount, -5000);
    EXPECT_EQ(flipped.rows[0].fingerprint(),
              ImportAnalyzer::fingerprint(flipped.rows[0].date, 1234, "COFFEE"));
    EXPECT_NE(flipped.rows[0].fingerprint(), plain.rows[0].fingerprint());
}

TEST(OFXImport, DecodesEntitiesOnceWithAmpersandLast) {
    const struct {
        std::string_view raw;
        std::string_view decoded;
    } cases[] = {
        {"Joe&amp;apos;s", "Joe&apos;s"},       {"Joe&apos;s", "Joe's"},
        {"&amp;lt;b&amp;gt;", "&lt;b&gt;"},     {"&lt;b&gt;", "<b>"},
        {"&quot;Q&quot; &amp; A", "\"Q\" & A"}, {"AT&T", "AT&T"},
        {"  padded name\t", "padded name"},
    };
    for (const auto& c : cases) {
        const auto analysis = analyzeText(bankStatement(transaction("20240102", "-1.00", c.raw)));
        ASSERT_EQ(analysis.rows.size(), 1u) << c.raw;
        EXPECT_EQ(analysis.rows[0].description(), c.decoded) << c.raw;
    }
}

TEST(OFXImport, DescriptionJoinsNameAndMemoWithoutDoublingOrBlanks) {
    const std::string rows =
        transaction("20240102", "-1.00", "SHOP", "STORE 12") +
        transaction("20240102", "-2.00", "SHOP", "SHOP") +
        transaction("20240102", "-3.00", "", "MEMO ONLY") +
        transaction("20240102", "-4.00", "NAME ONLY", "") +
        transaction("20240102", "-5.00", "", "") + transaction("20240102", "-6.00", "   ", " \t ") +
        "<STMTTRN><DTPOSTED>20240102<TRNAMT>-7.00<NAME></NAME><MEMO>XML MEMO</MEMO></STMTTRN>\n"
        "<STMTTRN><DTPOSTED>20240102<TRNAMT>-8.00<NAME>Shop<MEMO>SHOP</STMTTRN>\n";
    EXPECT_EQ(describe(analyzeText(bankStatement(rows))),
              "row 1 2024-01-02 -100 \"SHOP" + std::string(kDot) +
                  "STORE 12\"\n"
                  "row 2 2024-01-02 -200 \"SHOP\"\n"
                  "row 3 2024-01-02 -300 \"MEMO ONLY\"\n"
                  "row 4 2024-01-02 -400 \"NAME ONLY\"\n"
                  "row 7 2024-01-02 -700 \"XML MEMO\"\n"
                  "row 8 2024-01-02 -800 \"Shop" +
                  std::string(kDot) +
                  "SHOP\"\n"
                  "issue 5 No transaction name or memo.\n"
                  "issue 6 No transaction name or memo.\n");
}

TEST(OFXImport, RepeatedFITIDKeepsTheFirstAndRowsWithoutOneAllPass) {
    const std::string rows =
        transaction("20240102", "-1.00", "A", "", "ID1") +
        transaction("20240103", "-2.00", "B", "", "ID1") + transaction("20240104", "-3.00", "C") +
        transaction("20240104", "-3.00", "C") + transaction("20240105", "-4.00", "D", "", "id1") +
        transaction("20240106", "-5.00", "E", "", "ID1");
    EXPECT_EQ(
        describe(analyzeText(bankStatement(rows))),
        "row 1 2024-01-02 -100 \"A\" id=ID1\n"
        "row 3 2024-01-04 -300 \"C\"\n"
        "row 4 2024-01-04 -300 \"C\" occurrence=2\n"
        "row 5 2024-01-05 -400 \"D\" id=id1\n"
        "issue 2 Repeated transaction ID in this statement; check this row before importing.\n"
        "issue 6 Repeated transaction ID in this statement; check this row before "
        "importing.\n");
}

TEST(OFXImport, UnreadableRowDoesNotClaimItsFITID) {
    // The row with the bad date stops at its first issue, so the later row
    // carrying the same ID is the one that counts.
    const std::string rows = transaction("2024XX02", "-1.00", "A", "", "ID1") +
                             transaction("20240103", "-2.00", "B", "", "ID1");
    EXPECT_EQ(describe(analyzeText(bankStatement(rows))),
              "row 2 2024-01-03 -200 \"B\" id=ID1\n"
              "issue 1 Missing or invalid posting date.\n");
}

TEST(OFXImport, FirstFailingCheckNamesTheIssue) {
    const std::string rows = transaction("", "", "", "", "ID1") +
                             transaction("20240102", "", "", "", "ID1") +
                             transaction("20240102", "-1.00", "", "", "ID1");
    EXPECT_EQ(describe(analyzeText(bankStatement(rows))),
              "issue 1 Missing or invalid posting date.\n"
              "issue 2 Missing or invalid exact transaction amount.\n"
              "issue 3 No transaction name or memo.\n");
}

TEST(OFXImport, IssueCarriesTheBlockTextUntrimmed) {
    const std::string block = "\n<DTPOSTED>nope\n<TRNAMT>-1.00\n<NAME>X\n";
    const auto analysis = analyzeText(bankStatement("<STMTTRN>" + block + "</STMTTRN>"));
    ASSERT_EQ(analysis.issues.size(), 1u);
    EXPECT_EQ(analysis.issues[0].line, 1);
    EXPECT_EQ(analysis.issues[0].rawText, block);
}

TEST(OFXImport, UnclosedTransactionSetsProblemButKeepsEarlierRows) {
    {
        const std::string rows = transaction("20240102", "-1.00", "A") +
                                 transaction("20240103", "-2.00", "B") +
                                 "<STMTTRN>\n<DTPOSTED>20240104\n<TRNAMT>-3.00\n<NAME>CUT OFF\n";
        const auto analysis = analyzeText(bankStatement(rows));
        EXPECT_EQ(describe(analysis), "problem: " + std::string(kIncomplete) +
                                          "\n"
                                          "row 1 2024-01-02 -100 \"A\"\n"
                                          "row 2 2024-01-03 -200 \"B\"\n");
        EXPECT_EQ(analysis.profile->id, "ofx-bank");
    }
    {
        // An unclosed block in the middle runs into its neighbour, which the
        // opening-tag count still gives away.
        const std::string rows = "<STMTTRN>\n<DTPOSTED>20240101\n<TRNAMT>-9.00\n<NAME>OPEN\n" +
                                 transaction("20240102", "-1.00", "A");
        const auto analysis = analyzeText(bankStatement(rows));
        EXPECT_EQ(analysis.problem, std::string(kIncomplete));
        EXPECT_EQ(analysis.rows.size(), 1u);
    }
}

// Group 1 of every match of the element pattern in its one-pattern form,
// which the reader finds in two steps.
std::vector<std::string> literalBlocks(std::string_view tag, const std::string& text) {
    const std::string name(tag);
    const auto source =
        icu::UnicodeString::fromUTF8("<" + name + "(?:\\s[^>]*)?>(.*?)</\\s*" + name + "\\s*>");
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::RegexPattern> pattern(
        icu::RegexPattern::compile(source, UREGEX_CASE_INSENSITIVE | UREGEX_DOTALL, status));
    const auto in = icu::UnicodeString::fromUTF8(text);
    std::unique_ptr<icu::RegexMatcher> matcher(pattern->matcher(in, status));
    std::vector<std::string> found;
    while (matcher->find(status)) {
        std::string piece;
        matcher->group(1, status).toUTF8String(piece);
        found.push_back(piece);
    }
    EXPECT_TRUE(U_SUCCESS(status));
    return found;
}

TEST(OFXImport, TransactionBlocksAreThoseOfTheOnePatternForm) {
    const std::string cases[] = {
        "<STMTTRN>a<STMTTRN>b</STMTTRN>c</STMTTRN>",
        "</STMTTRN><STMTTRN>a</STMTTRN><STMTTRN>b",
        "<STMTTRN attr=\"x>y\">a</STMTTRN><STMTTRN\n>b</ stmttrn\n>",
        "<STMTTRN/>a</STMTTRN><STMTTRNX>b</STMTTRN><STMTTRN>c</STMTTRNX></STMTTRN>",
        "<STMTTRN <STMTTRN>a</STMTTRN <STMTTRN>b</STMTTRN>",
        "<STMTTRN>a<STMTTRN>b<STMTTRN>c",
        "<STMTTRN></STMTTRN><STMTTRN></STMTTRN></STMTTRN>",
        "<\xEF\xAC\x86MTTRN>ligature</STMTTRN>",
    };
    for (const auto& transactions : cases) {
        const std::string text = "<OFX><STMTRS><CURDEF>USD<BANKTRANLIST>" + transactions +
                                 "</BANKTRANLIST></STMTRS></OFX>";
        const auto analysis = analyzeText(text);
        std::vector<std::string> read(analysis.rows.size() + analysis.issues.size());
        for (const auto& row : analysis.rows)
            read.at(static_cast<std::size_t>(row.line - 1)) = row.rawText();
        for (const auto& issue : analysis.issues)
            read.at(static_cast<std::size_t>(issue.line - 1)) = issue.rawText;
        const auto statements = literalBlocks("STMTRS", text);
        ASSERT_EQ(statements.size(), 1u) << transactions;
        EXPECT_EQ(read, literalBlocks("STMTTRN", statements[0])) << transactions;
    }
}

TEST(OFXImport, ManyUnclosedTransactionsAreReadInOnePass) {
    // Matched as one lazy pattern, every unclosed opening rescans the rest of
    // the statement: minutes for this file instead of milliseconds.
    std::string rows;
    for (int i = 0; i < 20000; ++i)
        rows += "<STMTTRN><DTPOSTED>20240102<TRNAMT>-1.00<NAME>OPEN\n";
    const auto start = std::chrono::steady_clock::now();
    const auto analysis = analyzeText(bankStatement(rows));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    EXPECT_EQ(analysis.problem, std::string(kIncomplete));
    EXPECT_TRUE(analysis.rows.empty());
}

TEST(OFXImport, StatementWithoutTransactionsIsEmptyButFine) {
    const auto analysis = analyzeText(bankStatement(""));
    EXPECT_EQ(describe(analysis), "");
    EXPECT_TRUE(analysis.profile);
    EXPECT_EQ(analysis.currencyHint, "USD");
}

TEST(OFXImport, TagsMatchWithoutRegardToCaseAndWithAttributes) {
    const std::string text =
        "<ofx><stmtrs id=\"s1\"><curdef>usd</curdef><acctid>5555</acctid><banktranlist>"
        "<stmttrn seq=\"1\"><dtposted>20240102</dtposted><trnamt>-1.00</trnamt>"
        "<fitid>a</fitid><name type=\"x\">lower</name><checknum>77</checknum></StmtTrn>"
        "<STMTTRN\n><DTPOSTED>20240103<TRNAMT>-2.00<NAME>UPPER</ STMTTRN >"
        "</banktranlist></stmtrs></ofx>";
    EXPECT_EQ(describe(analyzeText(text)),
              "row 1 2024-01-02 -100 \"lower\" id=a check=77\n"
              "row 2 2024-01-03 -200 \"UPPER\"\n");
}

TEST(OFXImport, SimilarTagNamesAreNotConfused) {
    // NAMEX is not NAME, CCSTMTRS is not STMTRS, STMTTRNRS is not STMTTRN.
    const std::string text =
        "<OFX><CREDITCARDMSGSRSV1><CCSTMTTRNRS><CCSTMTRS><CURDEF>USD<BANKTRANLIST>"
        "<STMTTRN><DTPOSTED>20240102<TRNAMT>-1.00<NAMEX>WRONG<NAME>RIGHT</STMTTRN>"
        "</BANKTRANLIST></CCSTMTRS></CCSTMTTRNRS></CREDITCARDMSGSRSV1></OFX>";
    const auto analysis = analyzeText(text);
    EXPECT_EQ(describe(analysis), "row 1 2024-01-02 -100 \"RIGHT\"\n");
    EXPECT_EQ(analysis.typeHint, AccountType::creditCard);
}

TEST(OFXImport, AnalyzesFromManyThreadsAtOnce) {
    const std::string text = readSample("card_xml.ofx");
    const std::string expected = describe(analyzeText(text));
    std::vector<std::string> results(8);
    std::vector<std::thread> threads;
    for (auto& result : results)
        threads.emplace_back([&text, &result] { result = describe(analyzeText(text)); });
    for (auto& thread : threads)
        thread.join();
    for (const auto& result : results)
        EXPECT_EQ(result, expected);
}

TEST(OFXImport, ReadsAmountsPaddedPastTheCentsOrWrittenWithADecimalComma) {
    // A bank that writes "-30.000" or "-12,34" had every row refused as inexact.
    const std::string rows =
        transaction("20240102", "-30.000", "PADDED") + transaction("20240102", "-3.77000", "LONG") +
        transaction("20240102", "-12,34", "COMMA") + transaction("20240102", "+5,5", "SHORT") +
        transaction("20240102", "7.", "WHOLE");
    EXPECT_EQ(describe(analyzeText(bankStatement(rows))),
              "row 1 2024-01-02 -3000 \"PADDED\"\n"
              "row 2 2024-01-02 -377 \"LONG\"\n"
              "row 3 2024-01-02 -1234 \"COMMA\"\n"
              "row 4 2024-01-02 550 \"SHORT\"\n"
              "row 5 2024-01-02 700 \"WHOLE\"\n");
}

TEST(OFXImport, AmountFinerThanACentIsAnIssueNotARounding) {
    const std::string rows = transaction("20240102", "-3.775", "GAS") +
                             transaction("20240102", "-3,7751", "GAS") +
                             transaction("20240102", "-3.7700001", "GAS") +
                             transaction("20240102", "x.123", "NOT A NUMBER");
    EXPECT_EQ(describe(analyzeText(bankStatement(rows))),
              "issue 1 This amount has more decimals than cents.\n"
              "issue 2 This amount has more decimals than cents.\n"
              "issue 3 This amount has more decimals than cents.\n"
              "issue 4 Missing or invalid exact transaction amount.\n");
}

TEST(OFXImport, ReadsCharacterDataAsItStands) {
    const std::string rows =
        "<STMTTRN><DTPOSTED>20240102<TRNAMT>-1.00<NAME><![CDATA[Joe & Sons <Main St>]]></NAME>"
        "<MEMO><![CDATA[a &amp; b]]></MEMO></STMTTRN>\n"
        "<STMTTRN><DTPOSTED>20240102<TRNAMT>-2.00<NAME>\n  <![CDATA[  SPACED  ]]>\n</STMTTRN>\n"
        "<STMTTRN><DTPOSTED>20240102<TRNAMT>-3.00<NAME><![CDATA[]]></NAME></STMTTRN>\n"
        "<STMTTRN><DTPOSTED>20240102<TRNAMT>-4.00<NAME><![CDATA[NEVER CLOSED</STMTTRN>\n";
    EXPECT_EQ(describe(analyzeText(bankStatement(rows))),
              "row 1 2024-01-02 -100 \"Joe & Sons <Main St>" + std::string(kDot) +
                  "a &amp; b\"\n"
                  "row 2 2024-01-02 -200 \"SPACED\"\n"
                  "issue 3 No transaction name or memo.\n"
                  "issue 4 No transaction name or memo.\n");
}

TEST(OFXImport, EmptyCurrencyLeavesTheAccountsCurrencyToApply) {
    // "<CURDEF></CURDEF>" used to refuse the whole statement.
    const std::string rows = transaction("20240102", "-1.00", "X");
    for (std::string_view currency : {"", "   "}) {
        const auto analysis = analyzeText(bankStatement(rows, "CHECKING", currency));
        EXPECT_FALSE(analysis.problem) << "[" << currency << "]";
        EXPECT_FALSE(analysis.currencyHint);
        EXPECT_EQ(analysis.rows.size(), 1u);
    }
    const std::string xml = cardStatement(rows);
    const auto empty = analyzeText(xml.substr(0, xml.find("USD")) +
                                   xml.substr(xml.find("USD") + std::string("USD").size()));
    EXPECT_FALSE(empty.problem);
    EXPECT_FALSE(empty.currencyHint);
    EXPECT_EQ(describeAccount(empty),
              "ofx-card | OFX/QFX credit card | creditCard | no currency | 1111");
}

TEST(OFXImport, NamelessTransactionIsDescribedByItsTypeAndCheckNumber) {
    const auto block = [](std::string_view inner) {
        return "<STMTTRN><DTPOSTED>20240102<TRNAMT>-1.00" + std::string(inner) + "</STMTTRN>\n";
    };
    const std::string rows = block("<TRNTYPE>CHECK<CHECKNUM>1042") + block("<TRNTYPE>debit") +
                             block("<CHECKNUM>77") + block("<TRNTYPE>OTHER<CHECKNUM>78") +
                             block("<TRNTYPE>OTHER") + block("") +
                             block("<TRNTYPE>FEE<NAME>SERVICE CHARGE");
    EXPECT_EQ(describe(analyzeText(bankStatement(rows))),
              "row 1 2024-01-02 -100 \"CHECK 1042\" check=1042\n"
              "row 2 2024-01-02 -100 \"DEBIT\"\n"
              "row 3 2024-01-02 -100 \"CHECK 77\" check=77\n"
              "row 4 2024-01-02 -100 \"CHECK 78\" check=78\n"
              "row 7 2024-01-02 -100 \"SERVICE CHARGE\"\n"
              "issue 5 No transaction name or memo.\n"
              "issue 6 No transaction name or memo.\n");
}

TEST(OFXImport, ZeroPlaceholderLinesCountAsBlankLines) {
    // Banks pad an empty statement with a "-0" line, often nameless, which
    // then blocked the file as a row that couldn't be read.
    const std::string rows =
        transaction("20240102", "-0", "") + transaction("20240102", "-1.00", "REAL") +
        transaction("", "0.00", "BALANCE") + transaction("20240103", "+0,00", "");
    const auto analysis = analyzeText(bankStatement(rows));
    EXPECT_EQ(describe(analysis), "row 2 2024-01-02 -100 \"REAL\"\n");
    EXPECT_EQ(analysis.blankLines, 3);
    EXPECT_EQ(analysis.accountedLines(), 4);
}

TEST(OFXImport, BankErrorInPlaceOfAStatementIsToldAsSuch) {
    const auto status = [](std::string_view inner) {
        return "<OFX><SIGNONMSGSRSV1><SONRS><STATUS><CODE>0<SEVERITY>INFO</STATUS></SONRS>"
               "</SIGNONMSGSRSV1><BANKMSGSRSV1><STMTTRNRS><TRNUID>1<STATUS>" +
               std::string(inner) + "</STATUS></STMTTRNRS></BANKMSGSRSV1></OFX>";
    };
    EXPECT_EQ(analyzeText(status("<CODE>2000<SEVERITY>ERROR<MESSAGE>General error.")).problem,
              "Your bank sent an error instead of a statement: General error. Download the file "
              "again.");
    EXPECT_EQ(analyzeText(status("<CODE>15500<SEVERITY>WARN")).problem,
              "Your bank sent an error instead of a statement: error code 15500. Download the "
              "file again.");
    // The bank said all is well and sent nothing: no error, no statement.
    EXPECT_EQ(analyzeText(status("<CODE>0<SEVERITY>INFO")).problem, std::string(kStatementCount));
    // One account failed and another came: the statement that came is read.
    const std::string withStatement = bankStatement(transaction("20240102", "-1.00", "X"));
    const auto failedNeighbour =
        analyzeText(withStatement.substr(0, withStatement.find("</BANKMSGSRSV1>")) +
                    "<STMTTRNRS><TRNUID>2<STATUS><CODE>2003<SEVERITY>ERROR</STATUS></STMTTRNRS>" +
                    withStatement.substr(withStatement.find("</BANKMSGSRSV1>")));
    EXPECT_FALSE(failedNeighbour.problem);
    EXPECT_EQ(failedNeighbour.rows.size(), 1u);
    const auto sample = analyzeText(readSample("../statements/bank_error.ofx"));
    EXPECT_EQ(sample.problem,
              "Your bank sent an error instead of a statement: General error. Please try again "
              "later. Download the file again.");
    EXPECT_FALSE(sample.profile);
}

TEST(OFXImport, CutsAFileIntoOneTextPerStatement) {
    const std::string bank = bankStatement(transaction("20240102", "-1.00", "BANK"));
    const std::string card = cardStatement(transaction("20240103", "-2.00", "CARD"));
    EXPECT_TRUE(OFXImport::statements(bank).empty());
    EXPECT_TRUE(OFXImport::statements("no statement here").empty());

    const std::string sample = readSample("../statements/two_cards_and_checking.ofx");
    const auto parts = OFXImport::statements(sample);
    ASSERT_EQ(parts.size(), 3u);
    std::ostringstream out;
    for (const auto& part : parts) {
        const auto analysis = analyzeText(part.data);
        out << part.label << " | " << describeAccount(analysis) << "\n" << describe(analysis);
    }
    EXPECT_EQ(out.str(),
              "card ending 1234, statement 1 of 3 | ofx-card | OFX/QFX credit card | creditCard | "
              "USD | 1234\n"
              "row 1 2024-01-05 -4217 \"WHOLE FOODS MARKET\" id=320240050001\n"
              "row 2 2024-01-30 -1599 \"NETFLIX.COM\" id=320240300002\n"
              "card ending 1234, statement 2 of 3 | ofx-card | OFX/QFX credit card | creditCard | "
              "USD | 1234\n"
              "row 1 2024-01-30 -1599 \"NETFLIX.COM\" id=320240300002\n"
              "row 2 2024-02-15 5816 \"ONLINE PAYMENT - THANK YOU\" id=320240460003\n"
              "account ending 5678 | ofx-bank | OFX/QFX checking | checking | USD | 5678\n"
              "row 1 2024-02-15 -5816 \"AMEX EPAYMENT" +
                  std::string(kDot) +
                  "ACH PMT\" id=CHK0001\n"
                  "row 2 2024-02-16 215000 \"ACME CORP PAYROLL\" id=CHK0002\n");
    // Each statement is a file of its own, with a hash of its own, and the
    // whole file still reads as one statement or none.
    EXPECT_NE(ImportAnalyzer::sha256(parts[0].data), ImportAnalyzer::sha256(parts[1].data));
    EXPECT_EQ(analyzeText(sample).problem, std::string(kStatementCount));

    const auto mixed = OFXImport::statements(bank + card);
    ASSERT_EQ(mixed.size(), 2u);
    EXPECT_EQ(mixed[0].label, "account ending 4321");
    EXPECT_EQ(mixed[1].label, "card ending 1111");
    const auto nameless = OFXImport::statements(
        "<OFX><STMTRS><CURDEF>USD</STMTRS><STMTRS>"
        "<CURDEF>EUR</STMTRS></OFX>");
    ASSERT_EQ(nameless.size(), 2u);
    EXPECT_EQ(nameless[0].label, "statement 1 of 2");
    EXPECT_EQ(analyzeText(nameless[1].data).currencyHint, "EUR");
    // A document type keeps the file whole, to be refused as a whole.
    EXPECT_TRUE(OFXImport::statements("<!DOCTYPE x>" + bank + card).empty());
}

}  // namespace
}  // namespace copperwick
