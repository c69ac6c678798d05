#pragma once

// A backup as the command line shows it, in text and in JSON.

#include <string>

#include <boost/json/value.hpp>

#include "core/store/backup_manager.h"

namespace copperwick::cli {

// {"url", "date" (seconds since 2001, as instants are stored), "bytes", "reason"}.
[[nodiscard]] boost::json::value backupJSON(const BackupManager::Info& backup);

// "Mar 9, 2026 at 2:15 PM · daily · 24,576 bytes · /path/to/copy.sqlite"
[[nodiscard]] std::string backupLine(const BackupManager::Info& backup);

}  // namespace copperwick::cli
