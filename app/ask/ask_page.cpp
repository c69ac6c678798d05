#include "app/ask/ask_page.h"

#include <QHBoxLayout>
#include <QScrollArea>
#include <QShowEvent>
#include <QTimer>

#include "app/widgets/card_frame.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/tab_order.h"
#include "app/widgets/text_styles.h"
#include "core/model/text.h"
#include "runtime/intelligence_prompts.h"

namespace copperwick::app {

namespace {

constexpr std::string_view kFixedSamples[] = {
    "What changed in my spending last month?",
    "How much did we spend on dining in the last three months?",
    "What subscriptions do I have?",
    "What were the biggest purchases this month?",
};

}  // namespace

AskPage::AskPage(RuntimeBridge& bridge, QWidget* parent)
    : SectionPage(parent), m_bridge(bridge), m_intelligence(bridge.intelligence()) {
    QVBoxLayout* column = makeScrollingColumn(toQString(kTitle), toQString(kHeader));
    QWidget* content = scrollArea()->widget();

    // Why nothing can be asked: Local AI switched off, or no model answering.
    m_notice = new CardFrame(content);
    m_notice->setObjectName(QStringLiteral("askNotice"));
    auto* notice = new QVBoxLayout(m_notice);
    notice->setContentsMargins(kCardMargins);
    notice->setSpacing(10);
    auto* noticeRow = new QHBoxLayout;
    noticeRow->setSpacing(10);
    noticeRow->addWidget(new SymbolView("sparkles", 18, m_notice), 0, Qt::AlignTop);
    m_noticeText = textLabel({}, m_notice);
    m_noticeText->setWordWrap(true);
    noticeRow->addWidget(m_noticeText, 1);
    notice->addLayout(noticeRow);
    auto* noticeButtons = new QHBoxLayout;
    noticeButtons->setSpacing(8);
    m_checkAgain = pushButton(QStringLiteral("Check Again"), m_notice);
    m_openSettings = pushButton(QStringLiteral("Open Settings"), m_notice);
    noticeButtons->addWidget(m_checkAgain);
    noticeButtons->addWidget(m_openSettings);
    noticeButtons->addStretch(1);
    notice->addLayout(noticeButtons);
    m_notice->hide();
    column->addWidget(m_notice);

    m_samples = new QWidget(content);
    auto* samples = new QVBoxLayout(m_samples);
    samples->setContentsMargins(0, 0, 0, 0);
    samples->setSpacing(6);
    samples->addWidget(headingLabel(QStringLiteral("Try asking"), m_samples));
    m_sampleList = new QVBoxLayout;
    m_sampleList->setSpacing(6);
    samples->addLayout(m_sampleList);
    column->addWidget(m_samples);

    m_clearRow = new QWidget(content);
    auto* clearRow = new QHBoxLayout(m_clearRow);
    clearRow->setContentsMargins(0, 0, 0, 0);
    clearRow->addStretch(1);
    m_clear = pushButton(QStringLiteral("Clear"), m_clearRow);
    clearRow->addWidget(m_clear);
    m_clearRow->hide();
    column->addWidget(m_clearRow);

    m_cardList = new QVBoxLayout;
    m_cardList->setSpacing(12);
    column->addLayout(m_cardList);

    // The question under way, until its card takes its place.
    m_pending = new CardFrame(content);
    m_pending->setObjectName(QStringLiteral("lookingItUp"));
    auto* pending = new QVBoxLayout(m_pending);
    pending->setContentsMargins(kCardMargins);
    pending->setSpacing(8);
    m_pendingQuestion = headingLabel({}, m_pending);
    m_pendingQuestion->setWordWrap(true);
    pending->addWidget(m_pendingQuestion);
    pending->addWidget(secondaryLabel(toQString(kLookingItUp), m_pending));
    m_pending->hide();
    column->addWidget(m_pending);
    column->addStretch(1);

    // The field stays at the foot of the screen while the answers scroll.
    m_bottom = new QWidget(this);
    auto* bottom = new QVBoxLayout(m_bottom);
    bottom->setContentsMargins(kPageSideMargin, 10, kPageSideMargin, 16);
    bottom->setSpacing(6);
    auto* fieldRow = new QHBoxLayout;
    fieldRow->setSpacing(8);
    m_field = new QLineEdit(m_bottom);
    m_field->setPlaceholderText(toQString(kPlaceholder));
    m_field->setAccessibleName(toQString(kPlaceholder));
    m_field->setClearButtonEnabled(true);
    fieldRow->addWidget(m_field, 1);
    m_ask = pushButton(QStringLiteral("Ask"), m_bottom);
    fieldRow->addWidget(m_ask);
    bottom->addLayout(fieldRow);
    bottom->addWidget(noteLabel(toQString(kFooter), m_bottom, true));
    layout()->addWidget(m_bottom);

    connect(m_field, &QLineEdit::returnPressed, this, &AskPage::send);
    connect(m_ask, &QPushButton::clicked, this, &AskPage::send);
    connect(m_clear, &QPushButton::clicked, this, [this] {
        m_intelligence.clearAnswers();
        m_field->setFocus(Qt::OtherFocusReason);
    });
    connect(m_checkAgain, &QPushButton::clicked, this, [this] { m_bridge.checkModel(); });
    connect(m_openSettings, &QPushButton::clicked, this,
            [this] { m_bridge.runtime().setSection(AppSection::settings); });
    connect(&m_bridge, &RuntimeBridge::intelligenceChanged, this, &AskPage::refresh);
    connect(&m_bridge, &RuntimeBridge::modelStatusChanged, this, &AskPage::refresh);
    // The fifth sample names the household's last person.
    connect(&m_bridge, &RuntimeBridge::revisionChanged, this, &AskPage::fillSamples);

    fillSamples();
    refresh();
}

std::vector<std::string> AskPage::sampleQuestions(const Ledger& ledger) {
    std::vector<std::string> questions(std::begin(kFixedSamples), std::end(kFixedSamples));
    if (!ledger.people.empty())
        questions.push_back("How much did " + ledger.people.back().name +
                            " spend at Amazon this year?");
    return questions;
}

void AskPage::fillSamples() {
    auto questions = sampleQuestions(m_bridge.runtime().ledger());
    if (questions == m_sampleQuestions)
        return;
    m_sampleQuestions = std::move(questions);
    while (QLayoutItem* item = m_sampleList->takeAt(0)) {
        if (QWidget* old = item->widget()) {
            old->hide();
            old->deleteLater();
        }
        delete item;
    }
    for (const std::string& question : m_sampleQuestions) {
        QPushButton* button = pushButton(toQString(question), m_samples);
        connect(button, &QPushButton::clicked, this, [this, question] { ask(question); });
        m_sampleList->addWidget(button, 0, Qt::AlignLeft);
    }
    orderTabs({scrollArea(), m_bottom});
}

std::vector<QPushButton*> AskPage::sampleButtons() const {
    std::vector<QPushButton*> buttons;
    for (int i = 0; i < m_sampleList->count(); ++i) {
        if (auto* button = qobject_cast<QPushButton*>(m_sampleList->itemAt(i)->widget()))
            buttons.push_back(button);
    }
    return buttons;
}

std::vector<AnswerCard*> AskPage::cards() const {
    return m_cards;
}

void AskPage::showEvent(QShowEvent* event) {
    SectionPage::showEvent(event);
    // A server started or stopped since the last look shows as it is now.
    m_bridge.checkModel();
}

void AskPage::send() {
    const std::string question(text::trimmed(toStdString(m_field->text())));
    if (question.empty() || m_intelligence.isAnswering())
        return;
    m_field->clear();
    ask(question);
}

void AskPage::ask(const std::string& question) {
    if (m_intelligence.isAnswering())
        return;
    m_asked = question;
    m_intelligence.ask(question);
}

void AskPage::refresh() {
    const bool off = !m_intelligence.switches().enabled;
    const ModelStatus& status = m_bridge.modelStatus();
    const bool unavailable = !off && status.known && status.unavailableReason;
    const bool answering = m_intelligence.isAnswering();
    const bool anyAnswer = !m_intelligence.answers().empty();

    m_notice->setVisible(off || unavailable);
    if (off)
        setLabelText(m_noticeText, toQString(IntelligencePrompts::kTurnedOff));
    else if (unavailable)
        setLabelText(m_noticeText, toQString(*status.unavailableReason));
    m_checkAgain->setVisible(unavailable);
    m_checkAgain->setEnabled(!m_bridge.isCheckingModel());

    m_samples->setVisible(!off && !unavailable && !anyAnswer && !answering);
    m_clearRow->setVisible(!off && anyAnswer);
    m_clear->setEnabled(!answering);
    syncCards();
    for (AnswerCard* card : m_cards)
        card->setVisible(!off);
    m_pending->setVisible(!off && answering);
    if (answering)
        setLabelText(m_pendingQuestion, toQString(m_asked));
    m_bottom->setVisible(!off && !unavailable);
    m_ask->setEnabled(!answering);
    orderTabs({scrollArea(), m_bottom});
}

void AskPage::syncCards() {
    const auto& answers = m_intelligence.answers();
    bool same = m_cards.size() <= answers.size();
    for (std::size_t i = 0; same && i < m_cards.size(); ++i)
        same = m_cards[i]->answerID() == answers[i].id;
    // The list only grows, or is emptied: what is shown stays unless it went.
    if (!same) {
        for (AnswerCard* card : m_cards) {
            m_cardList->removeWidget(card);
            card->hide();
            card->deleteLater();
        }
        m_cards.clear();
    }
    AnswerCard* newest = nullptr;
    for (std::size_t i = m_cards.size(); i < answers.size(); ++i) {
        newest = new AnswerCard(answers[i], scrollArea()->widget());
        m_cardList->addWidget(newest);
        m_cards.push_back(newest);
    }
    // The new answer comes into view once it is laid out.
    if (newest && isVisible()) {
        QTimer::singleShot(0, this, [this, id = newest->answerID()] {
            for (AnswerCard* card : m_cards) {
                if (card->answerID() == id)
                    scrollArea()->ensureWidgetVisible(card, 0, 16);
            }
        });
    }
}

}  // namespace copperwick::app
