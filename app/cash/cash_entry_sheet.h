#pragma once

// The sheet in which a person enters cash by hand: money spent or received
// in cash, a gift, a refund, or cash moved between a wallet and a bank
// account. A move may take the bank's own imported line (an "ATM
// WITHDRAWAL" of the opposite amount) as its bank side, so that the money
// isn't counted twice.
//
// The form is checked as the person types (a date and a positive amount);
// Save enters it through the runtime's commitEntry, which makes a safety
// copy first. A refused entry keeps the sheet open with what was typed and
// its refusal under the form. Counts as an open entry editor while it
// stands, so that an update waits. The runtime behind `bridge` must outlive
// the sheet. Main thread only.

#include <optional>

#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QPushButton>

#include "app/shell/runtime_bridge.h"
#include "app/widgets/refusal_line.h"
#include "app/widgets/sheet_dialog.h"
#include "core/operations/manual_entry.h"

namespace copperwick::app {

class CashEntrySheet : public SheetDialog {
    Q_OBJECT

  public:
    // Opens on `walletID` when it is a wallet that can take entries.
    CashEntrySheet(RuntimeBridge& bridge, const std::optional<Uuid>& walletID,
                   QWidget* parent = nullptr);

    [[nodiscard]] QComboBox* kindField() const { return m_kind; }
    [[nodiscard]] QComboBox* walletField() const { return m_wallet; }
    [[nodiscard]] QLineEdit* dateField() const { return m_date; }
    [[nodiscard]] QLineEdit* amountField() const { return m_amount; }
    [[nodiscard]] QLineEdit* descriptionField() const { return m_description; }
    [[nodiscard]] QComboBox* categoryField() const { return m_category; }
    [[nodiscard]] QComboBox* bankAccountField() const { return m_bankAccount; }
    [[nodiscard]] QComboBox* bankLineField() const { return m_bankLine; }
    [[nodiscard]] RefusalLine* refusalLine() const { return m_refusal; }
    [[nodiscard]] QPushButton* saveButton() const { return m_save; }

    [[nodiscard]] ManualEntryKind kind() const;

  private:
    void makeFields();
    // Shows the rows the kind asks for, with its categories and bank side.
    void kindChanged();
    void fillCategories();
    void fillBankAccounts();
    void fillBankLines();
    // The form as core reads it, or the refusal's words.
    [[nodiscard]] std::optional<FormEntry> checkedForm(QString* refusal) const;
    void formChanged();
    void save();

    RuntimeBridge& m_bridge;
    QFormLayout* m_form = nullptr;
    QComboBox* m_kind = nullptr;
    QComboBox* m_wallet = nullptr;
    QLineEdit* m_date = nullptr;
    QLineEdit* m_amount = nullptr;
    QLineEdit* m_description = nullptr;
    QComboBox* m_category = nullptr;
    QComboBox* m_bankAccount = nullptr;
    QComboBox* m_bankLine = nullptr;
    RefusalLine* m_refusal = nullptr;
    QPushButton* m_save = nullptr;
};

}  // namespace copperwick::app
