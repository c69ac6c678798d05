#pragma once

// "Add Transaction…": spending, income or a refund that no bank file will
// bring, typed by hand into one of the ledger's accounts. The person always
// types a positive amount; spending is saved as money out. The entry is
// saved through the runtime's road for typed entries, which makes a backup
// first. A refused entry keeps the sheet open with what was typed and the
// refusal's words under the field it concerns. While the sheet is open the
// runtime counts it among the entry editors, so that an update waits.
//
// Main thread only. The runtime must outlive the sheet.

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>

#include "app/widgets/sheet_dialog.h"
#include "core/operations/entry_error.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

class ManualEntrySheet : public SheetDialog {
    Q_OBJECT

  public:
    static constexpr std::string_view kIntro =
        "Manual entries are marked and undoable. A backup is made before saving.";

    explicit ManualEntrySheet(LedgerRuntime& runtime, QWidget* parent = nullptr);

    [[nodiscard]] QComboBox* accountBox() const { return m_account; }
    [[nodiscard]] QLineEdit* dateField() const { return m_date; }
    [[nodiscard]] QLineEdit* amountField() const { return m_amount; }
    [[nodiscard]] QComboBox* kindBox() const { return m_kind; }
    [[nodiscard]] QLineEdit* descriptionField() const { return m_description; }
    [[nodiscard]] QComboBox* categoryBox() const { return m_category; }
    [[nodiscard]] QLineEdit* noteField() const { return m_note; }
    [[nodiscard]] QPushButton* addButton() const { return m_add; }
    // Every refusal shown now, joined, for tests and for the screen reader.
    [[nodiscard]] QString refusalText() const;

    // Checks the form, and saves it when nothing refuses it.
    void save();

  private:
    void fillCategories();
    void clearRefusals();
    void showRefusal(const EntryError& error);

    LedgerRuntime& m_runtime;
    QComboBox* m_account = nullptr;
    QLineEdit* m_date = nullptr;
    QLineEdit* m_amount = nullptr;
    QComboBox* m_kind = nullptr;
    QLineEdit* m_description = nullptr;
    QComboBox* m_category = nullptr;
    QLineEdit* m_note = nullptr;
    RefusalLine* m_accountRefusal = nullptr;
    RefusalLine* m_amountRefusal = nullptr;
    RefusalLine* m_descriptionRefusal = nullptr;
    RefusalLine* m_categoryRefusal = nullptr;
    QPushButton* m_add = nullptr;
};

}  // namespace copperwick::app
