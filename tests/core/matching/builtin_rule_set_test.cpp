#include "core/matching/builtin_rule_set.h"

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

using enum AccountType;

struct Case {
    std::string_view text;
    int64_t amount;
    std::optional<AccountType> account;
    std::string_view expected;  // a rule id, or "-" for none
};

std::string_view matchedId(std::string_view text, int64_t amount,
                           std::optional<AccountType> account,
                           const std::set<std::string>& disabled = {}) {
    const BuiltInRule* rule = BuiltInRuleSet::match(text, amount, account, disabled);
    return rule ? std::string_view(rule->id) : "-";
}

void expectMatches(std::initializer_list<Case> cases) {
    for (const auto& [text, amount, account, expected] : cases)
        EXPECT_EQ(matchedId(text, amount, account), expected)
            << '"' << text << "\" " << amount << " on "
            << (account ? rawValue(*account) : "unknown");
}

TEST(BuiltInRuleSet, EachRuleReadsItsBankText) {
    expectMatches({
        {"IRS TREAS 310 TAX REF", 120000, checking, "tax-refund"},
        {"FRANCHISE TAX BD PAYMENTS", -50000, checking, "tax-payment"},
        {"FTB ONLINE PAYMENT", -50000, checking, "tax-payment"},
        {"PURCHASE INTEREST CHARGE", -1234, creditCard, "interest-charged"},
        {"NON-WF ATM FEE", -250, checking, "bank-fees"},
        {"LATE FEE REVERSAL", 3900, creditCard, "fee-refund"},
        {"ACME CORP PAYROLL PPD ID: 123", 250000, checking, "payroll"},
        {"INTEREST PAYMENT", 12, savings, "interest-earned"},
        {"CASHBACK REDEMPTION", 2500, creditCard, "rewards"},
        {"CASH BACK REDEMPTION", 2500, creditCard, "rewards"},
        {"REWARD REDEMPTION", 2500, creditCard, "rewards"},
        {"REDEEMED REWARDS", 2500, creditCard, "rewards"},
        {"ATM WITHDRAWAL 1234 MAIN ST", -6000, checking, "atm-cash"},
        {"ONLINE TRANSFER TO SAV XXXXX1234", -10000, checking, "own-transfer"},
        {"TRANSFER FROM SHARE 01", 10000, savings, "own-transfer"},
        {"PAYMENT, THANK YOU", 50000, creditCard, "card-payment-in"},
        {"PAYMENT THANK YOU", 50000, creditCard, "card-payment-in"},
        {"PAYMENT", 50000, creditCard, "card-payment-in"},
    });
}

TEST(BuiltInRuleSet, PatternsIgnoreCaseAndAnchorsHold) {
    expectMatches({
        {"Direct Deposit Acme", 250000, checking, "payroll"},
        {"payment, thank you", 50000, creditCard, "card-payment-in"},
        // "^PAYMENT$" is the whole text, not any text that holds the word.
        {"PAYMENT TO A FRIEND", 50000, creditCard, "-"},
        {"NO PAYMENT", 50000, creditCard, "-"},
    });
}

TEST(BuiltInRuleSet, CardPaymentOutNamesIssuerAndPaymentInEitherOrder) {
    expectMatches({
        {"CHASE CREDIT CRD AUTOPAY PPD ID: 4760039224", -150000, checking, "card-payment-out"},
        {"PAYMENT TO CHASE CARD ENDING IN 1234", -150000, checking, "card-payment-out"},
        {"DISCOVER E-PAYMENT 1234", -150000, savings, "card-payment-out"},
        {"AMEX EPAYMENT ACH PMT", -150000, other, "card-payment-out"},
        // The card's own side of the same payment is the next rule's.
        {"CHASE CREDIT CRD AUTOPAY", -150000, creditCard, "-"},
        {"CHASE CREDIT CRD AUTOPAY", -150000, std::nullopt, "-"},
        // An issuer alone is a purchase, not a payment.
        {"KOHLS #1234", -4500, checking, "-"},
    });
}

