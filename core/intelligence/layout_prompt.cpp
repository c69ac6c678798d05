#include "core/intelligence/layout_prompt.h"

#include "core/intelligence/suggestion_check.h"
#include "core/model/text.h"

namespace copperwick::LayoutProposal {

namespace {

// Enough of a field to tell a date, an amount or a name, and no more of
// the file than that.
constexpr std::size_t kFieldCharacters = 60;

}  // namespace

std::string promptText(const std::vector<std::vector<std::string>>& rows) {
    std::string text;
    for (std::size_t row = 0; row < rows.size(); ++row) {
        if (row > 0)
            text += '\n';
        text += "Row " + std::to_string(row + 1) + ": ";
        for (std::size_t column = 0; column < rows[row].size(); ++column) {
            if (column > 0)
                text += " | ";
            text += "[" + std::to_string(column + 1) + "] " +
                    text::firstCharacters(SuggestionCheck::redactDigits(rows[row][column]),
                                          kFieldCharacters);
        }
    }
    return text;
}

std::string question(const std::vector<std::vector<std::string>>& rows) {
    return "First rows of the file:\n" + promptText(rows) + "\n\nWhich column holds what?";
}

}  // namespace copperwick::LayoutProposal
