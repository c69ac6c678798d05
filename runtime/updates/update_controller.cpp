#include "runtime/updates/update_controller.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <system_error>
#include <utility>

#include "runtime/preferences.h"

namespace copperwick {

namespace fs = std::filesystem;

namespace {

// "2026-03-09T14:15:00Z": the last check as the preferences keep it.
std::string utcText(Instant instant) {
    const auto seconds = static_cast<std::time_t>(std::floor(instant.unixSeconds()));
    std::tm parts{};
    if (!::gmtime_r(&seconds, &parts))
        return {};
    char text[32];
    const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return std::string(text, length);
}

std::optional<Instant> parseUTCText(const std::string& text) {
    std::tm parts{};
    int consumed = 0;
    if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2dZ%n", &parts.tm_year, &parts.tm_mon,
                    &parts.tm_mday, &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &consumed) != 6 ||
        static_cast<std::size_t>(consumed) != text.size())
        return std::nullopt;
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    const std::time_t seconds = ::timegm(&parts);
    const Instant instant = Instant::fromUnixSeconds(static_cast<double>(seconds));
    // Anything that didn't come back the same was no real date.
    if (utcText(instant) != text)
        return std::nullopt;
    return instant;
}

std::string readyQuestion(const std::string& version) {
    return "Copperwick " + version + " is ready to install.";
}

}  // namespace

UpdateController::UpdateController(LedgerRuntime& runtime, UpdateConfiguration configuration,
                                   UpdateHooks hooks)
    : m_runtime(runtime),
      m_runtimeLifetime(runtime.lifetime()),
      m_configuration(std::move(configuration)),
      m_hooks(std::move(hooks)),
      m_isDemo(runtime.isDemo()),
      m_configured(Updater::isUsable(m_configuration)),
      m_downloadsFolder(downloadsFolder(runtime.dataFolder())),
      m_work(std::make_unique<BackgroundWork>(runtime.mainQueue())) {
    assert(m_hooks.clock);
}

UpdateController::~UpdateController() {
    m_closing->store(true);
    m_installWait.reset();
    m_dailyCheck.reset();
    m_work.reset();
}

fs::path UpdateController::downloadsFolder(const fs::path& dataFolder) {
    // Not in the data folder, which a person may copy or sync whole: a
    // package is of no use once installed.
    return dataFolder.parent_path() / "Copperwick Updates";
}

std::optional<std::string> UpdateController::progressText() const {
    if (m_installing)
        return "Installing Copperwick " + *m_installing + "\u2026";
    if (m_heldBy && m_ready) {
        return "Copperwick " + m_ready->item.displayVersion() +
               " is ready and waits until Copperwick is done " + busyWords(*m_heldBy) + ".";
    }
    if (m_downloading)
        return "Downloading Copperwick " + *m_downloading + "\u2026";
    if (m_isChecking)
        return std::string(UpdateControllerText::kChecking);
    if (m_available)
        return "Copperwick " + *m_available + " is available. Check Now downloads it.";
    return std::nullopt;
}

void UpdateController::start() {
    if (m_updater || m_isDemo)
        return;
    m_updater = std::make_shared<const Updater>(m_configuration, m_downloadsFolder);
    refresh();
    if (m_automaticallyChecks.get())
        check(false);
}

void UpdateController::refresh() {
    bool changed = m_canCheckForUpdates.set(m_updater && m_updater->canCheckForUpdates());
    if (const Preferences* stored = preferences()) {
        changed |= m_automaticallyChecks.set(
            stored->boolValue(preference_keys::automaticallyChecksForUpdates).value_or(true));
        changed |= m_automaticallyInstalls.set(
            stored->boolValue(preference_keys::automaticallyDownloadsUpdates).value_or(false));
        const auto last = stored->stringValue(preference_keys::lastUpdateCheckDate);
        changed |= m_lastCheckDate.set(last ? parseUTCText(*last) : std::nullopt);
    }
    if (changed)
        notify();
}

void UpdateController::checkNow() {
    check(true);
}

