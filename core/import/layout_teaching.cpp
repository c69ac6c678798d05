#include "core/import/layout_teaching.h"

#include <algorithm>
#include <array>
#include <span>

#include "core/import/layout_guesser.h"
#include "core/model/text.h"
#include "core/model/uuid.h"

namespace copperwick {

namespace {

constexpr std::array<std::string_view, 1> kDateWords{"date"};
constexpr std::array<std::string_view, 5> kDescriptionWords{"description", "memo", "payee",
                                                            "merchant", "name"};
constexpr std::array<std::string_view, 1> kAmountWords{"amount"};
constexpr std::array<std::string_view, 2> kMoneyOutWords{"debit", "withdrawal"};
constexpr std::array<std::string_view, 2> kMoneyInWords{"credit", "deposit"};
constexpr std::array<std::string_view, 1> kStatusWords{"status"};

constexpr std::array<std::string_view, 3> kPendingValues{"Pending", "Pend", "P"};

bool chosen(const std::optional<std::string>& column) {
    return column && !column->empty();
}

std::optional<std::string> chosenOrNone(const std::optional<std::string>& column) {
    return chosen(column) ? column : std::nullopt;
}

bool contains(const std::vector<std::string>& headers, std::string_view name) {
    return std::find(headers.begin(), headers.end(), name) != headers.end();
}

// The first header holding any of the words: a header early in the file beats
// a better word later on, because banks put the main columns first.
std::optional<std::string> firstHeaderWith(const std::vector<std::string>& headers,
                                           std::span<const std::string_view> words) {
    for (const auto& header : headers) {
        const std::string lower = text::lowercased(header);
        for (const auto word : words) {
            if (lower.find(word) != std::string::npos)
                return header;
        }
    }
    return std::nullopt;
}

// Only a taught layout with a header row that names columns this file has can
// seed the form; a built-in one would be recognised without asking.
bool fitsForm(const ImportProfile& profile, const std::vector<std::string>& offered) {
    return profile.hasHeader && !profile.isBuiltIn && contains(offered, profile.dateColumn) &&
           contains(offered, profile.descriptionColumn);
}

LayoutDraft takenOver(const ImportProfile& profile) {
    LayoutDraft draft;
    draft.name = profile.name;
    draft.accountType = profile.accountType.value_or(AccountType::checking);
    draft.dateColumn = profile.dateColumn;
    draft.postedDateColumn = profile.postedDateColumn;
    draft.descriptionColumn = profile.descriptionColumn;
    draft.amountColumn = profile.amountColumn;
    draft.debitColumn = profile.debitColumn;
    draft.creditColumn = profile.creditColumn;
    draft.statusColumn = profile.statusColumn;
    draft.cardNumberColumn = profile.cardNumberColumn;
    draft.cardholderColumn = profile.cardholderColumn;
    draft.signConvention = profile.signConvention;
    draft.splitMode = profile.debitColumn.has_value() && profile.creditColumn.has_value();
    draft.numberStyle = profile.numberStyle.value_or(NumberStyle::decimalPoint);
    draft.signMarkerColumn = profile.signMarkerColumn;
    draft.moneyOutMarkers = profile.moneyOutMarkers;
    return draft;
}

// The style of the money columns the draft names, read from the sample rows
// under the header row.
NumberStyle sampledStyle(const FileAnalysis& analysis, const LayoutDraft& draft) {
    const NumberStyle undecided =
        analysis.delimiter == ";" ? NumberStyle::decimalComma : NumberStyle::decimalPoint;
    if (analysis.sampleRecords.empty())
        return undecided;
    const auto& header = analysis.sampleRecords.front();
    std::vector<std::string_view> values;
    for (const auto& column : {draft.amountColumn, draft.debitColumn, draft.creditColumn}) {
        if (!chosen(column))
            continue;
        for (std::size_t i = 0; i < header.size(); ++i) {
            if (text::trimmed(header[i]) != *column)
                continue;
            for (std::size_t row = 1; row < analysis.sampleRecords.size(); ++row) {
                const auto& fields = analysis.sampleRecords[row];
                if (i < fields.size() && !text::trimmed(fields[i]).empty())
                    values.push_back(text::trimmed(fields[i]));
            }
            break;
        }
    }
    return LayoutGuesser::numberStyle(values, undecided);
}

LayoutDraft guessed(const std::vector<std::string>& offered) {
    LayoutDraft draft;
    draft.dateColumn = firstHeaderWith(offered, kDateWords);
    draft.descriptionColumn = firstHeaderWith(offered, kDescriptionWords);
    draft.amountColumn = firstHeaderWith(offered, kAmountWords);
    draft.debitColumn = firstHeaderWith(offered, kMoneyOutWords);
    draft.creditColumn = firstHeaderWith(offered, kMoneyInWords);
    draft.statusColumn = firstHeaderWith(offered, kStatusWords);
    draft.splitMode = !draft.amountColumn && draft.debitColumn && draft.creditColumn;
    return draft;
}

std::vector<std::string> trimmedNonEmpty(const std::vector<std::string>& headers) {
    std::vector<std::string> names;
    for (const auto& header : headers) {
        const auto name = text::trimmed(header);
        if (!name.empty())
            names.emplace_back(name);
    }
    return names;
}

}  // namespace

std::vector<std::string> offeredHeaders(const FileAnalysis& analysis) {
    return trimmedNonEmpty(analysis.headers);
}

LayoutDraft preselect(const FileAnalysis& analysis, const std::optional<ImportProfile>& proposed) {
    const auto offered = offeredHeaders(analysis);
    const auto& start = proposed ? proposed : analysis.profile;
    const bool takeOver = start && fitsForm(*start, offered);
    LayoutDraft draft = takeOver ? takenOver(*start) : guessed(offered);
    if (!takeOver)
        draft.numberStyle = sampledStyle(analysis, draft);
    if (draft.name.empty()) {
        const std::string_view fileName = analysis.fileName;
        draft.name = std::string(fileName.substr(0, fileName.find('.')));
    }
    return draft;
}

bool isComplete(const LayoutDraft& draft) {
    if (!chosen(draft.dateColumn) || !chosen(draft.descriptionColumn))
        return false;
    if (draft.splitMode)
        return chosen(draft.debitColumn) && chosen(draft.creditColumn);
    return chosen(draft.amountColumn);
}

ImportProfile buildProfile(const LayoutDraft& draft, const std::vector<std::string>& headers) {
    ImportProfile profile;
    profile.id = "custom-" + text::lowercased(Uuid::random().text().substr(0, 8));
    const auto name = text::trimmed(draft.name);
    profile.name = name.empty() ? "My bank" : std::string(name);
    profile.accountType = draft.accountType;
    profile.hasHeader = true;
    profile.requiredHeaders = trimmedNonEmpty(headers);
    profile.headerlessShape = HeaderlessShape::none;
    profile.dateColumn = draft.dateColumn.value_or("");
    profile.postedDateColumn = chosenOrNone(draft.postedDateColumn);
    profile.descriptionColumn = draft.descriptionColumn.value_or("");
    if (draft.splitMode) {
        profile.debitColumn = chosenOrNone(draft.debitColumn);
        profile.creditColumn = chosenOrNone(draft.creditColumn);
    } else {
        profile.amountColumn = chosenOrNone(draft.amountColumn);
    }
    profile.signConvention = draft.signConvention;
    if (chosen(draft.statusColumn)) {
        profile.statusColumn = draft.statusColumn;
        profile.pendingValues.assign(kPendingValues.begin(), kPendingValues.end());
    }
    profile.cardNumberColumn = chosenOrNone(draft.cardNumberColumn);
    profile.cardholderColumn = chosenOrNone(draft.cardholderColumn);
    profile.isBuiltIn = false;
    if (draft.numberStyle == NumberStyle::decimalComma)
        profile.numberStyle = draft.numberStyle;
    // A marker only goes with the amount column it was found beside.
    if (!draft.splitMode && draft.signMarkerColumn && draft.moneyOutMarkers &&
        contains(profile.requiredHeaders, *draft.signMarkerColumn) &&
        draft.signMarkerColumn != profile.amountColumn) {
        profile.signMarkerColumn = draft.signMarkerColumn;
        profile.moneyOutMarkers = draft.moneyOutMarkers;
    }
    return profile;
}

std::string previewText(int rows, int issues) {
    return std::to_string(rows) + " rows read, " + std::to_string(issues) +
           " couldn't be read. Purchases should show as money out.";
}

}  // namespace copperwick
