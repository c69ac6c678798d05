#pragma once

// One review group as a card: whose lines they are, what the system
// suggests, and the editor in which the person decides them all at once.
//
// A payment to a person (Zelle and the like) asks what the money was for;
// any other group asks for a merchant, a category and the kind. Save files
// every line of the group through the runtime as one undoable step, and
// Approve takes the group's suggestion as it stands. The card keeps what the
// person has chosen while the group is refreshed from later saves, so a
// decision on another card loses nothing here.
//
// Main thread only. The runtime must outlive the card.

#include <optional>
#include <string>
#include <vector>

#include <QAbstractItemModel>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "app/widgets/card_frame.h"
#include "app/widgets/elided_label.h"
#include "app/widgets/merchant_badge.h"
#include "core/review/review_decision.h"
#include "core/review/review_queue.h"
#include "runtime/intelligence_controller.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

class ReviewGroupCard : public CardFrame {
    Q_OBJECT

  public:
    static constexpr std::string_view kRememberOn =
        "Copperwick will file this bank text the same way from now on, including in future "
        "imports. You can change it under Rules & Merchants.";
    static constexpr std::string_view kRememberOff = "Only these transactions change.";

    // `merchantNames` completes the merchant field: the ledger's merchants,
    // shared by every card and kept current by the page.
    ReviewGroupCard(LedgerRuntime& runtime, const ReviewGroup& group, bool showsSuggestion,
                    QAbstractItemModel* merchantNames, QWidget* parent = nullptr);

    [[nodiscard]] const ReviewGroup& group() const { return m_group; }
    [[nodiscard]] const ReviewDecision& decision() const { return m_decision; }
    [[nodiscard]] bool asksPurpose() const { return m_asksPurpose; }
    [[nodiscard]] bool canSave() const;

    // A fresher reading of the same group after a save: the header follows
    // it, the person's choices stay. The ledger's categories are read again.
    void setGroup(const ReviewGroup& group);
    // Categories or merchants changed: the lists and the header are read
    // again, keeping what is chosen while it still fits.
    void refreshChoices();

    // The person's actions; each reaches the ledger through the runtime.
    // True when the change was saved, or is being saved in the background.
    bool save();
    bool approve();
    // Tests lower it to save a short ledger's decision in the background.
    void setSaveInBackgroundFrom(std::size_t transactions) {
        m_saveInBackgroundFrom = transactions;
    }
    void showTransactions();
    // Puts the keyboard on the card's first choice: the merchant, or what
    // the payment was for.
    void focusEditor();

    // Local AI, for "Ask Local AI about this group", offered while its
    // switch is on; none leaves it out. It must outlive the card.
    void setIntelligence(IntelligenceController* intelligence);
    // Its switch or its run changed: the button and the note follow.
    void refreshIntelligence();
    // Lets Local AI suggest a merchant and category for this group alone;
    // the suggestion comes back as the card's banner.
    void askLocalAI();

    [[nodiscard]] QLineEdit* merchantField() const { return m_merchant; }
    [[nodiscard]] QComboBox* categoryBox() const { return m_category; }
    [[nodiscard]] QComboBox* kindBox() const { return m_kind; }
    [[nodiscard]] QCheckBox* rememberBox() const { return m_remember; }
    [[nodiscard]] QLabel* rememberNote() const { return m_rememberNote; }
    [[nodiscard]] QPushButton* saveButton() const { return m_save; }
    [[nodiscard]] QPushButton* approveButton() const { return m_approve; }
    [[nodiscard]] QPushButton* showTransactionsButton() const { return m_showTransactions; }
    [[nodiscard]] QPushButton* askLocalAIButton() const { return m_askLocalAI; }
    // What became of asking Local AI, while there is something to say.
    [[nodiscard]] QLabel* askNote() const { return m_askNote; }
    [[nodiscard]] QWidget* suggestionBanner() const { return m_banner; }
    // "Suggested", or "Local AI suggests" for the model's own suggestion.
    [[nodiscard]] QLabel* suggestionTitle() const { return m_bannerTitle; }
    [[nodiscard]] QWidget* purposeEditor() const { return m_purposeEditor; }
    [[nodiscard]] QRadioButton* purposeButton(ZelleChoice choice) const;
    // The words that hold Save back, under the field they concern.
    [[nodiscard]] QString refusalText() const;

  Q_SIGNALS:
    // After Save or Approve reached the disk.
    void saved(const std::string& groupID);

  protected:
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    // Saves the decision; `saved` follows once it is on disk.
    bool decide(LedgerRuntime::PossibleChange change);
    QWidget* buildHeader();
    QWidget* buildBanner();
    QWidget* buildStandardEditor(QAbstractItemModel* merchantNames);
    QWidget* buildPurposeEditor();
    // The category's list, which both editors have; the decision follows it.
    void makeCategoryBox(QWidget* parent);
    void updateHeader();
    // The categories that fit what is being decided, keeping the choice.
    void fillCategories();
    // Puts the decision into the controls without echoing back.
    void showDecision();
    void decisionChanged();
    [[nodiscard]] std::optional<CategoryGroup> wantedCategoryGroup() const;

    LedgerRuntime& m_runtime;
    ReviewGroup m_group;
    ReviewDecision m_decision;
    bool m_showsSuggestion;
    bool m_asksPurpose;
    bool m_updating = false;

    MerchantBadge* m_badge = nullptr;
    ElidedLabel* m_name = nullptr;
    ElidedLabel* m_example = nullptr;
    ElidedLabel* m_facts = nullptr;
    QLabel* m_total = nullptr;

    QWidget* m_banner = nullptr;
    QLabel* m_bannerTitle = nullptr;
    QLabel* m_bannerFiling = nullptr;
    QLabel* m_bannerReason = nullptr;
    class SymbolView* m_bannerSymbol = nullptr;
    QPushButton* m_approve = nullptr;

    QLineEdit* m_merchant = nullptr;
    QComboBox* m_kind = nullptr;
    QComboBox* m_category = nullptr;
    QLabel* m_merchantRefusal = nullptr;
    QLabel* m_categoryRefusal = nullptr;
    QWidget* m_purposeEditor = nullptr;
    QButtonGroup* m_purposes = nullptr;
    QLabel* m_purposeRefusal = nullptr;
    QWidget* m_categoryField = nullptr;

    QCheckBox* m_remember = nullptr;
    QLabel* m_rememberNote = nullptr;
    QPushButton* m_showTransactions = nullptr;
    QPushButton* m_askLocalAI = nullptr;
    QLabel* m_askNote = nullptr;
    IntelligenceController* m_intelligence = nullptr;
    // This card asked Local AI and hasn't heard back yet.
    bool m_asking = false;
    // It heard back, with nothing to suggest.
    bool m_unanswered = false;
    QPushButton* m_save = nullptr;
    std::size_t m_saveInBackgroundFrom = LedgerRuntime::kLongHistory;
};

}  // namespace copperwick::app
