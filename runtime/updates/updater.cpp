#include "runtime/updates/updater.h"

#include <system_error>
#include <utility>

#include "copperwick_version.h"
#include "core/store/private_folder.h"
#include "core/store/store_error.h"
#include "runtime/updates/update_transfer.h"
#include "update_build_options.h"

namespace copperwick {

namespace fs = std::filesystem;

namespace {

using Kind = UpdateTransfer::Outcome::Kind;

std::optional<update_signature::PublicKey> usableKey(const UpdateConfiguration& configuration) {
    if (!UpdateTransfer::isAllowedAddress(configuration.feed))
        return std::nullopt;
    return update_signature::parsePublicKey(configuration.publicKey);
}

// Why a transfer brought nothing, for the ones both transfers share.
std::optional<std::string> commonProblem(const UpdateTransfer::Outcome& outcome) {
    switch (outcome.kind) {
        case Kind::unreachable:
            return std::string(UpdateText::kUnreachable);
        case Kind::timedOut:
            return std::string(UpdateText::kTimedOut);
        case Kind::refused:
            return std::string(UpdateText::kInsecure);
        default:
            return std::nullopt;
    }
}

std::uintmax_t sizeOf(const fs::path& file) {
    std::error_code error;
    const auto size = fs::file_size(file, error);
    return error ? 0 : size;
}

// Everything in the folder but the package to keep: an older download, or
// one a person declined, is of no use once a newer one is verified.
void removeAllBut(const fs::path& folder, const fs::path& keep) {
    std::error_code error;
    for (auto it = fs::directory_iterator(folder, error); !error && it != fs::directory_iterator();
         it.increment(error)) {
        if (it->path() != keep && it->path().extension() == ".deb")
            fs::remove(it->path(), error);
    }
}

}  // namespace

UpdateConfiguration UpdateConfiguration::fromBuild() {
    return UpdateConfiguration{.feed = COPPERWICK_UPDATE_FEED,
                               .publicKey = COPPERWICK_UPDATE_PUBLIC_KEY,
                               .runningVersion = COPPERWICK_VERSION};
}

Updater::Updater(UpdateConfiguration configuration, fs::path downloadsFolder)
    : m_configuration(std::move(configuration)),
      m_folder(std::move(downloadsFolder)),
      m_key(usableKey(m_configuration)) {}

bool Updater::isUsable(const UpdateConfiguration& configuration) {
    return usableKey(configuration).has_value();
}

Updater::Check Updater::check(const Cancelled& cancelled) const {
    if (!m_key)
        return {};
    std::string body;
    const auto outcome =
        UpdateTransfer::fetch(UpdateTransfer::Request{.url = m_configuration.feed,
                                                      .connectLimit = m_configuration.connectLimit,
                                                      .timeLimit = m_configuration.feedTimeLimit,
                                                      .maxBytes = Appcast::kMaxFeedBytes,
                                                      .cancelled = cancelled},
                              body);
    if (auto problem = commonProblem(outcome))
        return {.problem = std::move(problem)};
    if (outcome.kind == Kind::httpError)
        return {.problem = std::string(UpdateText::kServerError)};
    if (outcome.kind != Kind::done)
        return {.problem = std::string(UpdateText::kUnreadable)};
    const auto appcast = Appcast::parse(body);
    if (!appcast)
        return {.problem = std::string(UpdateText::kUnreadable)};
    return {.offer = appcast->newestAfter(m_configuration.runningVersion)};
}

fs::path Updater::packagePath(const AppcastItem& item) const {
    // The version is dotted digits alone (the feed's items are held to
    // that), so it makes a safe file name.
    return m_folder / ("copperwick-" + item.version + ".deb");
}

bool Updater::holdsUp(const fs::path& package, const AppcastItem& item) const {
    return m_key && item.length <= kMaxPackageBytes && sizeOf(package) == item.length &&
           update_signature::verifyFile(package, *m_key, item.signature);
}

Updater::Download Updater::download(const AppcastItem& item, const Cancelled& cancelled) const {
    if (!m_key)
        return {.problem = std::string(UpdateText::kDiscarded)};
    if (item.length > kMaxPackageBytes)
        return {.problem = std::string(UpdateText::kTooLarge)};
    const fs::path target = packagePath(item);
    try {
        createPrivateFolder(m_folder);
        removeAbandonedFiles(m_folder);
        if (holdsUp(target, item)) {
            removeAllBut(m_folder, target);
            return {.package = target};
        }
        TemporaryFile part(m_folder, target.filename().string());
        const auto outcome = UpdateTransfer::download(
            UpdateTransfer::Request{.url = item.url,
                                    .connectLimit = m_configuration.connectLimit,
                                    .timeLimit = m_configuration.downloadTimeLimit,
                                    // More than the feed said is already a mismatch.
                                    .maxBytes = item.length,
                                    .cancelled = cancelled},
            part.path());
        if (auto problem = commonProblem(outcome))
            return {.problem = std::move(problem)};
        if (outcome.kind == Kind::tooLarge)
            return {.problem = std::string(UpdateText::kDiscarded)};
        if (outcome.kind != Kind::done)
            return {.problem = std::string(UpdateText::kDownloadFailed)};
        // Checked before it takes the package's name, so that nothing
        // unverified ever stands under it.
        if (!holdsUp(part.path(), item))
            return {.problem = std::string(UpdateText::kDiscarded)};
        part.replace(target);
        removeAllBut(m_folder, target);
        return {.package = target};
    } catch (const FileError&) {
        return {.problem = std::string(UpdateText::kNoFolder) + m_folder.string() + "."};
    }
}

}  // namespace copperwick
