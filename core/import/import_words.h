#pragma once

// The words of an import that the Import screen and the command line both
// say: the import bar's lines, what becomes of a row, an import's counts in
// the history, and what taking one back says. Pure functions, safe on any
// thread.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "core/import/import_planner.h"
#include "core/model/import_batch.h"

namespace copperwick {

inline constexpr std::string_view kNothingImportedYet = "Nothing has been imported yet.";

// "12 transactions ready from 1 file", "s" on "file" unless there is one.
[[nodiscard]] std::string readyLine(int64_t transactions, std::size_t files);

// "1 file needs a decision first (see above), or turn it off." or the plural;
// absent when no file is waiting.
[[nodiscard]] std::optional<std::string> blockedLine(std::size_t files);

// "You imported this exact file on {when}. Rows already saved are skipped."
// `when` is the earlier import's date and time as the caller words instants.
[[nodiscard]] std::string previousImportLine(std::string_view when);

// The transactions one import added: new rows, posted forms of pending
// charges and held rows imported all the same.
[[nodiscard]] int64_t transactionsAdded(const ImportCounts& counts);

// "12 added, 3 already saved, 1 held back, 2 skipped rows"; the last two
// only when above 0.
[[nodiscard]] std::string importCountsLine(const ImportCounts& counts);

// "Removed the import of {file name}."
[[nodiscard]] std::string removedImportMessage(std::string_view fileName);

}  // namespace copperwick
