#pragma once

// Local AI's few lines about the report shown, above its tabs: the bullets
// it wrote from the report's key facts, each kept only when every figure in
// it stands in the facts it cites, or why there are none. The card only
// shows what it is given; the Reports page decides when a summary is
// written. Main thread only.

#include <vector>

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/widgets/card_frame.h"
#include "core/intelligence/grounding.h"

namespace copperwick::app {

class NarrativeCard : public CardFrame {
    Q_OBJECT

  public:
    static constexpr std::string_view kIntro =
        "Local AI writes a summary on this computer from the numbers below.";
    static constexpr std::string_view kChecked =
        "Written by Local AI on this computer from Copperwick's own figures. Every number was "
        "checked against the facts it cites.";
    static constexpr std::string_view kWriting = "Writing the summary\u2026";

    explicit NarrativeCard(QWidget* parent = nullptr);

    void showWriting();
    void showBullets(const std::vector<GroundedBullet>& bullets);
    void showFailure(const std::string& failure);

    // The bullets' texts, in order; empty while there are none.
    [[nodiscard]] QStringList bulletTexts() const;
    [[nodiscard]] QLabel* failureLabel() const { return m_failure; }
    [[nodiscard]] QLabel* checkedLabel() const { return m_checked; }
    [[nodiscard]] QLabel* writingLabel() const { return m_writing; }
    [[nodiscard]] QPushButton* tryAgainButton() const { return m_tryAgain; }

  Q_SIGNALS:
    // "Try Again" after a summary that couldn't be had.
    void tryAgain();

  private:
    void clearBullets();

    QLabel* m_writing;
    QVBoxLayout* m_bullets;
    std::vector<QLabel*> m_bulletLabels;
    QLabel* m_checked;
    QLabel* m_failure;
    QPushButton* m_tryAgain;
};

}  // namespace copperwick::app
