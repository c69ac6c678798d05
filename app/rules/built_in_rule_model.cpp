#include "app/rules/built_in_rule_model.h"

#include <algorithm>

#include "app/widgets/qt_text.h"
#include "core/matching/builtin_knowledge.h"

namespace copperwick::app {

BuiltInRuleModel::BuiltInRuleModel(QObject* parent) : QAbstractListModel(parent) {
    const auto& rules = BuiltInKnowledge::rules();
    for (const auto& rule : rules)
        m_descriptions.push_back(toQString(describeBuiltInRule(rule)));
    m_enabled.assign(rules.size(), true);
}

void BuiltInRuleModel::refresh(const Ledger& ledger) {
    const auto& disabled = ledger.settings->disabledBuiltInRules;
    const auto& rules = BuiltInKnowledge::rules();
    for (std::size_t row = 0; row < rules.size(); ++row) {
        const bool enabled =
            std::find(disabled.begin(), disabled.end(), rules[row].id) == disabled.end();
        if (enabled == m_enabled[row])
            continue;
        m_enabled[row] = enabled;
        const QModelIndex changed = index(static_cast<int>(row));
        Q_EMIT dataChanged(changed, changed, {Qt::CheckStateRole});
    }
}

int BuiltInRuleModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_descriptions.size());
}

QVariant BuiltInRuleModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const auto row = static_cast<std::size_t>(index.row());
    const BuiltInRule& rule = BuiltInKnowledge::rules()[row];
    switch (role) {
        case Qt::DisplayRole:
            return toQString(rule.name);
        case DescriptionRole:
            return m_descriptions[row];
        case Qt::AccessibleTextRole:
            return toQString(rule.name) + QStringLiteral(", ") + m_descriptions[row];
        case Qt::CheckStateRole:
            return m_enabled[row] ? Qt::Checked : Qt::Unchecked;
        case RuleIDRole:
            return toQString(rule.id);
        default:
            return {};
    }
}

Qt::ItemFlags BuiltInRuleModel::flags(const QModelIndex& index) const {
    if (!index.isValid())
        return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable;
}

bool BuiltInRuleModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || index.row() >= rowCount() || role != Qt::CheckStateRole)
        return false;
    const auto row = static_cast<std::size_t>(index.row());
    const bool enabled = value.value<Qt::CheckState>() == Qt::Checked;
    if (enabled == m_enabled[row])
        return false;
    // The switch moves under the finger; a save that fails puts it back.
    m_enabled[row] = enabled;
    Q_EMIT dataChanged(index, index, {Qt::CheckStateRole});
    Q_EMIT switchRequested(BuiltInKnowledge::rules()[row].id, enabled);
    return true;
}

}  // namespace copperwick::app