TEST(BuiltInRuleSet, AccountListExcludesOtherAndUnknownAccounts) {
    expectMatches({
        {"ACME PAYROLL", 250000, checking, "payroll"},
        {"ACME PAYROLL", 250000, savings, "payroll"},
        {"ACME PAYROLL", 250000, creditCard, "-"},
        {"ACME PAYROLL", 250000, cash, "-"},
        {"ACME PAYROLL", 250000, std::nullopt, "-"},
        // A rule without a list holds on an unknown account too.
        {"ATM WITHDRAWAL", -6000, std::nullopt, "atm-cash"},
    });
}

TEST(BuiltInRuleSet, DirectionFiltersBeforeThePattern) {
    expectMatches({
        // The same words on the wrong side of the ledger.
        {"IRS TAX REFUND", -1, checking, "-"},
        {"ACME PAYROLL", -1, checking, "-"},
        {"ATM WITHDRAWAL", 1, checking, "-"},
        // Zero is neither in nor out: only the rule for either direction.
        {"ACME PAYROLL", 0, checking, "-"},
        {"ATM WITHDRAWAL", 0, checking, "-"},
        {"ONLINE TRANSFER TO SAV 1234", 0, checking, "own-transfer"},
        // The smallest amounts either way still count.
        {"ACME PAYROLL", 1, checking, "payroll"},
        {"ATM WITHDRAWAL", -1, checking, "atm-cash"},
    });
}

TEST(BuiltInRuleSet, DisabledRuleLetsTheNextOneWin) {
    // Both bank-fees and own-transfer read this line; precedence decides.
    constexpr std::string_view text = "OVERDRAFT TRANSFER FROM SAVINGS";
    EXPECT_EQ(matchedId(text, -2500, checking), "bank-fees");
    EXPECT_EQ(matchedId(text, -2500, checking, {"bank-fees"}), "own-transfer");
    EXPECT_EQ(matchedId(text, -2500, checking, {"bank-fees", "own-transfer"}), "-");
    // An id that no rule has, left over from older settings, changes nothing.
    EXPECT_EQ(matchedId(text, -2500, checking, {"no-such-rule"}), "bank-fees");
}

TEST(BuiltInRuleSet, ReturnsTheTableEntry) {
    const BuiltInRule* rule = BuiltInRuleSet::match("EFTPS", -100, checking, {});
    ASSERT_NE(rule, nullptr);
    EXPECT_EQ(rule, &BuiltInKnowledge::rules()[1]);
    EXPECT_EQ(BuiltInRuleSet::match("", 100, checking, {}), nullptr);
}

// A rule is passed over when the text holds none of its required words, so
// a word derived wrongly loses matches silently. Brackets show the blanks.
std::string describeRequired(std::string_view pattern) {
    const auto literals = BuiltInRuleSet::detail::requiredLiterals(pattern);
    if (!literals)
        return "none";
    std::string text;
    for (const auto& literal : *literals)
        text += "[" + literal + "]";
    return text;
}

