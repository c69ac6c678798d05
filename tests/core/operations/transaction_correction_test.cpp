#include "core/operations/transaction_correction.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "core/model/money.h"
#include "tests/support/ledger_builder.h"
#include "tests/support/refusal.h"

namespace copperwick {
namespace {

using testing::day;
using testing::refusal;

// Parts typed as CATEGORY=AMOUNT for a grocery run of $50.00.
class SplitPartsTest : public ::testing::Test {
  protected:
    SplitPartsTest() {
        builder.change(charge, [](LedgerTransaction& t) { t.kind = TransactionKind::expense; });
    }

    [[nodiscard]] std::vector<TransactionSplit> entered(const std::vector<std::string>& typed) {
        return splitPartsEntered(builder.ledger(), charge, typed);
    }

    // The parts as "category amount" lines, to compare in one go.
    [[nodiscard]] std::string describe(const std::vector<TransactionSplit>& parts) {
        std::string out;
        for (const auto& part : parts)
            out += builder.ledger().category(part.categoryID)->name + " " +
                   std::to_string(part.amount) + "\n";
        return out;
    }

    testing::LedgerBuilder builder;
    Uuid checking = builder.account("Checking");
    Uuid charge = builder.transaction(checking, "SAFEWAY #1482", -5000, day(2026, 3, 2));
    Instant now{800000000};
};

TEST_F(SplitPartsTest, TextThatIsntAPartIsRefusedInWordsThatQuoteIt) {
    const std::vector<std::string> malformed{
        "Groceries",         // no amount at all
        "Groceries=",        // an empty amount
        "=12",               // no category
        "Gardening=12",      // a category the ledger doesn't have
        "Groceries=12.345",  // more than two decimals
        "Groceries=twelve",
        "Groceries=900000000000.01",  // a cent past the largest amount
    };
    for (const auto& text : malformed) {
        EXPECT_EQ(refusal([&] {
                      return entered({"Shopping=10", text});
                  }),
                  "\u201C" + text +
                      "\u201D isn't a part: write CATEGORY=AMOUNT with a category of this ledger.")
            << text;
    }
    try {
        (void)entered({"Groceries"});
        ADD_FAILURE() << "accepted";
    } catch (const EntryError& error) {
        EXPECT_EQ(error.kind(), EntryError::Case::splits) << "a refusal about the split";
    }
}

TEST_F(SplitPartsTest, PositiveFiguresTakeTheSignOfMoneyOut) {
    EXPECT_EQ(describe(entered({"Groceries=30", "shopping = -20.00", "Health=$0.50"})),
              "Groceries -3000\nShopping -2000\nHealth -50\n")
        << "people type what they spent; a sign of their own stands";
    EXPECT_TRUE(entered({}).empty()) << "no parts asks for the split to go";

    builder.change(charge, [](LedgerTransaction& t) { t.amount = 5000; });
    EXPECT_EQ(describe(entered({"Groceries=30", "Shopping=-20"})),
              "Groceries 3000\nShopping -2000\n")
        << "money in keeps each figure as typed";
}

TEST_F(SplitPartsTest, TheLastEqualsSignEndsTheCategory) {
    builder.ledger().categories.push_back(
        LedgerCategory{.id = Uuid::random(), .name = "Kids=Fun", .group = CategoryGroup::expense});
    EXPECT_EQ(describe(entered({"Kids=Fun=12.50"})), "Kids=Fun -1250\n");
}

TEST_F(SplitPartsTest, ReadPartsStillHaveToMakeASplit) {
    const std::string splits = std::string(EntryError::text(EntryError::Case::splits));
    const auto split = [&](const std::vector<std::string>& typed) {
        return refusal(
            [&] { return splitTransaction(builder.ledger(), charge, entered(typed), now); });
    };
    EXPECT_EQ(split({"Groceries=30", "Shopping=20.01"}), splits) << "a cent over";
    EXPECT_EQ(split({"Groceries=30", "Shopping=19.99"}), splits) << "a cent short";
    EXPECT_EQ(split({"Groceries=50", "Shopping=0"}), splits) << "an empty part";
    EXPECT_EQ(split({"Groceries=50"}), splits) << "one part is no split";
    EXPECT_EQ(split({"Groceries=30", "Salary=20"}), splits) << "income isn't spending";
    EXPECT_FALSE(builder.ledger().transaction(charge)->splits);

    EXPECT_EQ(split({"Groceries=30", "Shopping=20"}), "accepted");
    EXPECT_EQ(builder.ledger().transaction(charge)->splits->size(), 2u);
}

// The largest amount reads exactly, and two of them add up past any amount
// a transaction can have: the sum is refused.
TEST_F(SplitPartsTest, PartsAtTheLargestAmountReadExactlyButCantAddUp) {
    builder.change(charge, [](LedgerTransaction& t) { t.amount = -Money::kLargestAmount; });
    const auto parts = entered({"Groceries=900000000000", "Shopping=900000000000"});
    ASSERT_EQ(parts.size(), 2u);
    EXPECT_EQ(parts[0].amount, -Money::kLargestAmount);
    EXPECT_EQ(refusal([&] { return splitTransaction(builder.ledger(), charge, parts, now); }),
              EntryError::text(EntryError::Case::splits));
}

TEST_F(SplitPartsTest, ATransactionThatIsGoneCantBeSplit) {
    EXPECT_EQ(refusal([&] { return splitPartsEntered(builder.ledger(), Uuid::random(), {}); }),
              EntryError::text(EntryError::Case::unavailable));
}

}  // namespace
}  // namespace copperwick
