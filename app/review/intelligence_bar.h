#pragma once

// The bar over the Review groups where Local AI offers to look at them:
// to suggest a merchant and category for each, or, with
// "Copperwick.aiAutoFile" on, to file what it is sure of. While a run goes
// it says how far it has come and can be stopped; with Local AI off it
// says so, and with the model server not answering it says why and offers
// no button. What it shows is read from the bridge's controller and model
// status each time refresh() is called. Main thread only.

#include <QLabel>
#include <QPushButton>

#include "app/review/review_styles.h"
#include "app/shell/runtime_bridge.h"

namespace copperwick::app {

class IntelligenceBar : public TintPanel {
    Q_OBJECT

  public:
    static constexpr std::string_view kSuggestText =
        "Local AI can suggest a merchant and category for each group, on this computer. You "
        "approve every one.";
    static constexpr std::string_view kFileText =
        "Local AI can file these on this computer. Everything it files is marked so you can check "
        "it, and Undo reverses the whole run.";
    static constexpr std::string_view kNothingLeft =
        "Nothing in Review is left for Local AI to look at.";

    explicit IntelligenceBar(RuntimeBridge& bridge, QWidget* parent = nullptr);

    // Reads the switches, the run and the model's status again.
    void refresh();
    // Looks at every group waiting but those Local AI already suggested
    // for and payments to people.
    void start();

    [[nodiscard]] QLabel* textLabel() const { return m_text; }
    [[nodiscard]] QLabel* reasonLabel() const { return m_reason; }
    [[nodiscard]] QLabel* progressLabel() const { return m_progress; }
    // "Suggest with Local AI" or "File with Local AI".
    [[nodiscard]] QPushButton* startButton() const { return m_start; }
    [[nodiscard]] QPushButton* stopButton() const { return m_stop; }

  private:
    RuntimeBridge& m_bridge;
    QLabel* m_text;
    QLabel* m_reason;
    QLabel* m_progress;
    QPushButton* m_start;
    QPushButton* m_stop;
};

}  // namespace copperwick::app
