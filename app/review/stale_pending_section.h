#pragma once

// Pending charges that no longer look real: over two weeks old, or missing
// from a newer file of their account. Each line can be removed, which voids
// it as one undoable step; pending lines never count in totals either way.
//
// Main thread only. The runtime must outlive the section.

#include <vector>

#include <QPushButton>

#include "app/widgets/section_card.h"
#include "core/model/ledger_transaction.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

class StalePendingSection : public SectionCard {
    Q_OBJECT

  public:
    explicit StalePendingSection(LedgerRuntime& runtime, QWidget* parent = nullptr);

    // Hidden while there are none.
    void setTransactions(const std::vector<LedgerTransaction>& transactions);
    [[nodiscard]] const std::vector<LedgerTransaction>& transactions() const {
        return m_transactions;
    }
    // The "Remove" button of the line with `id`, if it is shown.
    [[nodiscard]] QPushButton* removeButton(const Uuid& id) const;
    // Voids the line; true when the change was saved.
    void remove(const Uuid& id);

  private:
    LedgerRuntime& m_runtime;
    std::vector<LedgerTransaction> m_transactions;
    std::vector<std::pair<Uuid, QPushButton*>> m_buttons;
};

}  // namespace copperwick::app
