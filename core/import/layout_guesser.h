#pragma once

// Working out the layout of a CSV file that no built-in or taught layout
// fits, from the file alone: which row names the columns (if any), which
// column holds the date and in which order, the description, the money in one
// signed column or in money-out and money-in columns, and which way the signs
// run. What it works out is only a LayoutGuess; LayoutProposal turns it into a
// layout and reads the whole file with it before anything relies on it.
// Pure functions over values, safe on any thread.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/import/layout_proposal.h"
#include "core/model/import_profile.h"

namespace copperwick::LayoutGuesser {

// Either a guess, or the plain sentences that say what couldn't be found.
struct Outcome {
    std::optional<LayoutGuess> guess;
    std::vector<std::string> gaps;
};

// From the first rows with content, as LayoutProposal::sampleRows gives
// them. The date order must be the only one that reads every date of the
// column, and one row is never enough to decide it, unless the months are
// written as names. The number style is the one that reads more of the
// amount column's values (both money columns' when they are split);
// `undecided` stands where they read alike either way.
[[nodiscard]] Outcome guess(const std::vector<std::vector<std::string>>& rows,
                            NumberStyle undecided = NumberStyle::decimalPoint);

// What became of a file: the checked layout when one was worked out and the
// file reads cleanly with it, otherwise why not.
struct WorkedOut {
    std::optional<LayoutCheck> check;
    std::vector<std::string> gaps;
};

// Which number style reads more of `values` (see guess); `undecided` when
// both read as many.
[[nodiscard]] NumberStyle numberStyle(const std::vector<std::string_view>& values,
                                      NumberStyle undecided);

// Guesses from the file's first rows, builds the layout under an id that
// follows from the guess, and keeps it only when LayoutProposal::check
// accepts it. `fileName` names the layout when the file says nothing better.
[[nodiscard]] WorkedOut workOut(std::string_view fileName, std::string_view data);

// "Layout worked out from the file: date in “Date”, description in
// “Payee”, amount in “Amount”." The line a person reads before anything
// read with that layout is saved. It ends ", amounts with decimal commas"
// for a file that writes them so, and names a marker column of money out.
[[nodiscard]] std::string workedOutLine(const ImportProfile& profile);

// What to do when no layout could be worked out.
inline constexpr std::string_view kChooseColumns =
    "Choose which columns hold the date, description and amount on the Import screen.";

}  // namespace copperwick::LayoutGuesser
