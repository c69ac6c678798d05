#include "core/import/builtin_profiles.h"

#include <string>
#include <utility>

namespace copperwick {

namespace {

using Names = std::vector<std::string>;

constexpr auto kPurchasesNegative = SignConvention::positiveIsMoneyIn;
constexpr auto kPurchasesPositive = SignConvention::positiveIsMoneyOut;

// Written as a table on purpose: each entry reads across like the bank's own
// export, and the order is part of the contract (it breaks recognition ties).
std::vector<ImportProfile> makeBuiltIns() {
    std::vector<ImportProfile> profiles{
        {
            .id = "chase-checking",
            .name = "Chase checking or savings",
            .accountType = AccountType::checking,
            .requiredHeaders = {"Details", "Posting Date", "Description", "Amount"},
            .forbiddenHeaders = {"Transaction Date"},
            .dateColumn = "Posting Date",
            .descriptionColumn = "Description",
            .amountColumn = "Amount",
            .signConvention = kPurchasesNegative,
            .checkNumberColumn = "Check or Slip #",
        },
        {
            .id = "chase-card",
            .name = "Chase credit card",
            .accountType = AccountType::creditCard,
            .requiredHeaders = {"Transaction Date", "Post Date", "Description", "Amount"},
            .forbiddenHeaders = {"Clearing Date", "Card No."},
            .dateColumn = "Transaction Date",
            .postedDateColumn = "Post Date",
            .descriptionColumn = "Description",
            .categoryColumn = "Category",
            .amountColumn = "Amount",
            .signConvention = kPurchasesNegative,
        },
        {
            .id = "apple-card",
            .name = "Apple Card",
            .accountType = AccountType::creditCard,
            .requiredHeaders = {"Transaction Date", "Clearing Date", "Description", "Amount (USD)"},
            .dateColumn = "Transaction Date",
            .postedDateColumn = "Clearing Date",
            .descriptionColumn = "Description",
            .merchantColumn = "Merchant",
            .categoryColumn = "Category",
            .amountColumn = "Amount (USD)",
            .signConvention = kPurchasesPositive,
        },
        {
            .id = "citi-card",
            .name = "Citi credit card",
            .accountType = AccountType::creditCard,
            .requiredHeaders = {"Status", "Date", "Description", "Debit", "Credit"},
            .dateColumn = "Date",
            .descriptionColumn = "Description",
            .debitColumn = "Debit",
            .creditColumn = "Credit",
            .signConvention = kPurchasesNegative,
            .statusColumn = "Status",
            .pendingValues = {"Pending"},
        },
        {
            .id = "capital-one-card",
            .name = "Capital One credit card",
            .accountType = AccountType::creditCard,
            .requiredHeaders = {"Transaction Date", "Posted Date", "Card No.", "Description",
                                "Debit", "Credit"},
            .dateColumn = "Transaction Date",
            .postedDateColumn = "Posted Date",
            .descriptionColumn = "Description",
            .categoryColumn = "Category",
            .debitColumn = "Debit",
            .creditColumn = "Credit",
            .signConvention = kPurchasesNegative,
            .cardNumberColumn = "Card No.",
        },
        {
            .id = "wells-fargo",
            .name = "Wells Fargo",
            .requiredHeaders = {"Date", "Description", "Amount", "Status"},
            .forbiddenHeaders = {"Clearing Date", "Posting Date"},
            .dateColumn = "Date",
            .descriptionColumn = "Description",
            .amountColumn = "Amount",
            .signConvention = kPurchasesNegative,
            .statusColumn = "Status",
            .pendingValues = {"Pending"},
            .checkNumberColumn = "Check #",
        },
        {
            .id = "wells-fargo-classic",
            .name = "Wells Fargo (no header)",
            .hasHeader = false,
            .headerlessColumns = {"Date", "Amount", "Marker", "Check #", "Description"},
            .headerlessShape = HeaderlessShape::wellsFargoClassic,
            .dateColumn = "Date",
            .descriptionColumn = "Description",
            .amountColumn = "Amount",
            .signConvention = kPurchasesNegative,
            .checkNumberColumn = "Check #",
            .dateLayout = DateLayout::monthDayYear,
        },
        {
            .id = "comenity-card",
            .name = "Comenity store card (Macy's and others)",
            .accountType = AccountType::creditCard,
            .hasHeader = false,
            .headerlessColumns = {"Date", "Amount", "Description", "Type"},
            .headerlessShape = HeaderlessShape::comenity,
            .dateColumn = "Date",
            .descriptionColumn = "Description",
            .amountColumn = "Amount",
            .signConvention = kPurchasesPositive,
            .dateLayout = DateLayout::monthDayYear,
        },
        {
            .id = "discover-card",
            .name = "Discover card",
            .accountType = AccountType::creditCard,
            .requiredHeaders = {"Trans. Date", "Post Date", "Description", "Amount"},
            .dateColumn = "Trans. Date",
            .postedDateColumn = "Post Date",
            .descriptionColumn = "Description",
            .categoryColumn = "Category",
            .amountColumn = "Amount",
            .signConvention = kPurchasesPositive,
        },
        {
            .id = "amex-card",
            .name = "American Express",
            .accountType = AccountType::creditCard,
            .requiredHeaders = {"Date", "Description", "Card Member", "Amount"},
            .dateColumn = "Date",
            .descriptionColumn = "Description",
            .amountColumn = "Amount",
            .signConvention = kPurchasesPositive,
            .cardholderColumn = "Card Member",
        },
        {
            .id = "bank-of-america",
            .name = "Bank of America checking",
            .accountType = AccountType::checking,
            .requiredHeaders = {"Date", "Description", "Amount", "Running Bal."},
            .dateColumn = "Date",
            .descriptionColumn = "Description",
            .amountColumn = "Amount",
            .signConvention = kPurchasesNegative,
        },
        {
            .id = "dcu-checking",
            .name = "DCU checking",
            .accountType = AccountType::checking,
            .requiredHeaders = {"DATE", "TRANSACTION TYPE", "DESCRIPTION", "AMOUNT",
                                "CURRENT BALANCE", "ID"},
            .dateColumn = "DATE",
            .descriptionColumn = "DESCRIPTION",
            .amountColumn = "AMOUNT",
            .signConvention = kPurchasesNegative,
            .dateLayout = DateLayout::monthDayYear,
            .currency = "USD",
            .externalIDColumn = "ID",
        },
        {
            .id = "schwab-checking",
            .name = "Schwab checking",
            .accountType = AccountType::checking,
            .requiredHeaders = {"Date", "Description", "Withdrawal", "Deposit", "RunningBalance",
                                "Status"},
            .dateColumn = "Date",
            .descriptionColumn = "Description",
            .debitColumn = "Withdrawal",
            .creditColumn = "Deposit",
            .signConvention = kPurchasesNegative,
            .statusColumn = "Status",
            .pendingValues = {"Pending"},
            .checkNumberColumn = "CheckNumber",
            .dateLayout = DateLayout::monthDayYear,
            .currency = "USD",
        },
        {
            // Its headers alone are too common to claim a file, so it asks
            // for the bank's name in the file name as well.
            .id = "bank-of-ireland",
            .name = "Bank of Ireland checking",
            .accountType = AccountType::checking,
            .requiredHeaders = {"Date", "Details", "Debit", "Credit", "Balance"},
            .dateColumn = "Date",
            .descriptionColumn = "Details",
            .debitColumn = "Debit",
            .creditColumn = "Credit",
            .signConvention = kPurchasesNegative,
            .dateLayout = DateLayout::dayMonthYear,
            .currency = "EUR",
            .fileNameHints = Names{"bankofireland", "bank-of-ireland", "bank_of_ireland", "boi"},
        },
        {
            // Monzo's Name is both the description and the merchant.
            .id = "monzo",
            .name = "Monzo",
            .accountType = AccountType::checking,
            .requiredHeaders = {"Transaction ID", "Date", "Type", "Name", "Amount", "Currency",
                                "Local amount"},
            .dateColumn = "Date",
            .descriptionColumn = "Name",
            .merchantColumn = "Name",
            .categoryColumn = "Category",
            .amountColumn = "Amount",
            .signConvention = kPurchasesNegative,
            .dateLayout = DateLayout::dayMonthYear,
            .currencyColumn = "Currency",
            .externalIDColumn = "Transaction ID",
        },
        {
            .id = "n26-de",
            .name = "N26 (German export)",
            .accountType = AccountType::checking,
            .requiredHeaders = {"Datum", "Empfänger", "Transaktionstyp", "Verwendungszweck",
                                "Betrag (EUR)"},
            .dateColumn = "Datum",
            .descriptionColumn = "Verwendungszweck",
            .merchantColumn = "Empfänger",
            .categoryColumn = "Kategorie",
            .amountColumn = "Betrag (EUR)",
            .signConvention = kPurchasesNegative,
            .dateLayout = DateLayout::yearMonthDay,
            .currency = "EUR",
        },
    };
    for (auto& profile : profiles)
        profile.isBuiltIn = true;
    return profiles;
}

}  // namespace

const std::vector<ImportProfile>& builtInProfiles() {
    static const std::vector<ImportProfile> kBuiltIns = makeBuiltIns();
    return kBuiltIns;
}

std::vector<ImportProfile> allProfiles(const Ledger& ledger) {
    const auto& builtIns = builtInProfiles();
    std::vector<ImportProfile> profiles;
    profiles.reserve(ledger.profiles.size() + builtIns.size());
    profiles.insert(profiles.end(), ledger.profiles.begin(), ledger.profiles.end());
    profiles.insert(profiles.end(), builtIns.begin(), builtIns.end());
    return profiles;
}

}  // namespace copperwick
