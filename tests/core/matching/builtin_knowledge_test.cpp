#include "core/matching/builtin_knowledge.h"

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/matching/bank_category_map.h"
#include "core/model/ledger_category.h"

namespace copperwick {
namespace {

std::string describe(const DirectoryEntry& entry) {
    std::string phrases;
    for (const auto& phrase : entry.phrases)
        phrases += (phrases.empty() ? "" : "|") + phrase;
    return entry.name + " [" + phrases + "]";
}

// The directory as runs of one category: "Pets 4: first .. last".
std::vector<std::string> describeGroups(const std::vector<DirectoryEntry>& entries) {
    std::vector<std::string> groups;
    for (std::size_t start = 0; start < entries.size();) {
        std::size_t end = start + 1;
        while (end < entries.size() && entries[end].category == entries[start].category)
            ++end;
        std::string group = entries[start].category + " " + std::to_string(end - start) + ": " +
                            describe(entries[start]);
        if (end - start > 1)
            group += " .. " + describe(entries[end - 1]);
        groups.push_back(group);
        start = end;
    }
    return groups;
}

std::string describe(const BuiltInRule& rule) {
    std::string accounts;
    for (const auto type : rule.accountTypes)
        accounts += (accounts.empty() ? "" : ",") + std::string(rawValue(type));
    return rule.id + " | " + rule.name + " | " + std::string(rawValue(rule.direction)) + " | " +
           (accounts.empty() ? "*" : accounts) + " | " + std::string(rawValue(rule.kind)) + " | " +
           rule.categoryName.value_or("-");
}

TEST(BuiltInKnowledge, RulesStandInOrderOfPrecedence) {
    std::vector<std::string> rules;
    for (const auto& rule : BuiltInKnowledge::rules())
        rules.push_back(describe(rule));
    const std::vector<std::string> expected = {
        "tax-refund | Tax refund | moneyIn | * | income | Refunds & Settlements",
        "tax-payment | Tax payment | moneyOut | * | expense | Taxes",
        "interest-charged | Interest charged | moneyOut | * | expense | Fees & Interest",
        "bank-fees | Bank and card fees | moneyOut | * | expense | Fees & Interest",
        "fee-refund | Fee or interest refund | moneyIn | * | expense | Fees & Interest",
        "payroll | Paycheck | moneyIn | checking,savings | income | Salary",
        "interest-earned | Interest earned | moneyIn | checking,savings | income | "
        "Interest & Rewards",
        "rewards | Cash back and rewards | moneyIn | * | income | Interest & Rewards",
        "atm-cash | ATM cash withdrawal | moneyOut | * | expense | Cash & ATM",
        "own-transfer | Transfer between your accounts | any | * | transfer | -",
        "card-payment-out | Credit card payment | moneyOut | checking,savings,other | transfer | -",
        "card-payment-in | Credit card payment received | moneyIn | creditCard | transfer | -",
    };
    EXPECT_EQ(rules, expected);
}

// The list of built-in rules names account types its own way: a checking
// account in full, where the type's own label says only "Checking".
TEST(BuiltInKnowledge, DescriptionNamesDirectionAccountTypesAndOutcome) {
    const auto& rules = BuiltInKnowledge::rules();
    const auto rule = [&](std::string_view id) {
        return *std::find_if(rules.begin(), rules.end(),
                             [&](const BuiltInRule& each) { return each.id == id; });
    };
    EXPECT_EQ(describeBuiltInRule(rule("payroll")),
              "Money in only, Checking account, Savings \u2192 Income, Salary");
    EXPECT_EQ(describeBuiltInRule(rule("own-transfer")),
              "Money in or out, Any account \u2192 Transfer");
    EXPECT_EQ(describeBuiltInRule(rule("card-payment-in")),
              "Money in only, Credit card \u2192 Transfer");
}

TEST(BuiltInKnowledge, CardPaymentPatternNamesIssuerAndPaymentInEitherOrder) {
    const std::string& pattern = BuiltInKnowledge::rules()[10].pattern;
    const std::string issuers =
        "(CHASE CREDIT CRD|CHASE CARD|APPLECARD GSBANK|APPLE CARD|CITI CARD|CITI AUTOPAY|CITICARD|"
        "CAPITAL ONE|COMENITY|DISCOVER|AMEX|AMERICAN EXPRESS|BARCLAYCARD|SYNCHRONY|SYNCB|"
        "WF CREDIT CARD|WELLS FARGO CARD|ACTIVE CASH VISA|BK OF AMER VISA|"
        "BANK OF AMERICA CREDIT CARD|CREDIT CARD|CARDMEMBER SERV|KOHLS|MACYS|TARGET CARD|"
        "US BANK CREDIT)";
    const std::string words = "(PAYMENT|PYMT|PMT|AUTOPAY|AUTO PAY|EPAY|E-PAYMENT)";
    EXPECT_EQ(pattern, issuers + ".*" + words + "|" + words + ".*" + issuers);
}

TEST(BuiltInKnowledge, DirectoryKeepsTableOrderAcrossRepeatedHeadings) {
    const auto& merchants = BuiltInKnowledge::merchants();
    ASSERT_EQ(merchants.size(), 275u);
    std::size_t phrases = 0;
    for (const auto& entry : merchants)
        phrases += entry.phrases.size();
    EXPECT_EQ(phrases, 392u);

    const std::vector<std::string> expected = {
        "Groceries 25: Safeway [SAFEWAY] .. Walmart Grocery [WALMART GROCERY]",
        "Dining 63: Starbucks [STARBUCKS] .. Postmates [POSTMATES]",
        "Transportation 26: Uber [UBER *TRIP|UBER TRIP|UBER] .. Les Schwab [LES SCHWAB]",
        "Shopping 51: Amazon [AMAZON|AMZN|AMAZON MKTPL|AMAZON MKTPLACE|AMAZON.COM|AMZN MKTP] .. "
        "Apple Card Installments [MONTHLY INSTALLMENTS]",
        "Personal Care 6: Sephora [SEPHORA] .. European Wax Center [EUROPEAN WAX]",
        "Pets 4: Petco [PETCO] .. Banfield [BANFIELD]",
        "Health 13: CVS [CVS] .. GoodRx [GOODRX]",
        "Subscriptions 24: Netflix [NETFLIX] .. Patreon [PATREON]",
        "Entertainment 13: PlayStation [PLAYSTATION|SONY INTERACTIVE] .. Fandango [FANDANGO]",
        "Insurance 1: Allianz Event Insurance [ALLIANZ EVENT INS]",
        "Entertainment 1: Dave & Buster's [DAVE & BUSTER|DAVE AND BUSTER]",
        "Travel 21: Airbnb [AIRBNB] .. Amtrak [AMTRAK]",
        "Utilities 9: PG&E [PG&E|PGANDE|PACIFIC GAS] .. Sonic Internet [SONIC.NET|SONIC TELECOM]",
        "Housing 5: Zillow Rent [ZILLOW RENT|ZILLOW RENTALS] .. Yardi [YARDI]",
        "Insurance 6: Lemonade Insurance [LEMONADE INSURANCE|LEMONADE INS] .. "
        "Root Insurance [ROOT INSURANCE]",
        "Education 5: Parchment [PARCHMENT] .. Chegg [CHEGG]",
        "Gifts & Donations 2: GoFundMe [GOFUNDME] .. 1-800-Flowers [1-800-FLOWERS|1800FLOWERS]",
    };
    EXPECT_EQ(describeGroups(merchants), expected);
}

TEST(BuiltInKnowledge, PhrasesKeepTheirExactBytes) {
    std::vector<std::string> marked;
    std::vector<std::string> padded;
    for (const auto& entry : BuiltInKnowledge::merchants()) {
        for (const auto& phrase : entry.phrases) {
            if (phrase.find('~') != std::string::npos)
                marked.push_back(phrase);
            if (phrase.front() == ' ' || phrase.back() == ' ')
                padded.push_back(phrase);
        }
    }
    EXPECT_EQ(marked, std::vector<std::string>{"COINBASE~"});
    EXPECT_EQ(padded, (std::vector<std::string>{"AMC ", "REGAL "}));
}

// A name that isn't one of the starter ledger's categories would leave every
// fresh ledger without that filing, silently.
TEST(BuiltInKnowledge, EveryCategoryNameIsAStarterCategory) {
    std::set<std::string> starter;
    for (const auto& category : LedgerCategory::defaults())
        starter.insert(category.name);
    for (const auto& rule : BuiltInKnowledge::rules()) {
        if (rule.categoryName) {
            EXPECT_TRUE(starter.contains(*rule.categoryName)) << rule.id;
        }
        // Only transfers go without a category.
        EXPECT_EQ(!rule.categoryName, rule.kind == TransactionKind::transfer) << rule.id;
    }
    for (const auto& entry : BuiltInKnowledge::merchants())
        EXPECT_TRUE(starter.contains(entry.category)) << entry.name;
    for (const auto& label : BankCategoryMap::labels())
        EXPECT_TRUE(starter.contains(std::string(label.categoryName))) << label.bankLabel;
}

}  // namespace
}  // namespace copperwick
