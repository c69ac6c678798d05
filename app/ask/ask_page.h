#pragma once

// The Ask section: a person's questions about their money in plain words,
// each answered by Local AI through the six finance lookups and held
// against what they said, as a running list of cards in the order asked.
// The questions, the answers and whether one is under way are the
// IntelligenceController's; the page keeps only what is typed and the
// question it sent last, to show while it is looked up.
//
// With Local AI switched off the page says so and offers nothing to ask;
// with the model server not answering it says why, and asks again when
// told to or when it next shows. Main thread only. The bridge must outlive
// the page.

#include <map>
#include <string>
#include <vector>

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/ask/answer_card.h"
#include "app/shell/runtime_bridge.h"
#include "app/widgets/section_page.h"

namespace copperwick::app {

class AskPage : public SectionPage {
    Q_OBJECT

  public:
    static constexpr std::string_view kTitle = "Ask Copperwick";
    static constexpr std::string_view kHeader =
        "Ask about your spending in plain words. Local AI looks up the answer with Copperwick's "
        "own calculations, entirely on this computer.";
    static constexpr std::string_view kPlaceholder = "Ask about your money\u2026";
    static constexpr std::string_view kFooter =
        "Answers only use your imported transactions. Anything still waiting in Review is pointed "
        "out rather than guessed.";
    static constexpr std::string_view kLookingItUp = "Looking it up\u2026";

    explicit AskPage(RuntimeBridge& bridge, QWidget* parent = nullptr);

    // The questions offered before the first is asked: four fixed ones,
    // and a fifth about the household's last person when it has people.
    [[nodiscard]] static std::vector<std::string> sampleQuestions(const Ledger& ledger);

    // Sends what is typed, trimmed; a blank field sends nothing and keeps
    // what is there.
    void send();

    [[nodiscard]] QLineEdit* questionField() const { return m_field; }
    [[nodiscard]] QPushButton* askButton() const { return m_ask; }
    [[nodiscard]] QPushButton* clearButton() const { return m_clear; }
    [[nodiscard]] QWidget* samples() const { return m_samples; }
    [[nodiscard]] std::vector<QPushButton*> sampleButtons() const;
    // Why nothing can be asked now, while that is so.
    [[nodiscard]] QWidget* notice() const { return m_notice; }
    [[nodiscard]] QLabel* noticeLabel() const { return m_noticeText; }
    [[nodiscard]] QWidget* lookingUp() const { return m_pending; }
    // The answer cards, in the order asked.
    [[nodiscard]] std::vector<AnswerCard*> cards() const;

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    void ask(const std::string& question);
    void refresh();
    void syncCards();
    void fillSamples();

    RuntimeBridge& m_bridge;
    IntelligenceController& m_intelligence;
    // The question sent last, shown while it is looked up.
    std::string m_asked;
    std::vector<std::string> m_sampleQuestions;

    QWidget* m_notice = nullptr;
    QLabel* m_noticeText = nullptr;
    QPushButton* m_checkAgain = nullptr;
    QPushButton* m_openSettings = nullptr;
    QWidget* m_samples = nullptr;
    QVBoxLayout* m_sampleList = nullptr;
    QWidget* m_clearRow = nullptr;
    QPushButton* m_clear = nullptr;
    QVBoxLayout* m_cardList = nullptr;
    std::vector<AnswerCard*> m_cards;
    QWidget* m_pending = nullptr;
    QLabel* m_pendingQuestion = nullptr;
    QWidget* m_bottom = nullptr;
    QLineEdit* m_field = nullptr;
    QPushButton* m_ask = nullptr;
};

}  // namespace copperwick::app