TEST(BuiltInRuleSet, RequiredWordsOfTheRules) {
    std::vector<std::string> described;
    for (const auto& rule : BuiltInKnowledge::rules())
        described.push_back(rule.id + " " + describeRequired(rule.pattern));
    const std::vector<std::string> expected = {
        "tax-refund [TAX REF][TAXRFD][TAX REFUND]",
        "tax-payment [USATAXPYMT][IRS TREAS 310 TAX PAY][EFTPS][FRANCHISE TAX BD][PAYMENT]",
        "interest-charged [INTEREST CHARGE][INTEREST CHARGED][PURCHASE INTEREST][FINANCE CHARGE]",
        "bank-fees [LATE FEE][ANNUAL FEE][ANNUAL MEMBERSHIP FEE][FOREIGN TRANSACTION FEE]"
        "[FOREIGN TRANS FEE][MONTHLY SERVICE FEE][MAINTENANCE FEE][OVERDRAFT][NSF FEE]"
        "[RETURNED ITEM FEE][ATM FEE][WIRE FEE][CASH ADVANCE FEE][NON-WF ATM FEE]",
        "fee-refund [FEE REVERSAL][FEE REFUND][INTEREST REFUND][INTEREST REVERSAL][FEE WAIVER]",
        "payroll [PAYROLL][DIR DEP][DIRECT DEP][DIRECT DEPOSIT][SALARY][PAYCHECK]",
        "interest-earned [INTEREST PAYMENT][INTEREST PAID][INTEREST EARNED][INTEREST CREDIT]"
        "[DIVIDEND]",
        "rewards [BACK REDEMPTION][DAILY CASH][ REDEMPTION][ REWARDS]",
        "atm-cash [ATM WITHDRAWAL][ATM CASH WITHDRAWAL][CASH WITHDRAWAL][ATM WITHDRAW][ATM DEBIT]",
        "own-transfer [ONLINE TRANSFER ][TRANSFER ][ONLINE BANKING TRANSFER][WAY2SAVE]"
        "[FUNDS TRANSFER][INTERNAL TRANSFER][XFER ][SAVE AS YOU GO][KEEP THE CHANGE]",
        "card-payment-out [PAYMENT][PYMT][PMT][AUTOPAY][AUTO PAY][EPAY][E-PAYMENT]",
        "card-payment-in [ THANK YOU][PAYMENT - THANK YOU][PAYMENT RECEIVED][AUTOPAY PAYMENT]"
        "[AUTOMATIC PAYMENT][ONLINE PAYMENT][MOBILE PAYMENT][ONLINE PYMT][MOBILE PYMT]"
        "[INTERNET PAYMENT][ACH DEPOSIT INTERNET TRANSFER][AUTOPAY][PAYMENT FROM]"
        "[ELECTRONIC PAYMENT][PAYMENT][THANK YOU FOR YOUR PAYMENT]",
    };
    EXPECT_EQ(described, expected);
}

TEST(BuiltInRuleSet, RequiredWordsStayOnTheSafeSide) {
    struct Case {
        std::string_view pattern;
        std::string_view required;
    };
    for (const auto& [pattern, required] : std::initializer_list<Case>{
             // Optional pieces are never required.
             {"AB?C", "[A]"},
             {"(AB|CD)?EF", "[EF]"},
             {"X*YZ", "[YZ]"},
             {"(X|)YZ", "[YZ]"},
             {"A+B", "[A]"},
             {"ab", "[AB]"},
             {"(ab|CD)", "[AB][CD]"},
             // An alternative with no word of its own matches anything.
             {"A|", "none"},
             {"A|.*", "none"},
             // Beyond the simple reading: the pattern always runs.
             {"A[BC]", "none"},
             {"A\\.COM", "none"},
             {"A{2}", "none"},
             {"(?x)A B", "none"},
             {"A)(", "none"},
             {"CAF\xC3\x89", "none"},
         }) {
        EXPECT_EQ(describeRequired(pattern), required) << pattern;
    }
}

TEST(BuiltInRuleSet, TextBeyondAsciiStillReachesThePattern) {
    // The Kelvin sign matches "K" without case; a search for the ASCII word
    // "PAYCHECK" alone would pass this line over.
    EXPECT_EQ(matchedId("ACME PAYCHEC\xE2\x84\xAA", 100, checking), "payroll");
    EXPECT_EQ(matchedId("ACME PAYCHEQUE", 100, checking), "-");
}

// Each thread keeps its own matchers; shared ones would mix up their inputs.
TEST(BuiltInRuleSet, MatchesFromManyThreadsAtOnce) {
    std::vector<std::thread> threads;
    std::vector<int> wrong(4, 0);
    for (std::size_t t = 0; t < wrong.size(); ++t) {
        threads.emplace_back([&wrong, t] {
            for (int i = 0; i < 500; ++i) {
                const bool even = (i + static_cast<int>(t)) % 2 == 0;
                const std::string_view id = even ? matchedId("ACME PAYROLL", 100, checking)
                                                 : matchedId("ATM WITHDRAWAL", -100, checking);
                if (id != (even ? "payroll" : "atm-cash"))
                    ++wrong[t];
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(wrong, std::vector<int>(4, 0));
}

}  // namespace
}  // namespace copperwick
