#include "core/operations/zelle_choice.h"

#include <gtest/gtest.h>

#include "core/model/text.h"
#include "core/operations/change_history.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/refusal.h"

namespace copperwick {
namespace {

const Instant kNow = Instant::fromUnixSeconds(1773000000);

TEST(ZelleChoiceTest, EachDirectionOffersItsOwnChoices) {
    using enum ZelleChoice;
    EXPECT_EQ(zelleChoices(false),
              (std::vector<ZelleChoice>{spending, giftSent, payingEachOther, dontCount}));
    EXPECT_EQ(zelleChoices(true),
              (std::vector<ZelleChoice>{income, sold, giftReceived, payingMeBack, payingEachOther,
                                        dontCount}));
    EXPECT_EQ(traits(payingMeBack).kind, TransactionKind::expense)
        << "money in filed as an expense is a refund";
    EXPECT_EQ(traits(dontCount).kind, TransactionKind::transfer);
    EXPECT_EQ(traits(giftReceived).label, "A gift I received");
}

class ClassifyZelleTest : public ::testing::Test {
  protected:
    testing::LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
    Uuid payment = builder.transaction(checking, "ZELLE FROM JANE DOE", 5000);

    Ledger& ledger() { return builder.ledger(); }

    LedgerDelta decide(ZelleChoice choice, std::optional<Uuid> categoryID = std::nullopt) {
        return classifyZelle(ledger(),
                             ZelleDecision{.ids = {payment},
                                           .merchantName = "Jane Doe",
                                           .choice = choice,
                                           .categoryID = categoryID,
                                           .remember = false,
                                           .label = "Review Jane Doe"},
                             kNow);
    }

    [[nodiscard]] std::size_t categoriesNamed(std::string_view name) {
        std::size_t count = 0;
        for (const auto& category : builder.ledger().categories)
            count += text::equalsIgnoringCase(category.name, name) ? 1 : 0;
        return count;
    }
};

TEST_F(ClassifyZelleTest, AGiftReceivedMakesItsCategoryOnceInTheIncomeGroup) {
    const auto incomeBefore =
        std::count_if(ledger().categories.begin(), ledger().categories.end(),
                      [](const LedgerCategory& c) { return c.group == CategoryGroup::income; });
    (void)decide(ZelleChoice::giftReceived);
    const LedgerCategory* made = ledger().categoryNamed("Gifts received");
    ASSERT_NE(made, nullptr);
    EXPECT_EQ(made->group, CategoryGroup::income);
    EXPECT_EQ(made->colorIndex, incomeBefore);
    const LedgerTransaction& filed = *ledger().transaction(payment);
    EXPECT_EQ(filed.kind, TransactionKind::income);
    EXPECT_EQ(filed.categoryID, made->id);
    EXPECT_EQ(filed.review, ReviewState::confirmed);

    (void)decide(ZelleChoice::giftReceived);
    EXPECT_EQ(categoriesNamed("Gifts received"), 1u) << "the second use finds the first one";
}

TEST_F(ClassifyZelleTest, AnExistingCategoryIsFoundIgnoringCaseButOnlyInItsGroup) {
    LedgerCategory lower{
        .id = Uuid::random(), .name = "gifts received", .group = CategoryGroup::income};
    ledger().categories.push_back(lower);
    (void)decide(ZelleChoice::giftReceived);
    EXPECT_EQ(ledger().transaction(payment)->categoryID, lower.id);
    EXPECT_EQ(categoriesNamed("Gifts received"), 1u);
}

TEST_F(ClassifyZelleTest, ACategoryOfTheOtherGroupDoesNotCount) {
    LedgerCategory wrongGroup{
        .id = Uuid::random(), .name = "Gifts received", .group = CategoryGroup::expense};
    ledger().categories.push_back(wrongGroup);
    (void)decide(ZelleChoice::giftReceived);
    EXPECT_NE(ledger().transaction(payment)->categoryID, wrongGroup.id);
    EXPECT_EQ(categoriesNamed("Gifts received"), 2u);
}

TEST_F(ClassifyZelleTest, DontCountFilesATransferAndMakesNoCategory) {
    const auto before = ledger().categories.size();
    (void)decide(ZelleChoice::dontCount);
    EXPECT_EQ(ledger().categories.size(), before);
    EXPECT_EQ(ledger().transaction(payment)->kind, TransactionKind::transfer);
    EXPECT_EQ(ledger().transaction(payment)->categoryID, std::nullopt);
}

TEST_F(ClassifyZelleTest, PayingMeBackIsARefundInTheChosenCategory) {
    const auto dining = builder.category("Dining");
    (void)decide(ZelleChoice::payingMeBack, dining);
    const LedgerTransaction& filed = *ledger().transaction(payment);
    EXPECT_EQ(filed.kind, TransactionKind::expense);
    EXPECT_EQ(filed.categoryID, dining);
    EXPECT_EQ(ledger().merchant(filed.merchantID)->name, "Jane Doe");
}

TEST_F(ClassifyZelleTest, UndoTakesBackTheFilingAndKeepsTheMadeCategory) {
    const LedgerTransaction before = *ledger().transaction(payment);
    (void)decide(ZelleChoice::payingEachOther);
    ASSERT_NE(ledger().categoryNamed("Paying each other"), nullptr);
    ASSERT_TRUE(undoLastChange(ledger()));
    EXPECT_EQ(*ledger().transaction(payment), before);
    EXPECT_NE(ledger().categoryNamed("Paying each other"), nullptr);
}

TEST_F(ClassifyZelleTest, CheckRefusesAChoiceNotOfferedAndACategoryOfTheOtherGroup) {
    const auto check = [&](ZelleChoice choice, std::optional<std::string> category) {
        const ZelleDecision decision{
            .ids = {payment},
            .choice = choice,
            .categoryID = category ? std::optional(builder.category(*category)) : std::nullopt};
        return testing::refusal([&] {
            checkZelleDecision(ledger(), decision);
            return 0;
        });
    };
    // The payment is money in.
    EXPECT_EQ(check(ZelleChoice::giftSent, std::nullopt), "Choose what this payment was for.");
    EXPECT_EQ(check(ZelleChoice::income, std::nullopt),
              "Choose a category that matches spending or income.");
    EXPECT_EQ(check(ZelleChoice::income, "Dining"),
              "Choose a category that matches spending or income.");
    EXPECT_EQ(check(ZelleChoice::income, "Salary"), "accepted");
    EXPECT_EQ(check(ZelleChoice::giftReceived, std::nullopt), "accepted")
        << "a choice with its own category asks for none";
}

}  // namespace
}  // namespace copperwick
