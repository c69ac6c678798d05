#pragma once

// Rules the person could have written: what they corrected the same way more
// than once. Each row tells the rule, what it is based on and what it would
// reach, and "Review Rule…" hands the suggestion on to be made into a rule
// draft for the rule editor. Nothing here changes the ledger.
//
// Main thread only. The runtime must outlive the section.

#include <vector>

#include <QPushButton>

#include "app/widgets/section_card.h"
#include "core/review/rule_suggester.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

class RuleSuggestionsSection : public SectionCard {
    Q_OBJECT

  public:
    explicit RuleSuggestionsSection(LedgerRuntime& runtime, QWidget* parent = nullptr);

    // Hidden while there are none.
    void setSuggestions(const std::vector<RuleSuggestion>& suggestions);
    [[nodiscard]] const std::vector<RuleSuggestion>& suggestions() const { return m_suggestions; }
    // The texts of each row, in order, for what the person reads.
    [[nodiscard]] QStringList rowTexts(std::size_t row) const;
    [[nodiscard]] QPushButton* reviewButton(std::size_t row) const;

  Q_SIGNALS:
    // "Review Rule…" on a row.
    void create(const copperwick::RuleSuggestion& suggestion);

  private:
    LedgerRuntime& m_runtime;
    std::vector<RuleSuggestion> m_suggestions;
    std::vector<QStringList> m_texts;
    std::vector<QPushButton*> m_buttons;
};

}  // namespace copperwick::app
