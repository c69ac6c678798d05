#include "core/import/layout_teaching.h"

#include <set>

#include <gtest/gtest.h>

#include "core/import/builtin_profiles.h"
#include "core/import/import_analyzer.h"
#include "core/model/text.h"

namespace copperwick {
namespace {

FileAnalysis unrecognised(std::vector<std::string> headers, std::string fileName = "bank.csv") {
    FileAnalysis analysis;
    analysis.fileName = std::move(fileName);
    analysis.headers = std::move(headers);
    return analysis;
}

ImportProfile taught() {
    return ImportProfile{
        .id = "custom-0a1b2c3d",
        .name = "Credit union",
        .requiredHeaders = {"Posted", "Booked", "Payee", "Out", "In", "State"},
        .dateColumn = "Booked",
        .postedDateColumn = "Posted",
        .descriptionColumn = "Payee",
        .debitColumn = "Out",
        .creditColumn = "In",
        .signConvention = SignConvention::positiveIsMoneyOut,
        .statusColumn = "State",
        .cardholderColumn = "Payee",
    };
}

TEST(Preselect, GuessesEachColumnFromTheFirstHeaderWithOneOfItsWords) {
    const auto draft = preselect(
        unrecognised({" Trans DATE ", "", "Post Date", "Name", "Description", "Amount", "Status"}),
        std::nullopt);
    EXPECT_EQ(draft.dateColumn, "Trans DATE");  // trimmed, and matched ignoring case
    // "Name" is the weakest description word but the earlier header.
    EXPECT_EQ(draft.descriptionColumn, "Name");
    EXPECT_EQ(draft.amountColumn, "Amount");
    EXPECT_EQ(draft.statusColumn, "Status");
    EXPECT_EQ(draft.debitColumn, std::nullopt);
    EXPECT_EQ(draft.creditColumn, std::nullopt);
    EXPECT_EQ(draft.postedDateColumn, std::nullopt);
    EXPECT_FALSE(draft.splitMode);
    EXPECT_EQ(draft.accountType, AccountType::checking);
    EXPECT_EQ(draft.signConvention, SignConvention::positiveIsMoneyIn);
}

TEST(Preselect, SplitModeOnlyWhenThereIsNoAmountColumn) {
    {
        const auto draft =
            preselect(unrecognised({"Date", "Memo", "Withdrawal", "Deposit"}), std::nullopt);
        EXPECT_EQ(draft.debitColumn, "Withdrawal");
        EXPECT_EQ(draft.creditColumn, "Deposit");
        EXPECT_TRUE(draft.splitMode);
    }
    {
        // "Debit Amount" holds an amount word, so a single amount column was found.
        const auto draft = preselect(
            unrecognised({"Date", "Payee", "Debit Amount", "Credit Amount"}), std::nullopt);
        EXPECT_EQ(draft.amountColumn, "Debit Amount");
        EXPECT_EQ(draft.debitColumn, "Debit Amount");
        EXPECT_EQ(draft.creditColumn, "Credit Amount");
        EXPECT_FALSE(draft.splitMode);
    }
    {
        const auto draft = preselect(unrecognised({"Date", "Memo", "Debit"}), std::nullopt);
        EXPECT_FALSE(draft.splitMode);
    }
}

TEST(Preselect, EmptyNameTakesTheFileNameUpToTheFirstDot) {
    EXPECT_EQ(preselect(unrecognised({"Date"}, "joint.2024.csv"), std::nullopt).name, "joint");
    EXPECT_EQ(preselect(unrecognised({"Date"}, "export"), std::nullopt).name, "export");
    ImportProfile nameless = taught();
    nameless.name = "";
    const auto analysis =
        unrecognised({"Posted", "Booked", "Payee", "Out", "In", "State"}, "union.csv");
    EXPECT_EQ(preselect(analysis, nameless).name, "union");
}

TEST(Preselect, FittingTaughtLayoutIsTakenOverWhole) {
    const auto analysis = unrecognised({"Posted", " Booked ", "Payee", "Out", "In", "State"});
    const auto draft = preselect(analysis, taught());
    LayoutDraft expected{
        .name = "Credit union",
        .accountType = AccountType::checking,  // the layout had none
        .dateColumn = "Booked",
        .postedDateColumn = "Posted",
        .descriptionColumn = "Payee",
        .debitColumn = "Out",
        .creditColumn = "In",
        .statusColumn = "State",
        .cardholderColumn = "Payee",
        .splitMode = true,
        .signConvention = SignConvention::positiveIsMoneyOut,
    };
    EXPECT_EQ(draft, expected);

    // Without a proposal, the analysis's own layout is the starting point.
    FileAnalysis withProfile = analysis;
    ImportProfile card = taught();
    card.accountType = AccountType::creditCard;
    withProfile.profile = card;
    EXPECT_EQ(preselect(withProfile, std::nullopt).accountType, AccountType::creditCard);
}

TEST(Preselect, UnfitStartingLayoutFallsBackToGuessing) {
    const auto analysis = unrecognised({"Booked", "Payee", "Out", "In", "State", "Amount"});
    const auto guessed = preselect(analysis, std::nullopt);
    EXPECT_EQ(guessed.amountColumn, "Amount");
    EXPECT_EQ(guessed.name, "bank");

    ImportProfile builtIn = taught();
    builtIn.isBuiltIn = true;
    ImportProfile headerless = taught();
    headerless.hasHeader = false;
    ImportProfile missingDate = taught();
    missingDate.dateColumn = "Date";
    ImportProfile missingDescription = taught();
    missingDescription.descriptionColumn = "payee";  // offered headers match exactly
    for (const auto& proposal : {builtIn, headerless, missingDate, missingDescription})
        EXPECT_EQ(preselect(analysis, proposal), guessed) << proposal.descriptionColumn;

    // An unfit proposal is not passed over for the analysis's own layout.
    FileAnalysis withProfile = analysis;
    withProfile.profile = taught();
    EXPECT_EQ(preselect(withProfile, missingDate), guessed);
}

TEST(IsComplete, NeedsDateDescriptionAndWhereTheMoneyIs) {
    const LayoutDraft single{
        .dateColumn = "Date", .descriptionColumn = "Memo", .amountColumn = "Amount"};
    EXPECT_TRUE(isComplete(single));

    LayoutDraft draft = single;
    draft.dateColumn.reset();
    EXPECT_FALSE(isComplete(draft));
    draft = single;
    draft.descriptionColumn = "";
    EXPECT_FALSE(isComplete(draft));
    draft = single;
    draft.amountColumn.reset();
    EXPECT_FALSE(isComplete(draft));

    draft = single;
    draft.splitMode = true;  // the amount column no longer counts
    EXPECT_FALSE(isComplete(draft));
    draft.debitColumn = "Out";
    EXPECT_FALSE(isComplete(draft));
    draft.creditColumn = "In";
    EXPECT_TRUE(isComplete(draft));
}

TEST(BuildProfile, SingleAmountDraftGivesExactlyTheseFields) {
    const LayoutDraft draft{
        .name = "  Joint account \t",
        .accountType = AccountType::savings,
        .dateColumn = "Date",
        .postedDateColumn = "",
        .descriptionColumn = "Memo",
        .amountColumn = "Amount",
        .debitColumn = "Out",
        .creditColumn = "In",
        .cardNumberColumn = "Card",
        .signConvention = SignConvention::positiveIsMoneyOut,
    };
    const auto profile =
        buildProfile(draft, {" Date", "Memo ", "", "  ", "Amount", "Out", "In", "Card"});
    const ImportProfile expected{
        .id = profile.id,
        .name = "Joint account",
        .accountType = AccountType::savings,
        .hasHeader = true,
        .requiredHeaders = {"Date", "Memo", "Amount", "Out", "In", "Card"},
        .dateColumn = "Date",
        .descriptionColumn = "Memo",
        .amountColumn = "Amount",
        .signConvention = SignConvention::positiveIsMoneyOut,
        .cardNumberColumn = "Card",
        .isBuiltIn = false,
    };
    EXPECT_EQ(profile, expected);
}

TEST(BuildProfile, SplitModeKeepsOnlyTheSplitColumns) {
    const LayoutDraft draft{.dateColumn = "Date",
                            .postedDateColumn = "Posted",
                            .descriptionColumn = "Memo",
                            .amountColumn = "Amount",
                            .debitColumn = "Out",
                            .creditColumn = "In",
                            .statusColumn = "State",
                            .cardholderColumn = "Who",
                            .splitMode = true};
    const auto profile = buildProfile(draft, {"Date", "Posted", "Memo", "Out", "In", "State"});
    EXPECT_EQ(profile.amountColumn, std::nullopt);
    EXPECT_EQ(profile.debitColumn, "Out");
    EXPECT_EQ(profile.creditColumn, "In");
    EXPECT_EQ(profile.postedDateColumn, "Posted");
    EXPECT_EQ(profile.statusColumn, "State");
    EXPECT_EQ(profile.pendingValues, (std::vector<std::string>{"Pending", "Pend", "P"}));
    EXPECT_EQ(profile.cardholderColumn, "Who");
}

TEST(BuildProfile, BlankNameBecomesMyBank) {
    const LayoutDraft draft{
        .name = "   ", .dateColumn = "Date", .descriptionColumn = "Memo", .amountColumn = "A"};
    EXPECT_EQ(buildProfile(draft, {"Date", "Memo", "A"}).name, "My bank");
}

TEST(BuildProfile, EachLayoutGetsANewShortLowercaseId) {
    const LayoutDraft draft{.dateColumn = "Date", .descriptionColumn = "Memo"};
    std::set<std::string> ids;
    for (int i = 0; i < 20; ++i) {
        const auto id = buildProfile(draft, {}).id;
        ASSERT_EQ(id.size(), 15u) << id;
        EXPECT_EQ(id.substr(0, 7), "custom-");
        EXPECT_EQ(id.find_first_not_of("0123456789abcdef", 7), std::string::npos) << id;
        ids.insert(id);
    }
    EXPECT_EQ(ids.size(), 20u);
}

TEST(PreviewText, CountsRowsAndIssues) {
    EXPECT_EQ(previewText(42, 3),
              "42 rows read, 3 couldn't be read. Purchases should show as money out.");
}

TEST(TeachingALayout, TheSameBanksNextFileIsRecognisedAndRead) {
    const std::string data =
        "Booking Date,Payee,Withdrawal,Deposit,Status\n"
        "03/04/2024,CORNER SHOP,12.50,,Done\n"
        "03/05/2024,SALARY,,2000.00,Pending\n";
    const auto first = ImportAnalyzer::analyze("union.csv", data, builtInProfiles(), false);
    ASSERT_FALSE(first.profile.has_value());

    const LayoutDraft draft = preselect(first, std::nullopt);
    ASSERT_TRUE(isComplete(draft));
    Ledger ledger;
    ledger.profiles.push_back(buildProfile(draft, first.headers));

    const auto again = ImportAnalyzer::analyze("union-may.csv", data, allProfiles(ledger), false);
    ASSERT_TRUE(again.profile.has_value());
    EXPECT_EQ(again.profile->id, ledger.profiles[0].id);
    EXPECT_EQ(again.profile->name, "union");
    ASSERT_EQ(again.rows.size(), 2u);
    EXPECT_EQ(again.rows[0].amount, -1250);
    EXPECT_EQ(again.rows[0].status, TransactionStatus::posted);
    EXPECT_EQ(again.rows[1].amount, 200000);
    EXPECT_EQ(again.rows[1].status, TransactionStatus::pending);
}

// A decimal-comma file whose columns were chosen by hand was saved as a
// decimal-point layout, and then none of its amounts could be read.
TEST(TeachingALayout, KeepsTheFilesNumberStyleAndSignMarkers) {
    // Every day under 13, so the order of the dates can't be worked out.
    const std::string data =
        "Date;Memo;Amount;S/H\n"
        "03.04.2024;CORNER SHOP;1.012,50;S\n"
        "05.04.2024;SALARY;2.000,00;H\n";
    const auto first = ImportAnalyzer::analyze("kasse.csv", data, builtInProfiles(), false);
    ASSERT_FALSE(first.profile.has_value());
    const LayoutDraft draft = preselect(first, std::nullopt);
    EXPECT_EQ(draft.numberStyle, NumberStyle::decimalComma);
    ASSERT_TRUE(isComplete(draft));
    const auto profile = buildProfile(draft, first.headers);
    EXPECT_EQ(profile.numberStyle, NumberStyle::decimalComma);
    const auto read = ImportAnalyzer::analyze("kasse.csv", data, profile, false);
    ASSERT_EQ(read.rows.size(), 2u);
    EXPECT_EQ(read.rows[0].amount, 101250);  // no marker taught by hand: the amount's own sign

    // A proposed layout taken over keeps its style and its marker column.
    ImportProfile proposed = profile;
    proposed.signMarkerColumn = "S/H";
    proposed.moneyOutMarkers = std::vector<std::string>{"S"};
    const auto kept = buildProfile(preselect(first, proposed), first.headers);
    EXPECT_EQ(kept.numberStyle, NumberStyle::decimalComma);
    EXPECT_EQ(kept.signMarkerColumn, "S/H");
    const auto marked = ImportAnalyzer::analyze("kasse.csv", data, kept, false);
    ASSERT_EQ(marked.rows.size(), 2u);
    EXPECT_EQ(marked.rows[0].amount, -101250);
    EXPECT_EQ(marked.rows[1].amount, 200000);
}

}  // namespace
}  // namespace copperwick
