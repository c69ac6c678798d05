#include "app/rules/keyed_list_model.h"

#include <algorithm>
#include <unordered_map>
#include <unordered_set>

namespace copperwick::app {

int KeyedListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_keys.size());
}

const std::string& KeyedListModel::keyAt(int row) const {
    return m_keys.at(static_cast<std::size_t>(row));
}

int KeyedListModel::rowOf(std::string_view key) const {
    const auto found = std::find(m_keys.begin(), m_keys.end(), key);
    return found == m_keys.end() ? -1 : static_cast<int>(found - m_keys.begin());
}

void KeyedListModel::syncKeys(const std::vector<std::string>& keys,
                              const std::set<std::string>& touched) {
    const std::unordered_set<std::string> wanted(keys.begin(), keys.end());

    // Rows whose record went, a run at a time from the end, so that the
    // rows still to look at keep their numbers.
    for (int end = rowCount(); end > 0;) {
        if (wanted.contains(m_keys[static_cast<std::size_t>(end - 1)])) {
            --end;
            continue;
        }
        int first = end - 1;
        while (first > 0 && !wanted.contains(m_keys[static_cast<std::size_t>(first - 1)]))
            --first;
        beginRemoveRows({}, first, end - 1);
        m_keys.erase(m_keys.begin() + first, m_keys.begin() + end);
        endRemoveRows();
        end = first;
    }

    // The rows that stay, in their new order: a rename or a new running
    // order moves them, and what a view holds on to moves with them.
    const std::unordered_set<std::string> kept(m_keys.begin(), m_keys.end());
    std::vector<std::string> reordered;
    reordered.reserve(m_keys.size());
    for (const auto& key : keys) {
        if (kept.contains(key))
            reordered.push_back(key);
    }
    if (reordered != m_keys) {
        Q_EMIT layoutAboutToBeChanged();
        std::unordered_map<std::string, int> newRows;
        for (std::size_t row = 0; row < reordered.size(); ++row)
            newRows.emplace(reordered[row], static_cast<int>(row));
        const QModelIndexList before = persistentIndexList();
        QModelIndexList after;
        after.reserve(before.size());
        for (const QModelIndex& index : before)
            after.append(this->index(newRows.at(m_keys[static_cast<std::size_t>(index.row())]),
                                     index.column()));
        m_keys = std::move(reordered);
        changePersistentIndexList(before, after);
        Q_EMIT layoutChanged();
    }

    // New records, a run at a time where `keys` has them.
    for (std::size_t row = 0; row < keys.size();) {
        if (row < m_keys.size() && m_keys[row] == keys[row]) {
            ++row;
            continue;
        }
        std::size_t end = row;
        while (end < keys.size() && !kept.contains(keys[end]))
            ++end;
        beginInsertRows({}, static_cast<int>(row), static_cast<int>(end - 1));
        m_keys.insert(m_keys.begin() + static_cast<std::ptrdiff_t>(row),
                      keys.begin() + static_cast<std::ptrdiff_t>(row),
                      keys.begin() + static_cast<std::ptrdiff_t>(end));
        endInsertRows();
        row = end;
    }

    for (std::size_t row = 0; row < m_keys.size(); ++row) {
        if (kept.contains(m_keys[row]) && touched.contains(m_keys[row])) {
            const QModelIndex changed = index(static_cast<int>(row));
            Q_EMIT dataChanged(changed, changed);
        }
    }
}

bool KeyedListModel::moveKey(int source, int destination) {
    const int count = rowCount();
    if (source < 0 || source >= count || destination < 0 || destination > count ||
        destination == source || destination == source + 1)
        return false;
    if (!beginMoveRows({}, source, source, {}, destination))
        return false;
    std::string key = std::move(m_keys[static_cast<std::size_t>(source)]);
    m_keys.erase(m_keys.begin() + source);
    const int target = destination > source ? destination - 1 : destination;
    m_keys.insert(m_keys.begin() + target, std::move(key));
    endMoveRows();
    return true;
}

}  // namespace copperwick::app
