#pragma once

// Saving a file a person asked for (an export, a layout file, a report) whole
// or not at all. The bytes go to a temporary file beside the target, are
// flushed to the disk and then renamed over it, so a reader sees the old file
// or the new one, and a failure leaves neither half a file nor the temporary
// behind.
//
// Only a regular file is ever replaced. A rename puts a new file in place of
// whatever stands at the name, so a device, a pipe, a folder or a symbolic
// link there is refused and left exactly as it was. Safe on any thread; two
// saves to one name at once leave one of the two files whole.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace copperwick {

// Who may read a saved file. Exports carry someone's finances.
enum class FileAccess {
    ownerOnly,  // 0600
    everyone,   // 0644, for files meant to be shared, such as a layout
};

// Writes `bytes` to `file`. Absent when the file was saved; otherwise why
// not, in plain words that name the file or its folder.
[[nodiscard]] std::optional<std::string> saveFile(const std::filesystem::path& file,
                                                  std::string_view bytes,
                                                  FileAccess access = FileAccess::ownerOnly);

}  // namespace copperwick
