#include "core/import/layout_proposal.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace copperwick {
namespace {

using Rows = std::vector<std::vector<std::string>>;

const Rows kRows{{"Date", "Description", "Amount", "Status"},
                 {"03/02/2026", "CORNER SHOP", "-12.50", "Posted"},
                 {"03/15/2026", "PAYROLL", "1500.00", "Pending"}};

LayoutGuess amountGuess() {
    LayoutGuess guess;
    guess.headerRow = 1;
    guess.dateColumn = 1;
    guess.descriptionColumn = 2;
    guess.amountColumn = 3;
    return guess;
}

// A file of `credits` rows above zero and `debits` below, with `broken`
// rows whose amount can't be read.
std::string file(int credits, int debits, int broken = 0) {
    std::string text = "Date,Description,Amount\n";
    int day = 1;
    const auto line = [&](const std::string& amount) {
        text += "03/" + std::string(day < 10 ? "0" : "") + std::to_string(day) + "/2026,SHOP " +
                std::to_string(day) + "," + amount + "\n";
        ++day;
    };
    for (int i = 0; i < credits; ++i)
        line("5.00");
    for (int i = 0; i < debits; ++i)
        line("-5.00");
    for (int i = 0; i < broken; ++i)
        line("lots");
    return text;
}

LayoutCheck checked(const std::string& text) {
    const auto profile = LayoutProposal::makeProfile(
        amountGuess(), {{"Date", "Description", "Amount"}}, "custom-test");
    EXPECT_TRUE(profile);
    return LayoutProposal::check(*profile, "bank.csv", text);
}

TEST(LayoutProposal, MakeProfileRefusesGuessesThatDontFitTheRows) {
    auto guess = amountGuess();
    guess.headerRow = 9;
    EXPECT_FALSE(LayoutProposal::makeProfile(guess, Rows(8, kRows[1]), "custom-a"));

    guess = amountGuess();
    guess.amountColumn = 0;
    guess.moneyOutColumn = 3;
    guess.moneyInColumn = 3;
    EXPECT_FALSE(LayoutProposal::makeProfile(guess, kRows, "custom-a"));

    guess = amountGuess();
    guess.moneyOutColumn = 3;
    guess.moneyInColumn = 3;  // not looked at beside a good amount column
    EXPECT_TRUE(LayoutProposal::makeProfile(guess, kRows, "custom-a"));

    guess = amountGuess();
    guess.descriptionColumn = 3;  // the amount's column twice
    EXPECT_FALSE(LayoutProposal::makeProfile(guess, kRows, "custom-a"));

    guess = amountGuess();
    guess.dateColumn = 1;
    EXPECT_FALSE(LayoutProposal::makeProfile(
        guess, {{"Date", "Description", "Amount", "Date"}, kRows[1]}, "custom-a"))
        << "two date columns both headed Date can't be told apart";
    EXPECT_FALSE(
        LayoutProposal::makeProfile(guess, {{"Date", "Description"}, kRows[1]}, "custom-a"))
        << "fewer than three columns";
    EXPECT_FALSE(
        LayoutProposal::makeProfile(guess, {{"Date", " ", "Amount"}, kRows[1]}, "custom-a"))
        << "an unnamed description";
}

TEST(LayoutProposal, MakeProfileNamesAndFillsTheLayout) {
    auto guess = amountGuess();
    guess.statusColumn = 4;
    guess.postedDateColumn = 1;  // the date itself is no posted date
    guess.purchasesArePositive = true;
    guess.bankName = " unknown ";
    auto profile = LayoutProposal::makeProfile(guess, kRows, "custom-1");
    ASSERT_TRUE(profile);
    EXPECT_EQ(profile->name, "Bank file");
    EXPECT_EQ(profile->requiredHeaders,
              (std::vector<std::string>{"Date", "Description", "Amount", "Status"}));
    EXPECT_FALSE(profile->postedDateColumn);
    EXPECT_EQ(profile->statusColumn, "Status");
    EXPECT_EQ(profile->signConvention, SignConvention::positiveIsMoneyOut);
    EXPECT_EQ(profile->pendingValues, (std::vector<std::string>{"Pending", "Pend", "Authorized"}));
    EXPECT_FALSE(profile->dateLayout);  // found in the file with a header row

    guess.bankName = "UNKNOWN";
    EXPECT_EQ(LayoutProposal::makeProfile(guess, kRows, "custom-1")->name, "UNKNOWN");

    guess.headerRow = 0;
    profile = LayoutProposal::makeProfile(guess, {kRows[1], kRows[2]}, "custom-2");
    ASSERT_TRUE(profile);
    EXPECT_FALSE(profile->hasHeader);
    EXPECT_EQ(profile->headerlessColumns,
              (std::vector<std::string>{"Column 1", "Column 2", "Column 3", "Column 4"}));
    EXPECT_EQ(profile->dateColumn, "Column 1");
    EXPECT_EQ(profile->dateLayout, DateLayout::monthDayYear);  // fixed for the shape test
}

TEST(LayoutProposal, AccountTypeFromTheModelsWords) {
    EXPECT_EQ(LayoutProposal::accountType("Visa Credit"), AccountType::creditCard);
    EXPECT_EQ(LayoutProposal::accountType("High-yield SAVINGS"), AccountType::savings);
    EXPECT_EQ(LayoutProposal::accountType("debit account"), AccountType::checking);
    EXPECT_FALSE(LayoutProposal::accountType("brokerage"));
}

TEST(LayoutProposal, CheckReversesOnlyAFileThatIsMostlyMoneyIn) {
    EXPECT_FALSE(checked(file(4, 0)).flippedSigns) << "fewer than five rows decide nothing";
    const auto seven = checked(file(7, 3));
    EXPECT_TRUE(seven.flippedSigns);
    EXPECT_EQ(seven.profile.signConvention, SignConvention::positiveIsMoneyOut);
    EXPECT_EQ(seven.analysis.rows.at(0).amount, -500);
    EXPECT_EQ(seven.note,
              "Local AI set up this layout and Copperwick read 10 rows with it. Signs "
              "were reversed because almost every row came out as money in; check the preview.");
    EXPECT_FALSE(checked(file(6, 4)).flippedSigns);

    auto split = LayoutProposal::reversed(*LayoutProposal::makeProfile(
        [] {
            LayoutGuess guess = amountGuess();
            guess.amountColumn = 0;
            guess.moneyOutColumn = 3;
            guess.moneyInColumn = 4;
            return guess;
        }(),
        {{"Date", "Description", "Out", "In"}}, "custom-split"));
    EXPECT_EQ(split.debitColumn, "In");
    EXPECT_EQ(split.creditColumn, "Out");
}

TEST(LayoutProposal, CheckAllowsOneUnreadableRowInTen) {
    EXPECT_TRUE(checked(file(0, 9, 1)).accepted);
    const auto nine = checked(file(0, 9, 2));
    EXPECT_FALSE(nine.accepted);
    EXPECT_EQ(nine.note, "The suggested layout read 9 rows but couldn't read 2.");
    EXPECT_TRUE(checked(file(0, 20, 2)).accepted);
    EXPECT_FALSE(checked(file(0, 20, 3)).accepted);

    const auto none = checked("Date,Description,Amount\n03/02/2026,SHOP,lots\n");
    EXPECT_FALSE(none.accepted);
    EXPECT_EQ(none.note, "The suggested layout read 0 rows but couldn't read 1.");
}

TEST(LayoutProposal, CheckTellsWhyALayoutDidntWork) {
    const auto profile = LayoutProposal::makeProfile(
        amountGuess(), {{"Date", "Description", "Amount"}}, "custom-test");
    ASSERT_TRUE(profile);
    const auto other =
        LayoutProposal::check(*profile, "bank.csv", "When,What,How much\n03/02/2026,SHOP,-5.00\n");
    EXPECT_FALSE(other.accepted);
    ASSERT_TRUE(other.analysis.problem);
    EXPECT_EQ(other.note, "The suggested layout didn't work: " + *other.analysis.problem);
    EXPECT_FALSE(other.flippedSigns) << "a file with a problem is never read the other way";
}

TEST(LayoutProposal, SampleRowsSkipsBlankRecordsAndUnreadableBytes) {
    EXPECT_EQ(LayoutProposal::sampleRows("a;b;c\n;;\n\n1;2;3\n4;5;6\n", 2),
              (Rows{{"a", "b", "c"}, {"1", "2", "3"}}));
    EXPECT_TRUE(LayoutProposal::sampleRows("a,b,c\n\x81,2,3\n", 8).empty())
        << "neither UTF-8 nor Windows-1252";
    EXPECT_TRUE(LayoutProposal::sampleRows("", 8).empty());
}

}  // namespace
}  // namespace copperwick
