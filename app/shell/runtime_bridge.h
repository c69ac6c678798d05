#pragma once

// The one place where the runtime's callbacks become Qt signals. Screens
// connect to these signals and read what changed from the runtime; they never
// register runtime observers of their own, so that every observer is removed
// when the window goes.
//
// Owns nothing: the runtime and the import model must outlive it. Main
// thread only, like the runtime. Not copyable.

#include <cstdint>
#include <optional>
#include <string>

#include <QObject>

#include "runtime/app_section.h"
#include "runtime/import_model.h"
#include "runtime/ledger_runtime.h"
#include "runtime/observable.h"

namespace copperwick::app {

class RuntimeBridge : public QObject {
    Q_OBJECT

  public:
    RuntimeBridge(LedgerRuntime& runtime, ImportModel& importer, QObject* parent = nullptr);
    ~RuntimeBridge() override;
    RuntimeBridge(const RuntimeBridge&) = delete;
    RuntimeBridge& operator=(const RuntimeBridge&) = delete;

    [[nodiscard]] LedgerRuntime& runtime() const { return m_runtime; }
    [[nodiscard]] ImportModel& importer() const { return m_importer; }

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
};

}  // namespace copperwick::app
