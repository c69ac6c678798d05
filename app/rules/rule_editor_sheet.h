#pragma once

// The sheet in which a person writes one of their own rules, or changes or
// deletes a saved one. It checks the fields as they are typed, with the
// refusal's words under the field, and shows what the rule would do to the
// ledger before it is saved: the preview is worked out on a copy of the
// ledger on another thread, a moment after the typing stops or a change is
// saved, and a preview of fields or a ledger that have changed since is
// dropped.
//
// Saving and deleting go through the runtime, which matches every
// transaction again that nobody set by hand; the sheet then closes as
// accepted. A failed save leaves it open, with the runtime's message showing.
// Cancel or Escape close it and change nothing.
//
// The runtime behind `bridge` must outlive the sheet. Main thread only.
// Destroying the sheet waits for a preview still being worked out.

#include <cstdint>
#include <optional>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QWidget>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/sheet_dialog.h"
#include "core/model/rule.h"
#include "core/operations/entry_error.h"
#include "core/review/rule_preview.h"
#include "runtime/main_queue.h"

namespace copperwick::app {

class RuleEditorSheet : public SheetDialog {
    Q_OBJECT

  public:
    // How long the typing has to rest before the preview is worked out.
    static constexpr int kPreviewDelayMilliseconds = 150;

    // With `draft` the id of a saved rule, the sheet edits that rule, showing
    // the draft's fields; with any other draft (a suggested rule, say) or
    // none, it makes a new one, which runs after the person's other rules.
    explicit RuleEditorSheet(RuntimeBridge& bridge, std::optional<Rule> draft = std::nullopt,
                             QWidget* parent = nullptr);
    ~RuleEditorSheet() override;

    [[nodiscard]] bool isEditing() const { return m_editing; }
    // The rule as the fields describe it now; a blank name takes the pattern.
    [[nodiscard]] Rule editedRule() const;
    // Whether the fields make a rule that can be saved: core's check of a
    // rule (ruleEntered) and limits that read as amounts.
    [[nodiscard]] bool canSave() const;
    // The preview now shown: absent until the first one comes back, and
    // while the fields can't make a rule.
    [[nodiscard]] const std::optional<RulePreview>& shownPreview() const { return m_preview; }
    // Whether a preview is being waited for.
    [[nodiscard]] bool isPreviewPending() const;

    [[nodiscard]] QLineEdit* nameField() const { return m_name; }
    [[nodiscard]] QComboBox* matchField() const { return m_match; }
    [[nodiscard]] QLineEdit* patternField() const { return m_pattern; }
    [[nodiscard]] RefusalLine* patternRefusal() const { return m_patternRefusal; }
    [[nodiscard]] QComboBox* accountField() const { return m_account; }
    [[nodiscard]] QComboBox* directionField() const { return m_direction; }
    [[nodiscard]] QLineEdit* minimumField() const { return m_minimum; }
    [[nodiscard]] QLineEdit* maximumField() const { return m_maximum; }
    [[nodiscard]] QLineEdit* merchantField() const { return m_merchant; }
    [[nodiscard]] QComboBox* outcomeField() const { return m_outcome; }
    [[nodiscard]] QComboBox* categoryField() const { return m_category; }
    [[nodiscard]] QPushButton* saveButton() const { return m_save; }
    [[nodiscard]] QPushButton* deleteButton() const { return m_delete; }
    [[nodiscard]] QPushButton* cancelButton() const { return m_cancel; }
    [[nodiscard]] QLabel* previewLabel() const { return m_previewText; }

  Q_SIGNALS:
    // A preview of the fields as they stand has just been shown.
    void previewShown();

  private:
    void makeFields();
    QWidget* makePreview();
    void makeButtons();
    void load();
    void fillCategories();
    // Refusals, the save button and the preview, after any field changed.
    void fieldsChanged();
    // What core's check makes of the fields: the rule it would save, or the
    // refusal and its words.
    struct Checked {
        std::optional<Rule> rule;
        std::optional<EntryError::Case> refusal;
        QString words;
    };
    [[nodiscard]] Checked checked() const;
    // The saved rule the sheet edits, as the ledger has it now.
    [[nodiscard]] const Rule* savedRule() const;
    [[nodiscard]] std::optional<QString> patternRefusalText() const;
    void startPreview();
    void showPreview(uint64_t request, const RulePreview& preview);
    void save();
    void remove();

    RuntimeBridge& m_bridge;
    Rule m_draft;
    bool m_editing = false;

    QLineEdit* m_name = nullptr;
    QComboBox* m_match = nullptr;
    QLineEdit* m_pattern = nullptr;
    RefusalLine* m_patternRefusal = nullptr;
    QComboBox* m_account = nullptr;
    QComboBox* m_direction = nullptr;
    QLineEdit* m_minimum = nullptr;
    RefusalLine* m_minimumRefusal = nullptr;
    QLineEdit* m_maximum = nullptr;
    RefusalLine* m_maximumRefusal = nullptr;
    QLineEdit* m_merchant = nullptr;
    QComboBox* m_outcome = nullptr;
    QComboBox* m_category = nullptr;
    QWidget* m_previewPanel = nullptr;
    QLabel* m_previewText = nullptr;
    QProgressBar* m_previewBusy = nullptr;
    QPushButton* m_delete = nullptr;
    QPushButton* m_cancel = nullptr;
    QPushButton* m_save = nullptr;

    QTimer m_previewTimer;
    // Each preview asked for has the next number; only the latest is shown.
    uint64_t m_previewRequest = 0;
    uint64_t m_previewShownRequest = 0;
    std::optional<RulePreview> m_preview;
    // Last, so that it waits for a running preview before the fields go.
    BackgroundWork m_work;
};

}  // namespace copperwick::app