void UpdateController::setAutomaticallyChecks(bool on) {
    if (m_isDemo)
        return;
    if (Preferences* stored = preferences())
        stored->set(preference_keys::automaticallyChecksForUpdates, on);
    if (m_automaticallyChecks.set(on))
        notify();
    armDailyCheck();
}

void UpdateController::setAutomaticallyInstalls(bool on) {
    if (m_isDemo)
        return;
    if (Preferences* stored = preferences())
        stored->set(preference_keys::automaticallyDownloadsUpdates, on);
    if (m_automaticallyInstalls.set(on))
        notify();
}

void UpdateController::check(bool asked) {
    if (!m_updater || !m_canCheckForUpdates.get() || isBusy())
        return;
    m_isChecking = true;
    m_dailyCheck.reset();
    notify();
    m_work->run(
        [updater = m_updater, closing = m_closing] {
            return updater->check([closing] { return closing->load(); });
        },
        [this, asked](WorkResult<Updater::Check> result) { checked(asked, std::move(result)); });
}

void UpdateController::checked(bool asked, WorkResult<Updater::Check> result) {
    m_isChecking = false;
    const Instant at = now();
    if (Preferences* stored = preferences())
        stored->set(preference_keys::lastUpdateCheckDate, utcText(at));
    m_lastCheckDate.set(parseUTCText(utcText(at)));
    armDailyCheck();
    std::optional<std::string> problem;
    if (!result.value)
        problem = UpdateText::kUnreachable;
    else
        problem = result.value->problem;
    if (problem) {
        notify();
        tell(asked, std::move(*problem), true);
        return;
    }
    const std::optional<AppcastItem>& offer = result.value->offer;
    if (!offer) {
        m_available.reset();
        notify();
        tell(asked, std::string(UpdateControllerText::kUpToDate), false);
        return;
    }
    // Already downloaded and waiting, or being asked about: nothing new.
    if (m_ready && m_ready->item == *offer) {
        notify();
        return;
    }
    if (!asked && !m_automaticallyInstalls.get()) {
        m_available = offer->displayVersion();
        notify();
        return;
    }
    m_available.reset();
    m_downloading = offer->displayVersion();
    notify();
    m_work->run(
        [updater = m_updater, item = *offer, closing = m_closing] {
            return updater->download(item, [closing] { return closing->load(); });
        },
        [this, asked, item = *offer](WorkResult<Updater::Download> result) {
            downloaded(asked, item, std::move(result));
        });
}

void UpdateController::downloaded(bool asked, const AppcastItem& item,
                                  WorkResult<Updater::Download> result) {
    m_downloading.reset();
    if (!result.value || !result.value->package) {
        const std::string problem = result.value && result.value->problem
                                        ? *result.value->problem
                                        : std::string(UpdateText::kDownloadFailed);
        notify();
        // A package that failed its check is told even when nobody asked:
        // someone may be tampering with what this computer downloads.
        tell(asked || problem == UpdateText::kDiscarded, problem, true);
        return;
    }
    offer(ReadyPackage{item, *result.value->package});
}

void UpdateController::offer(ReadyPackage ready) {
    m_ready = ready;
    notify();
    installWhenIdle([this, ready = std::move(ready)] { ask(ready); });
}

void UpdateController::installWhenIdle(std::function<void()> install) {
    m_pendingInstall = std::move(install);
    m_installWait.reset();
    lookForIdle();
}

void UpdateController::lookForIdle() {
    const bool runtimeThere = !m_runtimeLifetime.expired();
    const UpdateActivity activity = runtimeThere ? m_runtime.updateActivity() : UpdateActivity{};
    if (!UpdateInstallPolicy::canInstallNow(activity)) {
        if (m_heldBy != activity) {
            m_heldBy = activity;
            notify();
        }
        m_installWait = m_hooks.clock->set(std::chrono::duration_cast<std::chrono::milliseconds>(
                                               UpdateInstallPolicy::retryInterval),
                                           [this] { lookForIdle(); });
        return;
    }
    m_installWait.reset();
    if (m_heldBy) {
        m_heldBy.reset();
        notify();
    }
    if (auto install = std::exchange(m_pendingInstall, nullptr))
        install();
}

