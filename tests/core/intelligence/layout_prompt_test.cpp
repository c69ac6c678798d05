#include "core/intelligence/layout_prompt.h"

#include <gtest/gtest.h>

#include "core/import/layout_proposal.h"

namespace copperwick {
namespace {

TEST(LayoutPrompt, NumbersRowsAndColumnsAndMasksAccountNumbers) {
    const auto rows = LayoutProposal::sampleRows(
        "Account 4417123412341234,,\n"
        ",,\n"
        "Date,Description,Amount\n"
        "03/02/2026,\"CORNER SHOP, #12\",-12.50\n",
        8);
    EXPECT_EQ(LayoutProposal::question(rows),
              "First rows of the file:\n"
              "Row 1: [1] Account ################ | [2]  | [3] \n"
              "Row 2: [1] Date | [2] Description | [3] Amount\n"
              "Row 3: [1] 03/02/2026 | [2] CORNER SHOP, #12 | [3] -12.50\n"
              "\n"
              "Which column holds what?")
        << "a row of empty fields is no row";
}

TEST(LayoutPrompt, FieldsAreCutToSixtyCharacters) {
    const std::string accented = "e\u0301";  // one character, two code points
    std::string longField;
    for (int i = 0; i < 70; ++i)
        longField += accented;
    std::string expected;
    for (int i = 0; i < 60; ++i)
        expected += accented;
    EXPECT_EQ(LayoutProposal::promptText({{longField, std::string(61, 'x')}}),
              "Row 1: [1] " + expected + " | [2] " + std::string(60, 'x'));
    EXPECT_EQ(LayoutProposal::promptText({{"1234567890" + std::string(60, 'y')}}),
              "Row 1: [1] ##########" + std::string(50, 'y'))
        << "masked before it is cut";
    EXPECT_EQ(LayoutProposal::promptText({}), "");
}

}  // namespace
}  // namespace copperwick
