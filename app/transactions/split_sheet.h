#pragma once

// "Split Between Categories…" and "Edit Split…": divides one spending line
// between categories, each part with its category and amount, typed as a
// positive figure or signed like the line. What is left to divide shows as
// the parts change. Saving an existing split with every part taken away, or
// "Remove Split", takes the split off. Saved through the runtime's road for
// typed entries; a refusal keeps the sheet open with its words under the
// parts.
//
// Main thread only. The runtime must outlive the sheet.

#include <vector>

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "app/widgets/sheet_dialog.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

class SplitSheet : public SheetDialog {
    Q_OBJECT

  public:
    SplitSheet(LedgerRuntime& runtime, const Uuid& id, QWidget* parent = nullptr);

    struct PartRow {
        QWidget* row = nullptr;
        QComboBox* category = nullptr;
        QLineEdit* amount = nullptr;
        QPushButton* remove = nullptr;
    };
    [[nodiscard]] const std::vector<PartRow>& parts() const { return m_parts; }
    [[nodiscard]] QPushButton* addPartButton() const { return m_addPart; }
    [[nodiscard]] QPushButton* saveButton() const { return m_save; }
    [[nodiscard]] QPushButton* removeSplitButton() const { return m_removeSplit; }
    [[nodiscard]] QLabel* remainingLabel() const { return m_remaining; }
    [[nodiscard]] QString refusalText() const;

    // Adds an empty part and puts the keyboard on its category.
    void addPart();
    void save();
    void removeSplit();

  private:
    PartRow& appendPart(const std::optional<Uuid>& categoryID, const QString& amount);
    void removePart(QWidget* row);
    void updateRemaining();
    // Saves `parts` (none removes the split), unless the core refuses them.
    void saveParts(const std::vector<TransactionSplit>& parts);

    LedgerRuntime& m_runtime;
    Uuid m_id;
    int64_t m_amount = 0;
    std::string m_currency;
    QVBoxLayout* m_rows = nullptr;
    std::vector<PartRow> m_parts;
    QPushButton* m_addPart = nullptr;
    QLabel* m_remaining = nullptr;
    RefusalLine* m_refusal = nullptr;
    QPushButton* m_save = nullptr;
    QPushButton* m_removeSplit = nullptr;
};

}  // namespace copperwick::app
