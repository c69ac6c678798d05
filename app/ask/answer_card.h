#pragma once

// One question and its answer on the Ask screen: the question, the text,
// a warning when the answer's figures aren't in what the lookups said, and
// a fold that lists every lookup the model made, what it was asked and
// what it answered. A failed answer is a card too, its words the text.
// Shows one AskAnswer as it stands; an answer never changes once given.
// Main thread only.

#include <QLabel>
#include <QToolButton>
#include <QWidget>

#include "app/widgets/card_frame.h"
#include "runtime/intelligence_controller.h"

namespace copperwick::app {

class AnswerCard : public CardFrame {
    Q_OBJECT

  public:
    explicit AnswerCard(const AskAnswer& answer, QWidget* parent = nullptr);

    [[nodiscard]] const Uuid& answerID() const { return m_id; }
    [[nodiscard]] QLabel* questionLabel() const { return m_question; }
    [[nodiscard]] QLabel* textLabel() const { return m_text; }
    // The warning line; null when the answer holds or failed.
    [[nodiscard]] QWidget* warning() const { return m_warning; }
    // The fold of the lookups; null for a failed answer.
    [[nodiscard]] QToolButton* lookupsToggle() const { return m_toggle; }
    [[nodiscard]] QWidget* lookupsList() const { return m_lookups; }

  private:
    Uuid m_id;
    QLabel* m_question = nullptr;
    QLabel* m_text = nullptr;
    QWidget* m_warning = nullptr;
    QToolButton* m_toggle = nullptr;
    QWidget* m_lookups = nullptr;
};

}  // namespace copperwick::app
