#pragma once

// Turning a reading of "which column holds what" into a layout, and checking
// that layout against the file before anyone relies on it. The reading, a
// LayoutGuess, may come from anywhere: the file's own shape or a language
// model. It is never trusted: makeProfile builds the layout by strict rules
// and check reads the whole file with it, accepting it only when the file
// then reads cleanly. Pure functions over values, safe on any thread.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/import/file_analysis.h"
#include "core/model/date_layout.h"
#include "core/model/import_profile.h"
#include "core/model/ledger_enums.h"
#include "core/model/money.h"

namespace copperwick {

// Which column holds what. Rows and columns count from 1 as a person sees
// them; 0 means the file lacks the thing.
struct LayoutGuess {
    int headerRow = 0;
    int dateColumn = 0;
    int descriptionColumn = 0;
    int amountColumn = 0;
    int moneyOutColumn = 0;
    int moneyInColumn = 0;
    int postedDateColumn = 0;
    int statusColumn = 0;
    // Purchases are positive numbers in the amount column.
    bool purchasesArePositive = false;
    std::string bankName = "unknown";
    std::optional<AccountType> accountType;
    // How the amounts are written.
    NumberStyle numberStyle = NumberStyle::decimalPoint;
    // A column of markers saying which way an unsigned amount went, and the
    // markers of money out; 0 and none when the amount carries its sign.
    int signMarkerColumn = 0;
    std::vector<std::string> moneyOutMarkers;
    // A column of ISO currency codes, 0 when there is none, and the whole
    // file's currency when a header names it ("Betrag (EUR)").
    int currencyColumn = 0;
    std::optional<std::string> currency;
    // A date order settled by the file, kept with the layout so that a later
    // file whose dates happen to read either way is read the same way.
    std::optional<DateLayout> dateLayout;

    friend bool operator==(const LayoutGuess&, const LayoutGuess&) = default;
};

// The file read with a proposed layout, and whether that reading is good
// enough to use.
struct LayoutCheck {
    ImportProfile profile;
    FileAnalysis analysis;
    bool accepted = false;
    bool flippedSigns = false;
    std::string note;  // shown to the person
};

namespace LayoutProposal {

// The fields of the first `maxRows` records that have any content; empty
// when the bytes aren't readable text.
[[nodiscard]] std::vector<std::vector<std::string>> sampleRows(std::string_view data,
                                                               std::size_t maxRows);

// "credit" or "card" is a card, "saving" savings, "check" or "debit" checking.
[[nodiscard]] std::optional<AccountType> accountType(std::string_view text);

// The layout `guess` describes for a file whose first rows are `rows`, or
// absent when the guess doesn't fit them: a header row past the rows, fewer
// than three columns, columns out of range or used twice, or a used column
// whose name is empty or repeated.
[[nodiscard]] std::optional<ImportProfile> makeProfile(
    const LayoutGuess& guess, const std::vector<std::vector<std::string>>& rows,
    const std::string& id);

// Reads the file with `profile` alone. A reading that comes out mostly money
// in is taken to have its signs the wrong way round and is read again
// reversed, unless a marker column names each row's direction. Accepted when the file has no
// problem, at least one row was read and at most one row in ten (one below ten rows) couldn't be.
[[nodiscard]] LayoutCheck check(const ImportProfile& profile, std::string_view fileName,
                                std::string_view data);

// At least five rows, and at least 70% of them above zero.
[[nodiscard]] bool mostlyMoneyIn(const std::vector<ParsedRow>& rows);

// The same layout with its signs the other way: the other sign convention
// for one amount column, the money-out and money-in columns swapped. A layout
// whose signs come from a marker column is returned as it is: the markers
// name the direction, so there is nothing to reverse.
[[nodiscard]] ImportProfile reversed(ImportProfile profile);

}  // namespace LayoutProposal

}  // namespace copperwick
