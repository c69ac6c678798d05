#include "core/intelligence/suggestion_check.h"

#include <gtest/gtest.h>

#include "tests/support/ledger_builder.h"

namespace copperwick {
namespace {

TEST(SuggestionCheck, RedactsDigitRunsOfFiveOrMore) {
    EXPECT_EQ(SuggestionCheck::redactDigits("CARD 123456 REF 1234"), "CARD ###### REF 1234");
    EXPECT_EQ(SuggestionCheck::redactDigits("12345"), "#####");
    EXPECT_EQ(SuggestionCheck::redactDigits("1234 x12345y 123456789012"),
              "1234 x#####y ############");
    EXPECT_EQ(SuggestionCheck::redactDigits("PAY 1234-5678 CAF\u00c9 99999"),
              "PAY 1234-5678 CAF\u00c9 #####")
        << "a hyphen splits the runs; other text stays as it is";
    EXPECT_EQ(SuggestionCheck::redactDigits(""), "");
}

TEST(SuggestionCheck, DescribesATransactionWithoutItsAccountNumbers) {
    testing::LedgerBuilder builder;
    const Uuid card = builder.account("Visa", AccountType::creditCard);
    const Uuid id = builder.transaction(card, "  paypal *joes  coffee 4029357733 ", -1250);
    builder.change(id, [](LedgerTransaction& t) {
        t.bankMerchant = std::string("Joe's Coffee");
        t.bankCategory = std::string("Food & Drink");
    });
    const std::string text =
        SuggestionCheck::describe(*builder.ledger().transaction(id), builder.ledger());
    EXPECT_EQ(text,
              "Bank text: PAYPAL *JOES COFFEE ##########\n"
              "Cleaned: JOES COFFEE\n"
              "Direction: money out\n"
              "Amount: $12.50\n"
              "Account type: Credit card\n"
              "Paid through: PayPal\n"
              "Bank's merchant name: Joe's Coffee\n"
              "Bank's category: Food & Drink");

    const Uuid orphan = builder.transaction(Uuid::random(), "REFUND", 500);
    EXPECT_EQ(SuggestionCheck::describe(*builder.ledger().transaction(orphan), builder.ledger()),
              "Bank text: REFUND\nCleaned: REFUND\nDirection: money in\nAmount: $5.00\n"
              "Account type: unknown");
}

TEST(SuggestionCheck, ValidatesKindMerchantAndCategory) {
    testing::LedgerBuilder builder;
    const Ledger& ledger = builder.ledger();
    const auto check = [&](std::string_view merchant, std::string_view category,
                           std::string_view kind, int64_t amount = -500) {
        return SuggestionCheck::validate(merchant, category, kind, ledger, amount);
    };

    const auto good = check(" Corner Shop\n", " groceries ", " Spending ");
    ASSERT_TRUE(good);
    EXPECT_EQ(*good, (Suggestion{.merchantName = "Corner Shop",
                                 .categoryID = builder.category("Groceries"),
                                 .kind = TransactionKind::expense,
                                 .source = MatchMethod::ai,
                                 .reason = "Local AI suggestion"}));

    EXPECT_FALSE(check("Corner Shop", "Groceries", "unknown"));
    EXPECT_FALSE(check("Corner Shop", "Groceries", "refund"));
    EXPECT_FALSE(check("Http Shop", "Groceries", "expense"));
    EXPECT_FALSE(check("shop.com/HTTPS", "Groceries", "expense"));
    EXPECT_FALSE(check("A1", "Groceries", "expense")) << "one letter is no name";
    EXPECT_TRUE(check("Zo\u00eb", "Groceries", "expense")) << "letters of any script count";
    EXPECT_FALSE(check("Corner\nShop", "Groceries", "expense"));
    EXPECT_FALSE(check(std::string(41, 'x'), "Groceries", "expense"));
    EXPECT_TRUE(check(std::string(40, 'x'), "Groceries", "expense"));

    for (const auto* nobody : {"", "  ", "unknown", "None"}) {
        const auto unnamed = check(nobody, "Groceries", "expense");
        ASSERT_TRUE(unnamed) << nobody;
        EXPECT_FALSE(unnamed->merchantName) << nobody;
    }

    EXPECT_FALSE(check("Corner Shop", "Groceries", "income", 500))
        << "an income of a spending category";
    EXPECT_FALSE(check("Acme", "Salary", "expense"));
    EXPECT_FALSE(check("Acme", "Salaries", "income", 500)) << "no such category";
    EXPECT_TRUE(check("Acme", "Salary", "income", 500));
    EXPECT_FALSE(check("Acme", "Salary", "income", -500)) << "money that left isn't income";
    EXPECT_TRUE(check("Corner Shop", "Groceries", "expense", 500)) << "a refund of spending";

    const auto transfer = check("My Savings", "Groceries", "transfer");
    ASSERT_TRUE(transfer);
    EXPECT_FALSE(transfer->categoryID) << "a transfer takes no category";
}

}  // namespace
}  // namespace copperwick
