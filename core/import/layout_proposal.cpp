#include "core/import/layout_proposal.h"

#include <algorithm>
#include <variant>

#include "core/import/csv_reader.h"
#include "core/import/import_analyzer.h"
#include "core/model/date_layout.h"
#include "core/model/text.h"

namespace copperwick::LayoutProposal {

namespace {

bool inRange(int column, std::size_t width) {
    return column >= 1 && static_cast<std::size_t>(column) <= width;
}

}  // namespace

std::vector<std::vector<std::string>> sampleRows(std::string_view data, std::size_t maxRows) {
    std::vector<std::vector<std::string>> rows;
    const auto decoded = CSVReader::decodeBorrowing(data);
    if (!std::holds_alternative<DecodedText>(decoded))
        return rows;
    const std::string_view text = std::get<DecodedText>(decoded).view();
    CSVRecordStream stream(text, CSVReader::detectDelimiter(text));
    CSVRecord record;
    while (rows.size() < maxRows && stream.next(record)) {
        if (!record.isBlank())
            rows.push_back(record.fields);
    }
    return rows;
}

std::optional<AccountType> accountType(std::string_view text) {
    const std::string lower = text::lowercased(text);
    const auto has = [&](std::string_view word) { return lower.find(word) != std::string::npos; };
    if (has("credit") || has("card"))
        return AccountType::creditCard;
    if (has("saving"))
        return AccountType::savings;
    if (has("check") || has("debit"))
        return AccountType::checking;
    return std::nullopt;
}

std::optional<ImportProfile> makeProfile(const LayoutGuess& guess,
                                         const std::vector<std::vector<std::string>>& rows,
                                         const std::string& id) {
    if (rows.empty() || guess.headerRow < 0 ||
        static_cast<std::size_t>(guess.headerRow) > rows.size())
        return std::nullopt;
    const bool hasHeader = guess.headerRow >= 1;
    std::vector<std::string> headers;
    std::size_t firstData = 0;
    std::size_t width = rows.front().size();
    if (hasHeader) {
        for (const auto& field : rows[static_cast<std::size_t>(guess.headerRow) - 1])
            headers.emplace_back(text::trimmedWhitespace(field));
        firstData = static_cast<std::size_t>(guess.headerRow);
        width = headers.size();
    }
    if (width < 3)
        return std::nullopt;
    if (!inRange(guess.dateColumn, width) || !inRange(guess.descriptionColumn, width) ||
        guess.dateColumn == guess.descriptionColumn)
        return std::nullopt;

    const bool single = inRange(guess.amountColumn, width);
    std::vector<int> used{guess.dateColumn, guess.descriptionColumn};
    if (single) {
        used.push_back(guess.amountColumn);
    } else {
        if (!inRange(guess.moneyOutColumn, width) || !inRange(guess.moneyInColumn, width) ||
            guess.moneyOutColumn == guess.moneyInColumn)
            return std::nullopt;
        used.push_back(guess.moneyOutColumn);
        used.push_back(guess.moneyInColumn);
    }
    auto sorted = used;
    std::sort(sorted.begin(), sorted.end());
    if (std::adjacent_find(sorted.begin(), sorted.end()) != sorted.end())
        return std::nullopt;

    if (!hasHeader) {
        for (std::size_t i = 1; i <= width; ++i)
            headers.push_back("Column " + std::to_string(i));
    } else {
        for (const int column : used) {
            const std::string& name = headers[static_cast<std::size_t>(column) - 1];
            if (name.empty() || std::count(headers.begin(), headers.end(), name) != 1)
                return std::nullopt;
        }
    }
    const auto header = [&](int column) { return headers[static_cast<std::size_t>(column) - 1]; };
    // An optional column is left out when it is out of range, unnamed or the date itself.
    const auto optionalHeader = [&](int column) -> std::optional<std::string> {
        if (!inRange(column, width) || column == guess.dateColumn || header(column).empty())
            return std::nullopt;
        return header(column);
    };

    ImportProfile profile;
    profile.id = id;
    const auto bankName = text::trimmedWhitespace(guess.bankName);
    profile.name = bankName.empty() || bankName == "unknown" ? "Bank file" : std::string(bankName);
    profile.accountType = guess.accountType;
    profile.hasHeader = hasHeader;
    if (hasHeader) {
        for (const auto& name : headers) {
            if (!name.empty())
                profile.requiredHeaders.push_back(name);
        }
    } else {
        profile.headerlessColumns = headers;
    }
    profile.dateColumn = header(guess.dateColumn);
    profile.postedDateColumn = optionalHeader(guess.postedDateColumn);
    profile.descriptionColumn = header(guess.descriptionColumn);
    if (single) {
        profile.amountColumn = header(guess.amountColumn);
    } else {
        profile.debitColumn = header(guess.moneyOutColumn);
        profile.creditColumn = header(guess.moneyInColumn);
    }
    profile.signConvention = guess.purchasesArePositive ? SignConvention::positiveIsMoneyOut
                                                        : SignConvention::positiveIsMoneyIn;
    profile.statusColumn = optionalHeader(guess.statusColumn);
    profile.pendingValues = {"Pending", "Pend", "Authorized"};
    profile.isBuiltIn = false;
    // Left out for a decimal point, so that such a layout is what it always was.
    if (guess.numberStyle == NumberStyle::decimalComma)
        profile.numberStyle = guess.numberStyle;
    if (single && inRange(guess.signMarkerColumn, width) &&
        std::find(used.begin(), used.end(), guess.signMarkerColumn) == used.end() &&
        !header(guess.signMarkerColumn).empty() && !guess.moneyOutMarkers.empty()) {
        profile.signMarkerColumn = header(guess.signMarkerColumn);
        profile.moneyOutMarkers = guess.moneyOutMarkers;
    }
    if (hasHeader)
        profile.dateLayout = guess.dateLayout;
    if (std::find(used.begin(), used.end(), guess.currencyColumn) == used.end())
        profile.currencyColumn = optionalHeader(guess.currencyColumn);
    profile.currency = guess.currency;
    // A headerless shape test reads dates before any detection, so the
    // order is fixed now.
    if (!hasHeader) {
        std::vector<std::string> samples;
        for (std::size_t i = firstData; i < rows.size(); ++i) {
            if (rows[i].size() >= static_cast<std::size_t>(guess.dateColumn))
                samples.push_back(rows[i][static_cast<std::size_t>(guess.dateColumn) - 1]);
        }
        profile.dateLayout = detectDateLayout(samples);
    }
    return profile;
}

bool mostlyMoneyIn(const std::vector<ParsedRow>& rows) {
    if (rows.size() < 5)
        return false;
    const auto in = std::count_if(rows.begin(), rows.end(),
                                  [](const ParsedRow& row) { return row.amount > 0; });
    return static_cast<std::size_t>(in) * 10 >= rows.size() * 7;
}

ImportProfile reversed(ImportProfile profile) {
    if (profile.amountColumn && profile.signMarkerColumn)
        return profile;
    if (profile.amountColumn) {
        profile.signConvention = profile.signConvention == SignConvention::positiveIsMoneyIn
                                     ? SignConvention::positiveIsMoneyOut
                                     : SignConvention::positiveIsMoneyIn;
    } else {
        std::swap(profile.debitColumn, profile.creditColumn);
    }
    return profile;
}

LayoutCheck check(const ImportProfile& profile, std::string_view fileName, std::string_view data) {
    LayoutCheck result;
    result.profile = profile;
    result.analysis = ImportAnalyzer::analyzeKnown(fileName, data, {profile}, false);
    const bool markedSigns = profile.amountColumn && profile.signMarkerColumn;
    if (!result.analysis.problem && !markedSigns && mostlyMoneyIn(result.analysis.rows)) {
        // A bank file is mostly money out, so such a reading has its signs
        // the wrong way round.
        result.profile = reversed(profile);
        result.analysis = ImportAnalyzer::analyzeKnown(fileName, data, {result.profile}, false);
        result.flippedSigns = true;
    }
    const std::size_t rows = result.analysis.rows.size();
    const std::size_t issues = result.analysis.issues.size();
    const std::size_t allowance = rows < 10 ? 1 : rows / 10;
    if (!result.analysis.problem && rows > 0 && issues <= allowance) {
        result.accepted = true;
        result.note = "Local AI set up this layout and Copperwick read " + std::to_string(rows) +
                      " rows with it.";
        if (result.flippedSigns)
            result.note +=
                " Signs were reversed because almost every row came out as money in; check the "
                "preview.";
    } else if (result.analysis.problem) {
        result.note = "The suggested layout didn't work: " + *result.analysis.problem;
    } else {
        result.note = "The suggested layout read " + std::to_string(rows) +
                      " rows but couldn't read " + std::to_string(issues) + ".";
    }
    return result;
}

}  // namespace copperwick::LayoutProposal
