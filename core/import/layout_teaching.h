#pragma once

// The logic of the mapping form, where a person tells Copperwick which column
// of an unrecognised file holds what. The form itself is the screen's; here
// are its starting choices, when it may be saved, and the layout it saves.
//
// Pure functions over values, safe on any thread. A taught layout is then
// recognised by the file's whole header row, so the same bank's next file is
// read without asking.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/import/file_analysis.h"
#include "core/model/import_profile.h"
#include "core/model/ledger_enums.h"

namespace copperwick {

inline constexpr std::string_view kLayoutFormIntro =
    "Tell Copperwick which column holds what. It remembers this layout for next time.";
inline constexpr std::string_view kLayoutFormHeaderNote =
    "The first row of the file must be the column names.";

// What the form holds while the person fills it in. A column choice is one of
// the offered headers, or absent when left empty.
struct LayoutDraft {
    std::string name;
    AccountType accountType = AccountType::checking;
    std::optional<std::string> dateColumn;
    std::optional<std::string> postedDateColumn;
    std::optional<std::string> descriptionColumn;
    std::optional<std::string> amountColumn;
    std::optional<std::string> debitColumn;   // money out
    std::optional<std::string> creditColumn;  // money in
    std::optional<std::string> statusColumn;
    std::optional<std::string> cardNumberColumn;
    std::optional<std::string> cardholderColumn;
    // Separate money-out and money-in columns instead of one signed amount.
    bool splitMode = false;
    SignConvention signConvention = SignConvention::positiveIsMoneyIn;
    // Not chosen in the form but kept from the file: how it writes amounts,
    // and a marker column naming which way each amount went.
    NumberStyle numberStyle = NumberStyle::decimalPoint;
    std::optional<std::string> signMarkerColumn;
    std::optional<std::vector<std::string>> moneyOutMarkers;

    friend bool operator==(const LayoutDraft&, const LayoutDraft&) = default;
};

// The columns the form offers: the analysis's headers, trimmed, without
// empty ones, in file order.
[[nodiscard]] std::vector<std::string> offeredHeaders(const FileAnalysis& analysis);

// The form's starting choices. `proposed` is a layout suggested for this file,
// tried before the analysis's own; a taught layout that fits the file is taken
// over whole, otherwise columns are guessed from their header words and the
// number style from the sample rows' money (a semicolon file's decimal comma
// where they read alike either way).
[[nodiscard]] LayoutDraft preselect(const FileAnalysis& analysis,
                                    const std::optional<ImportProfile>& proposed);

// Whether the draft names a date, a description and where the money is.
[[nodiscard]] bool isComplete(const LayoutDraft& draft);

// The layout the form saves. `headers` is the file's header row; all of its
// non-empty names become required, so only this bank's files match it. Each
// call gives a new id.
[[nodiscard]] ImportProfile buildProfile(const LayoutDraft& draft,
                                         const std::vector<std::string>& headers);

// The line under the form's preview of the file read with the draft.
[[nodiscard]] std::string previewText(int rows, int issues);

}  // namespace copperwick
