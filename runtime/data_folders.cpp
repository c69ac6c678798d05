#include "runtime/data_folders.h"

#include <cstdlib>
#include <optional>

#include "core/model/uuid.h"

namespace copperwick::data_folders {

namespace {

// An environment variable that names an absolute path, as XDG requires;
// relative values are to be ignored.
std::optional<std::filesystem::path> absoluteFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    if (!value || !*value)
        return std::nullopt;
    std::filesystem::path path(value);
    if (!path.is_absolute())
        return std::nullopt;
    return path;
}

}  // namespace

std::filesystem::path standardDataFolder() {
    if (auto base = absoluteFromEnvironment("XDG_DATA_HOME"))
        return *base / "Copperwick";
    const auto home = absoluteFromEnvironment("HOME").value_or(std::filesystem::current_path());
    return home / ".local" / "share" / "Copperwick";
}

std::filesystem::path newDemoFolder() {
    const auto temporary = absoluteFromEnvironment("TMPDIR").value_or("/tmp");
    return temporary / ("Copperwick-Demo-" + Uuid::random().text());
}

std::filesystem::path dataFile(const std::filesystem::path& dataFolder) {
    return dataFolder / "Copperwick.sqlite";
}

std::filesystem::path backupsFolder(const std::filesystem::path& dataFolder) {
    return dataFolder / "Backups";
}

}  // namespace copperwick::data_folders
