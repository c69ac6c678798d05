#pragma once

// Per-machine switches (never ledger data): a JSON object in one file, mode
// 0600, in $XDG_CONFIG_HOME/Copperwick (by default ~/.config/Copperwick).
// The live app uses "preferences.json"; a demo uses "Copperwick.Demo.json",
// so a demo can't change the real preferences.
//
// Preferences are conveniences, never an error to show: a missing or damaged
// file reads as empty (a damaged one is replaced on the next write), a value
// of the wrong type reads as absent, and a write that fails is passed over,
// the change living on in memory only. Keys this build doesn't know are kept
// when writing.
//
// Nothing is read until the first access, so making one never touches the
// disk. Each write merges into what the file holds at that moment and
// replaces it atomically. Not thread-safe: main thread only. Copyable, but
// copies keep separate caches of the same file.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include <boost/json/object.hpp>

namespace copperwick {

class Preferences {
  public:
    explicit Preferences(std::filesystem::path file);

    // $XDG_CONFIG_HOME/Copperwick, or $HOME/.config/Copperwick when that is
    // unset or not an absolute path.
    [[nodiscard]] static std::filesystem::path standardFolder();
    // The live app's file in `folder`.
    [[nodiscard]] static std::filesystem::path liveFile(const std::filesystem::path& folder);
    // A demo's file in `folder`.
    [[nodiscard]] static std::filesystem::path demoFile(const std::filesystem::path& folder);

    // Absent when the key is missing or holds another type.
    [[nodiscard]] std::optional<bool> boolValue(std::string_view key) const;
    [[nodiscard]] std::optional<std::string> stringValue(std::string_view key) const;

    // Each change is written at once; the folder is made (mode 0700) if needed.
    void set(std::string_view key, bool value);
    void set(std::string_view key, std::string_view value);
    // Without this a string literal would convert to bool, not to text.
    void set(std::string_view key, const char* value) { set(key, std::string_view(value)); }
    void remove(std::string_view key);

    [[nodiscard]] const std::filesystem::path& file() const { return m_file; }

  private:
    [[nodiscard]] const boost::json::object& values() const;
    // Reads the file afresh, applies `change` and writes the result back.
    template <typename Change>
    void update(Change change);

    std::filesystem::path m_file;
    mutable std::optional<boost::json::object> m_values;
};

// The keys this build reads and writes, exactly as they stand in the file.
namespace preference_keys {

inline constexpr std::string_view aiEnabled = "Copperwick.aiEnabled";
inline constexpr std::string_view aiAutoSuggest = "Copperwick.aiAutoSuggest";
inline constexpr std::string_view aiAutoFile = "Copperwick.aiAutoFile";
inline constexpr std::string_view aiTidyNames = "Copperwick.aiTidyNames";
inline constexpr std::string_view aiSetUpLayouts = "Copperwick.aiSetUpLayouts";
inline constexpr std::string_view archiveFolder = "Copperwick.archiveFolder";
inline constexpr std::string_view pdfReportStyle = "Copperwick.pdfReportStyle";
// The older form of the appearance mode, read only to carry it over.
inline constexpr std::string_view appearance = "Copperwick.appearance";
inline constexpr std::string_view appearanceSkin = "Copperwick.appearance.skin.v1";
inline constexpr std::string_view appearanceMode = "Copperwick.appearance.mode.v1";
inline constexpr std::string_view appearanceIconFollowsSkin =
    "Copperwick.appearance.iconFollowsSkin.v1";
inline constexpr std::string_view appearanceFinderIconShown =
    "Copperwick.appearance.finderIconShown.v1";
// Where the local model server listens, and which model it runs (text).
inline constexpr std::string_view aiEndpoint = "Copperwick.aiEndpoint";
inline constexpr std::string_view aiModel = "Copperwick.aiModel";
// Updates: whether to check once a day and to download what is found, and
// when the last check was ("2026-03-09T14:15:00Z", UTC).
inline constexpr std::string_view automaticallyChecksForUpdates =
    "Copperwick.automaticallyChecksForUpdates";
inline constexpr std::string_view automaticallyDownloadsUpdates =
    "Copperwick.automaticallyDownloadsUpdates";
inline constexpr std::string_view lastUpdateCheckDate = "Copperwick.lastUpdateCheckDate";

}  // namespace preference_keys

}  // namespace copperwick
