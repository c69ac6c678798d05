#pragma once

// "What is this charge?" in the details of one transaction: Local AI asked
// what the business behind a line of bank text most likely is, from the
// facts Copperwick has about the line, and its answer with what the check
// of its figures and its own confidence say about it. The explanation is
// the IntelligenceController's, kept by transaction id for the run of the
// program; this view shows it as it stands, and follows the controller
// through the bridge. With Local AI switched off it says so.
//
// Main thread only. The bridge must outlive the view.

#include <QLabel>
#include <QPushButton>
#include <QWidget>

#include "app/shell/runtime_bridge.h"
#include "core/model/uuid.h"

namespace copperwick::app {

class ChargeQuestion : public QWidget {
    Q_OBJECT

  public:
    static constexpr std::string_view kTitle = "What is this charge?";
    static constexpr std::string_view kAnsweredHere =
        "Answered on this computer from the bank's text. Nothing is sent anywhere.";
    static constexpr std::string_view kNotOnThisCharge =
        "It mentions a number that isn't on this charge, so treat it with care.";
    static constexpr std::string_view kAsking = "Local AI is looking at this charge\u2026";

    ChargeQuestion(RuntimeBridge& bridge, const Uuid& transactionID, QWidget* parent = nullptr);

    // Asks Local AI about the line, as "Ask Local AI" and "Ask Again" do.
    void ask();
    void refresh();

    // "Ask Local AI", or "Ask Again" once there is an answer.
    [[nodiscard]] QPushButton* askButton() const { return m_ask; }
    // Every text the view shows now, one a line.
    [[nodiscard]] QString shownText() const;

  private:
    RuntimeBridge& m_bridge;
    Uuid m_id;
    QLabel* m_off;
    QLabel* m_asking;
    QLabel* m_answer;
    QLabel* m_answeredHere;
    QLabel* m_notOnThisCharge;
    QLabel* m_notSure;
    QPushButton* m_ask;
};

}  // namespace copperwick::app
