#include "core/import/camt_import.h"

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

std::string readSample(std::string_view name) {
    std::ifstream in(std::string(COPPERWICK_TEST_DATA) + "/statements/" + std::string(name),
                     std::ios::binary);
    EXPECT_TRUE(in) << name;
    std::ostringstream out;
    out << in.rdbuf();
    return out.str();
}

FileAnalysis analyzeText(std::string_view text, bool flipSigns = false) {
    return CamtImport::analyze("statement.xml", text, text, flipSigns);
}

// A version .02 document around the given statements.
std::string document(std::string_view statements) {
    return "<?xml version=\"1.0\"?>\n<Document "
           "xmlns=\"urn:iso:std:iso:20022:tech:xsd:camt.053.001.02\"><BkToCstmrStmt>"
           "<GrpHdr><MsgId>M</MsgId></GrpHdr>" +
           std::string(statements) + "</BkToCstmrStmt></Document>";
}

std::string statement(std::string_view entries, std::string_view iban = "DE89370400440532013000",
                      std::string_view currency = "EUR") {
    return "<Stmt><Id>S</Id><Acct><Id><IBAN>" + std::string(iban) + "</IBAN></Id><Ccy>" +
           std::string(currency) + "</Ccy></Acct>" + std::string(entries) + "</Stmt>";
}

std::string entry(std::string_view amount, std::string_view direction, std::string_view inner,
                  std::string_view currency = "EUR") {
    return "<Ntry><Amt Ccy=\"" + std::string(currency) + "\">" + std::string(amount) +
           "</Amt><CdtDbtInd>" + std::string(direction) +
           "</CdtDbtInd><Sts>BOOK</Sts><BookgDt><Dt>2024-03-01</Dt></BookgDt>" +
           std::string(inner) + "</Ntry>";
}

