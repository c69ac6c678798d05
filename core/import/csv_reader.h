#pragma once

// Bank exports as text and records. Knows nothing of banks: what a column
// means is the import analysis's business. Forgiving on purpose: the only
// failures are an empty file and bytes no tried encoding can read; a stray
// quote never fails, it only shapes the fields. Pure; safe on any thread.

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace copperwick {

// One logical row of the file.
struct CSVRecord {
    int64_t line = 1;                 // physical line it starts on, from 1
    std::vector<std::string> fields;  // never empty: a blank line is one empty field
    std::string rawText;  // as in the file, without its line break; inner breaks as blanks

    // Every field empty after trimming blanks and tabs.
    [[nodiscard]] bool isBlank() const;

    friend bool operator==(const CSVRecord&, const CSVRecord&) = default;
};

enum class CSVReaderError {
    unreadableEncoding,
    empty,
};

namespace CSVReader {

// The file's text: UTF-16 by its byte-order mark, else strict UTF-8, else
// Windows-1252; a leading U+FEFF is dropped.
[[nodiscard]] std::variant<std::string, CSVReaderError> decode(std::string_view bytes);
// Comma, tab or semicolon, by counts outside quotes over the first twenty lines.
[[nodiscard]] char32_t detectDelimiter(std::string_view text);
[[nodiscard]] std::vector<CSVRecord> parse(std::string_view text, char32_t delimiter);

}  // namespace CSVReader
}  // namespace copperwick
