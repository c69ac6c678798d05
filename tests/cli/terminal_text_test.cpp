#include "cli/terminal_text.h"

#include <gtest/gtest.h>
#include <boost/json.hpp>

#include "tests/support/run_command.h"
#include "tests/support/temp_folder.h"

namespace copperwick::cli {
namespace {

using testing::TempFolder;

TEST(TerminalSafe, ShowsEveryControlCharacterAndBadByteVisibly) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"PLAIN TEXT 42", "PLAIN TEXT 42"},
        {"tab\tand\nline feed", "tab\tand\nline feed"},
        {"Caf\u00e9 \u00b7 \u20ac 5 \U0001F355", "Caf\u00e9 \u00b7 \u20ac 5 \U0001F355"},
        {"\x1b[2J\x1b]0;title\x07", "\\x1b[2J\\x1b]0;title\\x07"},
        {"back\rover", "back\\x0dover"},
        {std::string("nul\0byte", 8), "nul\\x00byte"},
        {"del\x7f", "del\\x7f"},
        {"c1 \u009b31m \u0085", "c1 \\u009b31m \\u0085"},
        {"bad \xff\xfe end \xe2\x82", "bad \uFFFD\uFFFD end \uFFFD"},
    };
    for (const auto& [text, shown] : cases)
        EXPECT_EQ(terminalSafe(text), shown) << text;
}

TEST(TerminalSafeBuffer, KeepsACharacterWrittenInTwoPiecesWhole) {
    std::ostringstream target;
    {
        TerminalSafeBuffer buffer(target);
        std::ostream stream(&buffer);
        stream << "Caf\xc3";
        stream << "\xa9 \x1b";
        stream << "[0m\n";
    }
    EXPECT_EQ(target.str(), "Caf\u00e9 \\x1b[0m\n");
}

// Escape sequences in bank text were printed raw by `transactions`, `review`
// and the other text output, so a bank file could rewrite the terminal.
TEST(TerminalSafe, BankTextWithEscapesIsShownSafelyInTextAndKeptInJSON) {
    TempFolder temp;
    const std::string data = (temp / "data").string();
    const auto file = temp / "statement.csv";
    const std::string hostile = "SHOP \x1b]0;owned\x07\x1b[2J\u009b";
    testing::writeFile(file,
                       "Details,Posting Date,Description,Amount,Type,Balance,Check or Slip #\n"
                       "DEBIT,03/09/2026,\"" +
                           hostile + "\",-45.12,DEBIT_CARD,1254.88,\n");
    ASSERT_EQ(testing::runCommand({"--data-dir", data, "import", file.string()}).code, 0);

    const std::string shown = "SHOP \\x1b]0;owned\\x07\\x1b[2J\\u009b";
    for (const std::vector<std::string>& command : {std::vector<std::string>{"transactions"},
                                                    {"review"},
                                                    {"merchants"},
                                                    {"import", "--dry-run", file.string()},
                                                    {"analyze", file.string()},
                                                    {"text", hostile}}) {
        auto arguments = command;
        arguments.insert(arguments.begin(), {"--data-dir", data});
        const auto result = testing::runCommand(arguments);
        EXPECT_EQ(result.out.find('\x1b'), std::string::npos) << command[0] << ": " << result.out;
        EXPECT_EQ(result.out.find("\u009b"), std::string::npos) << command[0];
        if (command[0] != "merchants" && command[0] != "text") {
            EXPECT_NE(result.out.find(shown), std::string::npos)
                << command[0] << ": " << result.out;
        }
    }

    const auto json = testing::runCommand({"--data-dir", data, "--json", "transactions"});
    ASSERT_EQ(json.code, 0) << json.err;
    const auto lines = boost::json::parse(json.out).as_array();
    EXPECT_EQ(lines.at(0).at("rawDescription").as_string(), hostile);
}

}  // namespace
}  // namespace copperwick::cli
