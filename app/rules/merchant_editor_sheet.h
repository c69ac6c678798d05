#pragma once

// The sheet in which a person changes what Copperwick knows of one merchant:
// its name, what its transactions always file as, which bank texts it
// recognizes, or merging it into another merchant.
//
// Save writes the merchant with its filing and remaining bank texts, matches
// every transaction again that nobody set by hand, and renames it when the
// name changed (a name another merchant has merges the two). Merge moves the
// merchant's bank texts and transactions to the chosen one and closes the
// sheet. Each is one change through the runtime; a failed save leaves the
// sheet open with the runtime's message showing. Cancel or Escape change
// nothing.
//
// The runtime behind `bridge` must outlive the sheet. Main thread only.

#include <optional>
#include <string>
#include <vector>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/sheet_dialog.h"
#include "core/model/merchant.h"
#include "core/operations/merchants.h"

namespace copperwick::app {

class MerchantEditorSheet : public SheetDialog {
    Q_OBJECT

  public:
    MerchantEditorSheet(RuntimeBridge& bridge, Uuid merchantID, QWidget* parent = nullptr);

    [[nodiscard]] const Uuid& merchantID() const { return m_merchant.id; }
    // The bank texts it will keep, as the sheet stands.
    [[nodiscard]] const std::vector<std::string>& keys() const { return m_keys; }
    // A name (merchantNameEntered) and a filing (withFiling) core accepts.
    [[nodiscard]] bool canSave() const;

    [[nodiscard]] QLineEdit* nameField() const { return m_name; }
    [[nodiscard]] QComboBox* filingField() const { return m_filing; }
    [[nodiscard]] QComboBox* categoryField() const { return m_category; }
    // The "Forget" button of each bank text, in the order of `keys`.
    [[nodiscard]] const std::vector<QPushButton*>& forgetButtons() const { return m_forget; }
    [[nodiscard]] QLabel* noKeysLabel() const { return m_noKeys; }
    [[nodiscard]] QComboBox* mergeField() const { return m_mergeTarget; }
    [[nodiscard]] QPushButton* mergeButton() const { return m_merge; }
    [[nodiscard]] QPushButton* saveButton() const { return m_save; }
    [[nodiscard]] QPushButton* cancelButton() const { return m_cancel; }

  private:
    void makeFields();
    void load();
    void fillCategories();
    void showKeys();
    void forget(std::size_t index);
    void fieldsChanged();
    // What the "Always file as" fields say.
    [[nodiscard]] MerchantFiling chosenFiling() const;
    // What core's checks make of the fields: the name and the merchant it
    // would save, or the words of each refusal.
    struct Checked {
        std::optional<std::string> name;
        std::optional<Merchant> merchant;
        QString nameRefusal;
        QString filingRefusal;
    };
    [[nodiscard]] Checked checked() const;
    void save();
    void merge();

    RuntimeBridge& m_bridge;
    Merchant m_merchant;
    std::vector<std::string> m_keys;

    QLineEdit* m_name = nullptr;
    RefusalLine* m_nameRefusal = nullptr;
    QComboBox* m_filing = nullptr;
    RefusalLine* m_filingRefusal = nullptr;
    QComboBox* m_category = nullptr;
    QVBoxLayout* m_keyRows = nullptr;
    std::vector<QPushButton*> m_forget;
    QLabel* m_noKeys = nullptr;
    QComboBox* m_mergeTarget = nullptr;
    QPushButton* m_merge = nullptr;
    QPushButton* m_cancel = nullptr;
    QPushButton* m_save = nullptr;
};

}  // namespace copperwick::app
