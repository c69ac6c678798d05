#include "app/shell/runtime_bridge.h"

namespace copperwick::app {

RuntimeBridge::RuntimeBridge(LedgerRuntime& runtime, ImportModel& importer, QObject* parent)
    : QObject(parent), m_runtime(runtime), m_importer(importer) {
    m_revisionObserver = m_runtime.observeRevision(
        [this](const int64_t& revision) { Q_EMIT revisionChanged(revision); });
    m_sectionObserver = m_runtime.observeSection(
        [this](const AppSection& section) { Q_EMIT sectionChanged(section); });
    m_errorObserver = m_runtime.observeErrorMessage(
        [this](const std::optional<std::string>& message) { Q_EMIT errorMessageChanged(message); });
    m_statusObserver =
        m_runtime.observeStatusMessage([this](const std::optional<std::string>& message) {
            Q_EMIT statusMessageChanged(message);
        });
    m_savedObserver = m_runtime.observeSavedChanges(
        [this](const SavedChange& change) { Q_EMIT changeSaved(change); });
    m_focusObserver =
        m_runtime.observeTransactionsFocus([this](const std::optional<TransactionsFocus>& focus) {
            Q_EMIT transactionsFocusChanged(focus);
        });
    m_importObserver = m_importer.observe([this] { Q_EMIT importChanged(); });
}

RuntimeBridge::~RuntimeBridge() {
    m_runtime.removeObserver(m_revisionObserver);
    m_runtime.removeObserver(m_sectionObserver);
    m_runtime.removeObserver(m_errorObserver);
    m_runtime.removeObserver(m_statusObserver);
    m_runtime.removeObserver(m_savedObserver);
    m_runtime.removeObserver(m_focusObserver);
    m_importer.removeObserver(m_importObserver);
}

}  // namespace copperwick::app
