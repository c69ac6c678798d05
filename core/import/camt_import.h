#pragma once

// CAMT.053 bank-to-customer statements (ISO 20022 XML, versions .001.02 to
// .001.08), read into the same FileAnalysis as a CSV or OFX file. A small
// reader of its own, not a general XML parser: elements, attributes, text,
// CDATA and the predefined and numeric entities; anything with a document
// type is refused. One statement an analysis; a file of several is first cut
// into one text per statement. Pure; any thread.

#include <string_view>
#include <vector>

#include "core/import/file_analysis.h"
#include "core/import/statement_files.h"

namespace copperwick::CamtImport {

// By the CAMT.053 namespace or a <BkToCstmrStmt> element, whatever the name says.
[[nodiscard]] bool recognizes(std::string_view fileName, std::string_view text);
// `data` is the file's bytes (for its hash), `text` the decoded text.
[[nodiscard]] FileAnalysis analyze(std::string_view fileName, std::string_view data,
                                   std::string_view text, bool flipSigns);
// The statements of the text in file order, each labelled by its account
// ("account ending 1234"); empty unless there are at least two of them.
[[nodiscard]] std::vector<StatementPart> statements(std::string_view text);

}  // namespace copperwick::CamtImport