void UpdateController::ask(const ReadyPackage& ready) {
    // Whatever the answer, this offer is settled; the next check offers the
    // package again, from the folder, when the person said later.
    if (m_ready && m_ready->item == ready.item) {
        m_ready.reset();
        notify();
    }
    if (!m_hooks.askToInstall)
        return;
    m_hooks.askToInstall(readyQuestion(ready.item.displayVersion()),
                         [this, alive = std::weak_ptr<const bool>(m_alive), ready](bool yes) {
                             if (yes && !alive.expired())
                                 install(ready);
                         });
}

void UpdateController::install(const ReadyPackage& ready) {
    if (m_installing)
        return;
    const std::string version = ready.item.displayVersion();
    m_installing = version;
    notify();
    struct Installed {
        bool heldUp = false;
        PackageInstaller::Way way = PackageInstaller::Way::opener;
        int status = -1;
    };
    m_work->run(
        [updater = m_updater, installer = m_hooks.installer, ready]() {
            Installed installed;
            // The package waited, maybe for hours, in a folder of the
            // person's: it is held to its signature once more before it runs.
            if (!updater->holdsUp(ready.package, ready.item)) {
                std::error_code ignored;
                fs::remove(ready.package, ignored);
                return installed;
            }
            installed.heldUp = true;
            installed.way = installer.way();
            installed.status = installer.run(installer.command(ready.package));
            return installed;
        },
        [this, version, folder = ready.package.parent_path()](WorkResult<Installed> result) {
            m_installing.reset();
            notify();
            if (result.value && !result.value->heldUp) {
                tell(true, std::string(UpdateText::kDiscarded), true);
            } else if (!result.value || result.value->status != 0) {
                tell(true,
                     "Copperwick " + version + " wasn't installed. The verified package stays in " +
                         folder.string() + ".",
                     true);
            } else if (result.value->way == PackageInstaller::Way::packageManager) {
                tell(true,
                     "Copperwick " + version +
                         " is installed. It starts the next time you open Copperwick.",
                     false);
            } else {
                tell(true, "Copperwick " + version + " is open in your software installer.", false);
            }
        });
}

void UpdateController::armDailyCheck() {
    m_dailyCheck.reset();
    if (!m_updater || !m_automaticallyChecks.get() || !m_canCheckForUpdates.get())
        return;
    // A day after the last check, or at once when that day has passed.
    std::chrono::milliseconds delay = kCheckInterval;
    if (const auto& last = m_lastCheckDate.get()) {
        const double due = last->secondsSinceReference +
                           std::chrono::duration<double>(kCheckInterval).count() -
                           now().secondsSinceReference;
        delay = std::chrono::milliseconds(static_cast<int64_t>(
            std::clamp(due, 0.0, std::chrono::duration<double>(kCheckInterval).count()) * 1000));
    }
    m_dailyCheck = m_hooks.clock->set(delay, [this] {
        // A download or an install may outlast a day; the check comes a day later.
        if (isBusy())
            m_dailyCheck = m_hooks.clock->set(kCheckInterval, [this] { check(false); });
        else
            check(false);
    });
}

void UpdateController::tell(bool asked, std::string message, bool isError) {
    if (!asked || m_runtimeLifetime.expired())
        return;
    if (isError)
        m_runtime.setErrorMessage(std::move(message));
    else
        m_runtime.setStatusMessage(std::move(message));
}

Preferences* UpdateController::preferences() const {
    return m_runtimeLifetime.expired() ? nullptr : &m_runtime.defaults();
}

Instant UpdateController::now() const {
    return m_runtimeLifetime.expired() ? Instant::now() : m_runtime.now();
}

ObserverID UpdateController::observe(std::function<void()> callback) {
    return m_observers.add(std::move(callback));
}

void UpdateController::removeObserver(ObserverID id) {
    m_observers.remove(id);
}

void UpdateController::notify() {
    m_observers.notify();
}

}  // namespace copperwick
