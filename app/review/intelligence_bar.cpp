#include "app/review/intelligence_bar.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

#include "app/widgets/qt_text.h"
#include "app/widgets/symbol_view.h"
#include "app/widgets/text_styles.h"
#include "runtime/intelligence_prompts.h"

namespace copperwick::app {

IntelligenceBar::IntelligenceBar(RuntimeBridge& bridge, QWidget* parent)
    : TintPanel(parent),
      m_bridge(bridge),
      m_text(copperwick::app::textLabel({}, this)),
      m_reason(noteLabel({}, this, true)),
      m_progress(noteLabel({}, this, true)),
      m_start(pushButton(QStringLiteral("Suggest with Local AI"), this)),
      m_stop(pushButton(QStringLiteral("Stop"), this)) {
    setObjectName(QStringLiteral("intelligenceBar"));
    setAccessibleName(QStringLiteral("Local AI"));
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(12, 10, 12, 10);
    layout->setSpacing(10);
    layout->addWidget(new SymbolView("sparkles", 18, this), 0, Qt::AlignTop);
    auto* words = new QVBoxLayout;
    words->setSpacing(4);
    m_text->setWordWrap(true);
    words->addWidget(m_text);
    words->addWidget(m_reason);
    words->addWidget(m_progress);
    layout->addLayout(words, 1);
    layout->addWidget(m_start, 0, Qt::AlignVCenter);
    layout->addWidget(m_stop, 0, Qt::AlignVCenter);

    connect(m_start, &QPushButton::clicked, this, &IntelligenceBar::start);
    connect(m_stop, &QPushButton::clicked, this, [this] { m_bridge.intelligence().cancel(); });
    refresh();
}

void IntelligenceBar::start() {
    IntelligenceController& intelligence = m_bridge.intelligence();
    auto groups = IntelligenceController::groupsToLookAt(m_bridge.runtime().ledger());
    if (groups.empty()) {
        m_bridge.runtime().setStatusMessage(std::string(kNothingLeft));
        return;
    }
    intelligence.start(std::move(groups));
}

void IntelligenceBar::refresh() {
    const IntelligenceController& intelligence = m_bridge.intelligence();
    const IntelligenceSwitches on = intelligence.switches();
    const ModelStatus& status = m_bridge.modelStatus();
    const bool unavailable = status.known && status.unavailableReason;
    const bool running = intelligence.isSuggesting();

    if (!on.enabled)
        setLabelText(m_text, toQString(IntelligencePrompts::kTurnedOff));
    else
        setLabelText(m_text, toQString(on.autoFile ? kFileText : kSuggestText));
    const QString action = on.autoFile ? QStringLiteral("File with Local AI")
                                       : QStringLiteral("Suggest with Local AI");
    if (m_start->text() != action) {
        m_start->setText(action);
        m_start->setAccessibleName(action);
    }
    // The model's absence is said here, and its buttons aren't offered.
    m_reason->setVisible(on.enabled && unavailable && !running);
    if (unavailable)
        setLabelText(m_reason, toQString(*status.unavailableReason));
    m_start->setVisible(on.enabled && !unavailable && !running);
    m_progress->setVisible(running && !intelligence.suggestionProgress().empty());
    setLabelText(m_progress, toQString(intelligence.suggestionProgress()));
    m_stop->setVisible(running);
}

}  // namespace copperwick::app
