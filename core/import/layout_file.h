#pragma once

// Saved layout files: one taught ImportProfile as plain JSON, to move a layout
// between computers or share it. The file holds column mappings only, never a
// transaction.
//
// The format is the record's own JSON (record_json.h), pretty-printed with the
// keys sorted at every level, two spaces of indent per level, `"key" : value`
// pairs and a final newline, so that the same layout always gives the same
// bytes. Reading accepts any JSON layout of the same keys.
//
// Pure functions apart from the two that touch files; safe on any thread.

#include <cstddef>
#include <exception>
#include <filesystem>
#include <string>
#include <string_view>

#include "core/model/import_profile.h"

namespace copperwick {

inline constexpr std::size_t kMaximumLayoutFileBytes = 1'000'000;

// The file's text for `profile`.
[[nodiscard]] std::string exportLayout(const ImportProfile& profile);

// The layout a file holds, ready to keep as a new taught layout: a fresh
// "custom-" id of a whole UUID, so importing one file twice keeps two, and
// never built in. Throws EntryError (unavailable) for a file over
// kMaximumLayoutFileBytes or a layout that can't work (no name, date or
// description column, nowhere for the amount, a header row with no required
// headers), and std::runtime_error with the decoder's words for anything that
// isn't a layout at all.
[[nodiscard]] ImportProfile importLayout(std::string_view bytes);

// importLayout on a file's contents. A file too large is refused before it is
// read; one that can't be read throws std::runtime_error saying why.
[[nodiscard]] ImportProfile readLayoutFile(const std::filesystem::path& file);

// Writes exportLayout(profile) to `file` all at once: a reader sees the old
// file or the new one, never half of it. Throws std::runtime_error saying why.
void writeLayoutFile(const std::filesystem::path& file, const ImportProfile& profile);

// The file name a save panel suggests: the layout's name plus ".json".
[[nodiscard]] std::string suggestedLayoutFileName(const ImportProfile& profile);

// What a person reads when an import is refused for `error`.
[[nodiscard]] std::string importRefusal(const std::exception& error);

// "Imported the layout “{name}”." once a layout file's layout is kept.
[[nodiscard]] std::string importedLayoutMessage(const ImportProfile& profile);

// "Saved {file name}." once a layout file is written.
[[nodiscard]] std::string savedLayoutMessage(const std::filesystem::path& file);

// What a person reads when writing a layout file failed for `error`.
[[nodiscard]] std::string layoutSaveFailure(const std::exception& error);

}  // namespace copperwick
