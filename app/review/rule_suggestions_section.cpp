#include "app/review/rule_suggestions_section.h"

#include <QHBoxLayout>
#include <QLabel>

#include "app/widgets/qt_text.h"
#include "app/widgets/text_styles.h"
#include "core/presentation/review_text.h"

namespace copperwick::app {

RuleSuggestionsSection::RuleSuggestionsSection(LedgerRuntime& runtime, QWidget* parent)
    : SectionCard(QStringLiteral("Suggested rule"), toQString(ReviewText::kSuggestedRulesDetail),
                  "lightbulb", parent),
      m_runtime(runtime) {
    hide();
}

void RuleSuggestionsSection::setSuggestions(const std::vector<RuleSuggestion>& suggestions) {
    setVisible(!suggestions.empty());
    if (suggestions == m_suggestions)
        return;
    m_suggestions = suggestions;
    m_texts.clear();
    m_buttons.clear();
    clearRows();
    const Ledger& ledger = m_runtime.ledger();
    for (std::size_t i = 0; i < m_suggestions.size(); ++i) {
        const RuleSuggestion& suggestion = m_suggestions[i];
        QStringList texts{toQString(ReviewText::suggestedRule(ledger, suggestion)),
                          toQString(ReviewText::suggestedRuleBasis(suggestion))};
        if (const auto conflicts = ReviewText::suggestedRuleConflicts(suggestion))
            texts << toQString(*conflicts);

        auto* row = new QWidget(this);
        auto* line = new QHBoxLayout(row);
        line->setContentsMargins(0, 8, 0, 8);
        line->setSpacing(12);
        auto* words = new QVBoxLayout;
        words->setSpacing(2);
        QLabel* rule = headingLabel(texts[0], row);
        rule->setWordWrap(true);
        words->addWidget(rule);
        for (qsizetype t = 1; t < texts.size(); ++t)
            words->addWidget(noteLabel(texts[t], row, true));
        line->addLayout(words, 1);
        QPushButton* review = pushButton(QStringLiteral("Review Rule\u2026"), row);
        review->setAccessibleDescription(texts[0]);
        connect(review, &QPushButton::clicked, this,
                [this, suggestion] { Q_EMIT create(suggestion); });
        line->addWidget(review, 0, Qt::AlignVCenter);
        addRow(row);
        m_texts.push_back(texts);
        m_buttons.push_back(review);
    }
}

QStringList RuleSuggestionsSection::rowTexts(std::size_t row) const {
    return row < m_texts.size() ? m_texts[row] : QStringList();
}

QPushButton* RuleSuggestionsSection::reviewButton(std::size_t row) const {
    return row < m_buttons.size() ? m_buttons[row] : nullptr;
}

}  // namespace copperwick::app
