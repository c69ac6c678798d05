#pragma once

// What a person can do to the chosen transactions, offered alike in the
// table's context menu and in the inspector: whose spending they are, their
// category, a transfer, back to automatic matching, and removing them from
// the records or restoring them. Each is one undoable step of the core's
// operations, saved through the runtime (beside the window on a long
// history, since some of them match every line again).
//
// Main thread only. The runtime must outlive it.

#include <optional>
#include <vector>

#include <QMenu>
#include <QObject>
#include <QWidget>

#include "core/model/spending_assignment.h"
#include "runtime/ledger_runtime.h"

namespace copperwick::app {

class TransactionActions : public QObject {
    Q_OBJECT

  public:
    // The menu's words, which the inspector's buttons share.
    static constexpr std::string_view kAssign = "Assign Spending To";
    static constexpr std::string_view kSpendingCategory = "Set Spending Category";
    static constexpr std::string_view kIncomeCategory = "Set Income Category";
    static constexpr std::string_view kTransfer = "Mark as Transfer";
    static constexpr std::string_view kAutomatic = "Back to Automatic Matching";
    static constexpr std::string_view kRemove = "Remove from Records";
    static constexpr std::string_view kRestore = "Restore";

    explicit TransactionActions(LedgerRuntime& runtime, QObject* parent = nullptr);

    // Adds every action for `ids` to `menu`, as the live ledger has them:
    // "Restore" for removed lines, "Remove from Records" for the others.
    void fill(QMenu* menu, const std::vector<Uuid>& ids);
    // The submenus on their own, for a button of the inspector.
    void fillAssignMenu(QMenu* menu, const std::vector<Uuid>& ids);
    void fillCategoryMenu(QMenu* menu, const std::vector<Uuid>& ids, TransactionKind kind);

    // Absent `assignment` goes back to what the import gave them.
    void assign(const std::vector<Uuid>& ids, const std::optional<SpendingAssignment>& assignment);
    void setCategory(const std::vector<Uuid>& ids, TransactionKind kind, const Uuid& categoryID);
    void markAsTransfer(const std::vector<Uuid>& ids);
    void backToAutomatic(const std::vector<Uuid>& ids);
    void setRemoved(const std::vector<Uuid>& ids, bool removed);

    // Whether any of `ids` is removed, or any is not.
    [[nodiscard]] bool anyRemoved(const std::vector<Uuid>& ids) const;
    [[nodiscard]] bool anyKept(const std::vector<Uuid>& ids) const;

  private:
    void save(LedgerRuntime::PossibleChange change);

    LedgerRuntime& m_runtime;
};

}  // namespace copperwick::app
