#pragma once

// Updates for the desktop application, and the rule that none is installed
// while a person's work is under way. Settings shows its switches, the last
// check and what it is doing; the menu's "Check for Updates…" and Settings'
// "Check Now" ask it to look.
//
// Once started it checks at once and then once a day while the program
// runs, when automatic checking is on. A version found is downloaded and
// verified (by the Updater), at once when the person asked or automatic
// downloads are on; otherwise Settings says it is there. A verified package
// waits until the runtime's updateActivity is idle, looking again every
// UpdateInstallPolicy::retryInterval; then the person is asked, and only on
// their word is the package, checked once more, handed to the system's
// installer. A newer offer while one waits replaces it, and the earlier is
// never installed. When the runtime has gone, nothing holds an install back.
//
// A demo never starts, so its fields keep their first values; nor does a
// build without a feed and key, whose updates come from the package manager.
//
// Main thread only: all state lives there, the waiting included; feeds,
// downloads and the installer run on threads of their own and come back
// through the runtime's main queue. Made with the runtime, which it holds
// loosely: it may outlive it. Not copyable.

#include <atomic>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "core/model/instant.h"
#include "runtime/ledger_runtime.h"
#include "runtime/main_queue.h"
#include "runtime/observable.h"
#include "runtime/observer_list.h"
#include "runtime/update_policy.h"
#include "runtime/updates/alarm_clock.h"
#include "runtime/updates/appcast.h"
#include "runtime/updates/package_installer.h"
#include "runtime/updates/updater.h"

namespace copperwick {

// What the controller needs from the program around it.
struct UpdateHooks {
    // Its alarms ring on the main thread.
    std::shared_ptr<AlarmClock> clock;
    // Asks the person the question ("Copperwick 0.2.0 is ready to install.")
    // and tells `answer`, on the main thread, whether to install now. Left
    // empty, nothing is ever installed.
    std::function<void(const std::string& question, std::function<void(bool install)> answer)>
        askToInstall;
    PackageInstaller installer;
};

struct UpdateControllerText {
    static constexpr std::string_view kUpToDate = "Copperwick is up to date.";
    static constexpr std::string_view kChecking = "Looking for a newer version\u2026";
};

class UpdateController {
  public:
    // How often an automatic check comes round while the program runs.
    static constexpr std::chrono::hours kCheckInterval{24};

    UpdateController(LedgerRuntime& runtime, UpdateConfiguration configuration, UpdateHooks hooks);
    // Stops a check or download under way; a waiting install is dropped.
    ~UpdateController();
    UpdateController(const UpdateController&) = delete;
    UpdateController& operator=(const UpdateController&) = delete;

    // Where verified packages are kept: beside the data folder, never in it.
    [[nodiscard]] static std::filesystem::path downloadsFolder(
        const std::filesystem::path& dataFolder);

    // Whether this build checks for updates at all; when not, they come from
    // the system's package manager.
    [[nodiscard]] bool isConfigured() const { return m_configured; }
    [[nodiscard]] bool isDemo() const { return m_isDemo; }
    [[nodiscard]] bool isStarted() const { return m_updater != nullptr; }

    [[nodiscard]] bool canCheckForUpdates() const { return m_canCheckForUpdates.get(); }
    [[nodiscard]] bool automaticallyChecks() const { return m_automaticallyChecks.get(); }
    [[nodiscard]] bool automaticallyInstalls() const { return m_automaticallyInstalls.get(); }
    [[nodiscard]] const std::optional<Instant>& lastCheckDate() const {
        return m_lastCheckDate.get();
    }
    // A check, download or install under way.
    [[nodiscard]] bool isBusy() const {
        return m_isChecking || m_downloading.has_value() || m_installing.has_value();
    }
    // An install is waiting, and this is what holds it back.
    [[nodiscard]] const std::optional<UpdateActivity>& heldBy() const { return m_heldBy; }
    // What it is doing or holding, in words for Settings; absent when idle.
    [[nodiscard]] std::optional<std::string> progressText() const;

    // Builds the updater, copies its four values and, with automatic
    // checking on, checks beside the window. Once: a second call does
    // nothing. Never in a demo.
    void start();
    // The person asked: a version found is downloaded whatever the switch
    // says, and a failure or "up to date" is told. Passed over while a
    // check is under way or when checking isn't possible.
    void checkNow();
    // Written through to the preferences; not in a demo.
    void setAutomaticallyChecks(bool on);
    void setAutomaticallyInstalls(bool on);

    // Called when a verified package is ready: keeps `install` (a later one
    // replaces an earlier one, which is then never called), stops the wait
    // before, and calls it once the runtime is idle, or at once when the
    // runtime has gone.
    void installWhenIdle(std::function<void()> install);

    // Told after every change to what the accessors above give.
    ObserverID observe(std::function<void()> callback);
    void removeObserver(ObserverID id);

  private:
    struct ReadyPackage {
        AppcastItem item;
        std::filesystem::path package;
    };

    void refresh();
    void check(bool asked);
    void checked(bool asked, WorkResult<Updater::Check> result);
    void downloaded(bool asked, const AppcastItem& item, WorkResult<Updater::Download> result);
    void offer(ReadyPackage ready);
    void ask(const ReadyPackage& ready);
    void install(const ReadyPackage& ready);
    void lookForIdle();
    void armDailyCheck();
    void tell(bool asked, std::string message, bool isError);
    [[nodiscard]] Preferences* preferences() const;
    [[nodiscard]] Instant now() const;
    void notify();

    LedgerRuntime& m_runtime;
    std::weak_ptr<const bool> m_runtimeLifetime;
    UpdateConfiguration m_configuration;
    UpdateHooks m_hooks;
    bool m_isDemo;
    bool m_configured;
    std::filesystem::path m_downloadsFolder;

    Observable<bool> m_canCheckForUpdates{false};
    Observable<bool> m_automaticallyChecks{false};
    Observable<bool> m_automaticallyInstalls{false};
    Observable<std::optional<Instant>> m_lastCheckDate;

    std::shared_ptr<const Updater> m_updater;
    bool m_isChecking = false;
    std::optional<std::string> m_available;
    std::optional<std::string> m_downloading;
    std::optional<ReadyPackage> m_ready;
    std::optional<UpdateActivity> m_heldBy;
    std::optional<std::string> m_installing;
    std::function<void()> m_pendingInstall;
    std::unique_ptr<Alarm> m_installWait;
    std::unique_ptr<Alarm> m_dailyCheck;
    ObserverList m_observers;
    // For answers that come back after the controller has gone.
    std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
    // Set when the controller goes, so that a transfer under way stops.
    std::shared_ptr<std::atomic<bool>> m_closing = std::make_shared<std::atomic<bool>>(false);
    // Last, so that work still out ends before the rest goes.
    std::unique_ptr<BackgroundWork> m_work;
};

}  // namespace copperwick
