#pragma once

// Bank exports as text and records. Knows nothing of banks: what a column
// means is the import analysis's business. Forgiving on purpose: the only
// failures are an empty file and bytes no tried encoding can read; a stray
// quote never fails, it only shapes the fields. Pure; safe on any thread.

#include <array>
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

// A file's text that borrows the file's bytes when they are UTF-8 already, so
// a large export is not held twice; converted text is owned. Copyable and
// movable; a borrowing value is only good while the bytes live.
class DecodedText {
  public:
    [[nodiscard]] static DecodedText borrowing(std::string_view bytes);
    [[nodiscard]] static DecodedText owning(std::string text);

    [[nodiscard]] std::string_view view() const { return m_owns ? m_owned : m_borrowed; }
    // The text as a string of its own: converted text moves out, borrowed
    // text is copied.
    [[nodiscard]] std::string toString() &&;

  private:
    std::string m_owned;
    std::string_view m_borrowed;
    bool m_owns = false;
};

// Reads a text's records one at a time, so that a large file is never held as
// records all at once. Each call reads one whole record; the stream keeps only
// its place in the text, so a copy resumes from the same record. The text must
// outlive the stream. Not for sharing between threads; one stream per reader.
class CSVRecordStream {
  public:
    // The delimiter's first Unicode scalar splits fields; an empty or
    // impossible one means comma.
    CSVRecordStream(std::string_view text, char32_t delimiter);

    // Overwrites `record` with the next record, or returns false once the text
    // is used up. The record's strings keep their capacity from call to call,
    // so a caller that reuses one record allocates next to nothing.
    [[nodiscard]] bool next(CSVRecord& record);

  private:
    // Reads one field into `field` from `at`; returns where it stopped.
    std::size_t readField(std::size_t at, std::string& field, std::string& raw,
                          std::size_t& rawStart, bool& quoted);

    std::string_view m_text;
    std::array<bool, 256> m_special = {};  // bytes that stop a run of plain text
    std::array<char, 4> m_delimiter = {};
    std::size_t m_delimiterLength = 1;
    std::size_t m_at = 0;
    int64_t m_line = 1;
};

namespace CSVReader {

// The file's text: UTF-16 by its byte-order mark, else strict UTF-8, else
// Windows-1252; a leading U+FEFF is dropped.
[[nodiscard]] std::variant<std::string, CSVReaderError> decode(std::string_view bytes);
// The same text as `decode`, borrowing the bytes where it can.
[[nodiscard]] std::variant<DecodedText, CSVReaderError> decodeBorrowing(std::string_view bytes);
// Comma, tab or semicolon, by counts outside quotes over the first twenty lines.
[[nodiscard]] char32_t detectDelimiter(std::string_view text);
// Every record of the text at once; CSVRecordStream reads the same records
// one by one.
[[nodiscard]] std::vector<CSVRecord> parse(std::string_view text, char32_t delimiter);
// How many records the text holds at most, from its line breaks; for sizing
// lists before a stream is read.
[[nodiscard]] std::size_t maxRecords(std::string_view text);

}  // namespace CSVReader
}  // namespace copperwick
