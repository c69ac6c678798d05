#pragma once

// QIF files, as Quicken and other budgeting programs export a register, read
// into the same FileAnalysis as a CSV or OFX file. One account's
// transactions a file: bank, card, cash and other asset or liability
// registers; investment registers are refused. QIF carries no transaction
// ids, so only fingerprints keep a second import from adding anything.
// Pure; any thread.

#include <string_view>

#include "core/import/file_analysis.h"

namespace copperwick::QifImport {

// By the extension "qif", or by a "!Type:", "!Account" or "!Option:" line
// at the start of the text.
[[nodiscard]] bool recognizes(std::string_view fileName, std::string_view text);
// `data` is the file's bytes (for its hash), `text` the decoded text.
[[nodiscard]] FileAnalysis analyze(std::string_view fileName, std::string_view data,
                                   std::string_view text, bool flipSigns);

}  // namespace copperwick::QifImport
