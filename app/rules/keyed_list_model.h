#pragma once

// A list model whose rows are records known by a key (a record's id), kept
// in step with the ledger by the smallest changes: rows whose record went
// are removed, new ones inserted where they belong, rows whose order changed
// are moved with their selection, and rows whose content changed are
// redrawn. A view over it keeps its selection and scroll place through a
// save, which a reset would lose.
//
// The subclass keeps what each row shows, by key, and calls syncKeys after
// it has read the ledger again. Main thread only.

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <QAbstractListModel>

namespace copperwick::app {

class KeyedListModel : public QAbstractListModel {
    Q_OBJECT

  public:
    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;

    [[nodiscard]] const std::vector<std::string>& keys() const { return m_keys; }
    [[nodiscard]] const std::string& keyAt(int row) const;
    // The row of `key`, or -1.
    [[nodiscard]] int rowOf(std::string_view key) const;

  protected:
    // Makes the rows `keys`, in that order; the rows of `touched` that stay
    // are redrawn.
    void syncKeys(const std::vector<std::string>& keys, const std::set<std::string>& touched);
    // Moves one row to stand before `destination` (a row of the present
    // order, or rowCount for the end); false when that isn't a move.
    bool moveKey(int source, int destination);

  private:
    std::vector<std::string> m_keys;
};

}  // namespace copperwick::app
