#pragma once

// The Rules & Merchants screen: what the person has taught Copperwick and
// what it knows by itself, and where both can be changed.
//
// "Your rules" lists the person's rules in running order; a row is dragged,
// or moved with Alt+Up and Alt+Down, to change the order, its switch turns
// it on or off, and Enter or "Edit" opens the rule editor. "Built-in rules"
// lists the fixed rules with their switches. "Merchants" lists the merchants,
// narrowed by a search, each opening the merchant editor. Every change goes
// through the runtime; the lists follow each saved change's delta.
//
// The runtime behind `bridge` must outlive the page. Main thread only.

#include <optional>
#include <vector>

#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QPointer>
#include <QPushButton>

#include "app/rules/built_in_rule_model.h"
#include "app/rules/merchant_editor_sheet.h"
#include "app/rules/merchant_list_model.h"
#include "app/rules/rule_editor_sheet.h"
#include "app/rules/rule_list_model.h"
#include "app/shell/runtime_bridge.h"
#include "app/widgets/section_page.h"
#include "runtime/ledger_reading.h"

namespace copperwick::app {

class RulesPage : public SectionPage {
    Q_OBJECT

  public:
    explicit RulesPage(RuntimeBridge& bridge, QWidget* parent = nullptr);

    // Adds a rule through the rule editor on a demo bank text, checks it in
    // the ledger against the editor's preview, then deletes it again.
    [[nodiscard]] std::vector<SelfCheck> selfChecks() override;

    // The rule editor, opened (not waited for) for a new rule, a suggested
    // one or, with a saved rule's id, that rule.
    RuleEditorSheet* openRuleEditor(std::optional<Rule> draft = std::nullopt);
    MerchantEditorSheet* openMerchantEditor(const Uuid& merchantID);
    // The sheet open now, if any; one that has closed is on its way out.
    [[nodiscard]] QDialog* openSheet() const {
        return m_sheet && m_sheet->isVisible() ? m_sheet.data() : nullptr;
    }

    [[nodiscard]] QListView* ruleList() const { return m_ruleList; }
    [[nodiscard]] RuleListModel* ruleModel() const { return m_ruleModel; }
    [[nodiscard]] QListView* builtInList() const { return m_builtInList; }
    [[nodiscard]] BuiltInRuleModel* builtInModel() const { return m_builtInModel; }
    [[nodiscard]] QListView* merchantList() const { return m_merchantList; }
    [[nodiscard]] MerchantListModel* merchantModel() const { return m_merchantModel; }
    [[nodiscard]] MerchantSearchProxy* merchantProxy() const { return m_merchantProxy; }
    [[nodiscard]] QLineEdit* merchantSearch() const { return m_merchantSearch; }
    [[nodiscard]] QPushButton* newRuleButton() const { return m_newRule; }
    [[nodiscard]] QPushButton* moveUpButton() const { return m_moveUp; }
    [[nodiscard]] QPushButton* moveDownButton() const { return m_moveDown; }
    [[nodiscard]] QPushButton* removeUnusedButton() const { return m_removeUnused; }
    [[nodiscard]] QLabel* noRulesLabel() const { return m_noRules; }
    [[nodiscard]] QLabel* noMerchantsLabel() const { return m_noMerchants; }
    // The merchants' rows, read again after a save.
    [[nodiscard]] LedgerReading<MerchantListModel::Rows>& merchantReading() {
        return m_merchantReading;
    }
    // From how many transactions a switch, a new order or Remove Unused
    // Merchants is saved beside the window. Tests lower it.
    void setSaveInBackgroundFrom(std::size_t transactions) {
        m_saveInBackgroundFrom = transactions;
    }

  private:
    QWidget* makeRulesCard();
    QWidget* makeBuiltInCard();
    QWidget* makeMerchantsCard();
    // Reads what the delta touched again; everything without one.
    void changeSaved(const SavedChange& change);
    // Everything read again, as the ledger has it now.
    void refreshRows();
    void refreshRules();
    void refreshMerchants();
    void showMerchants(MerchantListModel::Rows rows);
    void updateMoveButtons();
    void moveCurrentRule(int step);
    void applyOrder(const std::vector<Uuid>& ids);
    void applyRuleSwitch(const Uuid& id, bool enabled);
    void applyBuiltInSwitch(const std::string& id, bool enabled);
    void removeUnusedMerchants();
    void applyKeepingRows(LedgerRuntime::PossibleChange change);
    void editRule(const QModelIndex& index);
    void editMerchant(const QModelIndex& index);
    [[nodiscard]] SelfCheckOutcome checkRuleRoundTrip();

    RuntimeBridge& m_bridge;
    RuleListModel* m_ruleModel;
    BuiltInRuleModel* m_builtInModel;
    MerchantListModel* m_merchantModel;
    MerchantSearchProxy* m_merchantProxy;

    QListView* m_ruleList = nullptr;
    QListView* m_builtInList = nullptr;
    QListView* m_merchantList = nullptr;
    QLineEdit* m_merchantSearch = nullptr;
    QPushButton* m_newRule = nullptr;
    QPushButton* m_moveUp = nullptr;
    QPushButton* m_moveDown = nullptr;
    QPushButton* m_removeUnused = nullptr;
    QLabel* m_noRules = nullptr;
    QLabel* m_noMerchants = nullptr;
    QPointer<QDialog> m_sheet;
    std::size_t m_saveInBackgroundFrom = LedgerRuntime::kLongHistory;
    // Last, so that a reading still out ends before the rest goes.
    LedgerReading<MerchantListModel::Rows> m_merchantReading;
};

}  // namespace copperwick::app
