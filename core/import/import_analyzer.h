#pragma once

// From the bytes of one bank file to a FileAnalysis: which layout it is, the
// rows that could be read, the rows that couldn't and why, and hints for the
// account. A pure function of the bytes, the file name, the layouts and the
// flip-signs flag; it changes nothing and never throws. Safe on any thread.
// `analyze` streams: it reads UTF-8 text in place and turns one record at a
// time into a row, so a large file costs little more than its rows.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "core/import/csv_reader.h"
#include "core/import/file_analysis.h"
#include "core/model/account.h"
#include "core/model/import_profile.h"

namespace copperwick {

// Which account a file belongs to, as far as the file can tell.
struct AccountSuggestion {
    struct Existing {
        Uuid accountID;
        std::string reason;
    };
    struct Choose {
        std::string reason;
    };
    struct New {
        std::string name;
        AccountType type = AccountType::checking;
        std::optional<std::string> last4;
        std::string profileID;
    };
    struct None {};

    std::variant<Existing, Choose, New, None> value = None{};
};

namespace ImportAnalyzer {

// A recognised layout: the profile, where its header row stands (absent for a
// headerless layout), the column map and how many required headers matched.
struct DetectedLayout {
    ImportProfile profile;
    std::optional<std::size_t> headerIndex;
    std::map<std::string, std::size_t> columns;
    int score = 0;
};

// `profiles` are the ledger's taught layouts followed by the built-in ones.
// When none fits a CSV file, a layout is worked out from the file itself and
// used if the whole file reads cleanly with it; `layoutWorkedOut` then says
// so, and otherwise `layoutGaps` says what couldn't be found.
[[nodiscard]] FileAnalysis analyze(std::string_view fileName, std::string_view data,
                                   const std::vector<ImportProfile>& profiles, bool flipSigns);
// The same with the given layouts only: nothing is worked out.
[[nodiscard]] FileAnalysis analyzeKnown(std::string_view fileName, std::string_view data,
                                        const std::vector<ImportProfile>& profiles, bool flipSigns);
// With one layout chosen by hand; its file-name hints are ignored.
[[nodiscard]] FileAnalysis analyze(std::string_view fileName, std::string_view data,
                                   ImportProfile profile, bool flipSigns);

// `records` from the start of the file: the header search needs the first
// twelve, the headerless search the first five with content.
[[nodiscard]] std::optional<DetectedLayout> detect(const std::vector<CSVRecord>& records,
                                                   const std::vector<ImportProfile>& profiles,
                                                   std::string_view fileName);
// Reads every record of a file already held as a list; `analyze` reads the
// same rows straight from the text.
void parse(const std::vector<CSVRecord>& records, const DetectedLayout& layout,
           FileAnalysis& analysis, bool flipSigns);
[[nodiscard]] AccountSuggestion suggestAccount(const FileAnalysis& analysis,
                                               const std::vector<Account>& accounts);

// "{ISO date}|{cents}|{normalized description}": a line's identity for
// finding duplicates.
[[nodiscard]] std::string fingerprint(LocalDate date, int64_t amount, std::string_view description);
// What follows the file name's last dot, as written; empty without one.
[[nodiscard]] std::string_view extension(std::string_view fileName);
// The last four of an account number's digits, whatever stands between
// them; absent with fewer than four.
[[nodiscard]] std::optional<std::string> lastFourDigits(std::string_view accountID);
// Runs of exactly four digits in the file name, without its extension.
[[nodiscard]] std::vector<std::string> digitHints(std::string_view fileName);
// 64 lowercase hex digits.
[[nodiscard]] std::string sha256(std::string_view data);
// Where a statement reader (OFX, QIF, CAMT.053) starts: a new id, the file's
// name and the hash of its bytes. No digit hints from the name, as a
// statement names its own account.
[[nodiscard]] FileAnalysis statementAnalysis(std::string_view fileName, std::string_view data);
// Lowercased, trimmed names to column indexes; the first of a repeated name wins.
[[nodiscard]] std::map<std::string, std::size_t> columnMap(const std::vector<std::string>& fields);
[[nodiscard]] bool headerlessShapeMatches(const ImportProfile& profile, const CSVRecord& record);
// Whether a field names a bank's balance or total line ("Beginning balance as
// of 03/01/2026", "Total debits"). A row that says so and lacks a date or an
// amount is counted with the blank lines instead of blocking the file.
[[nodiscard]] bool isSummaryText(std::string_view field);

}  // namespace ImportAnalyzer

// What kind of account a file's descriptions suggest: a card, a bank account,
// or absent when both kinds of marker or neither show up.
namespace AccountTypeMarkers {
[[nodiscard]] std::optional<AccountType> guess(const std::vector<std::string>& descriptions);
}

}  // namespace copperwick
