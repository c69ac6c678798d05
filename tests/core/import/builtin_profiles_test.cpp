#include "core/import/builtin_profiles.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/import/import_analyzer.h"
#include "core/model/enum_text.h"

namespace copperwick {
namespace {

std::string joined(const std::vector<std::string>& names) {
    std::string out;
    for (const auto& name : names)
        out += (out.empty() ? "" : ", ") + name;
    return out.empty() ? "none" : out;
}

std::string shown(const std::optional<std::string>& column) {
    return column.value_or("-");
}

template <typename E>
std::string shown(const std::optional<E>& value) {
    return value ? std::string(rawValue(*value)) : "-";
}

// One line per row of the recognition table.
std::string recognition(const ImportProfile& p) {
    return p.id + " | " + p.name + " | " + shown(p.accountType) + " | " +
           (p.hasHeader ? "yes" : "no") + " | " + joined(p.requiredHeaders) + " | " +
           joined(p.forbiddenHeaders) + " | " + joined(p.headerlessColumns) + " | " +
           std::string(rawValue(p.headerlessShape));
}

// One line per row of the columns table.
std::string columns(const ImportProfile& p) {
    return p.dateColumn + " | " + shown(p.postedDateColumn) + " | " + p.descriptionColumn + " | " +
           shown(p.merchantColumn) + " | " + shown(p.categoryColumn) + " | " +
           shown(p.amountColumn) + " | " + shown(p.debitColumn) + " / " + shown(p.creditColumn) +
           " | " + std::string(rawValue(p.signConvention));
}

// One line per row of the table of everything else.
std::string remaining(const ImportProfile& p) {
    return shown(p.statusColumn) + " / " + joined(p.pendingValues) + " | " +
           shown(p.checkNumberColumn) + " | " + shown(p.cardNumberColumn) + " | " +
           shown(p.cardholderColumn) + " | " + shown(p.dateLayout) + " | " +
           shown(p.currencyColumn) + " | " + shown(p.currency) + " | " + shown(p.externalIDColumn) +
           " | " + (p.fileNameHints ? "[" + joined(*p.fileNameHints) + "]" : "-");
}

template <typename F>
std::vector<std::string> render(F line) {
    std::vector<std::string> lines;
    for (const auto& profile : builtInProfiles())
        lines.push_back(line(profile));
    return lines;
}

TEST(BuiltInProfiles, RecognitionRowsMatchTheTableInOrder) {
    const std::vector<std::string> expected{
        "chase-checking | Chase checking or savings | checking | yes | Details, Posting Date, "
        "Description, Amount | Transaction Date | none | none",
        "chase-card | Chase credit card | creditCard | yes | Transaction Date, Post Date, "
        "Description, Amount | Clearing Date, Card No. | none | none",
        "apple-card | Apple Card | creditCard | yes | Transaction Date, Clearing Date, "
        "Description, Amount (USD) | none | none | none",
        "citi-card | Citi credit card | creditCard | yes | Status, Date, Description, Debit, "
        "Credit | none | none | none",
        "capital-one-card | Capital One credit card | creditCard | yes | Transaction Date, Posted "
        "Date, Card No., Description, Debit, Credit | none | none | none",
        "wells-fargo | Wells Fargo | - | yes | Date, Description, Amount, Status | Clearing Date, "
        "Posting Date | none | none",
        "wells-fargo-classic | Wells Fargo (no header) | - | no | none | none | Date, Amount, "
        "Marker, Check #, Description | wellsFargoClassic",
        "comenity-card | Comenity store card (Macy's and others) | creditCard | no | none | none "
        "| Date, Amount, Description, Type | comenity",
        "discover-card | Discover card | creditCard | yes | Trans. Date, Post Date, Description, "
        "Amount | none | none | none",
        "amex-card | American Express | creditCard | yes | Date, Description, Card Member, Amount "
        "| none | none | none",
        "bank-of-america | Bank of America checking | checking | yes | Date, Description, Amount, "
        "Running Bal. | none | none | none",
        "dcu-checking | DCU checking | checking | yes | DATE, TRANSACTION TYPE, DESCRIPTION, "
        "AMOUNT, CURRENT BALANCE, ID | none | none | none",
        "schwab-checking | Schwab checking | checking | yes | Date, Description, Withdrawal, "
        "Deposit, RunningBalance, Status | none | none | none",
        "bank-of-ireland | Bank of Ireland checking | checking | yes | Date, Details, Debit, "
        "Credit, Balance | none | none | none",
        "monzo | Monzo | checking | yes | Transaction ID, Date, Type, Name, Amount, Currency, "
        "Local amount | none | none | none",
        "n26-de | N26 (German export) | checking | yes | Datum, Empfänger, Transaktionstyp, "
        "Verwendungszweck, Betrag (EUR) | none | none | none",
    };
    ASSERT_EQ(builtInProfiles().size(), 16u);
    EXPECT_EQ(render(recognition), expected);
}

TEST(BuiltInProfiles, ColumnRowsMatchTheTable) {
    const std::vector<std::string> expected{
        "Posting Date | - | Description | - | - | Amount | - / - | positiveIsMoneyIn",
        "Transaction Date | Post Date | Description | - | Category | Amount | - / - | "
        "positiveIsMoneyIn",
        "Transaction Date | Clearing Date | Description | Merchant | Category | Amount (USD) | - / "
        "- | positiveIsMoneyOut",
        "Date | - | Description | - | - | - | Debit / Credit | positiveIsMoneyIn",
        "Transaction Date | Posted Date | Description | - | Category | - | Debit / Credit | "
        "positiveIsMoneyIn",
        "Date | - | Description | - | - | Amount | - / - | positiveIsMoneyIn",
        "Date | - | Description | - | - | Amount | - / - | positiveIsMoneyIn",
        "Date | - | Description | - | - | Amount | - / - | positiveIsMoneyOut",
        "Trans. Date | Post Date | Description | - | Category | Amount | - / - | "
        "positiveIsMoneyOut",
        "Date | - | Description | - | - | Amount | - / - | positiveIsMoneyOut",
        "Date | - | Description | - | - | Amount | - / - | positiveIsMoneyIn",
        "DATE | - | DESCRIPTION | - | - | AMOUNT | - / - | positiveIsMoneyIn",
        "Date | - | Description | - | - | - | Withdrawal / Deposit | positiveIsMoneyIn",
        "Date | - | Details | - | - | - | Debit / Credit | positiveIsMoneyIn",
        "Date | - | Name | Name | Category | Amount | - / - | positiveIsMoneyIn",
        "Datum | - | Verwendungszweck | Empfänger | Kategorie | Betrag (EUR) | - / - | "
        "positiveIsMoneyIn",
    };
    EXPECT_EQ(render(columns), expected);
}

TEST(BuiltInProfiles, StatusDatesCurrenciesAndHintsMatchTheTable) {
    const std::vector<std::string> expected{
        "- / none | Check or Slip # | - | - | - | - | - | - | -",
        "- / none | - | - | - | - | - | - | - | -",
        "- / none | - | - | - | - | - | - | - | -",
        "Status / Pending | - | - | - | - | - | - | - | -",
        "- / none | - | Card No. | - | - | - | - | - | -",
        "Status / Pending | Check # | - | - | - | - | - | - | -",
        "- / none | Check # | - | - | monthDayYear | - | - | - | -",
        "- / none | - | - | - | monthDayYear | - | - | - | -",
        "- / none | - | - | - | - | - | - | - | -",
        "- / none | - | - | Card Member | - | - | - | - | -",
        "- / none | - | - | - | - | - | - | - | -",
        "- / none | - | - | - | monthDayYear | - | USD | ID | -",
        "Status / Pending | CheckNumber | - | - | monthDayYear | - | USD | - | -",
        "- / none | - | - | - | dayMonthYear | - | EUR | - | [bankofireland, bank-of-ireland, "
        "bank_of_ireland, boi]",
        "- / none | - | - | - | dayMonthYear | Currency | - | Transaction ID | -",
        "- / none | - | - | - | yearMonthDay | - | EUR | - | -",
    };
    EXPECT_EQ(render(remaining), expected);
    for (const auto& profile : builtInProfiles())
        EXPECT_TRUE(profile.isBuiltIn) << profile.id;
}

TEST(AllProfiles, TaughtLayoutsComeFirstInStoredOrder) {
    Ledger ledger;
    ledger.profiles.push_back(ImportProfile{.id = "custom-b", .name = "Second"});
    ledger.profiles.push_back(ImportProfile{.id = "custom-a", .name = "First"});
    const auto profiles = allProfiles(ledger);
    ASSERT_EQ(profiles.size(), 18u);
    EXPECT_EQ(profiles[0].id, "custom-b");
    EXPECT_EQ(profiles[1].id, "custom-a");
    EXPECT_EQ(profiles[2].id, "chase-checking");
    EXPECT_EQ(profiles[17].id, "n26-de");
    EXPECT_EQ(allProfiles(Ledger{}), builtInProfiles());
}

// The built-ins are only useful together with the analyzer: these check
// that the table and recognition agree.

std::string fileWithHeaders(const std::vector<std::string>& headers) {
    std::string line;
    for (const auto& header : headers)
        line += (line.empty() ? "" : ",") + header;
    return line + "\n";
}

std::optional<std::string> recognisedID(std::string_view fileName, std::string_view data,
                                        const std::vector<ImportProfile>& profiles) {
    const auto analysis = ImportAnalyzer::analyze(fileName, data, profiles, false);
    return analysis.profile ? std::optional(analysis.profile->id) : std::nullopt;
}

TEST(BuiltInProfiles, EachHeadedLayoutRecognisesItsOwnHeaderRow) {
    // A misspelt header, or a forbidden one that a sibling requires, would
    // send a bank's own file to another layout or to none.
    for (const auto& profile : builtInProfiles()) {
        if (!profile.hasHeader)
            continue;
        const auto data = fileWithHeaders(profile.requiredHeaders);
        EXPECT_EQ(recognisedID("boi-export.csv", data, builtInProfiles()), profile.id);
    }
}

TEST(BuiltInProfiles, BankOfIrelandNeedsItsNameInTheFileName) {
    const auto data = fileWithHeaders({"Date", "Details", "Debit", "Credit", "Balance"});
    EXPECT_EQ(recognisedID("statement.csv", data, builtInProfiles()), std::nullopt);
    EXPECT_EQ(recognisedID("Bank_Of_Ireland-2024.csv", data, builtInProfiles()), "bank-of-ireland");
}

TEST(AllProfiles, TaughtLayoutWithWellsFargoHeadersWinsTheTie) {
    Ledger ledger;
    ledger.profiles.push_back(ImportProfile{
        .id = "custom-1a2b3c4d",
        .name = "Credit union",
        .requiredHeaders = {"Date", "Description", "Amount", "Status"},
        .dateColumn = "Date",
        .descriptionColumn = "Description",
        .amountColumn = "Amount",
    });
    const auto data = fileWithHeaders({"Date", "Description", "Amount", "Status"}) +
                      "03/04/2024,COFFEE,-4.50,Posted\n";
    EXPECT_EQ(recognisedID("export.csv", data, builtInProfiles()), "wells-fargo");
    EXPECT_EQ(recognisedID("export.csv", data, allProfiles(ledger)), "custom-1a2b3c4d");
}

TEST(AllProfiles, EmptyFileNameHintsNeverMatchButAbsentHintsMatchAnyName) {
    ImportProfile taught{
        .id = "custom-hints",
        .name = "Hinted",
        .requiredHeaders = {"When", "What", "How much"},
        .dateColumn = "When",
        .descriptionColumn = "What",
        .amountColumn = "How much",
    };
    const auto data = fileWithHeaders({"When", "What", "How much"});
    EXPECT_EQ(recognisedID("anything.csv", data, {taught}), "custom-hints");
    taught.fileNameHints = std::vector<std::string>{};
    EXPECT_EQ(recognisedID("anything.csv", data, {taught}), std::nullopt);
    EXPECT_EQ(recognisedID("custom-hints.csv", data, {taught}), std::nullopt);
}

TEST(AllProfiles, AmountColumnWinsOverSplitColumnsNamedAlongsideIt) {
    // Read through the split columns, this row would be money in.
    const ImportProfile taught{
        .id = "custom-both",
        .name = "Both",
        .requiredHeaders = {"Date", "Memo", "Amount", "Out", "In"},
        .dateColumn = "Date",
        .descriptionColumn = "Memo",
        .amountColumn = "Amount",
        .debitColumn = "Out",
        .creditColumn = "In",
    };
    const auto data = fileWithHeaders({"Date", "Memo", "Amount", "Out", "In"}) +
                      "2024-03-04,RENT,-900.00,,900.00\n";
    const auto analysis = ImportAnalyzer::analyze("both.csv", data, {taught}, false);
    ASSERT_EQ(analysis.rows.size(), 1u)
        << (analysis.issues.empty() ? "" : analysis.issues[0].reason);
    EXPECT_EQ(analysis.rows[0].amount, -90000);
}

}  // namespace
}  // namespace copperwick
