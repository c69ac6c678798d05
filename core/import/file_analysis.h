#pragma once

// What reading one bank file found: the layout, every row that could be read,
// every row that couldn't and why, and hints for choosing an account. Made by
// ImportAnalyzer (CSV) or OFXImport, before anything touches the ledger; a
// whole-file failure is the text in `problem`, never an exception.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/model/date_layout.h"
#include "core/model/import_profile.h"
#include "core/model/ledger_enums.h"
#include "core/model/local_date.h"
#include "core/model/uuid.h"

namespace copperwick {

// One readable transaction line. The plain values are members; the texts sit
// in one block per row and are read through accessors, whose views last as
// long as the row and its texts stay as they are. A column that stands
// unchanged in the raw text is kept as its place there, and the fingerprint
// is derived rather than stored, so a large file's rows stay a small multiple
// of the file's size. A value: copyable, equatable, safe to read from any
// thread.
class ParsedRow {
  public:
    // The texts of a row as a reader hands them over; they are copied.
    struct Texts {
        std::string_view rawText;
        std::string_view description;
        std::optional<std::string_view> bankMerchant;
        std::optional<std::string_view> bankCategory;
        std::optional<std::string_view> checkNumber;
        std::optional<std::string_view> cardIdentifier;
        std::optional<std::string_view> externalID;
    };

    // In an order that packs them tightly.
    int64_t line = 0;    // the record's first physical line, or the OFX block's number
    int64_t amount = 0;  // cents; negative is money out
    int64_t occurrence = 1;
    LocalDate date;
    std::optional<LocalDate> postedDate;
    TransactionStatus status = TransactionStatus::posted;

    ParsedRow() = default;
    ParsedRow(const ParsedRow& other);
    ParsedRow(ParsedRow&&) noexcept = default;
    ParsedRow& operator=(const ParsedRow& other);
    ParsedRow& operator=(ParsedRow&&) noexcept = default;
    ~ParsedRow() = default;

    // Replaces every text of the row; the texts may be views into the row itself.
    void setTexts(const Texts& texts);

    [[nodiscard]] std::string_view description() const;  // line breaks turned into blanks
    [[nodiscard]] std::optional<std::string_view> bankMerchant() const;
    [[nodiscard]] std::optional<std::string_view> bankCategory() const;
    [[nodiscard]] std::optional<std::string_view> checkNumber() const;
    [[nodiscard]] std::string_view rawText() const;
    // "{ISO date}|{cents}|{normalized description}", as ImportAnalyzer::fingerprint.
    [[nodiscard]] std::string fingerprint() const;
    // "Card ending 1234" or "Cardholder: NAME".
    [[nodiscard]] std::optional<std::string_view> cardIdentifier() const;
    [[nodiscard]] std::optional<std::string_view> externalID() const;
    // The description as the fingerprint carries it: MerchantText::normalize.
    [[nodiscard]] std::string_view normalizedDescription() const;

    friend bool operator==(const ParsedRow& a, const ParsedRow& b);

  private:
    // The texts in one allocation; the layout is described where it is written.
    std::unique_ptr<char[]> m_texts;
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
    // No layout fitted, so one was worked out from the file itself: the line
    // that tells the person which columns it read.
    std::optional<std::string> layoutWorkedOut;
    // No layout fitted and none could be worked out: what couldn't be found,
    // one sentence each.
    std::vector<std::string> layoutGaps;

    [[nodiscard]] std::optional<LocalDate> firstDate() const;
    [[nodiscard]] std::optional<LocalDate> lastDate() const;
    // Every line of the file, accounted for once: skipped, header, row, issue or blank.
    [[nodiscard]] int64_t accountedLines() const;
};

}  // namespace copperwick
