#pragma once

// What stands behind the update controller on Linux, in the place of the
// Sparkle framework: reads the feed, picks the newest version after the
// running one, downloads its package and holds it to its length and its
// signature. A package that fails either is deleted and never offered.
//
// Packages are kept in a folder of their own beside the data folder
// ("Copperwick Updates"), one verified package at a time, until they are
// installed or a newer one replaces them. The folder is this user's alone
// (0700). Nothing of the ledger is ever sent: a check is one request for
// the feed, a download one request for the package.
//
// The operations block and are meant for a worker thread. An Updater
// doesn't change once made, so several threads may share one.

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "runtime/updates/appcast.h"
#include "runtime/updates/update_signature.h"

namespace copperwick {

// Where to look for updates and how long to wait. The build's own comes from
// fromBuild(); tests make theirs on a loopback feed with short limits.
struct UpdateConfiguration {
    // The feed's address: https, or http to this computer.
    std::string feed;
    // The base64 ed25519 key the feed's packages are signed with.
    std::string publicKey;
    // The running version, which an offer must be newer than.
    std::string runningVersion;
    std::chrono::milliseconds connectLimit{15'000};
    std::chrono::milliseconds feedTimeLimit{60'000};
    std::chrono::milliseconds downloadTimeLimit{std::chrono::minutes(30)};

    // COPPERWICK_UPDATE_FEED, COPPERWICK_UPDATE_PUBLIC_KEY and
    // COPPERWICK_VERSION, as this build was configured.
    [[nodiscard]] static UpdateConfiguration fromBuild();
};

struct UpdateText {
    static constexpr std::string_view kUnreachable =
        "Copperwick couldn't reach its update server. Check the internet connection and try again.";
    static constexpr std::string_view kTimedOut =
        "The update server didn't answer in time. Try again later.";
    static constexpr std::string_view kUnreadable =
        "The update server's answer couldn't be read, so Copperwick looked no further.";
    static constexpr std::string_view kInsecure =
        "The update server pointed to an address that isn't secure, so Copperwick didn't follow "
        "it.";
    static constexpr std::string_view kDiscarded =
        "The update couldn't be verified, so it was discarded.";
    static constexpr std::string_view kServerError =
        "The update server couldn't give the list of updates. Try again later.";
    static constexpr std::string_view kDownloadFailed =
        "The update couldn't be downloaded. Try again later.";
    static constexpr std::string_view kTooLarge =
        "The update is larger than Copperwick accepts, so it wasn't downloaded.";
    // Followed by the folder's path.
    static constexpr std::string_view kNoFolder = "Copperwick couldn't keep the update in ";
};

class Updater {
  public:
    // The largest package accepted, whatever the feed says.
    static constexpr uint64_t kMaxPackageBytes = uint64_t{512} << 20;

    Updater(UpdateConfiguration configuration, std::filesystem::path downloadsFolder);

    // Whether this build checks at all: a feed at an allowed address and a
    // well-formed key. Otherwise updates come from the package manager.
    [[nodiscard]] bool canCheckForUpdates() const { return m_key.has_value(); }
    [[nodiscard]] static bool isUsable(const UpdateConfiguration& configuration);
    [[nodiscard]] const UpdateConfiguration& configuration() const { return m_configuration; }
    [[nodiscard]] const std::filesystem::path& downloadsFolder() const { return m_folder; }

    // What a look at the feed found: the newest version after the running
    // one (absent when there is none), or why nothing could be said.
    struct Check {
        std::optional<AppcastItem> offer;
        std::optional<std::string> problem;
    };
    // What a download came to: the verified package, or why there is none.
    struct Download {
        std::optional<std::filesystem::path> package;
        std::optional<std::string> problem;
    };
    using Cancelled = std::function<bool()>;

    [[nodiscard]] Check check(const Cancelled& cancelled = {}) const;
    // Fetches the item's package into the folder, or takes the one already
    // there when it still holds up; any other package there goes.
    [[nodiscard]] Download download(const AppcastItem& item, const Cancelled& cancelled = {}) const;
    // Whether the package is still exactly what the item signed: asked again
    // right before it is handed to the installer.
    [[nodiscard]] bool holdsUp(const std::filesystem::path& package, const AppcastItem& item) const;
    // Where the item's package is kept.
    [[nodiscard]] std::filesystem::path packagePath(const AppcastItem& item) const;

  private:
    UpdateConfiguration m_configuration;
    std::filesystem::path m_folder;
    std::optional<update_signature::PublicKey> m_key;
};

}  // namespace copperwick
