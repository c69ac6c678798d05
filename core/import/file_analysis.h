#pragma once

// What reading one bank file found: the layout, every row that could be read,
// every row that couldn't and why, and hints for choosing an account. Made by
// ImportAnalyzer (CSV) or OFXImport, before anything touches the ledger; a
// whole-file failure is the text in `problem`, never an exception.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "core/model/date_layout.h"
#include "core/model/import_profile.h"
#include "core/model/ledger_enums.h"
#include "core/model/local_date.h"
#include "core/model/uuid.h"

namespace copperwick {

// One readable transaction line.
struct ParsedRow {
    int64_t line = 0;  // the record's first physical line, or the OFX block's number
    LocalDate date;
    std::optional<LocalDate> postedDate;
    int64_t amount = 0;       // cents; negative is money out
    std::string description;  // line breaks turned into blanks
    std::optional<std::string> bankMerchant;
    std::optional<std::string> bankCategory;
    TransactionStatus status = TransactionStatus::posted;
    std::optional<std::string> checkNumber;
    std::string rawText;
    std::string fingerprint;
    int64_t occurrence = 1;
    std::optional<std::string> cardIdentifier;  // "Card ending 1234" or "Cardholder: NAME"
    std::optional<std::string> externalID;

    friend bool operator==(const ParsedRow&, const ParsedRow&) = default;
};

// One line that couldn't be read, with the reason a person reads.
struct RowIssue {
    int64_t line = 0;
    std::string reason;
    std::string rawText;

    friend bool operator==(const RowIssue&, const RowIssue&) = default;
};

struct FileAnalysis {
    Uuid id;
    std::string fileName;
    std::string fileHash;  // SHA-256 of the bytes, 64 lowercase hex digits
    std::optional<ImportProfile> profile;
    std::string delimiter = ",";  // one character
    std::vector<std::string> headers;
    int64_t skippedLines = 0;
    std::vector<ParsedRow> rows;
    std::vector<RowIssue> issues;
    int64_t blankLines = 0;
    std::optional<DateLayout> dateLayout;
    std::optional<AccountType> typeHint;
    std::vector<std::string> digitHints;
    std::optional<std::string> problem;
    std::vector<std::vector<std::string>> sampleRecords;
    std::optional<std::string> currencyHint;

    [[nodiscard]] std::optional<LocalDate> firstDate() const;
    [[nodiscard]] std::optional<LocalDate> lastDate() const;
    // Every line of the file, accounted for once: skipped, header, row, issue or blank.
    [[nodiscard]] int64_t accountedLines() const;
};

}  // namespace copperwick
