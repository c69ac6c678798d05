#pragma once

// A list model whose rows are records known by a key (a record's id), kept
// in step with the ledger by the smallest changes: rows whose record went
// are removed, new ones inserted where they belong, rows whose order changed
// are moved with their selection, and rows whose content changed are
// redrawn. A view over it keeps its selection and scroll place through a
// save, which a reset would lose.
//
// The subclass keeps what each row shows, by key, in a map it hands to
// installRows after it has read the ledger again (or calls syncKeys itself).
// Main thread only.

#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
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

    // Makes `fresh` the rows, in its order, keeping each row's content in
    // `rows`; a row whose content differs from what `rows` held is redrawn.
    template <typename Row>
    void installRows(std::unordered_map<std::string, Row>& rows,
                     std::vector<std::pair<std::string, Row>> fresh);
    // The content of `row` in `rows`, or null for a row that isn't there.
    template <typename Row>
    [[nodiscard]] const Row* rowIn(const std::unordered_map<std::string, Row>& rows, int row) const;

  private:
    std::vector<std::string> m_keys;
};

template <typename Row>
void KeyedListModel::installRows(std::unordered_map<std::string, Row>& rows,
                                 std::vector<std::pair<std::string, Row>> fresh) {
    std::vector<std::string> keys;
    keys.reserve(fresh.size());
    std::set<std::string> touched;
    std::unordered_map<std::string, Row> installed;
    for (auto& [key, row] : fresh) {
        const auto old = rows.find(key);
        if (old != rows.end() && !(old->second == row))
            touched.insert(key);
        keys.push_back(key);
        installed.emplace(std::move(key), std::move(row));
    }
    rows = std::move(installed);
    syncKeys(keys, touched);
}

template <typename Row>
const Row* KeyedListModel::rowIn(const std::unordered_map<std::string, Row>& rows, int row) const {
    if (row < 0 || row >= rowCount())
        return nullptr;
    const auto found = rows.find(keyAt(row));
    return found == rows.end() ? nullptr : &found->second;
}

}  // namespace copperwick::app
