#include "app/transactions/charge_question.h"

#include <QVBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "runtime/intelligence_prompts.h"

namespace copperwick::app {

namespace {

QLabel* wrapped(QLabel* label) {
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

}  // namespace

ChargeQuestion::ChargeQuestion(RuntimeBridge& bridge, const Uuid& transactionID, QWidget* parent)
    : QWidget(parent),
      m_bridge(bridge),
      m_id(transactionID),
      m_off(wrapped(secondaryLabel(toQString(IntelligencePrompts::kTurnedOff), this))),
      m_asking(wrapped(secondaryLabel(toQString(kAsking), this))),
      m_answer(wrapped(textLabel({}, this))),
      m_answeredHere(wrapped(noteLabel(toQString(kAnsweredHere), this, true))),
      m_notOnThisCharge(wrapped(textLabel(toQString(kNotOnThisCharge), this))),
      m_notSure(wrapped(textLabel(toQString(IntelligencePrompts::kNotSure), this))),
      m_ask(pushButton(QStringLiteral("Ask Local AI"), this)) {
    setObjectName(QStringLiteral("whatIsThisCharge"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    layout->addWidget(headingLabel(toQString(kTitle), this));
    for (QLabel* label : {m_off, m_asking, m_answer, m_answeredHere, m_notOnThisCharge, m_notSure})
        layout->addWidget(label);
    for (QLabel* caution : {m_notOnThisCharge, m_notSure}) {
        QFont strong = caution->font();
        strong.setWeight(QFont::DemiBold);
        caution->setFont(strong);
    }
    layout->addWidget(m_ask, 0, Qt::AlignLeft);
    connect(m_ask, &QPushButton::clicked, this, &ChargeQuestion::ask);
    connect(&m_bridge, &RuntimeBridge::intelligenceChanged, this, &ChargeQuestion::refresh);
    refresh();
}

void ChargeQuestion::ask() {
    if (const LedgerTransaction* line = m_bridge.runtime().ledger().transaction(m_id))
        m_bridge.intelligence().explain(*line);
}

void ChargeQuestion::refresh() {
    const IntelligenceController& intelligence = m_bridge.intelligence();
    const bool on = intelligence.switches().enabled;
    const bool asking = on && intelligence.explaining().contains(m_id);
    const auto found = intelligence.explanations().find(m_id);
    const ChargeExplanation* explanation =
        on && found != intelligence.explanations().end() ? &found->second : nullptr;
    const bool answered = explanation && !explanation->failed;

    m_off->setVisible(!on);
    m_asking->setVisible(asking);
    m_answer->setVisible(explanation && !asking);
    if (explanation) {
        setLabelText(m_answer, toQString(explanation->text));
        m_answer->setForegroundRole(explanation->failed ? QPalette::PlaceholderText
                                                        : QPalette::WindowText);
    }
    m_answeredHere->setVisible(answered && !asking);
    m_notOnThisCharge->setVisible(answered && !asking && !explanation->isGrounded);
    m_notSure->setVisible(answered && !asking && !explanation->isConfident);

    m_ask->setVisible(on);
    m_ask->setEnabled(!asking);
    const QString words =
        explanation ? QStringLiteral("Ask Again") : QStringLiteral("Ask Local AI");
    if (m_ask->text() != words) {
        m_ask->setText(words);
        m_ask->setAccessibleName(words);
    }
}

QString ChargeQuestion::shownText() const {
    QStringList words;
    for (QLabel* label : findChildren<QLabel*>()) {
        if (!label->isHidden() && !label->text().isEmpty())
            words.append(label->text());
    }
    return words.join(QLatin1Char('\n'));
}

}  // namespace copperwick::app
