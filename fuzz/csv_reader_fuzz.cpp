// Feeds arbitrary bytes through the import's reading path the way the import
// does (decode, detect, parse), and parses the raw bytes too so ill-formed
// UTF-8 reaches the parser, then works out a layout from the same bytes.
// Aborts on any broken promise of the reader or of the layout guesser.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <unicode/utf8.h>

#include "core/import/csv_reader.h"
#include "core/import/layout_guesser.h"

namespace {

using copperwick::CSVRecord;

void require(bool condition) {
    if (!condition)
        std::abort();
}

bool isWellFormedUtf8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
    const auto length = static_cast<int64_t>(text.size());
    int64_t i = 0;
    while (i < length) {
        UChar32 c;
        U8_NEXT(bytes, i, length, c);
        if (c < 0)
            return false;
    }
    return true;
}

// A guess names columns the rows have, or says what it couldn't find; a
// worked-out layout is only handed back once the file read cleanly with it.
void checkGuess(std::string_view bytes) {
    namespace guesser = copperwick::LayoutGuesser;
    const auto rows = copperwick::LayoutProposal::sampleRows(bytes, 200);
    for (const auto undecided :
         {copperwick::NumberStyle::decimalPoint, copperwick::NumberStyle::decimalComma}) {
        const auto outcome = guesser::guess(rows, undecided);
        require(outcome.guess.has_value() != !outcome.gaps.empty());
        if (outcome.guess) {
            require(outcome.guess->dateColumn >= 1);
            require(outcome.guess->descriptionColumn >= 1);
            require(static_cast<std::size_t>(outcome.guess->headerRow) < rows.size());
        }
    }
    const auto workedOut = guesser::workOut("fuzz.csv", bytes);
    require(workedOut.check.has_value() != !workedOut.gaps.empty());
    if (workedOut.check) {
        require(workedOut.check->accepted);
        require(!workedOut.check->analysis.problem);
        require(!workedOut.check->analysis.rows.empty());
    }
}

void checkRecords(std::string_view text, const std::vector<CSVRecord>& records) {
    require(text.empty() == records.empty());
    int64_t previousLine = 0;
    for (const auto& record : records) {
        require(!record.fields.empty());
        require(record.line > previousLine);
        previousLine = record.line;
        require(record.rawText.find_first_of("\r\n") == std::string::npos);
        require(record.rawText.size() <= text.size());
        (void)record.isBlank();
    }

    // Without quotes and CRs the raw texts are exactly the lines of the file.
    if (text.find_first_of("\"\r") != std::string_view::npos)
        return;
    std::string joined;
    joined.reserve(text.size());
    for (std::size_t i = 0; i < records.size(); ++i) {
        require(records[i].line == static_cast<int64_t>(i) + 1);
        if (i > 0)
            joined += '\n';
        joined += records[i].rawText;
    }
    std::string_view expected = text;
    if (!expected.empty() && expected.back() == '\n')
        expected.remove_suffix(1);
    require(joined == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    namespace reader = copperwick::CSVReader;

    const auto decoded = reader::decode(bytes);
    if (const auto* error = std::get_if<copperwick::CSVReaderError>(&decoded)) {
        require((*error == copperwick::CSVReaderError::empty) == bytes.empty());
    } else {
        const auto& text = std::get<std::string>(decoded);
        require(isWellFormedUtf8(text));
        const char32_t delimiter = reader::detectDelimiter(text);
        require(delimiter == U',' || delimiter == U'\t' || delimiter == U';');
        checkRecords(text, reader::parse(text, delimiter));
    }

    checkRecords(bytes, reader::parse(bytes, reader::detectDelimiter(bytes)));
    checkGuess(bytes);
    return 0;
}
