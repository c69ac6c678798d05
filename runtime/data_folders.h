#pragma once

// Where Copperwick keeps things on disk, following the XDG base directories.

#include <filesystem>

namespace copperwick::data_folders {

// $XDG_DATA_HOME/Copperwick, or ~/.local/share/Copperwick.
[[nodiscard]] std::filesystem::path standardDataFolder();

// A fresh folder name for a demo: $TMPDIR (or /tmp) / "Copperwick-Demo-" + UUID.
[[nodiscard]] std::filesystem::path newDemoFolder();

[[nodiscard]] std::filesystem::path dataFile(const std::filesystem::path& dataFolder);
[[nodiscard]] std::filesystem::path backupsFolder(const std::filesystem::path& dataFolder);

}  // namespace copperwick::data_folders
