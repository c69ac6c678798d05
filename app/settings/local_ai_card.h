#pragma once

// Settings' part about Local AI: its four switches, the model server it
// talks to (an address on this computer and, when the server runs several,
// the model's name), whether that server answers or why Local AI can't be
// used, and how to start a server. The switches and the server are
// per-machine preferences, written as they change; an address that isn't
// this computer's is refused under the field and nothing is stored. A demo
// uses the person's own server and can't change it.
//
// Main thread only. The bridge must outlive the card.

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/section_card.h"

namespace copperwick::app {

class LocalAICard : public SectionCard {
    Q_OBJECT

  public:
    static constexpr std::string_view kNote =
        "Local AI runs on a model server on this computer, so nothing of your ledger leaves it. "
        "Every feature works without it.";
    static constexpr std::string_view kReady = "The model server answers. Local AI is ready.";
    static constexpr std::string_view kChecking = "Asking the model server\u2026";
    static constexpr std::string_view kDemo =
        "A demo uses the model server set up in your own Copperwick and can't change it.";

    explicit LocalAICard(RuntimeBridge& bridge, QWidget* parent = nullptr);

    // Stores the address and model typed, or says why the address is refused.
    void useServer();

    [[nodiscard]] QCheckBox* enabledBox() const { return m_enabled; }
    [[nodiscard]] QCheckBox* autoSuggestBox() const { return m_autoSuggest; }
    [[nodiscard]] QCheckBox* autoFileBox() const { return m_autoFile; }
    [[nodiscard]] QCheckBox* tidyNamesBox() const { return m_tidyNames; }
    [[nodiscard]] QLineEdit* addressField() const { return m_address; }
    [[nodiscard]] QLineEdit* modelField() const { return m_model; }
    [[nodiscard]] QPushButton* useServerButton() const { return m_use; }
    [[nodiscard]] RefusalLine* addressRefusal() const { return m_refusal; }
    // Whether the server answers, or why Local AI can't be used.
    [[nodiscard]] QLabel* statusLabel() const { return m_status; }
    [[nodiscard]] QPushButton* checkAgainButton() const { return m_checkAgain; }

  private:
    QCheckBox* addSwitch(const QString& words, std::string_view key, QWidget* parent,
                         QVBoxLayout* list);
    void readSwitches();
    void addressEdited();
    void showStatus();

    RuntimeBridge& m_bridge;
    QCheckBox* m_enabled = nullptr;
    QCheckBox* m_autoSuggest = nullptr;
    QCheckBox* m_autoFile = nullptr;
    QCheckBox* m_tidyNames = nullptr;
    QLineEdit* m_address = nullptr;
    RefusalLine* m_refusal = nullptr;
    QLineEdit* m_model = nullptr;
    QPushButton* m_use = nullptr;
    QLabel* m_status = nullptr;
    QPushButton* m_checkAgain = nullptr;
};

}  // namespace copperwick::app
