#pragma once

// The built-in rules, in their order of precedence, one row each: the name,
// a description naming the direction and the account types, and the rule's
// switch as the row's check state, read from the ledger's settings. A switch
// flipped asks with switchRequested; whoever owns the model runs the change
// through the runtime and calls refresh after a save.
//
// Main thread only.

#include <string>
#include <vector>

#include <QAbstractListModel>

#include "app/rules/row_roles.h"
#include "core/model/ledger.h"

namespace copperwick::app {

class BuiltInRuleModel : public QAbstractListModel {
    Q_OBJECT

  public:
    // Beside the name: the rule's direction, account types and filing, and its stable id.
    static constexpr int DescriptionRole = kDescriptionRole;
    static constexpr int RuleIDRole = kRecordIDRole;

    explicit BuiltInRuleModel(QObject* parent = nullptr);

    // Reads the switches again; rows whose switch moved are redrawn.
    void refresh(const Ledger& ledger);

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

  Q_SIGNALS:
    void switchRequested(const std::string& id, bool enabled);

  private:
    std::vector<QString> m_descriptions;
    std::vector<bool> m_enabled;
};

}  // namespace copperwick::app
