#pragma once

// "Correct Date, Amount or Description…": puts right what the bank got
// wrong on one line, with a reason, while the bank's first version is kept.
// The sheet lists the line's earlier corrections under "Correction history",
// each as what it was before and after. Saved through the runtime's road for
// typed entries; a refusal keeps the sheet open with its words under the
// field it concerns.
//
// Main thread only. The runtime must outlive the sheet.

#include <QLineEdit>
#include <QPushButton>

#include "app/widgets/sheet_dialog.h"
#include "core/operations/entry_error.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

class CorrectionSheet : public SheetDialog {
    Q_OBJECT

  public:
    CorrectionSheet(LedgerRuntime& runtime, const Uuid& id, QWidget* parent = nullptr);

    [[nodiscard]] QLineEdit* dateField() const { return m_date; }
    [[nodiscard]] QLineEdit* amountField() const { return m_amount; }
    [[nodiscard]] QLineEdit* descriptionField() const { return m_description; }
    [[nodiscard]] QLineEdit* reasonField() const { return m_reason; }
    [[nodiscard]] QPushButton* saveButton() const { return m_save; }
    [[nodiscard]] QWidget* history() const { return m_history; }
    [[nodiscard]] QString refusalText() const;

    void save();

  private:
    void showRefusal(const EntryError& error);

    LedgerRuntime& m_runtime;
    Uuid m_id;
    QLineEdit* m_date = nullptr;
    QLineEdit* m_amount = nullptr;
    QLineEdit* m_description = nullptr;
    QLineEdit* m_reason = nullptr;
    RefusalLine* m_lineRefusal = nullptr;
    RefusalLine* m_dateRefusal = nullptr;
    RefusalLine* m_amountRefusal = nullptr;
    RefusalLine* m_descriptionRefusal = nullptr;
    RefusalLine* m_reasonRefusal = nullptr;
    QWidget* m_history = nullptr;
    QPushButton* m_save = nullptr;
};

}  // namespace copperwick::app
