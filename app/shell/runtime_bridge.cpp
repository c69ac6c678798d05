#include "app/shell/runtime_bridge.h"

namespace copperwick::app {

RuntimeBridge::RuntimeBridge(LedgerRuntime& runtime, ImportModel& importer, QObject* parent,
                             ModelLimits limits)
    : QObject(parent),
      m_runtime(runtime),
      m_importer(importer),
      m_intelligence(std::make_unique<IntelligenceController>(runtime, limits)) {
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
    m_intelligenceObserver = m_intelligence->observe([this] { Q_EMIT intelligenceChanged(); });
    // Files no layout fits are read by Local AI as they arrive, as its
    // switches allow, and an import ends with it looking at what is left.
    m_importer.setIntelligence(m_intelligence.get(), true);
    // An update waits while either is at work.
    m_runtime.setActivitySources(&m_importer, m_intelligence.get());
}

RuntimeBridge::~RuntimeBridge() {
    m_closing->store(true);
    m_runtime.setActivitySources(nullptr, nullptr);
    m_importer.setIntelligence(nullptr);
    m_runtime.removeObserver(m_revisionObserver);
    m_runtime.removeObserver(m_sectionObserver);
    m_runtime.removeObserver(m_errorObserver);
    m_runtime.removeObserver(m_statusObserver);
    m_runtime.removeObserver(m_savedObserver);
    m_runtime.removeObserver(m_focusObserver);
    m_importer.removeObserver(m_importObserver);
    m_intelligence->removeObserver(m_intelligenceObserver);
    m_work.reset();
    m_intelligence.reset();
}

void RuntimeBridge::checkModel() {
    if (m_checkingModel)
        return;
    if (!m_work)
        m_work = std::make_unique<BackgroundWork>(m_runtime.mainQueue());
    m_checkingModel = true;
    m_checkAgain = false;
    Q_EMIT modelStatusChanged();
    const OnDeviceModel model =
        m_intelligence->model().withCancellation([closing = m_closing] { return closing->load(); });
    m_work->run([model] { return model.unavailableReason(); },
                [this](WorkResult<std::optional<std::string>> result) {
                    m_checkingModel = false;
                    if (m_checkAgain) {
                        checkModel();
                        return;
                    }
                    // A look that broke down says no more than that the model can't be had.
                    ModelStatus status{
                        .known = true,
                        .unavailableReason = result.value
                                                 ? std::move(*result.value)
                                                 : std::string(OnDeviceModelText::kNotAvailable)};
                    m_modelStatus = std::move(status);
                    Q_EMIT modelStatusChanged();
                });
}

void RuntimeBridge::intelligenceSettingsChanged() {
    Q_EMIT intelligenceChanged();
    if (m_checkingModel)
        m_checkAgain = true;
    else
        checkModel();
}

}  // namespace copperwick::app
