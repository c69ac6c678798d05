#pragma once

// Files that hold several statements: an OFX download of a card's monthly
// cycles, a bank's OFX of three accounts, a CAMT.053 file of two statements.
// The import reads one statement per analysis, each to its own account, so
// such a file is first cut into one text per statement, each readable as a
// file of its own and with its own hash. Pure; any thread.

#include <string>
#include <string_view>
#include <vector>

namespace copperwick {

// One statement of a file: the words that tell it from the others, and its
// text as bytes of a file of one statement.
struct StatementPart {
    std::string label;
    std::string data;

    friend bool operator==(const StatementPart&, const StatementPart&) = default;
};

namespace StatementFiles {

// The statements of a file of several, in file order. Empty for a file of
// one statement and for anything that isn't a statement file: the file is
// then read as it stands.
[[nodiscard]] std::vector<StatementPart> split(std::string_view fileName, std::string_view data);
// Words that tell each statement of a file from the others, from what names
// its account ("card ending 1234", or "" when nothing does): those words
// alone where no other statement shares them, otherwise with the
// statement's place in the file ("card ending 1234, statement 3 of 17").
[[nodiscard]] std::vector<std::string> labels(const std::vector<std::string>& accounts);
// "Activity.ofx · card ending 1234": the name a statement is shown and
// recorded under.
[[nodiscard]] std::string partName(std::string_view fileName, std::string_view label);

}  // namespace StatementFiles

}  // namespace copperwick
