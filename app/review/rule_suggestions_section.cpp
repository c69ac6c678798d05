#include "app/review/rule_suggestions_section.h"
#include "app/widgets/text_styles.h"

#include <QHBoxLayout>
#include <QLabel>

#include "app/widgets/qt_text.h"
#include "app/widgets/symbol_view.h"
#include "core/presentation/review_text.h"

namespace copperwick::app {

RuleSuggestionsSection::RuleSuggestionsSection(LedgerRuntime& runtime, QWidget* parent)
    : CardFrame(parent), m_runtime(runtime), m_rows(new QVBoxLayout) {
    const QString title = QStringLiteral("Suggested rule");
    setAccessibleName(title);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(18, 16, 18, 12);
    layout->setSpacing(6);
    auto* heading = new QHBoxLayout;
    heading->setSpacing(8);
    heading->addWidget(new SymbolView("lightbulb", 18, this));
    heading->addWidget(headingLabel(title, this, 1.08), 1);
    layout->addLayout(heading);
    layout->addWidget(noteLabel(toQString(ReviewText::kSuggestedRulesDetail), this));
    m_rows->setSpacing(0);
    m_rows->setContentsMargins(0, 6, 0, 0);
    layout->addLayout(m_rows);
    hide();
}

void RuleSuggestionsSection::setSuggestions(const std::vector<RuleSuggestion>& suggestions) {
    setVisible(!suggestions.empty());
    if (suggestions == m_suggestions)
        return;
    m_suggestions = suggestions;
    m_texts.clear();
    m_buttons.clear();
    while (QLayoutItem* item = m_rows->takeAt(0)) {
        if (QWidget* row = item->widget()) {
            row->hide();
            row->deleteLater();
        }
        delete item;
    }
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
        auto* rule = new QLabel(texts[0], row);
        rule->setWordWrap(true);
        QFont font = rule->font();
        font.setWeight(QFont::DemiBold);
        rule->setFont(font);
        rule->setAccessibleName(texts[0]);
        words->addWidget(rule);
        for (qsizetype t = 1; t < texts.size(); ++t)
            words->addWidget(noteLabel(texts[t], row, true));
        line->addLayout(words, 1);
        auto* review = new QPushButton(QStringLiteral("Review Rule\u2026"), row);
        review->setAccessibleName(review->text());
        review->setAccessibleDescription(texts[0]);
        review->setAutoDefault(true);
        connect(review, &QPushButton::clicked, this,
                [this, suggestion] { Q_EMIT create(suggestion); });
        line->addWidget(review, 0, Qt::AlignVCenter);
        m_rows->addWidget(row);
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
