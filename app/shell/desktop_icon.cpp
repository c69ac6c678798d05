#include "app/shell/desktop_icon.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <QBuffer>
#include <QByteArray>

#include "app/shell/app_icon.h"
#include "core/model/file_output.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kOption = "--show-finder-icon";
constexpr std::string_view kEntryName = "copperwick.desktop";

std::filesystem::path dataHome() {
    if (const char* value = std::getenv("XDG_DATA_HOME");
        value && std::filesystem::path(value).is_absolute())
        return value;
    const char* home = std::getenv("HOME");
    return std::filesystem::path(home ? home : "/") / ".local" / "share";
}

std::filesystem::path iconFile(const DesktopPlaces& places, Skin skin) {
    return places.icons / ("copperwick-" + std::string(rawValue(skin)) + ".png");
}

std::optional<std::string> readText(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    if (!in)
        return std::nullopt;
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

// The Exec line's program, quoted as desktop entries want when it needs it.
std::string execQuoted(const std::string& program) {
    if (program.find_first_of(" \t\"'\\`$;&|<>()*?#~=%") == std::string::npos)
        return program;
    std::string quoted = "\"";
    for (const char c : program) {
        if (c == '"' || c == '`' || c == '$' || c == '\\')
            quoted += '\\';
        quoted += c;
    }
    return quoted + "\"";
}

// Our own entry, for a desktop that has none from a package yet.
std::string newEntry(const std::filesystem::path& executable) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=Copperwick\n"
           "GenericName=Household budget\n"
           "Comment=Private household budgeting\n"
           "Exec=" +
           execQuoted(executable.string()) +
           " %F\n"
           "Terminal=false\n"
           "Categories=Office;Finance;\n"
           "MimeType=text/csv;application/x-ofx;application/vnd.intu.qfx;\n";
}

// The entry with its Icon line replaced by `icon`, or removed when absent.
// The line belongs to the [Desktop Entry] group; other groups stay as they are.
std::string withIcon(const std::string& entry, const std::optional<std::string>& icon) {
    std::istringstream in(entry);
    std::string out;
    std::string line;
    bool inMainGroup = false;
    bool placed = false;
    const auto place = [&] {
        if (icon && !placed)
            out += "Icon=" + *icon + "\n";
        placed = true;
    };
    while (std::getline(in, line)) {
        if (!line.empty() && line.front() == '[') {
            if (inMainGroup)
                place();
            inMainGroup = line == "[Desktop Entry]";
        } else if (inMainGroup && line.rfind("Icon=", 0) == 0) {
            place();
            continue;
        }
        out += line + "\n";
    }
    if (inMainGroup)
        place();
    return out;
}

bool writeIcon(const std::filesystem::path& file, Skin skin) {
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    if (!drawAppIcon(iconColors(skin), 256).save(&buffer, "PNG"))
        return false;
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    return !saveFile(file, std::string_view(png.constData(), static_cast<std::size_t>(png.size())),
                     FileAccess::everyone);
}

bool writeEntry(const std::filesystem::path& file, const std::string& text) {
    std::error_code error;
    std::filesystem::create_directories(file.parent_path(), error);
    return !saveFile(file, text, FileAccess::everyone);
}

}  // namespace

DesktopPlaces DesktopPlaces::standard() {
    const auto data = dataHome();
    return {data / "applications", data / "icons" / "hicolor" / "256x256" / "apps"};
}

bool showDesktopIcon(std::optional<Skin> skin, Preferences& preferences,
                     const DesktopPlaces& places, const std::filesystem::path& executable) {
    namespace keys = preference_keys;
    const auto entryFile = places.applications / kEntryName;
    const auto entry = readText(entryFile);

    if (!skin) {
        preferences.remove(keys::appearanceFinderIconShown);
        if (!entry)
            return true;
        const std::string cleared = withIcon(*entry, std::nullopt);
        return cleared == *entry || writeEntry(entryFile, cleared);
    }

    const auto icon = iconFile(places, *skin);
    const std::string iconLine = "Icon=" + icon.string() + "\n";
    if (preferences.stringValue(keys::appearanceFinderIconShown) == rawValue(*skin) &&
        std::filesystem::exists(icon) && entry && entry->find(iconLine) != std::string::npos)
        return true;

    if (!writeIcon(icon, *skin))
        return false;
    if (!writeEntry(entryFile, withIcon(entry.value_or(newEntry(executable)), icon.string())))
        return false;
    preferences.set(keys::appearanceFinderIconShown, rawValue(*skin));
    return true;
}

std::optional<int> runDesktopIconCommandIfAsked(int argc, char** argv, std::ostream& err) {
    std::optional<std::string> value;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == kOption && i + 1 < argc) {
            value = argv[i + 1];
            break;
        }
        if (argument.rfind(std::string(kOption) + "=", 0) == 0) {
            value = std::string(argument.substr(kOption.size() + 1));
            break;
        }
    }
    if (!value)
        return std::nullopt;

    std::optional<Skin> skin;
    if (*value != "none") {
        skin = enumFromRaw<Skin>(*value);
        if (!skin) {
            err << "Unknown skin " << *value << '\n';
            return 2;
        }
    }
    Preferences preferences(Preferences::liveFile(Preferences::standardFolder()));
    std::error_code error;
    auto executable = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error)
        executable = std::filesystem::absolute(argv[0]);
    return showDesktopIcon(skin, preferences, DesktopPlaces::standard(), executable) ? 0 : 1;
}

}  // namespace copperwick::app
