#pragma once

// OFX and QFX statements, read into the same FileAnalysis as a CSV file. Not
// an XML or SGML parser: the handful of tags it needs are read with patterns
// that serve both the old tag-only form and the well-formed one. One bank or
// card statement an analysis; a file of several is first cut into one text
// per statement. Nothing with a document type. Pure; any thread.

#include <string_view>
#include <vector>

#include "core/import/file_analysis.h"
#include "core/import/statement_files.h"

namespace copperwick::OFXImport {

// By extension ("ofx", "qfx") or by an <OFX> tag in the text, whatever the name says.
[[nodiscard]] bool recognizes(std::string_view fileName, std::string_view text);
// `data` is the file's bytes (for its hash), `text` the decoded text.
[[nodiscard]] FileAnalysis analyze(std::string_view fileName, std::string_view data,
                                   std::string_view text, bool flipSigns);

// The bank and card statements of the text in file order, each labelled
// "card ending 1234" or "account ending 5678, statement 2 of 3"; empty
// unless there are at least two of them.
[[nodiscard]] std::vector<StatementPart> statements(std::string_view text);

}  // namespace copperwick::OFXImport
