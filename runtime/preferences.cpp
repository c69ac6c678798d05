#include "runtime/preferences.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <boost/json/value.hpp>

#include "core/store/private_folder.h"
#include "core/store/store_error.h"

namespace copperwick {

namespace fs = std::filesystem;
namespace json = boost::json;

namespace {

// An environment variable naming an absolute path; XDG says to ignore
// relative ones.
std::optional<fs::path> absoluteFromEnvironment(const char* name) {
    const char* value = std::getenv(name);
    if (!value || !*value)
        return std::nullopt;
    fs::path path(value);
    if (!path.is_absolute())
        return std::nullopt;
    return path;
}

// Whatever stands in the file, as an object. Anything that isn't one (no
// file, unreadable, not JSON, a JSON array) is read as no preferences.
json::object readObject(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return {};
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (in.bad())
        return {};
    std::error_code error;
    json::value value = json::parse(text, error);
    if (error || !value.is_object())
        return {};
    return std::move(value.as_object());
}

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

// Writes beside the target and renames over it, so a crash leaves either the
// old file or the new one, never half of either. Returns whether it worked.
bool replaceAtomically(const fs::path& file, std::string_view text) {
    try {
        createPrivateFolder(file.parent_path());
    } catch (const FileError&) {
        return false;
    }
    // Built piece by piece: GCC 12 misreads `"." + string` here as an overlapping copy.
    std::string hidden = ".";
    hidden += file.filename().string();
    hidden += ".XXXXXX";
    const std::string pattern = (file.parent_path() / hidden).string();
    std::vector<char> name(pattern.begin(), pattern.end());
    name.push_back('\0');
    const int descriptor = ::mkstemp(name.data());
    if (descriptor < 0)
        return false;
    const fs::path temporary(name.data());
    // mkstemp already uses 0600, but say it outright: these are someone's settings.
    bool written = ::fchmod(descriptor, S_IRUSR | S_IWUSR) == 0 && writeAll(descriptor, text) &&
                   ::fsync(descriptor) == 0;
    written = ::close(descriptor) == 0 && written;
    std::error_code error;
    if (written)
        fs::rename(temporary, file, error);
    if (!written || error) {
        fs::remove(temporary, error);
        return false;
    }
    // Make the rename itself durable; failing here loses nothing already written.
    const int folder = ::open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0) {
        ::fsync(folder);
        ::close(folder);
    }
    return true;
}

}  // namespace

Preferences::Preferences(fs::path file) : m_file(std::move(file)) {}

fs::path Preferences::standardFolder() {
    if (auto base = absoluteFromEnvironment("XDG_CONFIG_HOME"))
        return *base / "Copperwick";
    const auto home = absoluteFromEnvironment("HOME").value_or(fs::current_path());
    return home / ".config" / "Copperwick";
}

fs::path Preferences::liveFile(const fs::path& folder) {
    return folder / "preferences.json";
}

fs::path Preferences::demoFile(const fs::path& folder) {
    return folder / "Copperwick.Demo.json";
}

std::optional<bool> Preferences::boolValue(std::string_view key) const {
    const json::value* value = values().if_contains(key);
    if (!value || !value->is_bool())
        return std::nullopt;
    return value->get_bool();
}

std::optional<std::string> Preferences::stringValue(std::string_view key) const {
    const json::value* value = values().if_contains(key);
    if (!value || !value->is_string())
        return std::nullopt;
    return std::string(value->get_string());
}

void Preferences::set(std::string_view key, bool value) {
    update([&](json::object& object) {
        const json::value* old = object.if_contains(key);
        if (old && old->is_bool() && old->get_bool() == value)
            return false;
        object[key] = value;
        return true;
    });
}

void Preferences::set(std::string_view key, std::string_view value) {
    update([&](json::object& object) {
        const json::value* old = object.if_contains(key);
        if (old && old->is_string() && old->get_string() == value)
            return false;
        object[key] = value;
        return true;
    });
}

void Preferences::remove(std::string_view key) {
    update([&](json::object& object) { return object.erase(key) > 0; });
}

const json::object& Preferences::values() const {
    if (!m_values)
        m_values = readObject(m_file);
    return *m_values;
}

template <typename Change>
void Preferences::update(Change change) {
    // Start from the file as it is now, so that another instance's change to
    // some other key isn't written over with our older copy.
    json::object object = readObject(m_file);
    const bool changed = change(object);
    if (changed)
        replaceAtomically(m_file, json::serialize(object) + "\n");
    // Even when the write failed, this session goes on with the new value.
    m_values = std::move(object);
}

}  // namespace copperwick
