#pragma once

// The Review section: what the system couldn't decide, grouped by bank text
// so that one decision covers every matching line; pending charges that
// may never have posted; rules the person could have written; and what
// Local AI filed by itself, for the person to check. Local AI's bar over
// the groups offers to look at them all.
//
// The queue is read from the runtime's ledger whenever a saved change
// touches what it is made of, on a copy in the background when the ledger
// is large. Cards are made as they come into view, a batch at a time, and
// each keeps what the person has chosen, by group, across refreshes: a
// decided group goes and the others stay as they were.
//
// Main thread only. The bridge and its runtime must outlive the page.

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QScrollArea>
#include <QStringListModel>
#include <QVBoxLayout>

#include "app/review/ai_filed_section.h"
#include "app/review/intelligence_bar.h"
#include "app/review/review_group_card.h"
#include "app/review/rule_suggestions_section.h"
#include "app/review/stale_pending_section.h"
#include "app/rules/rule_editor_sheet.h"
#include "app/shell/runtime_bridge.h"
#include "app/widgets/section_page.h"
#include "core/model/rule.h"
#include "core/review/review_queue.h"
#include "core/review/rule_suggester.h"
#include "runtime/main_queue.h"

namespace copperwick::app {

// Everything the screen lists, read from one ledger value.
struct ReviewSnapshot {
    std::vector<ReviewGroup> groups;
    std::vector<LedgerTransaction> stalePending;
    std::vector<RuleSuggestion> ruleSuggestions;
    // What Local AI filed that nobody has checked, grouped as the queue is.
    std::vector<ReviewGroup> aiFiled;
};

[[nodiscard]] ReviewSnapshot readReviewQueue(const Ledger& ledger, LocalDate today);

class ReviewPage : public SectionPage {
    Q_OBJECT

  public:
    // Cards made at first, and with each "Show More" or scroll to the end.
    static constexpr std::size_t kCardsAtOnce = 30;
    // From this many transactions on, the queue is read in the background:
    // on 100,000 of them, with 5,000 waiting and 2,000 decided by hand,
    // reading it takes about half a second, most of it the suggested rules.
    static constexpr std::size_t kReadInBackgroundFrom = 5'000;

    explicit ReviewPage(RuntimeBridge& bridge, QWidget* parent = nullptr);

    [[nodiscard]] std::vector<SelfCheck> selfChecks() override;

    // Reads the queue again from the live ledger; in the background for a
    // large ledger, when the screen shows the result once it is back.
    void refresh();
    // While a background reading is out.
    [[nodiscard]] bool isReading() const { return m_reading; }
    // Tests lower it to read a small ledger in the background.
    void setReadInBackgroundFrom(std::size_t transactions) {
        m_readInBackgroundFrom = transactions;
    }

    [[nodiscard]] const std::vector<ReviewGroup>& groups() const { return m_snapshot.groups; }
    // The cards made so far, in the order shown.
    [[nodiscard]] std::vector<ReviewGroupCard*> cards() const;
    [[nodiscard]] ReviewGroupCard* card(const std::string& groupID) const;
    [[nodiscard]] QLabel* countLabel() const { return m_count; }
    [[nodiscard]] QWidget* caughtUpPanel() const { return m_caughtUp; }
    [[nodiscard]] QPushButton* showMoreButton() const { return m_showMore; }
    [[nodiscard]] StalePendingSection* stalePendingSection() const { return m_stale; }
    [[nodiscard]] RuleSuggestionsSection* ruleSuggestionsSection() const { return m_rules; }
    [[nodiscard]] IntelligenceBar* intelligenceBar() const { return m_intelligenceBar; }
    [[nodiscard]] AIFiledSection* aiFiledSection() const { return m_aiFiled; }

    // Makes one more batch of cards.
    void showMore();

    // The draft a suggested rule became, while the rule editor has it open.
    [[nodiscard]] const std::optional<Rule>& ruleDraft() const { return m_ruleDraft; }
    // Opens the rule editor on the draft, as a new rule; nothing when the
    // editor is open already.
    RuleEditorSheet* openRuleEditor(Rule draft);
    [[nodiscard]] RuleEditorSheet* ruleEditor() const { return m_ruleEditor; }

  protected:
    void showEvent(QShowEvent* event) override;

  private:
    QWidget* buildCaughtUp(QWidget* parent);
    void changeSaved(const SavedChange& change);
    void install(ReviewSnapshot snapshot, bool choicesChanged);
    void layoutCards(bool choicesChanged);
    void refreshMerchantNames();
    void scrolled(int value);
    // A decided group leaves at once, before the queue is read again.
    void groupDecided(const std::string& groupID);
    // Local AI's switches, run or model changed: the bar and the cards follow.
    void intelligenceChanged();

    RuntimeBridge& m_bridge;
    LedgerRuntime& m_runtime;
    ReviewSnapshot m_snapshot;
    std::size_t m_limit = kCardsAtOnce;
    std::size_t m_readInBackgroundFrom = kReadInBackgroundFrom;
    std::map<std::string, ReviewGroupCard*> m_cards;
    QStringListModel m_merchantNames;
    std::optional<Rule> m_ruleDraft;
    QPointer<RuleEditorSheet> m_ruleEditor;

    // A saved change came while the page was hidden: read again on showing.
    bool m_outdated = false;
    // Categories or merchants changed since the cards last filled their lists.
    bool m_choicesOutdated = false;
    bool m_reading = false;
    uint64_t m_readingNumber = 0;
    std::unique_ptr<BackgroundWork> m_work;

    QLabel* m_count = nullptr;
    IntelligenceBar* m_intelligenceBar = nullptr;
    QWidget* m_caughtUp = nullptr;
    QLabel* m_readingLabel = nullptr;
    QVBoxLayout* m_cardList = nullptr;
    QPushButton* m_showMore = nullptr;
    AIFiledSection* m_aiFiled = nullptr;
    StalePendingSection* m_stale = nullptr;
    RuleSuggestionsSection* m_rules = nullptr;
};

}  // namespace copperwick::app
