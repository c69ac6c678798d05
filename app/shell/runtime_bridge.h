#pragma once

// The one place where the runtime's callbacks become Qt signals. Screens
// connect to these signals and read what changed from the runtime; they never
// register runtime observers of their own, so that every observer is removed
// when the window goes.
//
// The bridge also owns the application's one IntelligenceController, made
// beside the runtime and handed to the import model for the bridge's life,
// and turns its callbacks into a signal as it does the runtime's. It names
// both to the runtime as what an update waits for. Whether the model server
// answers is asked beside the window, never on it.
//
// The runtime and the import model must outlive the bridge. Main thread
// only, like the runtime. Not copyable.

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <QObject>

#include "runtime/app_section.h"
#include "runtime/import_model.h"
#include "runtime/intelligence_controller.h"
#include "runtime/ledger_runtime.h"
#include "runtime/main_queue.h"
#include "runtime/observable.h"

namespace copperwick::app {

// What the last look at the model server found.
struct ModelStatus {
    // False until the first look is back.
    bool known = false;
    // Why Local AI can't be used, in the person's words; absent when the
    // server answered.
    std::optional<std::string> unavailableReason;

    [[nodiscard]] bool isAvailable() const { return known && !unavailableReason; }
    friend bool operator==(const ModelStatus&, const ModelStatus&) = default;
};

class RuntimeBridge : public QObject {
    Q_OBJECT

  public:
    RuntimeBridge(LedgerRuntime& runtime, ImportModel& importer, QObject* parent = nullptr,
                  ModelLimits limits = {});
    ~RuntimeBridge() override;
    RuntimeBridge(const RuntimeBridge&) = delete;
    RuntimeBridge& operator=(const RuntimeBridge&) = delete;

    [[nodiscard]] LedgerRuntime& runtime() const { return m_runtime; }
    [[nodiscard]] ImportModel& importer() const { return m_importer; }
    [[nodiscard]] IntelligenceController& intelligence() const { return *m_intelligence; }

    // Asks the model server whether it answers, beside the window;
    // modelStatusChanged tells when the look starts and when it is back. A
    // look already out is not asked twice.
    void checkModel();
    [[nodiscard]] const ModelStatus& modelStatus() const { return m_modelStatus; }
    [[nodiscard]] bool isCheckingModel() const { return m_checkingModel; }
    // A switch or the model server's address changed in the preferences:
    // the screens read them again, and the server is asked afresh.
    void intelligenceSettingsChanged();

  Q_SIGNALS:
    // A change was saved, or the file was read again: derived figures are stale.
    void revisionChanged(qint64 revision);
    // Only when the section is a different one: the runtime compares first.
    void sectionChanged(copperwick::AppSection section);
    void errorMessageChanged(const std::optional<std::string>& message);
    void statusMessageChanged(const std::optional<std::string>& message);
    // After revisionChanged, with what the saved change touched; without a
    // delta the whole ledger was read again and everything shown is stale.
    void changeSaved(const copperwick::SavedChange& change);
    void transactionsFocusChanged(const std::optional<copperwick::TransactionsFocus>& focus);
    // Anything about the dropped files, their analyses or the last import.
    void importChanged();
    // Anything Local AI is doing or has found, or its switches.
    void intelligenceChanged();
    // A look at the model server started, or came back with its answer.
    void modelStatusChanged();

  private:
    LedgerRuntime& m_runtime;
    ImportModel& m_importer;
    ObserverID m_revisionObserver = 0;
    ObserverID m_sectionObserver = 0;
    ObserverID m_errorObserver = 0;
    ObserverID m_statusObserver = 0;
    ObserverID m_savedObserver = 0;
    ObserverID m_focusObserver = 0;
    ObserverID m_importObserver = 0;
    ObserverID m_intelligenceObserver = 0;
    ModelStatus m_modelStatus;
    bool m_checkingModel = false;
    // The settings changed while a look was out: its answer is stale.
    bool m_checkAgain = false;
    // Set when the bridge goes, so that a look still out ends at once.
    std::shared_ptr<std::atomic<bool>> m_closing = std::make_shared<std::atomic<bool>>(false);
    std::unique_ptr<IntelligenceController> m_intelligence;
    // Last, so that a look still out ends before the rest goes.
    std::unique_ptr<BackgroundWork> m_work;
};

}  // namespace copperwick::app