std::string describe(const FileAnalysis& analysis) {
    std::ostringstream out;
    if (analysis.problem)
        out << "problem: " << *analysis.problem << "\n";
    for (const auto& row : analysis.rows) {
        out << "row " << row.line << " " << row.date.iso();
        if (row.postedDate && *row.postedDate != row.date)
            out << " posted " << row.postedDate->iso();
        out << " " << row.amount << " \"" << row.description() << "\"";
        if (row.status == TransactionStatus::pending)
            out << " pending";
        if (row.externalID())
            out << " id=" << *row.externalID();
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

TEST(CamtImport, RecognizesByNamespaceOrStatementElementNotByName) {
    EXPECT_TRUE(CamtImport::recognizes("x.txt", document("")));
    EXPECT_TRUE(CamtImport::recognizes(
        "x", "<Document xmlns=\"urn:iso:std:iso:20022:tech:xsd:camt.053.001.08\"/>"));
    EXPECT_TRUE(CamtImport::recognizes("x", "<c:BkToCstmrStmt></c:BkToCstmrStmt>"));
    EXPECT_FALSE(CamtImport::recognizes("statement.xml", "<Document><Other/></Document>"));
    EXPECT_FALSE(CamtImport::recognizes(
        "x.xml", "<Document xmlns=\"urn:iso:std:iso:20022:tech:xsd:camt.052.001.02\"/>"));
}

TEST(CamtImport, ReadsAVersion02StatementWithBatchAndPendingEntries) {
    const auto parts = CamtImport::statements(readSample("camt053_v02_two_statements.xml"));
    ASSERT_EQ(parts.size(), 2u);
    const auto analysis = analyzeText(parts[0].data);
    EXPECT_EQ(describeAccount(analysis), "camt053 | CAMT.053 checking | checking | EUR | 3000");
    EXPECT_EQ(describe(analysis),
              "row 1 2024-03-01 245000 \"Muster GmbH" + std::string(kDot) +
                  "Gehalt Maerz 2024\" id=2024030100001\n"
                  "row 2 2024-03-04 posted 2024-03-05 -8990 \"Stadtwerke M\xC3\xBCnchen" +
                  std::string(kDot) +
                  "Abschlag Strom Kd-Nr 4711\" id=2024030400002\n"
                  "row 3 2024-03-06 -31240 \"SAMMELUEBERWEISUNG 2 POSTEN\" id=2024030600003\n"
                  "row 4 2024-03-30 -2500 \"KARTENZAHLUNG REWE SAGT DANKE\" pending\n");
    EXPECT_EQ(analysis.dateLayout, DateLayout::yearMonthDay);
    EXPECT_EQ(analysis.accountedLines(), 4);

    const auto savings = analyzeText(parts[1].data);
    EXPECT_EQ(describeAccount(savings), "camt053 | CAMT.053 savings | savings | EUR | 2051");
    EXPECT_EQ(describe(savings), "row 1 2024-03-02 50000 \"Erika Mustermann" + std::string(kDot) +
                                     "Sparrate\" id=SPAR-0302\n");
}

TEST(CamtImport, ReadsAVersion08StatementWithStatusCodesAndPartyNames) {
    const auto analysis = analyzeText(readSample("camt053_v08.xml"));
    EXPECT_EQ(describeAccount(analysis), "camt053 | CAMT.053 checking | checking | CHF | 2957");
    EXPECT_EQ(describe(analysis),
              "row 1 2024-04-25 posted 2024-04-26 120000 \"Beispiel AG" + std::string(kDot) +
                  "Lohn April\" id=R1\n"
                  "row 2 2024-04-27 -6450 \"Migros Zuerich\" id=R2\n"
                  "row 3 2024-04-30 -1990 \"Debitkarte Coop Pronto\" pending id=R3\n");
}

TEST(CamtImport, ExternalIDIsTheBanksReferenceButNeverNotProvided) {
    const std::string details =
        "<NtryDtls><TxDtls><Refs><EndToEndId>E2E-1</EndToEndId></Refs>"
        "<RmtInf><Ustrd>X</Ustrd></RmtInf></TxDtls></NtryDtls>";
    const std::string entries =
        entry("1.00", "DBIT", "<AcctSvcrRef>SVC</AcctSvcrRef><NtryRef>REF</NtryRef>" + details) +
        entry("2.00", "DBIT", "<NtryRef>REF</NtryRef>" + details) + entry("3.00", "DBIT", details) +
        entry("4.00", "DBIT",
              "<NtryDtls><TxDtls><Refs><EndToEndId>notprovided</EndToEndId></Refs>"
              "<RmtInf><Ustrd>Y</Ustrd></RmtInf></TxDtls></NtryDtls>");
    EXPECT_EQ(describe(analyzeText(document(statement(entries)))),
              "row 1 2024-03-01 -100 \"X\" id=SVC\n"
              "row 2 2024-03-01 -200 \"X\" id=REF\n"
              "row 3 2024-03-01 -300 \"X\" id=E2E-1\n"
              "row 4 2024-03-01 -400 \"Y\"\n");
}

TEST(CamtImport, DescriptionNamesTheOtherSideThenTheRemittanceText) {
    const std::string parties =
        "<RltdPties><Dbtr><Nm>PAYER</Nm></Dbtr><Cdtr><Nm>PAYEE</Nm></Cdtr></RltdPties>";
    const std::string entries =
        entry("1.00", "CRDT", "<NtryDtls><TxDtls>" + parties + "</TxDtls></NtryDtls>") +
        entry("1.00", "DBIT", "<NtryDtls><TxDtls>" + parties + "</TxDtls></NtryDtls>") +
        entry("1.00", "DBIT",
              "<AddtlNtryInf>FALLBACK</AddtlNtryInf><NtryDtls><TxDtls></TxDtls></NtryDtls>") +
        entry("1.00", "DBIT",
              "<NtryDtls><TxDtls><RltdPties><Cdtr><Nm>SAME</Nm></Cdtr></RltdPties>"
              "<RmtInf><Ustrd>SAME</Ustrd></RmtInf></TxDtls></NtryDtls>") +
        entry("1.00", "DBIT",
              "<NtryDtls><TxDtls><RltdPties><Cdtr><Nm>FIRST</Nm></Cdtr></RltdPties></TxDtls>"
              "<TxDtls><RltdPties><Cdtr><Nm>SECOND</Nm></Cdtr></RltdPties></TxDtls></NtryDtls>") +
        entry("1.00", "DBIT", "");
    EXPECT_EQ(describe(analyzeText(document(statement(entries)))),
              "row 1 2024-03-01 100 \"PAYER\"\n"
              "row 2 2024-03-01 -100 \"PAYEE\"\n"
              "row 3 2024-03-01 -100 \"FALLBACK\"\n"
              "row 4 2024-03-01 -100 \"SAME\"\n"
              "row 5 2024-03-01 -100 \"FIRST\"\n"
              "issue 6 No description in this entry.\n");
}

TEST(CamtImport, UnreadableEntriesAreIssuesAndEmptyOnesBlankLines) {
    const std::string text = "<AddtlNtryInf>T</AddtlNtryInf>";
    const std::string entries =
        entry("3.775", "DBIT", text) + entry("3.7700", "DBIT", text) + entry("abc", "DBIT", text) +
        entry("1.00", "SIDEWAYS", text) + entry("0.00", "DBIT", text) +
        entry("2.00", "DBIT", text, "USD") +
        "<Ntry><Amt Ccy=\"EUR\">5.00</Amt><CdtDbtInd>DBIT</CdtDbtInd>" + text + "</Ntry>" +
        "<Ntry><Amt Ccy=\"EUR\">6.00</Amt><CdtDbtInd>DBIT</CdtDbtInd><Sts>INFO</Sts>" + text +
        "</Ntry>";
    const auto analysis = analyzeText(document(statement(entries)));
    EXPECT_EQ(describe(analysis),
              "row 2 2024-03-01 -377 \"T\"\n"
              "issue 1 This amount has more decimals than cents.\n"
              "issue 3 Missing or invalid exact amount.\n"
              "issue 4 This entry doesn't say whether money came in or went out.\n"
              "issue 6 Currency differs from earlier rows.\n"
              "issue 7 Missing or invalid booking date.\n");
    EXPECT_EQ(analysis.blankLines, 2);
    EXPECT_EQ(analysis.accountedLines(), 8);
}

TEST(CamtImport, FlipSignsNegatesEveryEntry) {
    const std::string entries = entry("1.00", "DBIT", "<AddtlNtryInf>OUT</AddtlNtryInf>") +
                                entry("2.00", "CRDT", "<AddtlNtryInf>IN</AddtlNtryInf>");
    EXPECT_EQ(describe(analyzeText(document(statement(entries)), true)),
              "row 1 2024-03-01 100 \"OUT\"\n"
              "row 2 2024-03-01 -200 \"IN\"\n");
}

TEST(CamtImport, RefusesDocumentTypesBrokenXMLAndAnythingButOneStatement) {
    const std::string one = statement(entry("1.00", "DBIT", "<AddtlNtryInf>X</AddtlNtryInf>"));
    const struct {
        std::string_view what;
        std::string text;
        std::string_view problem;
    } cases[] = {
        {"doctype", "<!DOCTYPE Document>" + document(one),
         "CAMT.053 files with document types or external entities are not supported."},
        {"entity", "<!entity x \"y\">" + document(one),
         "CAMT.053 files with document types or external entities are not supported."},
        {"cut off", document(one).substr(0, 200),
         "This CAMT.053 file is incomplete or damaged. Export it again from your bank."},
        {"mismatched", document("<Stmt></Acct>"),
         "This CAMT.053 file is incomplete or damaged. Export it again from your bank."},
        {"no statement", document(""),
         "Choose a CAMT.053 file containing exactly one account statement."},
        {"two statements", document(one + one),
         "Choose a CAMT.053 file containing exactly one account statement."},
        {"bad currency", document(statement("", "DE89370400440532013000", "EURO")),
         "This statement has no valid currency."},
    };
    for (const auto& c : cases) {
        const auto analysis = analyzeText(c.text);
        EXPECT_EQ(analysis.problem, std::string(c.problem)) << c.what;
        EXPECT_TRUE(analysis.rows.empty()) << c.what;
        EXPECT_FALSE(analysis.profile) << c.what;
    }
    // Nesting far past any statement's is refused rather than followed.
    std::string deep;
    for (int i = 0; i < 200; ++i)
        deep += "<a>";
    EXPECT_EQ(analyzeText(document(deep)).problem,
              "This CAMT.053 file is incomplete or damaged. Export it again from your bank.");
}

TEST(CamtImport, ReadsPrefixedNamesEntitiesAndCharacterData) {
    const std::string text =
        "<c:Document xmlns:c=\"urn:iso:std:iso:20022:tech:xsd:camt.053.001.04\">"
        "<c:BkToCstmrStmt><c:Stmt><c:Acct><c:Id><c:IBAN>GB33BUKB20201555555555</c:IBAN></c:Id>"
        "</c:Acct><!-- comment --><c:Ntry><c:Amt Ccy='GBP'>1.00</c:Amt>"
        "<c:CdtDbtInd>DBIT</c:CdtDbtInd><c:BookgDt><c:Dt>2024-03-01</c:Dt></c:BookgDt>"
        "<c:AddtlNtryInf>A &amp; B &#x263A; <![CDATA[&amp; <raw>]]> &unknown;</c:AddtlNtryInf>"
        "</c:Ntry></c:Stmt></c:BkToCstmrStmt></c:Document>";
    const auto analysis = analyzeText(text);
    EXPECT_EQ(describeAccount(analysis), "camt053 | CAMT.053 checking | checking | GBP | 5555");
    EXPECT_EQ(describe(analysis),
              "row 1 2024-03-01 -100 \"A & B \xE2\x98\xBA &amp; <raw> &unknown;\"\n");
}

TEST(CamtImport, CutsAFileIntoOneTextPerStatement) {
    const std::string sample = readSample("camt053_v02_two_statements.xml");
    const auto parts = CamtImport::statements(sample);
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(parts[0].label, "account ending 3000");
    EXPECT_EQ(parts[1].label, "account ending 2051");
    EXPECT_NE(ImportAnalyzer::sha256(parts[0].data), ImportAnalyzer::sha256(parts[1].data));
    EXPECT_TRUE(CamtImport::statements(readSample("camt053_v08.xml")).empty());

    const std::string same = statement(entry("1.00", "DBIT", "<AddtlNtryInf>X</AddtlNtryInf>"));
    const auto cycles = CamtImport::statements(document(same + same + same));
    ASSERT_EQ(cycles.size(), 3u);
    EXPECT_EQ(cycles[2].label, "account ending 3000, statement 3 of 3");
    EXPECT_EQ(analyzeText(cycles[2].data).rows.size(), 1u);
}

}  // namespace
}  // namespace copperwick
