#include "app/rules/rule_list_model.h"

#include "app/widgets/qt_text.h"
#include "core/matching/matcher.h"
#include "core/operations/rules.h"

namespace copperwick::app {

RuleListModel::RuleListModel(QObject* parent) : KeyedListModel(parent) {}

void RuleListModel::refresh(const Ledger& ledger) {
    std::vector<std::pair<std::string, Row>> fresh;
    for (auto& rule : orderedRules(ledger)) {
        std::string key = rule.id.text();
        QString description = toQString(describeRule(ledger, rule));
        fresh.emplace_back(std::move(key),
                           Row{.rule = std::move(rule), .description = std::move(description)});
    }
    installRows(m_rows, std::move(fresh));
}

QVariant RuleListModel::data(const QModelIndex& index, int role) const {
    const Row* row = index.isValid() ? rowIn(m_rows, index.row()) : nullptr;
    if (!row)
        return {};
    const Rule* shown = &row->rule;
    switch (role) {
        case Qt::DisplayRole:
        case Qt::EditRole:
            return toQString(shown->name);
        case DescriptionRole:
            return row->description;
        case Qt::AccessibleTextRole:
            return toQString(shown->name) + QStringLiteral(", ") + row->description;
        case Qt::CheckStateRole:
            return shown->isEnabled ? Qt::Checked : Qt::Unchecked;
        case RuleIDRole:
            return toQString(shown->id.text());
        default:
            return {};
    }
}

Qt::ItemFlags RuleListModel::flags(const QModelIndex& index) const {
    // Rows are dropped between rows, never onto one.
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable |
           Qt::ItemIsDragEnabled;
}

bool RuleListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    const Rule* changed = index.isValid() ? rule(index.row()) : nullptr;
    if (!changed || role != Qt::CheckStateRole)
        return false;
    const bool enabled = value.value<Qt::CheckState>() == Qt::Checked;
    if (enabled == changed->isEnabled)
        return false;
    const Uuid id = changed->id;
    // The switch moves under the finger; a save that fails puts it back.
    m_rows.at(keys()[static_cast<std::size_t>(index.row())]).rule.isEnabled = enabled;
    Q_EMIT dataChanged(index, index, {Qt::CheckStateRole});
    Q_EMIT switchRequested(id, enabled);
    return true;
}

Qt::DropActions RuleListModel::supportedDropActions() const {
    return Qt::MoveAction;
}

bool RuleListModel::moveRows(const QModelIndex& sourceParent, int sourceRow, int count,
                             const QModelIndex& destinationParent, int destinationChild) {
    if (sourceParent.isValid() || destinationParent.isValid() || count != 1)
        return false;
    if (!moveKey(sourceRow, destinationChild))
        return false;
    requestOrder();
    return true;
}

const Rule* RuleListModel::rule(int row) const {
    const Row* found = rowIn(m_rows, row);
    return found ? &found->rule : nullptr;
}

bool RuleListModel::moveRule(int row, int step) {
    const int destination = step < 0 ? row + step : row + step + 1;
    if (step == 0 || destination < 0 || destination > rowCount())
        return false;
    return moveRow({}, row, {}, destination);
}

void RuleListModel::requestOrder() {
    std::vector<Uuid> ids;
    ids.reserve(keys().size());
    for (const auto& key : keys())
        ids.push_back(m_rows.at(key).rule.id);
    Q_EMIT orderRequested(ids);
}

}  // namespace copperwick::app
