#include "app/ask/answer_card.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "app/widgets/enter_presses.h"
#include "app/widgets/qt_text.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/text_styles.h"
#include "runtime/intelligence_prompts.h"

namespace copperwick::app {

namespace {

// A wrapped line that can be selected and copied, as an answer should be.
QLabel* wrappedLabel(const QString& text, QWidget* parent, bool quiet = false) {
    QLabel* label = quiet ? secondaryLabel(text, parent) : copperwick::app::textLabel(text, parent);
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

}  // namespace

AnswerCard::AnswerCard(const AskAnswer& answer, QWidget* parent)
    : CardFrame(parent), m_id(answer.id) {
    setAccessibleName(toQString(answer.question));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kCardMargins);
    layout->setSpacing(8);

    m_question = headingLabel(toQString(answer.question), this);
    m_question->setWordWrap(true);
    layout->addWidget(m_question);
    m_text = wrappedLabel(toQString(answer.text), this, answer.failed);
    layout->addWidget(m_text);

    if (!answer.isGrounded && !answer.failed) {
        m_warning = new QWidget(this);
        auto* row = new QHBoxLayout(m_warning);
        row->setContentsMargins(0, 0, 0, 0);
        row->setSpacing(8);
        row->addWidget(new SymbolView("exclamationmark.triangle", 16, m_warning), 0, Qt::AlignTop);
        QLabel* words = wrappedLabel(toQString(IntelligencePrompts::kNotGrounded), m_warning);
        QFont strong = words->font();
        strong.setWeight(QFont::DemiBold);
        words->setFont(strong);
        row->addWidget(words, 1);
        layout->addWidget(m_warning);
    }
    if (answer.failed)
        return;

    // What the model looked up, folded away until asked for.
    const QString heading = toQString(IntelligencePrompts::lookupsHeading(answer.lookups.size()));
    m_toggle = new QToolButton(this);
    m_toggle->setText(heading);
    m_toggle->setAccessibleName(heading);
    m_toggle->setCheckable(true);
    m_toggle->setAutoRaise(true);
    m_toggle->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_toggle->setArrowType(Qt::RightArrow);
    m_toggle->setFocusPolicy(Qt::StrongFocus);
    pressOnEnter(m_toggle);
    layout->addWidget(m_toggle, 0, Qt::AlignLeft);

    m_lookups = new QWidget(this);
    auto* list = new QVBoxLayout(m_lookups);
    list->setContentsMargins(22, 0, 0, 0);
    list->setSpacing(10);
    for (const auto& entry : answer.lookups) {
        auto* block = new QVBoxLayout;
        block->setSpacing(2);
        QString asked = toQString(entry.tool);
        if (!entry.arguments.empty())
            asked += QStringLiteral(": ") + toQString(entry.arguments);
        QLabel* title = wrappedLabel(asked, m_lookups);
        QFont strong = title->font();
        strong.setWeight(QFont::DemiBold);
        title->setFont(strong);
        block->addWidget(title);
        block->addWidget(wrappedLabel(toQString(entry.result), m_lookups, true));
        list->addLayout(block);
    }
    m_lookups->hide();
    layout->addWidget(m_lookups);
    connect(m_toggle, &QToolButton::toggled, this, [this](bool open) {
        m_toggle->setArrowType(open ? Qt::DownArrow : Qt::RightArrow);
        m_lookups->setVisible(open);
    });
}

}  // namespace copperwick::app
