#pragma once

// Folders that hold private financial data: the data folder and its backups.

#include <filesystem>

namespace copperwick {

// Creates `folder` and any missing parents with permissions 0700. Folders that
// already exist keep their permissions: a data folder given on the command
// line may be a shared place such as /tmp. Throws FileError in plain words.
void createPrivateFolder(const std::filesystem::path& folder);

}  // namespace copperwick
